/*
 * accounting.h: which port holds which VLAN, who uses a VLAN, and the spanning
 * tree group that all routed VLANs share.
 *
 * The tables themselves are exported data (rtifhal_data.h). flood_block.cpp and
 * vlan.cpp keep them up to date.
 */
#pragma once

#include "rtifhal_trident.h"

inline constexpr int PORT_VLAN_ENTRIES = 105;
inline constexpr uint32_t PORT_VLAN_BITMAP_SIZE = 512;
inline constexpr int VLAN_COUNT = 4096;
inline constexpr int PORT_COUNT = 256;

/** Kinds of use of a VLAN. */
inline constexpr int USE_ROUTED = 1;
inline constexpr int USE_SVI = 2;
inline constexpr int USE_L2 = 3;

/** Spanning tree states of a port. */
inline constexpr int STP_DISABLED = 0;
inline constexpr int STP_BLOCKING = 1;
inline constexpr int STP_FORWARDING = 4;

/** The group of VLAN 4094; in restore mode it stays 0 with the flag below set. */
extern int l3_stg;

/** Nonzero once l3_stg is in force. */
extern uint32_t l3_stg_allocated;

/** A VLAN's uses; null above 4095. */
rtifhal_vlan_type_count_entry_t *find_vlan_uses(uint16_t vlan);

/** Whether a port has an entry in rtifhal_port_vlan. */
bool has_port_vlan_entry(int port);

/** Marks a VLAN as held by a port that has an entry. */
void set_port_vlan(int port, uint16_t vlan);

/** Marks a VLAN as not held by a port that has an entry. */
void clear_port_vlan(int port, uint16_t vlan);

/** Counts the VLANs that a port with an entry holds. */
int count_port_vlans(int port);

/** Whether a port is in a set; a port outside 0..255 never is. */
bool pbmp_has(const bcm_pbmp_t &pbmp, int port);

/** Puts a port into a set; a port outside 0..255 has no place in one. */
void pbmp_add(bcm_pbmp_t &pbmp, int port);

/** Takes a port out of a set. */
void pbmp_remove(bcm_pbmp_t &pbmp, int port);
