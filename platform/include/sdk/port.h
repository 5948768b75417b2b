/*
 * sdk/port.h: the SDK's port controls, by direct calls.
 */
#ifndef SDK_PORT_H
#define SDK_PORT_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Sets a port control, at once.
 *
 * @param unit     SDK unit
 * @param port     port, 0 to 255; 0 is the CPU port
 * @param control  8 and 10 IPv4 routing, 9 and 11 IPv6 routing, 14 MPLS, 67 the
 *                 port's L3 ingress interface, 187 VXLAN (Trident2 only)
 * @param value    the control's value
 * @return 0; -4 for a port out of range; -16 for a control that the chip lacks
 */
int bcm_port_control_set(int unit, int port, int control, int value);

#ifdef __cplusplus
}
#endif

#endif
