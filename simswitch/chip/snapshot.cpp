/*
 * snapshot.cpp: what a chip holds, as lines of text.
 */
#include "chip/snapshot.h"

#include "chip/chip.h"

#include <fmt/format.h>
#include <unordered_set>

namespace simswitch::chip
{

namespace
{

std::string key_text(int id)
{
    return std::to_string(id);
}
std::string key_text(const TranslationKey &key)
{
    return text(key);
}
std::string key_text(const RouteKey &key)
{
    return text(key);
}
std::string value_text(int value)
{
    return std::to_string(value);
}
template <class Record> std::string value_text(const Record &record)
{
    return text(record);
}

template <class Records> void list(Snapshot &lines, std::string_view kind, const Records &records)
{
    for (const auto &[key, record] : records) {
        lines.push_back(fmt::format("{} {}: {}", kind, key_text(key), value_text(record)));
    }
}

void list_missing(const Snapshot &lines, const Snapshot &others, std::string_view sign,
                  std::vector<std::string> &out)
{
    const std::unordered_set<std::string_view> known(others.begin(), others.end());
    for (const std::string &line : lines) {
        if (!known.contains(line)) {
            out.push_back(fmt::format("{} {}", sign, line));
        }
    }
}

} // namespace

Snapshot snapshot(const Chip &chip)
{
    Snapshot lines;
    list(lines, "station", chip.stations.all());
    list(lines, "L3 interface", chip.l3_interfaces.all());
    list(lines, "L3 ingress", chip.l3_ingresses.all());
    list(lines, "VLAN", chip.vlans.all());
    list(lines, "STG", chip.stgs.all());
    list(lines, "port", chip.ports.all());
    list(lines, "VLAN translation", chip.vlan_translations.all());
    list(lines, "trunk", chip.trunks.all());
    list(lines, "egress", chip.egresses.all());
    list(lines, "multipath group", chip.multipath_groups.all());
    list(lines, "route", chip.routes.all());
    list(lines, "field group", chip.field_groups.all());
    list(lines, "field entry", chip.field_entries.all());
    list(lines, "switch control", chip.switch_controls.all());
    list(lines, "tunnel of L3 interface", chip.tunnels.all());
    list(lines, "VXLAN port", chip.vxlan_ports.all());
    return lines;
}

std::vector<std::string> changes(const Snapshot &before, const Snapshot &after)
{
    std::vector<std::string> out;
    list_missing(before, after, "-", out);
    list_missing(after, before, "+", out);
    return out;
}

bool same_state(const Chip &one, const Chip &other)
{
    auto same = [&](auto table) { return (one.*table).all() == (other.*table).all(); };
    return same(&Chip::stations) && same(&Chip::l3_interfaces) && same(&Chip::l3_ingresses) &&
           same(&Chip::vlans) && same(&Chip::stgs) && same(&Chip::ports) &&
           same(&Chip::vlan_translations) && same(&Chip::trunks) && same(&Chip::egresses) &&
           same(&Chip::multipath_groups) && same(&Chip::routes) && same(&Chip::field_groups) &&
           same(&Chip::field_entries) && same(&Chip::switch_controls) && same(&Chip::tunnels) &&
           same(&Chip::vxlan_ports);
}

} // namespace simswitch::chip
