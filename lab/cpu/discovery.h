/*
 * discovery.h: ARP (RFC 826) and IPv6 neighbour discovery (RFC 4861), as a
 * router does them: it answers for its own addresses and learns of hosts.
 * There are no router advertisements, so a router solicitation gets none.
 */
#pragma once

#include "cpu/counters.h"
#include "cpu/icmp.h"
#include "cpu/links.h"
#include "cpu/neighbors.h"
#include "routing/routing.h"

#include <chrono>

namespace lab::cpu
{

/** Who has which address. */
class Discovery
{
public:
    /** All must outlive this. */
    Discovery(const routing::Routing &routing, Neighbors &neighbors, Counters &counters,
              const Send &send)
        : routing_(routing), neighbors_(neighbors), counters_(counters), send_(send)
    {
    }

    /** Takes an ARP frame. */
    void take_arp(const Received &in, std::chrono::milliseconds now);
    /** Takes an ICMPv6 packet of neighbour discovery. */
    void take_nd(const Received &in, std::chrono::milliseconds now);

private:
    const routing::Routing &routing_;
    Neighbors &neighbors_;
    Counters &counters_;
    const Send &send_;
};

} // namespace lab::cpu
