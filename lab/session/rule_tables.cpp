/*
 * rule_tables.cpp: the field processor and the chip's controls, what all kinds
 * of table share, and the list of them.
 */
#include "session/tables.h"

#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>

namespace lab::session
{

namespace
{

namespace chip = simswitch::chip;

constexpr std::array TABLE_KINDS = {
    TableKind{"interfaces", "interface", interface_table},
    TableKind{"stations", "station", station_table},
    TableKind{"vlans", "vlan", vlan_table},
    TableKind{"ports", "port", port_table},
    TableKind{"trunks", "trunk", trunk_table},
    TableKind{"iif", "iif", iif_table},
    TableKind{"xlate", "xlate", translation_table},
    TableKind{"ingress", "ingress", ingress_table},
    TableKind{"egress", "egress", egress_table},
    TableKind{"routes", "route", route_table},
    TableKind{"field", "field-group", field_group_table},
    TableKind{"field", "field-entry", field_entry_table},
    TableKind{"switch", "switch", switch_table},
};

} // namespace

std::span<const TableKind> table_kinds()
{
    return TABLE_KINDS;
}

Table field_group_table(const Scene &scene)
{
    Table table{"field groups",
                "field-group",
                {{"GROUP", true}, {"STATE"}, {"PRIORITY", true}, {"QUALIFIERS"}},
                {},
                {}};
    for (const auto &[id, group] : scene.hardware.chip.field_groups.all()) {
        table.rows.push_back(
            {{fmt::to_string(id)},
             {fmt::to_string(id), group.enabled ? "on" : "off", fmt::to_string(group.priority),
              fmt::format("{}", fmt::join(group.qualifiers, ","))}});
    }
    return table;
}

Table field_entry_table(const Scene &scene)
{
    Table table{"field entries",
                "field-entry",
                {{"ENTRY", true}, {"GROUP", true}, {"INSTALLED"}, {"COPY"}},
                {},
                {}};
    for (const auto &[id, entry] : scene.hardware.chip.field_entries.all()) {
        const bool same = entry.installed == entry.copy;
        table.rows.push_back({{fmt::to_string(id)},
                              {fmt::to_string(id), fmt::to_string(entry.group),
                               entry.installed ? chip::text(*entry.installed) : "",
                               same ? "the same" : chip::text(entry.copy)}});
    }
    return table;
}

Table switch_table(const Scene &scene)
{
    Table table{"switch controls", "switch", {{"CONTROL", true}, {"VALUE", true}}, {}, {}};
    for (const auto &[control, value] : scene.hardware.chip.switch_controls.all()) {
        table.rows.push_back(
            {{fmt::to_string(control)}, {fmt::to_string(control), fmt::to_string(value)}});
    }
    return table;
}

std::string hex(std::uint32_t value)
{
    return fmt::format("{:#x}", value);
}

std::string unless_zero(int value)
{
    return value == 0 ? "" : fmt::to_string(value);
}

std::string number_list(const std::vector<int> &numbers)
{
    return numbers.empty() ? "" : report::port_list(numbers);
}

std::string port_list(const simswitch::chip::PortSet &ports)
{
    const std::string braced = ports.text();
    return braced.substr(1, braced.size() - 2);
}

} // namespace lab::session
