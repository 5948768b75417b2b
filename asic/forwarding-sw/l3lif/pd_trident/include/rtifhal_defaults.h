/*
 * rtifhal_defaults.h: default routes that a fast restart brings back.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_DEFAULTS_H
#define RTIFHAL_DEFAULTS_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Rebuilds the saved default routes that an interface can serve, on a fast
 * restart only. For the interface steps.
 *
 * @param ifindex  the interface that came up
 */
RTIFHAL_EXPORT void rtifhal_trident_create_default_nh(uint32_t ifindex);

/**
 * Destroys the next hops and groups of the saved default routes, and forgets
 * the routes; the routes in the chip stay. For the layer above.
 */
RTIFHAL_EXPORT void rtifhal_trident_destroy_default_nh(void);

/**
 * Copies what the chip holds for a route.
 *
 * @param destination  where to; null is reported
 * @param source       where from; null is reported
 */
RTIFHAL_EXPORT void save_curr_egress(def_egress_set_t *destination, const def_egress_set_t *source);

/**
 * Destroys the group and the next hops that a set names; the set stays.
 *
 * @param set  the set; null is reported
 */
RTIFHAL_EXPORT void clear_old_egress(const def_egress_set_t *set);

#ifdef __cplusplus
}
#endif

#endif
