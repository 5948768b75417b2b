/*
 * growth_changes.cpp: what happens to interfaces that are up: changes of property, restores,
 * and the rebuild of default routes.
 *
 * See growth_requests.h.
 */
#include "growth_parts.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <fwm/state.h>

#include <cstdlib>

namespace bench
{

namespace
{

constexpr std::uint32_t SAVED_ROUTES = 2;

/** Of a property that the setters find in the record alone. */
constexpr std::uint32_t NO_IDENTIFIER = 0;

/** A property, and where the layer above keeps it. */
struct Property {
    const char *name;
    std::uint32_t id;
    void (*set)(l3lif_pi_ctxt &properties, std::uint16_t value);
};

constexpr Property PROPERTIES[] = {
    {"IPv4", RTIFHAL_PROP_IPV4, [](auto &to, auto value) { to.ipv4_en = value; }},
    {"IPv4 multicast", RTIFHAL_PROP_IPV4_MC, [](auto &to, auto value) { to.ipv4_mc_en = value; }},
    {"VRF", RTIFHAL_PROP_VRF, [](auto &to, auto value) { to.vrf = value; }},
    {"uRPF", RTIFHAL_PROP_URPF,
     [](auto &to, auto value) { to.urpf_mode = static_cast<std::uint8_t>(value + 2); }},
    {"ingress flag", RTIFHAL_PROP_INGRESS_FLAG,
     [](auto &to, auto value) { to.ingress_flag_word = value; }},
    {"IPv6", RTIFHAL_PROP_IPV6, [](auto &to, auto value) { to.ipv6_en = value; }},
    {"IPv6 VRF", RTIFHAL_PROP_IPV6_VRF, [](auto &to, auto value) { to.ipv6_vrf = value; }},
    {"class bit", RTIFHAL_PROP_CLASS_HIGH, [](auto &to, auto value) { to.class_high_bit = value; }},
    {"MTU", NO_IDENTIFIER,
     [](auto &to, auto value) { to.mtu = static_cast<std::uint16_t>(9000 + value); }},
    {"MPLS", RTIFHAL_PROP_MPLS, [](auto &to, auto value) { to.mpls_en = value; }},
};

constexpr const Property &VRF = PROPERTIES[2];

/** The setter of the interface's kind. */
void apply(Interface &interface, const Property &property, std::uint16_t value)
{
    l3lif *const record = &interface.record;
    property.set(interface.properties, value);
    int rc = 0;
    switch (interface.kind) {
    case Kind::port:
        rc = rtifhal_set_kelvo_l3_property_l3int(record);
        break;
    case Kind::port_channel:
        rc = rtifhal_set_kelvo_l3_property_l3pc(record);
        break;
    case Kind::svi:
        rc = rtifhal_set_kelvo_l3_property_svi(record, property.id, value);
        break;
    case Kind::subinterface:
    case Kind::channel_subinterface:
        rc = rtifhal_set_kelvo_l3_property_subint(record);
        break;
    case Kind::tunnel:
        rc = rtifhal_set_kelvo_l3_property_l3tun(record);
        break;
    }
    must_succeed(rc, property.name);
}

/** Changes a property there and back; in the end it is as it was. */
Request change(const std::string &kind, Interface &interface, const Property &property)
{
    const l3lif_pi_ctxt kept = interface.properties;
    return {kind + ": set " + property.name, BATCH, [] {},
            [&interface, &property] {
                for (std::uint16_t i = 0; i < BATCH; ++i) {
                    apply(interface, property, i % 2);
                }
            },
            [&interface, kept] { interface.properties = kept; }};
}

Request relabel(const std::string &kind, const Interface &interface)
{
    return {kind + ": set class label", BATCH, [] {},
            [ifindex = interface.record.ifindex] {
                for (std::uint16_t i = 0; i < BATCH; ++i) {
                    must_succeed(rtifhal_upd_classid(i % 2, ifindex), "set class label");
                }
            }};
}

Request stop_routing(const std::string &kind, Interface &interface)
{
    return {kind + ": stop routing", BATCH, [] {},
            [ifindex = interface.record.ifindex] {
                for (std::size_t i = 0; i < BATCH; ++i) {
                    must_succeed(rtifhal_trident_l3_disable(ifindex), "stop routing");
                }
            },
            [&interface] { apply(interface, VRF, interface.properties.vrf); }};
}

/** A saved route of one path over an interface. */
def_route_rec_t saved_route(std::uint32_t family, std::uint32_t ifindex)
{
    def_route_rec_t route = {};
    route.family = family;
    route.vrf = 1;
    route.paths = 1;
    route.path[0].valid = 1;
    route.path[0].ifindex = ifindex;
    return route;
}

} // namespace

void add_changes(Requests &requests, const std::array<Standing, 6> &standing)
{
    for (const Standing &one : standing) {
        for (const Property &property : PROPERTIES) {
            requests.push_back(change(one.kind, *one.interface, property));
        }
        requests.push_back(relabel(one.kind, *one.interface));
        requests.push_back(stop_routing(one.kind, *one.interface));
    }
}

void add_port_change(Requests &requests, Interface &port)
{
    requests.push_back(change("port", port, VRF));
}

void add_port_channel_change(Requests &requests, Interface &channel)
{
    requests.push_back(change("port-channel", channel, VRF));
}

void add_restores(Requests &requests, Network &network, const std::array<Standing, 6> &standing)
{
    const auto begin = [] { g_fwm_pss_restore_mode = 1; };
    const auto end = [&network] {
        g_fwm_pss_restore_mode = 0;
        network.restore_numbers();
    };
    for (const Standing &one : standing) {
        l3lif *const record = one.interface->kind == Kind::channel_subinterface
                                  ? &one.interface->view
                                  : &one.interface->record;
        requests.push_back({std::string(one.kind) + ": restore", BATCH, begin,
                            [record] {
                                for (std::size_t i = 0; i < BATCH; ++i) {
                                    must_succeed(rtifhal_trident_l3port_restore(record), "restore");
                                }
                            },
                            end});
    }
    requests.push_back({"numbers held back: restore", BATCH, begin,
                        [] {
                            for (std::size_t i = 0; i < BATCH; ++i) {
                                must_succeed(rtifhal_trident_pss_restore_global_context(),
                                             "restore numbers");
                            }
                        },
                        end});
}

void add_default_routes(Requests &requests, std::uint32_t ifindex)
{
    def_routes_loaded = 1; // No file is read.
    num_def_routes = SAVED_ROUTES;
    def_routes = static_cast<def_route_rec_t *>(std::calloc(SAVED_ROUTES, sizeof *def_routes));
    egresses = static_cast<def_egress_set_t *>(std::calloc(SAVED_ROUTES, sizeof *egresses));
    must_succeed(def_routes != nullptr && egresses != nullptr ? 0 : -1, "default routes");
    for (std::uint32_t family = 0; family < SAVED_ROUTES; ++family) {
        def_routes[family] = saved_route(family, ifindex);
    }
    requests.push_back({"two default routes: rebuild", BATCH,
                        [] { null_platform::set_fast_restart(true); },
                        [ifindex] {
                            for (std::size_t i = 0; i < BATCH; ++i) {
                                rtifhal_trident_create_default_nh(ifindex);
                            }
                        },
                        [] { null_platform::set_fast_restart(false); }});
}

} // namespace bench
