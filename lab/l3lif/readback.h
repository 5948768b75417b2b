/*
 * readback.h: what the chip holds of a routed interface, read from its tables
 * and from nowhere else.
 *
 * A port names its ingress object in port control 67, which is the interface's
 * number; the ports of a port-channel are the members of its trunk. A
 * subinterface's is what the translation of its VLAN names, on its port or
 * trunk. An SVI's is what the controls of its VLAN name; its ports are the
 * VLAN's members. A tunnel is tied to no port; its number is the library's.
 *
 * Beside it: readback_macs.h reads virtual MACs and private-VLAN pairs.
 */
#pragma once

#include "l3lif/lif.h"

#include "chip/chip.h"
#include "switch.h"

#include <string>
#include <string_view>
#include <vector>

namespace lab::l3lif
{

/** An interface in the chip. A field is meaningless where the chip has no such object. */
struct HardwareView {
    int iif = 0;                ///< its number; 0: none
    bool has_interface = false; ///< the L3 interface is there: VLAN, VRF and MTU are its
    int vlan = 0;
    int vrf = 0;
    int mtu = 0;
    bool ipv4 = false;      ///< the chip routes IPv4 that comes in on it
    bool ipv6 = false;      ///< the chip routes IPv6 that comes in on it
    std::vector<int> ports; ///< the chip's ports that it runs on
    std::string missing;    ///< what it lacks to be up, in words; empty when it is up

    /** "ipv4", "ipv6". */
    std::vector<std::string_view> families() const;
};

/** Which families the chip routes that come in on an ingress object; none in VRF 0. */
void read_ingress_families(const simswitch::chip::L3Ingress &ingress, HardwareView &view);

/** The families that the controls of a VLAN leave of those. */
void narrow_to_vlan(const simswitch::chip::VlanControls &controls, HardwareView &view);

/** The ports in a trunk, in order; none where the chip has no such trunk. */
std::vector<int> ports_of_trunk(const simswitch::chip::Chip &chip, int trunk);

/** Reads an interface back. */
HardwareView read_back(const simswitch::Switch &hardware, const Lif &lif);

} // namespace lab::l3lif
