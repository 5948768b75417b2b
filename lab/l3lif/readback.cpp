/*
 * readback.cpp: see readback.h.
 */
#include "l3lif/readback.h"

#include "chip/pipeline/numbers.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;

// The port's number in a module port of this switch, whose module is 0.
constexpr int MODULE_PORT_PORT = 0x7ff;

std::vector<int> ports_tied_to(const chip::Chip &chip, int iif)
{
    std::vector<int> ports;
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        if (chip.ports.control(port, chip::PORT_CONTROL_INGRESS) == iif) {
            ports.push_back(port);
        }
    }
    return ports;
}

/** The families that the controls of a port leave of those. */
void narrow_to_port(const chip::Chip &chip, int port, HardwareView &view)
{
    if (port != 0) {
        view.ipv4 = view.ipv4 && chip.ports.control(port, chip::PORT_CONTROL_IP4) != 0;
        view.ipv6 = view.ipv6 && chip.ports.control(port, chip::PORT_CONTROL_IP6) != 0;
    } else if (chip.kind() == chip::Kind::trident) {
        // A tunnel has no port to switch a family; it is one for IPv4.
        view.ipv6 = false;
    }
}

/** The same for each of several ports. */
void narrow_to_ports(const chip::Chip &chip, HardwareView &view)
{
    for (const int port : view.ports) {
        narrow_to_port(chip, port, view);
    }
}

std::string not_in_vlan(int port, int vlan)
{
    return fmt::format("the chip's port {} is not in VLAN {}", port, vlan);
}

/** What a port lacks to take part in the interface's VLAN. */
std::string missing_at_port(const chip::Chip &chip, int port, const HardwareView &view)
{
    const chip::Vlan *vlan = chip.vlans.find(view.vlan);
    if (vlan == nullptr || !vlan->members.has(port)) {
        return not_in_vlan(port, view.vlan);
    }
    const int untagged = chip.ports.get(port).untagged_vlan;
    if (untagged != view.vlan) {
        return fmt::format("untagged frames of the chip's port {} are in VLAN {}", port, untagged);
    }
    return "";
}

/** Reads the two objects of the view's number; false when there is no L3 interface. */
bool read_objects(const chip::Chip &chip, HardwareView &view)
{
    const chip::L3Ingress *ingress = chip.l3_ingresses.find(view.iif);
    if (ingress != nullptr) {
        read_ingress_families(*ingress, view);
    } else {
        view.missing = fmt::format("the chip has no L3 ingress object {}", view.iif);
    }
    const chip::L3Interface *interface = chip.l3_interfaces.find(view.iif);
    if (interface == nullptr) {
        view.missing = fmt::format("the chip has no L3 interface {}", view.iif);
        return false;
    }
    view.has_interface = true;
    view.vlan = interface->vlan;
    view.vrf = interface->vrf;
    view.mtu = interface->mtu;
    return true;
}

std::string names_no_ingress(int port)
{
    return fmt::format("the chip's port {} names no ingress object", port);
}

HardwareView read_port_or_tunnel(const chip::Chip &chip, const Lif &lif)
{
    const int port = lif.plan().chip_port;
    HardwareView view;
    view.iif = port != 0 ? chip.ports.control(port, chip::PORT_CONTROL_INGRESS) : lif.iif();
    if (view.iif == 0) {
        view.missing = port != 0 ? names_no_ingress(port) : "it has no number in the chip";
        return view;
    }
    if (port != 0) {
        view.ports = ports_tied_to(chip, view.iif);
    }
    const bool has_interface = read_objects(chip, view);
    narrow_to_port(chip, port, view);
    if (has_interface && port != 0 && view.missing.empty()) {
        view.missing = missing_at_port(chip, port, view);
    }
    return view;
}

/** What a trunk lacks of the members that it was meant to have. */
std::string missing_in_trunk(const LifPlan &plan, const std::vector<int> &ports)
{
    for (const PlannedMember &member : plan.members) {
        if (std::find(ports.begin(), ports.end(), member.chip_port) == ports.end()) {
            return fmt::format("the chip's port {} is not in trunk {}", member.chip_port,
                               plan.trunk);
        }
    }
    return "";
}

HardwareView read_port_channel(const chip::Chip &chip, const Lif &lif)
{
    const LifPlan &plan = lif.plan();
    HardwareView view;
    view.ports = ports_of_trunk(chip, plan.trunk);
    if (view.ports.empty()) {
        view.missing = fmt::format("the chip's trunk {} has no members", plan.trunk);
        return view;
    }
    view.iif = chip.ports.control(view.ports.front(), chip::PORT_CONTROL_INGRESS);
    if (view.iif == 0) {
        view.missing = names_no_ingress(view.ports.front());
        return view;
    }
    const bool has_interface = read_objects(chip, view);
    narrow_to_ports(chip, view);
    if (!has_interface) {
        return view;
    }
    if (view.missing.empty()) {
        view.missing = missing_in_trunk(plan, view.ports);
    }
    for (const int port : view.ports) {
        if (view.missing.empty() &&
            chip.ports.control(port, chip::PORT_CONTROL_INGRESS) != view.iif) {
            view.missing =
                fmt::format("the chip's port {} is not tied to ingress object {}", port, view.iif);
        }
        if (view.missing.empty()) {
            view.missing = missing_at_port(chip, port, view);
        }
    }
    return view;
}

