/*
 * cpu_frames.cpp: frames of hosts for the tests of the CPU, and frames in words.
 */
#include "cpu_switch.h"

#include "cpu/packets.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>
#include <tins/tins.h>

#include <algorithm>

namespace lab_test
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::size_t UDP_HEADER = 8;

lab::config::IpAddress ip(std::string_view text)
{
    return lab::config::parse_ip(text).value();
}

Bytes frame_around(const Tins::PDU &packet, const From &from)
{
    Tins::EthernetII frame(Tins::HWAddress<6>(std::string(from.to)),
                           Tins::HWAddress<6>(std::string(from.mac)));
    for (const int bits : from.tags) {
        Tins::Dot1Q tag(static_cast<std::uint16_t>(bits & 0xfff), false);
        tag.priority(static_cast<std::uint8_t>(bits >> 13));
        frame /= tag;
    }
    frame /= packet;
    return frame.serialize();
}

std::string tell_arp(std::span<const std::uint8_t> packet)
{
    const Tins::ARP arp(packet.data(), static_cast<std::uint32_t>(packet.size()));
    const std::string sender = arp.sender_ip_addr().to_string();
    const std::string sender_mac = arp.sender_hw_addr().to_string();
    const std::string target = arp.target_ip_addr().to_string();
    return arp.opcode() == Tins::ARP::REQUEST
               ? fmt::format("ARP who has {} tell {} at {}", target, sender, sender_mac)
               : fmt::format("ARP {} is at {}, to {} at {}", sender, sender_mac, target,
                             arp.target_hw_addr().to_string());
}

std::string tell_discovery(std::span<const std::uint8_t> message)
{
    const Tins::ICMPv6 read(message.data(), static_cast<std::uint32_t>(message.size()));
    if (message[0] == Tins::ICMPv6::NEIGHBOUR_SOLICIT) {
        return fmt::format("NS {} from {}", read.target_addr().to_string(),
                           read.source_link_layer_addr().to_string());
    }
    return fmt::format("NA {} is at {}{}{}{}", read.target_addr().to_string(),
                       read.target_link_layer_addr().to_string(), read.router() ? " R" : "",
                       read.solicited() ? " S" : "", read.override() ? " O" : "");
}

std::string tell_icmp(const pipeline::Frame &frame, std::span<const std::uint8_t> message)
{
    const bool ip6 = frame.is_ip6();
    const std::uint16_t sum =
        ip6 ? lab::cpu::icmp6_checksum({true, frame.from}, {true, frame.to}, message)
            : pipeline::checksum(message);
    std::string line = sum == 0 ? "" : "WRONG CHECKSUM ";
    if (ip6 && (message[0] == 135 || message[0] == 136)) {
        return line + tell_discovery(message);
    }
    line += fmt::format("ICMP {}/{}", message[0], message[1]);
    if (const unsigned rest = pipeline::read16(message, 4) * 65536U + pipeline::read16(message, 6);
        rest != 0) {
        line += fmt::format(" {:#x}", rest);
    }
    return line + fmt::format(" with {} bytes", message.size() - 8);
}

std::string tell_ip(const pipeline::Frame &frame)
{
    const auto packet = frame.bytes.subspan(frame.l3, frame.l3_length);
    const bool ip6 = frame.is_ip6();
    const auto payload = packet.subspan(ip6 ? 40 : (packet[0] & 0xfU) * std::size_t{4});
    std::string line = fmt::format("{} > {} ttl {}", pipeline::address_text(ip6, frame.from),
                                   pipeline::address_text(ip6, frame.to), frame.ttl);
    if (frame.protocol == (ip6 ? 58 : 1)) {
        return line + " " + tell_icmp(frame, payload);
    }
    return line + fmt::format(" protocol {} with {} bytes", frame.protocol, payload.size());
}

} // namespace

Bytes udp_payload(std::size_t size)
{
    Bytes payload(UDP_HEADER + size);
    pipeline::write16(payload, 0, 40000);
    pipeline::write16(payload, 2, 33434);
    pipeline::write16(payload, 4, static_cast<std::uint16_t>(payload.size()));
    for (std::size_t i = 0; i < size; ++i) {
        payload[UDP_HEADER + i] = static_cast<std::uint8_t>(i);
    }
    return payload;
}

