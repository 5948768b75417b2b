/*
 * discovery.cpp: see discovery.h.
 */
#include "cpu/discovery.h"

#include "cpu/own.h"
#include "cpu/packets.h"

#include <tins/arp.h>
#include <tins/exceptions.h>
#include <tins/icmpv6.h>

#include <algorithm>
#include <array>
#include <optional>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::size_t ND_MESSAGE = 24; // a solicitation or advertisement without options
constexpr std::uint8_t HOPS_OF_DISCOVERY = 255;

config::Mac mac_of(const Tins::HWAddress<6> &address)
{
    config::Mac mac{};
    std::copy(address.begin(), address.end(), mac.begin());
    return mac;
}

config::IpAddress address_of(const Tins::IPv4Address &address)
{
    return config::parse_ip(address.to_string()).value_or(config::IpAddress{});
}

config::IpAddress address_of(const Tins::IPv6Address &address)
{
    config::IpAddress copy{true, {}};
    std::copy(address.begin(), address.end(), copy.bytes.begin());
    return copy;
}

/** What an ARP packet says. */
struct ArpPacket {
    bool is_request = false;
    Party sender;
    config::IpAddress target;
};

std::optional<ArpPacket> read_arp(std::span<const std::uint8_t> packet)
{
    constexpr std::uint16_t ETHERNET = 1;
    try {
        const Tins::ARP arp(packet.data(), static_cast<std::uint32_t>(packet.size()));
        const bool is_request = arp.opcode() == Tins::ARP::REQUEST;
        if (arp.hw_addr_format() != ETHERNET || arp.prot_addr_format() != pipeline::TYPE_IP4 ||
            arp.hw_addr_length() != 6 || arp.prot_addr_length() != 4 ||
            (!is_request && arp.opcode() != Tins::ARP::REPLY)) {
            return std::nullopt;
        }
        return ArpPacket{is_request,
                         {mac_of(arp.sender_hw_addr()), address_of(arp.sender_ip_addr())},
                         address_of(arp.target_ip_addr())};
    } catch (const Tins::exception_base &) {
        return std::nullopt;
    }
}

/** What a message of neighbour discovery says. */
struct NdMessage {
    std::uint8_t type = 0;
    config::IpAddress target = {};
    std::optional<config::Mac> mac = {}; ///< source's of a solicitation, target's of another
};

/** A solicitation or an advertisement; nothing for one that isn't in order. */
std::optional<NdMessage> read_nd(std::span<const std::uint8_t> message)
{
    if (message.size() < ND_MESSAGE || message[1] != 0) {
        return std::nullopt;
    }
    try {
        const Tins::ICMPv6 read(message.data(), static_cast<std::uint32_t>(message.size()));
        NdMessage told{message[0], address_of(read.target_addr()), std::nullopt};
        const bool solicits = told.type == Tins::ICMPv6::NEIGHBOUR_SOLICIT;
        const auto kind = solicits ? Tins::ICMPv6::SOURCE_ADDRESS : Tins::ICMPv6::TARGET_ADDRESS;
        const auto *option = read.search_option(kind);
        if (option != nullptr && option->data_size() == std::tuple_size_v<config::Mac>) {
            told.mac.emplace();
            std::copy_n(option->data_ptr(), told.mac->size(), told.mac->begin());
        }
        return told.target.is_unicast() ? std::optional(told) : std::nullopt;
    } catch (const Tins::exception_base &) {
        return std::nullopt;
    }
}

} // namespace

void Discovery::take_arp(const Received &in, std::chrono::milliseconds now)
{
    const auto arp = read_arp(in.packet());
    if (!arp) {
        counters_.count(Ignored::malformed);
        return;
    }
    const Party &sender = arp->sender;
    if ((sender.mac[0] & 1U) != 0 || sender.mac == config::Mac{}) {
        counters_.count(Ignored::bad_source);
        return;
    }
    // A probe has no sender's address: nobody has the one that it asks for yet.
    const bool is_probe = sender.address == config::IpAddress{};
    if (!is_probe && own_on_link(routing_, in.arrival, sender.address)) {
        counters_.count(Ignored::own_claimed);
        return;
    }
    const auto own =
        arp->is_request ? own_on_link(routing_, in.arrival, arp->target) : std::nullopt;
    if (own) {
        send_(in.arrival.link.port, arp_reply(in.arrival.link, *own, sender));
        counters_.count(Done::arp_answered);
    }
    if (!is_probe) {
        neighbors_.learn(in.arrival, sender, now);
    } else if (!own) {
        counters_.count(Ignored::not_ours);
    }
}

void Discovery::take_nd(const Received &in, std::chrono::milliseconds now)
{
    const auto message = in.packet().subspan(in.frame.l4 - in.frame.l3);
    const std::uint8_t type = message[0];
    if (type != Tins::ICMPv6::NEIGHBOUR_SOLICIT && type != Tins::ICMPv6::NEIGHBOUR_ADVERT) {
        counters_.count(Ignored::protocol);
        return;
    }
    if (in.frame.ttl != HOPS_OF_DISCOVERY) {
        counters_.count(Ignored::hop_limit);
        return;
    }
    if (icmp6_checksum(in.from(), in.to(), message) != 0) {
        counters_.count(Ignored::bad_checksum);
        return;
    }
    const config::IpAddress from = in.from();
    const bool is_probe = !from.is_unicast(); // of :: when it is in order
    const auto told = read_nd(message);
    const bool solicits = type == Tins::ICMPv6::NEIGHBOUR_SOLICIT;
    if (!told || (is_probe && (from.bytes[0] != 0 || !solicits || told->mac))) {
        counters_.count(Ignored::malformed);
        return;
    }
    if ((in.frame.source[0] & 1U) != 0) {
        counters_.count(Ignored::bad_source);
        return;
    }
    if (!solicits) {
        if (told->mac) {
            neighbors_.learn(in.arrival, {*told->mac, told->target}, now);
        }
        return;
    }
    if (!is_probe && own_on_link(routing_, in.arrival, from)) {
        counters_.count(Ignored::own_claimed);
        return;
    }
    const auto own = own_on_link(routing_, in.arrival, told->target);
    if (own) {
        const Party to{told->mac.value_or(in.frame.source), from};
        send_(in.arrival.link.port, neighbor_advertisement(in.arrival.link, *own, to));
        counters_.count(Done::nd_answered);
    }
    if (told->mac) {
        neighbors_.learn(in.arrival, {*told->mac, from}, now);
    } else if (!own) {
        counters_.count(Ignored::not_ours);
    }
}

} // namespace lab::cpu
