/*
 * frame.h: what the pipeline reads in an Ethernet frame, and how it changes one.
 *
 * parse() never reads outside the bytes it is given: a header that is cut off
 * or doesn't add up leaves a fault in words and the fields read so far. The
 * bytes stay where they are and must outlive the parsed frame.
 */
#pragma once

#include "chip/basics.h"

#include <cstdint>
#include <span>
#include <string>

namespace simswitch::chip::pipeline
{

inline constexpr std::size_t ETHERNET_HEADER = 14; ///< two MACs and a type
inline constexpr std::size_t TAG_SIZE = 4;         ///< an 802.1Q tag
inline constexpr std::size_t FRAME_MAX = 9600;     ///< longest frame, in bytes, without FCS
inline constexpr std::size_t IP4_HEADER = 20;      ///< an IPv4 header without options
inline constexpr std::uint16_t VLAN_MASK = 0xfff;  ///< the VLAN of a tag's 16 bits

inline constexpr std::uint16_t TYPE_IP4 = 0x0800;
inline constexpr std::uint16_t TYPE_ARP = 0x0806;
inline constexpr std::uint16_t TYPE_TAG = 0x8100;
inline constexpr std::uint16_t TYPE_IP6 = 0x86dd;
inline constexpr std::uint16_t TYPE_MPLS = 0x8847;
inline constexpr std::uint16_t TYPE_MPLS_MULTICAST = 0x8848;

inline constexpr std::uint8_t PROTOCOL_IGMP = 2;
inline constexpr std::uint8_t PROTOCOL_IP4 = 4; ///< IPv4 in IP
inline constexpr std::uint8_t PROTOCOL_TCP = 6;
inline constexpr std::uint8_t PROTOCOL_UDP = 17;
inline constexpr std::uint8_t PROTOCOL_IP6 = 41; ///< IPv6 in IP
inline constexpr std::uint8_t PROTOCOL_ICMP6 = 58;

using chip::text;

/** An IP address; an IPv4 address is in the first four bytes. */
using Address = std::array<std::uint8_t, 16>;

/** What a frame carries. */
enum class Payload { other, ip4, ip6, arp, mpls };

/** "IPv4", "IPv6", "ARP", "MPLS" or "other". */
const char *text(Payload payload);

/** A frame, read. */
struct Frame {
    std::span<const std::uint8_t> bytes{}; ///< all of it
    Mac destination{};
    Mac source{};
    int tags = 0;            ///< 802.1Q tags, 0..2
    std::uint16_t outer = 0; ///< the outer tag's 16 bits
    std::uint16_t inner = 0; ///< the inner tag's 16 bits
    std::uint16_t type = 0;  ///< type behind the tags
    std::size_t l3 = 0;      ///< where the packet behind the tags begins
    Payload payload = Payload::other;
    const char *fault = nullptr; ///< what is wrong with the packet's header, null when it is good

    // IPv4 and IPv6 with a good header.
    Address from{};            ///< source address
    Address to{};              ///< destination address
    std::size_t l3_length = 0; ///< bytes of the packet, from its own header
    std::uint8_t ttl = 0;      ///< TTL or hop limit
    std::uint8_t protocol = 0; ///< protocol or next header
    std::size_t l4 = 0;        ///< where the header of TCP, UDP or ICMP begins, 0 when not there

    bool is_ip() const { return payload == Payload::ip4 || payload == Payload::ip6; }
    bool is_ip6() const { return payload == Payload::ip6; }
    /** Sent to more than one station. */
    bool is_group() const { return (destination[0] & 1U) != 0; }
    bool is_broadcast() const;
    /** A bridge protocol's: 01:80:c2:00:00:00 to 0f, which no bridge forwards. */
    bool is_bridge_protocol() const;
    /** An IP multicast that stays on its link: 224.0.0.0/24 or ff02::/16. */
    bool is_link_local_multicast() const;
    /** IPv6 neighbour discovery: ICMPv6 types 133 to 137. */
    bool is_neighbour_discovery() const;
    /** The VLAN of the outer tag; 0 without a tag, and for a tag that only has a priority. */
    std::uint16_t tag_vlan() const { return tags == 0 ? std::uint16_t{0} : outer & VLAN_MASK; }
};

/**
 * Reads a frame.
 *
 * @param bytes  the frame, without its FCS, at least 14 bytes
 * @param frame  receives what was read
 * @return false for a frame too short to be one, with `fault` set
 */
bool parse(std::span<const std::uint8_t> bytes, Frame &frame);

/** "10.0.0.1" or "2001:db8::1". */
std::string address_text(bool ip6, const Address &address);

/** What keeps a packet between these addresses from being routed as unicast, null when nothing. */
const char *not_unicast(const Frame &frame);

/**
 * Takes one off the TTL or hop limit of a packet and puts the IPv4 header's
 * checksum right.
 *
 * @param packet  the packet from its IP header on, which parse found good
 */
void decrement_ttl(std::span<std::uint8_t> packet);

/**
 * Writes the IPv4 header that a tunnel puts before a packet: its TOS or traffic
 * class, not to be fragmented, TTL 64.
 *
 * @param out     room for the 20 bytes of the header
 * @param packet  the packet from its own IP header on, to the last byte that it has
 * @param from    source address, host order
 * @param to      destination address, host order
 */
void write_outer_ip4(std::span<std::uint8_t> out, std::span<const std::uint8_t> packet,
                     std::uint32_t from, std::uint32_t to);

/** The Internet checksum of bytes, as it stands in a header; 0 over a header that has it. */
std::uint16_t checksum(std::span<const std::uint8_t> bytes);

/** The 16 bits at a place, network order. */
inline std::uint16_t read16(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}
/** Writes 16 bits, network order. */
inline void write16(std::span<std::uint8_t> bytes, std::size_t at, std::uint16_t value)
{
    bytes[at] = static_cast<std::uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<std::uint8_t>(value);
}

} // namespace simswitch::chip::pipeline
