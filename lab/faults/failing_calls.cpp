/*
 * failing_calls.cpp: see failing_calls.h.
 */
#include "faults/failing_calls.h"

#include <algorithm>
#include <array>
#include <string>

namespace lab::faults
{

namespace
{

using simswitch::CallRecord;

constexpr std::array<std::string_view, 16> NUMBERS = {
    "FWM_FWIM_PVLAN_IS_PRIMARY",
    "_shr_pbmp_bmnull",
    "_shr_popcount",
    "bcm_pd_is_device_trident2",
    "fwmpd_get_vlan_stg",
    "fwmpd_pif_to_asic_port",
    "get_string_from_platform_inf",
    "if_index_get_mainintf_from_subintf",
    "if_index_is_eth_port_channel_intf",
    "if_index_is_physical_interface",
    "if_index_is_sub_intf",
    "if_index_is_tunnel_intf",
    "l3vm_if_get_context_id",
    "rtifhal_get_bcm_unit",
    "rtifhal_if_has_si",
    "sysmgr_is_fastboot_restart",
};

constexpr std::array<std::string_view, 2> ALWAYS_THERE = {
    "fwm_syserr2str",
    "fwmpd_trident_get_bvbt",
};

constexpr std::array<std::string_view, 5> GIVES_BACK = {
    "cmd_prt", "free", "mtrack_free", "mts_drop", "snprintf_if_index",
};

// avl_delete most of all: the library takes an entry out whose key it has just
// found, and frees it; were the entry to stay in the tree, the tree would hold
// memory that is gone.
constexpr std::array<std::string_view, 5> LOOK_UPS = {
    "avl_delete", "avl_find", "avl_find_next", "avl_get_first", "avl_get_next",
};

constexpr std::array<NeverFail, 4> REASONS = {{
    {"it answers with a number, or with yes and no", NUMBERS},
    {"its record or text is always there", ALWAYS_THERE},
    {"it fills a record with zeros, prints, or gives something back", GIVES_BACK,
     "`…_t_init`, `sdwrap_…`"},
    {"a tree in memory finds and takes out what is in it; only a new tree and a new entry need "
     "memory",
     LOOK_UPS},
}};

} // namespace

std::span<const NeverFail> never_fail()
{
    return REASONS;
}

bool can_fail(const CallRecord &record)
{
    if (record.function.ends_with("_t_init") || record.function.starts_with("sdwrap_") ||
        record.result.empty()) {
        return false;
    }
    return std::ranges::none_of(REASONS, [&record](const NeverFail &reason) {
        return std::ranges::binary_search(reason.functions, record.function);
    });
}

std::string_view known_name(const CallRecord &record)
{
    return record.function == "calloc" ? std::string_view("malloc") : record.function;
}

bool gives_code(const CallRecord &record)
{
    const std::string &result = record.result;
    return !result.empty() && !result.starts_with("0x") &&
           result.find_first_not_of("-0123456789") == std::string::npos;
}

} // namespace lab::faults
