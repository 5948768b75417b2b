/*
 * port.cpp: port controls by direct calls (sdk/port.h) over chip/ports.h.
 */
#include "sdk/access.h"

#include <sdk/port.h>

using namespace simswitch;

extern "C" {

int bcm_port_control_set(int unit, int port, int control, int value)
{
    Call call(Layer::sdk, __func__, unit, port, control, value);
    return sdk::write(
        call, unit, [&](chip::Chip &chip) { return chip.ports.set_control(port, control, value); });
}

} // extern "C"
