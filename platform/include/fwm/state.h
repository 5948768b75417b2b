/*
 * fwm/state.h: the forwarding manager's state that routed interfaces look at:
 * the kind of start, the persistent store's handle, the port-channel map.
 */
#ifndef FWM_STATE_H
#define FWM_STATE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Nonzero while the process rebuilds itself from the persistent store: the chip is left alone. */
extern int g_fwm_pss_restore_mode;

/** Handle of the persistent store, handed to each store call as it is. */
extern void *g_fwm_pss_context;

/** The value behind a port-channel's trunk id in the shared database. */
typedef struct fwm_pc_sdb_value {
    uint32_t ifindex; /**< the port-channel */
    uint32_t tid;     /**< its trunk id */
} fwm_pc_sdb_value_t;

/**
 * Looks a port-channel's trunk id up.
 *
 * @param ifindex  the port-channel, or its subinterface
 * @param tid      receives the trunk id; left alone when it isn't known
 * @return 0; nonzero when the port-channel isn't known
 */
int fwm_ifindex_2_tid(uint32_t ifindex, uint32_t *tid);

/**
 * Files a port-channel's trunk id, so that fwm_ifindex_2_tid finds it.
 *
 * @param key    the trunk id, 16 bits
 * @param value  the port-channel, or its subinterface, and the trunk id
 * @return 0; the library doesn't look at it
 */
int fwm_pc_sdb_store(const uint16_t *key, const fwm_pc_sdb_value_t *value);

/**
 * Gives the text of a system error code.
 *
 * @param code  the code
 * @return the text, never null, the host's own
 */
const char *fwm_syserr2str(int code);

#ifdef __cplusplus
}
#endif

#endif
