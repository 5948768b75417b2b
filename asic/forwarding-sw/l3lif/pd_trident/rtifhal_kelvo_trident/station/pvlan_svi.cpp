/*
 * pvlan_svi.cpp: the private-VLAN pairs. Hosts sit in the secondary VLANs, the
 * router in the primary, so that a secondary has no SVI of its own: what the
 * primary's has is mirrored onto it, its virtual MACs here and its routing in
 * pvlan_secondary.cpp.
 *
 * A pair is independent of the SVI and stays for its return. fhrp_mac.cpp and
 * kinds/svi.cpp walk the pairs when a virtual MAC or the SVI itself comes or
 * goes.
 */
#include "station/pvlan_svi.h"

#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "station/fhrp_mac.h"
#include "station/station.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <sdk/l2.h>
#include <services/avl.h>
#include <stdlib.h>

GHashTable *pvlan_svi_map;

namespace
{

/** Virtual MACs that one walk collects before they are worked on. */
constexpr int MACS_A_WALK = 64;

guint pair_hash(gconstpointer key)
{
    return static_cast<const pvlan_svi_pair *>(key)->primary;
}

gboolean pairs_equal(gconstpointer a, gconstpointer b)
{
    const auto &left = *static_cast<const pvlan_svi_pair *>(a);
    const auto &right = *static_cast<const pvlan_svi_pair *>(b);
    return left.primary == right.primary && left.secondary == right.secondary ? TRUE : FALSE;
}

bool has_virtual_macs()
{
    return fhrp_mac_hash != nullptr && fhrp_mac_hash->count != 0;
}

void rtifhal_pvlan_svi_mapping_insert(uint32_t primary, uint32_t secondary, bool *known);
void rtifhal_pvlan_svi_mapping_remove(uint32_t primary, uint32_t secondary);

/** Puts the pair into the table, which is made with the first; false when memory is out. */
bool record_pair(const pvlan_svi_pair &pair)
{
    auto *const record = static_cast<pvlan_svi_pair *>(malloc(sizeof(pvlan_svi_pair)));
    if (record == nullptr) {
        TRACE_OF(rtifhal_pvlan_svi_mapping_insert, "malloc failed \n");
        return false;
    }
    if (pvlan_svi_map == nullptr) {
        pvlan_svi_map = g_hash_table_new(pair_hash, pairs_equal);
        TRACE_OF(rtifhal_pvlan_svi_mapping_insert, "hash_table new \n");
    }
    if (pvlan_svi_map == nullptr) {
        TRACE_OF(rtifhal_pvlan_svi_mapping_insert, "hash_table doesnt exist \n");
        free(record);
        return false;
    }
    *record = pair;
    (void)g_hash_table_insert(pvlan_svi_map, record, record);
    return true;
}

/** Installs a virtual MAC of the primary on the secondary too. */
void install_on_secondary(int unit, const fhrp_mac_entry_t &entry, uint32_t secondary)
{
    const uint8_t *const mac = entry.mac;
    const auto vlan = static_cast<uint16_t>(secondary);
    bcm_l2_station_t station = station_of_mac(STATION_FLAGS, mac);
    match_vlan(station, vlan);
    int id = 0;
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_add(unit, &id, &station);
    if (rc < 0) {
        REPORT_OF(rtifhal_pvlan_svi_mapping_insert,
                  "fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) failed: %s\n", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5], rtifhal_errtext(rc));
        return;
    }
    TRACE_OF(rtifhal_pvlan_svi_mapping_insert,
             "fhrp mac (%02x:%02x:%02x:%02x:%02x:%02x) @ idx:%d\n", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5], id);
    if (rtifhal_fhrp_mac_save(entry.ifindex, mac, vlan, id) != 0) {
        TRACE_OF(rtifhal_pvlan_svi_mapping_insert,
                 "Failed to save Sec VLAN %d  addr info in avltree\n", secondary);
    }
}

