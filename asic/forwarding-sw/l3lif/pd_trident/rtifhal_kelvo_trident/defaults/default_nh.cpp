/*
 * default_nh.cpp: default routes that wait in a file over a fast restart.
 *
 * The file is read and removed at the first interface that comes up. Then each
 * interface rebuilds the routes that it can serve: next hops, a multipath
 * group where a route has several paths, the route itself. A route may be
 * rebuilt several times; the objects of the build before go after the route
 * points to the new ones. No failure stops the walk over the routes.
 *
 * def_route_file.cpp reads the file, def_egress_set.cpp keeps and destroys the
 * objects.
 */
#include "defaults/default_nh.h"

#include "defaults/def_route_file.h"
#include "frame/trace.h"

#include <fwm/state.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/l3.h>
#include <services/system.h>
#include <string.h>
#include <syslog.h>

namespace
{

/** All SDK calls for default routes name the unit as a literal. */
constexpr int UNIT = 0;
constexpr uint32_t NO_FLAGS = 0;

constexpr uint32_t EGRESS_RESTORED = 0x100;
constexpr uint32_t ROUTE_IP4 = 0x100;
constexpr uint32_t ROUTE_IP6 = 0x20100;
constexpr uint32_t ROUTE_MULTIPATH = 0x4000;

constexpr int SKIP_VALUE_SIZE = 15;

/** The build of one route. */
struct route_build {
    const def_route_rec_t *route;
    def_egress_set_t *set;
    uint32_t ifindex; /**< interface that came up */
    int next_hop;     /**< egress object or group that the route is to name; 0 for none */
    int multipath;    /**< 1: next_hop is a group */
    int made;         /**< number of egress objects made */
    bool saved;       /**< the set before is in curr_egress */
    // The first `made` of each count; the others hold nothing.
    bcm_l3_egress_t egress[RTIFHAL_DEF_ROUTE_PATHS];
    int ids[RTIFHAL_DEF_ROUTE_PATHS];
};

const char *family_of(const def_route_rec_t &route)
{
    return route.family == 0 ? "v4" : "v6";
}

/** Paths that a route can hold, whatever its count says. */
uint32_t usable_paths(const def_route_rec_t &route)
{
    return route.paths < RTIFHAL_DEF_ROUTE_PATHS ? route.paths : RTIFHAL_DEF_ROUTE_PATHS;
}

bool is_switched_off()
{
    char value[SKIP_VALUE_SIZE + 1] = {};
    return get_string_from_platform_inf("fwm", "skip_default_nh", value, SKIP_VALUE_SIZE) != 0 &&
           strstr(value, "TRUE") != nullptr;
}

/** Looks an interface up; reports one that isn't ready. */
bool find_ready_iif(uint32_t ifindex, int &last_code, int &l3iif)
{
    l3lif_iif_info_t info = {};
    last_code = l3lif_get_iif_for_ifindex_new(ifindex, &info);
    if (last_code != 0) {
        REPORT_OF(rtifhal_trident_create_default_nh, "intf is not ready :0x%x rc:%s\n", ifindex,
                  fwm_syserr2str(last_code));
        return false;
    }
    l3iif = static_cast<int>(info.l3iif);
    return true;
}

/** The next hop of a path as it was saved, on the interface's present number. */
bcm_l3_egress_t next_hop_of(const def_route_path_t &path, int l3iif)
{
    bcm_l3_egress_t egress;
    memcpy(&egress, path.egress, sizeof egress);
    egress.flags |= EGRESS_RESTORED;
    egress.intf = l3iif;
    return egress;
}

/** Saves the set that the build replaces, before its first change. */
void save_replaced_set(route_build &build)
{
    if (!build.saved) {
        save_curr_egress(&curr_egress, build.set);
        build.saved = true;
    }
}

/** A route with one path; false ends the route. Path 0 is looked at with no path as well. */
bool build_single(route_build &build, int &last_code)
{
    const def_route_path_t &path = build.route->path[0];
    if (path.valid == 0) {
        REPORT_OF(rtifhal_trident_create_default_nh, "intf is not valid :0x%x rc:%s\n",
                  path.ifindex, fwm_syserr2str(last_code));
        return false;
    }
    if (path.ifindex != build.ifindex) {
        return false;
    }
    int l3iif = 0;
    if (!find_ready_iif(path.ifindex, last_code, l3iif)) {
        return false;
    }
    build.egress[0] = next_hop_of(path, l3iif);
    if (build.route->paths == 0) {
        return true;
    }
    if (bcm_l3_egress_create(UNIT, NO_FLAGS, &build.egress[0], &build.next_hop) != 0) {
        REPORT_OF(rtifhal_trident_create_default_nh, "Adj restore failed for handle %d \n",
                  build.next_hop);
        return false;
    }
    TRACE_OF(rtifhal_trident_create_default_nh, "Adj restore passed for handle %d \n",
             build.next_hop);
    save_replaced_set(build);
    build.set->in_use = 1;
    build.set->is_ecmp = 0;
    build.set->egress_ids[0] = static_cast<uint32_t>(build.next_hop);
    build.set->egress_count = 1;
    TRACE_OF(rtifhal_trident_create_default_nh, "egress create %s, total %d, %x, encap %d\n",
             family_of(*build.route), build.set->egress_count, build.next_hop,
             build.egress[0].encap_id);
    return true;
}

/** Whether enough of a route's interfaces are ready, the one that came up among them. */
bool is_multipath_due(const route_build &build, int &last_code)
{
    const def_route_rec_t &route = *build.route;
    bool lists_interface = false;
    uint32_t ready = 0;
    for (uint32_t j = 0; j < usable_paths(route); ++j) {
        const def_route_path_t &path = route.path[j];
        if (path.valid == 0) {
            TRACE_OF(rtifhal_trident_create_default_nh, "total:%d, not_valid\n", j);
            continue;
        }
        lists_interface = lists_interface || path.ifindex == build.ifindex;
        int l3iif = 0;
        ready += find_ready_iif(path.ifindex, last_code, l3iif) ? 1 : 0;
    }
    const uint32_t needed = 3 * route.paths / 4;
    if (!lists_interface || ready < needed) {
        return false;
    }
    TRACE_OF(rtifhal_trident_create_default_nh, "effective:%d, total=%dvalid\n", ready,
             route.paths);
    return true;
}

/** Makes the next hop of one path, valid or not, where its interface is ready. */
void build_member(route_build &build, const def_route_path_t &path, int &last_code)
{
    int l3iif = 0;
    if (!find_ready_iif(path.ifindex, last_code, l3iif)) {
        return;
    }
    const int n = build.made;
    build.egress[n] = next_hop_of(path, l3iif);
    build.ids[n] = 0;
    if (bcm_l3_egress_create(UNIT, NO_FLAGS, &build.egress[n], &build.ids[n]) != 0) {
        REPORT_OF(rtifhal_trident_create_default_nh, "Adj create for ecmp failed l3_iif %d\n",
                  l3iif);
        return;
    }
    save_replaced_set(build);
    build.set->in_use = 1;
    build.set->egress_ids[n] = static_cast<uint32_t>(build.ids[n]);
    build.made = n + 1;
    build.set->egress_count = build.made;
    TRACE_OF(rtifhal_trident_create_default_nh, "Adj create for ecmp succeeded l3_iif %d, %d, %d\n",
             l3iif, build.made, build.ids[n]);
    TRACE_OF(rtifhal_trident_create_default_nh, "egress create %s, total %d/%d, %x, encap %d\n",
             family_of(*build.route), build.made, build.route->paths, build.ids[n],
             build.egress[n].encap_id);
}

/** A route with several paths; false ends the route. */
bool build_multipath(route_build &build, int &last_code)
{
    if (!is_multipath_due(build, last_code)) {
        return false;
    }
    for (uint32_t j = 0; j < usable_paths(*build.route); ++j) {
        build_member(build, build.route->path[j], last_code);
    }
    build.multipath = 1;
    if (build.made == 0) {
        return true;
    }
    if (bcm_l3_egress_multipath_create(UNIT, NO_FLAGS, build.made, build.ids, &build.next_hop) !=
        0) {
        // The new objects stay in the set, and the saved ones in the chip.
        REPORT_OF(rtifhal_trident_create_default_nh, "ECMP restore failed for handle %d \n",
                  build.next_hop);
        return false;
    }
    build.set->is_ecmp = 1;
    build.set->ecmp_id = static_cast<uint32_t>(build.next_hop);
    TRACE_OF(rtifhal_trident_create_default_nh, "Adj restore passed for handle %d \n",
             build.next_hop);
    TRACE_OF(rtifhal_trident_create_default_nh, "multipath create %s, total %d, %x, encap %d",
             family_of(*build.route), build.made, build.next_hop,
             build.egress[build.made - 1].encap_id);
    return true;
}

/** Points the default route to what was built. */
void add_route(const route_build &build)
{
    if (build.next_hop == 0) {
        return;
    }
    const def_route_rec_t &route = *build.route;
    bcm_l3_route_t entry;
    bcm_l3_route_t_init(&entry);
    entry.l3a_subnet = 0;
    entry.l3a_ip_mask = 0;
    entry.l3a_vrf = static_cast<int>(route.vrf);
    entry.l3a_flags = route.family == 0 ? ROUTE_IP4 : ROUTE_IP6;
    entry.l3a_flags |= build.multipath != 0 ? ROUTE_MULTIPATH : 0;
    entry.l3a_intf = build.next_hop;
    const int rc = bcm_l3_route_add(UNIT, &entry);
    if (rc != 0) {
        syslog(LOG_EMERG,
               "### ERROR ADDING DEF_ROUTE for ifindex 0x%x multipath %d tmp_index %d "
               "total_ecmp %d",
               build.ifindex, build.multipath, build.made, static_cast<int>(route.paths));
    }
    TRACE_OF(rtifhal_trident_create_default_nh, "route add  %s, %x intf %d, ret=%d\n",
             family_of(route), build.ifindex, build.next_hop, rc);
}

void rebuild_route(uint32_t index, uint32_t ifindex, int &last_code)
{
    // Not cleared as a whole: it has kilobytes of room for paths.
    route_build build;
    build.route = &def_routes[index];
    build.set = &egresses[index];
    build.ifindex = ifindex;
    build.next_hop = 0;
    build.multipath = 0;
    build.made = 0;
    build.saved = false;
    const bool goes_on =
        build.route->paths < 2 ? build_single(build, last_code) : build_multipath(build, last_code);
    if (!goes_on) {
        return;
    }
    add_route(build);
    if (build.saved) {
        clear_old_egress(&curr_egress);
    }
}

} // namespace

void rtifhal_trident_create_default_nh(uint32_t ifindex)
{
    if (sysmgr_is_fastboot_restart() == 0 || is_switched_off()) {
        return;
    }
    TRACE("%s start >>\n", __func__);
    if (def_routes_loaded == 0) {
        load_def_routes();
    }
    int last_code = 0;
    for (uint32_t i = 0; i < num_def_routes; ++i) {
        rebuild_route(i, ifindex, last_code);
    }
    TRACE("%s end >>\n", __func__);
}