Bytes ip_frame(const Packet &packet, const From &from)
{
    const Tins::RawPDU payload(packet.payload.empty() ? udp_payload(0) : packet.payload);
    if (packet.from.find(':') != std::string_view::npos) {
        Tins::IPv6 header(Tins::IPv6Address(std::string(packet.to)),
                          Tins::IPv6Address(std::string(packet.from)));
        header.hop_limit(static_cast<std::uint8_t>(packet.ttl));
        header.next_header(static_cast<std::uint8_t>(packet.protocol));
        return frame_around(header / payload, from);
    }
    Tins::IP header(Tins::IPv4Address(std::string(packet.to)),
                    Tins::IPv4Address(std::string(packet.from)));
    header.ttl(static_cast<std::uint8_t>(packet.ttl));
    header.protocol(static_cast<std::uint8_t>(packet.protocol));
    Bytes frame = frame_around(header / payload, from);
    // The library would put the flags of a fragment elsewhere than where a sender does.
    const std::size_t l3 = 14 + from.tags.size() * 4;
    const auto head = std::span(frame).subspan(l3, 20);
    pipeline::write16(
        head, 6, static_cast<std::uint16_t>(packet.fragment | (packet.dont_fragment ? 0x4000 : 0)));
    pipeline::write16(head, 10, 0);
    pipeline::write16(head, 10, pipeline::checksum(head));
    return frame;
}

Bytes echo_frame(const Packet &packet, const From &from)
{
    const bool ip6 = packet.from.find(':') != std::string_view::npos;
    Bytes message = {static_cast<std::uint8_t>(ip6 ? 128 : 8), 0, 0, 0, 0x12, 0x34, 0, 7};
    message.insert(message.end(), {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'});
    pipeline::write16(message, 2,
                      ip6 ? lab::cpu::icmp6_checksum(ip(packet.from), ip(packet.to), message)
                          : pipeline::checksum(message));
    Packet echo = packet;
    echo.protocol = ip6 ? 58 : 1;
    echo.payload = message;
    return ip_frame(echo, from);
}

Bytes arp_frame(bool request, std::string_view sender, std::string_view sender_mac,
                std::string_view target, const From &from)
{
    Tins::ARP packet(Tins::IPv4Address(std::string(target)), Tins::IPv4Address(std::string(sender)),
                     Tins::HWAddress<6>(request ? "00:00:00:00:00:00" : std::string(ROUTER)),
                     Tins::HWAddress<6>(std::string(sender_mac)));
    packet.opcode(request ? Tins::ARP::REQUEST : Tins::ARP::REPLY);
    return frame_around(packet, from);
}

Bytes icmp6_frame(std::string_view from, std::string_view to, Bytes message, const From &link)
{
    pipeline::write16(message, 2, 0);
    pipeline::write16(message, 2, lab::cpu::icmp6_checksum(ip(from), ip(to), message));
    return ip_frame({.from = from, .to = to, .ttl = 255, .protocol = 58, .payload = message}, link);
}

namespace
{

/** A message of neighbour discovery with an option of a MAC, unless that is empty. */
Bytes nd_message(std::uint8_t type, std::string_view target, std::string_view mac)
{
    Bytes message = {type, 0, 0, 0, static_cast<std::uint8_t>(type == 136 ? 0x60 : 0), 0, 0, 0};
    const auto address = ip(target);
    message.insert(message.end(), address.bytes.begin(), address.bytes.end());
    std::string reason;
    if (const auto bytes = lab::config::parse_mac(mac, reason)) {
        message.push_back(type == 136 ? 2 : 1);
        message.push_back(1);
        message.insert(message.end(), bytes->begin(), bytes->end());
    }
    return message;
}

} // namespace

Bytes ns_frame(std::string_view from, std::string_view target, std::string_view mac,
               const std::vector<int> &tags)
{
    const auto address = ip(target);
    const std::string group = fmt::format("ff02::1:ff{:02x}:{:02x}{:02x}", address.bytes[13],
                                          address.bytes[14], address.bytes[15]);
    const std::string group_mac = fmt::format("33:33:ff:{:02x}:{:02x}:{:02x}", address.bytes[13],
                                              address.bytes[14], address.bytes[15]);
    return icmp6_frame(from, group, nd_message(135, target, mac),
                       {.mac = mac.empty() ? HOST : mac, .to = group_mac, .tags = tags});
}

Bytes na_frame(std::string_view from, std::string_view to, std::string_view mac,
               const std::vector<int> &tags)
{
    return icmp6_frame(from, to, nd_message(136, from, mac), {.mac = mac, .tags = tags});
}

std::string tell(const Bytes &frame)
{
    pipeline::Frame read;
    if (!pipeline::parse(frame, read)) {
        return fmt::format("NO FRAME: {}", read.fault);
    }
    std::string line = fmt::format("{} > {} ", lab::config::mac_text(read.source),
                                   lab::config::mac_text(read.destination));
    for (int i = 0; i < read.tags; ++i) {
        const unsigned bits = i == 0 ? read.outer : read.inner;
        line += fmt::format("tag {} ", bits & 0xfffU);
        line += bits >> 13 != 0 ? fmt::format("priority {} ", bits >> 13) : "";
    }
    if (read.fault != nullptr) {
        return line + read.fault;
    }
    if (read.payload == pipeline::Payload::arp) {
        return line + tell_arp(read.bytes.subspan(read.l3));
    }
    return line + (read.is_ip() ? tell_ip(read) : fmt::format("type {:#x}", read.type));
}

} // namespace lab_test
