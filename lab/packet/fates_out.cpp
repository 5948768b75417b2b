/*
 * fates_out.cpp: what else goes where a frame went, or is lost where it was
 * lost, on the way out. See fates_parts.h.
 */
#include "packet/fates_parts.h"

#include "packet/objects.h"

#include "chip/pipeline/route_index.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace lab::packet
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;
using pipeline::Line;
using pipeline::Mark;
using pipeline::Reason;
using pipeline::Stage;

namespace
{

constexpr std::size_t ROUTES_SHOWN = 3;

/** The routes for which a function of their next hop's egress objects is true for one. */
template <class Uses> std::vector<std::string> routes_that(const End &end, Uses uses)
{
    const chip::Chip &chip = end.names.chip();
    std::vector<std::string> prefixes;
    for (const auto &[key, route] : chip.routes.all()) {
        const chip::MultipathGroup *group =
            route.multipath ? chip.multipath_groups.find(route.next_hop) : nullptr;
        const bool meets = group != nullptr
                               ? std::any_of(group->members.begin(), group->members.end(), uses)
                               : !route.multipath && uses(route.next_hop);
        if (meets) {
            const std::string text = chip::text(key);
            const std::string prefix = text.substr(text.rfind(' ') + 1);
            prefixes.push_back(key.vrf == config::VRF_DEFAULT
                                   ? prefix
                                   : fmt::format("{} of VRF {}", prefix, end.names.vrf(key.vrf)));
        }
    }
    return prefixes;
}

/** "3 routes: 10.0.0.0/8, …"; "no other route" for none. */
std::string routes_text(const std::vector<std::string> &prefixes)
{
    return prefixes.empty()
               ? "no route"
               : fmt::format("{} route{}: {}", prefixes.size(), prefixes.size() == 1 ? "" : "s",
                             first_of(prefixes, ROUTES_SHOWN));
}

/** What goes by the egress object that the frame met. */
std::string by_egress(const End &end)
{
    const int id = number_at(end, Stage::egress);
    return fmt::format("all that goes by egress {}, {}", id,
                       routes_text(routes_that(end, [id](int egress) { return egress == id; })));
}

/** What leaves by the L3 interface that the frame met. */
std::string by_interface(const End &end, const std::string &which)
{
    const int id = number_at(end, Stage::l3_interface);
    const chip::Chip &chip = end.names.chip();
    const auto prefixes = routes_that(end, [id, &chip](int egress) {
        const chip::Egress *object = chip.egresses.find(egress);
        return object != nullptr && object->interface == id && !leads_to_cpu(*object);
    });
    return fmt::format("every packet{} that leaves by {}, {}", which, end.names.interface(id),
                       routes_text(prefixes));
}

std::string to_mac(const End &end)
{
    return fmt::format("{} in VLAN {}", chip::text(end.frame.destination), vlan_of(end));
}

/** Of a frame that was to leave by a port: routed, or bridged. */
Fates on_the_way_out(const End &end)
{
    if (line_of(end, Stage::egress) != nullptr) {
        return {by_egress(end)};
    }
    return {fmt::format("every frame to {}", to_mac(end))};
}

Fates no_route(const End &end)
{
    const auto *ingress = end.names.chip().l3_ingresses.find(end.result.ingress);
    const int vrf = ingress == nullptr ? config::VRF_DEFAULT : ingress->vrf;
    std::size_t count = 0;
    for (const auto &[key, route] : end.names.chip().routes.all()) {
        count += key.vrf == vrf && key.ip6 == end.frame.is_ip6() ? 1 : 0;
    }
    const char *family = end.frame.is_ip6() ? "IPv6" : "IPv4";
    const std::string whose =
        count == 0 ? fmt::format("every {} packet, for there is no {} route at all", family, family)
                   : fmt::format("every {} packet that none of the {} {} routes matches", family,
                                 count, family);
    return {fmt::format("{}, from {}", whose, same_vrf(end))};
}

/** A host that isn't known is asked for; those beside it that are known are routed. */
Fates to_cpu(const End &end)
{
    const auto *ingress = end.names.chip().l3_ingresses.find(end.result.ingress);
    const config::IpAddress to{end.frame.is_ip6(), end.frame.to};
    const auto asked =
        ingress == nullptr
            ? std::nullopt
            : end.names.state().routing.gateway_of(static_cast<std::uint16_t>(ingress->vrf), to);
    const std::string prefix = prefix_of(end);
    const bool is_network = prefix.find('/') != std::string::npos;
    return {fmt::format("every packet to {}{} from {}",
                        is_network && asked == to ? "an unknown host of " : "", prefix,
                        same_vrf(end))};
}

Fates reverse_path(const End &end)
{
    const Line *line = line_of(end, Stage::reverse_path);
    const std::string where = where_in(end);
    if (line == nullptr || line->text.find("no route") != std::string::npos) {
        return {fmt::format("every packet on {} from an address without a route", where)};
    }
    return {fmt::format("every packet on {} from {}, whose route leads elsewhere", where,
                        prefix_in(*line, end))};
}

Fates field_entry(const End &end)
{
    const chip::FieldEntry *entry =
        end.names.chip().field_entries.find(number_at(end, Stage::field));
    if (entry == nullptr || !entry->installed) {
        return {"every frame that the field entry matches"};
    }
    const chip::FieldRule &rule = *entry->installed;
    const std::string kind = !rule.l3_routable   ? "every frame"
                             : *rule.l3_routable ? "every frame that is L3-routable"
                                                 : "every frame that isn't L3-routable";
    if (!rule.in_ports) {
        return {kind + ", on any port"};
    }
    chip::PortSet ports = rule.in_ports->data;
    ports &= rule.in_ports->mask;
    return {fmt::format("{} on {}", kind, end.names.ports(ports))};
}

int mtu_of(const End &end)
{
    const chip::L3Interface *object =
        end.names.chip().l3_interfaces.find(number_at(end, Stage::l3_interface));
    return object == nullptr ? 0 : object->mtu;
}

int lowest_ttl_of(const End &end)
{
    const chip::L3Interface *object =
        end.names.chip().l3_interfaces.find(number_at(end, Stage::l3_interface));
    return object == nullptr ? 0 : object->ttl;
}

Fates routed(const End &end)
{
    std::string text = fmt::format("every packet to {} from {}", prefix_of(end), same_vrf(end));
    if (const Line *line = line_of(end, Stage::multipath)) {
        const auto *group =
            end.names.chip().multipath_groups.find(number_at(end, Stage::multipath));
        text += line->mark == Mark::hit && group != nullptr
                    ? fmt::format(", its flow choosing one of {} paths", group->members.size())
                    : "";
    }
    return {text};
}

} // namespace

