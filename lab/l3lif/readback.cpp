/*
 * readback.cpp: see readback.h.
 */
#include "l3lif/readback.h"

#include <fmt/format.h>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;

// A Trident2's ingress object switches the families off; a Trident's ports
// switch them on.
constexpr std::uint32_t INGRESS_IP4_OFF = 0x20;
constexpr std::uint32_t INGRESS_IP6_OFF = 0x80;

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

/** Which families the chip routes that come in on an interface. */
void read_families(const chip::Chip &chip, const chip::L3Ingress &ingress, int port,
                   HardwareView &view)
{
    // An interface without a family looks nothing up: it sits in VRF 0.
    if (ingress.vrf == 0) {
        return;
    }
    if (chip.kind() == chip::Kind::trident2) {
        view.ipv4 = (ingress.flags & INGRESS_IP4_OFF) == 0;
        view.ipv6 = (ingress.flags & INGRESS_IP6_OFF) == 0;
    } else if (port != 0) {
        view.ipv4 = chip.ports.control(port, chip::PORT_CONTROL_IP4) != 0;
        view.ipv6 = chip.ports.control(port, chip::PORT_CONTROL_IP6) != 0;
    } else {
        // A tunnel has no port to switch a family; it is one for IPv4.
        view.ipv4 = true;
    }
}

/** What a port lacks to take part in the interface's VLAN. */
std::string missing_at_port(const chip::Chip &chip, int port, const HardwareView &view)
{
    const chip::Vlan *vlan = chip.vlans.find(view.vlan);
    if (vlan == nullptr || !vlan->members.has(port)) {
        return fmt::format("the chip's port {} is not in VLAN {}", port, view.vlan);
    }
    const int untagged = chip.ports.get(port).untagged_vlan;
    if (untagged != view.vlan) {
        return fmt::format("untagged frames of the chip's port {} are in VLAN {}", port, untagged);
    }
    return "";
}

} // namespace

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

HardwareView read_back(const simswitch::Switch &hardware, const Lif &lif)
{
    const chip::Chip &chip = hardware.chip;
    const int port = lif.plan().chip_port;
    HardwareView view;
    view.iif = port != 0 ? chip.ports.control(port, chip::PORT_CONTROL_INGRESS) : lif.iif();
    if (view.iif == 0) {
        view.missing = port != 0 ? fmt::format("the chip's port {} names no ingress object", port)
                                 : "it has no number in the chip";
        return view;
    }
    if (port != 0) {
        view.ports = ports_tied_to(chip, view.iif);
    }
    const chip::L3Ingress *ingress = chip.l3_ingresses.find(view.iif);
    if (ingress != nullptr) {
        read_families(chip, *ingress, port, view);
    } else {
        view.missing = fmt::format("the chip has no L3 ingress object {}", view.iif);
    }
    const chip::L3Interface *interface = chip.l3_interfaces.find(view.iif);
    if (interface == nullptr) {
        view.missing = fmt::format("the chip has no L3 interface {}", view.iif);
        return view;
    }
    view.has_interface = true;
    view.vlan = interface->vlan;
    view.vrf = interface->vrf;
    view.mtu = interface->mtu;
    if (port != 0 && view.missing.empty()) {
        view.missing = missing_at_port(chip, port, view);
    }
    return view;
}

} // namespace lab::l3lif
