/*
 * facts.cpp: see facts.h.
 */
#include "model/facts.h"

#include "l3lif/interface_numbers.h"
#include "rtifhal_data.h"
#include "session/tables.h"

#include "sdk/convert.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace model_test
{

namespace
{

namespace chip = simswitch::chip;
using lab::l3lif::is_set;
using lab::session::Scene;

std::set<int> ports_of(const chip::PortSet &ports)
{
    std::set<int> numbers;
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (ports.has(port)) {
            numbers.insert(port);
        }
    }
    return numbers;
}

void add_interfaces(const Scene &scene, Facts &facts)
{
    for (const auto &interface : scene.interfaces) {
        const std::string key = "interface " + interface.name;
        // The model doesn't follow what the ingress object lets in.
        facts[key + " state"] = interface.state == "stopped" ? "up" : interface.state;
        facts[key + " iif"] = interface.view.iif == 0 ? "" : fmt::to_string(interface.view.iif);
    }
}

void add_vlans(const chip::Chip &chip, Facts &facts)
{
    for (int id = chip::DEFAULT_VLAN + 1; id <= chip::LAST_VLAN; ++id) {
        const auto &uses = rtifhal_vlan_type_count[id];
        const chip::Vlan *vlan = chip.vlans.find(id);
        if (vlan == nullptr && uses.subint_count == 0 && uses.svi == 0 && uses.l2_vlan == 0) {
            continue;
        }
        const std::set<int> counted = ports_of(simswitch::sdk::to_chip(uses.l3pbmp));
        const std::string key = fmt::format("vlan {} ", id);
        if (static_cast<int>(counted.size()) != uses.subint_count) {
            facts["# " + key + "counts"] = fmt::to_string(uses.subint_count);
        }
        if (vlan != nullptr) {
            facts[key + "count"] = "1";
            facts[key + "ports"] = list_text(ports_of(vlan->members));
        }
        facts[key + "counted"] = list_text(counted);
        facts[key + "svi"] = fmt::to_string(uses.svi);
        facts[key + "l2"] = fmt::to_string(uses.l2_vlan);
    }
}

void add_ports(Facts &facts)
{
    for (int port = 1; port <= chip::LAST_FRONT_PORT; ++port) {
        std::set<int> vlans;
        int first = 0;
        for (const unsigned byte : rtifhal_port_vlan[port].vlan_bitmap) {
            for (int bit = 0; byte != 0 && bit < 8; ++bit) {
                if ((byte & (0x80U >> static_cast<unsigned>(bit))) != 0) {
                    vlans.insert(first + bit);
                }
            }
            first += 8;
        }
        if (!vlans.empty()) {
            facts[fmt::format("# VLANs that port {} holds", port)] = list_text(vlans);
        }
    }
}

void add_trunks(const Scene &scene, Facts &facts)
{
    for (const auto &[number, trunk] : scene.hardware.chip.trunks.all()) {
        std::vector<std::string> members;
        for (const chip::TrunkMember &member : trunk.members) {
            members.push_back(scene.gport_text(member.gport));
        }
        facts[fmt::format("trunk {} members", number)] = fmt::format("{}", fmt::join(members, ","));
    }
}

/** The places of all stations, by MAC. */
std::map<std::string, std::multiset<std::string>> all_places(const chip::Chip &chip)
{
    std::map<std::string, std::multiset<std::string>> places;
    for (const auto &[id, station] : chip.stations.all()) {
        const std::string vlan = station.vlan_mask == 0 ? "any" : fmt::to_string(station.vlan);
        const std::string port =
            station.src_port_mask == 0 ? "any" : fmt::to_string(station.src_port);
        places[chip::text(station.mac)].insert(fmt::format("{}/{}", vlan, port));
    }
    return places;
}

void add_stations(const chip::Chip &chip, Facts &facts)
{
    for (const auto &[mac, of_it] : all_places(chip)) {
        facts[fmt::format("station {} count", mac)] = fmt::to_string(of_it.size());
        facts[fmt::format("# VLAN and port of the stations of {}", mac)] =
            fmt::format("{}", fmt::join(of_it, " "));
    }
}

/** The number that the library has for an interface, kept or in use; 0 for none. */
int owned_number(const lab::l3lif::Interface &interface)
{
    const ::l3lif *record = interface.lif->record();
    if (record->l3lif_pd_ctxt == nullptr || record->l3lif_pd_ctxt->l3_pd == nullptr) {
        return 0;
    }
    const l3_pd &hardware = *record->l3lif_pd_ctxt->l3_pd;
    return hardware.brcm_prog_complete != 0 ? hardware.prev_l3_if_index : hardware.l3intf_id;
}

} // namespace

