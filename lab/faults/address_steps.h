/*
 * address_steps.h: the steps of a road that are on no routed interface of their
 * own: router MACs, VLANs of the L2 side, private-VLAN pairs, virtual MACs, the
 * switch's IPv6, the drop rule, member ports, VXLAN ports. roads.h puts them
 * into order.
 */
#pragma once

#include "faults/road.h"

#include "config/description.h"
#include "l3lif/lif.h"

#include <vector>

namespace lab::faults
{

/** The router MAC comes. */
Step router_mac_step(const config::Description &config);
/** It goes. */
Step router_mac_removal();
/** The VLANs come, which is the L2 side's work alone. */
std::vector<Step> vlan_steps(const config::Description &config);
/** They all go. */
Step vlans_end_step();
std::vector<Step> pair_steps(const config::Description &config);
std::vector<Step> pair_removals(const config::Description &config);
/** @param plans  those of the interfaces */
std::vector<Step> virtual_mac_steps(const config::Description &config,
                                    const std::vector<l3lif::LifPlan> &plans);
std::vector<Step> virtual_mac_removals(const config::Description &config,
                                       const std::vector<l3lif::LifPlan> &plans);
/** IPv6 of the switch on and off. */
std::vector<Step> ipv6_steps();
/** Ports into the drop rule, into VLAN 4094 and out, VXLAN ports. */
std::vector<Step> port_steps(const config::Description &config,
                             const std::vector<l3lif::LifPlan> &plans);

} // namespace lab::faults
