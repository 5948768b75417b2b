/*
 * virtual_mac_rows.h: the MACs that interfaces answer to beside their own: the
 * one of the anycast gateways (SAG), and those of redundancy groups (VRRP,
 * VRRP6). Beside it: interface_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

namespace lab::config
{

/**
 * Reads SAG, VRRP and VRRP6; the interfaces are known by then.
 *
 * @param tables       the file
 * @param description  receives virtual MACs, skipped rows and notes
 */
void read_virtual_macs(const Tables &tables, Description &description);

} // namespace lab::config
