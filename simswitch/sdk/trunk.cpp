/*
 * trunk.cpp: trunks (sdk/trunk.h) over chip/trunks.h.
 */
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/trunk.h>

#include <algorithm>
#include <span>

using namespace simswitch;

namespace
{

constexpr std::uint32_t TRUNK_WITH_ID = 16; // create: the id is the caller's

/** Copies as many members as there is room for, and gives those copies. */
std::span<const bcm_trunk_member_t> copy_members(const chip::Trunk &trunk,
                                                 bcm_trunk_member_t *members, int member_max)
{
    const std::size_t room =
        members != nullptr && member_max > 0 ? static_cast<std::size_t>(member_max) : 0;
    const std::size_t count = std::min(room, trunk.members.size());
    for (std::size_t i = 0; i < count; ++i) {
        members[i] = sdk::to_sdk(trunk.members[i]);
    }
    return {members, count};
}

int create_trunk_with_id(int unit, std::uint32_t flags, int tid)
{
    Call call(Layer::sdk, "bcm_trunk_create", unit, flags, tid);
    return sdk::write(call, unit, [&](chip::Chip &chip) { return chip.trunks.create(tid, {}); });
}

} // namespace

extern "C" {

void bcm_trunk_info_t_init(bcm_trunk_info_t *info)
{
    sdk::clear_record(__func__, info);
}

void bcm_trunk_member_t_init(bcm_trunk_member_t *member)
{
    sdk::clear_record(__func__, member);
}

int bcm_trunk_create(int unit, uint32_t flags, int *tid)
{
    if ((flags & TRUNK_WITH_ID) != 0) {
        return create_trunk_with_id(unit, flags, *tid);
    }
    Call call(Layer::sdk, __func__, unit, flags);
    return sdk::write(call, unit, [&](chip::Chip &chip) {
        Outcome outcome = chip.trunks.create({}, *tid);
        if (outcome.ok()) {
            call.out("tid", *tid);
        }
        return outcome;
    });
}

int bcm_trunk_get(int unit, int tid, bcm_trunk_info_t *info, int member_max,
                  bcm_trunk_member_t *members, int *member_count)
{
    Call call(Layer::sdk, __func__, unit, tid, member_max);
    return sdk::read(call, unit, [&](const chip::Chip &chip) {
        chip::Trunk trunk;
        Outcome outcome = chip.trunks.get(tid, trunk);
        if (outcome.ok()) {
            *info = sdk::to_sdk(trunk);
            *member_count = static_cast<int>(trunk.members.size());
            call.out("info", *info);
            call.out("count", *member_count);
            call.out("members", copy_members(trunk, members, member_max));
        }
        return outcome;
    });
}

} // extern "C"
