/*
 * trunk_cache.cpp: trunks in the wrappers. The cache keeps the members of each
 * trunk as they will be once the queue is empty, so that a member that only
 * waits to join is refused a second time.
 */
#include "fwm/wrappers.h"

#include "chip/refusal.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch::fwm
{

namespace
{

constexpr const char *TRUNK = "trunk";

std::vector<int> gports_of(const chip::Trunk &trunk)
{
    std::vector<int> gports;
    for (const chip::TrunkMember &member : trunk.members) {
        gports.push_back(member.gport);
    }
    return gports;
}

} // namespace

/** The cached members of a trunk, first read from the chip; null when the chip has no such trunk.
 */
std::vector<int> *Wrappers::trunk_members(int trunk)
{
    const chip::Trunk *in_chip = chip_.trunks.find(trunk);
    if (in_chip == nullptr) {
        trunks_.erase(trunk);
        return nullptr;
    }
    auto [it, is_new] = trunks_.try_emplace(trunk);
    if (is_new) {
        it->second = gports_of(*in_chip);
    }
    return &it->second;
}

Outcome Wrappers::set_trunk(int trunk, const chip::Trunk &record)
{
    if (trunk < 0 || trunk > chip::LAST_TRUNK) {
        return chip::out_of_range(TRUNK, trunk, 0, chip::LAST_TRUNK);
    }
    if (Outcome refused = chip::Trunks::check_members(record); !refused.ok()) {
        return refused;
    }
    std::vector<int> *members = trunk_members(trunk);
    if (members == nullptr) {
        return chip::unknown(TRUNK, trunk);
    }
    *members = gports_of(record);
    push(TrunkWrite{trunk, record});
    return {};
}

Outcome Wrappers::add_trunk_member(int trunk, const chip::TrunkMember &member)
{
    std::vector<int> *members = trunk_members(trunk);
    if (members == nullptr) {
        return chip::unknown(TRUNK, trunk);
    }
    if (std::find(members->begin(), members->end(), member.gport) != members->end()) {
        return {ERROR_EXISTS, fmt::format("trunk {} has member {:#x} already", trunk,
                                          static_cast<unsigned>(member.gport))};
    }
    if (members->size() >= chip::TRUNK_MEMBER_MAX) {
        return chip::table_full("trunk member", chip::TRUNK_MEMBER_MAX);
    }
    members->push_back(member.gport);
    push(TrunkMemberAdd{trunk, member});
    return {};
}

Outcome Wrappers::remove_trunk_member(int trunk, int gport)
{
    std::vector<int> *members = trunk_members(trunk);
    if (members == nullptr) {
        return chip::unknown(TRUNK, trunk);
    }
    if (std::erase(*members, gport) == 0) {
        return {ERROR_NOT_FOUND,
                fmt::format("trunk {} has no member {:#x}", trunk, static_cast<unsigned>(gport))};
    }
    push(TrunkMemberDelete{trunk, gport});
    return {};
}

} // namespace simswitch::fwm
