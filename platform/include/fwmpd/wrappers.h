/*
 * fwmpd/wrappers.h: the batching wrappers of SDK calls.
 *
 * A wrapper checks its arguments, updates the wrappers' cache and puts the
 * write into a queue; the chip changes when the queue is flushed. A negative
 * result is a refusal: nothing was queued.
 */
#ifndef FWMPD_WRAPPERS_H
#define FWMPD_WRAPPERS_H

#include <sdk/l3.h>
#include <sdk/trunk.h>
#include <sdk/vlan.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Writes all queued operations to the chip, in their order. To be called
 * before a direct SDK call that reads what may still be queued, or that must
 * come after it. It may be called at any time, with an empty queue too.
 *
 * @return 0; the library doesn't look at it
 */
int fwmpd_trident_batch_flush(void);

/**
 * Sets a port control.
 *
 * @param unit     SDK unit
 * @param port     port, 0 to 255
 * @param control  the numbers of bcm_port_control_set
 * @param value    the control's value
 * @return 0; -4 for a port out of range; -16 for a control that the chip lacks
 */
int fwmpd_bcm_port_control_set(int unit, int port, int control, int value);

/**
 * Sets the VLAN of a port's untagged frames.
 *
 * @param unit  SDK unit
 * @param port  port
 * @param vlan  VLAN id
 * @return 0; -4 for an argument out of range
 */
int fwmpd_bcm_port_untagged_vlan_set(int unit, int port, bcm_vlan_t vlan);

/**
 * Sets which frames a port discards.
 *
 * @param unit  SDK unit
 * @param port  port
 * @param mode  0: none
 * @return 0; -4 for an argument out of range
 */
int fwmpd_bcm_port_discard_set(int unit, int port, int mode);

/**
 * Sets a port's spanning tree state in all groups that the port's VLANs are in.
 *
 * @param unit   SDK unit
 * @param port   port
 * @param state  0 disabled, 1 blocking, 4 forwarding
 * @return 0; -4 for an argument out of range
 */
int fwmpd_bcm_port_stp_set(int unit, int port, int state);

/**
 * Sets a port's spanning tree state in one group.
 *
 * @param unit   SDK unit
 * @param stg    the group
 * @param port   port
 * @param state  0 disabled, 1 blocking, 4 forwarding
 * @return 0; -4 for an argument out of range; -7 when the group doesn't exist
 */
int fwmpd_bcm_stg_stp_set(int unit, int stg, int port, int state);

/**
 * Adds a port to the cached ports of a VLAN. The chip is left alone: this is
 * for a restart, after which the chip still has the port there.
 *
 * @param vlan  VLAN id
 * @param port  port, 0 to 255
 * @return 0; -4 for a VLAN or port out of range; the library doesn't look at it
 */
int fwmpd_bcm_set_vlan_pbmp(bcm_vlan_t vlan, int port);

/**
 * Adds ports to a VLAN.
 *
 * @param unit  SDK unit
 * @param vlan  VLAN id
 * @param pbmp  the ports
 * @param ubmp  those of them whose frames leave untagged
 * @return 0; -4 for an id out of range
 */
int fwmpd_bcm_vlan_port_add(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp, bcm_pbmp_t ubmp);

/**
 * Takes ports out of a VLAN; a port that isn't in it is no failure.
 *
 * @param unit  SDK unit
 * @param vlan  VLAN id
 * @param pbmp  the ports
 * @return 0; -4 for an id out of range
 */
int fwmpd_bcm_vlan_port_remove(int unit, bcm_vlan_t vlan, bcm_pbmp_t pbmp);

/**
 * Destroys a VLAN; its controls in the cache go back to their defaults.
 *
 * @param unit  SDK unit
 * @param vlan  VLAN id
 * @return 0; nonzero on failure, -4 for an id out of range
 */
int fwmpd_bcm_vlan_destroy(int unit, bcm_vlan_t vlan);

/**
 * Gives the cached control record of a VLAN. The library changes the record in
 * place, which changes the cache, and then hands it to a setter.
 *
 * @param vlan  VLAN id
 * @return the record, which stays the wrappers' own and stays valid; null when
 *         the cache has none for this VLAN
 */
bcm_vlan_control_vlan_t *fwmpd_bcm_vlan_control_vlan_get_from_cache(bcm_vlan_t vlan);

/**
 * Writes a VLAN's controls, to the cache and through the queue to the chip.
 *
 * @param unit     SDK unit
 * @param vlan     VLAN id
 * @param control  the whole record
 * @return 0; negative on failure, -4 for an id out of range
 */
