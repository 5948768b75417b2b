/*
 * l2_subjects.cpp: what the number of a VLAN, a station and a port stands for.
 */
#include "explain/explain.h"

#include "config/names.h"
#include "explain/book.h"
#include "explain/kept.h"
#include "packet/objects.h"
#include "packet/owners.h"

#include "chip/pipeline/numbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

namespace lab::explain
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;

namespace
{

std::string role_text(config::VlanRole role)
{
    switch (role) {
    case config::VlanRole::primary:
        return ", a primary";
    case config::VlanRole::secondary:
        return ", a secondary";
    case config::VlanRole::none:
        break;
    }
    return "";
}

std::string vlan_title(const session::State &state, int id)
{
    if (id == config::VLAN_OF_ROUTED_PORTS) {
        return fmt::format("VLAN {}: the VLAN of all routed ports and subinterfaces", id);
    }
    if (state.config) {
        for (const auto &[name, vlan] : state.config->vlans) {
            if (vlan.id == id) {
                return fmt::format("VLAN {}: {}{}", id, name, role_text(vlan.role));
            }
        }
    }
    return fmt::format("VLAN {}: {}", id,
                       id == chip::DEFAULT_VLAN ? "the default VLAN, there from power-on"
                                                : "not the configuration's");
}

std::string routing_text(const packet::Names &names, const chip::VlanControls &controls)
{
    if (controls.ingress_if == 0) {
        return "its controls name no interface";
    }
    std::string text = fmt::format("routed as interface {} ({}), VRF {}", controls.ingress_if,
                                   names.interface(static_cast<int>(controls.ingress_if)),
                                   names.vrf(static_cast<int>(controls.vrf)));
    for (const auto &[flag, what] : {std::pair{pipeline::VLAN_IP4_OFF, ", IPv4 off"},
                                     {pipeline::VLAN_IP6_OFF, ", IPv6 off"},
                                     {pipeline::VLAN_MPLS_OFF, ", MPLS off"}}) {
        text += (controls.flags & flag) != 0 ? what : "";
    }
    if (names.chip().l3_ingresses.find(static_cast<int>(controls.ingress_if)) == nullptr) {
        text += ", of which there is no ingress object";
    }
    return text;
}

void vlan_objects(Book &book, int id, const chip::Vlan &vlan)
{
    const std::string number = fmt::to_string(id);
    book.entry("VLAN", "vlan", number, number,
               fmt::format("{}, class {}, spanning tree group {}",
                           routing_text(book.names(), vlan.controls), vlan.controls.intf_class,
                           vlan.stg));
    book.say("members", "", book.names().ports(vlan.members));
    book.say("untagged", "", book.names().ports(vlan.untagged));
    const chip::VlanBlocks &blocks = vlan.blocks;
    for (const auto &[ports, what] : {std::pair{blocks.known_multicast, "known multicast"},
                                      {blocks.unknown_multicast, "unknown multicast"},
                                      {blocks.unknown_unicast, "unknown unicast"},
                                      {blocks.broadcast, "broadcast"}}) {
        if (!ports.empty()) {
            book.say("flood block", "", fmt::format("{}: {}", what, book.names().ports(ports)));
        }
    }
}

std::string_view standing_text(const session::Scene &scene, const l3lif::Interface &interface)
{
    const std::string &name = interface.lif->plan().name;
    const auto seen = std::ranges::find(scene.interfaces, name, &session::SceneInterface::name);
    return seen == scene.interfaces.end() ? "down" : seen->state;
}

/** Interfaces, pairs and the VLAN itself, as the layer above has them. */
void vlan_holders(Book &book, int id)
{
    const session::State &state = book.state();
    const session::Scene scene = state.scene();
    for (const auto &interface : state.layer.interfaces()) {
        const l3lif::LifPlan &plan = interface->lif->plan();
        const bool is_its =
            plan.kind == config::Kind::svi || plan.kind == config::Kind::subinterface;
        if (is_its && plan.vlan == id) {
            book.say("interface", "",
                     fmt::format("{}, {}, {}", plan.name, config::kind_name(plan.kind),
                                 standing_text(scene, *interface)));
        }
    }
    for (const l3lif::PairPlan &pair : packet::pairs_of(state)) {
        if (pair.primary == id || pair.secondary == id) {
            book.say("private VLAN", "",
                     fmt::format("primary {}, secondary {}", pair.primary, pair.secondary));
        }
    }
}

void vlan_dependents(Book &book, int id)
{
    const chip::Chip &chip = book.chip();
    for (const auto &[number, object] : chip.l3_interfaces.all()) {
        if (object.vlan == id) {
            book.object("L3 interface", "l3_interface", fmt::to_string(number));
        }
    }
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        if (key.outer_vlan == id || action.new_outer_vlan == id) {
            book.translation(key, action);
        }
    }
    for (const auto &[number, station] : chip.stations.all()) {
        if (station.vlan_mask != 0 && station.vlan == id) {
            book.object("station", "station", fmt::to_string(number));
        }
    }
    for (const auto &[number, egress] : chip.egresses.all()) {
        if (egress.vlan == id) {
            book.object("egress", "egress", fmt::to_string(number));
        }
    }
    for (const auto &[number, port] : chip.ports.all()) {
        if (port.untagged_vlan == id && id != chip::DEFAULT_VLAN) {
            book.port(number);
        }
    }
}

