/*
 * packets.h: the frames that the CPU sends.
 */
#pragma once

#include "config/address.h"
#include "cpu/links.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lab::cpu
{

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint8_t PROTOCOL_ICMP = 1;
inline constexpr config::Mac BROADCAST = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

/** A station with its IP address. */
struct Party {
    config::Mac mac = {};
    config::IpAddress address;
};

/** The link-local address of a MAC, fe80::/64 with the MAC in its lower half. */
config::IpAddress link_local_of(const config::Mac &mac);
/** The checksum of an ICMPv6 message, as it stands in its header; 0 over one that has it. */
std::uint16_t icmp6_checksum(const config::IpAddress &from, const config::IpAddress &to,
                             std::span<const std::uint8_t> message);

/** An ARP reply. @param from  who answers. @param to  who has asked, and gets it */
Bytes arp_reply(const Link &link, const Party &from, const Party &to);
/** An ARP request to all on a link. */
Bytes arp_request(const Link &link, const Party &from, const config::IpAddress &target);
/**
 * A neighbour advertisement that overrides what its receiver knows.
 *
 * @param from  who advertises itself
 * @param to    who gets it: for :: all nodes, unsolicited
 */
Bytes neighbor_advertisement(const Link &link, const Party &from, const Party &to);
/** A neighbour solicitation to the target's solicited-node group. */
Bytes neighbor_solicitation(const Link &link, const Party &from, const config::IpAddress &target);
/**
 * An ICMP or ICMPv6 packet, by the family of `from`.
 *
 * @param message  the ICMP message; its checksum is put in
 */
Bytes icmp_packet(const Link &link, const Party &from, const Party &to, Bytes message);

} // namespace lab::cpu
