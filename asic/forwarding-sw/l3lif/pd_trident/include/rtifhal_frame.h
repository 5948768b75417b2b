/*
 * rtifhal_frame.h: small helpers, the common steps of add and delete, interface
 * numbers, and the translation of an ifindex.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_FRAME_H
#define RTIFHAL_FRAME_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives the module id of a unit, which is the unit number itself. For the
 * layers above.
 *
 * @param unit   SDK unit
 * @param modid  receives the module id, never null
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_bcm_stk_my_modid_get(int unit, int *modid);

/**
 * Gives the QoS map of routed interfaces. For the layers above and the ingress
 * objects.
 *
 * @return 0 always: no map
 */
RTIFHAL_EXPORT int rtifhal_get_qosmap_id(void);

/**
 * Tells whether an interface was taken down with its record kept. For the SVI
 * delete and the layers above.
 *
 * @param l3lif  the interface, may be null
 * @return 1 when its record exists and brcm_prog_complete is nonzero, else 0
 */
RTIFHAL_EXPORT int rtifhal_is_lif_deleted(const struct l3lif *l3lif);

/**
 * The same test for the subinterface delete, under a name of its own.
 *
 * @param l3lif  the interface, may be null
 * @return 1 when its record exists and brcm_prog_complete is nonzero, else 0
 */
RTIFHAL_EXPORT int rtifhal_trident_del_subint_deleted(const struct l3lif *l3lif);

/**
 * The ingress step of an add, by the kind of the interface. For the add pairs
 * and the layer above.
 *
 * @param l3lif   the interface
 * @param aux     only printed
 * @param create  nonzero: first creation; 0: the same object again
 * @return 0; -1 for an ifindex of no known kind or a null interface; the value
 *         of a failing if_index_get_type; else what the kind's step returned
 *         (always 0 for an SVI and a tunnel)
 */
RTIFHAL_EXPORT int rtifhal_trident_add_ingress(struct l3lif *l3lif, int aux, int create);

/**
 * The ingress step of a delete, by the kind of the interface: the object goes,
 * or for an SVI only its VLAN's mapped mark. For the delete pairs.
 *
 * @param l3lif    the interface
 * @param aux      only printed
 * @param destroy  nonzero: the object goes too
 * @return as rtifhal_trident_add_ingress; a tunnel always gives 0
 */
RTIFHAL_EXPORT int rtifhal_trident_del_ingress(struct l3lif *l3lif, int aux, int destroy);

/**
 * The egress step of an add, the same for all kinds. For the add pairs.
 *
 * @param l3lif   the interface
 * @param aux     only printed
 * @param create  only printed
 * @return 0 or positive; -1; the value of a failing if_index_get_type; the
 *         SDK's code
 */
RTIFHAL_EXPORT int rtifhal_trident_add_egress(struct l3lif *l3lif, int aux, int create);

/**
 * The egress step of a delete: nothing for an SVI, a check for the others. For
 * the delete pairs.
 *
 * @param l3lif    the interface
 * @param aux      only printed
 * @param destroy  only printed
 * @return 0; -1 for an ifindex of no known kind or a null interface; the value
 *         of a failing if_index_get_type
 */
RTIFHAL_EXPORT int rtifhal_trident_del_egress(struct l3lif *l3lif, int aux, int destroy);

/**
 * Sets the tables of interface numbers up at the first call; later calls only
 * trace. For the allocator and the restore.
 */
RTIFHAL_EXPORT void l3iif_table_init(void);

/**
 * Takes the lowest free interface number, or the lowest held-back one when
 * none is free. For the creation of L3 interfaces.
 *
 * @param iif  receives the number, 0 to 8191; left alone on failure
 * @return 0; -1 when no number is left
 */
RTIFHAL_EXPORT int rtifhal_alloc_l3iif(uint32_t *iif);

/**
 * Gives an interface number back. 0 to 2 are never given back. For the L3
 * interfaces.
 *
 * @param iif       the number; outside 3..8191 but for 0..2 it counts as not allocated
 * @param preserve  nonzero: hold it back, and store the held-back numbers;
 *                  0: it is free at once
 * @return 0; -1 when the number isn't allocated
 */
RTIFHAL_EXPORT int rtifhal_free_l3iif(int iif, int preserve);

/**
 * Turns an ifindex into an SDK port. For the kinds and other layers.
 *
 * @param ifindex  an Ethernet port or its subinterface
 * @param port     receives the port, 1 to 256; left alone on failure
 * @return 0; -1 for an interface of another type, without a message
 */
RTIFHAL_EXPORT int fwmpd_ifindex_to_bcm_port(uint32_t ifindex, int *port);

/**
 * Turns an ifindex into an SDK port without any check of its kind. For the
 * restore.
 *
 * @param ifindex  the interface
 * @return the port; 1 when the interface has none
 */
RTIFHAL_EXPORT int rtifhal_ifindex_to_asic_port(uint32_t ifindex);

/**
 * Turns a port-channel's ifindex into its trunk id. A port-channel that the
 * forwarding manager doesn't know gets its channel number plus one, in 16
 * bits, which is filed there; that is reported as an error and is a success.
 * For the kinds and other layers.
 *
 * @param ifindex  a port-channel
 * @param tid      receives the trunk id; left alone on failure
 * @return 0; -1 for what isn't a port-channel, without a message
 */
RTIFHAL_EXPORT int fwmpd_ifindex_to_bcm_tid(uint32_t ifindex, uint32_t *tid);

#ifdef __cplusplus
}
#endif

#endif
