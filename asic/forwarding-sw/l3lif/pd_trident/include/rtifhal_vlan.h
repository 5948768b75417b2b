/*
 * rtifhal_vlan.h: the uses of VLANs, and what they may flood.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_VLAN_H
#define RTIFHAL_VLAN_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives the ports that hold a routed use of a VLAN. For the layers above.
 *
 * @param vlan  VLAN id; above 4095 it has none
 * @return a copy of the set
 */
RTIFHAL_EXPORT bcm_pbmp_t rtifhal_l3pbmp_vlan(uint16_t vlan);

/**
 * Counts the ports that hold a routed use of a VLAN. For the layers above.
 *
 * @param vlan  VLAN id; above 4095 it has none
 * @return the count
 */
RTIFHAL_EXPORT int rtifhal_subint_count_vlan(uint16_t vlan);

/**
 * Tells whether an SVI uses a VLAN. For the private-VLAN pairs and the layers above.
 *
 * @param vlan  VLAN id; above 4095 none does
 * @return 1 or 0
 */
RTIFHAL_EXPORT int rtifhal_is_vlan_svi(uint16_t vlan);

/**
 * Marks a VLAN as in use by the L2 side. For the L2 side.
 *
 * @param vlan  VLAN id; above 4095 nothing is marked
 */
RTIFHAL_EXPORT void rtifhal_set_l2_vlan(uint16_t vlan);

/**
 * Marks a VLAN as in use by an SVI. For the restore.
 *
 * @param vlan  VLAN id; above 4095 nothing is marked
 */
RTIFHAL_EXPORT void rtifhal_set_svi(uint16_t vlan);

/**
 * Takes a use of a VLAN on or gives it up, and keeps the VLAN's block masks in
 * step; a VLAN whose last user goes is destroyed, unless that was the L2 side.
 * For the VLAN operations, the SVIs and the L2 side.
 *
 * @param vlan      VLAN id
 * @param type      1 a routed use on a port, 2 an SVI, 3 the L2 side
 * @param port      SDK port for type 1, else not used
 * @param set       nonzero: take it on; 0: give it up
 * @param no_users  receives 1 when the VLAN was left without users, or null
 * @return 0; -1 when the chip refused the masks or the end of the VLAN
 */
RTIFHAL_EXPORT int rtifhal_subintf_block_set(uint16_t vlan, int type, int port, int set,
                                             uint32_t *no_users);

#ifdef __cplusplus
}
#endif

#endif
