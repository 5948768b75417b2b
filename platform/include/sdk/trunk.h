/*
 * sdk/trunk.h: the SDK's trunks, the chip side of port-channels.
 */
#ifndef SDK_TRUNK_H
#define SDK_TRUNK_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The properties of a trunk. */
typedef struct bcm_trunk_info {
    uint32_t flags;    /**< the SDK's trunk flags */
    int psc;           /**< port selection criterion: what the member choice hashes */
    int ipmc_psc;      /**< the same for multicast */
    int dlf_index;     /**< member for unknown unicast, -1 for the SDK's choice */
    int mc_index;      /**< member for multicast, -1 for the SDK's choice */
    int ipmc_index;    /**< member for routed multicast, -1 for the SDK's choice */
    int dynamic_size;  /**< flow table size, Trident2 only */
    uint32_t reserved; /**< the SDK's own */
} bcm_trunk_info_t;

/** One member of a trunk. */
typedef struct bcm_trunk_member {
    uint32_t flags;     /**< the SDK's member flags */
    bcm_gport_t gport;  /**< the member's module port */
    int scaling_factor; /**< the SDK's own */
    int load_weight;    /**< the SDK's own */
} bcm_trunk_member_t;
SDK_STATIC_ASSERT(sizeof(bcm_trunk_member_t) == 16, "a trunk member is four words");

/**
 * Gives trunk properties the SDK's defaults: all fields 0.
 *
 * @param info  the record, never null
 */
void bcm_trunk_info_t_init(bcm_trunk_info_t *info);

/**
 * Gives a trunk member the SDK's defaults: all fields 0.
 *
 * @param member  the record, never null
 */
void bcm_trunk_member_t_init(bcm_trunk_member_t *member);

/**
 * Creates a trunk without members, at once.
 *
 * @param unit   SDK unit
 * @param flags  16: the id is the caller's; else the SDK chooses it
 * @param tid    the trunk id, 0 to 65535; receives the one that the SDK chose
 *               and is left alone on failure
 * @return 0; -8 when the trunk exists; -4 for an id out of range; -6 when the
 *         table is full, which has room for 128 trunks on a Trident and for
 *         1024 on a Trident2, whatever their ids
 */
int bcm_trunk_create(int unit, uint32_t flags, int *tid);

/**
 * Reads a trunk's properties and members from the chip.
 *
 * @param unit          SDK unit
 * @param tid           trunk id
 * @param info          receives the properties
 * @param member_max    room in `members`, 0 to 32 here
 * @param members       receives up to `member_max` members
 * @param member_count  receives the number of members in the trunk
 * @return 0; -7 when there is no such trunk, nothing stored
 */
int bcm_trunk_get(int unit, int tid, bcm_trunk_info_t *info, int member_max,
                  bcm_trunk_member_t *members, int *member_count);

#ifdef __cplusplus
}
#endif

#endif
