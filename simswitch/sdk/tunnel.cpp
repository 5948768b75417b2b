/*
 * tunnel.cpp: tunnel initiators (sdk/tunnel.h) over chip/tunnels.h.
 */
#include "sdk/access.h"

#include <sdk/tunnel.h>

using namespace simswitch;

extern "C" {

int bcm_tunnel_initiator_clear(int unit, bcm_l3_intf_t *intf)
{
    Call call(Layer::sdk, __func__, unit, intf);
    return sdk::write(call, unit,
                      [&](chip::Chip &chip) { return chip.tunnels.remove(intf->l3a_intf_id); });
}

} // extern "C"
