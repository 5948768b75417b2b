/*
 * default_route_names.cpp: see default_route_names.h.
 */
#include "config/default_route_names.h"

#include "config/names.h"

#include "services/ifindex.h"

#include <stdexcept>

namespace lab::config
{

namespace
{

namespace if_index = simswitch::if_index;
using if_index::Kind;

/** How the name of a class of interface begins. */
struct Beginning {
    std::string_view text;
    Kind kind;
};

constexpr Beginning BEGINNINGS[] = {
    {"Ethernet1/", Kind::port}, {"port-channel", Kind::port_channel}, {"Vlan", Kind::svi},
    {"Tunnel", Kind::tunnel},   {"mgmt", Kind::management},           {"loopback", Kind::loopback},
};

/** @throws std::out_of_range for a number that doesn't fit */
std::uint32_t build(Kind kind, unsigned number, std::optional<unsigned> sub)
{
    switch (kind) {
    case Kind::port:
        // Port 0 wraps round and doesn't fit either.
        return sub ? if_index::port_sub(number - 1, *sub) : if_index::port(number - 1);
    case Kind::port_channel:
        return sub ? if_index::port_channel_sub(number, *sub) : if_index::port_channel(number);
    case Kind::svi:
        return if_index::svi(number);
    case Kind::tunnel:
        return if_index::tunnel(number);
    case Kind::management:
        return if_index::management(number);
    case Kind::loopback:
        break;
    }
    return if_index::loopback(number);
}

/** Reads one of the switch's own names. */
std::optional<std::uint32_t> own_ifindex(std::string_view name)
{
    for (const Beginning &beginning : BEGINNINGS) {
        if (!name.starts_with(beginning.text)) {
            continue;
        }
        const std::string_view rest = name.substr(beginning.text.size());
        const std::size_t dot = rest.find('.');
        const auto number = parse_number(rest.substr(0, dot));
        const auto sub =
            dot == std::string_view::npos ? std::nullopt : parse_number(rest.substr(dot + 1));
        if (!number) {
            return std::nullopt;
        }
        try {
            const std::uint32_t ifindex = build(beginning.kind, *number, sub);
            // Leading zeros, or a dot where there are no subinterfaces.
            return if_index::name(ifindex) == name ? std::optional(ifindex) : std::nullopt;
        } catch (const std::out_of_range &) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::uint32_t> ifindex_of(const RouteNames &names, std::string_view name)
{
    const auto known = names.interfaces.find(name);
    return known != names.interfaces.end() ? std::optional(known->second) : own_ifindex(name);
}

std::string interface_name(const RouteNames &names, std::uint32_t ifindex)
{
    const auto known = names.names.find(ifindex);
    std::string name = known != names.names.end() ? known->second : if_index::name(ifindex);
    return ifindex_of(names, name) == ifindex ? name : "";
}

std::optional<int> port_of(const RouteNames &names, std::string_view name)
{
    const auto known = names.ports.find(name);
    if (known != names.ports.end()) {
        return known->second;
    }
    const auto ifindex = own_ifindex(name);
    return ifindex && if_index::main_interface(*ifindex) == *ifindex ? port_under(*ifindex)
                                                                     : std::nullopt;
}

std::optional<int> port_under(std::uint32_t ifindex)
{
    const auto parts = if_index::parts(ifindex);
    return parts && parts->kind == Kind::port ? std::optional(static_cast<int>(parts->number) + 1)
                                              : std::nullopt;
}

} // namespace lab::config
