/*
 * icmp.h: what the CPU tells senders: that they reached the switch, or why a
 * packet of theirs went nowhere.
 *
 * Errors follow RFC 1122, 1812 and 4443: none about an error, about a packet
 * to a group or a fragment that isn't the first, none to what isn't one host;
 * at most ERRORS_A_SECOND. Nothing is fragmented here: an IPv4 packet that is
 * too long and may be fragmented is only counted.
 */
#pragma once

#include "cpu/counters.h"
#include "cpu/links.h"
#include "cpu/packets.h"
#include "routing/routing.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>

namespace lab::cpu
{

using Send = std::function<void(int port, std::span<const std::uint8_t> frame)>;

inline constexpr int ERRORS_A_SECOND = 100;

/** What is reported. */
enum class Report : std::uint8_t {
    time_exceeded,
    no_network, ///< no route
    no_host,    ///< the neighbour doesn't answer
    no_port,    ///< nobody listens
    too_long,   ///< with the MTU
};

/** Answers to packets. */
class Icmp
{
public:
    /** All must outlive this. */
    Icmp(const routing::Routing &routing, Counters &counters, const Send &send)
        : routing_(routing), counters_(counters), send_(send)
    {
    }

    /**
     * Takes a packet to an address of the switch: answers an echo request, tells that
     * nobody listens to a UDP packet, and counts all others.
     *
     * @param own  the address, and the MAC that answers for it
     */
    void take(const Received &in, const Party &own, std::chrono::milliseconds now);
    /**
     * Reports to its sender what became of a packet, where that is due.
     *
     * @param mtu  bytes, for Report::too_long
     */
    void report(const Received &in, Report what, std::chrono::milliseconds now, int mtu = 0);

private:
    void answer_echo(const Received &in, const Party &own, std::span<const std::uint8_t> message);
    bool may_report(const Received &in);
    bool take_token(std::chrono::milliseconds now);

    const routing::Routing &routing_;
    Counters &counters_;
    const Send &send_;
    // A bucket of ERRORS_A_SECOND thousandths-of-a-second tokens, full at the start.
    std::int64_t tokens_ = std::int64_t{ERRORS_A_SECOND} * 1000;
    std::chrono::milliseconds filled_{0};
    bool has_begun_ = false;
};

} // namespace lab::cpu
