/*
 * multipath_groups.cpp: the table of multipath groups.
 */
#include "chip/multipath_groups.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "multipath group";

Outcome check_count(const MultipathGroup &group)
{
    if (group.members.empty() || group.members.size() > MULTIPATH_MEMBER_MAX) {
        return out_of_range("number of group members", static_cast<long long>(group.members.size()),
                            1, MULTIPATH_MEMBER_MAX);
    }
    return {};
}

} // namespace

std::string text(const MultipathGroup &group)
{
    return fmt::format("members {}", fmt::join(group.members, " "));
}

Outcome MultipathGroups::create(const MultipathGroup &group, int &id)
{
    if (Outcome refused = check(group); !refused.ok()) {
        return refused;
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    id = ids_.take();
    table_.put(id, group);
    return {};
}

Outcome MultipathGroups::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    ids_.give_back(id);
    return {};
}

Outcome MultipathGroups::set(int id, const MultipathGroup &group)
{
    if (Outcome refused = check(group); !refused.ok()) {
        return refused;
    }
    if (!table_.has(id)) {
        return unknown(KIND, id);
    }
    table_.put(id, group);
    return {};
}

Outcome MultipathGroups::check(const MultipathGroup &group) const
{
    if (Outcome refused = check_count(group); !refused.ok()) {
        return refused;
    }
    for (int member : group.members) {
        if (egresses_.find(member) == nullptr) {
            return unknown("egress object", member);
        }
    }
    return {};
}

Outcome MultipathGroups::restore(int id, const MultipathGroup &record)
{
    const int last = FIRST_MULTIPATH_GROUP + static_cast<int>(limit_) - 1;
    if (id < FIRST_MULTIPATH_GROUP || id > last) {
        return out_of_range(KIND, id, FIRST_MULTIPATH_GROUP, last);
    }
    // A member may have gone since; the chip doesn't ask.
    if (Outcome refused = check_count(record); !refused.ok()) {
        return refused;
    }
    table_.put(id, record);
    ids_.take(id);
    return {};
}

} // namespace simswitch::chip
