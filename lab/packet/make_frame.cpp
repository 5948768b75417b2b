/*
 * make_frame.cpp: see make_frame.h. libtins writes the headers and checksums.
 */
#include "packet/make_frame.h"

#include "config/names.h"
#include "packet/frame_values.h"
#include "session/errors.h"
#include "session/nearest.h"
#include "session/state.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <tins/arp.h>
#include <tins/dot1q.h>
#include <tins/ethernetII.h>
#include <tins/icmp.h>
#include <tins/icmpv6.h>
#include <tins/ip.h>
#include <tins/ipv6.h>
#include <tins/mpls.h>
#include <tins/rawpdu.h>
#include <tins/tcp.h>
#include <tins/udp.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace lab::packet
{

namespace
{

using config::Mac;
using session::Impossible;
using session::State;
using session::UsageError;
using Payload = std::vector<std::uint8_t>;

constexpr Mac DEFAULT_SOURCE = {0x02, 0, 0, 0, 0, 0xfe};
constexpr Mac BROADCAST = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
constexpr std::uint32_t DEFAULT_SIZE = 64;
constexpr std::uint32_t DEFAULT_TTL = 64;
constexpr std::uint32_t DEFAULT_SPORT = 10000;
constexpr std::uint32_t DEFAULT_DPORT = 20000;
constexpr std::uint32_t LAST_L4_PORT = 65535;
constexpr std::uint32_t LAST_LABEL = 0xfffff;
constexpr std::uint32_t LAST_BYTE = 255;
constexpr std::uint32_t PROTOCOL_ICMP = 1;

// Where it goes.

/** The MAC that hosts behind an interface send to. */
Mac mac_of_interface(const std::string &name, bool ip6, const State &state)
{
    const Mac *first = nullptr;
    for (const auto &known : state.layer.virtual_macs()) {
        // 00:00:5e:00:01 is VRRP's for IPv4, 00:00:5e:00:02 the one for IPv6.
        constexpr std::array<std::uint8_t, 4> VRRP = {0, 0, 0x5e, 0};
        if (known.plan.owner != name) {
            continue;
        }
        const Mac &mac = known.plan.mac;
        const bool is_vrrp = std::equal(VRRP.begin(), VRRP.end(), mac.begin());
        if (!is_vrrp || mac[4] == (ip6 ? 2 : 1)) {
            return mac;
        }
        first = first == nullptr ? &mac : first;
    }
    if (first != nullptr) {
        return *first;
    }
    const auto view = l3lif::read_back(state.hardware, *state.interface(name).lif);
    const auto *object = state.hardware.chip.l3_interfaces.find(view.iif);
    if (object == nullptr) {
        throw Impossible(fmt::format("--dmac {}: it is down and has no MAC; 'router' is the "
                                     "device's MAC",
                                     name));
    }
    return object->mac;
}

Mac destination_of(const FrameWords &words, const std::optional<AddressPair> &ip,
                   const State &state)
{
    const auto *given = find_option(words, "--dmac");
    if (given == nullptr) {
        if (words.contains("--arp")) {
            return BROADCAST;
        }
        return ip && is_group(ip->to) ? group_mac(ip->to) : state.config->device_mac;
    }
    const std::string &word = given->front();
    if (word == "router") {
        return state.config->device_mac;
    }
    if (word == "broadcast") {
        return BROADCAST;
    }
    if (word.find(':') != std::string::npos) {
        return mac_of("--dmac", word);
    }
    if (state.layer.routed().find(word) == nullptr) {
        throw UsageError("--dmac: " +
                         session::unknown("MAC or interface", word, destination_names(state)));
    }
    return mac_of_interface(word, ip && ip->from.ipv6, state);
}

// What it carries.

std::uint32_t protocol_of(const FrameWords &words, bool ip6)
{
    using namespace simswitch::chip::pipeline;
    const auto *given = find_option(words, "--proto");
    const std::string word = given == nullptr ? "udp" : given->front();
    if (word == "udp") {
        return PROTOCOL_UDP;
    }
    if (word == "tcp") {
        return PROTOCOL_TCP;
    }
    if (word == "icmp") {
        return ip6 ? PROTOCOL_ICMP6 : PROTOCOL_ICMP;
    }
    if (!config::parse_number(word)) {
        throw UsageError("--proto: " + session::unknown("protocol", word, {"udp", "tcp", "icmp"}) +
                         " (udp, tcp, icmp or a number)");
    }
    return number_of(words, "--proto", 0, LAST_BYTE, 0);
}

/** Puts the packet of the words behind a header, without anything to fill it up. */
void add_transport(Tins::PDU &packet, const FrameWords &words, std::uint32_t protocol, bool ip6)
{
    const auto sport =
        static_cast<std::uint16_t>(number_of(words, "--sport", 0, LAST_L4_PORT, DEFAULT_SPORT));
    const auto dport =
        static_cast<std::uint16_t>(number_of(words, "--dport", 0, LAST_L4_PORT, DEFAULT_DPORT));
    using namespace simswitch::chip::pipeline;
    if (protocol == PROTOCOL_UDP) {
        packet /= Tins::UDP(dport, sport);
    } else if (protocol == PROTOCOL_TCP) {
        packet /= Tins::TCP(dport, sport);
    } else if (words.contains("--sport") || words.contains("--dport")) {
        throw UsageError("--sport and --dport go with --proto udp or tcp");
    } else if (protocol == PROTOCOL_ICMP && !ip6) {
        packet /= Tins::ICMP(Tins::ICMP::ECHO_REQUEST);
    } else if (protocol == PROTOCOL_ICMP6 && ip6) {
        packet /= Tins::ICMPv6(Tins::ICMPv6::ECHO_REQUEST);
    }
}

Tins::IPv4Address address4(const config::IpAddress &address)
{
    return Tins::IPv4Address(address.text());
}

Tins::IPv6Address address6(const config::IpAddress &address)
{
    return Tins::IPv6Address(address.bytes.data());
}

void add_ip(Tins::PDU &frame, const FrameWords &words, const AddressPair &ip)
{
    const bool ip6 = ip.from.ipv6;
    const std::uint32_t protocol = protocol_of(words, ip6);
    const auto ttl =
        static_cast<std::uint8_t>(number_of(words, "--ttl", 0, LAST_BYTE, DEFAULT_TTL));
    if (words.contains("--mpls")) {
        Tins::MPLS label;
        label.label(number_of(words, "--mpls", 0, LAST_LABEL, 0));
        label.ttl(ttl);
        frame /= label;
    }
    if (ip6) {
        Tins::IPv6 header(address6(ip.to), address6(ip.from));
        header.hop_limit(ttl);
        header.next_header(static_cast<std::uint8_t>(protocol));
        frame /= header;
    } else {
        Tins::IP header(address4(ip.to), address4(ip.from));
        header.ttl(ttl);
        header.protocol(static_cast<std::uint8_t>(protocol));
        frame /= header;
    }
    add_transport(frame, words, protocol, ip6);
}

void add_arp(Tins::PDU &frame, const AddressPair &arp, const Mac &source)
{
    Tins::ARP request(address4(arp.to), address4(arp.from), Tins::ARP::hwaddress_type(),
                      Tins::ARP::hwaddress_type(source.data()));
    request.opcode(Tins::ARP::REQUEST);
    frame /= request;
}

/** Refuses options that nothing would look at. */
void check_company(const FrameWords &words)
{
    constexpr std::array<std::string_view, 6> OF_IP = {"--ttl",   "--proto", "--sport",
                                                       "--dport", "--mpls",  "--size"};
    if (words.contains("--hex")) {
        for (const auto &[name, values] : words) {
            if (name != "--hex" && name != "--in") {
                throw UsageError(
                    fmt::format("{} doesn't go with --hex, which is a whole frame", name));
            }
        }
        return;
    }
    if (words.contains("--ip") == words.contains("--arp")) {
        throw UsageError(words.contains("--ip")
                             ? "--ip and --arp: a frame is one of the two"
                             : "what goes in is missing: --ip SRC DST, --arp SENDER TARGET or "
                               "--hex BYTES");
    }
    for (const std::string_view name : OF_IP) {
        if (words.contains("--arp") && name != "--size" && words.contains(name)) {
            throw UsageError(fmt::format("{} goes with --ip, not with --arp", name));
        }
    }
}

/** The frame with as many bytes behind its headers as its size asks for. */
Payload filled(Tins::EthernetII frame, const FrameWords &words, std::size_t headers)
{
    const std::uint32_t smallest = static_cast<std::uint32_t>(headers);
    const std::uint32_t size = number_of(words, "--size", 0, simswitch::chip::pipeline::FRAME_MAX,
                                         std::max(DEFAULT_SIZE, smallest));
    if (size < smallest) {
        throw UsageError(fmt::format("--size {}: the headers alone are {} bytes", size, smallest));
    }
    // ARP has no data: what stands behind it is the wire's padding.
    if (words.contains("--ip")) {
        frame /= Tins::RawPDU(Payload(size - smallest));
    }
    Payload bytes = frame.serialize();
    bytes.resize(size);
    return bytes;
}

Payload bytes_of(const FrameWords &words, int vlan, const State &state)
{
    const auto ip = addresses_of(words, "--ip");
    const auto arp = addresses_of(words, "--arp");
    const auto *smac = find_option(words, "--smac");
    const Mac source = smac != nullptr ? mac_of("--smac", smac->front()) : DEFAULT_SOURCE;
    const Mac destination = destination_of(words, ip, state);
    Tins::EthernetII frame(Tins::EthernetII::address_type(destination.data()),
                           Tins::EthernetII::address_type(source.data()));
    if (vlan >= 0) {
        frame /= Tins::Dot1Q(static_cast<std::uint16_t>(vlan), false);
    }
    if (ip) {
        add_ip(frame, words, *ip);
    } else {
        add_arp(frame, *arp, source);
    }
    std::size_t headers = 0;
    for (const Tins::PDU *part = &frame; part != nullptr; part = part->inner_pdu()) {
        headers += part->header_size();
    }
    return filled(frame, words, headers);
}

} // namespace

MadeFrame make_frame(const FrameWords &words, const State &state)
{
    const auto *in = find_option(words, "--in");
    if (in == nullptr) {
        throw UsageError("where it comes in is missing: --in PORT");
    }
    check_company(words);
    const InPlace place = find_in(in->front(), state);
    MadeFrame made{place.port, place.port_name, place.note, {}};
    if (const auto *hex = find_option(words, "--hex")) {
        made.bytes = bytes_of_hex(hex->front());
        return made;
    }
    const bool says_vlan = words.contains("--vlan");
    const int vlan = says_vlan
                         ? static_cast<int>(number_of(words, "--vlan", 0, config::VLAN_MAX, 0))
                         : place.vlan;
    made.bytes = bytes_of(words, vlan, state);
    return made;
}

} // namespace lab::packet
