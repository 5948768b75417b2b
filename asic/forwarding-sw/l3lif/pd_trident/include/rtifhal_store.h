/*
 * rtifhal_store.h: what outlives the process, and how it is taken up again by
 * the next one.
 *
 * After a restart in restore mode the layer above restores the global context,
 * then each stored interface. The chip is left as it is.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_STORE_H
#define RTIFHAL_STORE_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Writes the global configuration with the held-back interface numbers to the
 * store. For the table of interface numbers, whenever the held-back ones change.
 *
 * @return 0; the store's value on failure
 */
RTIFHAL_EXPORT int rtifhal_trident_pss_globalc_store(void);

/**
 * Stores an interface's record. For the creation of L3 interfaces, and for the
 * relabel.
 *
 * @param l3lif  the interface
 * @return 0; the store's value on failure, which is reported
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_add_pss(struct l3lif *l3lif);

/**
 * Removes an interface's record. For the end of an L3 interface.
 *
 * @param ifindex  the interface
 * @return 0; the store's value on failure, which is reported
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_del_pss(uint32_t ifindex);

/**
 * Takes the held-back interface numbers up again from the global
 * configuration. For the layer above, on a restart, before any interface.
 *
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_trident_pss_restore_global_context(void);

/**
 * Takes a stored interface up again, of whatever kind: its number and its VLAN
 * are marked as in use. For the layer above, on a restart.
 *
 * @param l3lif  the interface as it was stored; int_vlan becomes 4094 where it
 *               has no encapsulation VLAN
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_restore(struct l3lif *l3lif);

#ifdef __cplusplus
}
#endif

#endif
