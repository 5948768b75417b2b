/*
 * frame.cpp: reading and changing frames.
 */
#include "chip/pipeline/frame.h"

#include <algorithm>
#include <arpa/inet.h>

namespace simswitch::chip::pipeline
{

namespace
{

constexpr std::size_t IP6_HEADER = 40;

void read_l4(Frame &frame, std::size_t at, std::size_t end)
{
    constexpr std::size_t PORTS = 4; // source and destination
    if (at + PORTS <= std::min(end, frame.bytes.size())) {
        frame.l4 = at;
    }
}

const char *read_ip4(Frame &frame)
{
    const auto packet = frame.bytes.subspan(frame.l3);
    if (packet.size() < IP4_HEADER) {
        return "IPv4 header cut off";
    }
    if (packet[0] >> 4 != 4) {
        return "IPv4 header of another version";
    }
    const std::size_t header = (packet[0] & 0xfU) * std::size_t{4};
    if (header < IP4_HEADER || header > packet.size()) {
        return "IPv4 header length out of range";
    }
    const std::size_t length = read16(packet, 2);
    if (length < header || length > packet.size()) {
        return "IPv4 length doesn't fit the frame";
    }
    if (checksum(packet.first(header)) != 0) {
        return "IPv4 header checksum is wrong";
    }
    frame.l3_length = length;
    frame.ttl = packet[8];
    frame.protocol = packet[9];
    std::copy_n(packet.begin() + 12, 4, frame.from.begin());
    std::copy_n(packet.begin() + 16, 4, frame.to.begin());
    const bool later_fragment = (read16(packet, 6) & 0x1fffU) != 0;
    if (!later_fragment) {
        read_l4(frame, frame.l3 + header, frame.l3 + length);
    }
    return nullptr;
}

const char *read_ip6(Frame &frame)
{
    const auto packet = frame.bytes.subspan(frame.l3);
    if (packet.size() < IP6_HEADER) {
        return "IPv6 header cut off";
    }
    if (packet[0] >> 4 != 6) {
        return "IPv6 header of another version";
    }
    const std::size_t length = IP6_HEADER + read16(packet, 4);
    if (length > packet.size()) {
        return "IPv6 length doesn't fit the frame";
    }
    frame.l3_length = length;
    frame.protocol = packet[6];
    frame.ttl = packet[7];
    std::copy_n(packet.begin() + 8, 16, frame.from.begin());
    std::copy_n(packet.begin() + 24, 16, frame.to.begin());
    read_l4(frame, frame.l3 + IP6_HEADER, frame.l3 + length);
    return nullptr;
}

void read_payload(Frame &frame)
{
    switch (frame.type) {
    case TYPE_IP4:
        frame.payload = Payload::ip4;
        frame.fault = read_ip4(frame);
        break;
    case TYPE_IP6:
        frame.payload = Payload::ip6;
        frame.fault = read_ip6(frame);
        break;
    case TYPE_ARP:
        frame.payload = Payload::arp;
        break;
    case TYPE_MPLS:
    case TYPE_MPLS_MULTICAST:
        frame.payload = Payload::mpls;
        break;
    default:
        frame.payload = Payload::other;
    }
}

} // namespace

const char *text(Payload payload)
{
    constexpr std::array<const char *, 5> NAMES = {"other", "IPv4", "IPv6", "ARP", "MPLS"};
    return NAMES.at(static_cast<std::size_t>(payload));
}

bool Frame::is_broadcast() const
{
    return std::all_of(destination.begin(), destination.end(),
                       [](std::uint8_t byte) { return byte == 0xff; });
}

bool Frame::is_bridge_protocol() const
{
    constexpr std::array<std::uint8_t, 5> GROUP = {0x01, 0x80, 0xc2, 0x00, 0x00};
    return std::equal(GROUP.begin(), GROUP.end(), destination.begin()) && destination[5] < 0x10;
}

bool Frame::is_link_local_multicast() const
{
    if (fault != nullptr) {
        return false;
    }
    return (payload == Payload::ip4 && to[0] == 224 && to[1] == 0 && to[2] == 0) ||
           (payload == Payload::ip6 && to[0] == 0xff && to[1] == 0x02);
}

bool Frame::is_neighbour_discovery() const
{
    if (payload != Payload::ip6 || fault != nullptr || protocol != PROTOCOL_ICMP6 || l4 == 0) {
        return false;
    }
    return bytes[l4] >= 133 && bytes[l4] <= 137;
}

bool parse(std::span<const std::uint8_t> bytes, Frame &frame)
{
    frame = Frame{};
    frame.bytes = bytes;
    if (bytes.size() < ETHERNET_HEADER) {
        frame.fault = "Ethernet header cut off";
        return false;
    }
    std::copy_n(bytes.begin(), 6, frame.destination.begin());
    std::copy_n(bytes.begin() + 6, 6, frame.source.begin());
    frame.type = read16(bytes, 12);
    frame.l3 = ETHERNET_HEADER;
    while (frame.tags < 2 && frame.type == TYPE_TAG) {
        if (bytes.size() < frame.l3 + TAG_SIZE) {
            frame.fault = "802.1Q tag cut off";
            return false;
        }
        (frame.tags == 0 ? frame.outer : frame.inner) = read16(bytes, frame.l3);
        frame.type = read16(bytes, frame.l3 + 2);
        frame.l3 += TAG_SIZE;
        ++frame.tags;
    }
    read_payload(frame);
    return true;
}

std::string address_text(bool ip6, const Address &address)
{
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    inet_ntop(ip6 ? AF_INET6 : AF_INET, address.data(), buffer.data(),
              static_cast<socklen_t>(buffer.size()));
    return buffer.data();
}

const char *not_unicast(const Frame &frame)
{
    const Address &from = frame.from;
    const Address &to = frame.to;
    if (frame.payload == Payload::ip4) {
        if (to[0] >= 224 || to[0] == 0 || to[0] == 127) {
            return to[0] >= 224 && to[0] < 240 ? "the destination is a multicast address"
                                               : "the destination is no unicast address";
        }
        return from[0] >= 224 || from[0] == 127 ? "the source is no unicast address" : nullptr;
    }
    const auto is_low = [](const Address &address) { // :: and ::1
        return std::all_of(address.begin(), address.end() - 1, [](auto b) { return b == 0; }) &&
               address[15] <= 1;
    };
    const auto is_link_local = [](const Address &address) { // fe80::/10
        return address[0] == 0xfe && (address[1] & 0xc0U) == 0x80;
    };
    if (to[0] == 0xff) {
        return "the destination is a multicast address";
    }
    if (is_low(to)) {
        return "the destination is no unicast address";
    }
    if (from[0] == 0xff || is_low(from)) {
        return "the source is no unicast address";
    }
    return is_link_local(to) || is_link_local(from) ? "a link-local address stays on its link"
                                                    : nullptr;
}

void decrement_ttl(std::span<std::uint8_t> packet)
{
    if (packet[0] >> 4 == 6) {
        --packet[7];
        return;
    }
    // RFC 1624, equation 3, for the word of TTL and protocol.
    const std::uint16_t before = read16(packet, 8);
    --packet[8];
    const std::uint16_t after = read16(packet, 8);
    std::uint32_t sum = static_cast<std::uint16_t>(~read16(packet, 10));
    sum += static_cast<std::uint16_t>(~before);
    sum += after;
    sum = (sum & 0xffffU) + (sum >> 16);
    sum = (sum & 0xffffU) + (sum >> 16);
    write16(packet, 10, static_cast<std::uint16_t>(~sum));
}

void write_outer_ip4(std::span<std::uint8_t> out, std::span<const std::uint8_t> packet,
                     std::uint32_t from, std::uint32_t to)
{
    constexpr std::uint16_t DONT_FRAGMENT = 0x4000;
    constexpr std::uint8_t TTL = 64;
    const bool ip6 = packet[0] >> 4 == 6;
    out[0] = 0x45;
    out[1] = ip6 ? static_cast<std::uint8_t>(packet[0] << 4 | packet[1] >> 4) : packet[1];
    write16(out, 2, static_cast<std::uint16_t>(IP4_HEADER + packet.size()));
    write16(out, 4, 0);
    write16(out, 6, DONT_FRAGMENT);
    out[8] = TTL;
    out[9] = ip6 ? PROTOCOL_IP6 : PROTOCOL_IP4;
    write16(out, 10, 0);
    write16(out, 12, static_cast<std::uint16_t>(from >> 16));
    write16(out, 14, static_cast<std::uint16_t>(from));
    write16(out, 16, static_cast<std::uint16_t>(to >> 16));
    write16(out, 18, static_cast<std::uint16_t>(to));
    write16(out, 10, checksum(out.first(IP4_HEADER)));
}

std::uint16_t checksum(std::span<const std::uint8_t> bytes)
{
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        sum += read16(bytes, i);
    }
    if (bytes.size() % 2 != 0) {
        sum += static_cast<std::uint32_t>(bytes.back() << 8);
    }
    while (sum >> 16 != 0) {
        sum = (sum & 0xffffU) + (sum >> 16);
    }
    return static_cast<std::uint16_t>(~sum);
}

} // namespace simswitch::chip::pipeline
