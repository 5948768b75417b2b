/*
 * field_groups.cpp: the table of field groups.
 */
#include "chip/field_groups.h"

#include "chip/refusal.h"

#include <fmt/format.h>
#include <limits>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "field group";

} // namespace

std::string text(const FieldGroup &group)
{
    return fmt::format("priority {} qualifiers {}{}", group.priority,
                       fmt::join(group.qualifiers, " "), group.enabled ? "" : " off");
}

FieldGroups::FieldGroups(std::size_t limit) : limit_(limit)
{
    table_.put(SUP_GROUP, FieldGroup{1, {QUALIFIER_IN_PORTS}});
}

Outcome FieldGroups::create(int id, const FieldGroup &group)
{
    if (id < 0) {
        return out_of_range(KIND, id, 0, std::numeric_limits<int>::max());
    }
    if (table_.has(id)) {
        return existing(KIND, id);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    table_.put(id, group);
    return {};
}

Outcome FieldGroups::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown(KIND, id);
    }
    return {};
}

Outcome FieldGroups::set_enabled(int id, bool enabled)
{
    const FieldGroup *found = find(id);
    if (found == nullptr) {
        return unknown(KIND, id);
    }
    FieldGroup changed = *found;
    changed.enabled = enabled;
    return set(id, changed);
}

Outcome FieldGroups::set(int id, const FieldGroup &group)
{
    if (!table_.has(id)) {
        return unknown(KIND, id);
    }
    table_.put(id, group);
    return {};
}

} // namespace simswitch::chip
