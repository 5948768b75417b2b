/*
 * fhrp_mac.cpp: the virtual MACs of first-hop redundancy: a station for each
 * on its interface, and one on each secondary of a private VLAN's primary.
 *
 * Nothing is shared: a MAC of two interfaces has two stations. The stations of
 * the secondaries are installed before the primary's own, and stay when that
 * fails.
 */
#include "station/fhrp_mac.h"

#include "frame/if_types.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "station/pvlan_svi.h"
#include "station/station.h"

#include <fwm/vlan.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/l2.h>
#include <services/if_index.h>
#include <string.h>

namespace
{

/** What the layer above asks to install or remove. */
struct fhrp_request {
    int unit;
    const uint8_t *mac;
    uint32_t ifindex;
    uint8_t type;
    const struct l3lif *l3lif;
    uint16_t key_vlan;
};

/** What a walk over the private-VLAN pairs needs to know of the MAC. */
struct fhrp_sec_vlan_walk {
    uint32_t ifindex;
    uint8_t mac[6];
    uint16_t primary;
};

/** How the choice of a station ended. */
enum class choice { install, done, failed };

/** Neighbour discovery's multicast MACs, which routing doesn't take on data ports. */
bool is_ipv6_multicast(const uint8_t *mac)
{
    return mac[0] == 0x33 && mac[1] == 0x33;
}

uint16_t key_vlan_of(uint8_t type, const struct l3lif *l3lif)
{
    return type == IF_TYPE_SVI ? l3lif->vlan : static_cast<uint16_t>(RTIFHAL_VLAN_ROUTED);
}

bool is_private_primary(uint16_t vlan)
{
    struct fwm_fwim_vlan *const record = FWM_FWIM_FIND_VLAN(1, vlan);
    if (record == nullptr) {
        return false;
    }
    struct fwm_fwim_pvlan *const pvlan = FWM_FWIM_VLAN_PVLAN(record);
    return pvlan != nullptr && FWM_FWIM_PVLAN_IS_PRIMARY(pvlan) != 0;
}

/** Visits all pairs on behalf of one MAC of an SVI. */
void walk_secondaries(const fhrp_request &request, uint16_t vlan, GHFunc visitor)
{
    fhrp_sec_vlan_walk walk = {request.ifindex, {}, vlan};
    memcpy(walk.mac, request.mac, sizeof walk.mac);
    if (pvlan_svi_map != nullptr) {
        g_hash_table_foreach(pvlan_svi_map, visitor, &walk);
    }
}

void rtifhal_fhrp_mac_prog_sec_vlan(gpointer, gpointer value, gpointer context)
{
    const auto &pair = *static_cast<const pvlan_svi_pair *>(value);
    const auto &walk = *static_cast<const fhrp_sec_vlan_walk *>(context);
    const int unit = rtifhal_get_bcm_unit(0);
    TRACE("pvlan_svi_map primVLAN %d\n", pair.primary);
    if (pair.primary != walk.primary) {
        return;
    }

    const auto vlan = static_cast<uint16_t>(pair.secondary);
    const uint8_t *const mac = walk.mac;
    bcm_l2_station_t station = station_of_mac(STATION_FLAGS, mac);
    match_vlan(station, vlan);
    TRACE(" pvlan_svi_map SecVLAN %d\n", pair.secondary);
    int id = 0;
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_add(unit, &id, &station);
    if (rc < 0) {
        REPORT("fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) failed: %s\n", mac[0], mac[1], mac[2],
               mac[3], mac[4], mac[5], rtifhal_errtext(rc));
        return;
    }
    TRACE("fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) @ idx:%d\n", mac[0], mac[1], mac[2], mac[3],
          mac[4], mac[5], id);
    if (rtifhal_fhrp_mac_save(walk.ifindex, mac, vlan, id) != 0) {
        TRACE("Failed to save SecVLAN macaddr info in avl tree\n");
    }
}

void rtifhal_fhrp_mac_unprog_sec_vlan(gpointer, gpointer value, gpointer context)
{
    const auto &pair = *static_cast<const pvlan_svi_pair *>(value);
    const auto &walk = *static_cast<const fhrp_sec_vlan_walk *>(context);
    const int unit = rtifhal_get_bcm_unit(0);
    TRACE("svi_map PrimVLAN %d\n", pair.primary);
    if (pair.primary != walk.primary) {
        return;
    }

    const auto vlan = static_cast<uint16_t>(pair.secondary);
    const uint8_t *const mac = walk.mac;
    const fhrp_mac_entry_t *const entry = rtifhal_fhrp_mac_find(walk.ifindex, mac, vlan);
    if (entry == nullptr) {
        TRACE("FHRP MAC(%02x:%02x:%02x:%02x:%02x:%02x) not found for Secondary VLANin hash "
              "table\n",
              mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
        return;
    }
    TRACE("SecVLAN %d\n", pair.secondary);
    const auto id = static_cast<int>(entry->station_id);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_delete(unit, id);
    if (rc < 0) {
        REPORT("Sec VLAN l2_station del failed(%s) for idx:%d\n", rtifhal_errtext(rc), id);
    }
    rtifhal_fhrp_mac_remove(walk.ifindex, mac, vlan);
}

/** Whether the MAC's entry and its station are both there, so that nothing is to be done. */
bool is_installed(const fhrp_request &request, bcm_l2_station_t &station)
{
    const uint8_t *const mac = request.mac;
    const fhrp_mac_entry_t *const entry =
        rtifhal_fhrp_mac_find(request.ifindex, mac, request.key_vlan);
    if (entry == nullptr) {
        return false;
    }
    TRACE_OF(rtifhal_trident_fhrp_mac_add,
             "(%02x:%02x:%02x:%02x:%02x:%02x) already present in hash table on intf %#x\n", mac[0],
             mac[1], mac[2], mac[3], mac[4], mac[5], request.ifindex);
    if (bcm_l2_station_get(request.unit, static_cast<int>(entry->station_id), &station) >= 0) {
        return true;
    }
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "MAC not present in HW program it\n");
    return false;
}

choice choose_subinterface(const fhrp_request &request, bcm_l2_station_t &station)
{
    match_vlan(station, RTIFHAL_VLAN_ROUTED);
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "Sub interface vlan %d\n", request.l3lif->vlan);
    if (request.type != IF_TYPE_ETHERNET) {
        return choice::install;
    }
    int port = -1;
    if (fwmpd_ifindex_to_bcm_port(request.ifindex, &port) != 0) {
        REPORT_OF(rtifhal_trident_fhrp_mac_add,
                  "failed to get port from if_index for sub interface\n");
        return choice::failed;
    }
    match_port(station, port);
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "Sub interface port %d\n", port);
    return choice::install;
}

