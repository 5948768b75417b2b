/*
 * places.cpp: see places.h.
 */
#include "routing/places.h"

#include "session/nearest.h"

#include "chip/trunks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

const config::Vlan *vlan_of(const config::Description &config, std::uint16_t id)
{
    const auto found =
        std::find_if(config.vlans.begin(), config.vlans.end(), [id](const auto &row) {
            return row.second.id == id && row.second.refused.empty();
        });
    return found == config.vlans.end() ? nullptr : &found->second;
}

} // namespace

/** A VLAN and its secondaries. */
std::vector<std::uint16_t> Places::vlans_of(std::uint16_t primary) const
{
    std::vector<std::uint16_t> vlans = {primary};
    for (const l3lif::Pair &pair : layer_.pairs()) {
        if (pair.plan.primary == primary) {
            vlans.push_back(pair.plan.secondary);
        }
    }
    return vlans;
}

std::vector<Places::Candidate> Places::candidates(std::uint16_t primary) const
{
    std::vector<Candidate> all;
    for (const std::uint16_t vlan : vlans_of(primary)) {
        if (const config::Vlan *row = vlan_of(config_, vlan)) {
            for (const config::VlanMember &member : row->members) {
                all.push_back({vlan, &member});
            }
        }
    }
    return all;
}

std::vector<std::string> Places::members_of(std::uint16_t vlan) const
{
    std::vector<std::string> names;
    for (const Candidate &candidate : candidates(vlan)) {
        if (std::find(names.begin(), names.end(), candidate.member->name) == names.end()) {
            names.push_back(candidate.member->name);
        }
    }
    return names;
}

std::optional<int> Places::gport_of(std::string_view name) const
{
    if (const auto port = config_.ports.find(name);
        port != config_.ports.end() && port->second.chip_port != 0) {
        return chip::module_port(0, static_cast<int>(port->second.chip_port));
    }
    if (const auto channel = config_.port_channels.find(name);
        channel != config_.port_channels.end() && channel->second.trunk != 0) {
        return chip::trunk_gport(static_cast<int>(channel->second.trunk));
    }
    return std::nullopt;
}

std::string Places::name_of(int gport) const
{
    for (const auto &[name, port] : config_.ports) {
        if (port.chip_port != 0 && gport_of(name) == gport) {
            return name;
        }
    }
    for (const auto &[name, channel] : config_.port_channels) {
        if (channel.trunk != 0 && gport_of(name) == gport) {
            return name;
        }
    }
    return fmt::format("{:#x}", static_cast<unsigned>(gport));
}

/** Where a static entry or the traffic has the host's MAC. */
std::optional<Place> Places::learned(const Neighbor &neighbor, std::uint16_t primary) const
{
    for (const std::uint16_t vlan : vlans_of(primary)) {
        if (neighbor.vlan != 0 && neighbor.vlan != vlan) {
            continue;
        }
        if (const auto *entry = l2_.find(vlan, neighbor.mac)) {
            return Place{entry->gport, vlan == primary ? std::uint16_t{0} : vlan,
                         name_of(entry->gport)};
        }
    }
    return std::nullopt;
}

std::optional<Place> Places::on_vlan(const Neighbor &neighbor, std::uint16_t primary,
                                     std::string &reason) const
{
    std::vector<Candidate> all = candidates(primary);
    if (neighbor.vlan != 0) {
        std::erase_if(all, [&](const Candidate &one) { return one.vlan != neighbor.vlan; });
    }
    if (neighbor.port.empty()) {
        if (auto place = learned(neighbor, primary)) {
            return place;
        }
    } else {
        std::erase_if(all, [&](const Candidate &one) { return one.member->name != neighbor.port; });
    }
    const std::vector<std::string> names = members_of(primary);
    if (all.empty() && !neighbor.port.empty()) {
        reason = fmt::format("{} (those of {} are {})",
                             session::unknown("port of a VLAN", neighbor.port, names),
                             neighbor.interface, fmt::join(names, ", "));
        return std::nullopt;
    }
    const bool is_clear = !all.empty() && (!neighbor.port.empty() || all.size() == 1);
    if (!is_clear) {
        reason = names.empty()
                     ? fmt::format("{} has no port", neighbor.interface)
                     : fmt::format("nobody knows behind which port of {} {} is: name one of {}",
                                   neighbor.interface, config::mac_text(neighbor.mac),
                                   fmt::join(names, ", "));
        return std::nullopt;
    }
    const Candidate &found = all.front();
    const auto gport = gport_of(found.member->name);
    if (!gport) {
        reason = fmt::format("{} has no place in the chip", found.member->name);
        return std::nullopt;
    }
    return Place{*gport, found.vlan == primary ? std::uint16_t{0} : found.vlan, found.member->name};
}

std::optional<Place> Places::of(const Neighbor &neighbor, const l3lif::LifPlan &interface,
                                std::string &reason) const
{
    if (interface.kind == config::Kind::svi) {
        return on_vlan(neighbor, interface.vlan, reason);
    }
    const int gport = interface.trunk != 0 ? chip::trunk_gport(interface.trunk)
                                           : chip::module_port(0, interface.chip_port);
    return Place{gport, 0, name_of(gport)};
}

} // namespace lab::routing
