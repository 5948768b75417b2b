/*
 * vlan_rows.h: the VLANs, what is bridged to them, and which of them are pairs
 * of a private VLAN: rows of VLAN, VLAN_MEMBER and PVLAN. Beside it:
 * port_channel_rows.h, interface_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

namespace lab::config
{

/**
 * Reads VLANs and their members; ports and port-channels are known by then.
 * Without a VLAN table the VLANs are those that other rows name, with a note.
 *
 * @param tables       the file
 * @param description  receives VLANs, skipped rows and notes
 */
void read_vlans(const Tables &tables, Description &description);

/**
 * Reads private-VLAN pairs, after VLANs and interfaces: a secondary has no
 * interface of its own.
 *
 * @param tables       the file
 * @param description  receives pairs, the roles of their VLANs, and skipped rows
 */
void read_pvlan_pairs(const Tables &tables, Description &description);

} // namespace lab::config
