/*
 * trunks.cpp: the table of trunks.
 */
#include "chip/trunks.h"

#include "chip/refusal.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "trunk";

} // namespace

std::string text(const Trunk &trunk)
{
    std::string out = fmt::format("psc {} flags {:#x} members", trunk.psc, trunk.flags);
    for (const TrunkMember &member : trunk.members) {
        out += fmt::format(" {:#x}", static_cast<unsigned>(member.gport));
    }
    return out;
}

int gport_kind(int gport)
{
    return gport >> 26;
}

int module_port(int unit, int port)
{
    return 0x8000000 | (unit & 0x7fff) << 11 | (port & 0x7ff);
}

int trunk_gport(int trunk)
{
    return 0xc000000 | (trunk & 0x3ffffff);
}

Outcome Trunks::create(int trunk, const Trunk &record)
{
    if (trunk < 0 || trunk > LAST_TRUNK) {
        return out_of_range(KIND, trunk, 0, LAST_TRUNK);
    }
    if (Outcome refused = check_members(record); !refused.ok()) {
        return refused;
    }
    if (table_.has(trunk)) {
        return existing(KIND, trunk);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    table_.put(trunk, record);
    return {};
}

Outcome Trunks::create(const Trunk &record, int &trunk)
{
    int id = 0;
    while (table_.has(id)) {
        ++id;
    }
    Outcome outcome = create(id, record);
    if (outcome.ok()) {
        trunk = id;
    }
    return outcome;
}

Outcome Trunks::remove(int trunk)
{
    if (!table_.erase(trunk)) {
        return unknown(KIND, trunk);
    }
    return {};
}

Outcome Trunks::set(int trunk, const Trunk &record)
{
    if (Outcome refused = check_members(record); !refused.ok()) {
        return refused;
    }
    if (!table_.has(trunk)) {
        return unknown(KIND, trunk);
    }
    table_.put(trunk, record);
    return {};
}

Outcome Trunks::add_member(int trunk, const TrunkMember &member)
{
    Trunk *found = table_.edit(trunk);
    if (found == nullptr) {
        return unknown(KIND, trunk);
    }
    for (const TrunkMember &other : found->members) {
        if (other.gport == member.gport) {
            return {ERROR_EXISTS, fmt::format("trunk {} has member {:#x} already", trunk,
                                              static_cast<unsigned>(member.gport))};
        }
    }
    if (found->members.size() >= TRUNK_MEMBER_MAX) {
        return table_full("trunk member", TRUNK_MEMBER_MAX);
    }
    found->members.push_back(member);
    return {};
}

Outcome Trunks::remove_member(int trunk, int gport)
{
    Trunk *found = table_.edit(trunk);
    if (found == nullptr) {
        return unknown(KIND, trunk);
    }
    auto is_it = [&](const TrunkMember &member) { return member.gport == gport; };
    if (std::erase_if(found->members, is_it) == 0) {
        return {ERROR_NOT_FOUND,
                fmt::format("trunk {} has no member {:#x}", trunk, static_cast<unsigned>(gport))};
    }
    return {};
}

Outcome Trunks::check_members(const Trunk &record)
{
    if (record.members.size() > TRUNK_MEMBER_MAX) {
        return out_of_range("number of trunk members", static_cast<int>(record.members.size()), 0,
                            static_cast<int>(TRUNK_MEMBER_MAX));
    }
    return {};
}

Outcome Trunks::get(int trunk, Trunk &record) const
{
    const Trunk *found = table_.find(trunk);
    if (found == nullptr) {
        return unknown(KIND, trunk);
    }
    record = *found;
    return {};
}

std::optional<int> Trunks::trunk_of(int gport) const
{
    std::optional<int> lowest;
    table_.for_each([&](int id, const Trunk &trunk) {
        const bool is_member =
            std::any_of(trunk.members.begin(), trunk.members.end(),
                        [&](const TrunkMember &member) { return member.gport == gport; });
        if (is_member && (!lowest || id < *lowest)) {
            lowest = id;
        }
    });
    return lowest;
}

} // namespace simswitch::chip
