/*
 * limits.h: the kinds of chip, and how many entries each table has room for.
 */
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace simswitch::chip
{

/** The kind of chip. */
enum class Kind { trident, trident2 };

/** "a Trident" or "a Trident2". */
std::string_view kind_name(Kind kind);

/** Table sizes, in entries. 0 stands for the kind's own size, told as Trident / Trident2. */
struct Limits {
    std::size_t stations = 0;          ///< L2 stations: 512 / 1024
    std::size_t l3_interfaces = 0;     ///< L3 interfaces: 4096 / 8192
    std::size_t l3_ingresses = 0;      ///< L3 ingress objects: 4096 / 8192
    std::size_t vlans = 0;             ///< VLANs: 4095 / 4095
    std::size_t stgs = 0;              ///< spanning tree groups: 256 / 256
    std::size_t vlan_translations = 0; ///< VLAN translations: 16384 / 32768
    std::size_t trunks = 0;            ///< trunks: 128 / 1024
    std::size_t egresses = 0;          ///< egress objects: 16384 / 49152
    std::size_t multipath_groups = 0;  ///< multipath groups: 1024 / 1024
    std::size_t routes = 0;            ///< routes: 16384 / 16384
    std::size_t tunnels = 0;           ///< tunnel initiators: 512 / 512
    std::size_t field_groups = 0;      ///< field groups: 16 / 16
    std::size_t field_entries = 0;     ///< field entries: 2048 / 4096
    std::size_t vxlan_ports = 0;       ///< VXLAN virtual ports: 4096 / 16384
    std::size_t rule_region = 0;       ///< default region of the rule memory, S: 128 / 256

    bool operator==(const Limits &) const = default;
};

/** A table size and its name, "stations". */
struct LimitField {
    const char *name;
    std::size_t Limits::*field;
};

/** All table sizes, in their order. */
std::span<const LimitField> limit_fields();

/** Gives `wanted` with each 0 replaced by the kind's own size. */
Limits sizes_of(Kind kind, Limits wanted = {});

} // namespace simswitch::chip
