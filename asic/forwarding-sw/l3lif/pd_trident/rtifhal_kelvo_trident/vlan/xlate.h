/*
 * xlate.h: ingress VLAN translation: what tells a subinterface's frames from
 * all others on the port.
 *
 * An entry matches port and outer VLAN, moves the frame into VLAN 4094 and
 * names the subinterface as its ingress interface.
 */
#pragma once

#include <sdk/types.h>

/**
 * Lets a port look translations up by port and outer VLAN; it is asked again
 * for each subinterface. For the subinterfaces and the port-channel members.
 *
 * @param unit  SDK unit
 * @param port  SDK port
 * @return 0; -1 when the chip refused
 */
int rtifhal_vlan_xlate_enable(int unit, int port);

/**
 * Adds a translation.
 *
 * @param unit     SDK unit
 * @param gport    module port, or trunk
 * @param old_vid  outer VLAN to match, of which 16 bits count
 * @param new_vid  VLAN in the chip
 * @param l3_iif   ingress interface
 * @return 0; -1 when the chip refused
 */
int rtifhal_vlan_xlate(int unit, bcm_gport_t gport, int old_vid, int new_vid, int l3_iif);

/**
 * Removes a translation.
 *
 * @param unit      SDK unit
 * @param gport     module port, or trunk
 * @param old_vlan  outer VLAN, of which 16 bits count
 * @param new_vlan  not used
 * @param l3_iif    not used
 * @return 0; -1 when the chip refused
 */
int rtifhal_vlan_del_xlate(int unit, bcm_gport_t gport, int old_vlan, int new_vlan, int l3_iif);
