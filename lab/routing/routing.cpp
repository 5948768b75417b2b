/*
 * routing.cpp: see routing.h.
 */
#include "routing/routing.h"

#include "config/networks.h"
#include "routing/checks.h"
#include "routing/places.h"
#include "routing/plan.h"
#include "routing/ways.h"

#include "chip/chip.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace lab::routing
{

Routing::Routing(simswitch::Switch &hardware, const l3lif::Layer &layer,
                 simswitch::chip::pipeline::L2Table &l2)
    : hardware_(hardware), layer_(layer), l2_(l2), writer_(hardware)
{
}

void Routing::configure(const config::Description &config)
{
    for (const config::StaticMac &old : config_.static_macs) {
        l2_.remove(old.vlan, old.mac);
    }
    config_ = config;
    neighbors_.clear();
    notes_.clear();
    const Places places(config_, layer_, l2_);
    for (const config::StaticMac &row : config_.static_macs) {
        const auto gport = places.gport_of(row.port);
        const auto outcome = gport ? l2_.add_static(row.vlan, row.mac, *gport)
                                   : simswitch::Outcome{simswitch::ERROR_NOT_FOUND,
                                                        row.port + " has no place in the chip"};
        if (!outcome.ok()) {
            notes_.push_back(fmt::format("static MAC {} of VLAN {}: {}", config::mac_text(row.mac),
                                         row.vlan, outcome.reason));
        }
    }
    for (const config::Neighbor &row : config_.neighbors) {
        neighbors_.push_back({row.interface, row.address, row.mac, "", 0});
    }
    routes_ = config_.static_routes;
}

void Routing::sync()
{
    interfaces_ = interfaces_up(layer_, hardware_.chip);
    addresses_ = addresses_on(config_, layer_, interfaces_);
    problems_ = notes_;
    const Ways ways(interfaces_, addresses_, routes_, config_);
    const Places places(config_, layer_, l2_);
    const ChipPlan plan = make_plan(
        {interfaces_, addresses_, neighbors_, routes_, config_.tunnels, ways, places}, problems_);
    writer_.write(plan, problems_);
}

void Routing::set_neighbor(const Neighbor &neighbor)
{
    check_neighbor({config_, layer_, l2_}, routes_, neighbor);
    const auto known =
        std::find_if(neighbors_.begin(), neighbors_.end(), [&neighbor](const Neighbor &other) {
            return other.interface == neighbor.interface && other.address == neighbor.address;
        });
    if (known == neighbors_.end()) {
        neighbors_.push_back(neighbor);
    } else {
        *known = neighbor;
    }
    sync();
}

bool Routing::remove_neighbor(std::string_view interface, const config::IpAddress &address)
{
    const auto removed = std::erase_if(neighbors_, [&](const Neighbor &known) {
        return known.interface == interface && known.address == address;
    });
    sync();
    return removed != 0;
}

void Routing::add_route(const StaticRoute &route)
{
    StaticRoute wanted = route;
    wanted.prefix = config::masked(route.prefix);
    check_route({config_, layer_, l2_}, wanted);
    const auto known =
        std::find_if(routes_.begin(), routes_.end(), [&wanted](const StaticRoute &other) {
            return other.vrf == wanted.vrf && other.prefix == wanted.prefix;
        });
    if (known == routes_.end()) {
        routes_.push_back(std::move(wanted));
    } else {
        *known = std::move(wanted);
    }
    sync();
}

bool Routing::remove_route(std::uint16_t vrf, const config::Prefix &prefix)
{
    const auto removed = std::erase_if(routes_, [&](const StaticRoute &known) {
        return known.vrf == vrf && known.prefix == config::masked(prefix);
    });
    sync();
    return removed != 0;
}

std::optional<OwnAddress> Routing::own(std::uint16_t vrf, const config::IpAddress &address) const
{
    const auto found =
        std::find_if(addresses_.begin(), addresses_.end(), [&](const OwnAddress &known) {
            return known.vrf == vrf && known.prefix.address == address;
        });
    return found == addresses_.end() ? std::nullopt : std::optional(*found);
}

std::optional<OwnAddress> Routing::network_of(std::uint16_t vrf,
                                              const config::IpAddress &address) const
{
    const Ways ways(interfaces_, addresses_, routes_, config_);
    const OwnAddress *own = ways.network(vrf, address);
    const StaticRoute *route = ways.route(vrf, address);
    if (route == nullptr || (own != nullptr && own->prefix.length >= route->prefix.length)) {
        return own == nullptr ? std::nullopt : std::optional(*own);
    }
    for (const Way &way : ways.of(*route)) {
        const auto source =
            std::find_if(addresses_.begin(), addresses_.end(), [&](const OwnAddress &known) {
                return known.interface == way.interface->plan->name &&
                       known.prefix.address.ipv6 == address.ipv6;
            });
        if (!way.host && source != addresses_.end()) {
            return *source;
        }
    }
    return own == nullptr ? std::nullopt : std::optional(*own);
}

std::optional<config::IpAddress> Routing::gateway_of(std::uint16_t vrf,
                                                     const config::IpAddress &address) const
{
    const Ways ways(interfaces_, addresses_, routes_, config_);
    const std::vector<Way> all = ways.to(vrf, address);
    const auto unknown = std::find_if(all.begin(), all.end(), [this](const Way &way) {
        return std::none_of(neighbors_.begin(), neighbors_.end(), [&way](const Neighbor &known) {
            return known.interface == way.interface->plan->name && known.address == way.host;
        });
    });
    if (unknown != all.end()) {
        return unknown->host;
    }
    return all.empty() ? std::nullopt : all.front().host;
}

std::string Routing::next_hop_text(int egress) const
{
    return std::string(writer_.text_of(egress));
}

int Routing::egress_of(const Neighbor &neighbor) const
{
    return writer_.id_of(neighbor_name(neighbor.interface, neighbor.address));
}

std::vector<std::string> Routing::ports_of(std::string_view interface) const
{
    const l3lif::Interface *known = layer_.routed().find(interface);
    if (known == nullptr || known->lif->plan().kind != config::Kind::svi) {
        return {};
    }
    return Places(config_, layer_, l2_).members_of(known->lif->plan().vlan);
}

std::string Routing::port_of(const Neighbor &neighbor) const
{
    const l3lif::Interface *interface = layer_.routed().find(neighbor.interface);
    std::string reason;
    const auto place =
        interface == nullptr
            ? std::nullopt
            : Places(config_, layer_, l2_).of(neighbor, interface->lif->plan(), reason);
    return place ? place->name : "";
}

} // namespace lab::routing
