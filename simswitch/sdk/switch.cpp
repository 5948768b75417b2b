/*
 * switch.cpp: switch controls by direct calls (sdk/switch.h) over
 * chip/switch_controls.h.
 */
#include "sdk/access.h"

#include <sdk/switch.h>

using namespace simswitch;

extern "C" {

int bcm_switch_control_set(int unit, int control, int value)
{
    Call call(Layer::sdk, __func__, unit, control, value);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.switch_controls.set(control, value); });
}

} // extern "C"
