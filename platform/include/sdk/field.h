/*
 * sdk/field.h: the SDK's field processor, the rules in the chip's TCAM.
 *
 * An edit changes the SDK's copy of an entry; bcm_field_entry_reinstall brings
 * the copy into the chip.
 */
#ifndef SDK_FIELD_H
#define SDK_FIELD_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A set of qualifiers: qualifier q is bit q modulo 32 of word q / 32. */
typedef struct bcm_field_qset {
    uint32_t w[17]; /**< the words */
} bcm_field_qset_t;

SDK_STATIC_ASSERT(sizeof(bcm_field_qset_t) == 68, "bcm_field_qset_t is seventeen 32-bit words");

/** The SDK's handle of an entry. */
typedef uint32_t bcm_field_entry_t;

/**
 * Makes a field group, active at once.
 *
 * @param unit      SDK unit
 * @param qset      the qualifiers that its entries may use
 * @param priority  the higher goes first
 * @param group     group id, 0 and up
 * @return 0; -4 for an id out of range; -6 when no group is left; -8 when the id is taken
 */
int bcm_field_group_create_id(int unit, bcm_field_qset_t qset, int priority, int group);

/**
 * Makes an entry that matches every frame and does nothing; it isn't in the
 * chip until bcm_field_entry_install.
 *
 * @param unit   SDK unit
 * @param group  group id
 * @param entry  receives the entry's handle; left alone on failure
 * @return 0; -6 when no entry is left; -7 when the group doesn't exist
 */
int bcm_field_entry_create(int unit, int group, bcm_field_entry_t *entry);

/**
 * Sets an entry's L3-routable qualifier.
 *
 * @param unit   SDK unit
 * @param entry  entry id
 * @param data   1: frames that are L3-routable; 0: those that aren't
 * @param mask   1: it counts; 0: it doesn't
 * @return 0; -4 for other data or masks; -7 when the entry doesn't exist
 */
int bcm_field_qualify_L3Routable(int unit, int entry, uint8_t data, uint8_t mask);

/**
 * Gives an entry an action without ports.
 *
 * @param unit    SDK unit
 * @param entry   entry id
 * @param action  39: drop
 * @param first   parameter of the action, 0 for a drop
 * @param second  parameter of the action, 0 for a drop
 * @return 0; -7 when the entry doesn't exist; -8 when it has the action
 */
int bcm_field_action_add(int unit, int entry, int action, uint32_t first, uint32_t second);

/**
 * Writes an entry to the chip, new or again.
 *
 * @param unit   SDK unit
 * @param entry  entry id
 * @return 0; -7 when the entry doesn't exist
 */
int bcm_field_entry_install(int unit, int entry);

/**
 * Reads the ports of an entry's action.
 *
 * @param unit    SDK unit
 * @param entry   entry id
 * @param action  32: redirect to ports
 * @param pbmp    receives the ports; left alone on failure
 * @return 0; -7 when the entry, or the action in it, doesn't exist
 */
int bcm_field_action_ports_get(int unit, int entry, int action, bcm_pbmp_t *pbmp);

/**
 * Takes an action out of an entry.
 *
 * @param unit    SDK unit
 * @param entry   entry id
 * @param action  32: redirect to ports
 * @return 0; -7 when the entry, or the action in it, doesn't exist
 */
int bcm_field_action_remove(int unit, int entry, int action);

/**
 * Gives an entry an action with ports.
 *
 * @param unit    SDK unit
 * @param entry   entry id
 * @param action  32: redirect to ports
 * @param pbmp    the ports
 * @return 0; -7 when the entry doesn't exist; -8 when it has the action
 */
int bcm_field_action_ports_add(int unit, int entry, int action, bcm_pbmp_t pbmp);

/**
 * Reads an entry's in-ports qualifier.
 *
 * @param unit   SDK unit
 * @param entry  entry id
 * @param data   receives the ports; left alone on failure
 * @param mask   receives the mask; left alone on failure
 * @return 0; -7 when the entry, or the qualifier in it, doesn't exist
 */
int bcm_field_qualify_InPorts_get(int unit, int entry, bcm_pbmp_t *data, bcm_pbmp_t *mask);

/**
 * Takes a qualifier out of an entry.
 *
 * @param unit       SDK unit
 * @param entry      entry id
 * @param qualifier  13: in-ports
 * @return 0; -7 when the entry, or the qualifier in it, doesn't exist
 */
int bcm_field_qualifier_delete(int unit, int entry, int qualifier);

/**
 * Sets an entry's in-ports qualifier.
 *
 * @param unit   SDK unit
 * @param entry  entry id
 * @param data   the ports
 * @param mask   the ports that count
 * @return 0; -7 when the entry doesn't exist
 */
int bcm_field_qualify_InPorts(int unit, int entry, bcm_pbmp_t data, bcm_pbmp_t mask);

/**
 * Writes a changed entry to the chip.
 *
 * @param unit   SDK unit
 * @param entry  entry id
 * @return 0; -7 when the entry doesn't exist
 */
int bcm_field_entry_reinstall(int unit, int entry);

/**
 * Tells whether a field group is active.
 *
 * @param unit    SDK unit
 * @param group   group id
 * @param enable  receives 1 or 0; left alone on failure
 * @return 0; -7 when the group doesn't exist
 */
int bcm_field_group_enable_get(int unit, int group, int *enable);

/**
 * Switches a field group on or off, at once: the entries of one that is off
 * don't count.
 *
 * @param unit    SDK unit
 * @param group   group id
 * @param enable  1 or 0
 * @return 0; -7 when the group doesn't exist
 */
int bcm_field_group_enable_set(int unit, int group, int enable);

#ifdef __cplusplus
}
#endif

#endif
