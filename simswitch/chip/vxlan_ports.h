/*
 * vxlan_ports.h: the virtual ports of VXLAN tunnels: what comes in on a port
 * with a VLAN belongs to a VPN, and what leaves through them goes to an L3
 * interface.
 */
#pragma once

#include "chip/outcome.h"
#include "chip/table.h"

#include <cstdint>
#include <string>

namespace simswitch::chip
{

/** A virtual port. */
struct VxlanPort {
    std::uint32_t if_index = 0;   ///< the interface that it belongs to
    std::uint32_t vpn = 0;        ///< id of its VPN
    std::uint32_t vn_id = 0;      ///< VN id, 24 bits on the wire
    std::uint32_t mc_index = 0;   ///< the VPN's multicast group
    std::uint32_t egress_if = 0;  ///< L3 interface that frames leave through
    std::uint32_t flags = 0;      ///< the SDK's flags
    std::uint32_t criteria = 0;   ///< what of a frame is looked at
    std::uint32_t match_port = 0; ///< port on which a frame comes in, 0..255
    int match_vlan = 0;           ///< its VLAN, 0..4095; 0 for any

    bool operator==(const VxlanPort &) const = default;
};

/** "vpn 28673 vn 5000 port 5 vlan 100 criteria 2 flags 0x0 egress 12 multicast 0x0 of 0x1a000000".
 */
std::string text(const VxlanPort &port);

/** The table of virtual ports, ids from 1. */
class VxlanPorts
{
public:
    explicit VxlanPorts(std::size_t limit) : limit_(limit) {}

    /**
     * Creates a virtual port.
     *
     * @param id  receives its id; left alone on failure
     * @return 0; -4 for a port or VLAN out of range; -6 when the table is full; -8 when another
     *         one matches the same
     */
    Outcome create(const VxlanPort &port, int &id);
    /** Removes a virtual port. -7 when there is none of this id in the VPN. */
    Outcome remove(std::uint32_t vpn, int id);

    /** The virtual port, null when there is none. */
    const VxlanPort *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, VxlanPort> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create would refuse is refused. */
    Outcome restore(int id, const VxlanPort &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    Outcome check(const VxlanPort &port) const;

    std::size_t limit_;
    IdPool ids_{1};
    Table<VxlanPort> table_;
};

} // namespace simswitch::chip
