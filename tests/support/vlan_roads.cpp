/*
 * vlan_roads.cpp: see vlan_roads.h.
 */
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace rtifhal_test
{

namespace
{

/** Entries are counted back from the end of the region. */
constexpr std::array FLOOD_ENTRIES_BACK = {3, 5, 4, 1, 8};
constexpr std::array IN_PORT_ENTRIES_BACK = {5, 4, 8};

int region_size(Kind chip)
{
    return chip == Kind::trident2 ? 256 : 128;
}

/** The front ports without those. */
std::string without(const std::vector<int> &ports)
{
    simswitch::chip::PortSet left = simswitch::chip::PortSet::front();
    for (const int port : ports) {
        left.remove(port);
    }
    return left.text();
}

} // namespace

Calls calls_after(const Calls &calls, const std::string &text)
{
    const auto found = std::ranges::find(calls, text);
    return found == calls.end() ? calls : Calls(found + 1, calls.end());
}

Calls popcounts(const std::vector<int> &ports)
{
    std::array<std::uint32_t, 8> words{};
    for (const int port : ports) {
        const auto bit = static_cast<unsigned>(port);
        words.at(bit / 32) |= 1U << (bit % 32);
    }
    Calls calls;
    for (const std::uint32_t word : words) {
        calls.push_back(fmt::format("_shr_popcount({:#x}) = {}", word, std::popcount(word)));
    }
    return calls;
}

std::string masks(const std::string &ports)
{
    return fmt::format("{{kmc={{}} umc={0} uuc={0} bc={0}}}", ports);
}

Calls flood_list_calls(Kind chip, int port, const std::vector<int> &gone)
{
    const int size = region_size(chip);
    const std::string before = without(gone);
    const std::string after = without(join({gone, {port}}));
    Calls calls = {"rtifhal_get_bcm_unit(0) = 0"};
    if (gone.empty()) {
        calls.push_back(
            fmt::format("fwmpd_trident_get_sup_tcam_default_size() = 0 [size={}]", size));
    }
    for (const int back : FLOOD_ENTRIES_BACK) {
        const int entry = size - back;
        calls.push_back(
            fmt::format("bcm_field_action_ports_get(0, {}, 32) = 0 [ports={}]", entry, before));
        calls.push_back(fmt::format("bcm_field_action_remove(0, {}, 32) = 0", entry));
        calls.push_back(fmt::format("bcm_field_action_ports_add(0, {}, 32, {}) = 0", entry, after));
        calls.push_back(fmt::format("bcm_field_entry_reinstall(0, {}) = 0", entry));
    }
    for (const int back : IN_PORT_ENTRIES_BACK) {
        const int entry = size - back;
        calls.push_back(fmt::format(
            "bcm_field_qualify_InPorts_get(0, {}) = 0 [data={} mask={{0-255}}]", entry, before));
        calls.push_back(fmt::format("bcm_field_qualifier_delete(0, {}, 13) = 0", entry));
        calls.push_back(
            fmt::format("bcm_field_qualify_InPorts(0, {}, {}, {{0-255}}) = 0", entry, after));
        calls.push_back(fmt::format("bcm_field_entry_reinstall(0, {}) = 0", entry));
    }
    return calls;
}

Messages flood_list_messages(Kind chip, int port)
{
    const int size = region_size(chip);
    Messages messages = {
        trace("rtifhal_update_llm_acl_floodlist",
              fmt::format(" Update IFP default redirect bmp with port {} l3:1\n", port))};
    for (const int back : FLOOD_ENTRIES_BACK) {
        messages.push_back(
            trace("rtifhal_add_remove_port_to_floodlist",
                  fmt::format("Tcam index = {} l3 = 1 port = {}\n", size - back, port)));
    }
    for (const int back : IN_PORT_ENTRIES_BACK) {
        messages.push_back(
            trace("rtifhal_add_remove_port_from_inports",
                  fmt::format("Tcam index = {} l3 = 1 port = {}\n", size - back, port)));
    }
    return messages;
}

namespace
{

/** What both directions of the mode have in common. */
Calls mode_calls(Kind chip, int port, int value)
{
    Calls calls = {"rtifhal_get_bcm_unit(0) = 0"};
    if (chip == Kind::trident2) {
        calls.push_back("bcm_pd_is_device_trident2() = 1");
        // VXLAN stays open in both directions.
        calls.push_back(fmt::format("fwmpd_bcm_port_control_set(0, {}, 187, 1) = 0", port));
    } else {
        calls.push_back("bcm_pd_is_device_trident2() = 0");
    }
    calls.push_back("fwmpd_trident_batch_flush() = 0");
    calls.push_back(fmt::format("bcm_vlan_control_port_set(0, {}, 2, {}) = 0", port, value));
    calls.push_back(fmt::format("bcm_vlan_control_port_set(0, {}, 4, {}) = 0", port, value));
    return calls;
}

Messages mode_messages(int port, int value)
{
    return {
        trace("rtifhal_set_vxlan_enable", fmt::format("port = {} value = 1\n", port)),
        trace("rtifhal_set_vlan_xlate", fmt::format("port = {} value = {}\n", port, value)),
    };
}

} // namespace

Calls mode_on_calls(Kind chip, int port, const std::vector<int> &gone)
{
    return join({mode_calls(chip, port, 1), flood_list_calls(chip, port, gone)});
}

Messages mode_on_messages(Kind chip, int port)
{
    return join({mode_messages(port, 1), flood_list_messages(chip, port)});
}

Calls mode_off_calls(Kind chip, int port)
{
    return mode_calls(chip, port, 0);
}

Messages mode_off_messages(int port)
{
    return mode_messages(port, 0);
}

Calls first_use_calls(int vlan, int port)
{
    return join({Calls{
                     "rtifhal_get_bcm_unit(0) = 0",
                     "fwmpd_trident_batch_flush() = 0",
                     fmt::format("fwmpd_trident_get_bvbt({}) = record", vlan),
                     "bcm_vlan_block_t_init()",
                     fmt::format("fwmpd_bcm_vlan_block_set(0, {}, {}) = 0", vlan,
                                 masks(fmt::format("{{0,{}}}", port))),
                 },
                 popcounts({port})});
}

Messages first_use_messages(int vlan, int port)
{
    const std::string function = "rtifhal_subintf_block_set";
    return {
        trace(function,
              fmt::format("\n\n UMCB Vlan = {} type = 1 port = {} set = 1\n", vlan, port)),
        trace(function, fmt::format("UMCB Adding CPU to blk masks for vlan:{}\n", vlan)),
        trace(function, fmt::format("UMCB Remove CPU from UMC and add {} to Blk lists\n", port)),
        trace(function, fmt::format("UMCB Calling bcm_vlan_block_set for {}\n", vlan)),
        trace(function, "rtifhal_subintf_block_set SET lvtc->subint_count:1 pbmp_count:1 \n"),
    };
}

Calls last_use_calls(int vlan, int port)
{
    static_cast<void>(port);
    return join({Calls{
                     "rtifhal_get_bcm_unit(0) = 0",
                     "fwmpd_trident_batch_flush() = 0",
                     fmt::format("fwmpd_trident_get_bvbt({}) = record", vlan),
                     fmt::format("fwmpd_bcm_vlan_block_set(0, {}, {}) = 0", vlan, masks("{0}")),
                 },
                 popcounts({}),
                 Calls{
                     "_shr_pbmp_bmnull({}) = 1",
                     fmt::format("fwmpd_bcm_vlan_destroy(0, {}) = 0", vlan),
                 }});
}

Messages last_use_messages(int vlan, int port)
{
    const std::string function = "rtifhal_subintf_block_set";
    return {
        trace(function,
              fmt::format("\n\n UMCB Vlan = {} type = 1 port = {} set = 0\n", vlan, port)),
        trace(function, "rtifhal_subintf_block_set RESET BCM_PBMP_MEMBER lvtc->subint_count:1\n"),
        trace(function, "rtifhal_subintf_block_set RESET lvtc->subint_count:0\n"),
        trace(function, fmt::format("UMCB Add CPU to vblk {}\n", vlan)),
        trace(function, fmt::format(" UMCB Remove Port {} in all blk mask for:{}\n", port, vlan)),
        trace(function, fmt::format("UMCB Calling bcm_vlan_block_set {}\n", vlan)),
        trace(function, "\n pbmp_count 0"),
        trace(function, fmt::format(" UMCB Calling bcm_vlan_destroy {}\n", vlan)),
    };
}

Calls refreshed_controls_calls(int vlan, const std::string &flags)
{
    const std::string record = fmt::format("{{vrf=0 iif=0 flags={} class=0 urpf=0}}", flags);
    return {
        fmt::format("fwmpd_bcm_vlan_control_vlan_get_from_cache({}) = record", vlan),
        "bcm_vlan_control_vlan_t_init()",
        "fwmpd_trident_batch_flush() = 0",
        fmt::format("bcm_vlan_control_vlan_get(0, {}) = 0 [control={}]", vlan, record),
        fmt::format("fwmpd_bcm_vlan_control_vlan_set(0, {}, {}) = 0", vlan, record),
    };
}

namespace vlan_road
{

Calls creates(int vlan, int code)
{
    return {FLUSH, fmt::format("bcm_vlan_create(0, {}) = {}", vlan, code)};
}

Calls becomes_routed(int vlan, const std::string &flags)
{
    return {
        fmt::format("fwmpd_bcm_vlan_control_vlan_get_from_cache({}) = record", vlan),
        FLUSH,
        fmt::format("bcm_vlan_control_vlan_set(0, {}, {{vrf=0 iif=0 flags={} class=0 urpf=0}}) = 0",
                    vlan, flags),
        FLUSH,
        fmt::format("bcm_stg_vlan_add(0, {}, {}) = 0", GROUP, vlan),
    };
}

Calls adds_port(int vlan, int port, const std::string &untagged)
{
    return {
        fmt::format("fwmpd_bcm_vlan_port_add(0, {}, {{0,{}}}, {}) = 0", vlan, port, untagged),
        fmt::format("fwmpd_bcm_port_stp_set(0, {}, 4) = 0", port),
    };
}

bool holds(int port, unsigned vlan)
{
    return (rtifhal_port_vlan[port].vlan_bitmap[vlan / 8] & (0x80U >> (vlan % 8))) != 0;
}

void VlanTest::routed_ports(const std::vector<int> &ports)
{
    for (const int port : ports) {
        ASSERT_EQ(rtifhal_vlan_create(0, ROUTED, port), 0);
    }
    sw.end_request();
    start();
}

void VlanTest::vlan_on_port_9()
{
    routed_ports({PORT, 9});
    ASSERT_EQ(rtifhal_vlan_create(0, VLAN, 9), 0);
    sw.end_request();
    start();
}

} // namespace vlan_road

} // namespace rtifhal_test
