/*
 * rtifhal_property.h: changes of property on live interfaces, stopping an
 * interface from routing, reading a property.
 *
 * The layer above changes l3lif_pi_ctxt first and then calls the setter of the
 * kind, which brings the chip back into line. Nothing is undone after a
 * failure.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_PROPERTY_H
#define RTIFHAL_PROPERTY_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Properties by identifier. */
enum rtifhal_property {
    RTIFHAL_PROP_IPV4 = 1,         /**< ipv4_en */
    RTIFHAL_PROP_IPV4_MC = 2,      /**< ipv4_mc_en */
    RTIFHAL_PROP_VRF = 3,          /**< vrf */
    RTIFHAL_PROP_URPF = 4,         /**< urpf_mode */
    RTIFHAL_PROP_INGRESS_FLAG = 5, /**< ingress_flag_word */
    RTIFHAL_PROP_IPV6 = 6,         /**< ipv6_en */
    RTIFHAL_PROP_WORD_7 = 7,       /**< l3_prop_word_7 */
    RTIFHAL_PROP_WORD_8 = 8,       /**< l3_prop_word_8 */
    RTIFHAL_PROP_IPV6_VRF = 9,     /**< ipv6_vrf */
    RTIFHAL_PROP_CLASS_HIGH = 13,  /**< class_high_bit */
    RTIFHAL_PROP_MPLS = 18         /**< MPLS on the VLAN; can't be read */
};

/**
 * Brings a routed port into line with its properties: controls of the port,
 * which its subinterfaces share, then the ingress object. For the layer above.
 *
 * @param l3lif  the port
 * @return 0, also without a context or object, and when an object was refused;
 *         -1 for a null interface; the port look-up's value
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_property_l3int(struct l3lif *l3lif);

/**
 * Brings a routed port-channel into line with its properties: its objects,
 * then the controls of each member. For the layer above.
 *
 * @param l3lif  the port-channel
 * @return 0, also without a context or object, and when an object was refused;
 *         -1 for a null interface; the look-up's value of the first member
 *         without a port, at which the walk ends
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_property_l3pc(struct l3lif *l3lif);

/**
 * Checks that an interface's number still names an object in the chip. For the
 * layer above; nothing is written.
 *
 * @param l3lif  the interface
 * @return what the SDK's read gave; -1 for a null interface, without a
 *         context, or when another object answered
 */
RTIFHAL_EXPORT int rtifhal_ingress_add_l3int(struct l3lif *l3lif);

/**
 * Applies one property to an SVI: to the VLAN of its int_vlan, then to both
 * objects. For the layer above.
 *
 * @param l3lif     the SVI
 * @param property  one of enum rtifhal_property; any other rewrites all the same
 * @param value     its new value; class_high_bit is stored from it, the layer
 *                  above has stored all others
 * @return what the ingress object's create gave; 0 without a context or
 *         object; -1 for a null interface, without an int_vlan or its record
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_property_svi(struct l3lif *l3lif, uint32_t property,
                                                     uint32_t value);

/**
 * Brings a subinterface into line with its properties. For the layer above.
 *
 * @param l3lif  the subinterface
 * @return 0, whatever was refused; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_property_subint(struct l3lif *l3lif);

/**
 * Brings a tunnel into line with its properties. For the layer above.
 *
 * @param l3lif  the tunnel
 * @return 0, whatever was refused; -1 for a null interface
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_property_l3tun(struct l3lif *l3lif);

/**
 * Switches IPv6 on or off for the whole switch: whether neighbour discovery
 * goes to the CPU, and the field group for it. For the layer above.
 *
 * @param value  1: on; any other: off
 * @return 0; -1 at the first refused step
 */
RTIFHAL_EXPORT int rtifhal_set_kelvo_l3_ipv6_config(int value);

/**
 * Stops an interface from routing while it stays in place; a property setter
 * brings routing back. For the layer above.
 *
 * @param ifindex  the interface
 * @return 0, also for an unknown interface, or one without a context or
 *         object; the SDK's code when the object can't be read or was refused
 */
RTIFHAL_EXPORT int rtifhal_trident_l3_disable(uint32_t ifindex);

/**
 * Reads a property as the layer above set it. For other layers.
 *
 * @param l3lif     the interface
 * @param property  one of enum rtifhal_property but MPLS
 * @param value     receives the value, 0 on failure
 * @return 0; -1 for an unknown property, a null interface, one without
 *         properties, or a null `value`
 */
RTIFHAL_EXPORT int rtifhal_get_kelvo_l3_property(const struct l3lif *l3lif, uint32_t property,
                                                 uint32_t *value);

/**
 * The same for the interface of an internal VLAN.
 *
 * @param vlan      an int_vlan
 * @param property  as above
 * @param value     receives the value; left alone for an unknown VLAN
 * @return 0; -1 as above, and for an unknown VLAN
 */
RTIFHAL_EXPORT int rtifhal_get_kelvo_l3_property_svi(uint16_t vlan, uint32_t property,
                                                     uint32_t *value);

#ifdef __cplusplus
}
#endif

#endif
