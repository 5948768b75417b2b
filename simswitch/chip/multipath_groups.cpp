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
    if (group.members.empty() || group.members.size() > MULTIPATH_MEMBER_MAX) {
        return out_of_range("number of group members", static_cast<long long>(group.members.size()),
                            1, MULTIPATH_MEMBER_MAX);
    }
    for (int member : group.members) {
        if (egresses_.find(member) == nullptr) {
            return unknown("egress object", member);
        }
    }
    return {};
}

} // namespace simswitch::chip
