/*
 * format.h: how arguments and outputs of a call are printed. call.h has the
 * table of what each type looks like.
 *
 * append_value writes one value at the end of a text; format_value gives it as
 * a text of its own. A new type of argument needs one more append_value.
 */
#pragma once

#include <fwm/state.h>
#include <sdk/l2.h>
#include <sdk/l3.h>
#include <sdk/trunk.h>
#include <sdk/vlan.h>
#include <services/avl.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

struct l3lif;

namespace simswitch
{

/** A bare word in the place of an argument whose value tells nothing: Word{"store"} prints store.
 */
struct Word {
    std::string_view text;
};

// Numbers: a plain uint32_t is a word of bits and prints in hex, the rest is
// decimal. Narrower integers and bool print as int.
void append_value(std::string &out, int value);
void append_value(std::string &out, std::uint32_t value);
void append_value(std::string &out, long value);
void append_value(std::string &out, unsigned long value);

// Texts. Line ends, quotes and other bytes that would break a line are
// escaped: \n \t \r \" \\ \x1b.
void append_value(std::string &out, const char *text);
void append_value(std::string &out, std::string_view text);
void append_value(std::string &out, Word word);

// The platform's records.
void append_value(std::string &out, const bcm_pbmp_t &ports);
void append_value(std::string &out, const bcm_mac_t &mac);
void append_value(std::string &out, const bcm_l2_station_t &station);
void append_value(std::string &out, const bcm_l3_intf_t &intf);
void append_value(std::string &out, const bcm_l3_ingress_t &ingress);
void append_value(std::string &out, const bcm_l3_egress_t &egress);
void append_value(std::string &out, const bcm_l3_egress_ecmp_t &ecmp);
void append_value(std::string &out, const bcm_l3_route_t &route);
void append_value(std::string &out, const bcm_vlan_control_vlan_t &control);
void append_value(std::string &out, const bcm_vlan_block_t &block);
void append_value(std::string &out, const bcm_vlan_action_set_t &action);
void append_value(std::string &out, const bcm_trunk_info_t &info);
void append_value(std::string &out, const bcm_trunk_member_t &member);
void append_value(std::string &out, const fwm_pc_sdb_value_t &value);

// Pointers that name something: lif(0x10000000), tree, node, compare; any
// other is "record". A null pointer is null.
void append_value(std::string &out, const l3lif *lif);
void append_value(std::string &out, const avl_tree_t *tree);
void append_value(std::string &out, const avl_node_t *node);
void append_value(std::string &out, avl_compare_t compare);
void append_value(std::string &out, const void *pointer);
void append_value(std::string &out, std::nullptr_t);

/** A list of ids: [1,2,3]. */
void append_value(std::string &out, std::span<const int> ids);
/** A list of members: [{…},{…}]. */
void append_value(std::string &out, std::span<const bcm_trunk_member_t> members);

template <class T, class... Records>
inline constexpr bool IS_ONE_OF = (std::same_as<T, Records> || ...);

/** A record of the platform, which prints the same through a pointer. */
template <class T>
concept PlatformRecord =
    IS_ONE_OF<T, bcm_pbmp_t, bcm_l2_station_t, bcm_l3_intf_t, bcm_l3_ingress_t, bcm_l3_egress_t,
              bcm_l3_egress_ecmp_t, bcm_l3_route_t, bcm_vlan_control_vlan_t, bcm_vlan_block_t,
              bcm_vlan_action_set_t, bcm_trunk_info_t, bcm_trunk_member_t, fwm_pc_sdb_value_t>;

/** The record behind a pointer, or null. */
template <PlatformRecord Record> void append_value(std::string &out, const Record *record)
{
    if (record == nullptr) {
        append_value(out, nullptr);
    } else {
        append_value(out, *record);
    }
}

/** One value as a text. */
template <class T> std::string format_value(const T &value)
{
    std::string text;
    append_value(text, value);
    return text;
}

/** The arguments of a call, ", " between them: 0, 5, 67, 3. */
template <class... Args> std::string format_arguments(const Args &...args)
{
    std::string text;
    [[maybe_unused]] const auto append = [&text](const auto &value) {
        if (!text.empty()) {
            text += ", ";
        }
        append_value(text, value);
    };
    (append(args), ...);
    return text;
}

/** Adds name=value to a list of outputs, one blank between them: info={…} count=2. */
void append_output(std::string &outputs, std::string_view name, std::string_view value);

} // namespace simswitch
