/*
 * ifindex.cpp: the encoding of interface indexes and the platform's questions
 * about them.
 */
#include "services/ifindex.h"

#include "journal/call.h"

#include <services/if_index.h>

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

using simswitch::Call;
using simswitch::Layer;

namespace simswitch::if_index
{

namespace
{

constexpr unsigned CLASS_SHIFT = 28;
constexpr unsigned NUMBER_MAX = (1U << CLASS_SHIFT) - 1;
constexpr unsigned PORT_MAX = 255;
constexpr unsigned PORT_SHIFT = 20;
constexpr unsigned CHANNEL_MAX = 65535;
constexpr unsigned CHANNEL_SHIFT = 12;
constexpr unsigned VLAN_MAX = 65535;

void check(const char *what, unsigned value, unsigned low, unsigned high)
{
    if (value < low || value > high) {
        throw std::out_of_range(
            fmt::format("interface index: {} {} is not in {}..{}", what, value, low, high));
    }
}

std::uint32_t make(Kind kind, std::uint32_t rest)
{
    return static_cast<std::uint32_t>(kind) << CLASS_SHIFT | rest;
}

std::uint32_t make_numbered(Kind kind, const char *what, unsigned number, unsigned high)
{
    check(what, number, 0, high);
    return make(kind, number);
}

/** Nothing when the subinterface is above the highest one. */
std::optional<Parts> split(Kind kind, std::uint32_t rest, unsigned shift, unsigned sub_last)
{
    const unsigned number = rest >> shift;
    const unsigned sub = rest - (number << shift);
    if (sub > sub_last) {
        return std::nullopt;
    }
    return Parts{.kind = kind, .number = number, .sub = sub};
}

} // namespace

std::uint32_t port(unsigned zero_based)
{
    check("port", zero_based, 0, PORT_MAX);
    return make(Kind::port, zero_based << PORT_SHIFT);
}

std::uint32_t port_sub(unsigned zero_based, unsigned sub)
{
    check("subinterface", sub, 1, PORT_SUB_LAST);
    return port(zero_based) | sub;
}

std::uint32_t port_channel(unsigned number)
{
    check("port-channel", number, 0, CHANNEL_MAX);
    return make(Kind::port_channel, number << CHANNEL_SHIFT);
}

std::uint32_t port_channel_sub(unsigned number, unsigned sub)
{
    check("subinterface", sub, 1, CHANNEL_SUB_LAST);
    return port_channel(number) | sub;
}

std::uint32_t svi(unsigned vlan)
{
    return make_numbered(Kind::svi, "VLAN", vlan, VLAN_MAX);
}

std::uint32_t tunnel(unsigned number)
{
    return make_numbered(Kind::tunnel, "tunnel", number, NUMBER_MAX);
}

std::uint32_t management(unsigned number)
{
    return make_numbered(Kind::management, "management interface", number, NUMBER_MAX);
}

std::uint32_t loopback(unsigned number)
{
    return make_numbered(Kind::loopback, "loopback interface", number, NUMBER_MAX);
}

std::optional<Parts> parts(std::uint32_t ifindex)
{
    const auto kind = static_cast<Kind>(ifindex >> CLASS_SHIFT);
    const std::uint32_t rest = ifindex & NUMBER_MAX;
    switch (kind) {
    case Kind::port:
        return split(kind, rest, PORT_SHIFT, PORT_SUB_LAST);
    case Kind::port_channel:
        return split(kind, rest, CHANNEL_SHIFT, CHANNEL_SUB_LAST);
    case Kind::svi:
    case Kind::tunnel:
    case Kind::management:
    case Kind::loopback:
        return Parts{.kind = kind, .number = rest};
    }
    return std::nullopt;
}

std::uint32_t main_interface(std::uint32_t ifindex)
{
    const auto read = parts(ifindex);
    return read ? ifindex & ~std::uint32_t{read->sub} : ifindex;
}

std::string name(std::uint32_t ifindex)
{
    const auto read = parts(ifindex);
    if (!read) {
        return fmt::format("ifindex 0x{:x}", ifindex);
    }
    const std::string sub = read->sub == 0 ? "" : fmt::format(".{}", read->sub);
    switch (read->kind) {
    case Kind::port:
        return fmt::format("Ethernet1/{}{}", read->number + 1, sub);
    case Kind::port_channel:
        return fmt::format("port-channel{}{}", read->number, sub);
    case Kind::svi:
        return fmt::format("Vlan{}", read->number);
    case Kind::tunnel:
        return fmt::format("Tunnel{}", read->number);
    case Kind::management:
        return fmt::format("mgmt{}", read->number);
    case Kind::loopback:
        return fmt::format("loopback{}", read->number);
    }
    return {};
}

namespace
{

std::uint8_t type_of(Kind kind)
{
    switch (kind) {
    case Kind::port:
        return TYPE_PORT;
    case Kind::port_channel:
        return TYPE_PORT_CHANNEL;
    case Kind::svi:
        return TYPE_SVI;
    case Kind::tunnel:
        return TYPE_TUNNEL;
    case Kind::management:
        return TYPE_MANAGEMENT;
    case Kind::loopback:
        return TYPE_LOOPBACK;
    }
    return 0;
}

bool is_main(std::uint32_t ifindex, Kind kind)
{
    const auto read = parts(ifindex);
    return read && read->kind == kind && read->sub == 0;
}

bool has_subinterfaces(Kind kind)
{
    return kind == Kind::port || kind == Kind::port_channel;
}

/** Subinterfaces count: their frames go over the port-channel's members. */
bool is_on_port_channel(std::uint32_t ifindex)
{
    const auto read = parts(ifindex);
    return read && read->kind == Kind::port_channel;
}

} // namespace

} // namespace simswitch::if_index

