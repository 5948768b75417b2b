/*
 * route_rows.cpp: see route_rows.h.
 */
#include "config/route_rows.h"

#include "config/names.h"
#include "config/networks.h"
#include "config/row_checks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <tuple>

namespace lab::config
{

namespace
{

constexpr std::string_view DEFAULT_VRF = "default";
constexpr std::uint32_t DISTANCE_MAX = 255;
// A group of the chip has room for so many.
constexpr std::size_t NEXT_HOPS_MAX = 64;

/** The two parts of a key, cut at its first bar. */
std::pair<std::string, std::string> two_parts(const std::string &key, std::string_view form)
{
    const std::size_t bar = key.find('|');
    if (bar == std::string::npos) {
        refuse("the key is no {}", form);
    }
    return {key.substr(0, bar), key.substr(bar + 1)};
}

/** The items of a field that has one for each way, also empty ones; none when it isn't there. */
std::vector<std::string> items_of(const Row &row, std::string_view name)
{
    const Field *field = row.find(name);
    if (field == nullptr) {
        return listed(row, name);
    }
    if (field->is_list) {
        return field->items;
    }
    const std::string &text = *scalar(row, name);
    std::vector<std::string> items;
    for (std::size_t start = 0; !text.empty() && start <= text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        items.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
    return items;
}

std::uint16_t need_vrf(const std::string &name, const Description &description)
{
    if (name == DEFAULT_VRF) {
        return VRF_DEFAULT;
    }
    const auto vrf = description.vrfs.find(name);
    if (vrf == description.vrfs.end()) {
        refuse("its VRF {} isn't in VRF", in_quotes(name));
    }
    // cppcheck-suppress derefInvalidIteratorRedundantCheck  // refuse() doesn't return
    return vrf->second;
}

const RoutedInterface *find_interface(const Description &description, std::string_view name)
{
    const auto found =
        std::find_if(description.interfaces.begin(), description.interfaces.end(),
                     [name](const RoutedInterface &known) { return known.name == name; });
    return found == description.interfaces.end() ? nullptr : &*found;
}

bool is_tunnel(const Description &description, std::string_view name)
{
    return std::any_of(description.tunnels.begin(), description.tunnels.end(),
                       [name](const Tunnel &known) { return known.name == name; });
}

/** The VRF of an interface or tunnel; refuses one that isn't taken. */
std::uint16_t need_vrf_of(const std::string &name, const Description &description)
{
    if (const RoutedInterface *interface = find_interface(description, name)) {
        return interface->vrf;
    }
    if (!is_tunnel(description, name)) {
        refuse("no row that is taken makes {} a routed interface", in_quotes(name));
    }
    return VRF_DEFAULT;
}

bool is_own_address(const Description &description, std::uint16_t vrf, const IpAddress &address)
{
    return std::any_of(description.interfaces.begin(), description.interfaces.end(),
                       [&](const RoutedInterface &known) {
                           const auto &all = known.addresses;
                           return known.vrf == vrf &&
                                  std::any_of(all.begin(), all.end(), [&](const Prefix &prefix) {
                                      return prefix.address == address;
                                  });
                       });
}

bool has_network(const Description &description, std::uint16_t vrf, const IpAddress &address)
{
    return std::any_of(description.interfaces.begin(), description.interfaces.end(),
                       [&](const RoutedInterface &known) {
                           const auto &all = known.addresses;
                           return known.vrf == vrf &&
                                  std::any_of(all.begin(), all.end(), [&](const Prefix &own) {
                                      return contains(own, address);
                                  });
                       });
}

/** A row of STATIC_ROUTE while it is read: a list of items for each field. */
class RouteRow
{
public:
    RouteRow(const Row &row, const Description &description)
        : description_(description), gateways_(items_of(row, "nexthop")),
          interfaces_(items_of(row, "ifname")), distances_(items_of(row, "distance")),
          vrfs_(items_of(row, "nexthop-vrf")), holes_(items_of(row, "blackhole"))
    {
        count_ = std::max(gateways_.size(), interfaces_.size());
        need_count("nexthop", gateways_, false);
        need_count("ifname", interfaces_, false);
        need_count("distance", distances_, true);
        need_count("nexthop-vrf", vrfs_, true);
        need_count("blackhole", holes_, true);
    }

    /** The ways; none for a black hole. */
    std::vector<NextHop> next_hops(const StaticRoute &route) const
    {
        if (is_black_hole()) {
            return {};
        }
        if (count_ == 0) {
            refuse("nexthop and ifname are missing, one of them was expected");
        }
        if (count_ > NEXT_HOPS_MAX) {
            refuse("it has {} next hops; the chip's groups have room for {}", count_,
                   NEXT_HOPS_MAX);
        }
        std::vector<NextHop> hops;
        for (std::size_t i = 0; i < count_; ++i) {
            hops.push_back(next_hop(route, i));
        }
        return hops;
    }

private:
    /** Refuses a field whose items are not as many as the ways. */
    void need_count(std::string_view name, const std::vector<std::string> &items,
                    bool one_for_all) const
    {
        const bool fits = items.empty() || items.size() == count_ || count_ == 0 ||
                          (one_for_all && items.size() == 1);
        if (!fits) {
            refuse("{} has {} items and there are {} next hops", name, items.size(), count_);
        }
    }

    /** The item of a way; empty when the field isn't there. */
    static std::string item(const std::vector<std::string> &items, std::size_t at)
    {
        return items.empty() ? "" : items.at(items.size() == 1 ? 0 : at);
    }

    bool is_black_hole() const
    {
        std::size_t holes = 0;
        for (const std::string &text : holes_) {
            if (text != "true" && text != "false" && !text.empty()) {
                refuse("blackhole is {}, \"true\" or \"false\" was expected", in_quotes(text));
            }
            holes += text == "true" ? 1 : 0;
        }
        if (holes != 0 && holes != holes_.size()) {
            refuse("blackhole is true for {} of {} ways; it must be so for all or none", holes,
                   holes_.size());
        }
        return holes != 0;
    }

    NextHop next_hop(const StaticRoute &route, std::size_t at) const
    {
        NextHop hop;
        hop.interface = item(interfaces_, at);
        hop.gateway = gateway(route, item(gateways_, at));
        if (!hop.interface.empty() && need_vrf_of(hop.interface, description_) != route.vrf) {
            refuse("its interface {} is in another VRF; a route stays in its own", hop.interface);
        }
        if (!hop.gateway && hop.interface.empty()) {
            refuse("next hop {} has neither a gateway nor an interface", at + 1);
        }
        if (hop.gateway && hop.interface.empty() &&
            !has_network(description_, route.vrf, *hop.gateway)) {
            refuse("nexthop {} is on no network of the VRF; ifname may name its interface",
                   hop.gateway->text());
        }
        if (const std::string text = item(distances_, at); !text.empty()) {
            const auto distance = parse_number(text);
            if (!distance || *distance > DISTANCE_MAX) {
                refuse("distance {} is not in 0..{}", number_or_quotes(text), DISTANCE_MAX);
            }
            hop.distance = *distance;
        }
        if (const std::string name = item(vrfs_, at);
            !name.empty() && need_vrf(name, description_) != route.vrf) {
            refuse("nexthop-vrf {} isn't the route's VRF; a route stays in its own",
                   in_quotes(name));
        }
        return hop;
    }

    /** A gateway; nothing where only the interface counts. */
    std::optional<IpAddress> gateway(const StaticRoute &route, const std::string &text) const
    {
        if (text.empty() || text == "0.0.0.0" || text == "::") {
            return std::nullopt;
        }
        const IpAddress address = need_unicast("nexthop", text);
        if (address.ipv6 != route.prefix.address.ipv6) {
            refuse("nexthop {} is of another family than {}", address.text(), route.prefix.text());
        }
        if (is_own_address(description_, route.vrf, address)) {
            refuse("nexthop {} is an address of this switch", address.text());
        }
        return address;
    }

    const Description &description_;
    std::vector<std::string> gateways_;
    std::vector<std::string> interfaces_;
    std::vector<std::string> distances_;
    std::vector<std::string> vrfs_;
    std::vector<std::string> holes_;
    std::size_t count_ = 0;
};

void read_static_routes(const Tables &tables, Description &description)
{
    std::set<std::tuple<std::uint16_t, std::string>> known;
    for_each_row(tables, "STATIC_ROUTE", description, [&](const std::string &key, const Row &row) {
        const std::size_t bar = key.find('|');
        StaticRoute route;
        if (bar != std::string::npos) {
            route.vrf = need_vrf(key.substr(0, bar), description);
        }
        std::string reason;
        const std::string text = bar == std::string::npos ? key : key.substr(bar + 1);
        const auto prefix = parse_destination(text, reason);
        if (!prefix) {
            refuse("{}", reason);
        }
        route.prefix = *prefix;
        need_object(row);
        route.next_hops = RouteRow(row, description).next_hops(route);
        if (!known.emplace(route.vrf, route.prefix.text()).second) {
            refuse("another row routes {} in this VRF already", route.prefix.text());
        }
        description.static_routes.push_back(std::move(route));
    });
}

void need_family(const Row &row, bool ipv6)
{
    const std::string *family = scalar(row, "family");
    if (family != nullptr && *family != (ipv6 ? "IPv6" : "IPv4")) {
        refuse("family is {}, and the address is {}", in_quotes(*family), ipv6 ? "IPv6" : "IPv4");
    }
}

void read_neighbors(const Tables &tables, Description &description)
{
    for_each_row(tables, "NEIGH", description, [&](const std::string &key, const Row &row) {
        const auto [name, text] = two_parts(key, "INTERFACE|ADDRESS");
        const IpAddress address = need_unicast("the address", text);
        need_object(row);
        need_family(row, address.ipv6);
        const RoutedInterface *interface = find_interface(description, name);
        if (interface == nullptr) {
            refuse("no row that is taken makes {} a routed interface", in_quotes(name));
        }
        // cppcheck-suppress nullPointerRedundantCheck ; refuse() doesn't return
        const std::string problem = host_problem(*interface, address, description.static_routes);
        if (!problem.empty()) {
            refuse("{}", problem);
        }
        const std::string *neigh = scalar(row, "neigh");
        if (neigh == nullptr) {
            refuse("neigh, the MAC, is missing; the host is asked for when it is needed");
        }
        std::string reason;
        const auto mac = parse_mac(*neigh, reason);
        if (!mac) {
            refuse("neigh: {}", reason);
        }
        description.neighbors.push_back({name, address, *mac});
    });
}

void need_member(const std::string &port, const std::string &name, const Vlan &vlan)
{
    std::vector<std::string> names;
    for (const VlanMember &member : vlan.members) {
        names.push_back(member.name);
    }
    if (std::find(names.begin(), names.end(), port) == names.end()) {
        refuse("its port {} is no member of {}{}", in_quotes(port), name,
               names.empty() ? ", which has none"
                             : fmt::format("; those are {}", fmt::join(names, ", ")));
    }
}

void read_static_macs(const Tables &tables, Description &description)
{
    for_each_row(tables, "FDB", description, [&](const std::string &key, const Row &row) {
        const auto [name, text] = two_parts(key, "VLAN|MAC");
        const Vlan &vlan = need_known_vlan(name, description);
        std::string reason;
        const auto mac = parse_mac(text, reason);
        if (!mac) {
            refuse("{}", reason);
        }
        need_object(row);
        const std::string *type = scalar(row, "type");
        if (type != nullptr && *type != "static") {
            refuse("type is {}, and only static stations are taken: others are learned",
                   in_quotes(*type));
        }
        const std::string *port = scalar(row, "port");
        if (port == nullptr) {
            refuse("port is missing, the port or port-channel that the station is behind");
        }
        need_member(*port, name, vlan);
        for (const StaticMac &known : description.static_macs) {
            if (known.vlan == vlan.id && known.mac == *mac) {
                refuse("another row has {} in {} already", mac_text(*mac), name);
            }
        }
        description.static_macs.push_back({vlan.id, *mac, *port});
    });
}

/** Whether a route leads to an interface alone, on which an address then is. */
bool leads_to(const StaticRoute &route, std::string_view interface, const IpAddress &address)
{
    const auto &hops = route.next_hops;
    return contains(route.prefix, address) &&
           std::any_of(hops.begin(), hops.end(), [interface](const NextHop &hop) {
               return !hop.gateway && hop.interface == interface;
           });
}

} // namespace

void read_routes(const Tables &tables, Description &description)
{
    read_static_routes(tables, description);
    read_static_macs(tables, description);
    read_neighbors(tables, description);
}

std::string host_problem(const RoutedInterface &interface, const IpAddress &address,
                         const std::vector<StaticRoute> &routes)
{
    bool has_family = false;
    std::vector<std::string> networks;
    for (const Prefix &prefix : interface.addresses) {
        if (prefix.address == address) {
            return fmt::format("{} is {}'s own address; a neighbour has another", address.text(),
                               interface.name);
        }
        if (contains(prefix, address)) {
            return "";
        }
        has_family = has_family || prefix.address.ipv6 == address.ipv6;
        networks.push_back(masked(prefix).text());
    }
    // Hosts of an interface without addresses may be anywhere.
    const bool anywhere = !has_family || is_link_local(address) ||
                          std::any_of(routes.begin(), routes.end(), [&](const StaticRoute &route) {
                              return leads_to(route, interface.name, address);
                          });
    return anywhere ? ""
                    : fmt::format("{} is on no network of {}, which has {}", address.text(),
                                  interface.name, fmt::join(networks, ", "));
}

} // namespace lab::config
