/*
 * l2_tables.cpp: ports, trunks, VLANs, stations, VLAN translations.
 */
#include "session/tables.h"

#include "rtifhal_data.h"
#include "sdk/convert.h"
#include "services/ifindex.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cstddef>
#include <utility>

namespace lab::session
{

namespace
{

namespace chip = simswitch::chip;

// Controls of a port that are fields of its row.
constexpr std::array<std::pair<std::string_view, int>, 5> PORT_CONTROLS = {{
    {"IPV4", chip::PORT_CONTROL_IP4},
    {"IPV4-MULTICAST", chip::PORT_CONTROL_IP4_MC},
    {"IPV6", chip::PORT_CONTROL_IP6},
    {"IPV6-MULTICAST", chip::PORT_CONTROL_IP6_MC},
    {"MPLS", chip::PORT_CONTROL_MPLS},
}};
// The same in the column that tells which of them are on.
constexpr std::array<std::string_view, PORT_CONTROLS.size()> ROUTES = {"ipv4", "ipv4-mc", "ipv6",
                                                                       "ipv6-mc", "mpls"};

/** What a port routes: the controls that are on. */
std::string routes_of(const chip::Chip &chip, int port)
{
    std::vector<std::string_view> on;
    for (std::size_t i = 0; i < PORT_CONTROLS.size(); ++i) {
        if (chip.ports.control(port, PORT_CONTROLS[i].second) != 0) {
            on.push_back(ROUTES[i]);
        }
    }
    return fmt::format("{}", fmt::join(on, " "));
}

/** The VLANs of each port, by the port's number. */
std::vector<std::vector<int>> vlans_by_port(const chip::Chip &chip)
{
    std::vector<std::vector<int>> vlans(chip::LAST_PORT + 1);
    for (const auto &[id, vlan] : chip.vlans.all()) {
        for (int port = 0; port <= chip::LAST_PORT; ++port) {
            if (vlan.members.has(port)) {
                vlans[static_cast<std::size_t>(port)].push_back(id);
            }
        }
    }
    return vlans;
}

/** Whose station it is, and why. */
struct Owner {
    std::string name;
    std::string_view role;
};

/** The owners of the stations that the library or the layer above knows of. */
std::map<int, Owner> station_owners(const Scene &scene)
{
    std::map<int, Owner> owners;
    for (const auto &[station, mac] : scene.router_macs) {
        owners[station] = {"", "router MAC"};
    }
    for (void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto *entry = static_cast<const fhrp_mac_entry *>(record);
        const auto owner = scene.ifindexes.find(entry->ifindex);
        const auto parts = simswitch::if_index::parts(entry->ifindex);
        // A primary's SVI has its virtual MACs in the secondaries too.
        const bool mirrored =
            parts && parts->kind == simswitch::if_index::Kind::svi && parts->number != entry->vlan;
        owners[static_cast<int>(entry->station_id)] = {
            owner == scene.ifindexes.end() ? "" : owner->second,
            mirrored ? "mirrored" : "virtual MAC"};
    }
    return owners;
}

} // namespace

Table port_table(const Scene &scene)
{
    Table table{"ports",
                "port",
                {{"PORT", true},
                 {"NAME"},
                 {"UNTAGGED", true},
                 {"INTERFACE"},
                 {"ROUTES"},
                 {"VLANS"},
                 {"IIF", true, false},
                 {"DISCARD", true, false}},
                {},
                scene.port_names()};
    for (const auto &[title, control] : PORT_CONTROLS) {
        table.columns.push_back({title, true, false});
    }
    const chip::Chip &chip = scene.hardware.chip;
    const auto vlans = vlans_by_port(chip);
    const auto touched = chip.ports.all();
    for (int number = 0; number <= chip::LAST_PORT; ++number) {
        const chip::Port port = chip.ports.get(number);
        const int iif = chip.ports.control(number, chip::PORT_CONTROL_INGRESS);
        Row row{{fmt::to_string(number)},
                {fmt::to_string(number), number == 0 ? "CPU" : Scene::name(scene.ports, number),
                 fmt::to_string(port.untagged_vlan), scene.iif_text(iif), routes_of(chip, number),
                 number_list(vlans[static_cast<std::size_t>(number)]), fmt::to_string(iif),
                 fmt::to_string(port.discard)}};
        for (const auto &[title, control] : PORT_CONTROLS) {
            row.cells.push_back(fmt::to_string(chip.ports.control(number, control)));
        }
        if (!row.cells[1].empty()) {
            row.keys.push_back(row.cells[1]);
        }
        row.shown = touched.contains(number) || scene.ports.contains(number);
        table.rows.push_back(std::move(row));
    }
    return table;
}

Table trunk_table(const Scene &scene)
{
    Table table{
        "trunks",
        "trunk",
        {{"TRUNK", true}, {"NAME"}, {"CRITERION", true}, {"SIZE", true}, {"FLAGS"}, {"MEMBERS"}},
        {},
        {}};
    for (const auto &[number, name] : scene.trunks) {
        table.known_keys.push_back(name);
    }
    for (const auto &[number, trunk] : scene.hardware.chip.trunks.all()) {
        const std::string name = Scene::name(scene.trunks, number);
        std::vector<std::string> members;
        for (const chip::TrunkMember &member : trunk.members) {
            members.push_back(scene.gport_text(member.gport));
        }
        Row row{{fmt::to_string(number)},
                {fmt::to_string(number), name, fmt::to_string(trunk.psc),
                 fmt::to_string(trunk.dynamic_size), hex(trunk.flags),
                 fmt::format("{}", fmt::join(members, ","))}};
        table.add(std::move(row), name);
    }
    return table;
}

Table vlan_table(const Scene &scene)
{
    Table table{"VLANs",
                "vlan",
                {{"VLAN", true},
                 {"NAME"},
                 {"STG", true},
                 {"PORTS"},
                 {"UNTAGGED"},
                 {"INTERFACE"},
                 {"VRF", true},
                 {"URPF", true},
                 {"FLAGS"},
                 {"CLASS"},
                 {"IIF", true, false},
                 {"KMC", false, false},
                 {"UMC", false, false},
                 {"UUC", false, false},
                 {"BC", false, false},
                 {"COUNTED", false, false},
                 {"SVI", true, false},
                 {"L2", true, false}},
                {},
                {}};
    for (const auto &[number, name] : scene.vlans) {
        table.known_keys.push_back(name);
    }
    for (const auto &[number, vlan] : scene.hardware.chip.vlans.all()) {
        const std::string name = Scene::name(scene.vlans, number);
        const chip::VlanControls &controls = vlan.controls;
        const rtifhal_vlan_type_count_entry_t &uses = rtifhal_vlan_type_count[number];
        Row row{{fmt::to_string(number)},
                {fmt::to_string(number), name, fmt::to_string(vlan.stg), port_list(vlan.members),
                 port_list(vlan.untagged), scene.iif_text(static_cast<int>(controls.ingress_if)),
                 fmt::to_string(controls.vrf), fmt::to_string(controls.urpf_mode),
                 hex(controls.flags), hex(controls.intf_class), fmt::to_string(controls.ingress_if),
                 port_list(vlan.blocks.known_multicast), port_list(vlan.blocks.unknown_multicast),
                 port_list(vlan.blocks.unknown_unicast), port_list(vlan.blocks.broadcast),
                 port_list(simswitch::sdk::to_chip(uses.l3pbmp)), fmt::to_string(uses.svi),
                 fmt::to_string(uses.l2_vlan)}};
        table.add(std::move(row), name);
    }
    return table;
}

Table station_table(const Scene &scene)
{
    Table table{
        "stations",
        "station",
        {{"STATION", true}, {"MAC"}, {"VLAN", true}, {"PORT"}, {"FLAGS"}, {"OWNER"}, {"ROLE"}},
        {},
        scene.interface_names()};
    const auto owners = station_owners(scene);
    for (const auto &[number, station] : scene.hardware.chip.stations.all()) {
        const auto owner = owners.find(number);
        const bool known = owner != owners.end();
        Row row{{fmt::to_string(number), chip::text(station.mac)},
                {fmt::to_string(number), chip::text(station.mac),
                 station.vlan_mask == 0 ? "" : fmt::to_string(station.vlan),
                 station.src_port_mask == 0 ? "" : scene.port_text(station.src_port),
                 hex(station.flags), known ? owner->second.name : "",
                 known ? std::string(owner->second.role) : ""}};
        table.add(std::move(row), known ? owner->second.name : "");
    }
    return table;
}

Table translation_table(const Scene &scene)
{
    Table table{"VLAN translations",
                "xlate",
                {{"ON"}, {"VLAN", true}, {"NEW-VLAN", true}, {"IIF", true}, {"INTERFACE"}},
                {},
                scene.interface_names()};
    for (const auto &[key, action] : scene.hardware.chip.vlan_translations.all()) {
        const std::string name = Scene::name(scene.iifs, action.ingress_if);
        const std::string on = scene.gport_text(key.gport);
        Row row{{fmt::format("{}.{}", on, key.outer_vlan)},
                {on, fmt::to_string(key.outer_vlan), fmt::to_string(action.new_outer_vlan),
                 fmt::to_string(action.ingress_if), name}};
        if (!name.empty() && name != row.keys.front()) {
            row.keys.push_back(name);
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

} // namespace lab::session