int fwmpd_bcm_vlan_control_vlan_set(int unit, bcm_vlan_t vlan, bcm_vlan_control_vlan_t control);

/**
 * Writes a VLAN's block masks.
 *
 * @param unit   SDK unit
 * @param vlan   VLAN id
 * @param block  the masks, as a rule the record of fwmpd_trident_get_bvbt
 * @return 0; nonzero on failure, -4 for an id out of range
 */
int fwmpd_bcm_vlan_block_set(int unit, bcm_vlan_t vlan, bcm_vlan_block_t *block);

/**
 * Gives the live block record of a VLAN, to be changed in place.
 *
 * @param vlan  VLAN id
 * @return the record, the wrappers' own; never null
 */
bcm_vlan_block_t *fwmpd_trident_get_bvbt(bcm_vlan_t vlan);

/**
 * Stores a VLAN's controls for a restart.
 *
 * @param vlan  VLAN id
 * @return 0; the library doesn't look at it
 */
int fwmpd_trident_vlan_bvcvt_store(bcm_vlan_t vlan);

/**
 * Sets a VLAN control of a port.
 *
 * @param unit     SDK unit
 * @param port     port
 * @param control  14: the first key of the port's VLAN translation look-up
 * @param value    for control 14, 8: port and outer VLAN
 * @return 0; -4 for a port out of range
 */
int fwmpd_bcm_vlan_control_port_set(int unit, int port, int control, int value);

/**
 * Adds an ingress VLAN translation.
 *
 * @param unit        SDK unit
 * @param gport       module port, or trunk
 * @param key_type    8: port and outer VLAN
 * @param outer_vlan  outer VLAN of the key, 0 to 4095
 * @param inner_vlan  inner VLAN of the key; the library passes 65535, any
 * @param action      what the entry does, left as it is
 * @return 0; negative on failure, -4 for an argument out of range. A key that
 *         exists or a full table may show only when the queue is flushed.
 */
int fwmpd_bcm_vlan_translate_action_add(int unit, bcm_gport_t gport, int key_type, int outer_vlan,
                                        int inner_vlan, bcm_vlan_action_set_t *action);

/**
 * Removes an ingress VLAN translation.
 *
 * @param unit        SDK unit
 * @param gport       module port, or trunk
 * @param key_type    8: port and outer VLAN
 * @param outer_vlan  outer VLAN of the key, 0 to 4095
 * @param inner_vlan  the library passes 0 here, which has to find the entry
 *                    that was added with 65535
 * @return 0; negative on failure, -4 for an argument out of range. A missing
 *         entry may show only when the queue is flushed.
 */
int fwmpd_bcm_vlan_translate_action_delete(int unit, bcm_gport_t gport, int key_type,
                                           int outer_vlan, int inner_vlan);

/**
 * Writes a trunk's properties and its members.
 *
 * @param unit     SDK unit
 * @param tid      trunk id
 * @param info     the properties, left as they are
 * @param count    number of members, 0 to 32
 * @param members  the members, in the place of those that the trunk has
 * @return 0; negative on failure: -4 for an argument out of range, -7 when
 *         there is no such trunk
 */
int fwmpd_bcm_trunk_set(int unit, int tid, bcm_trunk_info_t *info, int count,
                        bcm_trunk_member_t *members);

/**
 * Adds a member to a trunk.
 *
 * @param unit    SDK unit
 * @param tid     trunk id
 * @param member  the member
 * @return 0; nonzero on failure: -6 when the trunk is full, -7 when there is no
 *         such trunk, -8 when the port is a member already
 */
int fwmpd_bcm_trunk_member_add(int unit, int tid, bcm_trunk_member_t member);

/**
 * Takes a member out of a trunk.
 *
 * @param unit    SDK unit
 * @param tid     trunk id
 * @param member  the member, told by its gport
 * @return 0; negative on failure: -7 when there is no such trunk or member
 */
int fwmpd_bcm_trunk_member_delete(int unit, int tid, bcm_trunk_member_t member);

/**
 * Sets a switch-wide control.
 *
 * @param unit     SDK unit
 * @param control  the control's number; routed interfaces set 230, 232 and 364
 * @param value    the control's value
 * @return 0; -4 for a control out of range
 */
int fwmpd_bcm_switch_control_set(int unit, int control, int value);

#ifdef __cplusplus
}
#endif

#endif
