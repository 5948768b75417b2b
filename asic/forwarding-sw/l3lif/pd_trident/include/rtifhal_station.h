/*
 * rtifhal_station.h: the addresses to which the switch answers as a router:
 * router MACs, the virtual MACs of first-hop redundancy (FHRP), and what of
 * them is mirrored onto the secondaries of a private VLAN.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_STATION_H
#define RTIFHAL_STATION_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Installs a router MAC and switches L3 routing on the CPU port on. For the
 * layer above, which keeps the station id.
 *
 * @param mac  six bytes, network order; null counts as a failed installation
 *             without any call
 * @return the station id; 0xFFFF when there is no station: the chip refused
 *         it, or this is restore mode, in which nothing is called
 */
RTIFHAL_EXPORT int rtifhal_trident_rmac_add(const uint8_t *mac);

/**
 * Removes a router MAC and switches L3 routing on the CPU port off, however
 * many router MACs remain. For the layer above.
 *
 * @param station_id  what rtifhal_trident_rmac_add gave
 * @return 0; -1 when the chip refused
 */
RTIFHAL_EXPORT int rtifhal_trident_rmac_del(int station_id);

/**
 * Installs a virtual MAC of an interface: on an SVI in its VLAN, and in each
 * secondary of a primary; on a port on that port only. For the layer above.
 *
 * A MAC that begins with 33:33 is installed nowhere, and nothing on a
 * management interface.
 *
 * @param mac      six bytes, network order; -1 for null
 * @param ifindex  the interface that holds the MAC
 * @return 0, also when the chip refused the station, which is then not kept;
 *         -1 when the interface, its type or its port isn't known
 */
RTIFHAL_EXPORT int rtifhal_trident_fhrp_mac_add(const uint8_t *mac, uint32_t ifindex);

/**
 * Removes a virtual MAC of an interface, from the secondaries first. For the
 * layer above.
 *
 * @param mac      six bytes, network order; -1 for null
 * @param ifindex  the interface that holds the MAC
 * @return 0, also for a MAC that isn't installed; -1 when the interface or its
 *         type isn't known, or the chip refused, in which case the entry is
 *         forgotten all the same
 */
RTIFHAL_EXPORT int rtifhal_trident_fhrp_mac_del(const uint8_t *mac, uint32_t ifindex);

/**
 * Lists virtual MACs by interface, VLAN and MAC. For the layer above, which
 * resumes behind the last entry that it got.
 *
 * @param ifindex      with `vlan` and `mac` the entry behind which the listing
 *                     begins; 0: at the first, whatever `vlan` and `mac` are
 * @param vlan         also what `filter_vlan` compares with
 * @param mac          six bytes; also what `filter_mac` compares with. Null
 *                     counts as all zeros
 * @param filter_mac   nonzero: only entries of `mac`
 * @param filter_vlan  nonzero: only entries of `vlan`
 * @param count        in: room in `records`; out: entries listed. With null
 *                     nothing is done
 * @param records      `*count` pointers, each to a record that is filled, or
 *                     null for an entry that is only counted
 * @return 0
 */
RTIFHAL_EXPORT int rtifhal_trident_fhrp_mac_getnext(uint32_t ifindex, uint16_t vlan,
                                                    const uint8_t *mac, int filter_mac,
                                                    int filter_vlan, int *count,
                                                    struct rtifhal_fhrp_mac_record **records);

/**
 * Tells whether a virtual MAC is kept. For the layer above.
 *
 * @param ifindex  the interface that holds it
 * @param mac      six bytes, network order; null is never kept
 * @param vlan     an SVI's VLAN, a secondary's, 4094 on any other interface
 * @return 1 if so, else 0
 */
RTIFHAL_EXPORT int rtifhal_fhrp_mac_present(uint32_t ifindex, const uint8_t *mac, uint16_t vlan);

/**
 * The order of fhrp_mac_hash: by ifindex (by the sign of the difference in 32
 * bits), then VLAN, then MAC. For the tree.
 *
 * @param a  an fhrp_mac_entry, or null
 * @param b  an fhrp_mac_entry, or null
 * @return negative, 0 or positive as a sorts before, with or after b; -1 when
 *         a is null, else 1 when b is
 */
RTIFHAL_EXPORT int rtifhal_fhrp_mac_avl_compare_func(const void *a, const void *b);

/**
 * Takes note of a private-VLAN pair that appears or goes: the virtual MACs of
 * the primary's SVI, and its routing, are mirrored onto the secondary. For the
 * layer above. A pair that is known already is left as it is.
 *
 * @param primary    primary VLAN
 * @param secondary  secondary VLAN
 * @param add        nonzero: the pair appears; 0: it goes
 */
RTIFHAL_EXPORT void rtifhal_kelvo_pvlan_svi_mapping_update(uint32_t primary, uint32_t secondary,
                                                           uint32_t add);

#ifdef __cplusplus
}
#endif

#endif
