/*
 * l3lif/l3lif_layer.h: what the platform-independent layer above answers.
 */
#ifndef L3LIF_L3LIF_LAYER_H
#define L3LIF_L3LIF_LAYER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct l3lif;

/**
 * A data block of the layer above, of at least 1056 bytes. The 96 words of 32
 * bits from byte 672 on are ids of field entries that flood to ports; 0 is a
 * free slot.
 */
extern unsigned char l3lif_global_data[];

/** What the layer above knows of an interface that is ready. */
typedef struct l3lif_iif_info {
    uint32_t reserved[6]; /**< the layer's own */
    uint32_t l3iif;       /**< the interface's number in the chip */
    uint32_t reserved2;   /**< the layer's own */
} l3lif_iif_info_t;

/**
 * Looks an interface up.
 *
 * @param ifindex  the interface
 * @return its record, the layer's own; null when there is none
 */
struct l3lif *l3lif_find_lif_from_ifindex(uint32_t ifindex);

/**
 * Looks an interface up by its internal VLAN.
 *
 * @param vlan  an int_vlan, 1 to 4095
 * @return the record, the layer's own; null when no interface has this VLAN
 */
struct l3lif *l3lif_find_lif_from_int_vlan(uint16_t vlan);

/**
 * Tells the number of an interface that is ready to forward.
 *
 * @param ifindex  the interface
 * @param info     filled in on success
 * @return 0 when the interface is ready; else a system error code, whose text
 *         fwm_syserr2str gives
 */
int l3lif_get_iif_for_ifindex_new(uint32_t ifindex, l3lif_iif_info_t *info);

/**
 * Publishes an interface in the shared database, on a fast restart.
 *
 * @param l3lif  the interface
 * @return 0; the library doesn't look at it
 */
int l3lif_update_sdb_for_intf(struct l3lif *l3lif);

#ifdef __cplusplus
}
#endif

#endif