HardwareView read_subinterface(const chip::Chip &chip, const Lif &lif)
{
    const LifPlan &plan = lif.plan();
    const bool on_trunk = plan.trunk != 0;
    HardwareView view;
    view.ports = on_trunk ? ports_of_trunk(chip, plan.trunk) : std::vector<int>{plan.chip_port};
    const int gport =
        on_trunk ? chip::trunk_gport(plan.trunk) : chip::module_port(0, plan.chip_port);
    const chip::TranslationAction *translation = chip.vlan_translations.find(
        {gport, chip::KEY_TYPE_PORT_OUTER, plan.vlan, chip::ANY_INNER_VLAN});
    if (translation == nullptr) {
        view.ports.clear();
        view.missing = fmt::format("the chip's {} {} has no translation of VLAN {}",
                                   on_trunk ? "trunk" : "port",
                                   on_trunk ? plan.trunk : plan.chip_port, plan.vlan);
        return view;
    }
    view.iif = translation->ingress_if;
    const bool has_interface = read_objects(chip, view);
    narrow_to_ports(chip, view);
    if (!has_interface) {
        return view;
    }
    if (view.missing.empty() && view.iif != lif.iif()) {
        view.missing = fmt::format("the translation of VLAN {} names ingress object {}, not {}",
                                   plan.vlan, view.iif, lif.iif());
    }
    const chip::Vlan *vlan = chip.vlans.find(plan.vlan);
    for (const int port : view.ports) {
        if (view.missing.empty() && (vlan == nullptr || !vlan->members.has(port))) {
            view.missing = not_in_vlan(port, plan.vlan);
        }
    }
    return view;
}

HardwareView read_svi(const chip::Chip &chip, const Lif &lif)
{
    const LifPlan &plan = lif.plan();
    HardwareView view;
    const chip::Vlan *vlan = chip.vlans.find(plan.vlan);
    if (vlan == nullptr) {
        view.missing = fmt::format("the chip has no VLAN {}", plan.vlan);
        return view;
    }
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        if (vlan->members.has(port)) {
            view.ports.push_back(port);
        }
    }
    view.iif = static_cast<int>(vlan->controls.ingress_if);
    if (view.iif == 0) {
        view.missing = fmt::format("the chip's VLAN {} names no ingress object", plan.vlan);
        return view;
    }
    const bool has_interface = read_objects(chip, view);
    narrow_to_vlan(vlan->controls, view);
    if (has_interface && view.missing.empty() && view.vlan != plan.vlan) {
        view.missing = fmt::format("the chip's L3 interface {} is in VLAN {}", view.iif, view.vlan);
    }
    return view;
}

} // namespace

std::vector<int> ports_of_trunk(const chip::Chip &chip, int trunk)
{
    std::vector<int> ports;
    if (const chip::Trunk *found = chip.trunks.find(trunk)) {
        for (const chip::TrunkMember &member : found->members) {
            ports.push_back(member.gport & MODULE_PORT_PORT);
        }
    }
    std::sort(ports.begin(), ports.end());
    return ports;
}

std::vector<std::string_view> HardwareView::families() const
{
    std::vector<std::string_view> names;
    if (ipv4) {
        names.emplace_back("ipv4");
    }
    if (ipv6) {
        names.emplace_back("ipv6");
    }
    return names;
}

void read_ingress_families(const chip::L3Ingress &ingress, HardwareView &view)
{
    // An interface without a family looks nothing up: it sits in VRF 0.
    const bool none = ingress.vrf == 0;
    view.ipv4 = !none && (ingress.flags & chip::pipeline::INGRESS_IP4_OFF) == 0;
    view.ipv6 = !none && (ingress.flags & chip::pipeline::INGRESS_IP6_OFF) == 0;
}

void narrow_to_vlan(const chip::VlanControls &controls, HardwareView &view)
{
    view.ipv4 = view.ipv4 && (controls.flags & chip::pipeline::VLAN_IP4_OFF) == 0;
    view.ipv6 = view.ipv6 && (controls.flags & chip::pipeline::VLAN_IP6_OFF) == 0;
}

HardwareView read_back(const simswitch::Switch &hardware, const Lif &lif)
{
    switch (lif.plan().kind) {
    case config::Kind::port_channel:
        return read_port_channel(hardware.chip, lif);
    case config::Kind::subinterface:
        return read_subinterface(hardware.chip, lif);
    case config::Kind::svi:
        return read_svi(hardware.chip, lif);
    case config::Kind::port:
    case config::Kind::tunnel:
        break;
    }
    return read_port_or_tunnel(hardware.chip, lif);
}

} // namespace lab::l3lif
