/*
 * plan.cpp: see plan.h.
 */
#include "routing/plan.h"

#include "config/networks.h"

#include "chip/basics.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

constexpr std::string_view TO_CPU = "CPU";
constexpr std::string_view BLACK_HOLE = "black hole";

// No L3 interface has this number: what is sent to it is dropped, and a longest
// prefix that leads there keeps its flows from shorter ones. Port 0 is the CPU's.
constexpr int NO_INTERFACE = 0;
constexpr int NO_PORT = -1;

/** An IPv4 address in host order. */
std::uint32_t ip4_number(const config::IpAddress &address)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number = number << 8 | address.bytes.at(i);
    }
    return number;
}

/** Makes one plan. */
class Planner
{
public:
    Planner(const PlanInputs &inputs, std::vector<std::string> &problems)
        : inputs_(inputs), problems_(problems)
    {
        for (const InterfaceView &interface : inputs.interfaces) {
            by_name_.try_emplace(interface.plan->name, &interface);
        }
    }

    ChipPlan make()
    {
        for (const OwnAddress &own : inputs_.addresses) {
            plan_address(own);
        }
        for (const OwnAddress &own : inputs_.addresses) {
            plan_network(own);
        }
        for (const InterfaceView &interface : inputs_.interfaces) {
            if (interface.plan->kind == config::Kind::tunnel) {
                plan_tunnel(interface);
            }
        }
        for (const Neighbor &neighbor : inputs_.neighbors) {
            plan_neighbor(neighbor);
        }
        for (const StaticRoute &route : inputs_.routes) {
            plan_route(route);
        }
        return std::move(plan_);
    }

private:
    void plan_address(const OwnAddress &own);
    void plan_network(const OwnAddress &own);
    void plan_tunnel(const InterfaceView &interface);
    std::optional<config::IpAddress> source_of(const config::Tunnel &tunnel) const;
    void plan_neighbor(const Neighbor &neighbor);
    void plan_route(const StaticRoute &route);
    const InterfaceView *find_interface(std::string_view name) const;
    std::string to_cpu(std::string name, const InterfaceView &interface);
    std::string next_hop(const Way &way);
    std::string into_tunnel(const InterfaceView &tunnel);
    const PlannedEgress *known_host(const Way &way) const;
    void put_route(const chip::RouteKey &key, PlannedRoute route);

    const PlanInputs &inputs_;
    std::vector<std::string> &problems_;
    std::unordered_map<std::string_view, const InterfaceView *> by_name_;
    ChipPlan plan_;
};

const InterfaceView *Planner::find_interface(std::string_view name) const
{
    const auto found = by_name_.find(name);
    return found == by_name_.end() ? nullptr : found->second;
}

/** Plans an egress object that leads to the CPU; its interface is that of who may send from there.
 */
std::string Planner::to_cpu(std::string name, const InterfaceView &interface)
{
    chip::Egress record;
    record.interface = interface.iif;
    record.port = chip::CPU_PORT;
    plan_.egresses[name] = {record, std::string(TO_CPU)};
    return name;
}

/** Plans a route; the first of a prefix counts. */
void Planner::put_route(const chip::RouteKey &key, PlannedRoute route)
{
    const auto [there, is_new] = plan_.routes.try_emplace(key, route);
    if (!is_new && there->second.author != route.author) {
        problems_.push_back(fmt::format("{}: {} is there already by '{}', which counts",
                                        route.author, chip::text(key), there->second.author));
    }
}

void Planner::plan_address(const OwnAddress &own)
{
    const InterfaceView *interface = find_interface(own.interface);
    if (interface == nullptr || config::is_link_local(own.prefix.address)) {
        return;
    }
    const std::string name =
        fmt::format("address {} of {}", own.prefix.address.text(), own.interface);
    put_route(route_key(own.vrf, config::host_prefix(own.prefix.address)),
              {name, {to_cpu(name, *interface)}});
}

void Planner::plan_network(const OwnAddress &own)
{
    const InterfaceView *interface = find_interface(own.interface);
    const bool is_host = own.prefix.length == config::host_length(own.prefix.address);
    if (interface == nullptr || is_host || config::is_link_local(own.prefix.address)) {
        return;
    }
    const std::string name = fmt::format("connected {}", own.interface);
    put_route(route_key(own.vrf, own.prefix), {name, {to_cpu(name, *interface)}});
}

/** The address that a tunnel's packets come from: the file's, that of the way out, the first. */
std::optional<config::IpAddress> Planner::source_of(const config::Tunnel &tunnel) const
{
    if (tunnel.source) {
        return tunnel.source;
    }
    const std::vector<Way> ways = inputs_.ways.to_tunnel_end(tunnel.name);
    const OwnAddress *found = nullptr;
    for (const OwnAddress &own : inputs_.addresses) {
        const bool can_be = own.vrf == config::VRF_DEFAULT && !own.prefix.address.ipv6;
        const bool leads_out = !ways.empty() && ways.front().interface->plan->name == own.interface;
        if (can_be && leads_out) {
            return own.prefix.address;
        }
        found = can_be && found == nullptr ? &own : found;
    }
    return found == nullptr ? std::nullopt : std::optional(found->prefix.address);
}

