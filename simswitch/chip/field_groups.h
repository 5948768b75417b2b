/*
 * field_groups.h: the groups of the field processor: which qualifiers the
 * entries of a group may use, and which group goes first. The entries
 * themselves are in field_entries.h.
 */
#pragma once

#include "chip/outcome.h"
#include "chip/table.h"

#include <set>
#include <string>

namespace simswitch::chip
{

inline constexpr int QUALIFIER_IN_PORTS = 13;    ///< the ports on which the frame may come in
inline constexpr int QUALIFIER_L3_ROUTABLE = 82; ///< whether the frame is L3-routable
inline constexpr int SUP_GROUP = 1;              ///< the group of the platform's own entries
inline constexpr int ND_GROUP = 13;              ///< the group for IPv6 neighbour discovery

/** A field group. */
struct FieldGroup {
    int priority = 0;           ///< the higher goes first
    std::set<int> qualifiers{}; ///< qualifiers that its entries may use
    bool enabled = true;        ///< off: its entries don't count

    bool operator==(const FieldGroup &) const = default;
};

/** "priority 0 qualifiers 13 82", with " off" behind it when it is off. */
std::string text(const FieldGroup &group);

/** The table of field groups; the caller chooses the ids. */
class FieldGroups
{
public:
    /** With the group of the platform's own entries in it. */
    explicit FieldGroups(std::size_t limit);

    /** Creates a group. -4 for a negative id; -6 when the table is full; -8 when the id is taken.
     */
    Outcome create(int id, const FieldGroup &group);
    /** Removes a group; its entries stay without one. -7 when there is none. */
    Outcome remove(int id);
    /** Replaces a group. -7 when there is none. */
    Outcome set(int id, const FieldGroup &group);

    /** Switches a group on or off. -7 when there is none of this id. */
    Outcome set_enabled(int id, bool enabled);

    /** The group, null when there is none. */
    const FieldGroup *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, FieldGroup> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear() { table_.clear(); }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const FieldGroup &record) { return create(id, record); }
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }
    /** Grows with each write. */
    std::uint64_t generation() const { return table_.generation(); }

private:
    std::size_t limit_;
    Table<FieldGroup> table_;
};

} // namespace simswitch::chip
