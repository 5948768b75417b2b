/*
 * not_provided.c: the functions of the contract that a routed port never calls. Each ends the
 * process and tells its name, so that a host can be built up by and by: what port-channels, VLAN
 * interfaces, subinterfaces, tunnels and virtual MACs need shows when they are first asked for.
 *
 * No header of the contract is included here: only the names count. host.c and answers.c have the
 * functions that are provided; move a name from here to there, with its header's declaration.
 */
#include <stdio.h>
#include <stdlib.h>

static _Noreturn void not_provided(const char *name)
{
    fflush(stdout);
    fprintf(stderr, "host: %s was called but isn't provided by this host\n", name);
    abort();
}

#define NOT_PROVIDED(name)                                                                         \
    void name(void);                                                                               \
    void name(void)                                                                                \
    {                                                                                              \
        not_provided(#name);                                                                       \
    }

/* ---- The forwarding manager's VLANs, port-channels and texts ---- */

NOT_PROVIDED(FWM_FWIM_FIND_VLAN)
NOT_PROVIDED(FWM_FWIM_PVLAN_IS_PRIMARY)
NOT_PROVIDED(FWM_FWIM_VLAN_PVLAN)
NOT_PROVIDED(fwm_check_flush_dbg_out_file)
NOT_PROVIDED(fwm_ctime)
NOT_PROVIDED(fwm_debug_elem_descr)
NOT_PROVIDED(fwm_ifindex_2_tid)
NOT_PROVIDED(fwm_pc_sdb_store)
NOT_PROVIDED(fwm_syserr2str)

/* ---- Trees and sets of ports: virtual MACs, members of port-channels, field groups ---- */

NOT_PROVIDED(_shr_pbmp_bmnull)
NOT_PROVIDED(_shr_popcount)
NOT_PROVIDED(avl_create)
NOT_PROVIDED(avl_delete)
NOT_PROVIDED(avl_find)
NOT_PROVIDED(avl_find_next)
NOT_PROVIDED(avl_get_first)
NOT_PROVIDED(avl_get_next)
NOT_PROVIDED(avl_insert)

/* ---- Router MACs and virtual MACs ---- */

NOT_PROVIDED(bcm_l2_station_add)
NOT_PROVIDED(bcm_l2_station_delete)
NOT_PROVIDED(bcm_l2_station_get)
NOT_PROVIDED(bcm_l2_station_t_init)

/* ---- Next hops and routes that a fast restart brings back ---- */

NOT_PROVIDED(bcm_l3_egress_create)
NOT_PROVIDED(bcm_l3_egress_destroy)
NOT_PROVIDED(bcm_l3_egress_ecmp_destroy)
NOT_PROVIDED(bcm_l3_egress_ecmp_t_init)
NOT_PROVIDED(bcm_l3_egress_multipath_create)
NOT_PROVIDED(bcm_l3_ingress_get)
NOT_PROVIDED(bcm_l3_route_add)
NOT_PROVIDED(bcm_l3_route_t_init)
NOT_PROVIDED(get_string_from_platform_inf)
NOT_PROVIDED(l3lif_get_iif_for_ifindex_new)
NOT_PROVIDED(l3lif_update_sdb_for_intf)
NOT_PROVIDED(rtifhal_bcm_l3_ingress_get_from_cache)

/* ---- Port-channels and their members ---- */

NOT_PROVIDED(bcm_trunk_create)
NOT_PROVIDED(bcm_trunk_get)
NOT_PROVIDED(bcm_trunk_info_t_init)
NOT_PROVIDED(bcm_trunk_member_t_init)
NOT_PROVIDED(fwmpd_bcm_trunk_member_add)
NOT_PROVIDED(fwmpd_bcm_trunk_member_delete)
NOT_PROVIDED(fwmpd_bcm_trunk_set)
NOT_PROVIDED(if_index_port_channel_get_channel_num)

/* ---- Tunnels and VXLAN ports ---- */

NOT_PROVIDED(bcm_tunnel_initiator_clear)
NOT_PROVIDED(rtifhal_bcm_vxlan_port_create)
NOT_PROVIDED(rtifhal_bcm_vxlan_port_delete)

/* ---- VLAN interfaces, private VLANs and subinterfaces ---- */

NOT_PROVIDED(bcm_port_control_set)
NOT_PROVIDED(bcm_vlan_action_set_t_init)
NOT_PROVIDED(bcm_vlan_block_t_init)
NOT_PROVIDED(bcm_vlan_control_vlan_set)
NOT_PROVIDED(fwmpd_bcm_set_vlan_pbmp)
NOT_PROVIDED(fwmpd_bcm_stg_stp_set)
NOT_PROVIDED(fwmpd_bcm_vlan_block_set)
NOT_PROVIDED(fwmpd_bcm_vlan_control_port_set)
NOT_PROVIDED(fwmpd_bcm_vlan_destroy)
NOT_PROVIDED(fwmpd_bcm_vlan_translate_action_add)
NOT_PROVIDED(fwmpd_bcm_vlan_translate_action_delete)
NOT_PROVIDED(fwmpd_get_vlan_stg)
NOT_PROVIDED(fwmpd_pif_to_asic_port)
NOT_PROVIDED(fwmpd_trident_get_bvbt)
NOT_PROVIDED(fwmpd_trident_vlan_bvcvt_store)
NOT_PROVIDED(if_index_get_mainintf_from_subintf)
NOT_PROVIDED(if_index_get_sub_intf)
NOT_PROVIDED(l3lif_find_lif_from_ifindex)
NOT_PROVIDED(l3lif_find_lif_from_int_vlan)
NOT_PROVIDED(rtifhal_if_has_si)

/* ---- Rules that drop ---- */

NOT_PROVIDED(bcm_field_action_add)
NOT_PROVIDED(bcm_field_entry_create)
NOT_PROVIDED(bcm_field_entry_install)
NOT_PROVIDED(bcm_field_group_create_id)
NOT_PROVIDED(bcm_field_group_enable_get)
NOT_PROVIDED(bcm_field_group_enable_set)
NOT_PROVIDED(bcm_field_qualify_L3Routable)

/* ---- Diagnostics, messages between services ---- */

NOT_PROVIDED(buginf)
NOT_PROVIDED(cmd_prt)
NOT_PROVIDED(l3vm_if_get_context_id)
NOT_PROVIDED(lcache_im_get_iod_frm_ifindex)
NOT_PROVIDED(mts_drop)
NOT_PROVIDED(mts_send)
NOT_PROVIDED(sdwrap_hist_event)
NOT_PROVIDED(snprintf_if_index)
