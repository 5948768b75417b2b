/*
 * in_place.cpp: the names behind --in and --dmac. See make_frame.h.
 */
#include "packet/make_frame.h"

#include "session/errors.h"
#include "session/nearest.h"
#include "session/state.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace lab::packet
{

namespace
{

using config::Description;
using session::Impossible;
using session::State;
using session::UsageError;

const Description &need_config(const State &state)
{
    if (!state.config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
    return *state.config;
}

const config::RoutedInterface *find_routed(const Description &config, std::string_view name,
                                           config::Kind kind)
{
    const auto found = std::find_if(config.interfaces.begin(), config.interfaces.end(),
                                    [name, kind](const config::RoutedInterface &known) {
                                        return known.kind == kind && known.name == name;
                                    });
    return found == config.interfaces.end() ? nullptr : &*found;
}

InPlace port_or_first_member(const std::string &name, const State &state)
{
    const Description &config = need_config(state);
    const auto channel = config.port_channels.find(name);
    if (channel == config.port_channels.end()) {
        return {static_cast<int>(state.port(name).chip_port), name, -1, ""};
    }
    if (channel->second.members.empty()) {
        throw Impossible(fmt::format("--in {}: it has no member; name a port", name));
    }
    const std::string &member = channel->second.members.front();
    return {static_cast<int>(state.port(member).chip_port), member, -1,
            fmt::format("the first member of {}", name)};
}

/** Says by which ports a VLAN's frames come in. */
[[noreturn]] void refuse_svi(const config::RoutedInterface &svi, const Description &config)
{
    std::vector<std::string> ports;
    for (const auto &[name, vlan] : config.vlans) {
        for (const config::VlanMember &member : vlan.members) {
            if (vlan.id == svi.vlan) {
                ports.push_back(member.name);
            }
        }
    }
    throw UsageError(
        fmt::format("--in {}: a VLAN is no port; its ports are {}", svi.name,
                    ports.empty() ? "none" : fmt::format("{}", fmt::join(ports, ", "))));
}

} // namespace

InPlace find_in(const std::string &name, const State &state)
{
    const Description &config = need_config(state);
    if (const auto *sub = find_routed(config, name, config::Kind::subinterface)) {
        InPlace place = port_or_first_member(sub->main, state);
        place.vlan = sub->vlan;
        place.note = place.note.empty() ? fmt::format("the port of {}", name)
                                        : fmt::format("{}, for {}", place.note, name);
        return place;
    }
    if (const auto *svi = find_routed(config, name, config::Kind::svi)) {
        refuse_svi(*svi, config);
    }
    if (!config.ports.contains(name) && !config.port_channels.contains(name)) {
        throw UsageError("--in: " + session::unknown("port", name, in_names(state)));
    }
    return port_or_first_member(name, state);
}

std::vector<std::string> in_names(const State &state)
{
    std::vector<std::string> names = state.port_names();
    if (!state.config) {
        return names;
    }
    for (const auto &[name, channel] : state.config->port_channels) {
        if (channel.refused.empty() && !channel.members.empty()) {
            names.push_back(name);
        }
    }
    for (const auto &known : state.config->interfaces) {
        if (known.kind == config::Kind::subinterface) {
            names.push_back(known.name);
        }
    }
    return names;
}

std::vector<std::string> destination_names(const State &state)
{
    std::vector<std::string> names = {"router", "broadcast"};
    const std::vector<std::string> interfaces = state.interface_names();
    names.insert(names.end(), interfaces.begin(), interfaces.end());
    return names;
}

} // namespace lab::packet
