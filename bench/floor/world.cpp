/*
 * world.cpp: see world.h.
 */
#include "world.h"

#include "rtifhal_kelvo_trident/station/pvlan_svi.h"

#include <fwmpd/platform.h>
#include <l3lif/l3lif_layer.h>
#include <services/avl.h>

#include <cstdlib>
#include <new>

namespace floor_bench
{

namespace
{

using null_platform::port_channel_ifindex;
using null_platform::port_ifindex;
using null_platform::subinterface_ifindex;
using null_platform::svi_ifindex;
using null_platform::tunnel_ifindex;

/** Ports of the world, from 0. */
constexpr std::uint32_t PORT_STANDING = 1;
constexpr std::uint32_t PORT_MEMBER = 2;
constexpr std::uint32_t PORT_SUB = 3;
constexpr std::uint32_t PORT_PATHS = 20;
constexpr std::uint32_t PORT_GUEST = 10;
constexpr std::uint32_t PORT_GUEST_MEMBER = 11;
constexpr std::uint32_t PORT_SECOND_MEMBER = 12;
constexpr std::uint32_t PORT_GUEST_SUB = 13;
constexpr std::uint32_t CHANNEL_STANDING = 1;
constexpr std::uint32_t CHANNEL_GUEST = 2;

/** A field entry that floods to ports, in the data of the layer above. */
constexpr std::uint32_t FLOOD_ENTRY = 20;

constexpr std::array<std::uint8_t, 6> STANDING_VIRTUAL_MAC = {0, 0, 0x5E, 0, 1, 1};

/** The order of interfaces and of members: by ifindex, with which each record begins. */
int by_ifindex(const void *a, const void *b)
{
    const auto left = *static_cast<const std::uint32_t *>(a);
    const auto right = *static_cast<const std::uint32_t *>(b);
    return left < right ? -1 : static_cast<int>(left > right);
}

void set_up(Lif &made, std::uint32_t ifindex, std::uint16_t vlan = 0)
{
    made.lif.ifindex = ifindex;
    made.lif.mac[0] = 0x02;
    made.lif.mac[5] = static_cast<std::uint8_t>(ifindex >> 12);
    made.lif.vlan = vlan;
    made.lif.si_encap_vlan = vlan;
    made.lif.l3lif_pi_ctxt = &made.properties;
    made.properties.ipv4_en = 1;
    made.properties.ipv6_en = 1;
    made.properties.vrf = 1;
    made.properties.mtu = 9100;
    null_platform::make_known(made.lif);
}

void set_up_svi(Lif &made, std::uint16_t vlan)
{
    made.lif.int_vlan = vlan;
    set_up(made, svi_ifindex(vlan), vlan);
}

void set_up_member(Lif &member, std::uint32_t port, Lif &channel)
{
    set_up(member, port_ifindex(port));
    member.lif.main_l3lif = &channel.lif;
}

template <class Record> Record *zeroed(std::size_t count)
{
    void *const memory = std::calloc(count, sizeof(Record));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<Record *>(memory);
}

void fill_route(def_route_rec_t &route, std::uint32_t vrf, std::uint32_t paths,
                std::uint32_t first_port)
{
    route.vrf = vrf;
    route.paths = paths;
    for (std::uint32_t i = 0; i < paths; ++i) {
        route.path[i].valid = 1;
        route.path[i].ifindex = port_ifindex(first_port + i);
    }
}

} // namespace

World::World(null_platform::Chip chip)
{
    null_platform::reset(chip);
    null_platform::set_private_vlan(VLAN_PRIMARY, null_platform::PrivateVlan::primary);
    null_platform::set_private_vlan(VLAN_SECONDARY, null_platform::PrivateVlan::secondary);
    null_platform::set_private_vlan(VLAN_NEW_SECONDARY, null_platform::PrivateVlan::secondary);
    for (const std::uint16_t vlan : {VLAN_STANDING, VLAN_GUEST}) {
        null_platform::set_private_vlan(vlan, null_platform::PrivateVlan::none);
    }
    null_platform::set_flood_entry(0, FLOOD_ENTRY);
    set_up(standing(Kind::port), port_ifindex(PORT_STANDING));
    set_up_svi(standing(Kind::svi), VLAN_STANDING);
    set_up_svi(primary, VLAN_PRIMARY);
    set_up_svi(guest_svi, VLAN_GUEST);
    set_up(standing(Kind::tunnel), tunnel_ifindex(1));
    set_up(guest_tunnel, tunnel_ifindex(2));
    set_up(guest_port, port_ifindex(PORT_GUEST));
    for (std::uint32_t i = 0; i < ROUTE_PATHS; ++i) {
        set_up(path_ports_[i], port_ifindex(PORT_PATHS + i));
    }
    set_up_channels();
    set_up_subinterfaces();
    // The L2 side holds the VLANs of SVIs.
    for (const std::uint16_t vlan :
         {VLAN_PRIMARY, VLAN_SECONDARY, VLAN_NEW_SECONDARY, VLAN_STANDING, VLAN_GUEST}) {
        rtifhal_set_l2_vlan(vlan);
    }
    bring_up();
    make_default_routes();
    numbers_ = l3lif_l3iif_table;
    held_back_ = l3lif_l3iif_table_preserve;
}

void World::set_up_channels()
{
    set_up(standing(Kind::port_channel), port_channel_ifindex(CHANNEL_STANDING));
    set_up(guest_channel, port_channel_ifindex(CHANNEL_GUEST));
    set_up_member(standing_member, PORT_MEMBER, standing(Kind::port_channel));
    set_up_member(second_member, PORT_SECOND_MEMBER, standing(Kind::port_channel));
    set_up_member(guest_member, PORT_GUEST_MEMBER, guest_channel);
    l3lif &channel = standing(Kind::port_channel).lif;
    channel.pc_member_tree = avl_create(by_ifindex, 0);
    channel.subint_tree = avl_create(by_ifindex, 0);
    (void)avl_insert(channel.pc_member_tree, &standing_member.lif.ifindex);
    guest_channel.lif.pc_member_tree = avl_create(by_ifindex, 0);
    (void)avl_insert(guest_channel.lif.pc_member_tree, &guest_member.lif.ifindex);
}

void World::set_up_subinterfaces()
{
    Lif &sub = standing(Kind::subinterface);
    set_up(sub_main_, port_ifindex(PORT_SUB));
    set_up(sub, subinterface_ifindex(sub_main_.lif.ifindex, 7), VLAN_SUBINTERFACE);
    sub.lif.main_l3lif = &sub_main_.lif;
    set_up(guest_sub_main_, port_ifindex(PORT_GUEST_SUB));
    set_up(guest_sub, subinterface_ifindex(guest_sub_main_.lif.ifindex, 7),
           VLAN_GUEST_SUBINTERFACE);
    guest_sub.lif.main_l3lif = &guest_sub_main_.lif;
    for (Lif *const main : {&sub_main_, &guest_sub_main_}) {
        main->lif.subint_tree = avl_create(by_ifindex, 0);
    }
    (void)avl_insert(sub_main_.lif.subint_tree, &sub.lif);
    (void)avl_insert(guest_sub_main_.lif.subint_tree, &guest_sub.lif);

    l3lif &channel = standing(Kind::port_channel).lif;
    set_up(guest_channel_sub, subinterface_ifindex(channel.ifindex, 7), VLAN_GUEST_CHANNEL_SUB);
    guest_channel_sub.view = guest_channel_sub.lif;
    guest_channel_sub.view.ifindex = channel.ifindex;
    guest_channel_sub.view.int_vlan = VLAN_GUEST_CHANNEL_SUB;
    guest_channel_sub.lif.main_l3lif = &guest_channel_sub.view;
}

void World::bring_up()
{
    (void)rtifhal_trident_add_l3port(&standing(Kind::port).lif, 1);
    (void)rtifhal_trident_add_l3pc(&standing_member.lif, 1);
    (void)rtifhal_trident_add_svi(&standing(Kind::svi).lif, 0, 1);
    // The pair first: an SVI looks for the pairs of its VLAN.
    rtifhal_kelvo_pvlan_svi_mapping_update(VLAN_PRIMARY, VLAN_SECONDARY, 1);
    (void)rtifhal_trident_add_svi(&primary.lif, 0, 1);
    (void)rtifhal_trident_add_l3port(&sub_main_.lif, 1);
    (void)rtifhal_trident_add_l3port(&guest_sub_main_.lif, 1);
    (void)rtifhal_trident_add_subint(&standing(Kind::subinterface).lif, 0, 1);
    (void)rtifhal_trident_add_l3tun(&standing(Kind::tunnel).lif, 1);
    for (Lif &port : path_ports_) {
        (void)rtifhal_trident_add_l3port(&port.lif, 1);
    }
    (void)rtifhal_trident_fhrp_mac_add(STANDING_VIRTUAL_MAC.data(), primary.lif.ifindex);
}

void World::make_default_routes()
{
    // No file is there to be read; the routes are put in place of what it would have had.
    null_platform::set_fast_restart(true);
    rtifhal_trident_create_default_nh(standing(Kind::port).lif.ifindex);
    null_platform::set_fast_restart(false);
    std::free(def_routes);
    std::free(egresses);
    num_def_routes = 2;
    def_routes = zeroed<def_route_rec_t>(num_def_routes);
    egresses = zeroed<def_egress_set_t>(num_def_routes);
    fill_route(def_routes[0], 1, 1, PORT_STANDING);
    fill_route(def_routes[1], 2, ROUTE_PATHS, PORT_PATHS);
}

void World::restore_numbers()
{
    l3lif_l3iif_table = numbers_;
    l3lif_l3iif_table_preserve = held_back_;
}

std::vector<const void *> World::objects() const
{
    std::vector<const void *> objects;
    for (const Lif *const lif :
         {&primary, &standing_member, &guest_port, &guest_channel, &guest_member, &second_member,
          &guest_svi, &guest_sub, static_cast<const Lif *>(&guest_channel_sub), &guest_tunnel,
          &sub_main_, &guest_sub_main_}) {
        objects.push_back(&lif->lif);
        objects.push_back(lif->lif.subint_tree);
        objects.push_back(lif->lif.pc_member_tree);
    }
    for (const Lif &lif : standing_) {
        objects.push_back(&lif.lif);
        objects.push_back(lif.lif.subint_tree);
        objects.push_back(lif.lif.pc_member_tree);
    }
    for (const Lif &lif : path_ports_) {
        objects.push_back(&lif.lif);
    }
    objects.push_back(&guest_channel_sub.view);
    objects.push_back(fhrp_mac_hash);
    objects.push_back(pvlan_svi_map);
    return objects;
}

} // namespace floor_bench
