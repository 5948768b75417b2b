/*
 * trunks.h: the trunks, the chip side of port-channels: properties and up to
 * 32 members. The caller chooses the id.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

#include <optional>
#include <vector>

namespace simswitch::chip
{

inline constexpr int LAST_TRUNK = 65535;            ///< the highest trunk id
inline constexpr std::size_t TRUNK_MEMBER_MAX = 32; ///< members in one trunk

/** One member of a trunk. */
struct TrunkMember {
    std::uint32_t flags = 0; ///< the SDK's member flags
    int gport = 0;           ///< the member's module port
    int scaling_factor = 0;  ///< kept as given
    int load_weight = 0;     ///< kept as given

    bool operator==(const TrunkMember &) const = default;
};

/** A trunk. */
struct Trunk {
    std::uint32_t flags = 0;            ///< the SDK's trunk flags
    int psc = 0;                        ///< port selection criterion
    int ipmc_psc = 0;                   ///< the same for multicast
    int dlf_index = -1;                 ///< member for unknown unicast, -1 for the chip's choice
    int mc_index = -1;                  ///< member for multicast
    int ipmc_index = -1;                ///< member for routed multicast
    int dynamic_size = 0;               ///< flow table size
    std::vector<TrunkMember> members{}; ///< in the order of adding

    bool operator==(const Trunk &) const = default;
};

/** "psc 9 flags 0x0 members 0x8000005 0x8000006". */
std::string text(const Trunk &trunk);

// Kinds of generic ports.
inline constexpr int GPORT_MODULE_PORT = 2; ///< a port
inline constexpr int GPORT_TRUNK = 3;       ///< a trunk

/** The kind of a generic port. */
int gport_kind(int gport);
/** The module port of a port, as trunk members and VLAN translations name it. */
int module_port(int unit, int port);
/** A trunk as a generic port, as VLAN translations name it. */
int trunk_gport(int trunk);

/** The table of trunks. */
class Trunks
{
public:
    explicit Trunks(std::size_t limit) : limit_(limit) {}

    /** Creates a trunk. -4 for an id out of 0..65535 or over 32 members; -6 full; -8 taken. */
    Outcome create(int trunk, const Trunk &record);
    /** The same under the lowest free id, which `trunk` receives; left alone on failure. */
    Outcome create(const Trunk &record, int &trunk);
    /** Removes a trunk. -7 when there is none. */
    Outcome remove(int trunk);
    /** Replaces a trunk. -4 for over 32 members; -7 when there is none. */
    Outcome set(int trunk, const Trunk &record);
    /** Adds a member at the end. -6 when the trunk has 32; -7 no such trunk; -8 member already. */
    Outcome add_member(int trunk, const TrunkMember &member);
    /** Takes a member out. -7 when there is no such trunk or member. */
    Outcome remove_member(int trunk, int gport);

    /** What create and set would refuse of a trunk itself: -4 for over 32 members. */
    static Outcome check_members(const Trunk &record);
    /** Reads a trunk. -7 when there is none. */
    Outcome get(int trunk, Trunk &record) const;
    /** The lowest trunk that has a module port as its member. */
    std::optional<int> trunk_of(int gport) const;
    /** The trunk, null when there is none. */
    const Trunk *find(int trunk) const { return table_.find(trunk); }
    std::size_t size() const { return table_.size(); }
    std::map<int, Trunk> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Trunk &record) { return create(id, record); }
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }
    /** Grows with each write. */
    std::uint64_t generation() const { return table_.generation(); }

private:
    std::size_t limit_;
    Table<Trunk> table_;
};

} // namespace simswitch::chip
