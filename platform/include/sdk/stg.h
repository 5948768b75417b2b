/*
 * sdk/stg.h: the SDK's spanning tree groups (STGs).
 *
 * A port's state in a group is 0 disabled, 1 blocking or 4 forwarding.
 */
#ifndef SDK_STG_H
#define SDK_STG_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Puts a VLAN into a group, at once; it leaves the group that it was in.
 *
 * @param unit  SDK unit
 * @param stg   the group
 * @param vlan  VLAN id
 * @return 0; -7 when the group or the VLAN doesn't exist
 */
int bcm_stg_vlan_add(int unit, int stg, bcm_vlan_t vlan);

#ifdef __cplusplus
}
#endif

#endif
