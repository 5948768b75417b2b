/*
 * upper_layer.cpp: see upper_layer.h.
 */
#include "cpu/upper_layer.h"

#include "cpu/packets.h"

#include "chip/pipeline/frame.h"

#include <algorithm>
#include <array>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::uint8_t HOP_BY_HOP = 0;
constexpr std::uint8_t ROUTING_HEADER = 43;
constexpr std::uint8_t FRAGMENT_HEADER = 44;
constexpr std::uint8_t DESTINATION_OPTIONS = 60;
constexpr std::size_t IP6_HEADER = 40;
constexpr std::size_t UNIT = 8; // of extension headers

UpperLayer upper_layer4(std::span<const std::uint8_t> packet)
{
    constexpr unsigned MORE_FRAGMENTS = 0x2000;
    constexpr unsigned OFFSET = 0x1fff;
    const unsigned fragment = pipeline::read16(packet, 6);
    UpperLayer upper;
    upper.protocol = packet[9];
    upper.at = std::min((packet[0] & 0xfU) * std::size_t{4}, packet.size());
    upper.is_tail = (fragment & OFFSET) != 0;
    upper.is_fragment = upper.is_tail || (fragment & MORE_FRAGMENTS) != 0;
    return upper;
}

bool is_extension(std::uint8_t protocol)
{
    return protocol == HOP_BY_HOP || protocol == ROUTING_HEADER || protocol == FRAGMENT_HEADER ||
           protocol == DESTINATION_OPTIONS;
}

UpperLayer upper_layer6(std::span<const std::uint8_t> packet)
{
    constexpr unsigned OFFSET = 0xfff8;
    UpperLayer upper;
    upper.protocol = packet[6];
    upper.at = std::min(IP6_HEADER, packet.size());
    while (is_extension(upper.protocol) && upper.at + UNIT <= packet.size()) {
        const bool is_fragment = upper.protocol == FRAGMENT_HEADER;
        const std::size_t size =
            is_fragment ? UNIT : (packet[upper.at + 1] + std::size_t{1}) * UNIT;
        if (is_fragment) {
            const unsigned bits = pipeline::read16(packet, upper.at + 2);
            upper.is_tail = (bits & OFFSET) != 0;
            upper.is_fragment = true;
        }
        if (size > packet.size() - upper.at) {
            break;
        }
        upper.protocol = packet[upper.at];
        upper.at += size;
        if (upper.is_tail) {
            break;
        }
    }
    return upper;
}

} // namespace

UpperLayer upper_layer(std::span<const std::uint8_t> packet)
{
    return packet[0] >> 4 == 6 ? upper_layer6(packet) : upper_layer4(packet);
}

bool is_icmp_error(std::span<const std::uint8_t> packet, const UpperLayer &upper)
{
    constexpr std::array<std::uint8_t, 5> ERRORS = {3, 4, 5, 11, 12}; // 5 is a redirect
    constexpr std::uint8_t FIRST_INFORMATION6 = 128;
    constexpr std::uint8_t REDIRECT6 = 137;
    const bool ip6 = packet[0] >> 4 == 6;
    if (upper.protocol != (ip6 ? pipeline::PROTOCOL_ICMP6 : PROTOCOL_ICMP)) {
        return false;
    }
    if (upper.at >= packet.size()) {
        return true;
    }
    const std::uint8_t type = packet[upper.at];
    return ip6 ? type < FIRST_INFORMATION6 || type == REDIRECT6
               : std::find(ERRORS.begin(), ERRORS.end(), type) != ERRORS.end();
}

} // namespace lab::cpu
