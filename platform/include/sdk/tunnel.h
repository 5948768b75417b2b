/*
 * sdk/tunnel.h: the SDK's tunnel initiators.
 */
#ifndef SDK_TUNNEL_H
#define SDK_TUNNEL_H

#include <sdk/l3.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Removes the tunnel initiator that is bound to an L3 interface, at once.
 *
 * @param unit  SDK unit
 * @param intf  the interface, its l3a_intf_id and l3a_tunnel_idx filled in
 * @return 0; -7 when no initiator is bound to it
 */
int bcm_tunnel_initiator_clear(int unit, bcm_l3_intf_t *intf);

#ifdef __cplusplus
}
#endif

#endif
