/*
 * l3_subjects.cpp: what the number of an interface and an egress object stand
 * for. One number is the L3 interface's, the ingress object's, and the value of
 * port control 67 or of a VLAN's controls; egress objects leave by it.
 */
#include "explain/explain.h"

#include "explain/book.h"
#include "explain/kept.h"
#include "l3lif/interface_numbers.h"
#include "packet/objects.h"
#include "packet/owners.h"
#include "report/text.h"
#include "session/tables.h"

#include "chip/pipeline/numbers.h"
#include "rtifhal_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace lab::explain
{

namespace chip = simswitch::chip;

namespace
{

/** A cell of the table of interface numbers; empty for a number that is free. */
std::string iif_cell(const session::State &state, int iif, std::string_view field)
{
    const session::Table table = session::iif_table(state.scene());
    const auto rows = table.find(fmt::to_string(iif));
    const auto column = table.column(field);
    return rows.empty() || !column ? "" : rows.front()->cells.at(*column);
}

/** The interface of the layer above that has a number; null when none has. */
const session::SceneInterface *interface_of(const session::Scene &scene, int iif)
{
    const auto found = std::ranges::find_if(
        scene.interfaces, [iif](const auto &interface) { return interface.view.iif == iif; });
    return iif == 0 || found == scene.interfaces.end() ? nullptr : &*found;
}

std::string iif_title(const session::State &state, int iif)
{
    const session::Scene scene = state.scene();
    const std::string standing = iif_cell(state, iif, "state");
    if (const auto *interface = interface_of(scene, iif)) {
        return fmt::format("iif {}: {}, {}, {}", iif, interface->name, interface->kind,
                           interface->state);
    }
    const std::string name = session::Scene::name(scene.iifs, iif);
    if (standing == "held back") {
        return fmt::format("iif {}: held back; a destroyed interface has given it up, and it is "
                           "handed out when no other is free",
                           iif);
    }
    if (standing == "kept") {
        return fmt::format("iif {}: taken{}{}, not programmed; it waits for its owner's next add",
                           iif, name.empty() ? "" : " by ", name);
    }
    return fmt::format("iif {}: programmed, of no interface that is known", iif);
}

void iif_objects(Book &book, int iif)
{
    const std::string id = fmt::to_string(iif);
    const chip::Chip &chip = book.chip();
    if (const auto *object = chip.l3_interfaces.find(iif)) {
        book.entry(
            "L3 interface", "l3_interface", id, id,
            fmt::format("MAC {}, VLAN {}, VRF {}, MTU {}{}", chip::text(object->mac), object->vlan,
                        book.names().vrf(object->vrf), object->mtu,
                        object->ttl == 0 ? "" : fmt::format(", lowest TTL {}", object->ttl)));
    }
    if (const auto *object = chip.l3_ingresses.find(iif)) {
        book.entry("ingress object", "l3_ingress", id, id,
                   fmt::format("VRF {}, reverse path {}, class {}, flags {:#x}",
                               book.names().vrf(object->vrf),
                               object->urpf_mode == 0   ? "off"
                               : object->urpf_mode == 1 ? "loose"
                                                        : "strict",
                               object->intf_class, object->flags));
    } else if (chip.l3_interfaces.find(iif) != nullptr && iif != 0) {
        book.say("ingress object", id, "missing: the chip has the L3 interface alone");
    }
    if (const auto *tunnel = chip.tunnels.find(iif)) {
        book.entry("tunnel initiator", "tunnel", id, fmt::to_string(tunnel->index),
                   chip::text(*tunnel));
    }
}

/** Whose frames come in on a number: ports, VLANs and translations that name it. */
void iif_holders(Book &book, int iif)
{
    const chip::Chip &chip = book.chip();
    for (const auto &[number, port] : chip.ports.all()) {
        if (iif != 0 && chip.ports.control(number, chip::PORT_CONTROL_INGRESS) == iif) {
            book.entry("port", "port", fmt::to_string(number), fmt::to_string(number),
                       fmt::format("{}: its control 67 names it", book.names().port(number)));
        }
    }
    for (const auto &[id, vlan] : chip.vlans.all()) {
        if (iif != 0 && vlan.controls.ingress_if == static_cast<std::uint32_t>(iif)) {
            book.entry("VLAN", "vlan", fmt::to_string(id), fmt::to_string(id),
                       "its controls name it");
        }
    }
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        if (action.ingress_if == iif && iif != 0) {
            book.translation(key, action);
        }
    }
}

/** What the layer above has under an interface. */
void iif_dependents(Book &book, int iif)
{
    const session::State &state = book.state();
    const std::string name = session::Scene::name(state.scene().iifs, iif);
    const l3lif::Interface *interface = name.empty() ? nullptr : state.layer.routed().find(name);
    if (interface == nullptr) {
        return;
    }
    for (const std::string &under : state.layer.routed().subinterfaces_of(*interface)) {
        book.say("subinterface", "", under);
    }
    for (const l3lif::VirtualMacPlan &mac : packet::virtual_macs_of(state)) {
        if (mac.owner == name) {
            book.say("virtual MAC", "", chip::text(mac.mac));
        }
    }
    const l3lif::LifPlan &plan = interface->lif->plan();
    for (const l3lif::PairPlan &pair : packet::pairs_of(state)) {
        if (plan.kind == config::Kind::svi && pair.primary == plan.vlan) {
            book.say("private VLAN", fmt::to_string(pair.secondary),
                     fmt::format("its hosts are routed by VLAN {}", plan.vlan));
        }
    }
    for (const routing::OwnAddress &own : addresses_of(state, name)) {
        book.say("address", "", own.prefix.text());
    }
}

/** A group of several ways, which routes name in the place of an egress object. */
void explain_group(Book &book, int id)
{
    const std::vector<int> &members = book.chip().multipath_groups.find(id)->members;
    book.title(
        fmt::format("egress {}: an ECMP group of {}", id, report::counted(members.size(), "path")));
    book.section("what it is");
    book.entry("ECMP group", "multipath_group", fmt::to_string(id), fmt::to_string(id),
               fmt::format("of {}", report::counted(members.size(), "path")));
    book.section("what it leaves by");
    for (const int member : members) {
        book.object("egress", "egress", fmt::to_string(member));
    }
    book.section("what depends on it");
    book.routes_over({}, {id});
}

} // namespace

