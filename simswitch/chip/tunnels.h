/*
 * tunnels.h: the tunnel initiators, each bound to one L3 interface, whose
 * tunnel index (l3_interfaces.h) is the initiator's.
 */
#pragma once

#include "chip/l3_interfaces.h"

namespace simswitch::chip
{

/** A tunnel initiator. */
struct Tunnel {
    int index = 0;               ///< its number, from 1; 0 stands for no tunnel
    std::uint32_t source_ip = 0; ///< outer IPv4 source, host order
    std::uint32_t dest_ip = 0;   ///< outer IPv4 destination, host order

    bool operator==(const Tunnel &) const = default;
};

/** "index 5 10.0.0.1 -> 10.0.0.2". */
std::string text(const Tunnel &tunnel);

/** The table of tunnel initiators, by the L3 interface that each is bound to. */
class Tunnels
{
public:
    /** `interfaces` must outlive this. */
    Tunnels(std::size_t limit, L3Interfaces &interfaces) : limit_(limit), interfaces_(interfaces) {}

    /**
     * Binds an initiator to an interface, which gets its index.
     *
     * @return 0; -4 for an index below 1; -6 when the table is full; -7 when
     *         there is no such interface; -8 when it has an initiator
     */
    Outcome create(int interface, const Tunnel &tunnel);
    /** Removes the initiator of an interface and clears its index. -7 when none is bound to it. */
    Outcome remove(int interface);
    /** Replaces the initiator of an interface. -4 as create; -7 when none is bound to it. */
    Outcome set(int interface, const Tunnel &tunnel);

    /** The initiator of an interface, null when none is bound to it. */
    const Tunnel *find(int interface) const { return table_.find(interface); }
    std::size_t size() const { return table_.size(); }
    std::map<int, Tunnel> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Tunnel &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    std::size_t limit_;
    L3Interfaces &interfaces_;
    Table<Tunnel> table_;
};

} // namespace simswitch::chip
