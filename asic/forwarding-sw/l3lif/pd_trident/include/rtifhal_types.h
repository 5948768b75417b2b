/*
 * rtifhal_types.h: the records that the library shares with the layer above:
 * a routed interface, its properties from above, its context and hardware
 * state in the library.
 *
 * rtifhal_trident.h has the exported functions, by family.
 */
#ifndef RTIFHAL_TYPES_H
#define RTIFHAL_TYPES_H

#include <sdk/types.h>
#include <services/avl.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The internal VLAN of all routed traffic. */
#define RTIFHAL_VLAN_ROUTED 4094

/** Values of lif_state. */
#define RTIFHAL_LIF_PROGRAMMED 3 /**< every step of an add succeeded, or it ran in restore mode */
#define RTIFHAL_LIF_DELETED 4    /**< the interface has been deleted */

/** Properties of an interface, set by the layer above and read here. */
struct l3lif_pi_ctxt {
    uint32_t ipv4_en;               /**< 1: IPv4 unicast routing on */
    uint32_t ipv4_mc_en;            /**< 1: IPv4 multicast routing on */
    uint32_t ipv6_en;               /**< 1: IPv6 unicast routing on */
    uint32_t l3_prop_word_7;        /**< property 7, only read back */
    uint8_t urpf_mode;              /**< reverse-path check: 3 strict, 2 loose, others off */
    uint16_t vrf;                   /**< VRF, 0 counts as 1 */
    uint16_t ipv6_vrf;              /**< VRF while only IPv6 is on, 0 counts as 1 */
    uint16_t mtu;                   /**< L3 MTU in bytes, 0 counts as 1500 */
    uint32_t ingress_flag_word;     /**< nonzero adds ingress flag 0x8000 on Trident2 */
    uint32_t l3_prop_word_8;        /**< property 8, only read back */
    uint16_t acl_qos_label_pending; /**< a class label that waits for the l3_pd */
    uint32_t class_high_bit;        /**< nonzero adds bit 128 to the interface class */
    uint32_t mpls_en;               /**< value of port control 14; 1 is on */
};

/**
 * Hardware state of an interface. Its live id is prev_l3_if_index when
 * brcm_prog_complete is nonzero, else l3intf_id.
 */
struct l3_pd {
    uint32_t brcm_prog_complete; /**< 1 once the hardware interface is gone and the record kept */
    uint16_t l3intf_id;          /**< live number in the chip; 0 when the object is gone */
    uint16_t prev_l3_if_index;   /**< number parked for a later re-add; 0 while it lives */
    uint16_t acl_qos_label_ingress; /**< ACL and QoS class label */
};

/** Context of an interface, allocated and freed by the library. */
struct l3lif_pd_ctxt {
    void *unused_owned;  /**< never set here; freed with the context where it is set */
    struct l3_pd *l3_pd; /**< hardware state */
};

/** A routed interface, owned by the layer above. */
struct l3lif {
    uint32_t ifindex;           /**< interface index */
    uint32_t lif_state;         /**< progress of the hardware programming, see above */
    uint8_t mac[6];             /**< interface MAC, network order */
    uint16_t int_vlan;          /**< internal VLAN, 0 unset */
    uint16_t vlan;              /**< own VLAN of an SVI */
    uint16_t si_encap_vlan;     /**< 802.1Q VLAN of a subinterface, or an SVI's VLAN; 0 on ports */
    uint32_t tid;               /**< trunk id of the port-channel under a subinterface */
    avl_tree_t *subint_tree;    /**< subinterfaces, payload l3lif; may be null */
    avl_tree_t *pc_member_tree; /**< members of a port-channel, payload starts with the ifindex */
    struct l3lif *main_l3lif;   /**< main interface of a subinterface; null on a main one */
    struct l3lif_pi_ctxt *l3lif_pi_ctxt; /**< properties; may be null */
    struct l3lif_pd_ctxt *l3lif_pd_ctxt; /**< context; null until the object is first created */
};

