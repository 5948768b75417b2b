/*
 * upper_layer.h: what an IP packet carries, behind IPv4 options or IPv6
 * extension headers.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace lab::cpu
{

/** Where the upper layer of a packet is. */
struct UpperLayer {
    std::uint8_t protocol = 0; ///< what is there: a header that is cut off counts as an upper layer
    std::size_t at = 0;        ///< where it begins in the packet; never behind its end
    bool is_fragment = false;  ///< the packet is a part of one
    bool is_tail = false; ///< a part that isn't the first: there is no header of the upper layer
};

/**
 * Finds the upper layer.
 *
 * @param packet  from its IP header to its end by its own length, of a good header
 */
UpperLayer upper_layer(std::span<const std::uint8_t> packet);

/** Whether a packet is an ICMP or ICMPv6 error, or a redirect; one that is cut off counts as one.
 */
bool is_icmp_error(std::span<const std::uint8_t> packet, const UpperLayer &upper);

} // namespace lab::cpu
