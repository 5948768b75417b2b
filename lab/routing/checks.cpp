/*
 * checks.cpp: see checks.h.
 */
#include "routing/checks.h"

#include "config/networks.h"
#include "config/route_rows.h"
#include "routing/errors.h"
#include "routing/places.h"
#include "routing/view.h"
#include "session/nearest.h"

#include "chip/multipath_groups.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace lab::routing
{

namespace
{

const l3lif::Interface &need_interface(const l3lif::Layer &layer, std::string_view name)
{
    const l3lif::Interface *found = layer.routed().find(name);
    if (found == nullptr) {
        std::vector<std::string> names;
        for (const auto &interface : layer.interfaces()) {
            names.push_back(interface->lif->plan().name);
        }
        throw UnknownName(session::unknown("interface", name, names));
    }
    return *found;
}

/** The VRF that an interface is in, or will be when it is up. */
std::uint16_t vrf_of(const l3lif::Interface &interface)
{
    const l3lif::Lif &lif = *interface.lif;
    const std::uint16_t vrf = lif.record()->l3lif_pi_ctxt->vrf;
    return vrf == 0 ? config::VRF_DEFAULT : vrf;
}

/** "Vrf_red", "the default VRF". */
std::string vrf_text(const config::Description &config, std::uint16_t vrf)
{
    for (const auto &[name, number] : config.vrfs) {
        if (number == vrf) {
            return name;
        }
    }
    return vrf == config::VRF_DEFAULT ? "the default VRF" : fmt::format("VRF {}", vrf);
}

void need_unicast(const config::IpAddress &address)
{
    if (!address.is_unicast()) {
        throw Error(fmt::format("{} is not the address of one interface", address.text()));
    }
}

/** Whether a prefix of an interface of a VRF is such a one. */
template <class Test> bool any_prefix(const Scenery &scenery, std::uint16_t vrf, Test is_such_a_one)
{
    const auto &all = scenery.layer.interfaces();
    return std::any_of(all.begin(), all.end(), [&](const auto &interface) {
        const auto *row = row_of(scenery.config, interface->lif->plan().name);
        return row != nullptr && vrf_of(*interface) == vrf &&
               std::any_of(row->addresses.begin(), row->addresses.end(), is_such_a_one);
    });
}

/** Refuses a gateway that can't be one for a prefix, or that no network has. */
void check_gateway(const Scenery &scenery, const StaticRoute &route, const NextHop &hop)
{
    const config::IpAddress &gateway = *hop.gateway;
    need_unicast(gateway);
    if (gateway.ipv6 != route.prefix.address.ipv6) {
        throw Error(fmt::format("the gateway {} is of another family than {}", gateway.text(),
                                route.prefix.text()));
    }
    if (any_prefix(scenery, route.vrf,
                   [&](const config::Prefix &own) { return own.address == gateway; })) {
        throw Error(fmt::format("the gateway {} is an address of this switch", gateway.text()));
    }
    if (hop.interface.empty() && !any_prefix(scenery, route.vrf, [&](const config::Prefix &own) {
            return config::contains(own, gateway);
        })) {
        throw Error(fmt::format(
            "no interface of {} has a network with the gateway {}; name its interface, or give "
            "one an address on that network",
            vrf_text(scenery.config, route.vrf), gateway.text()));
    }
}

void check_hop(const Scenery &scenery, const StaticRoute &route, const NextHop &hop)
{
    if (!hop.interface.empty()) {
        const l3lif::Interface &interface = need_interface(scenery.layer, hop.interface);
        if (const std::uint16_t vrf = vrf_of(interface); vrf != route.vrf) {
            throw Error(fmt::format("{} is in {} and the route in {}; a route stays in its VRF",
                                    hop.interface, vrf_text(scenery.config, vrf),
                                    vrf_text(scenery.config, route.vrf)));
        }
    } else if (!hop.gateway) {
        throw Error("a next hop is a gateway, an interface, or both; this one is neither");
    }
    if (hop.gateway) {
        check_gateway(scenery, route, hop);
    }
}

} // namespace

void check_neighbor(const Scenery &scenery, const std::vector<StaticRoute> &routes,
                    const Neighbor &neighbor)
{
    const l3lif::LifPlan &plan = need_interface(scenery.layer, neighbor.interface).lif->plan();
    need_unicast(neighbor.address);
    if ((neighbor.mac[0] & 1U) != 0 || neighbor.mac == config::Mac{}) {
        throw Error(fmt::format("{} is not the MAC of one host", config::mac_text(neighbor.mac)));
    }
    const config::RoutedInterface *row = row_of(scenery.config, neighbor.interface);
    if (plan.kind == config::Kind::tunnel || row == nullptr) {
        throw Error(fmt::format("{} is a tunnel: it has no neighbours, a route leads into it",
                                neighbor.interface));
    }
    if (plan.kind != config::Kind::svi && !neighbor.port.empty()) {
        throw Error(fmt::format("only a neighbour of a VLAN interface has a port: leave out {}",
                                neighbor.port));
    }
    if (const std::string problem = config::host_problem(*row, neighbor.address, routes);
        !problem.empty()) {
        throw Error(problem);
    }
    std::string reason;
    if (!Places(scenery.config, scenery.layer, scenery.l2).of(neighbor, plan, reason)) {
        if (!neighbor.port.empty()) {
            throw UnknownName(reason);
        }
        throw Error(reason);
    }
}

void check_route(const Scenery &scenery, const StaticRoute &route)
{
    if (route.next_hops.size() > simswitch::chip::MULTIPATH_MEMBER_MAX) {
        throw Error(fmt::format("{} has {} next hops; the chip's groups have room for {}",
                                route.prefix.text(), route.next_hops.size(),
                                simswitch::chip::MULTIPATH_MEMBER_MAX));
    }
    for (const NextHop &hop : route.next_hops) {
        check_hop(scenery, route, hop);
    }
}

} // namespace lab::routing
