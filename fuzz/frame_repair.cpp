/*
 * frame_repair.cpp: see frame_repair.h.
 */
#include "frame_repair.h"

#include <cstddef>
#include <span>

namespace fuzz
{

namespace
{

using Bytes = std::span<std::uint8_t>;

constexpr unsigned TYPE_TAG = 0x8100;
constexpr unsigned TYPE_IPV4 = 0x0800;
constexpr unsigned TYPE_IPV6 = 0x86dd;
constexpr std::uint8_t ICMP = 1;
constexpr std::uint8_t ICMPV6 = 58;
constexpr std::size_t IPV4_HEADER = 20;
constexpr std::size_t IPV6_HEADER = 40;
constexpr std::size_t ICMP_HEADER = 8;

unsigned word(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<unsigned>(bytes[at]) << 8U | bytes[at + 1];
}

void put(Bytes bytes, std::size_t at, unsigned value)
{
    bytes[at] = static_cast<std::uint8_t>(value >> 8U);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

/** The sum of the 16-bit words, a last odd byte being the upper half of one. */
std::uint64_t sum_of(std::span<const std::uint8_t> bytes)
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        sum += word(bytes, i);
    }
    return bytes.size() % 2 == 0 ? sum : sum + (static_cast<std::uint64_t>(bytes.back()) << 8U);
}

unsigned checksum(std::uint64_t sum)
{
    while (sum > 0xffff) {
        sum = (sum & 0xffff) + (sum >> 16U);
    }
    return static_cast<unsigned>(~sum & 0xffff);
}

/** Gives a message its checksum, which stands two bytes into it. */
void repair_message(Bytes message, std::uint64_t pseudo_header)
{
    if (message.size() >= ICMP_HEADER) {
        put(message, 2, 0);
        put(message, 2, checksum(pseudo_header + sum_of(message)));
    }
}

void repair_ipv4(Bytes packet)
{
    const std::size_t header = (packet[0] & 0xfU) * std::size_t{4};
    if (packet.size() < IPV4_HEADER || header < IPV4_HEADER || packet.size() < header) {
        return;
    }
    if (packet[9] == ICMP) {
        repair_message(packet.subspan(header), 0);
    }
    put(packet, 2, static_cast<unsigned>(packet.size()));
    put(packet, 10, 0);
    put(packet, 10, checksum(sum_of(packet.first(header))));
}

void repair_ipv6(Bytes packet)
{
    if (packet.size() < IPV6_HEADER) {
        return;
    }
    const Bytes message = packet.subspan(IPV6_HEADER);
    put(packet, 4, static_cast<unsigned>(message.size()));
    if (packet[6] == ICMPV6) {
        const Bytes addresses = packet.subspan(8, 32);
        repair_message(message, sum_of(addresses) + message.size() + ICMPV6);
    }
}

} // namespace

void repair(std::vector<std::uint8_t> &frame)
{
    std::size_t at = 12;
    while (at + 6 <= frame.size() && word(frame, at) == TYPE_TAG) {
        at += 4;
    }
    if (at + 3 > frame.size()) {
        return;
    }
    const unsigned type = word(frame, at);
    const Bytes packet = Bytes(frame).subspan(at + 2);
    if (type == TYPE_IPV4) {
        repair_ipv4(packet);
    } else if (type == TYPE_IPV6) {
        repair_ipv6(packet);
    }
}

} // namespace fuzz
