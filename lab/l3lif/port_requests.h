/*
 * port_requests.h: the requests of the layer above that are on no routed
 * interface: the rule that drops what isn't L3-routable, VXLAN virtual ports, a
 * port's way into VLAN 4094 without an interface.
 *
 * property_requests.h has those on interfaces, dump.h the diagnostic dumps.
 */
#pragma once

#include "l3lif/request.h"

#include "switch.h"

#include <cstdint>
#include <string>

namespace lab::l3lif
{

/** A VXLAN virtual port. */
struct VxlanPlan {
    std::uint32_t ifindex = 0; ///< the interface that it belongs to
    std::uint32_t vpn = 0;     ///< id of its VPN
    std::uint32_t vni = 0;     ///< VN id, 24 bits on the wire
    std::uint32_t port = 0;    ///< the chip's port on which its frames come in
    std::uint16_t vlan = 0;    ///< their VLAN; 0 for any
    std::uint32_t egress = 0;  ///< number of the L3 interface that frames leave through
    std::uint32_t mc = 0;      ///< the VPN's multicast group
    std::uint32_t criteria = 0;
    std::uint32_t flags = 0;
};

/** Drops what comes in on a port of the chip and isn't L3-routable. */
Request add_drop_port(simswitch::Switch &hardware, const std::string &name, int port);

/** Asks for a port to leave the drop rule. The library has no way out of it: nothing changes. */
Request remove_drop_port(simswitch::Switch &hardware, const std::string &name, int port);

/** Makes a VXLAN virtual port. @param id  receives its number; left alone on failure */
Request add_vxlan_port(simswitch::Switch &hardware, const std::string &name, const VxlanPlan &plan,
                       int &id);

/** Removes a VXLAN virtual port. @param id  its number */
Request remove_vxlan_port(simswitch::Switch &hardware, const std::string &name, std::uint32_t vpn,
                          std::uint32_t id);

/** Puts a port into VLAN 4094, or takes it out. @param ifindex  of the port, or of what is none */
Request set_member_port(simswitch::Switch &hardware, const std::string &name, std::uint32_t ifindex,
                        bool clear);

} // namespace lab::l3lif
