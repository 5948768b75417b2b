/*
 * limits.cpp: the sizes of each kind of chip.
 */
#include "chip/limits.h"

namespace simswitch::chip
{

namespace
{

constexpr Limits TRIDENT = {
    .stations = 512,
    .l3_interfaces = 4096,
    .l3_ingresses = 4096,
    .vlans = 4095,
    .stgs = 256,
    .vlan_translations = 16384,
    .trunks = 128,
    .egresses = 16384,
    .multipath_groups = 1024,
    .routes = 16384,
    .tunnels = 512,
    .field_groups = 16,
    .field_entries = 2048,
    .vxlan_ports = 4096,
    .rule_region = 128,
};

constexpr Limits TRIDENT2 = {
    .stations = 1024,
    .l3_interfaces = 8192,
    .l3_ingresses = 8192,
    .vlans = 4095,
    .stgs = 256,
    .vlan_translations = 32768,
    .trunks = 1024,
    .egresses = 49152,
    .multipath_groups = 1024,
    .routes = 16384,
    .tunnels = 512,
    .field_groups = 16,
    .field_entries = 4096,
    .vxlan_ports = 16384,
    .rule_region = 256,
};

constexpr LimitField FIELDS[] = {
    {"stations", &Limits::stations},
    {"l3_interfaces", &Limits::l3_interfaces},
    {"l3_ingresses", &Limits::l3_ingresses},
    {"vlans", &Limits::vlans},
    {"stgs", &Limits::stgs},
    {"vlan_translations", &Limits::vlan_translations},
    {"trunks", &Limits::trunks},
    {"egresses", &Limits::egresses},
    {"multipath_groups", &Limits::multipath_groups},
    {"routes", &Limits::routes},
    {"tunnels", &Limits::tunnels},
    {"field_groups", &Limits::field_groups},
    {"field_entries", &Limits::field_entries},
    {"vxlan_ports", &Limits::vxlan_ports},
    {"rule_region", &Limits::rule_region},
};

} // namespace

std::span<const LimitField> limit_fields()
{
    return FIELDS;
}

std::string_view kind_name(Kind kind)
{
    return kind == Kind::trident2 ? "a Trident2" : "a Trident";
}

Limits sizes_of(Kind kind, Limits wanted)
{
    const Limits &own = kind == Kind::trident2 ? TRIDENT2 : TRIDENT;
    for (const auto &[name, field] : limit_fields()) {
        if (wanted.*field == 0) {
            wanted.*field = own.*field;
        }
    }
    return wanted;
}

} // namespace simswitch::chip
