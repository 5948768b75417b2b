/*
 * fwm/vlan.h: the forwarding manager's VLAN records, as far as private VLANs go.
 */
#ifndef FWM_VLAN_H
#define FWM_VLAN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A VLAN's record, the forwarding manager's own. */
struct fwm_fwim_vlan;

/** What a VLAN is in a private VLAN, the forwarding manager's own. */
struct fwm_fwim_pvlan;

/**
 * Looks a VLAN up.
 *
 * @param instance  1, the one switch that there is
 * @param vlan      VLAN id, 0 to 4095
 * @return the record, the forwarding manager's own; null when it has none
 */
struct fwm_fwim_vlan *FWM_FWIM_FIND_VLAN(int instance, uint16_t vlan);

/**
 * Gives the private-VLAN record of a VLAN.
 *
 * @param vlan  the VLAN's record, never null
 * @return the record, the forwarding manager's own; null for a VLAN that is in
 *         no private VLAN
 */
struct fwm_fwim_pvlan *FWM_FWIM_VLAN_PVLAN(struct fwm_fwim_vlan *vlan);

/**
 * Tells a primary VLAN from a secondary one.
 *
 * @param pvlan  the private-VLAN record, never null
 * @return nonzero for a primary
 */
int FWM_FWIM_PVLAN_IS_PRIMARY(struct fwm_fwim_pvlan *pvlan);

#ifdef __cplusplus
}
#endif

#endif
