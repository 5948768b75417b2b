/*
 * egresses.h: the egress objects, one next hop each. The chip gives the ids,
 * from 100000. Multipath groups (multipath_groups.h) and routes (routes.h)
 * name them; the chip doesn't ask who does when one is removed.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

namespace simswitch::chip
{

inline constexpr int FIRST_EGRESS = 100000; ///< id of the first egress object

/** An egress object. */
struct Egress {
    std::uint32_t flags = 0;                  ///< the SDK's egress flags
    int interface = 0;                        ///< L3 interface on which the packet leaves
    Mac mac{};                                ///< next hop's MAC
    std::uint16_t vlan = 0;                   ///< VLAN, 0 to take the interface's
    int module = 0;                           ///< module of the port
    int port = 0;                             ///< port, or a generic port
    int trunk = 0;                            ///< trunk id where the flags say so
    std::uint32_t encap_id = 0;               ///< encapsulation
    std::array<std::uint32_t, 13> reserved{}; ///< kept as given

    bool operator==(const Egress &) const = default;
};

/** "interface 3 mac 00:… vlan 0 module 0 port 5 trunk 0 encap 0 flags 0x100". */
std::string text(const Egress &egress);

/** The table of egress objects. */
class Egresses
{
public:
    explicit Egresses(std::size_t limit) : limit_(limit) {}

    /** Creates a next hop; `id` receives its id and is left alone on failure. -6 when full. */
    Outcome create(const Egress &egress, int &id);
    /** Removes a next hop. -7 when there is none. */
    Outcome remove(int id);
    /** Replaces a next hop. -7 when there is none. */
    Outcome set(int id, const Egress &egress);

    /** The next hop, null when there is none. */
    const Egress *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, Egress> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Egress &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    std::size_t limit_;
    IdPool ids_{FIRST_EGRESS};
    Table<Egress> table_;
};

} // namespace simswitch::chip