/** The interfaces whose packets a station takes. */
void station_dependents(Book &book, const chip::Station &station, const std::string &owner)
{
    const chip::Chip &chip = book.chip();
    for (const auto &[iif, object] : chip.l3_interfaces.all()) {
        if (object.mac == station.mac && station.vlan_mask == 0) {
            book.entry("L3 interface", "l3_interface", fmt::to_string(iif), fmt::to_string(iif),
                       fmt::format("{} has its MAC", book.names().interface(iif)));
        }
    }
    if (station.vlan_mask != 0) {
        const chip::Vlan *vlan = chip.vlans.find(station.vlan);
        if (vlan != nullptr) {
            book.entry("VLAN", "vlan", fmt::to_string(station.vlan), fmt::to_string(station.vlan),
                       routing_text(book.names(), vlan->controls));
        }
    }
    for (const routing::OwnAddress &own : addresses_of(book.state(), owner)) {
        if (own.mac == station.mac && !owner.empty()) {
            book.say("address", "", own.prefix.address.text());
        }
    }
}

std::string port_controls(const chip::Chip &chip, int number)
{
    std::string text;
    for (const auto &[control, what] : {std::pair{chip::PORT_CONTROL_IP4, "IPv4"},
                                        {chip::PORT_CONTROL_IP6, "IPv6"},
                                        {chip::PORT_CONTROL_IP4_MC, "IPv4 multicast"},
                                        {chip::PORT_CONTROL_IP6_MC, "IPv6 multicast"},
                                        {chip::PORT_CONTROL_MPLS, "MPLS"},
                                        {chip::PORT_CONTROL_VXLAN, "VXLAN"}}) {
        if (chip.ports.control(number, control) != 0) {
            text += text.empty() ? what : std::string(", ") + what;
        }
    }
    return text.empty() ? "none" : text;
}

bool is_port_gport(int gport, int number)
{
    return chip::gport_kind(gport) == chip::GPORT_MODULE_PORT &&
           (gport & pipeline::GPORT_PORT_BITS) == number;
}

/** The trunks that a port is a member of. */
std::set<int> trunks_of(const chip::Chip &chip, int number)
{
    std::set<int> trunks;
    for (const auto &[id, trunk] : chip.trunks.all()) {
        if (std::ranges::any_of(trunk.members, [number](const chip::TrunkMember &member) {
                return is_port_gport(member.gport, number);
            })) {
            trunks.insert(id);
        }
    }
    return trunks;
}

/** The interface and the port-channel that a port is of. */
void port_holders(Book &book, int number)
{
    const chip::Chip &chip = book.chip();
    const int iif = chip.ports.control(number, chip::PORT_CONTROL_INGRESS);
    if (iif != 0 && chip.l3_ingresses.find(iif) != nullptr) {
        book.object("ingress object", "l3_ingress", fmt::to_string(iif));
    } else if (iif != 0) {
        book.entry("port control", "port", fmt::to_string(number),
                   fmt::to_string(chip::PORT_CONTROL_INGRESS),
                   fmt::format("names {}; there is no such ingress object", iif));
    }
    for (const int trunk : trunks_of(chip, number)) {
        book.object("trunk", "trunk", fmt::to_string(trunk));
    }
}

