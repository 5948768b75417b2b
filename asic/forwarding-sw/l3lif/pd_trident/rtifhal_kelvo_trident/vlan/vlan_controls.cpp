/*
 * vlan_controls.cpp: see vlan_controls.h.
 */
#include "vlan/vlan_controls.h"

#include "frame/trace.h"

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

int refresh_vlan_controls(const char *operation, int unit, uint16_t vlan)
{
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT_NAMED(operation, "fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n",
                     vlan);
        return -1;
    }
    bcm_vlan_control_vlan_t_init(control);
    (void)fwmpd_trident_batch_flush();
    if (bcm_vlan_control_vlan_get(unit, vlan, control) < 0) {
        REPORT_NAMED(operation, " bcm_vlan_control_vlan_get failed for VLAN: %d", vlan);
        return -1;
    }
    if (fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control) != 0) {
        REPORT_NAMED(operation, "bcm_vlan_control_vlan_set failed for VLAN: %d\n", vlan);
        return -1;
    }
    TRACE_NAMED(operation, " Set vlan control for vid: %d, flags: 0x%x\n", vlan, control->vc_flags);
    return 0;
}
