/*
 * fwmpd/vxlan.h: the platform layer's virtual ports of VXLAN tunnels.
 */
#ifndef FWMPD_VXLAN_H
#define FWMPD_VXLAN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Makes a virtual port.
 *
 * @param unit      SDK unit
 * @param if_index  the interface that it belongs to
 * @param vpn       the VPN: words 2 to 4 are its VN id, its id and its multicast group
 * @param egress    the way out: word 2 is its L3 interface
 * @param port      the port: word 1 receives its id, word 2 has its flags; what it matches is the
 *                  port at byte 24 and the VLAN, 16 bits, at byte 32, by the criteria at byte 28
 * @param context   the caller's own
 * @return 0; -4 for a port or VLAN out of range; -6 when no port is left; -8 when one matches the
 *         same
 */
int rtifhal_bcm_vxlan_port_create(int unit, uint32_t if_index, void *vpn, void *egress, void *port,
                                  uintptr_t context);

/**
 * Removes a virtual port.
 *
 * @param unit     SDK unit
 * @param vpn      id of its VPN
 * @param port     its id
 * @param context  the caller's own
 * @return 0; -7 when there is no such port in the VPN
 */
int rtifhal_bcm_vxlan_port_delete(int unit, uintptr_t vpn, uintptr_t port, uintptr_t context);

#ifdef __cplusplus
}
#endif

#endif