std::optional<Fates> fates_of_sent(Reason reason, const End &end)
{
    switch (reason) {
    case Reason::routed:
        return routed(end);
    case Reason::bridged:
        return Fates{fmt::format("every frame to {}", to_mac(end))};
    case Reason::flooded:
        return Fates{fmt::format("every {} in VLAN {}",
                                 end.frame.is_broadcast() ? "broadcast"
                                 : end.frame.is_group()   ? "frame to a group that isn't known"
                                                          : "frame to an address that isn't known",
                                 vlan_of(end))};
    case Reason::redirected:
        return field_entry(end);
    default:
        return std::nullopt;
    }
}

std::optional<Fates> fates_at_cpu(Reason reason, const End &end)
{
    const std::string where = where_in(end);
    switch (reason) {
    case Reason::bridge_protocol:
        return Fates{
            fmt::format("every frame to 01:80:c2:00:00:00 to 0f on {}", end.names.port(end.port))};
    case Reason::arp:
        return Fates{fmt::format("every ARP request on {}", where)};
    case Reason::neighbour_discovery:
        return Fates{fmt::format("all neighbour discovery on {}", where)};
    case Reason::link_local:
        return Fates{fmt::format("every packet on {} to 224.0.0.0/24, ff02::/16 or a link-local "
                                 "address of the switch",
                                 where)};
    case Reason::broadcast:
        return Fates{fmt::format("every IPv4 broadcast on {}", where)};
    case Reason::igmp:
        return Fates{fmt::format("all IGMP in VLAN {}", vlan_of(end))};
    case Reason::cpu_next_hop:
        return to_cpu(end);
    case Reason::cpu_address:
        return Fates{fmt::format("every frame to {}", to_mac(end))};
    case Reason::cpu_member:
        return Fates{fmt::format("everything that is flooded in VLAN {}", vlan_of(end))};
    case Reason::ttl_expired:
        return Fates{"every packet with a TTL of 1 or 0 that is to be routed"};
    case Reason::mtu:
        return Fates{by_interface(end, fmt::format(" longer than {} bytes", mtu_of(end)))};
    default:
        return std::nullopt;
    }
}

std::optional<Fates> fates_out(Reason reason, const End &end)
{
    switch (reason) {
    case Reason::no_label:
        return Fates{fmt::format("every MPLS frame to a station on {}", where_in(end))};
    case Reason::reverse_path:
        return reverse_path(end);
    case Reason::field_drop:
        return field_entry(end);
    case Reason::no_route:
        return no_route(end);
    case Reason::no_group:
    case Reason::black_hole:
        return Fates{fmt::format("every packet to {} from {}", prefix_of(end), same_vrf(end))};
    case Reason::no_l3_interface:
    case Reason::no_tunnel:
        return Fates{by_interface(end, "")};
    case Reason::ttl_low:
        return Fates{by_interface(end, fmt::format(" with a TTL below {}", lowest_ttl_of(end)))};
    case Reason::no_egress:
    case Reason::no_port:
    case Reason::no_trunk:
    case Reason::no_trunk_port:
    case Reason::no_out_vlan:
    case Reason::out_not_a_member:
    case Reason::stp_out:
        return on_the_way_out(end);
    case Reason::same_port:
        return Fates{
            fmt::format("every frame from {} to {}", end.names.port(end.port), to_mac(end))};
    case Reason::nobody:
        return Fates{fmt::format("everything that is flooded in VLAN {} from {}", vlan_of(end),
                                 end.names.port(end.port))};
    default:
        return std::nullopt;
    }
}

} // namespace lab::packet
