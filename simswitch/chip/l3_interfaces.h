/*
 * l3_interfaces.h: the L3 interfaces: what routed frames get on their way out.
 *
 * The caller chooses the id. The table may have room for fewer interfaces than
 * there are ids. l3_ingresses.h has the other half of a routed interface.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

namespace simswitch::chip
{

/** An L3 interface. */
struct L3Interface {
    std::uint32_t flags = 0; ///< properties; the options of a create call are not kept
    int vrf = 0;             ///< VRF
    Mac mac{};               ///< source MAC of routed frames
    std::uint16_t vlan = 0;  ///< VLAN on which routed frames leave
    int ttl = 0;             ///< lowest TTL that may pass, 0 for no check
    int mtu = 0;             ///< largest L3 packet in bytes
    int tunnel = 0;          ///< tunnel initiator, 0 for none

    bool operator==(const L3Interface &) const = default;
};

/** "mac 00:… vlan 4094 vrf 1 mtu 1500 ttl 0 tunnel 0 flags 0x0". */
std::string text(const L3Interface &interface);

/** The table of L3 interfaces. */
class L3Interfaces
{
public:
    explicit L3Interfaces(std::size_t limit) : limit_(limit) {}

    /**
     * Creates an interface.
     *
     * @param id         0..8191
     * @param interface  the interface
     * @return 0; -4 for an id or a VLAN out of range; -6 when the table is
     *         full; -8 when the id is taken
     */
    Outcome create(int id, const L3Interface &interface);
    /** Removes an interface. -7 when there is none of this id. */
    Outcome remove(int id);
    /** Replaces an interface, or creates it. -4 and -6 as create. */
    Outcome set(int id, const L3Interface &interface);
    /** Binds a tunnel initiator to an interface, 0 to unbind. -7 when there is no interface. */
    Outcome set_tunnel(int id, int tunnel);

    /** Reads an interface. -4 for an id out of range; -7 when there is none. */
    Outcome get(int id, L3Interface &interface) const;
    /** The interface of an id, null when there is none. */
    const L3Interface *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, L3Interface> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const L3Interface &record) { return create(id, record); }
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    std::size_t limit_;
    Table<L3Interface> table_;
};

} // namespace simswitch::chip