/** Takes a virtual MAC off the secondary; its entry goes even when the chip refuses. */
void remove_from_secondary(int unit, const fhrp_mac_entry_t &entry)
{
    const uint16_t vlan = entry.vlan;
    const auto id = static_cast<int>(entry.station_id);
    TRACE_OF(rtifhal_pvlan_svi_mapping_remove, "Sec VLAN %d match in fhrp_mac_hash  \n", vlan);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_delete(unit, id);
    if (rc < 0) {
        REPORT_OF(rtifhal_pvlan_svi_mapping_remove,
                  "SecVLAN l2_station_delete failed(%s) for idx:%d\n", rtifhal_errtext(rc), id);
    }
    rtifhal_fhrp_mac_remove(entry.ifindex, entry.mac, vlan);
}

/** Collects virtual MACs on a VLAN in their order; gives their number. */
int collect_macs(uint32_t vlan, const fhrp_mac_entry_t *(&found)[MACS_A_WALK])
{
    int count = 0;
    for (avl_node_t *node = avl_get_first(fhrp_mac_hash); node != nullptr && count < MACS_A_WALK;
         node = avl_get_next(fhrp_mac_hash, node)) {
        const auto *const entry = static_cast<const fhrp_mac_entry_t *>(node->payload);
        if (entry->vlan == vlan) {
            found[count++] = entry;
        }
    }
    return count;
}

/** Takes note of a pair; `known` tells whether it was there already. */
void rtifhal_pvlan_svi_mapping_insert(uint32_t primary, uint32_t secondary, bool *known)
{
    const pvlan_svi_pair pair = {primary, secondary};
    *known = pvlan_svi_map != nullptr && g_hash_table_lookup(pvlan_svi_map, &pair) != nullptr;
    if (*known) {
        return;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    if (!record_pair(pair) || !has_virtual_macs()) {
        return;
    }
    for (avl_node_t *node = avl_get_first(fhrp_mac_hash); node != nullptr;
         node = avl_get_next(fhrp_mac_hash, node)) {
        const auto &entry = *static_cast<const fhrp_mac_entry_t *>(node->payload);
        if (entry.vlan == primary) {
            TRACE("Prim VLAN %d match in fhrp_mac_hash \n", primary);
            install_on_secondary(unit, entry, secondary);
        }
    }
}

/** Forgets a pair and takes every virtual MAC off the secondary, whatever primary it came from. */
void rtifhal_pvlan_svi_mapping_remove(uint32_t primary, uint32_t secondary)
{
    const int unit = rtifhal_get_bcm_unit(0);
    if (pvlan_svi_map == nullptr) {
        TRACE("pvlan_svi_mapping_remove - hash_table doesnt exist \n");
        return;
    }
    // The pair's record isn't freed.
    const pvlan_svi_pair pair = {primary, secondary};
    (void)g_hash_table_remove(pvlan_svi_map, &pair);

    // A removed entry has no successor: they are collected first, a batch at a
    // time. A tree that doesn't shrink ends the work.
    const fhrp_mac_entry_t *found[MACS_A_WALK];
    int count = 0;
    uint32_t kept = 0;
    do {
        if (!has_virtual_macs()) {
            return;
        }
        kept = fhrp_mac_hash->count;
        count = collect_macs(secondary, found);
        for (int i = 0; i < count; ++i) {
            remove_from_secondary(unit, *found[i]);
        }
    } while (count == MACS_A_WALK && fhrp_mac_hash->count < kept);
}

} // namespace

void rtifhal_kelvo_pvlan_svi_mapping_update(uint32_t primary, uint32_t secondary, uint32_t add)
{
    TRACE("Primary %d, Seconday %d\n", primary, secondary);
    if (add != 0) {
        bool known = false;
        rtifhal_pvlan_svi_mapping_insert(primary, secondary, &known);
        if (known) {
            return;
        }
    } else {
        rtifhal_pvlan_svi_mapping_remove(primary, secondary);
    }
    if (rtifhal_is_vlan_svi(static_cast<uint16_t>(primary)) != 0) {
        (void)rtifhal_pvlan_svi_update_secondary(primary, secondary, add);
    }
}

void rtifhal_pvlan_svi_visit_pair(gpointer, gpointer entry, gpointer filter)
{
    const auto &pair = *static_cast<const pvlan_svi_pair *>(entry);
    const auto &wanted = *static_cast<const pvlan_svi_filter *>(filter);
    if (pair.primary == wanted.primary) {
        (void)rtifhal_pvlan_svi_update_secondary(pair.primary, pair.secondary, wanted.add);
    }
}
