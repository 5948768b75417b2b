/*
 * links.cpp: see links.h.
 */
#include "cpu/links.h"

#include "l3lif/readback.h"

#include <map>
#include <utility>

namespace lab::cpu
{

namespace
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;

constexpr std::uint16_t VLAN_ROUTED = 4094; // of routed ports and port-channels

const l3lif::Interface *find_by_iif(const l3lif::Layer &layer, int iif)
{
    for (const auto &interface : layer.interfaces()) {
        if (interface->standing() == l3lif::Standing::up && interface->lif->iif() == iif) {
            return interface.get();
        }
    }
    return nullptr;
}

Link link_of(int port, const pipeline::Frame &frame)
{
    Link link{port};
    // A tag that has a priority only says nothing about where its sender is.
    if (frame.tag_vlan() != 0) {
        link.tags.push_back(frame.outer);
        if (frame.tags == 2) {
            link.tags.push_back(frame.inner);
        }
    }
    return link;
}

bool forwards(const chip::Chip &chip, const chip::Vlan &vlan, int port)
{
    const chip::Stg *stg = chip.stgs.find(vlan.stg);
    return vlan.members.has(port) && stg != nullptr &&
           stg->states.at(static_cast<std::size_t>(port)) == chip::STP_FORWARDING;
}

/** The ports of which one has to be asked on, in a VLAN in which all of them forward. */
std::vector<Link> one_of(const chip::Chip &chip, const std::vector<int> &ports, int vlan_id,
                         bool tagged, unsigned attempt)
{
    const chip::Vlan *vlan = chip.vlans.find(vlan_id);
    std::vector<int> usable;
    for (const int port : ports) {
        if (vlan != nullptr && forwards(chip, *vlan, port)) {
            usable.push_back(port);
        }
    }
    if (usable.empty()) {
        return {};
    }
    Link link{usable[attempt % usable.size()]};
    if (tagged) {
        link.tags.push_back(static_cast<std::uint16_t>(vlan_id));
    }
    return {link};
}

/** All members of a VLAN, one for each trunk. */
void add_members(const chip::Chip &chip, int vlan_id, bool multicast, unsigned attempt,
                 std::vector<Link> &links)
{
    const chip::Vlan *vlan = chip.vlans.find(vlan_id);
    if (vlan == nullptr) {
        return;
    }
    const chip::PortSet &blocked =
        multicast ? vlan->blocks.unknown_multicast : vlan->blocks.broadcast;
    std::map<int, std::vector<int>> trunks;
    const auto add = [&](int port) {
        Link link{port};
        if (!vlan->untagged.has(port)) {
            link.tags.push_back(static_cast<std::uint16_t>(vlan_id));
        }
        links.push_back(std::move(link));
    };
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        if (!forwards(chip, *vlan, port) || blocked.has(port)) {
            continue;
        }
        if (const auto trunk = chip.trunks.trunk_of(chip::module_port(0, port))) {
            trunks[*trunk].push_back(port);
        } else {
            add(port);
        }
    }
    for (const auto &[trunk, ports] : trunks) {
        add(ports[attempt % ports.size()]);
    }
}

std::vector<int> ports_of(const chip::Chip &chip, const l3lif::LifPlan &plan)
{
    return plan.trunk != 0 ? l3lif::ports_of_trunk(chip, plan.trunk)
                           : std::vector<int>{plan.chip_port};
}

} // namespace

std::optional<Arrival> arrival_of(const simswitch::Switch &hardware, const l3lif::Layer &layer,
                                  int port, const pipeline::Frame &frame,
                                  const pipeline::Result &result)
{
    const chip::L3Ingress *ingress = hardware.chip.l3_ingresses.find(result.ingress);
    const l3lif::Interface *interface =
        result.ingress != 0 ? find_by_iif(layer, result.ingress) : nullptr;
    if (ingress == nullptr || interface == nullptr) {
        return std::nullopt;
    }
    const l3lif::LifPlan &plan = interface->lif->plan();
    Arrival arrival;
    arrival.link = link_of(port, frame);
    arrival.vlan = result.ingress_vlan;
    arrival.vrf = static_cast<std::uint16_t>(ingress->vrf);
    arrival.interface = plan.name;
    arrival.kind = plan.kind;
    arrival.mac = plan.mac;
    arrival.in_secondary = plan.kind == config::Kind::svi && result.ingress_vlan != plan.vlan;
    arrival.is_ip6_planned = plan.ipv6;
    return arrival;
}

std::vector<Link> links_of(const simswitch::Switch &hardware, const l3lif::Layer &layer,
                           std::string_view interface, bool multicast, unsigned attempt)
{
    const l3lif::Interface *found = layer.routed().find(interface);
    if (found == nullptr || found->standing() != l3lif::Standing::up) {
        return {};
    }
    const chip::Chip &chip = hardware.chip;
    const l3lif::LifPlan &plan = found->lif->plan();
    switch (plan.kind) {
    case config::Kind::port:
    case config::Kind::port_channel:
        return one_of(chip, ports_of(chip, plan), VLAN_ROUTED, false, attempt);
    case config::Kind::subinterface:
        return one_of(chip, ports_of(chip, plan), plan.vlan, true, attempt);
    case config::Kind::svi:
        break;
    case config::Kind::tunnel:
        return {};
    }
    std::vector<Link> links;
    add_members(chip, plan.vlan, multicast, attempt, links);
    for (const l3lif::Pair &pair : layer.pairs()) {
        if (pair.plan.primary == plan.vlan) {
            add_members(chip, pair.plan.secondary, multicast, attempt, links);
        }
    }
    return links;
}

} // namespace lab::cpu
