/*
 * requests.cpp: adds and deletes of each kind, stations, pairs, restores, default routes.
 * property_requests.cpp has the properties.
 */
#include "requests.h"

#include "property_requests.h"

#include <services/avl.h>

#include <array>

namespace floor_bench
{

namespace
{

constexpr std::array<std::uint8_t, 6> ROUTER_MAC = {0x02, 0, 0, 0, 0, 0x10};
constexpr std::array<std::uint8_t, 6> VIRTUAL_MAC = {0, 0, 0x5E, 0, 1, 9};

/** Whether an add creates and a delete destroys, or keeps number and record. */
constexpr int FOR_GOOD = 1;
constexpr int KEPT = 0;

void back(World &world)
{
    world.restore_numbers();
}

Cycle ports()
{
    return {
        .requests = {
            {"port: add",
             [](World &w) { (void)rtifhal_trident_add_l3port(&w.guest_port.lif, FOR_GOOD); }},
            {"port: delete, kept",
             [](World &w) { (void)rtifhal_trident_del_l3port(&w.guest_port.lif, KEPT); }},
            {"port: add again",
             [](World &w) { (void)rtifhal_trident_add_l3port(&w.guest_port.lif, KEPT); }},
            {"port: delete",
             [](World &w) { (void)rtifhal_trident_del_l3port(&w.guest_port.lif, FOR_GOOD); }, back},
        }};
}

Cycle port_channels()
{
    return {
        .requests = {
            {"port-channel: add, first member",
             [](World &w) { (void)rtifhal_trident_add_l3pc(&w.guest_member.lif, FOR_GOOD); }},
            {"port-channel: delete, last member",
             [](World &w) { (void)rtifhal_trident_del_l3pc(&w.guest_member.lif, FOR_GOOD); }, back},
            {"port-channel: add, second member",
             [](World &w) { (void)rtifhal_trident_add_l3pc(&w.second_member.lif, KEPT); }},
            {"port-channel: delete, second member",
             [](World &w) { (void)rtifhal_trident_del_l3pc(&w.second_member.lif, KEPT); }},
        }};
}

Cycle svis()
{
    return {
        .requests = {
            {"SVI: add",
             [](World &w) { (void)rtifhal_trident_add_svi(&w.guest_svi.lif, 0, FOR_GOOD); }},
            {"SVI: delete",
             [](World &w) { (void)rtifhal_trident_del_svi(&w.guest_svi.lif, 0, FOR_GOOD); }, back},
        }};
}

Cycle subinterfaces()
{
    return {.requests = {
                {"subinterface: add",
                 [](World &w) { (void)rtifhal_trident_add_subint(&w.guest_sub.lif, 0, FOR_GOOD); }},
                {"subinterface: delete",
                 [](World &w) { (void)rtifhal_trident_del_subint(&w.guest_sub.lif, 0, FOR_GOOD); },
                 back},
            }};
}

/** After an add the subinterface has the context that its record of the port-channel got. */
void take_context(World &world)
{
    world.guest_channel_sub.lif.l3lif_pd_ctxt = world.guest_channel_sub.view.l3lif_pd_ctxt;
}

void give_context(World &world)
{
    world.guest_channel_sub.view.l3lif_pd_ctxt = world.guest_channel_sub.lif.l3lif_pd_ctxt;
    world.restore_numbers();
}

Cycle channel_subinterfaces()
{
    return {.requests = {
                {"subinterface of a port-channel: add",
                 [](World &w) {
                     (void)rtifhal_trident_add_subint(&w.guest_channel_sub.lif, 0, FOR_GOOD);
                 },
                 take_context},
                {"subinterface of a port-channel: delete",
                 [](World &w) {
                     (void)rtifhal_trident_del_subint(&w.guest_channel_sub.lif, 0, FOR_GOOD);
                 },
                 give_context},
            }};
}

Cycle tunnels()
{
    return {.requests = {
                {"tunnel: add",
                 [](World &w) { (void)rtifhal_trident_add_l3tun(&w.guest_tunnel.lif, FOR_GOOD); }},
                {"tunnel: delete",
                 [](World &w) { (void)rtifhal_trident_del_l3tun(&w.guest_tunnel.lif, FOR_GOOD); },
                 back},
            }};
}

Cycle router_macs()
{
    return {
        .requests = {
            {"router MAC: add",
             [](World &w) { w.router_mac = rtifhal_trident_rmac_add(ROUTER_MAC.data()); }},
            {"router MAC: delete", [](World &w) { (void)rtifhal_trident_rmac_del(w.router_mac); }},
        }};
}

template <auto LIF> void add_virtual_mac(World &world)
{
    (void)rtifhal_trident_fhrp_mac_add(VIRTUAL_MAC.data(), LIF(world).lif.ifindex);
}

template <auto LIF> void delete_virtual_mac(World &world)
{
    (void)rtifhal_trident_fhrp_mac_del(VIRTUAL_MAC.data(), LIF(world).lif.ifindex);
}

template <auto LIF> Cycle virtual_macs(const std::string &where)
{
    return {.requests = {{"virtual MAC of " + where + ": add", add_virtual_mac<LIF>},
                         {"virtual MAC of " + where + ": delete", delete_virtual_mac<LIF>}}};
}

Lif &standing_port(World &world)
{
    return world.standing(Kind::port);
}

Lif &standing_svi(World &world)
{
    return world.standing(Kind::svi);
}

Lif &primary_svi(World &world)
{
    return world.primary;
}

Cycle pairs()
{
    return {.requests = {
                {"private-VLAN pair: add",
                 [](World &) {
                     rtifhal_kelvo_pvlan_svi_mapping_update(VLAN_PRIMARY, VLAN_NEW_SECONDARY, 1);
                 }},
                {"private-VLAN pair: delete",
                 [](World &) {
                     rtifhal_kelvo_pvlan_svi_mapping_update(VLAN_PRIMARY, VLAN_NEW_SECONDARY, 0);
                 }},
            }};
}

template <Kind KIND> void restore(World &world)
{
    (void)rtifhal_trident_l3port_restore(&world.standing(KIND).lif);
}

template <Kind KIND> Cycle restored(const std::string &kind)
{
    return {.requests = {{kind + ": restore", restore<KIND>}}};
}

/** Two builds: each takes the ids that the one before gave back. */
Cycle default_routes(const std::string &name, void (*build)(World &))
{
    return {.before = [](World &) { null_platform::set_fast_restart(true); },
            .after = [](World &) { null_platform::set_fast_restart(false); },
            .requests = {{name, build}, {name + ", again", build}}};
}

std::vector<Cycle> all_cycles()
{
    std::vector<Cycle> all = {
        ports(),
        port_channels(),
        svis(),
        subinterfaces(),
        channel_subinterfaces(),
        tunnels(),
        router_macs(),
        virtual_macs<standing_port>("a port"),
        virtual_macs<standing_svi>("an SVI"),
        virtual_macs<primary_svi>("a primary VLAN's SVI"),
        pairs(),
        restored<Kind::port>("port"),
        restored<Kind::port_channel>("port-channel"),
        restored<Kind::svi>("SVI"),
        restored<Kind::subinterface>("subinterface"),
        restored<Kind::tunnel>("tunnel"),
        default_routes("default route, 1 path: rebuild",
                       [](World &w) {
                           rtifhal_trident_create_default_nh(w.standing(Kind::port).lif.ifindex);
                       }),
        default_routes(
            "default route, 4 paths: rebuild",
            [](World &) { rtifhal_trident_create_default_nh(null_platform::port_ifindex(20)); }),
    };
    add_property_cycles(all);
    return all;
}

} // namespace

const std::vector<Cycle> &cycles()
{
    static const std::vector<Cycle> all = all_cycles();
    return all;
}

} // namespace floor_bench
