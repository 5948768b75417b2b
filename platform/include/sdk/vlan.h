/*
 * sdk/vlan.h: the SDK's VLANs and their control records, by direct calls.
 *
 * The wrappers of fwmpd/wrappers.h write the same tables through a queue: who
 * calls here flushes that queue first (fwmpd_trident_batch_flush).
 */
#ifndef SDK_VLAN_H
#define SDK_VLAN_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The controls of a VLAN, passed by value. */
typedef struct bcm_vlan_control_vlan {
    uint32_t vc_vrf;        /**< VRF of the routed VLAN */
    uint32_t vc_ingress_if; /**< L3 ingress interface of the VLAN, 0 when it isn't routed */
    uint32_t vc_flags;      /**< flag word */
    uint32_t vc_class;      /**< 2: an SVI stands on it; 4: an ingress object is mapped */
    uint32_t vc_urpf_mode;  /**< reverse-path check: 0 off, 1 loose, 2 strict */
    uint32_t reserved[33];  /**< the SDK's own */
} bcm_vlan_control_vlan_t;
SDK_STATIC_ASSERT(sizeof(bcm_vlan_control_vlan_t) == 152, "VLAN controls are 152 bytes");

/** The block masks of a VLAN: a port in a set doesn't get that class of traffic. */
typedef struct bcm_vlan_block {
    bcm_pbmp_t known_multicast;   /**< not touched by routed interfaces */
    bcm_pbmp_t unknown_multicast; /**< no multicast without a group */
    bcm_pbmp_t unknown_unicast;   /**< no unicast to unknown stations */
    bcm_pbmp_t broadcast;         /**< no broadcast */
} bcm_vlan_block_t;
SDK_STATIC_ASSERT(sizeof(bcm_vlan_block_t) == 4 * sizeof(bcm_pbmp_t), "four sets in a row");

/** What a VLAN translation does with the frame that it matches. */
typedef struct bcm_vlan_action_set {
    bcm_vlan_t new_outer_vlan; /**< the frame's VLAN in the chip */
    int ingress_if;            /**< L3 ingress interface of the frame */
    int dt_outer;              /**< outer tag of a double-tagged frame, 0 for no action */
    int ot_outer;              /**< tag of a single-tagged frame: 0 no action, 2 replace */
    uint32_t reserved[4];      /**< the SDK's own */
} bcm_vlan_action_set_t;

/**
 * Gives a translation's action the SDK's defaults: all fields 0.
 *
 * @param action  the record, never null
 */
void bcm_vlan_action_set_t_init(bcm_vlan_action_set_t *action);

/**
 * Creates a VLAN in the chip, at once, with no member.
 *
 * @param unit  SDK unit
 * @param vlan  VLAN id, 1 to 4095
 * @return 0; -8 when the VLAN exists already, which most callers welcome; -4
 *         for an id out of range; -6 when the table is full
 */
int bcm_vlan_create(int unit, bcm_vlan_t vlan);

/**
 * Gives a control record the SDK's defaults: all fields 0.
 *
 * @param control  the record, never null
 */
void bcm_vlan_control_vlan_t_init(bcm_vlan_control_vlan_t *control);

/**
 * Reads a VLAN's controls from the chip.
 *
 * @param unit     SDK unit
 * @param vlan     VLAN id
 * @param control  receives the controls; left alone on failure
 * @return 0; -4 for an id out of range; -7 when the VLAN doesn't exist
 */
int bcm_vlan_control_vlan_get(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t *control);

/**
 * Writes a VLAN's controls, at once. The wrappers' cache doesn't learn of it.
 *
 * @param unit     SDK unit
 * @param vlan     VLAN id
 * @param control  the whole record
 * @return 0; -4 for an id out of range; -7 when the VLAN doesn't exist
 */
int bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control);

/**
 * Sets a VLAN control of a port, at once.
 *
 * @param unit     SDK unit
 * @param port     port, 0 to 255
 * @param control  2: ingress VLAN translation; 4: drop what no translation matches
 * @param value    the control's value
 * @return 0; -4 for a port out of range
 */
int bcm_vlan_control_port_set(int unit, int port, int control, int value);

/**
 * Clears all four sets of a block record.
 *
 * @param block  the record, never null
 */
void bcm_vlan_block_t_init(bcm_vlan_block_t *block);

#ifdef __cplusplus
}
#endif

#endif
