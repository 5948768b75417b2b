/*
 * records.h: the addresses, neighbours and routes of a switch. routing.h works
 * on them.
 */
#pragma once

#include "config/address.h"
#include "config/description.h"

#include <cstdint>
#include <string>

namespace lab::routing
{

/** An address of the switch. */
struct OwnAddress {
    std::string interface;
    config::Prefix prefix; ///< with the length of its network; a virtual address's is 32 or 128
    std::uint16_t vrf = config::VRF_DEFAULT;
    config::Mac mac = {}; ///< what answers for it: the interface's MAC, or a virtual one

    bool operator==(const OwnAddress &) const = default;
};

/** A host on the network of an interface. */
struct Neighbor {
    std::string interface;
    config::IpAddress address;
    config::Mac mac = {};
    std::string port;       ///< of an SVI: the port or port-channel it is behind; else empty
    std::uint16_t vlan = 0; ///< VLAN in which it is, where that is a secondary of the SVI's; else 0

    bool operator==(const Neighbor &) const = default;
};

// Static routes are what a configuration says they are.
using config::NextHop;
using config::StaticRoute;

} // namespace lab::routing
