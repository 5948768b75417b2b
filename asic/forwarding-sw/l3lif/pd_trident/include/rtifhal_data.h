/*
 * rtifhal_data.h: the exported data.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_DATA_H
#define RTIFHAL_DATA_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Interface numbers that are not free: in use, reserved or held back. */
extern RTIFHAL_EXPORT l3iif_bitmap_t l3lif_l3iif_table;

/** Interface numbers held back: given up by a destroyed interface, reused when nothing else is
 * left. */
extern RTIFHAL_EXPORT l3iif_bitmap_t l3lif_l3iif_table_preserve;

/** 0 until the tables are set up, then 1. */
extern RTIFHAL_EXPORT uint32_t l3lif_l3iif_table_inited;

/** Set from outside: 1 reserves a low range of interface numbers for the SDN agent. */
extern RTIFHAL_EXPORT uint32_t fwmpd_asic_sdn_agent_enabled;

/** The VLANs of each port, by SDK port number 0 to 104. */
extern RTIFHAL_EXPORT rtifhal_port_vlan_entry_t rtifhal_port_vlan[105];

/** The uses of each VLAN, by VLAN id 0 to 4095. */
extern RTIFHAL_EXPORT rtifhal_vlan_type_count_entry_t rtifhal_vlan_type_count[4096];

/** The virtual MACs that are installed, an ordered tree of fhrp_mac_entry; null until the first. */
extern RTIFHAL_EXPORT avl_tree_t *fhrp_mac_hash;

/** The saved default routes, num_def_routes of them; null until loaded. */
extern RTIFHAL_EXPORT def_route_rec_t *def_routes;

/** Number of saved default routes. */
extern RTIFHAL_EXPORT uint32_t num_def_routes;

/** What the chip holds for each saved default route; null until loaded. */
extern RTIFHAL_EXPORT def_egress_set_t *egresses;

/** Copy of the set that is being replaced. */
extern RTIFHAL_EXPORT def_egress_set_t curr_egress;

#ifdef __cplusplus
}
#endif

#endif
