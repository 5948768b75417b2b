/*
 * rule_tables.cpp: the field processor and the chip's controls, what all kinds
 * of table share, and the list of them.
 */
#include "session/tables.h"

#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <set>
#include <string>
#include <vector>

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
    TableKind{"neighbors", "neighbor", neighbor_table},
    TableKind{"vxlan", "vxlan", vxlan_table},
    TableKind{"field", "field-group", field_group_table},
    TableKind{"field", "field-entry", field_entry_table},
    TableKind{"switch", "switch", switch_table},
    TableKind{"packet", "packet", packet_table},
};

/** The qualifiers of a group in words. */
std::string meaning_of(const std::set<int> &qualifiers)
{
    std::vector<std::string> words;
    words.reserve(qualifiers.size());
    for (const int qualifier : qualifiers) {
        words.push_back(qualifier == chip::QUALIFIER_IN_PORTS      ? "in-ports"
                        : qualifier == chip::QUALIFIER_L3_ROUTABLE ? "L3-routable"
                                                                   : fmt::to_string(qualifier));
    }
    return fmt::format("{}", fmt::join(words, ","));
}

/** What a rule does, in words: "drop", "redirect 1-104", "action 7". */
std::string actions_of(const chip::FieldRule &rule)
{
    std::vector<std::string> words;
    for (const auto &[action, ports] : rule.port_actions) {
        const std::string name =
            action == chip::ACTION_REDIRECT_PORTS ? "redirect" : fmt::format("action {}", action);
        words.push_back(fmt::format("{} {}", name, port_list(ports)));
    }
    for (const int action : rule.actions) {
        words.push_back(action == chip::ACTION_DROP ? "drop" : fmt::format("action {}", action));
    }
    return fmt::format("{}", fmt::join(words, "; "));
}

} // namespace

std::span<const TableKind> table_kinds()
{
    return TABLE_KINDS;
}

Table field_group_table(const Scene &scene)
{
    Table table{"field groups",
                "field-group",
                {{"GROUP", true}, {"STATE"}, {"PRIORITY", true}, {"QUALIFIERS"}, {"MEANING"}},
                {},
                {}};
    for (const auto &[id, group] : scene.hardware.chip.field_groups.all()) {
        table.rows.push_back(
            {{fmt::to_string(id)},
             {fmt::to_string(id), group.enabled ? "on" : "off", fmt::to_string(group.priority),
              fmt::format("{}", fmt::join(group.qualifiers, ",")), meaning_of(group.qualifiers)}});
    }
    return table;
}

Table field_entry_table(const Scene &scene)
{
    Table table{"field entries",
                "field-entry",
                {{"ENTRY", true},
                 {"GROUP", true},
                 {"STATE"},
                 {"IN-PORTS"},
                 {"IN-MASK"},
                 {"L3-ROUTABLE"},
                 {"ACTIONS"},
                 {"COPY"},
                 {"INSTALLED", false, false}},
                {},
                {}};
    for (const auto &[id, entry] : scene.hardware.chip.field_entries.all()) {
        const bool same = entry.installed == entry.copy;
        // One that the chip doesn't go by yet shows what it is to become.
        const chip::FieldRule &rule = entry.installed ? *entry.installed : entry.copy;
        table.rows.push_back({{fmt::to_string(id)},
                              {fmt::to_string(id), fmt::to_string(entry.group),
                               entry.installed ? "installed" : "not installed",
                               rule.in_ports ? port_list(rule.in_ports->data) : "",
                               rule.in_ports ? port_list(rule.in_ports->mask) : "",
                               rule.l3_routable ? (*rule.l3_routable ? "1" : "0") : "",
                               actions_of(rule), same ? "the same" : chip::text(entry.copy),
                               entry.installed ? chip::text(*entry.installed) : ""}});
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
