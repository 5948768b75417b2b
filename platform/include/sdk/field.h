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
