/*
 * calls.h: the calls that the null platform takes, and the mark with which each function of
 * it begins.
 *
 * The functions are compiled twice: in null_platform the mark adds one to a counter and the
 * arguments aren't looked at; in recording_platform it writes the call down (recording.h).
 */
#pragma once

#include <cstddef>
#include <cstdint>

// Every function that the library imports, but for libc's and GLib's.
#define NULL_PLATFORM_CALLS(X)                                                                     \
    X(FWM_FWIM_FIND_VLAN)                                                                          \
    X(FWM_FWIM_PVLAN_IS_PRIMARY)                                                                   \
    X(FWM_FWIM_VLAN_PVLAN)                                                                         \
    X(_shr_pbmp_bmnull)                                                                            \
    X(_shr_popcount)                                                                               \
    X(avl_create)                                                                                  \
    X(avl_delete)                                                                                  \
    X(avl_find)                                                                                    \
    X(avl_find_next)                                                                               \
    X(avl_get_first)                                                                               \
    X(avl_get_next)                                                                                \
    X(avl_insert)                                                                                  \
    X(bcm_field_action_add)                                                                        \
    X(bcm_field_action_ports_add)                                                                  \
    X(bcm_field_action_ports_get)                                                                  \
    X(bcm_field_action_remove)                                                                     \
    X(bcm_field_entry_create)                                                                      \
    X(bcm_field_entry_install)                                                                     \
    X(bcm_field_entry_reinstall)                                                                   \
    X(bcm_field_group_create_id)                                                                   \
    X(bcm_field_group_enable_get)                                                                  \
    X(bcm_field_group_enable_set)                                                                  \
    X(bcm_field_qualifier_delete)                                                                  \
    X(bcm_field_qualify_InPorts)                                                                   \
    X(bcm_field_qualify_InPorts_get)                                                               \
    X(bcm_field_qualify_L3Routable)                                                                \
    X(bcm_l2_station_add)                                                                          \
    X(bcm_l2_station_delete)                                                                       \
    X(bcm_l2_station_get)                                                                          \
    X(bcm_l2_station_t_init)                                                                       \
    X(bcm_l3_egress_create)                                                                        \
    X(bcm_l3_egress_destroy)                                                                       \
    X(bcm_l3_egress_ecmp_destroy)                                                                  \
    X(bcm_l3_egress_ecmp_t_init)                                                                   \
    X(bcm_l3_egress_multipath_create)                                                              \
    X(bcm_l3_egress_t_init)                                                                        \
    X(bcm_l3_ingress_get)                                                                          \
    X(bcm_l3_ingress_t_init)                                                                       \
    X(bcm_l3_intf_get)                                                                             \
    X(bcm_l3_intf_t_init)                                                                          \
    X(bcm_l3_route_add)                                                                            \
    X(bcm_l3_route_t_init)                                                                         \
    X(bcm_pd_is_device_trident2)                                                                   \
    X(bcm_port_control_set)                                                                        \
    X(bcm_stg_vlan_add)                                                                            \
    X(bcm_switch_control_set)                                                                      \
    X(bcm_trunk_create)                                                                            \
    X(bcm_trunk_get)                                                                               \
    X(bcm_trunk_info_t_init)                                                                       \
    X(bcm_trunk_member_t_init)                                                                     \
    X(bcm_tunnel_initiator_clear)                                                                  \
    X(bcm_vlan_action_set_t_init)                                                                  \
    X(bcm_vlan_block_t_init)                                                                       \
    X(bcm_vlan_control_port_set)                                                                   \
    X(bcm_vlan_control_vlan_get)                                                                   \
    X(bcm_vlan_control_vlan_set)                                                                   \
    X(bcm_vlan_control_vlan_t_init)                                                                \
    X(bcm_vlan_create)                                                                             \
    X(buginf)                                                                                      \
    X(cmd_prt)                                                                                     \
    X(fwm_check_flush_dbg_out_file)                                                                \
    X(fwm_ctime)                                                                                   \
    X(fwm_debug_elem_descr)                                                                        \
    X(fwm_ds_add)                                                                                  \
    X(fwm_ds_trace_add)                                                                            \
    X(fwm_ifindex_2_tid)                                                                           \
    X(fwm_pc_sdb_store)                                                                            \
    X(fwm_syserr2str)                                                                              \
    X(fwmpd_allocate_stg)                                                                          \
    X(fwmpd_bcm_port_control_set)                                                                  \
    X(fwmpd_bcm_port_discard_set)                                                                  \
    X(fwmpd_bcm_port_stp_set)                                                                      \
    X(fwmpd_bcm_port_untagged_vlan_set)                                                            \
    X(fwmpd_bcm_set_vlan_pbmp)                                                                     \
    X(fwmpd_bcm_stg_stp_set)                                                                       \
    X(fwmpd_bcm_switch_control_set)                                                                \
    X(fwmpd_bcm_trunk_member_add)                                                                  \
    X(fwmpd_bcm_trunk_member_delete)                                                               \
    X(fwmpd_bcm_trunk_set)                                                                         \
    X(fwmpd_bcm_vlan_block_set)                                                                    \
    X(fwmpd_bcm_vlan_control_port_set)                                                             \
    X(fwmpd_bcm_vlan_control_vlan_get_from_cache)                                                  \
    X(fwmpd_bcm_vlan_control_vlan_set)                                                             \
    X(fwmpd_bcm_vlan_destroy)                                                                      \
    X(fwmpd_bcm_vlan_port_add)                                                                     \
    X(fwmpd_bcm_vlan_port_remove)                                                                  \
    X(fwmpd_bcm_vlan_translate_action_add)                                                         \
    X(fwmpd_bcm_vlan_translate_action_delete)                                                      \
    X(fwmpd_get_vlan_stg)                                                                          \
    X(fwmpd_inband_init)                                                                           \
    X(fwmpd_pif_to_asic_port)                                                                      \
    X(fwmpd_pss_globalc_store)                                                                     \
    X(fwmpd_trident_batch_flush)                                                                   \
    X(fwmpd_trident_get_bvbt)                                                                      \
    X(fwmpd_trident_get_sup_tcam_default_size)                                                     \
    X(fwmpd_trident_vlan_bvcvt_store)                                                              \
    X(get_string_from_platform_inf)                                                                \
    X(if_index_get_mainintf_from_subintf)                                                          \
    X(if_index_get_port)                                                                           \
    X(if_index_get_sub_intf)                                                                       \
    X(if_index_get_type)                                                                           \
    X(if_index_is_eth_port_channel_intf)                                                           \
    X(if_index_is_physical_interface)                                                              \
    X(if_index_is_sub_intf)                                                                        \
    X(if_index_is_tunnel_intf)                                                                     \
    X(if_index_port_channel_get_channel_num)                                                       \
    X(l3lif_find_lif_from_ifindex)                                                                 \
    X(l3lif_find_lif_from_int_vlan)                                                                \
    X(l3lif_get_iif_for_ifindex_new)                                                               \
    X(l3lif_update_sdb_for_intf)                                                                   \
    X(l3vm_if_get_context_id)                                                                      \
    X(lcache_im_get_iod_frm_ifindex)                                                               \
    X(mtrack_free)                                                                                 \
    X(mts_drop)                                                                                    \
    X(mts_send)                                                                                    \
    X(rtifhal_bcm_l3_ingress_create)                                                               \
    X(rtifhal_bcm_l3_ingress_destroy)                                                              \
    X(rtifhal_bcm_l3_ingress_get_from_cache)                                                       \
    X(rtifhal_bcm_l3_intf_create)                                                                  \
    X(rtifhal_bcm_l3_intf_delete)                                                                  \
    X(rtifhal_bcm_vxlan_port_create)                                                               \
    X(rtifhal_bcm_vxlan_port_delete)                                                               \
    X(rtifhal_get_bcm_unit)                                                                        \
    X(rtifhal_if_has_si)                                                                           \
    X(rtifhal_pss_l3port_delete)                                                                   \
    X(rtifhal_pss_l3port_store)                                                                    \
    X(sdwrap_chk_int)                                                                              \
    X(sdwrap_hist_event)                                                                           \
    X(sdwrap_hist_event_subtype_check)                                                             \
    X(snprintf_if_index)                                                                           \
    X(sysmgr_is_fastboot_restart)

