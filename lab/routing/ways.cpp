/*
 * ways.cpp: see ways.h.
 */
#include "routing/ways.h"

#include "config/networks.h"

#include <algorithm>
#include <utility>

namespace lab::routing
{

namespace
{

bool is_tunnel(const Way &way)
{
    return way.interface->plan->kind == config::Kind::tunnel;
}

} // namespace

const OwnAddress *Ways::network(std::uint16_t vrf, const config::IpAddress &address) const
{
    const OwnAddress *longest = nullptr;
    for (const OwnAddress &own : addresses_) {
        const bool better = longest == nullptr || own.prefix.length > longest->prefix.length;
        if (own.vrf == vrf && better && config::contains(own.prefix, address)) {
            longest = &own;
        }
    }
    return longest;
}

/** A next hop as a way, when its interface is up. */
std::optional<Way> Ways::way_over(const StaticRoute &route, const NextHop &hop) const
{
    const InterfaceView *interface = nullptr;
    if (!hop.interface.empty()) {
        interface = find(interfaces_, hop.interface);
    } else if (hop.gateway) {
        const OwnAddress *own = network(route.vrf, *hop.gateway);
        interface = own == nullptr ? nullptr : find(interfaces_, own->interface);
    }
    if (interface == nullptr || interface->vrf != route.vrf) {
        return std::nullopt;
    }
    return Way{interface, hop.gateway, hop.distance};
}

std::vector<Way> Ways::of(const StaticRoute &route) const
{
    std::vector<Way> ways;
    for (const NextHop &hop : route.next_hops) {
        if (const auto way = way_over(route, hop)) {
            ways.push_back(*way);
        }
    }
    const auto nearest =
        std::min_element(ways.begin(), ways.end(), [](const Way &left, const Way &right) {
            return left.distance < right.distance;
        });
    if (nearest != ways.end()) {
        const unsigned distance = nearest->distance;
        std::erase_if(ways, [distance](const Way &way) { return way.distance != distance; });
    }
    return ways;
}

const StaticRoute *Ways::route(std::uint16_t vrf, const config::IpAddress &address) const
{
    const StaticRoute *longest = nullptr;
    for (const StaticRoute &known : routes_) {
        const bool better = longest == nullptr || known.prefix.length > longest->prefix.length;
        if (known.vrf == vrf && better && config::contains(known.prefix, address) &&
            (known.next_hops.empty() || !of(known).empty())) {
            longest = &known;
        }
    }
    return longest;
}

/** The ways to an address, each with its host; those into a tunnel without one. */
std::vector<Way> Ways::direct(std::uint16_t vrf, const config::IpAddress &address) const
{
    const OwnAddress *own = network(vrf, address);
    const StaticRoute *longest = route(vrf, address);
    if (own != nullptr && (longest == nullptr || own->prefix.length >= longest->prefix.length)) {
        const InterfaceView *interface = find(interfaces_, own->interface);
        return interface == nullptr ? std::vector<Way>{} : std::vector{Way{interface, address}};
    }
    std::vector<Way> ways = longest == nullptr ? std::vector<Way>{} : of(*longest);
    for (Way &way : ways) {
        if (is_tunnel(way)) {
            way.host.reset();
        } else if (!way.host) {
            way.host = address;
        }
    }
    return ways;
}

std::vector<Way> Ways::to(std::uint16_t vrf, const config::IpAddress &address) const
{
    std::vector<Way> ways;
    for (const Way &way : direct(vrf, address)) {
        if (!is_tunnel(way)) {
            ways.push_back(way);
            continue;
        }
        const std::vector<Way> outer = to_tunnel_end(way.interface->plan->name);
        ways.insert(ways.end(), outer.begin(), outer.end());
    }
    return ways;
}

const config::Tunnel *Ways::tunnel(std::string_view name) const
{
    const auto known = std::find_if(config_.tunnels.begin(), config_.tunnels.end(),
                                    [name](const config::Tunnel &row) { return row.name == name; });
    return known == config_.tunnels.end() ? nullptr : &*known;
}

std::vector<Way> Ways::to_tunnel_end(std::string_view name) const
{
    const config::Tunnel *known = tunnel(name);
    if (known == nullptr) {
        return {};
    }
    std::vector<Way> ways = direct(config::VRF_DEFAULT, known->destination);
    std::erase_if(ways, is_tunnel);
    return ways;
}

} // namespace lab::routing
