/*
 * forwarder.cpp: see forwarder.h.
 */
#include "cpu/forwarder.h"

#include <utility>

namespace lab::cpu
{

namespace chip = simswitch::chip;

Forwarder::Forwarder(simswitch::Switch &hardware, l3lif::Layer &layer, routing::Routing &routing,
                     chip::pipeline::Pipeline &pipeline, Send send)
    : pipeline_(pipeline), send_(std::move(send)),
      cpu_(hardware, layer, routing, send_,
           [this](int port, std::span<const std::uint8_t> frame, std::chrono::milliseconds now) {
               forward(port, frame, now, *again_);
           })
{
}

const chip::pipeline::Result &Forwarder::take(int port, std::span<const std::uint8_t> frame,
                                              std::chrono::milliseconds now)
{
    forward(port, frame, now, *result_);
    return *result_;
}

void Forwarder::forward(int port, std::span<const std::uint8_t> frame,
                        std::chrono::milliseconds now, Result &result)
{
    pipeline_.run(port, frame, result);
    if (!result.tagged.empty() || !result.untagged.empty()) {
        for (int out = chip::FIRST_FRONT_PORT; out <= chip::LAST_FRONT_PORT; ++out) {
            const std::size_t size = result.size_on(out);
            if (size == 0) {
                continue;
            }
            if (buffer_.size() < size) {
                buffer_.resize(size);
            }
            send_(out, std::span(buffer_).first(result.write(out, buffer_)));
        }
    }
    if (result.cpu) {
        cpu_.take(port, frame, result, now);
    }
}

} // namespace lab::cpu
