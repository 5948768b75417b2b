/*
 * frame_text.cpp: see frame_text.h.
 */
#include "wire/frame_text.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::wire
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::size_t ARP_SENDER = 14; // address of the sender behind ARP's beginning
constexpr std::size_t ARP_TARGET = 24;
constexpr std::size_t ARP_SIZE = 28;

std::string ip4_at(std::span<const std::uint8_t> bytes, std::size_t at)
{
    pipeline::Address address{};
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), 4, address.begin());
    return pipeline::address_text(false, address);
}

std::string protocol_text(std::uint8_t protocol)
{
    switch (protocol) {
    case 1:
        return "ICMP";
    case pipeline::PROTOCOL_IGMP:
        return "IGMP";
    case pipeline::PROTOCOL_TCP:
        return "TCP";
    case pipeline::PROTOCOL_UDP:
        return "UDP";
    case pipeline::PROTOCOL_ICMP6:
        return "ICMPv6";
    default:
        return fmt::format("protocol {}", protocol);
    }
}

std::string ip_text(const pipeline::Frame &frame)
{
    if (frame.fault != nullptr) {
        return frame.fault;
    }
    return fmt::format("{} {} > {} {} ttl {}", pipeline::text(frame.payload),
                       pipeline::address_text(frame.is_ip6(), frame.from),
                       pipeline::address_text(frame.is_ip6(), frame.to),
                       protocol_text(frame.protocol), frame.ttl);
}

std::string arp_text(std::span<const std::uint8_t> packet)
{
    if (packet.size() < ARP_SIZE) {
        return "ARP cut off";
    }
    const bool request = pipeline::read16(packet, 6) == 1;
    return fmt::format("ARP {} {} from {}", request ? "who has" : "reply to",
                       ip4_at(packet, ARP_TARGET), ip4_at(packet, ARP_SENDER));
}

std::string payload_text(const pipeline::Frame &frame)
{
    if (frame.is_ip()) {
        return ip_text(frame);
    }
    if (frame.payload == pipeline::Payload::arp) {
        return arp_text(frame.bytes.subspan(frame.l3));
    }
    return frame.payload == pipeline::Payload::mpls ? "MPLS"
                                                    : fmt::format("type {:#06x}", frame.type);
}

} // namespace

std::string text(std::span<const std::uint8_t> bytes)
{
    pipeline::Frame frame;
    const std::string size = fmt::format("{} bytes", bytes.size());
    if (!pipeline::parse(bytes, frame)) {
        return fmt::format("no frame, {}", size);
    }
    return fmt::format("{}{}, {}", frame.tags == 0 ? "" : fmt::format("VLAN {} ", frame.tag_vlan()),
                       payload_text(frame), size);
}

std::string fate_text(const pipeline::Result &result)
{
    const char *reason = pipeline::text(result.reason);
    switch (result.verdict) {
    case pipeline::Verdict::sent:
        return fmt::format("{}{}", reason, result.cpu ? ", a copy to the CPU" : "");
    case pipeline::Verdict::to_cpu:
        return fmt::format("to the CPU: {}", reason);
    case pipeline::Verdict::dropped:
        break;
    }
    return fmt::format("dropped: {}", reason);
}

} // namespace lab::wire
