/*
 * convert.cpp: the SDK's records as the chip's tables keep them, and back.
 */
#include "sdk/convert.h"

#include <algorithm>
#include <array>

namespace simswitch::sdk
{

namespace
{

chip::Mac mac_of(const bcm_mac_t &bytes)
{
    chip::Mac mac;
    std::copy(std::begin(bytes), std::end(bytes), mac.begin());
    return mac;
}

} // namespace

chip::PortSet to_chip(const bcm_pbmp_t &ports)
{
    chip::PortSet::Words words;
    std::copy(std::begin(ports.pbits), std::end(ports.pbits), words.begin());
    return chip::PortSet(words);
}

chip::Station to_chip(const bcm_l2_station_t &station)
{
    return {
        .flags = station.flags,
        .mac = mac_of(station.dst_mac),
        .mac_mask = mac_of(station.dst_mac_mask),
        .vlan = station.vlan,
        .vlan_mask = station.vlan_mask,
        .src_port = station.src_port,
        .src_port_mask = station.src_port_mask,
    };
}

chip::L3Interface to_chip(const bcm_l3_intf_t &intf)
{
    return {
        .flags = intf.l3a_flags & ~(L3_INTF_WITH_ID | L3_INTF_REPLACE),
        .vrf = intf.l3a_vrf,
        .mac = mac_of(intf.l3a_mac_addr),
        .vlan = intf.l3a_vid,
        .ttl = intf.l3a_ttl,
        .mtu = intf.l3a_mtu,
        .tunnel = intf.l3a_tunnel_idx,
    };
}

chip::L3Ingress to_chip(const bcm_l3_ingress_t &ingress)
{
    return {
        .flags = ingress.flags,
        .vrf = ingress.vrf,
        .urpf_mode = ingress.urpf_mode,
        .intf_class = static_cast<std::uint8_t>(ingress.intf_class),
        .ipmc_intf = ingress.ipmc_intf_id,
        .qos_map = ingress.qos_map_id,
        .reserved = std::to_array(ingress.reserved),
    };
}

chip::Egress to_chip(const bcm_l3_egress_t &egress)
{
    return {
        .flags = egress.flags,
        .interface = egress.intf,
        .mac = mac_of(egress.mac_addr),
        .vlan = egress.vlan,
        .module = egress.module,
        .port = egress.port,
        .trunk = egress.trunk,
        .encap_id = egress.encap_id,
        .reserved = std::to_array(egress.reserved),
    };
}

chip::RouteKey route_key(const bcm_l3_route_t &route)
{
    if ((route.l3a_flags & ROUTE_IP6) != 0) {
        return chip::ip6_key(route.l3a_vrf, route.l3a_ip6_net, route.l3a_ip6_mask);
    }
    return chip::ip4_key(route.l3a_vrf, route.l3a_subnet, route.l3a_ip_mask);
}

chip::Route to_chip(const bcm_l3_route_t &route)
{
    return {
        .flags = route.l3a_flags,
        .next_hop = route.l3a_intf,
        .multipath = (route.l3a_flags & ROUTE_MULTIPATH) != 0,
    };
}

chip::VlanControls to_chip(const bcm_vlan_control_vlan_t &control)
{
    return {
        .vrf = control.vc_vrf,
        .ingress_if = control.vc_ingress_if,
        .flags = control.vc_flags,
        .intf_class = control.vc_class,
        .urpf_mode = control.vc_urpf_mode,
        .rest = std::to_array(control.reserved),
    };
}

chip::VlanBlocks to_chip(const bcm_vlan_block_t &block)
{
    return {
        .known_multicast = to_chip(block.known_multicast),
        .unknown_multicast = to_chip(block.unknown_multicast),
        .unknown_unicast = to_chip(block.unknown_unicast),
        .broadcast = to_chip(block.broadcast),
    };
}

chip::TranslationAction to_chip(const bcm_vlan_action_set_t &action)
{
    return {
        .new_outer_vlan = action.new_outer_vlan,
        .ingress_if = action.ingress_if,
        .outer_tag_action = action.ot_outer,
        .double_tag_action = action.dt_outer,
    };
}

chip::TrunkMember to_chip(const bcm_trunk_member_t &member)
{
    return {
        .flags = member.flags,
        .gport = member.gport,
        .scaling_factor = member.scaling_factor,
        .load_weight = member.load_weight,
    };
}

chip::Trunk to_chip(const bcm_trunk_info_t &info, std::span<const bcm_trunk_member_t> members)
{
    chip::Trunk trunk = {
        .flags = info.flags,
        .psc = info.psc,
        .ipmc_psc = info.ipmc_psc,
        .dlf_index = info.dlf_index,
        .mc_index = info.mc_index,
        .ipmc_index = info.ipmc_index,
        .dynamic_size = info.dynamic_size,
    };
    for (const bcm_trunk_member_t &member : members) {
        trunk.members.push_back(to_chip(member));
    }
    return trunk;
}

bcm_pbmp_t to_sdk(const chip::PortSet &ports)
{
    bcm_pbmp_t pbmp;
    std::copy(ports.words().begin(), ports.words().end(), std::begin(pbmp.pbits));
    return pbmp;
}

bcm_l2_station_t to_sdk(const chip::Station &station)
{
    bcm_l2_station_t record{};
    record.flags = station.flags;
    std::copy(station.mac.begin(), station.mac.end(), std::begin(record.dst_mac));
    std::copy(station.mac_mask.begin(), station.mac_mask.end(), std::begin(record.dst_mac_mask));
    record.vlan = station.vlan;
    record.vlan_mask = station.vlan_mask;
    record.src_port = station.src_port;
    record.src_port_mask = station.src_port_mask;
    return record;
}

bcm_l3_intf_t to_sdk(int id, const chip::L3Interface &interface)
{
    bcm_l3_intf_t intf{};
    intf.l3a_flags = interface.flags;
    intf.l3a_vrf = interface.vrf;
    intf.l3a_intf_id = id;
    std::copy(interface.mac.begin(), interface.mac.end(), std::begin(intf.l3a_mac_addr));
    intf.l3a_vid = interface.vlan;
    intf.l3a_ttl = interface.ttl;
    intf.l3a_mtu = interface.mtu;
    intf.l3a_tunnel_idx = interface.tunnel;
    return intf;
}

bcm_l3_ingress_t to_sdk(const chip::L3Ingress &ingress)
{
    bcm_l3_ingress_t record{};
    record.flags = ingress.flags;
    record.vrf = ingress.vrf;
    record.urpf_mode = ingress.urpf_mode;
    record.intf_class = ingress.intf_class;
    record.ipmc_intf_id = ingress.ipmc_intf;
    record.qos_map_id = ingress.qos_map;
    std::copy(ingress.reserved.begin(), ingress.reserved.end(), std::begin(record.reserved));
    return record;
}

bcm_vlan_control_vlan_t to_sdk(const chip::VlanControls &controls)
{
    bcm_vlan_control_vlan_t control{};
    control.vc_vrf = controls.vrf;
    control.vc_ingress_if = controls.ingress_if;
    control.vc_flags = controls.flags;
    control.vc_class = controls.intf_class;
    control.vc_urpf_mode = controls.urpf_mode;
    std::copy(controls.rest.begin(), controls.rest.end(), std::begin(control.reserved));
    return control;
}

bcm_vlan_block_t to_sdk(const chip::VlanBlocks &blocks)
{
    return {
        .known_multicast = to_sdk(blocks.known_multicast),
        .unknown_multicast = to_sdk(blocks.unknown_multicast),
        .unknown_unicast = to_sdk(blocks.unknown_unicast),
        .broadcast = to_sdk(blocks.broadcast),
    };
}

bcm_trunk_info_t to_sdk(const chip::Trunk &trunk)
{
    bcm_trunk_info_t info{};
    info.flags = trunk.flags;
    info.psc = trunk.psc;
    info.ipmc_psc = trunk.ipmc_psc;
    info.dlf_index = trunk.dlf_index;
    info.mc_index = trunk.mc_index;
    info.ipmc_index = trunk.ipmc_index;
    info.dynamic_size = trunk.dynamic_size;
    return info;
}

bcm_trunk_member_t to_sdk(const chip::TrunkMember &member)
{
    return {
        .flags = member.flags,
        .gport = member.gport,
        .scaling_factor = member.scaling_factor,
        .load_weight = member.load_weight,
    };
}

} // namespace simswitch::sdk
