/*
 * fwmpd/l3_cache.h: the wrappers that keep a cache of the chip's L3 objects,
 * and the SDK unit that goes with them.
 *
 * Their writes go through the queue of wrappers.h.
 */
#ifndef FWMPD_L3_CACHE_H
#define FWMPD_L3_CACHE_H

#include <sdk/l3.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells the SDK unit of a chip.
 *
 * @param chip  number of the chip; the library passes 0
 * @return the SDK unit, to be handed to the SDK calls; it can't fail
 */
int rtifhal_get_bcm_unit(int chip);

/**
 * Tells whether an interface has subinterfaces.
 *
 * @param ifindex  a main interface
 * @return nonzero when it has
 */
int rtifhal_if_has_si(uint32_t ifindex);

/**
 * Creates an L3 interface, or replaces it.
 *
 * @param unit  SDK unit
 * @param intf  the object. With flag 0x40 its l3a_intf_id is taken as it
 *              stands; with flag 0x100 an object of that id is replaced, and
 *              created where there is none
 * @return 0 or positive; -4 for an id out of range; -6 when the table is full;
 *         -8 when the id exists and flag 0x100 is missing
 */
int rtifhal_bcm_l3_intf_create(int unit, bcm_l3_intf_t *intf);

/**
 * Deletes an L3 interface.
 *
 * @param unit  SDK unit
 * @param intf  l3a_intf_id names it
 * @return 0; -7 when there is none; the library doesn't look at it
 */
int rtifhal_bcm_l3_intf_delete(int unit, bcm_l3_intf_t *intf);

/**
 * Writes an L3 ingress object under a given number, new or again, and keeps it
 * in the cache.
 *
 * @param unit     SDK unit
 * @param ingress  the object
 * @param iif      its number, left as it is
 * @return 0 or positive; -4 for a number out of range; -6 when the table is full
 */
int rtifhal_bcm_l3_ingress_create(int unit, bcm_l3_ingress_t *ingress, int *iif);

/**
 * Destroys an L3 ingress object and drops it from the cache.
 *
 * @param unit  SDK unit
 * @param iif   its number; 0 may come and is answered like any other
 * @return 0; -7 when there is none
 */
int rtifhal_bcm_l3_ingress_destroy(int unit, int iif);

/**
 * Gives the cached L3 ingress object of a number.
 *
 * @param iif  the number
 * @return the cached object, the wrappers' own; null when there is none
 */
bcm_l3_ingress_t *rtifhal_bcm_l3_ingress_get_from_cache(int iif);

#ifdef __cplusplus
}
#endif

#endif
