/*
 * fhrp_mac_tree.cpp: the virtual MACs that are installed, in order, so that
 * each can be found, listed and removed.
 *
 * The order is the listing's: by interface, VLAN, MAC. fhrp_mac.cpp and
 * pvlan_svi.cpp install what is kept here.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "station/fhrp_mac.h"

#include <stdlib.h>
#include <string.h>

avl_tree_t *fhrp_mac_hash;

namespace
{

constexpr uint8_t ANY_MAC[6] = {};

fhrp_mac_entry_t key_of(uint32_t ifindex, const uint8_t *mac, uint16_t vlan)
{
    fhrp_mac_entry_t key = {};
    key.ifindex = ifindex;
    memcpy(key.mac, mac, sizeof key.mac);
    key.vlan = vlan;
    return key;
}

void fill_record(rtifhal_fhrp_mac_record_t &record, const fhrp_mac_entry_t &entry)
{
    memset(&record, 0, sizeof record);
    memcpy(record.mac, entry.mac, sizeof record.mac);
    record.word_8 = 1;
    record.vlan = entry.vlan;
    record.ifindex = entry.ifindex;
    record.word_20 = 1;
}

} // namespace

int rtifhal_fhrp_mac_avl_compare_func(const void *a, const void *b)
{
    if (a == nullptr) {
        return -1;
    }
    if (b == nullptr) {
        return 1;
    }
    const auto &left = *static_cast<const fhrp_mac_entry_t *>(a);
    const auto &right = *static_cast<const fhrp_mac_entry_t *>(b);
    const auto ifindexes = static_cast<int32_t>(left.ifindex - right.ifindex);
    if (ifindexes != 0) {
        return ifindexes;
    }
    if (left.vlan != right.vlan) {
        return left.vlan - right.vlan;
    }
    const int macs = memcmp(left.mac, right.mac, sizeof left.mac);
    return (macs > 0) - (macs < 0);
}

fhrp_mac_entry_t *rtifhal_fhrp_mac_find(uint32_t ifindex, const uint8_t *mac, uint16_t vlan)
{
    if (fhrp_mac_hash == nullptr) {
        return nullptr;
    }
    const fhrp_mac_entry_t key = key_of(ifindex, mac, vlan);
    return static_cast<fhrp_mac_entry_t *>(avl_find(fhrp_mac_hash, &key));
}

int rtifhal_fhrp_mac_save(uint32_t ifindex, const uint8_t *mac, uint16_t vlan, int station_id)
{
    auto *const entry = static_cast<fhrp_mac_entry_t *>(malloc(sizeof(fhrp_mac_entry_t)));
    if (entry == nullptr) {
        return -1;
    }
    if (fhrp_mac_hash == nullptr) {
        fhrp_mac_hash = avl_create(rtifhal_fhrp_mac_avl_compare_func, 0);
        if (fhrp_mac_hash == nullptr) {
            free(entry);
            return -1;
        }
    }
    *entry = key_of(ifindex, mac, vlan);
    entry->station_id = static_cast<uint32_t>(station_id);
    // A tree that refused the record may still know its address: it isn't freed.
    return avl_insert(fhrp_mac_hash, entry) == 0 ? 0 : -1;
}

void rtifhal_fhrp_mac_remove(uint32_t ifindex, const uint8_t *mac, uint16_t vlan)
{
    const fhrp_mac_entry_t key = key_of(ifindex, mac, vlan);
    fhrp_mac_entry_t *const entry = rtifhal_fhrp_mac_find(ifindex, mac, vlan);
    if (entry != nullptr) {
        (void)avl_delete(fhrp_mac_hash, &key);
        free(entry);
    }
}

int rtifhal_fhrp_mac_present(uint32_t ifindex, const uint8_t *mac, uint16_t vlan)
{
    return mac != nullptr && rtifhal_fhrp_mac_find(ifindex, mac, vlan) != nullptr ? 1 : 0;
}

int rtifhal_trident_fhrp_mac_getnext(uint32_t ifindex, uint16_t vlan, const uint8_t *mac,
                                     int filter_mac, int filter_vlan, int *count,
                                     struct rtifhal_fhrp_mac_record **records)
{
    if (count == nullptr) {
        return 0;
    }
    TRACE("invoked with vlan %d, filter_mac %d", vlan, filter_mac);
    const uint8_t *const wanted = mac != nullptr ? mac : ANY_MAC;
    const fhrp_mac_entry_t start =
        ifindex != 0 ? key_of(ifindex, wanted, vlan) : fhrp_mac_entry_t{};
    int listed = 0;
    if (fhrp_mac_hash != nullptr) {
        auto *entry = static_cast<const fhrp_mac_entry_t *>(avl_find_next(fhrp_mac_hash, &start));
        while (listed < *count && entry != nullptr) {
            const bool skipped =
                (filter_vlan != 0 && entry->vlan != vlan) ||
                (filter_mac != 0 && memcmp(entry->mac, wanted, sizeof entry->mac) != 0);
            if (!skipped) {
                if (records != nullptr && records[listed] != nullptr) {
                    fill_record(*records[listed], *entry);
                }
                ++listed;
            }
            entry = static_cast<const fhrp_mac_entry_t *>(avl_find_next(fhrp_mac_hash, entry));
        }
    }
    *count = listed;
    TRACE("returning with total %d entries", listed);
    return 0;
}
