/*
 * vlan_controls.cpp: see vlan_controls.h.
 */
#include "vlan/vlan_controls.h"

#include <fwmpd/wrappers.h>

int write_snooping_disabled(int unit, uint16_t vlan, const bcm_vlan_control_vlan_t &cached)
{
    bcm_vlan_control_vlan_t control;
    bcm_vlan_control_vlan_t_init(&control);
    control = cached;
    control.vc_flags |= BCM_VLAN_IGMP_SNOOP_DISABLE;
    (void)fwmpd_trident_batch_flush();
    return bcm_vlan_control_vlan_set(unit, vlan, control);
}
