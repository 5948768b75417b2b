/*
 * trunk.cpp: trunks (sdk/trunk.h) over chip/trunks.h.
 */
#include "sdk/access.h"
#include "sdk/convert.h"

#include <sdk/trunk.h>

#include <algorithm>
#include <string>

using namespace simswitch;

namespace
{

/** Copies as many members as there is room for; gives them as a journal list: [{…},{…}]. */
std::string copy_members(const chip::Trunk &trunk, bcm_trunk_member_t *members, int member_max)
{
    const std::size_t room =
        members != nullptr && member_max > 0 ? static_cast<std::size_t>(member_max) : 0;
    std::string list = "[";
    for (std::size_t i = 0; i < std::min(room, trunk.members.size()); ++i) {
        members[i] = sdk::to_sdk(trunk.members[i]);
        list += (i > 0 ? "," : "") + format_value(members[i]);
    }
    return list + "]";
}

} // namespace

extern "C" {

void bcm_trunk_info_t_init(bcm_trunk_info_t *info)
{
    sdk::clear_record(__func__, info);
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
            const std::string list = copy_members(trunk, members, member_max);
            call.out("info", *info);
            call.out("count", *member_count);
            call.out("members", Word{list});
        }
        return outcome;
    });
}

} // extern "C"