namespace null_platform
{

/** A function of the platform. */
enum class Call : std::size_t {
#define NULL_PLATFORM_ENUMERATOR(name) name,
    NULL_PLATFORM_CALLS(NULL_PLATFORM_ENUMERATOR)
#undef NULL_PLATFORM_ENUMERATOR
        NUMBER
};

inline constexpr std::size_t CALL_NUMBER = static_cast<std::size_t>(Call::NUMBER);

/** How often each function was called since the last reset. */
extern std::uint64_t call_counts[CALL_NUMBER];

} // namespace null_platform

#ifdef NULL_PLATFORM_RECORDS
#include "recording.h"
#define CALLED(name, ...)                                                                          \
    recording::note(#name __VA_OPT__(, ) __VA_ARGS__);                                             \
    ++null_platform::call_counts[static_cast<std::size_t>(null_platform::Call::name)]
#define CALLED_WITH_TEXT(name, format, ...)                                                        \
    do {                                                                                           \
        va_list rest;                                                                              \
        va_start(rest, format);                                                                    \
        recording::note_text(rest, format, #name, __VA_ARGS__);                                    \
        va_end(rest);                                                                              \
        ++null_platform::call_counts[static_cast<std::size_t>(null_platform::Call::name)];         \
    } while (false)
#define GIVES(pointer) recording::gives(pointer)
#else
#include "arguments.h"
#define CALLED(name, ...)                                                                          \
    static_cast<void>(sizeof(recording::ignored(__VA_ARGS__)));                                    \
    ++null_platform::call_counts[static_cast<std::size_t>(null_platform::Call::name)]
#define CALLED_WITH_TEXT(name, format, ...) CALLED(name, __VA_ARGS__)
#define GIVES(pointer) (pointer)
#endif
