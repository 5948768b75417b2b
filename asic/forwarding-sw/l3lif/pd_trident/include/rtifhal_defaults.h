/*
 * rtifhal_defaults.h: what a fast restart brings back: default routes, and
 * adjacencies, which the service bcm_usd makes. And the VXLAN virtual ports.
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
 * Copies what the chip holds for a route. For the rebuild of a default route.
 *
 * @param destination  where to; null is reported
 * @param source       where from; null is reported
 */
RTIFHAL_EXPORT void save_curr_egress(def_egress_set_t *destination, const def_egress_set_t *source);

/**
 * Destroys the group and the next hops that a set names; the set stays. For the
 * rebuild of a default route, and for the end of them all.
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

/**
 * Makes a VXLAN virtual port through the platform layer. For callers outside;
 * nothing is checked but that the records are there.
 *
 * @param unit      SDK unit
 * @param if_index  the interface that it belongs to
 * @param vpn       VPN record: 32-bit words 2 to 4 are printed, VN id, VPN id, multicast index
 * @param egress    egress record: word 2 is printed, its L3 interface
 * @param port      port record: word 2, its flags, the words at bytes 24 and 28 and the 16 bits
 *                  at byte 32, what it matches, are printed
 * @param context   passed on
 * @return what the platform layer gave; -1, without a call, when a record is null
 */
RTIFHAL_EXPORT int rtifhal_trident_vxlan_port_create(int unit, uint32_t if_index, void *vpn,
                                                     void *egress, void *port, uintptr_t context);

/**
 * Removes a VXLAN virtual port through the platform layer. For callers outside.
 *
 * @param unit     passed on: SDK unit
 * @param second   not looked at
 * @param third    not looked at
 * @param vpn      passed on: id of the VPN
 * @param port     passed on: the port's id
 * @param context  passed on
 * @return what the platform layer gave
 */
RTIFHAL_EXPORT int rtifhal_trident_vxlan_port_delete(int unit, uintptr_t second, uintptr_t third,
                                                     uintptr_t vpn, uintptr_t port,
                                                     uintptr_t context);

#ifdef __cplusplus
}
#endif

#endif
