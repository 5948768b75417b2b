/*
 * offload.cpp: see offload.h.
 */
#include "wire/offload.h"

#include <algorithm>
#include <cstddef>

namespace lab::wire
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::size_t MACS = 12;
constexpr std::uint8_t PROTOCOL_ICMP = 1;
constexpr std::size_t NO_CHECKSUM = 0;     // no place: it is never the first field
constexpr std::uint16_t FRAGMENT = 0x3fff; // more fragments, and the offset

/** Where a protocol has its checksum. */
std::size_t place_of_checksum(std::uint8_t protocol)
{
    switch (protocol) {
    case PROTOCOL_ICMP:
    case pipeline::PROTOCOL_ICMP6:
        return 2;
    case pipeline::PROTOCOL_UDP:
        return 6;
    case pipeline::PROTOCOL_TCP:
        return 16;
    default:
        return NO_CHECKSUM;
    }
}

/** The sum of 16-bit words, the last byte of an odd number being a word's upper half. */
std::uint64_t sum_of(std::span<const std::uint8_t> bytes)
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        sum += pipeline::read16(bytes, i);
    }
    if (bytes.size() % 2 == 1) {
        sum += static_cast<std::uint64_t>(bytes.back()) << 8;
    }
    return sum;
}

/** The sum of the pseudo header, which ICMP alone doesn't have. */
std::uint64_t pseudo_sum(const pipeline::Frame &frame, std::size_t length)
{
    if (frame.protocol == PROTOCOL_ICMP) {
        return 0;
    }
    const std::size_t address = frame.is_ip6() ? 16 : 4;
    return sum_of(std::span(frame.from).first(address)) +
           sum_of(std::span(frame.to).first(address)) + frame.protocol + length;
}

std::uint16_t fold(std::uint64_t sum)
{
    while (sum >> 16 != 0) {
        sum = (sum & 0xffff) + (sum >> 16);
    }
    return static_cast<std::uint16_t>(~sum);
}

} // namespace

std::span<std::uint8_t> put_tag_back(std::span<std::uint8_t> room, std::uint16_t type,
                                     std::uint16_t tag)
{
    if (room.size() < pipeline::TAG_SIZE + MACS) {
        return room.last(room.size() - std::min(room.size(), pipeline::TAG_SIZE));
    }
    std::copy_n(room.begin() + pipeline::TAG_SIZE, MACS, room.begin());
    pipeline::write16(room, MACS, type);
    pipeline::write16(room, MACS + 2, tag);
    return room;
}

bool complete_checksum(std::span<std::uint8_t> frame)
{
    pipeline::Frame parsed;
    if (!pipeline::parse(frame, parsed) || parsed.fault != nullptr || !parsed.is_ip() ||
        parsed.l4 == 0) {
        return false;
    }
    if (!parsed.is_ip6() && (pipeline::read16(frame, parsed.l3 + 6) & FRAGMENT) != 0) {
        return false;
    }
    const std::size_t place = place_of_checksum(parsed.protocol);
    const auto packet = frame.subspan(parsed.l4, parsed.l3 + parsed.l3_length - parsed.l4);
    if (place == NO_CHECKSUM || place + 2 > packet.size()) {
        return false;
    }
    pipeline::write16(packet, place, 0);
    const std::uint16_t sum = fold(pseudo_sum(parsed, packet.size()) + sum_of(packet));
    // A UDP checksum of 0 would say that there is none.
    const bool none = sum == 0 && parsed.protocol == pipeline::PROTOCOL_UDP;
    pipeline::write16(packet, place, none ? std::uint16_t{0xffff} : sum);
    return true;
}

} // namespace lab::wire