void Planner::plan_tunnel(const InterfaceView &interface)
{
    const std::string name = fmt::format("tunnel {}", interface.plan->name);
    const config::Tunnel *row = inputs_.ways.tunnel(interface.plan->name);
    if (row == nullptr) {
        return;
    }
    if (row->destination.ipv6) {
        problems_.push_back(fmt::format("{}: its end {} is IPv6, and the chip's initiators are for "
                                        "IPv4",
                                        name, row->destination.text()));
        return;
    }
    const auto source = source_of(*row);
    if (!source) {
        problems_.push_back(fmt::format(
            "{}: the default VRF has no IPv4 address to send from; src_ip may give one", name));
        return;
    }
    const auto number = static_cast<int>(row - inputs_.tunnels.data()) + 1;
    plan_.tunnels[interface.iif] = {name,
                                    {number, ip4_number(*source), ip4_number(row->destination)}};
}

void Planner::plan_neighbor(const Neighbor &neighbor)
{
    const InterfaceView *interface = find_interface(neighbor.interface);
    if (interface == nullptr) {
        return;
    }
    const std::string name = neighbor_name(neighbor.interface, neighbor.address);
    std::string reason;
    const auto place = inputs_.places.of(neighbor, *interface->plan, reason);
    if (!place) {
        problems_.push_back(fmt::format("{}: {}", name, reason));
        return;
    }
    chip::Egress record;
    record.interface = interface->iif;
    record.mac = neighbor.mac;
    record.vlan = place->vlan;
    record.port = place->gport;
    plan_.egresses[name] = {record, neighbor.address.text()};
    if (!config::is_link_local(neighbor.address)) {
        put_route(route_key(interface->vrf, config::host_prefix(neighbor.address)), {name, {name}});
    }
}

/** The planned egress object of a way's host; null when the host isn't known. */
const PlannedEgress *Planner::known_host(const Way &way) const
{
    if (!way.host) {
        return nullptr;
    }
    const auto found = plan_.egresses.find(neighbor_name(way.interface->plan->name, *way.host));
    return found == plan_.egresses.end() ? nullptr : &found->second;
}

/** Plans the egress object into a tunnel; empty while no host on the way to its end is known. */
std::string Planner::into_tunnel(const InterfaceView &tunnel)
{
    std::string name = fmt::format("tunnel {}", tunnel.plan->name);
    for (const Way &way : inputs_.ways.to_tunnel_end(tunnel.plan->name)) {
        const PlannedEgress *host = known_host(way);
        if (host == nullptr) {
            continue;
        }
        chip::Egress record = host->record;
        record.interface = tunnel.iif;
        record.vlan = record.vlan != 0 ? record.vlan : way.interface->vlan;
        plan_.egresses[name] = {record, tunnel.plan->name};
        return name;
    }
    return "";
}

/** The name of the egress object of a way; empty when its host must be asked for. */
std::string Planner::next_hop(const Way &way)
{
    if (way.interface->plan->kind == config::Kind::tunnel) {
        return into_tunnel(*way.interface);
    }
    return known_host(way) != nullptr ? neighbor_name(way.interface->plan->name, *way.host) : "";
}

void Planner::plan_route(const StaticRoute &route)
{
    const std::string name = fmt::format("route {}", route.prefix.text());
    const chip::RouteKey key = route_key(route.vrf, route.prefix);
    if (route.next_hops.empty()) {
        const std::string hole =
            route.vrf == config::VRF_DEFAULT ? name : fmt::format("{} of VRF {}", name, route.vrf);
        chip::Egress record;
        record.interface = NO_INTERFACE;
        record.port = NO_PORT;
        plan_.egresses[hole] = {record, std::string(BLACK_HOLE)};
        put_route(key, {name, {hole}});
        return;
    }
    const std::vector<Way> ways = inputs_.ways.of(route);
    PlannedRoute planned{name, {}};
    for (const Way &way : ways) {
        std::string egress = next_hop(way);
        const bool is_new = std::find(planned.egresses.begin(), planned.egresses.end(), egress) ==
                            planned.egresses.end();
        if (!egress.empty() && is_new) {
            planned.egresses.push_back(std::move(egress));
        }
    }
    if (ways.empty()) {
        return; // none of its interfaces is up
    }
    if (planned.egresses.empty()) {
        const InterfaceView &first = *ways.front().interface;
        planned.egresses = {to_cpu(fmt::format("connected {}", first.plan->name), first)};
    }
    put_route(key, std::move(planned));
}

} // namespace

chip::RouteKey route_key(std::uint16_t vrf, const config::Prefix &prefix)
{
    config::Prefix ones{prefix.address, prefix.length};
    ones.address.bytes.fill(0xff);
    chip::RouteKey key;
    key.vrf = vrf;
    key.ip6 = prefix.address.ipv6;
    key.net = config::masked(prefix).address.bytes;
    key.mask = config::masked(ones).address.bytes;
    return key;
}

std::string neighbor_name(std::string_view interface, const config::IpAddress &address)
{
    return fmt::format("neighbor {} of {}", address.text(), interface);
}

ChipPlan make_plan(const PlanInputs &inputs, std::vector<std::string> &problems)
{
    return Planner(inputs, problems).make();
}

} // namespace lab::routing
