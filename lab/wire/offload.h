/*
 * offload.h: what the kernel leaves to a network adapter, done by hand.
 *
 * On a frame between two ends of a veth pair no adapter ever works: its VLAN tag
 * stands beside the frame, its TCP or UDP checksum covers the pseudo header
 * alone. A switch needs frames as they would be on a cable. port_socket.h reads
 * them.
 */
#pragma once

#include "chip/pipeline/frame.h"

#include <cstdint>
#include <span>

namespace lab::wire
{

/**
 * Puts a tag behind the two MACs of a frame.
 *
 * @param room  4 bytes to spare, then the frame, at least 12 bytes
 * @param type  type of the tag, 0x8100
 * @param tag   its 16 bits: priority and VLAN
 * @return the frame with its tag: all of `room`. A frame that is too short for MACs stays as it is
 */
std::span<std::uint8_t> put_tag_back(std::span<std::uint8_t> room, std::uint16_t type,
                                     std::uint16_t tag);

/**
 * Writes the checksum of the TCP, UDP, ICMP or ICMPv6 packet in a frame.
 *
 * @param frame  an Ethernet frame with up to two tags
 * @return whether it did; not for another protocol, for a fragment, or for a packet that is cut off
 */
bool complete_checksum(std::span<std::uint8_t> frame);

} // namespace lab::wire
