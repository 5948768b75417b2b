/*
 * routing_verbs.cpp: the commands that play the layers above routing: hosts that
 * are known, static routes.
 */
#include "session/verbs.h"

#include "config/names.h"
#include "config/networks.h"
#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace lab::session
{

namespace
{

constexpr std::string_view VRF = "vrf";
constexpr std::string_view VIA = "via";
constexpr std::string_view BLACK_HOLE = "blackhole";
constexpr std::uint32_t VRF_MAX = 65535;

config::IpAddress parse_address(std::string_view word)
{
    const auto address = config::parse_ip(word);
    if (!address) {
        throw UsageError(fmt::format("'{}' is no address like 10.0.0.1 or fc00::1", word));
    }
    return *address;
}

/** Does something with the routing layer, whose refusals are a session's. */
template <class Work> void try_to(Work work)
{
    try {
        work();
    } catch (const routing::UnknownName &error) {
        throw UsageError(error.what());
    } catch (const routing::Error &error) {
        throw Impossible(error.what());
    }
}

/** What a command came to that has changed the routes. */
Outcome changed(State &state, std::string summary)
{
    Outcome outcome{std::move(summary), state.sync_routing()};
    if (!state.hardware.state_error().empty()) {
        throw Impossible(state.hardware.state_error());
    }
    return outcome;
}

/** The VRF of a word: a name of the configuration, "default", or a number. */
std::uint16_t parse_vrf(const State &state, const std::string &word)
{
    if (word == "default") {
        return config::VRF_DEFAULT;
    }
    if (const auto number = config::parse_number(word);
        number && *number >= config::VRF_DEFAULT && *number <= VRF_MAX) {
        return static_cast<std::uint16_t>(*number);
    }
    const auto &vrfs = state.config->vrfs;
    if (const auto known = vrfs.find(word); known != vrfs.end()) {
        return known->second;
    }
    std::vector<std::string> names = {"default"};
    for (const auto &[name, number] : vrfs) {
        names.push_back(name);
    }
    throw UsageError(unknown("VRF", word, names));
}

/** A way of a route: a gateway, an interface, or "fe80::1%Ethernet0". */
config::NextHop parse_next_hop(const State &state, const std::string &word)
{
    config::NextHop hop;
    const std::size_t percent = word.find('%');
    hop.gateway = config::parse_ip(word.substr(0, percent));
    if (hop.gateway) {
        hop.interface = percent == std::string::npos ? "" : word.substr(percent + 1);
        if (percent != std::string::npos) {
            state.interface(hop.interface);
        }
        return hop;
    }
    // No interface's name begins with a digit or has a colon.
    const bool meant_as_address =
        word.find(':') != std::string::npos || word.find_first_of("0123456789") == 0;
    if (meant_as_address) {
        throw UsageError(fmt::format(
            "'{}' is no next hop: an address, an interface, or ADDRESS%INTERFACE", word));
    }
    state.interface(word);
    hop.interface = word;
    return hop;
}

/** What stands behind `route add` and `route del`. */
config::StaticRoute parse_route(const State &state, const Words &words)
{
    config::StaticRoute route;
    std::string reason;
    const auto prefix = config::parse_destination(words[1], reason);
    if (!prefix) {
        throw UsageError(reason);
    }
    route.prefix = *prefix;
    std::size_t at = 2;
    if (at < words.size() && words[at] == VRF) {
        if (words.size() == at + 1) {
            throw UsageError("behind 'vrf' a VRF is missing");
        }
        route.vrf = parse_vrf(state, words[at + 1]);
        at += 2;
    }
    if (!adds(words)) {
        if (at != words.size()) {
            throw UsageError(unknown("word", words[at], {std::string(VRF)}) +
                             " (route del PREFIX [vrf VRF])");
        }
        return route;
    }
    if (words.size() == at + 1 && words[at] == BLACK_HOLE) {
        return route;
    }
    if (at == words.size() || words[at] != VIA) {
        throw UsageError((at == words.size() ? "where the route leads is missing"
                                             : unknown("word", words[at],
                                                       {std::string(VIA), std::string(VRF),
                                                        std::string(BLACK_HOLE)})) +
                         " (route add PREFIX [vrf VRF] via NEXT-HOP … | blackhole)");
    }
    if (words.size() == at + 1) {
        throw UsageError("behind 'via' the next hops are missing: addresses or interfaces");
    }
    for (++at; at < words.size(); ++at) {
        route.next_hops.push_back(parse_next_hop(state, words[at]));
    }
    return route;
}

void need_config(const State &state)
{
    if (!state.config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
}

} // namespace

Outcome run_neighbor(State &state, const Words &words)
{
    need_config(state);
    const bool add = adds(words);
    const std::string &interface = state.interface(words[1]).lif->plan().name;
    const config::IpAddress address = parse_address(words[2]);
    if (!add) {
        if (words.size() > 3) {
            throw UsageError(fmt::format(
                "neighbor del takes no {}: the interface and the address tell the host", words[3]));
        }
        if (!state.routing.remove_neighbor(interface, address)) {
            throw Impossible(fmt::format("{} is no neighbour of {}; 'show neighbors' has those "
                                         "that are known",
                                         address.text(), interface));
        }
        return changed(state, fmt::format("{} of {} is forgotten", address.text(), interface));
    }
    if (words.size() < 4) {
        throw UsageError("the neighbour's MAC is missing (neighbor add INTERFACE ADDRESS MAC "
                         "[PORT])");
    }
    const routing::Neighbor neighbor{interface, address, parse_mac(words[3]),
                                     words.size() > 4 ? words[4] : "", 0};
    try_to([&] { state.routing.set_neighbor(neighbor); });
    return changed(state,
                   fmt::format("{} is behind {}", address.text(), state.routing.port_of(neighbor)));
}

Outcome run_route(State &state, const Words &words)
{
    need_config(state);
    const config::StaticRoute route = parse_route(state, words);
    if (!adds(words)) {
        if (!state.routing.remove_route(route.vrf, route.prefix)) {
            throw Impossible(fmt::format("there is no static route {} in VRF {}; 'show routes' has "
                                         "what the chip routes",
                                         route.prefix.text(), route.vrf));
        }
        return changed(state, fmt::format("no route {} any more", route.prefix.text()));
    }
    try_to([&] { state.routing.add_route(route); });
    if (route.next_hops.empty()) {
        return changed(state, fmt::format("{} is a black hole", route.prefix.text()));
    }
    return changed(state, fmt::format("{} is routed", route.prefix.text()));
}

} // namespace lab::session
