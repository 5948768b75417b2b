/*
 * icmp.cpp: see icmp.h.
 */
#include "cpu/icmp.h"

#include "cpu/own.h"
#include "cpu/upper_layer.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::size_t ICMP_HEADER = 8;
constexpr std::uint8_t ECHO_REQUEST = 8;
constexpr std::uint8_t ECHO_REPLY = 0;
constexpr std::uint8_t ECHO_REQUEST6 = 128;
constexpr std::uint8_t ECHO_REPLY6 = 129;

/** Type and code of a report, and what is done with it. */
struct Kind {
    Done done;
    std::uint8_t type4;
    std::uint8_t code4;
    std::uint8_t type6;
    std::uint8_t code6;
};

Kind kind_of(Report what)
{
    switch (what) {
    case Report::time_exceeded:
        return {Done::time_exceeded, 11, 0, 3, 0};
    case Report::no_network:
        return {Done::unreachable, 3, 0, 1, 0};
    case Report::no_host:
        return {Done::unreachable, 3, 1, 1, 3};
    case Report::no_port:
        return {Done::unreachable, 3, 3, 1, 4};
    case Report::too_long:
        break;
    }
    return {Done::too_long, 3, 4, 2, 0};
}

/** The head of a report and as much of the packet as belongs into it. */
Bytes message_of(const Received &in, const Kind &kind, int mtu)
{
    constexpr std::size_t QUOTED = 548;   // a report of 576 bytes, RFC 1812 4.3.2.3
    constexpr std::size_t QUOTED6 = 1232; // a report of 1280 bytes, RFC 4443 2.4 (c)
    const bool ip6 = in.frame.is_ip6();
    Bytes message(ICMP_HEADER);
    message[0] = ip6 ? kind.type6 : kind.type4;
    message[1] = ip6 ? kind.code6 : kind.code4;
    if (mtu > 0) {
        // Of ICMPv6 all four bytes; no MTU of an interface needs more than two.
        pipeline::write16(message, ICMP_HEADER - 2,
                          static_cast<std::uint16_t>(std::min(mtu, 0xffff)));
    }
    const auto packet = in.packet();
    const auto quoted = packet.first(std::min(packet.size(), ip6 ? QUOTED6 : QUOTED));
    message.resize(ICMP_HEADER + quoted.size());
    std::copy(quoted.begin(), quoted.end(), std::next(message.begin(), ICMP_HEADER));
    return message;
}

} // namespace

void Icmp::take(const Received &in, const Party &own, std::chrono::milliseconds now)
{
    const auto packet = in.packet();
    const UpperLayer upper = upper_layer(packet);
    if (upper.is_fragment) {
        counters_.count(Ignored::fragment);
        return;
    }
    if (upper.protocol == pipeline::PROTOCOL_UDP) {
        report(in, Report::no_port, now);
        return;
    }
    const auto message = packet.subspan(upper.at);
    const bool ip6 = own.address.ipv6;
    const std::uint8_t icmp = ip6 ? pipeline::PROTOCOL_ICMP6 : PROTOCOL_ICMP;
    if (upper.protocol == icmp && message.size() < ICMP_HEADER) {
        counters_.count(Ignored::malformed);
    } else if (upper.protocol == icmp && message[0] == (ip6 ? ECHO_REQUEST6 : ECHO_REQUEST)) {
        answer_echo(in, own, message);
    } else {
        counters_.count(Ignored::protocol);
    }
}

void Icmp::answer_echo(const Received &in, const Party &own, std::span<const std::uint8_t> message)
{
    const bool ip6 = own.address.ipv6;
    const bool is_single = is_single_host(routing_, in.arrival.vrf, in.from());
    if (!is_single || (in.frame.source[0] & 1U) != 0 ||
        own_in_vrf(routing_, in.arrival, in.from())) {
        counters_.count(Ignored::bad_source);
        return;
    }
    const std::uint16_t sum =
        ip6 ? icmp6_checksum(in.from(), in.to(), message) : pipeline::checksum(message);
    if (sum != 0) {
        counters_.count(Ignored::bad_checksum);
        return;
    }
    Bytes reply(message.begin(), message.end());
    reply[0] = ip6 ? ECHO_REPLY6 : ECHO_REPLY;
    reply[1] = 0;
    send_(in.arrival.link.port,
          icmp_packet(in.arrival.link, own, {in.frame.source, in.from()}, std::move(reply)));
    counters_.count(Done::echo_answered);
}

void Icmp::report(const Received &in, Report what, std::chrono::milliseconds now, int mtu)
{
    constexpr std::uint8_t DONT_FRAGMENT = 0x40;
    const auto packet = in.packet();
    if (what == Report::too_long && !in.frame.is_ip6() && (packet[6] & DONT_FRAGMENT) == 0) {
        counters_.count(Ignored::needs_fragments);
        return;
    }
    if (!may_report(in)) {
        return;
    }
    const auto from = reporter_of(routing_, in.arrival, in.from());
    if (!from) {
        counters_.count(Ignored::no_address);
        return;
    }
    if (!take_token(now)) {
        counters_.count(Ignored::rate_limited);
        return;
    }
    const Kind kind = kind_of(what);
    send_(in.arrival.link.port, icmp_packet(in.arrival.link, *from, {in.frame.source, in.from()},
                                            message_of(in, kind, mtu)));
    counters_.count(kind.done);
}

/** Whether an error about a packet may be reported; counts why not. */
bool Icmp::may_report(const Received &in)
{
    if (!is_single_host(routing_, in.arrival.vrf, in.from()) || (in.frame.source[0] & 1U) != 0 ||
        own_in_vrf(routing_, in.arrival, in.from())) {
        counters_.count(Ignored::bad_source);
        return false;
    }
    const UpperLayer upper = upper_layer(in.packet());
    if (in.frame.is_group() || !in.to().is_unicast() || upper.is_tail ||
        is_icmp_error(in.packet(), upper)) {
        counters_.count(Ignored::about_error);
        return false;
    }
    return true;
}

bool Icmp::take_token(std::chrono::milliseconds now)
{
    constexpr std::int64_t TOKEN = 1000;
    if (!has_begun_) {
        has_begun_ = true;
        filled_ = now;
    }
    const std::int64_t passed = std::clamp<std::int64_t>((now - filled_).count(), 0, TOKEN);
    tokens_ = std::min(tokens_ + passed * ERRORS_A_SECOND, ERRORS_A_SECOND * TOKEN);
    filled_ = std::max(filled_, now);
    if (tokens_ < TOKEN) {
        return false;
    }
    tokens_ -= TOKEN;
    return true;
}

} // namespace lab::cpu
