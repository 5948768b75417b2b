/*
 * fhrp_mac.h: the tree of virtual MACs, for the operations that install and
 * remove them (fhrp_mac.cpp) and for those that mirror them onto the
 * secondaries of a private VLAN (pvlan_svi.cpp).
 */
#pragma once

#include "rtifhal_types.h"

/**
 * Looks a virtual MAC up.
 *
 * @param ifindex  the interface that holds it
 * @param mac      six bytes
 * @param vlan     its VLAN
 * @return the entry, the tree's own; null when there is none
 */
fhrp_mac_entry_t *rtifhal_fhrp_mac_find(uint32_t ifindex, const uint8_t *mac, uint16_t vlan);

/**
 * Keeps a virtual MAC. The tree is made with the first.
 *
 * @param ifindex     the interface that holds it
 * @param mac         six bytes
 * @param vlan        its VLAN
 * @param station_id  its station
 * @return 0; -1 when memory is out or the key is there already
 */
int rtifhal_fhrp_mac_save(uint32_t ifindex, const uint8_t *mac, uint16_t vlan, int station_id);

/**
 * Forgets a virtual MAC; one that isn't there is no error.
 *
 * @param ifindex  the interface that holds it
 * @param mac      six bytes; may be those of the entry itself
 * @param vlan     its VLAN
 */
void rtifhal_fhrp_mac_remove(uint32_t ifindex, const uint8_t *mac, uint16_t vlan);
