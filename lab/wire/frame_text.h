/*
 * frame_text.h: a frame and its fate in a few words, for a line of a log.
 */
#pragma once

#include "chip/pipeline/result.h"

#include <cstdint>
#include <span>
#include <string>

namespace lab::wire
{

/**
 * What a frame is: "IPv4 10.0.0.9 > 10.2.0.5 protocol 1 ttl 64, 98 bytes". Safe for
 * any bytes.
 */
std::string text(std::span<const std::uint8_t> frame);

/** "routed", "to the CPU: its next hop is the CPU", "dropped: no route to its destination". */
std::string fate_text(const simswitch::chip::pipeline::Result &result);

} // namespace lab::wire
