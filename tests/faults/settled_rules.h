/*
 * settled_rules.h: what each step of an add and of a delete does when its call
 * fails, written down by hand; settled_test.cpp holds docs/failures.md against
 * it, which the sweep wrote from what it saw.
 *
 * The first rule that fits counts. A step is known by its function and by the
 * first words of its message.
 */
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace faults_test
{

/** What comes after a failing step. */
enum class Then : std::uint8_t {
    stops,      ///< nothing more; of a port-channel nothing more for that member
    part_stops, ///< nothing more of the part of the request that the call is in
    goes_on,    ///< every later call
    goes_less,  ///< the rest but for what the failing call would have been for
};

/** A rule. */
struct Rule {
    std::string_view kind;     ///< of the request; a * at its end stands for the rest
    std::string_view function; ///< likewise
    std::string_view message;  ///< how it begins; empty for none or any
    std::string_view result;   ///< "0", "-1", "its code"; empty for any
    Then then;
    std::string_view codes = {}; ///< the only codes; empty: all that have no rule of their own
};

inline constexpr std::array RULES = {
    // Nobody looks at these results.
    Rule{"*", "fwmpd_trident_batch_flush", "", "0", Then::goes_on},
    Rule{"*", "fwmpd_inband_init", "", "0", Then::goes_on},
    Rule{"*", "fwmpd_pss_globalc_store", "", "0", Then::goes_on},
    Rule{"*", "fwmpd_trident_vlan_bvcvt_store", "", "0", Then::goes_on},
    Rule{"*", "bcm_vlan_control_port_set", "", "0", Then::goes_on},
    Rule{"*", "rtifhal_pss_l3port_store", "Failed to store to pss", "0", Then::goes_on},
    Rule{"*", "rtifhal_pss_l3port_delete", "failed to delete pss", "0", Then::goes_on},
    Rule{"delete*", "rtifhal_bcm_l3_intf_delete", "", "0", Then::goes_on},
    // Without the rule memory's size the flood lists are looked for in another place.
    Rule{"add*", "fwmpd_trident_get_sup_tcam_default_size", "rtifhal_brcm", "0", Then::goes_less},
    // The flood lists: a list that can't be read or written is passed over.
    Rule{"add*", "bcm_field_*", "", "0", Then::goes_less},
    // The default routes of a fast restart.
    Rule{"add*", "l3lif_update_sdb_for_intf", "", "0", Then::goes_on},
    Rule{"add*", "l3lif_get_iif_for_ifindex_new", "intf is not ready", "0", Then::goes_less},
    Rule{"add*", "bcm_l3_egress_*", "", "0", Then::goes_less},
    Rule{"add*", "bcm_l3_route_add", "", "0", Then::goes_on},

    // Memory: an interface without its record has no ingress object.
    Rule{"add a port-channel", "malloc", "rtifhal_l3_intf_create:Failed", "0", Then::goes_less},
    Rule{"add a VLAN interface", "malloc", "rtifhal_l3_intf_create:Failed", "-1", Then::goes_less},
    Rule{"add*", "malloc", "rtifhal_l3_intf_create:Failed", "-1", Then::stops},
    Rule{"add a port", "malloc", "", "0", Then::goes_less},

    // The ingress object is tried; what ties it to the hardware is written all the same.
    Rule{"add*", "rtifhal_bcm_l3_ingress_create", "bcm_l3_ing_create", "0", Then::goes_less},
    Rule{"add a port*", "fwmpd_bcm_port_control_set", "bcm_port_control_set(N) failed", "0",
         Then::goes_on},
    Rule{"add*", "if_index_get_type", "bcm_l3_ing_create(N) get type failed", "0", Then::goes_less},
    Rule{"add*", "if_index_get_type", "bcm_l3_ing_create(N) get port failed", "0", Then::goes_less},
    Rule{"add*", "if_index_get_port", "bcm_l3_ing_create(N) get port failed", "0", Then::goes_less},
    Rule{"delete*", "if_index_get_type", "bcm_l3_ing_create(N) get type failed", "0",
         Then::goes_less},
    Rule{"delete*", "if_index_get_type", "bcm_l3_ing_create(N) get port failed", "0",
         Then::goes_less},
    Rule{"delete*", "if_index_get_port", "bcm_l3_ing_create(N) get port failed", "0",
         Then::goes_less},

    // A port-channel's add never fails: each step ends its own member's at most.
    Rule{"add a port-channel", "if_index_get_*", "unable to get bcm itf", "0", Then::stops},
    Rule{"add a port-channel", "if_index_get_type", "rtifhal_trident_add_l3pc: L3LIF", "0",
         Then::stops},
    Rule{"add a port-channel", "fwm_ifindex_2_tid", "ERR: rc", "0", Then::goes_less},
    // A trunk that isn't there is made.
    Rule{"add a port-channel", "bcm_trunk_get", "", "0", Then::goes_less, "-7"},
    Rule{"add a port-channel", "bcm_trunk_get", "", "0", Then::stops},
    Rule{"add a port-channel", "bcm_trunk_create", "bcm_trunk_create_id", "0", Then::stops},
    Rule{"add a port-channel", "bcm_trunk_create", "bcm_trunk", "0", Then::goes_less, "-8"},
    Rule{"add a port-channel", "fwmpd_bcm_trunk_set", "bcm_trunk_set", "0", Then::goes_on},
    Rule{"add a port-channel", "fwmpd_bcm_trunk_member_add", "bcm_trunk_member_add failed", "0",
         Then::goes_on},
    Rule{"add a port-channel", "bcm_l3_intf_get", "", "0", Then::goes_on},
    Rule{"add a port-channel", "fwmpd_bcm_switch_control_set", "", "0", Then::goes_on},
    Rule{"add a port-channel", "fwmpd_bcm_port_control_set", "", "0", Then::goes_on},
    Rule{"add a port-channel", "fwmpd_bcm_port_untagged_vlan_set", "", "0", Then::goes_on},
    Rule{"add a port-channel", "rtifhal_bcm_l3_intf_create", "rtifhal_bcm_l3_intf_create", "0",
         Then::goes_less},
    Rule{"add a port-channel", "bcm_vlan_create", "", "0", Then::goes_on, "-8"},
    Rule{"add a port-channel", "bcm_vlan_create", "vlan_create", "0", Then::stops},
    Rule{"add a port-channel", "fwmpd_bcm_vlan_port_add", "vlan_port", "0", Then::stops},
    Rule{"add a port-channel", "fwmpd_bcm_port_stp_set", "stp set", "0", Then::stops},
    // The last step of a member's VLAN.
    Rule{"add a port-channel", "fwmpd_bcm_vlan_control_vlan_set", "bcm_vlan_control_vlan_set", "0",
         Then::goes_on},
    Rule{"add a port-channel", "*vlan_control_vlan_get*", "", "0", Then::stops},
    Rule{"add a port-channel", "rtifhal_bcm_l3_ingress_get_from_cache", "rtifhal_bcm", "0",
         Then::stops},

    // A VLAN interface: the hardware's refusals are passed over, its VLAN has to be known.
    Rule{"add a VLAN interface", "fwmpd_bcm_vlan_control_vlan_get_from_cache",
         "fwmpd_bcm_vlan_control_vlan_get_from_cache(N) returned NULL", "-1", Then::part_stops},
    Rule{"add a VLAN interface", "fwmpd_bcm_vlan_control_vlan_set",
         "bcm_vlan_control_vlan_set(N) failed", "0", Then::goes_on},
    Rule{"add a VLAN interface", "fwmpd_bcm_vlan_control_vlan_set",
         "fwmpd_bcm_vlan_control_vlan_set(N) failed", "its code", Then::goes_less},
    Rule{"add a VLAN interface", "bcm_vlan_control_vlan_set",
         "fwmpd_bcm_vlan_control_vlan_set(N) BCM_VLAN_IGMP_SNOOP_DISABLE failed", "0",
         Then::goes_on},
    Rule{"add a VLAN interface", "fwmpd_bcm_vlan_block_set", "bcm_vlan_block_set failed", "0",
         Then::goes_on},
    Rule{"add a VLAN interface", "rtifhal_bcm_l3_intf_create", "rtifhal_bcm_l3_intf_create", "-1",
         Then::goes_less},
    Rule{"add a VLAN interface", "rtifhal_bcm_l3_ingress_get_from_cache", "rtifhal_bcm", "-1",
         Then::goes_less},
    Rule{"* a VLAN interface", "FWM_FWIM_FIND_VLAN", "failed to get pi_vlan", "0", Then::goes_less},
    Rule{"* a VLAN interface", "FWM_FWIM_VLAN_PVLAN", "", "0", Then::goes_less},

    // What the other adds have in common: the first step that fails ends them.
    Rule{"add*", "bcm_switch_control_set", "itf set (N) failed", "-1", Then::stops},
    Rule{"add*", "fwmpd_bcm_switch_control_set", "itf set egr", "its code", Then::stops},
    Rule{"add*", "fwmpd_bcm_switch_control_set", "itf set (N) failed", "-1", Then::stops},
    Rule{"add*", "if_index_get_type", "unable to get", "-1", Then::stops},
    Rule{"add*", "if_index_get_type", " unable to get", "-1", Then::stops},
    Rule{"add*", "if_index_get_port", "unable to get", "-1", Then::stops},
    Rule{"add*", "if_index_get_type", "rtifhal_trident_add_", "its code", Then::stops},
    Rule{"add*", "if_index_get_type", "L3LIF failed to add", "its code", Then::stops},
    Rule{"add*", "rtifhal_bcm_l3_intf_create", "rtifhal_bcm_l3_intf_create", "-1", Then::stops},
    Rule{"add*", "rtifhal_bcm_l3_ingress_get_from_cache", "rtifhal_bcm", "-1", Then::stops},

    // A VLAN that is there already is no failure; that it isn't shows later.
    Rule{"add*", "bcm_vlan_create", "", "", Then::goes_less, "-8"},
    Rule{"add*", "bcm_vlan_create", "vlan_create(N) failed", "-1", Then::stops},
    Rule{"add*", "fwmpd_allocate_stg", "fwmpd_allocate_stg failed", "-1", Then::stops},
    Rule{"add*", "bcm_stg_vlan_add", "itf vlan enable(N) failed", "-1", Then::stops},
    Rule{"add*", "fwmpd_bcm_vlan_port_add", "vlan_port(N,N) failed", "-1", Then::stops},
    Rule{"add*", "fwmpd_bcm_port_stp_set", "stp set(N,N) failed", "-1", Then::stops},
    Rule{"add*", "fwmpd_bcm_stg_stp_set", "vlan_port(N,N) failed", "-1", Then::stops},
    Rule{"add*", "bcm_vlan_control_vlan_get", "bcm_vlan_control_vlan_get failed", "-1",
         Then::stops},
    Rule{"add*", "bcm_vlan_control_vlan_set", "bcm_vlan_control_vlan_set failed", "-1",
         Then::stops},
    Rule{"add*", "fwmpd_bcm_vlan_control_vlan_set", "bcm_vlan_control_vlan_set failed", "-1",
         Then::stops},
    Rule{"add*", "fwmpd_bcm_vlan_control_vlan_get_from_cache",
         "fwmpd_bcm_vlan_control_vlan_get_from_cache(N) returned NULL", "-1", Then::stops},

    // A routed port.
    Rule{"add a port", "fwmpd_bcm_port_control_set", "itf set [", "-1", Then::stops},
    Rule{"add a port", "fwmpd_bcm_port_control_set", "", "0", Then::goes_on},
    Rule{"add a port", "fwmpd_bcm_port_untagged_vlan_set", "itf set (N) failed", "-1", Then::stops},
    // A subinterface: the port's controls are nobody's matter, a new VLAN without a record has
    // no flags, its flood masks are tried.
    Rule{"add a subinterface*", "fwmpd_bcm_port_control_set", "", "0", Then::goes_on},
    Rule{"add a subinterface*", "fwmpd_bcm_port_untagged_vlan_set", "", "0", Then::goes_on},
    Rule{"add a subinterface*", "fwmpd_bcm_vlan_control_vlan_get_from_cache", "", "0",
         Then::goes_less},
    Rule{"add a subinterface*", "fwmpd_bcm_vlan_block_set", "bcm_vlan_block_set failed", "0",
         Then::goes_on},
    Rule{"add a subinterface*", "fwmpd_bcm_vlan_control_port_set", "xlate enable (N) failed", "-1",
         Then::stops},
    Rule{"add a subinterface*", "fwmpd_bcm_vlan_translate_action_add", "xlate enable (N) N N N",
         "-1", Then::stops},

    // A port's and a tunnel's delete never fail.
    Rule{"delete a port", "if_index_get_type", "rtifhal_trident_del_l3port: L3LIF", "0",
         Then::goes_less},
    Rule{"delete a port", "if_index_get_*", "unable to get itf", "0", Then::stops},
    Rule{"delete a port", "bcm_l3_intf_get", "itf get (N) failed", "0", Then::stops},
    Rule{"delete a port", "fwmpd_bcm_port_control_set", "itf set [IP", "0", Then::stops},
    Rule{"delete a port", "fwmpd_bcm_port_control_set", "Intf set [MPLS]", "0", Then::stops},
    Rule{"delete a tunnel", "if_index_get_type", "L3LIF failed to del", "0", Then::goes_less},
    Rule{"delete a tunnel", "bcm_l3_intf_get", "itf get (N) failed", "0", Then::stops},

    // A port-channel's stops at its first half, and says so.
    Rule{"delete a port-channel", "if_index_get_type", "rtifhal_trident_del_l3pc: L3LIF",
         "its code", Then::stops},
    Rule{"delete a port-channel", "if_index_get_*", "unable to get itf", "-1", Then::stops},
    Rule{"delete a port-channel", "bcm_l3_intf_get", "itf get (N) failed", "-1", Then::stops},
    Rule{"delete a port-channel", "fwmpd_bcm_port_control_set", "itf set [", "-1", Then::stops},
    Rule{"delete a port-channel", "fwm_ifindex_2_tid", "ERR: rc", "0", Then::goes_less},
    Rule{"delete a port-channel", "fwmpd_bcm_trunk_member_delete", "itf del (N) failed", "0",
         Then::goes_on},
    // What a port's and a port-channel's have in common.
    Rule{"delete a port*", "fwmpd_bcm_port_control_set", "", "0", Then::goes_on},
    Rule{"delete a port*", "fwmpd_bcm_vlan_port_remove", "vlan_port(N, N) failed", "0",
         Then::goes_less},
    Rule{"delete a port*", "fwmpd_bcm_port_stp_set", "stp set(N,N) failed", "0", Then::goes_less},
    Rule{"delete a port*", "fwmpd_bcm_port_discard_set", "port_discard(N) failed", "0",
         Then::goes_on},

    // A VLAN interface's: the ingress object's end is its last step, and its code is handed up.
    Rule{"delete a VLAN interface", "rtifhal_bcm_l3_ingress_destroy", "", "its code",
         Then::goes_on},
    Rule{"delete a VLAN interface", "if_index_get_type", "(N) get type failed", "-1", Then::stops},
    Rule{"delete a VLAN interface", "if_index_get_type", "rtifhal_trident_del_svi: L3LIF",
         "its code", Then::stops},
    Rule{"delete a VLAN interface", "fwmpd_bcm_vlan_control_vlan_get_from_cache", "fwmpd_bcm", "-1",
         Then::stops},
    Rule{"delete a VLAN interface", "bcm_l3_intf_get", "bcm_l3_intf_get() mismatch", "-1",
         Then::stops},
    Rule{"delete a VLAN interface", "fwmpd_bcm_vlan_control_vlan_set", "", "0", Then::goes_on},
    Rule{"delete a VLAN interface", "fwmpd_bcm_vlan_block_set", "bcm_vlan_block_set failed", "0",
         Then::goes_on},
    Rule{"delete*", "rtifhal_bcm_l3_ingress_destroy", "", "0", Then::goes_on},

    // A subinterface's.
    Rule{"delete a subinterface*", "if_index_get_type", "rtifhal_trident_del_subint: L3LIF",
         "its code", Then::stops},
    Rule{"delete a subinterface of a port", "if_index_get_*", "unable to get itf", "-1",
         Then::stops},
    Rule{"delete a subinterface*", "bcm_l3_intf_get", "", "0", Then::goes_less},
    Rule{"delete a subinterface*", "l3lif_find_lif_from_ifindex", "", "0", Then::goes_less},
    Rule{"delete a subinterface*", "bcm_port_control_set", "", "0", Then::goes_on},
    Rule{"delete a subinterface of a port", "fwmpd_bcm_vlan_translate_action_delete",
         "bcm_vlan_translate_action_del", "-1", Then::stops},
    Rule{"delete a subinterface of a port", "fwmpd_bcm_vlan_port_remove", "vlan_port(N, N) failed",
         "-1", Then::stops},
    Rule{"delete a subinterface*", "fwmpd_bcm_vlan_block_set", "bcm_vlan_block_set failed", "0",
         Then::part_stops},
    Rule{"delete a subinterface*", "fwmpd_bcm_vlan_destroy", "bcm_vlan_destroy failing", "0",
         Then::goes_on},
};

} // namespace faults_test