choice choose_svi(const fhrp_request &request, bcm_l2_station_t &station)
{
    const uint16_t vlan = request.l3lif->vlan;
    match_vlan(station, vlan);
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "SVI vlan %d\n", vlan);
    if (is_private_primary(vlan)) {
        walk_secondaries(request, vlan, rtifhal_fhrp_mac_prog_sec_vlan);
    }
    return choice::install;
}

choice choose_port(const fhrp_request &request, bcm_l2_station_t &station)
{
    int port = -1;
    if (fwmpd_ifindex_to_bcm_port(request.ifindex, &port) != 0) {
        REPORT_OF(rtifhal_trident_fhrp_mac_add,
                  "failed to get port from if_index for L3 physical interface\n");
        return choice::failed;
    }
    match_port(station, port);
    match_vlan(station, RTIFHAL_VLAN_ROUTED);
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "L3 physical interface port %d\n", port);
    return choice::install;
}

/** Narrows the station to where the interface's frames come in. */
choice choose_station(const fhrp_request &request, bcm_l2_station_t &station)
{
    uint16_t number = 0;
    if (if_index_get_sub_intf(request.ifindex, &number) == 0 && number != 0) {
        return choose_subinterface(request, station);
    }
    switch (request.type) {
    case IF_TYPE_SVI:
        return choose_svi(request, station);
    case IF_TYPE_ETHERNET:
        return choose_port(request, station);
    case IF_TYPE_MANAGEMENT:
        TRACE_OF(rtifhal_trident_fhrp_mac_add,
                 "Skipping l2_station programming for mgmt interface\n");
        return choice::done;
    default:
        // The MAC alone decides.
        return choice::install;
    }
}

