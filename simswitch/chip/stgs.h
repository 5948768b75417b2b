/*
 * stgs.h: the spanning tree groups: VLANs that share one state per port.
 *
 * Which group a VLAN is in stands with the VLAN (vlans.h). Two groups are there
 * at boot and stay, with the CPU and all front ports forwarding: group 1, which
 * has VLAN 1, and group 0, for VLANs without spanning tree, which has none. In
 * a new group all ports are disabled.
 */
#pragma once

#include "chip/vlans.h"

namespace simswitch::chip
{

inline constexpr int STP_DISABLED = 0;   ///< nothing passes
inline constexpr int STP_BLOCKING = 1;   ///< only protocol frames pass
inline constexpr int STP_FORWARDING = 4; ///< everything passes

/** A spanning tree group. */
struct Stg {
    std::array<std::uint8_t, LAST_PORT + 1> states{}; ///< state by port

    /** The ports in a state. */
    PortSet in_state(int state) const;
    bool operator==(const Stg &) const = default;
};

/** "forwarding {0-104} blocking {} listening {} learning {}"; all other ports are disabled. */
std::string text(const Stg &stg);

/** The table of spanning tree groups: ids 1 to the table's size, and group 0 beside them. */
class Stgs
{
public:
    /** With groups 0 and 1 in it. `vlans` must outlive this. */
    Stgs(std::size_t limit, Vlans &vlans);

    /**
     * Creates a group without a VLAN.
     *
     * @param stg  receives its id; left alone on failure
     * @return 0; -6 when no group is left
     */
    Outcome create(int &stg);
    /** Removes a group; its VLANs go to group 1. -4 for groups 0 and 1; -7 when there is none. */
    Outcome remove(int stg);
    /** Moves a VLAN into a group. -7 when the group or the VLAN doesn't exist. */
    Outcome add_vlan(int stg, int vlan);
    /**
     * Sets a port's state in a group.
     *
     * @param stg    the group
     * @param port   0..255
     * @param state  0..4: disabled, blocking, listening, learning, forwarding
     * @return 0; -4 for a port or state out of range; -7 when there is no such group
     */
    Outcome set_state(int stg, int port, int state);
    /** The same in all groups that the port's VLANs are in; none is no failure. */
    Outcome set_state_of_port(int port, int state);

    /** The group, null when there is none. */
    const Stg *find(int stg) const { return table_.find(stg); }
    /** The VLANs in a group, in order. */
    std::vector<int> vlans_of(int stg) const;
    std::size_t size() const { return table_.size(); }
    std::map<int, Stg> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Stg &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    std::size_t limit_;
    Vlans &vlans_;
    IdPool ids_{DEFAULT_STG + 1};
    Table<Stg> table_;
};

} // namespace simswitch::chip