namespace if_index = simswitch::if_index;

extern "C" {

int if_index_get_type(uint32_t ifindex, uint8_t *type)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        const auto read = if_index::parts(ifindex);
        if (!read) {
            return 1;
        }
        *type = if_index::type_of(read->kind);
        call.out("type", *type);
        return 0;
    });
}

int if_index_get_port(uint32_t ifindex, uint8_t *port)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        const auto read = if_index::parts(ifindex);
        if (!read || read->kind != if_index::Kind::port) {
            return 1;
        }
        *port = static_cast<uint8_t>(read->number);
        call.out("port", *port);
        return 0;
    });
}

int if_index_get_sub_intf(uint32_t ifindex, uint16_t *number)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        const auto read = if_index::parts(ifindex);
        if (!read || !if_index::has_subinterfaces(read->kind)) {
            return 1;
        }
        *number = static_cast<uint16_t>(read->sub);
        call.out("number", *number);
        return 0;
    });
}

int if_index_is_eth_port_channel_intf(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] { return if_index::is_on_port_channel(ifindex) ? 1 : 0; });
}

int if_index_is_sub_intf(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        const auto read = if_index::parts(ifindex);
        return read && read->sub != 0 ? 1 : 0;
    });
}

int if_index_is_physical_interface(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] { return if_index::is_main(ifindex, if_index::Kind::port) ? 1 : 0; });
}

int if_index_is_tunnel_intf(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] { return if_index::is_main(ifindex, if_index::Kind::tunnel) ? 1 : 0; });
}

int if_index_port_channel_get_channel_num(uint32_t ifindex, uint16_t *number)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run([&] {
        if (!if_index::is_on_port_channel(ifindex)) {
            return 1;
        }
        *number = static_cast<uint16_t>(if_index::parts(ifindex)->number);
        call.out("number", *number);
        return 0;
    });
}

uint32_t if_index_get_mainintf_from_subintf(uint32_t ifindex)
{
    Call call(Layer::service, __func__, ifindex);
    return call.run_word([&] { return if_index::main_interface(ifindex); });
}

char *snprintf_if_index(char *buffer, size_t size, uint32_t ifindex)
{
    Call call(Layer::service, __func__, size, ifindex);
    if (size == 0) {
        return buffer;
    }
    buffer[0] = '\0';
    call.run_text([&] {
        const std::string name = if_index::name(ifindex);
        const std::size_t length = std::min(name.size(), size - 1);
        buffer[name.copy(buffer, length)] = '\0';
        return buffer;
    });
    return buffer;
}

} // extern "C"
