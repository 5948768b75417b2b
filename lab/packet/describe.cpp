/*
 * describe.cpp: see describe.h.
 */
#include "packet/describe.h"

#include "packet/objects.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace lab::packet
{

namespace chip = simswitch::chip;
using chip::pipeline::Line;
using chip::pipeline::Mark;
using chip::pipeline::Stage;

namespace
{

std::string port_text(const Names &names, const Line &line)
{
    constexpr std::array<const char *, 4> MODES = {
        "the port discards nothing", "the port discards all frames",
        "the port discards untagged frames", "the port discards tagged frames"};
    const chip::Port port = names.chip().ports.get(number_of(line.id));
    const auto mode = static_cast<std::size_t>(port.discard);
    const std::string tag = line.text.substr(0, line.text.find(','));
    return fmt::format("{}: {}; {}", names.port(number_of(line.id)), tag,
                       mode < MODES.size() ? MODES.at(mode)
                                           : fmt::format("discard mode {}", port.discard));
}

std::string translation_text(const Names &names, const Line &line)
{
    const chip::TranslationKey *key = find_translation(names.chip(), line.id);
    const chip::TranslationAction *action =
        key == nullptr ? nullptr : names.chip().vlan_translations.find(*key);
    if (action == nullptr) {
        return names.put_into(line.text);
    }
    return fmt::format("interface {} ({}), in VLAN {} from here on", action->ingress_if,
                       names.interface(action->ingress_if), action->new_outer_vlan);
}

/** The route in a word: the object that comes next has a line of its own. */
std::string route_text(const Names &names, const Line &line)
{
    const chip::Route *route = find_route(names.chip(), line.id);
    if (route == nullptr || route->multipath) {
        return object_text(names, line.table, line.id);
    }
    return fmt::format("egress {}", route->next_hop);
}

std::string egress_line(const Names &names, const Line &line)
{
    const chip::Egress *egress = names.chip().egresses.find(number_of(line.id));
    std::string where = next_hop_text(names, number_of(line.id));
    if (egress == nullptr || leads_to_cpu(*egress) || where == BLACK_HOLE) {
        return where;
    }
    return fmt::format("{}, MAC {}{}", where, chip::text(egress->mac),
                       egress->vlan == 0 ? "" : fmt::format(", in VLAN {}", egress->vlan));
}

/** "VLAN 100: members {1,2} without {0}" in names, the CPU left out: it isn't flooded to. */
std::string flood_text(const Names &names, const Line &line)
{
    const std::size_t comma = line.text.find(", members ");
    const std::size_t without = line.text.find(" without ");
    if (comma == std::string::npos || without == std::string::npos) {
        return names.put_into(line.text);
    }
    const std::string blocked = line.text.substr(without + std::string_view(" without ").size());
    return names.put_into(
        fmt::format("{}; ports of the VLAN: {}{}", line.text.substr(0, comma),
                    line.text.substr(comma + std::string_view(", members ").size(),
                                     without - comma - std::string_view(", members ").size()),
                    blocked == "{}" ? "" : fmt::format("; blocked: {}", blocked)));
}

std::string bridge_text(const Names &names, const Line &line)
{
    constexpr std::string_view GPORT = "generic port 0x";
    if (!line.text.starts_with(GPORT)) {
        return flood_text(names, line);
    }
    constexpr int HEX = 16;
    int gport = 0;
    std::from_chars(line.text.data() + GPORT.size(), line.text.data() + line.text.size(), gport,
                    HEX);
    return fmt::format("known behind {}{}", names.gport(gport),
                       line.text.ends_with(", static") ? ", written by hand" : "");
}

/** "group 11: frames that aren't L3-routable, from Ethernet0: drop". */
std::string field_text(const Names &names, const Line &line)
{
    const chip::FieldEntry *entry = names.chip().field_entries.find(number_of(line.id));
    if (entry == nullptr || !entry->installed) {
        return "";
    }
    const chip::FieldRule &rule = *entry->installed;
    std::string text = fmt::format("group {}: {}", entry->group,
                                   !rule.l3_routable   ? "all frames"
                                   : *rule.l3_routable ? "L3-routable frames"
                                                       : "frames that aren't L3-routable");
    if (rule.in_ports) {
        chip::PortSet ports = rule.in_ports->data;
        ports &= rule.in_ports->mask;
        text += " from " + names.ports(ports);
    }
    for (const auto &[action, ports] : rule.port_actions) {
        text += action == chip::ACTION_REDIRECT_PORTS
                    ? fmt::format("; redirect to {}", names.ports(ports))
                    : fmt::format("; action {} on {}", action, names.ports(ports));
    }
    for (const int action : rule.actions) {
        text += action == chip::ACTION_DROP ? "; drop" : fmt::format("; action {}", action);
    }
    return text;
}

/** What a stage that found its object said, where that is said better with names. */
std::string hit_text(const Names &names, const Line &line)
{
    switch (line.stage) {
    case Stage::translation:
        return translation_text(names, line);
    case Stage::interface:
        return fmt::format("{}, {}", object_text(names, line.table, line.id),
                           line.text.substr(0, line.text.find(',')));
    case Stage::route:
        return route_text(names, line);
    case Stage::egress:
        return egress_line(names, line);
    case Stage::field:
        return field_text(names, line);
    case Stage::station:
        return object_text(names, line.table, line.id);
    default:
        return "";
    }
}

} // namespace

std::string describe(const Names &names, const Line &line)
{
    if (line.stage == Stage::port) {
        return port_text(names, line);
    }
    if (line.stage == Stage::bridge) {
        return bridge_text(names, line);
    }
    std::string text = line.mark == Mark::hit ? hit_text(names, line) : "";
    if (line.stage == Stage::l3_interface) {
        text = object_text(names, line.table, line.id);
    }
    if (!text.empty()) {
        return text;
    }
    return names.put_into(line.text);
}

std::string describe_nearest(const Names &names, const std::string &nearest)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 7> KINDS = {{
        {"egress ", "egress"},
        {"L3 interface ", "l3_interface"},
        {"ingress interface ", "l3_ingress"},
        {"group ", "multipath_group"},
        {"trunk ", "trunk"},
        {"station ", "station"},
        {"route ", "route"},
    }};
    constexpr std::string_view TRANSLATION = "translation ";
    if (nearest.starts_with(TRANSLATION)) {
        const auto *key = find_translation(names.chip(), nearest.substr(TRANSLATION.size()));
        return key == nullptr ? nearest : fmt::format("{}{}", TRANSLATION, key_text(names, *key));
    }
    const std::size_t open = nearest.find(" (");
    const std::size_t close = nearest.rfind(')');
    for (const auto &[kind, table] : KINDS) {
        if (!nearest.starts_with(kind) || open == std::string::npos || close < open) {
            continue;
        }
        const std::string id = nearest.substr(kind.size(), open - kind.size());
        const std::string text = object_text(names, table, id);
        return text.empty() ? names.put_into(nearest)
                            : fmt::format("{}{} ({}){}", kind, id, text, nearest.substr(close + 1));
    }
    return names.put_into(nearest);
}

std::string shown_id(const Names &names, const Line &line)
{
    if (line.table == "vlan_translation") {
        // "gport 0x8000002 type 8 outer 10 inner 65535"
        const auto *key = find_translation(names.chip(), line.id);
        if (key != nullptr) {
            return key_text(names, *key);
        }
        const std::size_t outer = line.id.find("outer ");
        const std::size_t end = line.id.find(' ', outer + 6);
        return outer == std::string::npos
                   ? line.id
                   : fmt::format("VLAN {}", line.id.substr(outer + 6, end - outer - 6));
    }
    return line.id;
}

} // namespace lab::packet
