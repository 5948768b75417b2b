/*
 * sdk/l3.h: the SDK's L3 objects: interfaces, ingress objects, egress objects
 * and their groups, and routes.
 *
 * All calls here go straight to the chip; what still waits in the write queue
 * of the wrappers is not seen by them.
 */
#ifndef SDK_L3_H
#define SDK_L3_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** An L3 interface: what routed frames get on their way out. */
typedef struct bcm_l3_intf {
    uint32_t l3a_flags; /**< 0x40: the id is the caller's; 0x100: replace an object of this id */
    int l3a_vrf;        /**< VRF */
    int l3a_intf_id;    /**< the interface's number in the chip */
    bcm_mac_t l3a_mac_addr; /**< source MAC of routed frames */
    bcm_vlan_t l3a_vid;     /**< VLAN on which routed frames leave, 0 to 4095 */
    int l3a_ttl;            /**< lowest TTL that may pass, 0 for no check */
    int l3a_mtu;            /**< largest L3 packet in bytes */
    int l3a_tunnel_idx;     /**< tunnel initiator bound to the interface, 0 for none */
} bcm_l3_intf_t;

/** An L3 ingress object: what the chip knows of a packet that came in on an interface. */
typedef struct bcm_l3_ingress {
    uint32_t flags;        /**< the SDK's ingress flags */
    int vrf;               /**< VRF of the lookup */
    int urpf_mode;         /**< reverse-path check: 0 off, 1 loose, 2 strict */
    int intf_class;        /**< interface class, 8 bits in the chip */
    uint16_t ipmc_intf_id; /**< interface of the multicast lookup, 0 for none */
    int qos_map_id;        /**< QoS map, 0 for none */
    uint32_t reserved[2];  /**< the SDK's own */
} bcm_l3_ingress_t;
SDK_STATIC_ASSERT(sizeof(bcm_l3_ingress_t) == 32, "the cache keeps ingress objects as 32 bytes");

/** An egress object: one next hop. */
typedef struct bcm_l3_egress {
    uint32_t flags;        /**< the SDK's egress flags */
    int intf;              /**< L3 interface on which the packet leaves */
    bcm_mac_t mac_addr;    /**< next hop's MAC */
    bcm_vlan_t vlan;       /**< VLAN, 0 to take the interface's */
    int module;            /**< module of the port */
    int port;              /**< port, or a generic port */
    int trunk;             /**< trunk id where the flags say so */
    uint32_t encap_id;     /**< encapsulation */
    uint32_t reserved[13]; /**< the SDK's own */
} bcm_l3_egress_t;
SDK_STATIC_ASSERT(sizeof(bcm_l3_egress_t) == 84, "saved next hops hold this record as 84 bytes");

/** A multipath group. */
typedef struct bcm_l3_egress_ecmp {
    uint32_t flags;    /**< the SDK's group flags */
    int ecmp_intf;     /**< the group's id */
    int max_paths;     /**< room for members */
    uint32_t reserved; /**< the SDK's own */
} bcm_l3_egress_ecmp_t;

/** A route. An address is IPv6 when flag 0x20000 is set, else IPv4 in host order. */
typedef struct bcm_l3_route {
    uint32_t l3a_flags;       /**< 0x100, 0x20000 IPv6, 0x4000 the next hop is a group */
    int l3a_vrf;              /**< VRF */
    uint32_t l3a_subnet;      /**< IPv4 prefix */
    uint32_t l3a_ip_mask;     /**< IPv4 mask */
    uint8_t l3a_ip6_net[16];  /**< IPv6 prefix, network order */
    uint8_t l3a_ip6_mask[16]; /**< IPv6 mask, network order */
    int l3a_intf;             /**< egress object, or group */
} bcm_l3_route_t;

/**
 * Gives an L3 interface object the SDK's defaults: all fields 0.
 *
 * @param intf  the object, never null
 */
void bcm_l3_intf_t_init(bcm_l3_intf_t *intf);

/**
 * Reads an L3 interface from the chip.
 *
 * @param unit  SDK unit
 * @param intf  l3a_intf_id names the interface; all fields are filled in on
 *              success and left alone on failure
 * @return 0; -4 for an id out of range; -7 when there is no such interface
 */
int bcm_l3_intf_get(int unit, bcm_l3_intf_t *intf);

/**
 * Gives an ingress object the SDK's defaults: all fields 0.
 *
 * @param ingress  the object, never null
 */
void bcm_l3_ingress_t_init(bcm_l3_ingress_t *ingress);

/**
 * Reads an L3 ingress object from the chip.
 *
 * @param unit     SDK unit
 * @param iif      the object's number
 * @param ingress  receives the object; left alone on failure
 * @return 0; -7 when there is no such object
 */
int bcm_l3_ingress_get(int unit, int iif, bcm_l3_ingress_t *ingress);

/**
 * Gives an egress object the SDK's defaults: all fields 0.
 *
 * @param egress  the object, never null
 */
void bcm_l3_egress_t_init(bcm_l3_egress_t *egress);

/**
 * Creates a next hop.
 *
 * @param unit       SDK unit
 * @param flags      0: the SDK chooses the id
 * @param egress     the next hop, left as it is
 * @param egress_id  receives the id; left alone on failure
 * @return 0; -6 when the table is full
 */
int bcm_l3_egress_create(int unit, uint32_t flags, bcm_l3_egress_t *egress, int *egress_id);

/**
 * Destroys a next hop.
 *
 * @param unit       SDK unit
 * @param egress_id  id that bcm_l3_egress_create gave
 * @return 0; -7 when there is no such object
 */
int bcm_l3_egress_destroy(int unit, int egress_id);

/**
 * Creates a multipath group over next hops.
 *
 * @param unit       SDK unit
 * @param flags      0: the SDK chooses the id
 * @param count      number of members, 1 to 64
 * @param egress_ids ids of the members
 * @param group_id   receives the group's id; left alone on failure
 * @return 0; -4 for a count out of range; -6 when the table is full; -7 when a
 *         member doesn't exist
 */
int bcm_l3_egress_multipath_create(int unit, uint32_t flags, int count, int *egress_ids,
                                   int *group_id);

/**
 * Gives a group record the SDK's defaults: all fields 0.
 *
 * @param ecmp  the record, never null
 */
void bcm_l3_egress_ecmp_t_init(bcm_l3_egress_ecmp_t *ecmp);

/**
 * Destroys a multipath group; its members stay.
 *
 * @param unit  SDK unit
 * @param ecmp  ecmp_intf names the group
 * @return 0; -7 when there is no such group
 */
int bcm_l3_egress_ecmp_destroy(int unit, bcm_l3_egress_ecmp_t *ecmp);

/**
 * Gives a route the SDK's defaults: all fields 0.
 *
 * @param route  the route, never null
 */
void bcm_l3_route_t_init(bcm_l3_route_t *route);

/**
 * Adds a route, or replaces the one of the same VRF and prefix.
 *
 * @param unit   SDK unit
 * @param route  the route, left as it is
 * @return 0; -6 when the table is full; -7 when the next hop doesn't exist
 */
int bcm_l3_route_add(int unit, bcm_l3_route_t *route);

#ifdef __cplusplus
}
#endif

#endif
