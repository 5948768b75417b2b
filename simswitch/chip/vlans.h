/*
 * vlans.h: the VLANs: their members, their controls, their block masks and the
 * spanning tree group that each is in.
 *
 * VLAN 1 exists at boot with the CPU and all front ports. A new VLAN has no
 * member, controls of 0, empty block masks, and is in group 1. stgs.h moves a
 * VLAN between groups.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

#include <array>
#include <map>
#include <vector>

namespace simswitch::chip
{

inline constexpr int DEFAULT_STG = 1; ///< the group that new VLANs are in

/** The controls of a VLAN: 38 words, of which the first five have names. */
struct VlanControls {
    std::uint32_t vrf = 0;                ///< VRF of the routed VLAN
    std::uint32_t ingress_if = 0;         ///< L3 ingress object, 0 when the VLAN isn't routed
    std::uint32_t flags = 0;              ///< flag word
    std::uint32_t intf_class = 0;         ///< what uses the VLAN
    std::uint32_t urpf_mode = 0;          ///< reverse-path check: 0 off, 1 loose, 2 strict
    std::array<std::uint32_t, 33> rest{}; ///< kept as given

    bool operator==(const VlanControls &) const = default;
};

/** The block masks of a VLAN: a port in a set doesn't get that class of traffic. */
struct VlanBlocks {
    PortSet known_multicast{};
    PortSet unknown_multicast{};
    PortSet unknown_unicast{};
    PortSet broadcast{};

    bool operator==(const VlanBlocks &) const = default;
};

/** A VLAN. */
struct Vlan {
    PortSet members{};       ///< ports in the VLAN
    PortSet untagged{};      ///< those of them whose frames leave untagged
    VlanControls controls{}; ///< controls
    VlanBlocks blocks{};     ///< block masks
    int stg = DEFAULT_STG;   ///< spanning tree group

    bool operator==(const Vlan &) const = default;
};

std::string text(const VlanControls &controls);
std::string text(const VlanBlocks &blocks);
/** "stg 1 members {0-104} untagged {1-104} controls vrf … blocks kmc {} …". */
std::string text(const Vlan &vlan);

/** The table of VLANs, ids 1..4095. */
class Vlans
{
public:
    /** With VLAN 1 in it. */
    explicit Vlans(std::size_t limit);

    /**
     * Creates a VLAN without a member.
     *
     * @param vlan  1..4095
     * @return 0; -4 for an id out of range; -6 when the table is full; -8 when
     *         the VLAN exists
     */
    Outcome create(int vlan);

    // All operations below: -4 for an id out of range, -7 when there is no such VLAN.

    /** Removes a VLAN with its members, controls and masks. */
    Outcome remove(int vlan);
    /** Adds ports; those in `untagged` leave untagged, the others of `ports` tagged. */
    Outcome add_ports(int vlan, const PortSet &ports, const PortSet &untagged);
    /** Takes ports out; one that isn't a member is no failure. */
    Outcome remove_ports(int vlan, const PortSet &ports);
    Outcome set_controls(int vlan, const VlanControls &controls);
    Outcome set_blocks(int vlan, const VlanBlocks &blocks);
    /** Notes the VLAN's group; Stgs::add_vlan knows which groups there are. */
    Outcome set_stg(int vlan, int stg);

    Outcome get_controls(int vlan, VlanControls &controls) const;
    /** The VLAN, null when there is none. */
    const Vlan *find(int vlan) const { return table_.find(vlan); }
    /** The VLANs that a port is a member of, in order. */
    std::vector<int> of_port(int port) const;
    /** The spanning tree groups of a port's VLANs, in order, and how many of the VLANs each has. */
    const std::map<int, int> &groups_of_port(int port) const
    {
        return groups_.at(static_cast<std::size_t>(port));
    }
    std::size_t size() const { return table_.size(); }
    std::map<int, Vlan> all() const { return table_.all(); }
    /** Calls a function with id and record of each, in no order. */
    template <class Visitor> void for_each(Visitor visit) const { table_.for_each(visit); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        groups_ = {};
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Vlan &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    Vlan *need(int vlan, Outcome &refused);
    /** Ports have joined VLANs of a group, by 1, or left them, by -1. */
    void count(const PortSet &ports, int stg, int by);

    std::size_t limit_;
    Table<Vlan> table_;
    std::array<std::map<int, int>, LAST_PORT + 1> groups_; ///< by port
};

} // namespace simswitch::chip
