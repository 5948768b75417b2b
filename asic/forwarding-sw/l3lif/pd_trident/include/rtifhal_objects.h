/*
 * rtifhal_objects.h: the chip's objects of a routed interface: L3 interface, L3
 * ingress object, egress step.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_OBJECTS_H
#define RTIFHAL_OBJECTS_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"
#include <sdk/l3.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Creates an interface's L3 interface object, or programs it again. For the
 * kinds and the property setters.
 *
 * @param unit    SDK unit
 * @param inl3lif the interface; for a subinterface on a port-channel its main
 *                interface is programmed
 * @param object  what the object starts from, updated on success; null: the
 *                SDK's defaults
 * @param create  nonzero: a number is taken and the records are allocated; 0:
 *                the same number again
 * @return 0; the allocator's value when no number is left; -1 on any other
 *         failure
 */
RTIFHAL_EXPORT int rtifhal_l3_intf_create(int unit, struct l3lif *inl3lif, bcm_l3_intf_t *object,
                                          int create);

/**
 * Takes an interface's L3 interface object away. For the kinds.
 *
 * @param l3lif    the interface
 * @param object   its l3a_intf_id is the number; null: l3intf_id of the record
 * @param destroy  nonzero: the number is held back and the records are freed;
 *                 0: the number is parked for a later add
 * @return 0; -1 without a context or record
 */
RTIFHAL_EXPORT int rtifhal_l3_intf_delete(struct l3lif *l3lif, bcm_l3_intf_t *object, int destroy);

/**
 * Finishes an interface that was taken down before: its ingress object goes,
 * its number is held back, its records are freed. For SVIs and subinterfaces.
 *
 * @param l3lif  the interface
 * @return the value of the ingress object's destruction; -1 without a record
 */
RTIFHAL_EXPORT int rtifhal_l3_destroy(struct l3lif *l3lif);

/**
 * Writes an interface's L3 ingress object and ties it to its port, members or
 * VLAN. For the ingress step, the property setters and the relabel.
 *
 * @param l3lif   the interface
 * @param create  nonzero: from the SDK's defaults; 0: from the cached object
 * @return 0, also when the object or a port control was refused; -1 without
 *         context, record, number or cached object; the SDK's code when an
 *         SVI's VLAN record was refused
 */
RTIFHAL_EXPORT int rtifhal_l3_ing_create(struct l3lif *l3lif, int create);

/**
 * Gives an interface's class: 64, 128 with class_high_bit, and the label's
 * bits. For the ingress object and the layers above.
 *
 * @param l3lif  the interface
 * @return the class, 16 bits wide; 64 for a null interface
 */
RTIFHAL_EXPORT uint32_t rtifhal_get_class_id(const struct l3lif *l3lif);

/**
 * Gives the class of the interface of an ifindex. For the layers above.
 *
 * @param ifindex   the interface
 * @param class_id  receives the class; left alone on failure
 * @return 0; -1 when the interface isn't known
 */
RTIFHAL_EXPORT int rtifhal_get_class_id_ifindex(uint32_t ifindex, uint32_t *class_id);

/**
 * Unties an interface from its ingress object. For the ingress step.
 *
 * @param l3lif    the interface
 * @param destroy  nonzero: the object goes too
 * @return 0, also without a context; -1 without a record
 */
RTIFHAL_EXPORT int rtifhal_l3_ing_delete(struct l3lif *l3lif, int destroy);

/**
 * Takes the mapped mark off an SVI's VLAN; its ingress object stays. For the
 * ingress step.
 *
 * @param l3lif  the interface, may be null
 * @return 0, also for what isn't an SVI; -1 for a null interface, an unknown
 *         type or a VLAN that the cache doesn't have
 */
RTIFHAL_EXPORT int rtifhal_l3_ing_update_vlan_label(struct l3lif *l3lif);

/**
 * Gives an interface a new class label and writes its ingress object again;
 * without a record the label waits. For the layer above.
 *
 * @param class_id  the label, class first in this call
 * @param ifindex   the interface
 * @return what rtifhal_l3_ing_create returns; 0 when the label waits; -1 for an
 *         unknown interface; 0x41ED0011 when there is nowhere to keep it
 */
RTIFHAL_EXPORT int rtifhal_upd_classid(uint16_t class_id, uint32_t ifindex);

/**
 * The egress step of an add: sets switch control 230 to 1. For the dispatcher.
 *
 * @param l3lif  the interface
 * @return the SDK's code; -1 without context, properties or record
 */
RTIFHAL_EXPORT int rtifhal_l3_egr_create(struct l3lif *l3lif);

/**
 * The egress step of a delete: looks for the context and sends nothing. For
 * the dispatcher.
 *
 * @param l3lif  the interface
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_l3_egr_delete(struct l3lif *l3lif);

#ifdef __cplusplus
}
#endif

#endif
