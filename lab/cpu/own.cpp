/*
 * own.cpp: see own.h.
 */
#include "cpu/own.h"

#include "config/networks.h"

#include <algorithm>

namespace lab::cpu
{

namespace
{

bool is_of(const routing::OwnAddress &own, const Arrival &arrival)
{
    return own.interface == arrival.interface && own.vrf == arrival.vrf;
}

bool has_ip6(const routing::Routing &routing, const Arrival &arrival)
{
    const auto &all = routing.addresses();
    return arrival.is_ip6_planned || std::any_of(all.begin(), all.end(), [&](const auto &own) {
               return is_of(own, arrival) && own.prefix.address.ipv6;
           });
}

std::optional<Party> own_link_local(const routing::Routing &routing, const Arrival &arrival,
                                    const config::IpAddress &address)
{
    if (address == link_local_of(arrival.mac) && has_ip6(routing, arrival)) {
        return Party{arrival.mac, address};
    }
    return std::nullopt;
}

/** How well an address of the switch fits a report; 0 for not at all. */
int fitness(const routing::OwnAddress &own, const Arrival &arrival, const config::IpAddress &sender)
{
    if (own.prefix.address.ipv6 != sender.ipv6 || own.vrf != arrival.vrf) {
        return 0;
    }
    if (!is_of(own, arrival)) {
        return 1;
    }
    // A virtual address may be another router's in a moment.
    if (own.prefix.length == config::host_length(sender)) {
        return 2;
    }
    return config::contains(own.prefix, sender) ? 4 : 3;
}

} // namespace

bool is_network_end(const routing::OwnAddress &network, const config::IpAddress &address)
{
    constexpr unsigned LONGEST_WITH_ENDS = 30; // RFC 3021: a /31 has two hosts
    if (address.ipv6 || network.prefix.length > LONGEST_WITH_ENDS ||
        !config::contains(network.prefix, address)) {
        return false;
    }
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        word = word << 8 | address.bytes.at(i);
    }
    const std::uint32_t host = network.prefix.length == 0 ? ~0U : ~0U >> network.prefix.length;
    return (word & host) == 0 || (word & host) == host;
}

bool is_single_host(const routing::Routing &routing, std::uint16_t vrf,
                    const config::IpAddress &source)
{
    if (!source.is_unicast()) {
        return false;
    }
    if (source.ipv6) {
        const config::IpAddress loopback = {true, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}};
        return source != loopback;
    }
    if (source.bytes[0] == 0 || source.bytes[0] == 127 || source.bytes[0] >= 240) {
        return false;
    }
    const auto network = routing.network_of(vrf, source);
    return !network || !is_network_end(*network, source);
}

bool is_own_mac(const routing::Routing &routing, const Arrival &arrival, const config::Mac &mac)
{
    const auto &all = routing.addresses();
    return mac == arrival.mac ||
           std::any_of(all.begin(), all.end(), [&](const auto &own) { return own.mac == mac; });
}

std::optional<Party> own_on_link(const routing::Routing &routing, const Arrival &arrival,
                                 const config::IpAddress &address)
{
    const auto first = routing.own(arrival.vrf, address);
    if (first && is_of(*first, arrival)) {
        return Party{first->mac, address};
    }
    // Several interfaces may share an address.
    for (const routing::OwnAddress &own : routing.addresses()) {
        if (own.prefix.address == address && is_of(own, arrival)) {
            return Party{own.mac, address};
        }
    }
    return own_link_local(routing, arrival, address);
}

std::optional<Party> own_in_vrf(const routing::Routing &routing, const Arrival &arrival,
                                const config::IpAddress &address)
{
    if (const auto here = own_on_link(routing, arrival, address)) {
        return here;
    }
    return routing.own(arrival.vrf, address) ? std::optional(Party{arrival.mac, address})
                                             : std::nullopt;
}

std::optional<Party> reporter_of(const routing::Routing &routing, const Arrival &arrival,
                                 const config::IpAddress &sender)
{
    const routing::OwnAddress *best = nullptr;
    int fits = 0;
    for (const routing::OwnAddress &own : routing.addresses()) {
        if (const int fitting = fitness(own, arrival, sender); fitting > fits) {
            best = &own;
            fits = fitting;
        }
    }
    if (best == nullptr) {
        return std::nullopt;
    }
    return Party{is_of(*best, arrival) ? best->mac : arrival.mac, best->prefix.address};
}

} // namespace lab::cpu