void install(const fhrp_request &request, bcm_l2_station_t &station)
{
    const uint8_t *const mac = request.mac;
    int id = 0;
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_add(request.unit, &id, &station);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_fhrp_mac_add,
                  "fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) failed: %s\n", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5], rtifhal_errtext(rc));
        return;
    }
    TRACE_OF(rtifhal_trident_fhrp_mac_add, "fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) @ idx:%d\n",
             mac[0], mac[1], mac[2], mac[3], mac[4], mac[5], id);
    if (rtifhal_fhrp_mac_save(request.ifindex, mac, request.key_vlan, id) != 0) {
        TRACE_OF(rtifhal_trident_fhrp_mac_add, "Failed to save addr info in hash table\n");
    }
}

} // namespace

int rtifhal_trident_fhrp_mac_add(const uint8_t *mac, uint32_t ifindex)
{
    if (mac == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    const struct l3lif *const l3lif = l3lif_find_lif_from_ifindex(ifindex);
    if (l3lif == nullptr) {
        REPORT("failed to get l3lif from if_index\n");
        return -1;
    }
    uint8_t type = 0;
    if (if_index_get_type(ifindex, &type) != 0) {
        REPORT("failed to get if type from if_index\n");
        return -1;
    }

    const fhrp_request request = {unit, mac, ifindex, type, l3lif, key_vlan_of(type, l3lif)};
    bcm_l2_station_t station = station_of_mac(FHRP_STATION_FLAGS, mac);
    if (is_installed(request, station)) {
        return 0;
    }
    if (is_ipv6_multicast(mac) && type != IF_TYPE_MANAGEMENT) {
        TRACE("Not installing (%02x:%02x:%02x:%02x:%02x:%02x) on intf %#x\n", mac[0], mac[1],
              mac[2], mac[3], mac[4], mac[5], ifindex);
        return 0;
    }
    const choice chosen = choose_station(request, station);
    if (chosen == choice::install) {
        install(request, station);
    }
    return chosen == choice::failed ? -1 : 0;
}

int rtifhal_trident_fhrp_mac_del(const uint8_t *mac, uint32_t ifindex)
{
    if (mac == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    uint8_t type = 0;
    if (if_index_get_type(ifindex, &type) != 0) {
        REPORT("failed to get if type from if_index\n");
        return -1;
    }
    const struct l3lif *const l3lif = l3lif_find_lif_from_ifindex(ifindex);
    if (l3lif == nullptr) {
        REPORT("failed to get l3lif from if_index\n");
        return -1;
    }

    const fhrp_request request = {unit, mac, ifindex, type, l3lif, key_vlan_of(type, l3lif)};
    if (is_ipv6_multicast(mac) && type != IF_TYPE_MANAGEMENT) {
        TRACE("L2 IPv6 Multicast addresses are not installed on non-management interfaces\n");
        return 0;
    }
    const fhrp_mac_entry_t *const entry = rtifhal_fhrp_mac_find(ifindex, mac, request.key_vlan);
    if (entry == nullptr) {
        TRACE("FHRP MAC(%02x:%02x:%02x:%02x:%02x:%02x) not found in hash table\n", mac[0], mac[1],
              mac[2], mac[3], mac[4], mac[5]);
        return 0;
    }
    // A pair whose secondary is the primary itself takes the entry away in the walk.
    const auto id = static_cast<int>(entry->station_id);
    if (type == IF_TYPE_SVI && is_private_primary(request.key_vlan)) {
        walk_secondaries(request, request.key_vlan, rtifhal_fhrp_mac_unprog_sec_vlan);
    }
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_delete(unit, id);
    if (rc < 0) {
        REPORT("l2_station_delete failed(%s) for idx:%d\n", rtifhal_errtext(rc), id);
    }
    rtifhal_fhrp_mac_remove(ifindex, mac, request.key_vlan);
    return rc < 0 ? -1 : 0;
}
