/*
 * convert.h: the SDK's records as the chip's tables keep them, and back.
 *
 * to_chip takes a record apart; to_sdk puts one together. An object's id isn't
 * part of the chip's record and is handed over beside it.
 */
#pragma once

#include "chip/chip.h"

#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/trunk.h>
#include <sdk/vlan.h>

#include <span>

namespace simswitch::sdk
{

inline constexpr std::uint32_t L3_INTF_WITH_ID = 0x40;   ///< create: the id is the caller's
inline constexpr std::uint32_t L3_INTF_REPLACE = 0x100;  ///< create: replace an object of this id
inline constexpr std::uint32_t ROUTE_IP6 = 0x20000;      ///< the route is IPv6
inline constexpr std::uint32_t ROUTE_MULTIPATH = 0x4000; ///< the next hop is a group

chip::PortSet to_chip(const bcm_pbmp_t &ports);
chip::Station to_chip(const bcm_l2_station_t &station);
/** Without the flags that are options of the create call. */
chip::L3Interface to_chip(const bcm_l3_intf_t &intf);
chip::L3Ingress to_chip(const bcm_l3_ingress_t &ingress);
chip::Egress to_chip(const bcm_l3_egress_t &egress);
chip::RouteKey route_key(const bcm_l3_route_t &route);
chip::Route to_chip(const bcm_l3_route_t &route);
chip::VlanControls to_chip(const bcm_vlan_control_vlan_t &control);
chip::VlanBlocks to_chip(const bcm_vlan_block_t &block);
chip::TranslationAction to_chip(const bcm_vlan_action_set_t &action);
chip::TrunkMember to_chip(const bcm_trunk_member_t &member);
chip::Trunk to_chip(const bcm_trunk_info_t &info, std::span<const bcm_trunk_member_t> members);

bcm_pbmp_t to_sdk(const chip::PortSet &ports);
bcm_l2_station_t to_sdk(const chip::Station &station);
bcm_l3_intf_t to_sdk(int id, const chip::L3Interface &interface);
bcm_l3_ingress_t to_sdk(const chip::L3Ingress &ingress);
bcm_vlan_control_vlan_t to_sdk(const chip::VlanControls &controls);
bcm_vlan_block_t to_sdk(const chip::VlanBlocks &blocks);
bcm_trunk_info_t to_sdk(const chip::Trunk &trunk);
bcm_trunk_member_t to_sdk(const chip::TrunkMember &member);

} // namespace simswitch::sdk