/** Field entries by whether their lists have a port. */
void port_in_rules(Book &book, int number)
{
    for (const auto &[id, entry] : book.chip().field_entries.all()) {
        if (!entry.installed) {
            continue;
        }
        std::string text;
        for (const auto &[action, ports] : entry.installed->port_actions) {
            text += fmt::format("{}{} its list of action {}", text.empty() ? "" : "; ",
                                ports.has(number) ? "in" : "left out of", action);
        }
        if (entry.installed->in_ports) {
            const bool in = entry.installed->in_ports->data.has(number);
            text += fmt::format("{}frames from it are {}", text.empty() ? "" : "; ",
                                in ? "looked at" : "not looked at");
        }
        if (!text.empty()) {
            book.entry("field entry", "field_entry", fmt::to_string(id), fmt::to_string(id),
                       fmt::format("group {}: {}", entry.group, text));
        }
    }
}

void port_dependents(Book &book, int number)
{
    const chip::Chip &chip = book.chip();
    for (const auto &[id, vlan] : chip.vlans.all()) {
        if (vlan.members.has(number)) {
            book.entry("VLAN", "vlan", fmt::to_string(id), fmt::to_string(id),
                       vlan.untagged.has(number) ? "untagged member" : "tagged member");
        }
    }
    const std::set<int> trunks = trunks_of(chip, number);
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        const bool on_trunk = chip::gport_kind(key.gport) == chip::GPORT_TRUNK &&
                              trunks.contains(key.gport & pipeline::GPORT_TRUNK_BITS);
        if (on_trunk || is_port_gport(key.gport, number)) {
            book.translation(key, action);
        }
    }
    std::set<int> egresses;
    for (const auto &[id, egress] : chip.egresses.all()) {
        const bool leaves_by = egress.port == number || is_port_gport(egress.port, number);
        if (trunks.contains(trunk_of(egress)) || (leaves_by && trunk_of(egress) == 0)) {
            egresses.insert(id);
            book.object("egress", "egress", fmt::to_string(id));
        }
    }
    book.routes_over(egresses);
    port_in_rules(book, number);
}

} // namespace

bool explain_vlan(Book &book, int id)
{
    const chip::Vlan *vlan = book.chip().vlans.find(id);
    if (vlan == nullptr) {
        return false;
    }
    book.title(vlan_title(book.state(), id));
    book.about({session::Scene::name(book.state().scene().vlans, id)});
    book.section("what it is");
    vlan_objects(book, id, *vlan);
    book.section("who holds it");
    vlan_holders(book, id);
    book.section("what depends on it");
    vlan_dependents(book, id);
    return true;
}

bool explain_station(Book &book, int id)
{
    const chip::Station *station = book.chip().stations.find(id);
    if (station == nullptr) {
        return false;
    }
    const packet::StationOwner owner = packet::StationOwners(book.state()).of(id);
    const std::string text = owner.text();
    book.about({owner.interface});
    book.title(fmt::format("station {}: {}{} {}", id, text.empty() ? "nobody's MAC" : text,
                           owner.is_mirrored ? ", mirrored into its secondary," : "",
                           chip::text(station->mac)));
    book.section("what it is");
    book.entry("station", "station", fmt::to_string(id), fmt::to_string(id), chip::text(*station));
    book.section("what depends on it");
    station_dependents(book, *station, owner.interface);
    return true;
}

bool explain_port(Book &book, int number)
{
    const chip::Chip &chip = book.chip();
    const std::string name = session::Scene::name(book.state().scene().ports, number);
    if (name.empty() && chip.ports.find(number) == nullptr && number != chip::CPU_PORT) {
        return false;
    }
    const chip::Port port = chip.ports.get(number);
    const int iif = chip.ports.control(number, chip::PORT_CONTROL_INGRESS);
    book.about({name, iif == 0 ? "" : book.names().interface(iif)});
    book.title(fmt::format("port {}: {}{}", number, book.names().port(number),
                           iif == 0 ? ""
                                    : fmt::format(", comes in on interface {} ({})", iif,
                                                  book.names().interface(iif))));
    book.section("what it is");
    book.entry("port", "port", fmt::to_string(number), fmt::to_string(number),
               fmt::format("untagged VLAN {}, discards {}, routes {}", port.untagged_vlan,
                           port.discard == 0                            ? "nothing"
                           : port.discard == pipeline::DISCARD_ALL      ? "all frames"
                           : port.discard == pipeline::DISCARD_UNTAGGED ? "untagged frames"
                                                                        : "tagged frames",
                           port_controls(chip, number)));
    book.section("who holds it");
    port_holders(book, number);
    book.section("what depends on it");
    port_dependents(book, number);
    return true;
}

} // namespace lab::explain
