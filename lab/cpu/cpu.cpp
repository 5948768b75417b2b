/*
 * cpu.cpp: see cpu.h.
 */
#include "cpu/cpu.h"

#include "cpu/own.h"

#include "chip/pipeline/frame.h"

#include <utility>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

using pipeline::Reason;

} // namespace

Cpu::Cpu(const simswitch::Switch &hardware, const l3lif::Layer &layer, routing::Routing &routing,
         Send send, Neighbors::Again again)
    : hardware_(hardware), layer_(layer), routing_(routing), send_(std::move(send)),
      neighbors_(hardware_, layer_, routing_, icmp_, counters_, send_, std::move(again))
{
}

void Cpu::take(int port, std::span<const std::uint8_t> frame, const pipeline::Result &result,
               std::chrono::milliseconds now)
{
    Received in;
    if (!pipeline::parse(frame, in.frame)) {
        counters_.count(Ignored::malformed);
        return;
    }
    auto arrival = arrival_of(hardware_, layer_, port, in.frame, result);
    if (!arrival) {
        counters_.count(Ignored::no_interface);
        return;
    }
    if (arrival->kind == config::Kind::tunnel) {
        counters_.count(Ignored::tunnel);
        return;
    }
    in.arrival = std::move(*arrival);
    if (result.cpu_reason == Reason::arp) {
        discovery_.take_arp(in, now);
    } else if (in.frame.is_ip() && in.frame.fault == nullptr) {
        take_packet(in, result, now);
    } else {
        counters_.count(Ignored::protocol);
    }
}

void Cpu::take_packet(const Received &in, const pipeline::Result &result,
                      std::chrono::milliseconds now)
{
    switch (result.cpu_reason) {
    case Reason::neighbour_discovery:
        discovery_.take_nd(in, now);
        break;
    case Reason::ttl_expired:
        icmp_.report(in, Report::time_exceeded, now);
        break;
    case Reason::mtu: {
        const auto *interface = hardware_.chip.l3_interfaces.find(result.egress);
        icmp_.report(in, Report::too_long, now, interface != nullptr ? interface->mtu : 0);
        break;
    }
    case Reason::cpu_next_hop:
        deliver(in, true, now);
        break;
    case Reason::link_local:
    case Reason::cpu_address:
        deliver(in, false, now);
        break;
    default:
        counters_.count(in.frame.is_group() ? Ignored::group : Ignored::protocol);
    }
}

void Cpu::deliver(const Received &in, bool may_forward, std::chrono::milliseconds now)
{
    if (!in.to().is_unicast()) {
        counters_.count(Ignored::group);
    } else if (const auto own = own_in_vrf(routing_, in.arrival, in.to())) {
        icmp_.take(in, *own, now);
    } else if (!may_forward) {
        counters_.count(Ignored::not_ours);
    } else if (in.frame.ttl <= 1) {
        icmp_.report(in, Report::time_exceeded, now);
    } else {
        neighbors_.wait(in, now);
    }
}

} // namespace lab::cpu
