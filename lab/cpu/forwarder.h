/*
 * forwarder.h: a whole switch for frames: the chip's pipeline, and the CPU for
 * what the chip hands to it. Frames go in on a port, frames come out on ports.
 *
 * cpu.h has what the CPU does: it answers ARP and neighbour discovery for the
 * switch's addresses, answers echo requests, reports what can't be forwarded,
 * and finds neighbours for packets that wait for them.
 *
 *     Forwarder forwarder(hardware, layer, routing, pipeline, send);
 *     forwarder.take(1, frame, now);
 *     … at forwarder.next_due(): forwarder.tick(now);
 */
#pragma once

#include "cpu/cpu.h"
#include "l3lif/layer.h"
#include "routing/routing.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace lab::cpu
{

/** The switch. Time is the caller's: milliseconds of any clock that doesn't go back. */
class Forwarder
{
public:
    /** Sends a frame on a port of the chip; the bytes are good until it returns. */
    using Send = cpu::Send;

    /**
     * @param hardware  the switch; must outlive this, as all others
     * @param layer     its interfaces
     * @param routing   its addresses, neighbours and routes, in sync with the interfaces
     * @param pipeline  what the chip does with a frame
     * @param send      gets what leaves; must not call this object
     */
    Forwarder(simswitch::Switch &hardware, l3lif::Layer &layer, routing::Routing &routing,
              simswitch::chip::pipeline::Pipeline &pipeline, Send send);

    /**
     * Takes a frame that came in on a front port; what leaves goes to `send`, that of
     * the chip first.
     *
     * @param port   the chip's port
     * @param frame  without its FCS, of any length and content
     * @return what the chip did with it, good until the next call
     */
    const simswitch::chip::pipeline::Result &take(int port, std::span<const std::uint8_t> frame,
                                                  std::chrono::milliseconds now);
    /** Does what is due: asks for neighbours again, gives up. */
    void tick(std::chrono::milliseconds now) { cpu_.tick(now); }
    /** When tick has something to do next; nothing: not before another frame. */
    std::optional<std::chrono::milliseconds> next_due() const { return cpu_.next_due(); }
    /** What the CPU did since the start. */
    const Counters &counters() const { return cpu_.counters(); }

private:
    using Result = simswitch::chip::pipeline::Result;

    void forward(int port, std::span<const std::uint8_t> frame, std::chrono::milliseconds now,
                 Result &result);

    simswitch::chip::pipeline::Pipeline &pipeline_;
    Send send_;
    std::unique_ptr<Result> result_ = std::make_unique<Result>();
    std::unique_ptr<Result> again_ = std::make_unique<Result>(); ///< of packets that have waited
    Bytes buffer_;                                               ///< a frame as it leaves
    Cpu cpu_;
};

} // namespace lab::cpu
