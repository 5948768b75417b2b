/*
 * rtifhal_defaults.h: what a fast restart brings back: default routes, and
 * adjacencies, which the service bcm_usd makes.
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

/**
 * Asks bcm_usd for the adjacencies of an interface, on a fast restart only.
 * For the layer above; each call asks again.
 *
 * @param ifindex  the interface
 */
RTIFHAL_EXPORT void rtifhal_trident_create_v4_adjacency(uint32_t ifindex);

/**
 * Does nothing: IPv6 adjacencies come with IPv4's. For the layer above.
 *
 * @param ifindex  not looked at
 */
RTIFHAL_EXPORT void rtifhal_trident_create_v6_adjacency(uint32_t ifindex);

/**
 * Asks bcm_usd for the adjacencies of an interface, on a fast restart only.
 * For the layer above, which comes back when the interface wasn't ready.
 *
 * @param ifindex  the interface
 * @return 0 on any other start; what the send gave, negative on failure; -1,
 *         reported, for an interface that isn't ready
 */
RTIFHAL_EXPORT int rtifhal_trident_recover_adjacency(uint32_t ifindex);

#ifdef __cplusplus
}
#endif

#endif
