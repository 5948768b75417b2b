/*
 * plans.h: what a configuration gives the layer above to bring up: VLANs,
 * interfaces, private-VLAN pairs and virtual MACs with their numbers in the
 * switch. layer.h takes the plans one by one.
 */
#pragma once

#include "config/description.h"
#include "l3lif/lif.h"

#include "chip/basics.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab::l3lif
{

/** A VLAN that the L2 side sets up. */
struct VlanPlan {
    std::string name = {};
    std::uint16_t vlan = 0;
    config::VlanRole role = config::VlanRole::none;
    simswitch::chip::PortSet ports = {};    ///< the chip's ports that are bridged to it
    simswitch::chip::PortSet untagged = {}; ///< those of them whose frames are untagged
};

/** A private-VLAN pair. */
struct PairPlan {
    std::uint16_t primary = 0;
    std::uint16_t secondary = 0;

    bool operator==(const PairPlan &) const = default;
};

/** A virtual MAC of an interface. */
struct VirtualMacPlan {
    std::string owner = {}; ///< name of the interface
    std::uint32_t ifindex = 0;
    std::uint16_t vlan = 0; ///< the VLAN of an SVI, else 0
    config::Mac mac = {};
    std::string source = {}; ///< "SAG", "VRRP 8": what gives it
};

/** The plans of all VLANs that are taken. */
std::vector<VlanPlan> vlan_plans_of(const config::Description &description);

/**
 * The plans of all interfaces in the order of bringing up: ports,
 * port-channels, SVIs, subinterfaces, tunnels.
 */
std::vector<LifPlan> plans_of(const config::Description &description);

/** The plans of all private-VLAN pairs. */
std::vector<PairPlan> pair_plans_of(const config::Description &description);

/** The plans of all virtual MACs. @param interfaces  the plans of their owners, among others */
std::vector<VirtualMacPlan> virtual_mac_plans_of(const config::Description &description,
                                                 const std::vector<LifPlan> &interfaces);

} // namespace lab::l3lif
