/*
 * vlan_controls.h: the words of a VLAN's control record by name, the one write
 * that goes past its cached copy, and the way to bring that copy up to date.
 */
#pragma once

#include <sdk/vlan.h>
#include <stdint.h>

// vc_flags.
inline constexpr uint32_t VLAN_IP4_OFF = 0x8;
inline constexpr uint32_t VLAN_IP6_OFF = 0x10;
inline constexpr uint32_t VLAN_IP4_MC_OFF = 0x20;
inline constexpr uint32_t VLAN_ROUTING_OFF = VLAN_IP4_OFF | VLAN_IP6_OFF | VLAN_IP4_MC_OFF;
/** A secondary's routing was settled by what else the VLAN carries. */
inline constexpr uint32_t VLAN_SECONDARY_SETTLED = 0x40;
inline constexpr uint32_t VLAN_MPLS_OFF = 0x200;
inline constexpr uint32_t BCM_VLAN_IGMP_SNOOP_DISABLE = 0x800;
/** Set, not cleared, by a nonzero ingress_flag_word. */
inline constexpr uint32_t VLAN_INGRESS_FLAG = 0x4000;
/** Set whenever an SVI comes or goes, and never cleared. */
inline constexpr uint32_t VLAN_SVI_SEEN = 0x400000;

// vc_class.
inline constexpr uint32_t VLAN_CLASS_SVI = 2;
inline constexpr uint32_t VLAN_CLASS_INGRESS_MAPPED = 4;

/**
 * Writes a VLAN's controls with IGMP snooping switched off, in the chip only:
 * the cached record stays without the flag, so that the next write through the
 * wrapper takes it away again.
 *
 * @param unit    SDK unit
 * @param vlan    VLAN id
 * @param cached  the wrappers' record of the VLAN
 * @return what the SDK gave
 */
int write_snooping_disabled(int unit, uint16_t vlan, const bcm_vlan_control_vlan_t &cached);

/**
 * Brings what the chip has of a VLAN's controls into the wrappers' cache, and
 * writes it back through them.
 *
 * @param operation  the procedure that this is a step of, for the messages
 * @param unit       SDK unit
 * @param vlan       VLAN id
 * @return 0; -1, reported, when the VLAN has no cached record, or the chip can't be read or written
 */
int refresh_vlan_controls(const char *operation, int unit, uint16_t vlan);
