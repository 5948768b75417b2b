/*
 * l3_ingresses.h: the L3 ingress objects: what the chip knows of a packet that
 * came in on an interface. Ports, VLANs and VLAN translations name one by id.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

namespace simswitch::chip
{

/** An L3 ingress object. */
struct L3Ingress {
    std::uint32_t flags = 0;                 ///< the SDK's ingress flags
    int vrf = 0;                             ///< VRF of the lookup
    int urpf_mode = 0;                       ///< reverse-path check: 0 off, 1 loose, 2 strict
    std::uint8_t intf_class = 0;             ///< interface class
    std::uint16_t ipmc_intf = 0;             ///< interface of the multicast lookup, 0 for none
    int qos_map = 0;                         ///< QoS map, 0 for none
    std::array<std::uint32_t, 2> reserved{}; ///< kept as given

    bool operator==(const L3Ingress &) const = default;
};

/** "vrf 1 urpf 0 class 64 ipmc 0 qos 0 flags 0x6". */
std::string text(const L3Ingress &ingress);

/** The table of L3 ingress objects. */
class L3Ingresses
{
public:
    explicit L3Ingresses(std::size_t limit) : limit_(limit) {}

    /**
     * Creates an object.
     *
     * @param id       0..8191
     * @param ingress  the object
     * @return 0; -4 for an id out of range; -6 when the table is full; -8 when
     *         the id is taken
     */
    Outcome create(int id, const L3Ingress &ingress);
    /** Removes an object. -7 when there is none of this id. */
    Outcome remove(int id);
    /** Replaces an object, or creates it. -4 and -6 as create. */
    Outcome set(int id, const L3Ingress &ingress);

    /** The object of an id, null when there is none. */
    const L3Ingress *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, L3Ingress> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const L3Ingress &record) { return create(id, record); }
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    std::size_t limit_;
    Table<L3Ingress> table_;
};

} // namespace simswitch::chip
