/*
 * packets.cpp: see packets.h.
 */
#include "cpu/packets.h"

#include "chip/pipeline/frame.h"

#include <tins/arp.h>
#include <tins/dot1q.h>
#include <tins/ethernetII.h>
#include <tins/icmpv6.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/rawpdu.h>

#include <algorithm>

namespace lab::cpu
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

constexpr std::uint8_t HOPS = 64;
constexpr std::uint8_t HOPS_OF_DISCOVERY = 255; // shows that no router has forwarded it

Tins::HWAddress<6> to_tins(const config::Mac &mac)
{
    return Tins::HWAddress<6>(mac.data());
}

Tins::IPv4Address to_tins4(const config::IpAddress &address)
{
    return Tins::IPv4Address(address.text());
}

Tins::IPv6Address to_tins6(const config::IpAddress &address)
{
    return Tins::IPv6Address(address.bytes.data());
}

/** A frame for a link. The packet has its addresses already. */
Bytes frame_of(const Link &link, const config::Mac &to, const config::Mac &from,
               const Tins::PDU &packet)
{
    constexpr unsigned VLAN_BITS = 12;
    Tins::EthernetII frame(to_tins(to), to_tins(from));
    for (const std::uint16_t bits : link.tags) {
        Tins::Dot1Q tag(bits & pipeline::VLAN_MASK, false);
        tag.priority(static_cast<std::uint8_t>(bits >> (VLAN_BITS + 1)));
        tag.cfi(static_cast<std::uint8_t>(bits >> VLAN_BITS & 1U));
        frame /= tag;
    }
    frame /= packet;
    return frame.serialize();
}

/** Where multicast to an IPv6 group goes. */
config::Mac mac_of_group(const config::IpAddress &group)
{
    return {0x33, 0x33, group.bytes[12], group.bytes[13], group.bytes[14], group.bytes[15]};
}

Bytes discovery(const Link &link, const config::Mac &to_mac, const config::IpAddress &to,
                const Party &from, const Tins::ICMPv6 &message)
{
    Tins::IPv6 packet(to_tins6(to), to_tins6(from.address));
    packet.hop_limit(HOPS_OF_DISCOVERY);
    packet /= message;
    return frame_of(link, to_mac, from.mac, packet);
}

} // namespace

config::IpAddress link_local_of(const config::Mac &mac)
{
    constexpr std::uint8_t UNIVERSAL = 0x02; // the bit is the other way round in an address
    return {true,
            {0xfe, 0x80, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(mac[0] ^ UNIVERSAL), mac[1],
             mac[2], 0xff, 0xfe, mac[3], mac[4], mac[5]}};
}

std::uint16_t icmp6_checksum(const config::IpAddress &from, const config::IpAddress &to,
                             std::span<const std::uint8_t> message)
{
    Bytes all(from.bytes.begin(), from.bytes.end());
    all.insert(all.end(), to.bytes.begin(), to.bytes.end());
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        all.push_back(static_cast<std::uint8_t>(message.size() >> shift));
    }
    all.insert(all.end(), {0, 0, 0, pipeline::PROTOCOL_ICMP6});
    all.insert(all.end(), message.begin(), message.end());
    return pipeline::checksum(all);
}

Bytes arp_reply(const Link &link, const Party &from, const Party &to)
{
    Tins::ARP packet(to_tins4(to.address), to_tins4(from.address), to_tins(to.mac),
                     to_tins(from.mac));
    packet.opcode(Tins::ARP::REPLY);
    return frame_of(link, to.mac, from.mac, packet);
}

Bytes arp_request(const Link &link, const Party &from, const config::IpAddress &target)
{
    Tins::ARP packet(to_tins4(target), to_tins4(from.address), to_tins(config::Mac{}),
                     to_tins(from.mac));
    packet.opcode(Tins::ARP::REQUEST);
    return frame_of(link, BROADCAST, from.mac, packet);
}

Bytes neighbor_advertisement(const Link &link, const Party &from, const Party &to)
{
    const bool solicited = to.address.is_unicast();
    Tins::ICMPv6 message(Tins::ICMPv6::NEIGHBOUR_ADVERT);
    message.router(1);
    message.solicited(solicited ? 1 : 0);
    message.override(1);
    message.target_addr(to_tins6(from.address));
    message.target_link_layer_addr(to_tins(from.mac));
    const config::IpAddress all_nodes = {true, {0xff, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}};
    return discovery(link, solicited ? to.mac : mac_of_group(all_nodes),
                     solicited ? to.address : all_nodes, from, message);
}

Bytes neighbor_solicitation(const Link &link, const Party &from, const config::IpAddress &target)
{
    Tins::ICMPv6 message(Tins::ICMPv6::NEIGHBOUR_SOLICIT);
    message.target_addr(to_tins6(target));
    message.source_link_layer_addr(to_tins(from.mac));
    config::IpAddress group = {true, {0xff, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xff}};
    std::copy(target.bytes.begin() + 13, target.bytes.end(), group.bytes.begin() + 13);
    return discovery(link, mac_of_group(group), group, from, message);
}

Bytes icmp_packet(const Link &link, const Party &from, const Party &to, Bytes message)
{
    constexpr std::size_t CHECKSUM = 2;
    pipeline::write16(message, CHECKSUM, 0);
    if (from.address.ipv6) {
        pipeline::write16(message, CHECKSUM, icmp6_checksum(from.address, to.address, message));
        Tins::IPv6 packet(to_tins6(to.address), to_tins6(from.address));
        packet.hop_limit(HOPS);
        packet.next_header(pipeline::PROTOCOL_ICMP6);
        packet /= Tins::RawPDU(message);
        return frame_of(link, to.mac, from.mac, packet);
    }
    pipeline::write16(message, CHECKSUM, pipeline::checksum(message));
    Tins::IP packet(to_tins4(to.address), to_tins4(from.address));
    packet.ttl(HOPS);
    packet.protocol(PROTOCOL_ICMP);
    packet /= Tins::RawPDU(message);
    return frame_of(link, to.mac, from.mac, packet);
}

} // namespace lab::cpu