int trunk_of(const chip::Egress &egress)
{
    if (egress.trunk != 0 || chip::gport_kind(egress.port) != chip::GPORT_TRUNK) {
        return egress.trunk;
    }
    return egress.port & chip::pipeline::GPORT_TRUNK_BITS;
}

std::set<int> taken_iifs(const session::State &state)
{
    std::set<int> iifs;
    const session::Table table = session::iif_table(state.scene());
    for (const session::Row &row : table.rows) {
        iifs.insert(packet::number_of(row.cells.front()));
    }
    for (const auto &[iif, object] : state.hardware.chip.l3_ingresses.all()) {
        iifs.insert(iif);
    }
    return iifs;
}

bool explain_iif(Book &book, int iif)
{
    const session::State &state = book.state();
    if (!taken_iifs(state).contains(iif)) {
        const bool is_reserved =
            l3lif_l3iif_table_inited != 0 && l3lif::is_set(l3lif_l3iif_table, iif);
        book.title(fmt::format("iif {}: reserved; the library hands it to no interface", iif));
        return is_reserved;
    }
    book.title(iif_title(state, iif));
    book.about({session::Scene::name(state.scene().iifs, iif)});
    book.section("what it is");
    iif_objects(book, iif);
    book.section("who comes in by it");
    iif_holders(book, iif);
    book.section("what depends on it");
    iif_dependents(book, iif);
    std::set<int> egresses;
    for (const auto &[id, egress] : book.chip().egresses.all()) {
        if (egress.interface == iif && iif != 0) {
            egresses.insert(id);
            book.object("egress", "egress", fmt::to_string(id));
        }
    }
    book.routes_over(egresses);
    for (const auto &[id, port] : book.chip().vxlan_ports.all()) {
        if (port.egress_if == static_cast<std::uint32_t>(iif) && iif != 0) {
            book.entry("VXLAN port", "vxlan_port", fmt::to_string(id), fmt::to_string(id),
                       fmt::format("VPN {}, VNI {}: leaves through it", port.vpn, port.vn_id));
        }
    }
    return true;
}

bool explain_egress(Book &book, int egress)
{
    if (book.chip().multipath_groups.find(egress) != nullptr) {
        explain_group(book, egress);
        return true;
    }
    const chip::Egress *object = book.chip().egresses.find(egress);
    if (object == nullptr) {
        return false;
    }
    const std::string where = packet::next_hop_text(book.names(), egress);
    book.title(fmt::format("egress {}: {}", egress, where));
    book.section("what it is");
    book.object("egress", "egress", fmt::to_string(egress));
    book.section("what it leaves by");
    if (book.chip().l3_interfaces.find(object->interface) != nullptr) {
        book.object("L3 interface", "l3_interface", fmt::to_string(object->interface));
    }
    if (const int trunk = trunk_of(*object); trunk != 0) {
        book.object("trunk", "trunk", fmt::to_string(trunk));
    } else if (object->port >= 0 && !packet::leads_to_cpu(*object)) {
        book.port(object->port & chip::pipeline::GPORT_PORT_BITS);
    }
    book.section("what depends on it");
    book.routes_over({egress});
    return true;
}

} // namespace lab::explain
