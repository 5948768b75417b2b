/*
 * multipath_groups.h: the multipath groups, each a choice of next hops. The
 * chip gives the ids, from 200000.
 */
#pragma once

#include "chip/egresses.h"

#include <vector>

namespace simswitch::chip
{

inline constexpr int FIRST_MULTIPATH_GROUP = 200000;    ///< id of the first group
inline constexpr std::size_t MULTIPATH_MEMBER_MAX = 64; ///< members in one group

/** A multipath group: the ids of its egress objects. */
struct MultipathGroup {
    std::vector<int> members{};

    bool operator==(const MultipathGroup &) const = default;
};

/** "members 100000 100001". */
std::string text(const MultipathGroup &group);

/** The table of multipath groups. */
class MultipathGroups
{
public:
    /** `egresses` must outlive this. */
    MultipathGroups(std::size_t limit, const Egresses &egresses)
        : limit_(limit), egresses_(egresses)
    {
    }

    /**
     * Creates a group.
     *
     * @param group  1 to 64 members
     * @param id     receives its id; left alone on failure
     * @return 0; -4 for a number of members out of range; -6 when the table is
     *         full; -7 when a member doesn't exist
     */
    Outcome create(const MultipathGroup &group, int &id);
    /** Removes a group; its members stay. -7 when there is none. */
    Outcome remove(int id);
    /** Replaces the members. -4 and -7 as create, -7 also when there is no such group. */
    Outcome set(int id, const MultipathGroup &group);

    /** The group, null when there is none. */
    const MultipathGroup *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, MultipathGroup> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const MultipathGroup &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }

private:
    Outcome check(const MultipathGroup &group) const;

    std::size_t limit_;
    const Egresses &egresses_;
    IdPool ids_{FIRST_MULTIPATH_GROUP};
    Table<MultipathGroup> table_;
};

} // namespace simswitch::chip