/** A bitmap of interface numbers: number n is byte n / 8 under mask 0x80 >> (n % 8). */
typedef struct l3iif_bitmap {
    uint32_t size;      /**< size in bytes: 1024 */
    uint8_t bits[1024]; /**< 8192 bits */
} l3iif_bitmap_t;

/** The VLANs of a port: VLAN v is byte v / 8 under mask 0x80 >> (v % 8). */
typedef struct rtifhal_port_vlan_entry {
    uint32_t bitmap_size;     /**< size in bytes: 512 */
    uint8_t vlan_bitmap[512]; /**< one bit a VLAN */
} rtifhal_port_vlan_entry_t;

/** The uses of a VLAN. */
typedef struct rtifhal_vlan_type_count_entry {
    int32_t subint_count; /**< number of ports that hold a routed use */
    bcm_pbmp_t l3pbmp;    /**< those ports */
    int32_t svi;          /**< 1: an SVI uses it */
    int32_t l2_vlan;      /**< 1: it is in use as an L2 VLAN */
} rtifhal_vlan_type_count_entry_t;

/** A virtual MAC that is installed; (ifindex, vlan, mac) is its key in fhrp_mac_hash. */
typedef struct fhrp_mac_entry {
    uint32_t ifindex;    /**< interface that holds the MAC; on a secondary VLAN the primary's SVI */
    uint8_t mac[6];      /**< the virtual MAC */
    uint16_t vlan;       /**< an SVI's VLAN, a secondary VLAN, 4094 on any other interface */
    uint32_t station_id; /**< the station in the chip */
} fhrp_mac_entry_t;

/** A virtual MAC as rtifhal_trident_fhrp_mac_getnext lists it. */
typedef struct rtifhal_fhrp_mac_record {
    uint8_t mac[6];         /**< the virtual MAC */
    uint8_t reserved[2];    /**< 0 */
    uint32_t word_8;        /**< 1 */
    uint32_t vlan;          /**< the entry's VLAN */
    uint32_t ifindex;       /**< interface that holds the MAC */
    uint32_t word_20;       /**< 1 */
    uint32_t word_24;       /**< 0 */
    uint8_t reserved2[156]; /**< 0, the layer above's own */
} rtifhal_fhrp_mac_record_t;
SDK_STATIC_ASSERT(sizeof(rtifhal_fhrp_mac_record_t) == 184, "listed virtual MACs are 184 bytes");

/** Room for the paths of a default route. */
#define RTIFHAL_DEF_ROUTE_PATHS 64

/** One next hop of a saved default route. */
typedef struct def_route_path {
    uint32_t egress[21]; /**< image of the SDK's egress object: flags, L3 interface, … */
    uint32_t valid;      /**< 0: not to be used */
    uint32_t ifindex;    /**< interface of the next hop */
} def_route_path_t;
SDK_STATIC_ASSERT(sizeof(def_route_path_t) == 92, "saved paths are 92 bytes");

/** One saved default route. */
typedef struct def_route_rec {
    uint32_t family;                                /**< 0 IPv4, else IPv6 */
    uint32_t vrf;                                   /**< VRF */
    uint32_t paths;                                 /**< number of paths in use */
    def_route_path_t path[RTIFHAL_DEF_ROUTE_PATHS]; /**< the paths */
} def_route_rec_t;
SDK_STATIC_ASSERT(sizeof(def_route_rec_t) == 5900, "saved routes are 5900 bytes");

/** What the chip holds for one default route. */
typedef struct def_egress_set {
    uint32_t in_use;                              /**< 1 once an egress object has been made */
    uint32_t is_ecmp;                             /**< 1 when the next hop is a group */
    uint32_t ecmp_id;                             /**< the group, 0 for none */
    int32_t egress_count;                         /**< entries of egress_ids in use */
    uint32_t egress_ids[RTIFHAL_DEF_ROUTE_PATHS]; /**< the next hops */
} def_egress_set_t;

#ifdef __cplusplus
}
#endif

#endif
