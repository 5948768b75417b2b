/*
 * stg.cpp: spanning tree groups (sdk/stg.h) over chip/stgs.h.
 */
#include "sdk/access.h"

#include <sdk/stg.h>

using namespace simswitch;

extern "C" {

int bcm_stg_vlan_add(int unit, int stg, bcm_vlan_t vlan)
{
    Call call(Layer::sdk, __func__, unit, stg, vlan);
    return sdk::write(call, unit, [&](chip::Chip &chip) { return chip.stgs.add_vlan(stg, vlan); });
}

} // extern "C"
