/*
 * rtifhal_store.h: what outlives the process.
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
 * store.
 *
 * @return 0; the store's value on failure
 */
RTIFHAL_EXPORT int rtifhal_trident_pss_globalc_store(void);

/**
 * Stores an interface's record.
 *
 * @param l3lif  the interface
 * @return 0; the store's value on failure, which is reported
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_add_pss(struct l3lif *l3lif);

/**
 * Removes an interface's record.
 *
 * @param ifindex  the interface
 * @return 0; the store's value on failure, which is reported
 */
RTIFHAL_EXPORT int rtifhal_trident_l3port_del_pss(uint32_t ifindex);

#ifdef __cplusplus
}
#endif

#endif
