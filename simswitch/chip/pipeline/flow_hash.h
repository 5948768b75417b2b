/*
 * flow_hash.h: the number by which a flow's frames choose among equals, so that
 * they all take the same path. docs/pipeline.md states it for who computes it
 * by hand.
 */
#pragma once

#include "chip/pipeline/frame.h"

namespace simswitch::chip::pipeline
{

/**
 * The number of a frame's flow.
 *
 * A good IP packet's: addresses, protocol, and ports of TCP and UDP when the
 * frame has them. Any other frame's: its MACs and type.
 */
std::uint32_t flow_hash(const Frame &frame);

/** Which of `count` paths of a multipath group a flow takes, 0 to count - 1; count at least 1. */
inline std::size_t path_of(std::uint32_t hash, std::size_t count)
{
    return hash % count;
}
/** Which of `count` members of a trunk; of other bits, so that paths don't decide members. */
inline std::size_t member_of(std::uint32_t hash, std::size_t count)
{
    return (hash >> 8) % count;
}

} // namespace simswitch::chip::pipeline
