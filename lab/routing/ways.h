/*
 * ways.h: which hosts lead to a destination: the destination itself on a
 * network of ours, else the gateways of a static route, of which those at the
 * lowest distance count that can be reached. Nothing here asks whether a host
 * is known. plan.h makes next hops of them.
 */
#pragma once

#include "routing/records.h"
#include "routing/view.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace lab::routing
{

/** A way out of the switch. */
struct Way {
    const InterfaceView *interface = nullptr;
    std::optional<config::IpAddress> host; ///< next host; nothing: whoever has the destination
    unsigned distance = 0;
};

/** Finds ways. What it was made of must outlive it. */
class Ways
{
public:
    Ways(const std::vector<InterfaceView> &interfaces, const std::vector<OwnAddress> &addresses,
         const std::vector<StaticRoute> &routes, const config::Description &config)
        : interfaces_(interfaces), addresses_(addresses), routes_(routes), config_(config)
    {
    }

    /** The ways of a static route that can be taken, of the lowest distance alone. */
    std::vector<Way> of(const StaticRoute &route) const;
    /**
     * The ways to a destination, each with its host; a route into a tunnel gives
     * those to the tunnel's end. None when there is no route or a black hole.
     */
    std::vector<Way> to(std::uint16_t vrf, const config::IpAddress &address) const;
    /** The ways to the end of a tunnel that don't lead into a tunnel. */
    std::vector<Way> to_tunnel_end(std::string_view name) const;
    /** What a configuration says of a tunnel; null for an unknown one. */
    const config::Tunnel *tunnel(std::string_view name) const;
    /** The longest own network that has an address; null when there is none. */
    const OwnAddress *network(std::uint16_t vrf, const config::IpAddress &address) const;
    /** The longest static route that has an address and can be taken; null when there is none. */
    const StaticRoute *route(std::uint16_t vrf, const config::IpAddress &address) const;

private:
    std::optional<Way> way_over(const StaticRoute &route, const NextHop &hop) const;
    std::vector<Way> direct(std::uint16_t vrf, const config::IpAddress &address) const;

    const std::vector<InterfaceView> &interfaces_;
    const std::vector<OwnAddress> &addresses_;
    const std::vector<StaticRoute> &routes_;
    const config::Description &config_;
};

} // namespace lab::routing
