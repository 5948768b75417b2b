/*
 * accounting.cpp: see accounting.h.
 */
#include "vlan/accounting.h"

#include <string.h>

rtifhal_port_vlan_entry_t rtifhal_port_vlan[PORT_VLAN_ENTRIES];
rtifhal_vlan_type_count_entry_t rtifhal_vlan_type_count[VLAN_COUNT];

int l3_stg;
uint32_t l3_stg_allocated;

namespace
{

uint8_t vlan_mask(uint16_t vlan)
{
    return static_cast<uint8_t>(0x80 >> (vlan & 7));
}

bool has_vlan_bit(uint16_t vlan)
{
    return vlan < VLAN_COUNT;
}

/** A piece of a port's map of VLANs, 512 of them. */
constexpr size_t ROW_BYTES = 64;

/** Part of a row as the processor takes it at once. */
using lanes [[gnu::vector_size(16)]] = uint64_t;

lanes load(const uint8_t *bytes)
{
    lanes loaded;
    memcpy(&loaded, bytes, sizeof loaded);
    return loaded;
}

bool is_row_empty(const uint8_t *row)
{
    const lanes any = load(row) | load(row + 16) | load(row + 32) | load(row + 48);
    return (any[0] | any[1]) == 0;
}

int count_row(const uint8_t *row)
{
    int count = 0;
    for (size_t at = 0; at < ROW_BYTES; at += sizeof(uint64_t)) {
        uint64_t vlans;
        memcpy(&vlans, row + at, sizeof vlans);
        count += vlans != 0 ? __builtin_popcountll(vlans) : 0;
    }
    return count;
}

uint32_t port_mask(int port)
{
    return 1U << (port % 32);
}

bool is_in_pbmp_range(int port)
{
    return port >= 0 && port < PORT_COUNT;
}

} // namespace

rtifhal_vlan_type_count_entry_t *find_vlan_uses(uint16_t vlan)
{
    return has_vlan_bit(vlan) ? &rtifhal_vlan_type_count[vlan] : nullptr;
}

bool has_port_vlan_entry(int port)
{
    return port >= 0 && port < PORT_VLAN_ENTRIES;
}

void set_port_vlan(int port, uint16_t vlan)
{
    if (has_vlan_bit(vlan)) {
        rtifhal_port_vlan[port].vlan_bitmap[vlan >> 3] |= vlan_mask(vlan);
    }
}

void clear_port_vlan(int port, uint16_t vlan)
{
    if (has_vlan_bit(vlan)) {
        rtifhal_port_vlan[port].vlan_bitmap[vlan >> 3] &= static_cast<uint8_t>(~vlan_mask(vlan));
    }
}

int count_port_vlans(int port)
{
    // Most of the map is empty: only a row of it in which any VLAN is held is counted.
    const uint8_t *const bitmap = rtifhal_port_vlan[port].vlan_bitmap;
    int count = 0;
    for (size_t at = 0; at < PORT_VLAN_BITMAP_SIZE; at += ROW_BYTES) {
        count += is_row_empty(&bitmap[at]) ? 0 : count_row(&bitmap[at]);
    }
    return count;
}

bool pbmp_has(const bcm_pbmp_t &pbmp, int port)
{
    return is_in_pbmp_range(port) && (pbmp.pbits[port / 32] & port_mask(port)) != 0;
}

void pbmp_add(bcm_pbmp_t &pbmp, int port)
{
    if (is_in_pbmp_range(port)) {
        pbmp.pbits[port / 32] |= port_mask(port);
    }
}

void pbmp_remove(bcm_pbmp_t &pbmp, int port)
{
    if (is_in_pbmp_range(port)) {
        pbmp.pbits[port / 32] &= ~port_mask(port);
    }
}

bcm_pbmp_t rtifhal_l3pbmp_vlan(uint16_t vlan)
{
    const rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan);
    return lvtc != nullptr ? lvtc->l3pbmp : bcm_pbmp_t{};
}

int rtifhal_subint_count_vlan(uint16_t vlan)
{
    const rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan);
    return lvtc != nullptr ? lvtc->subint_count : 0;
}

int rtifhal_is_vlan_svi(uint16_t vlan)
{
    const rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan);
    return lvtc != nullptr ? lvtc->svi : 0;
}

void rtifhal_set_l2_vlan(uint16_t vlan)
{
    if (rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan); lvtc != nullptr) {
        lvtc->l2_vlan = 1;
    }
}

void rtifhal_set_svi(uint16_t vlan)
{
    if (rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan); lvtc != nullptr) {
        lvtc->svi = 1;
    }
}
