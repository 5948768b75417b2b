/*
 * cpu.h: the switch's CPU, as far as the lab plays it: what it does with the
 * frames that the chip hands to it.
 *
 *   links.h        the interface that a frame came in on, the ports of one
 *   own.h          the switch's addresses
 *   discovery.h    ARP and neighbour discovery
 *   neighbors.h    hosts that are known, packets that wait for one
 *   icmp.h         echo replies and errors; upper_layer.h what a packet carries
 *   packets.h      the frames that are sent
 *   counters.h     what was done, and what wasn't
 *
 * What it does goes by why the chip handed a frame over, and by the tables of
 * routing/routing.h. All input is taken for hostile: what isn't in order is
 * counted and dropped. It answers on the port that a frame came in on, with the
 * frame's tag. It doesn't change the chip other than by making neighbours known.
 */
#pragma once

#include "cpu/counters.h"
#include "cpu/discovery.h"
#include "cpu/icmp.h"
#include "cpu/neighbors.h"
#include "l3lif/layer.h"
#include "routing/routing.h"

#include "chip/pipeline/result.h"
#include "switch.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

namespace lab::cpu
{

/** The CPU. */
class Cpu
{
public:
    /**
     * @param hardware  the switch; must outlive this, as all others
     * @param layer     its interfaces
     * @param routing   its addresses, neighbours and routes
     * @param send      sends a frame on a port of the chip; must not come back to this
     * @param again     takes a packet that has waited through the chip again, and gives
     *                  back what the chip hands to the CPU of it
     */
    Cpu(const simswitch::Switch &hardware, const l3lif::Layer &layer, routing::Routing &routing,
        Send send, Neighbors::Again again);
    // Its parts refer to each other.
    Cpu(const Cpu &) = delete;
    Cpu &operator=(const Cpu &) = delete;

    /**
     * Takes a frame that the chip handed over.
     *
     * @param port    port on which it came in
     * @param frame   as it came in
     * @param result  what the chip did with it
     * @param now     the time, of a clock that doesn't go back
     */
    void take(int port, std::span<const std::uint8_t> frame,
              const simswitch::chip::pipeline::Result &result, std::chrono::milliseconds now);
    /** Does what is due: asks for neighbours again, gives up. */
    void tick(std::chrono::milliseconds now) { neighbors_.tick(now); }
    /** When tick has something to do next; nothing: not before another frame. */
    std::optional<std::chrono::milliseconds> next_due() const { return neighbors_.next_due(); }

    /** What was done since the start. */
    const Counters &counters() const { return counters_; }

private:
    void take_packet(const Received &in, const simswitch::chip::pipeline::Result &result,
                     std::chrono::milliseconds now);
    void deliver(const Received &in, bool may_forward, std::chrono::milliseconds now);

    const simswitch::Switch &hardware_;
    const l3lif::Layer &layer_;
    routing::Routing &routing_;
    Send send_;
    Counters counters_;
    Icmp icmp_{routing_, counters_, send_};
    Neighbors neighbors_;
    Discovery discovery_{routing_, neighbors_, counters_, send_};
};

} // namespace lab::cpu