std::string Difference::line() const
{
    if (key.starts_with("# ")) {
        return fmt::format("{}: expected {}, seen {}", key, expected, seen);
    }
    return fmt::format("expect {} = {}  # seen {}", key, expected.empty() ? "-" : expected,
                       seen.empty() ? "-" : seen);
}

std::vector<Difference> differences(const Facts &expected, const Facts &seen)
{
    std::set<std::string> keys;
    for (const auto &side : {&expected, &seen}) {
        for (const auto &[key, value] : *side) {
            keys.insert(key);
        }
    }
    const auto value = [](const Facts &facts, const std::string &key) {
        const auto found = facts.find(key);
        return found == facts.end() ? std::string() : found->second;
    };
    std::vector<Difference> all;
    for (const std::string &key : keys) {
        Difference one{key, value(expected, key), value(seen, key)};
        if (one.expected != one.seen) {
            all.push_back(std::move(one));
        }
    }
    std::stable_partition(all.begin(), all.end(),
                          [](const Difference &one) { return one.key[0] != '#'; });
    return all;
}

std::string list_text(const std::set<int> &numbers)
{
    return lab::session::number_list({numbers.begin(), numbers.end()});
}

std::multiset<std::string> station_places(const chip::Chip &chip, const std::string &mac)
{
    return all_places(chip)[mac];
}

std::map<std::string, int> owned_numbers(const lab::session::State &state)
{
    std::map<std::string, int> numbers;
    for (const auto &interface : state.layer.interfaces()) {
        numbers[interface->lif->plan().name] = owned_number(*interface);
    }
    return numbers;
}

std::set<int> numbers_held_back()
{
    std::set<int> numbers;
    for (int number = 0; number <= chip::LAST_IIF; ++number) {
        if (is_set(l3lif_l3iif_table_preserve, number)) {
            numbers.insert(number);
        }
    }
    return numbers;
}

std::set<int> numbers_lost(const lab::session::State &state)
{
    constexpr int RESERVED = 3584;
    constexpr int RESERVED_TRIDENT2 = 7680;
    const bool is_trident2 = state.hardware.chip.kind() == chip::Kind::trident2;
    std::set<int> lost;
    for (int number = lab::l3lif::FIRST_IIF; number < (is_trident2 ? RESERVED_TRIDENT2 : RESERVED);
         ++number) {
        if (is_set(l3lif_l3iif_table, number) && !is_set(l3lif_l3iif_table_preserve, number)) {
            lost.insert(number);
        }
    }
    for (const auto &[name, number] : owned_numbers(state)) {
        lost.erase(number);
    }
    return lost;
}

Facts seen(const lab::session::State &state)
{
    const Scene scene = state.scene();
    Facts facts;
    add_interfaces(scene, facts);
    add_vlans(state.hardware.chip, facts);
    add_ports(facts);
    add_trunks(scene, facts);
    add_stations(state.hardware.chip, facts);
    facts["# numbers held back"] = list_text(numbers_held_back());
    facts["# numbers taken by nobody"] = list_text(numbers_lost(state));
    return facts;
}

} // namespace model_test
