/*
 * cpu_switch.h: a switch with interfaces of each kind, its chip and its CPU, for
 * tests that give it frames and look at those that come out, each told in a line.
 */
#pragma once

#include "cpu/forwarder.h"
#include "l3lif/layer.h"
#include "routing/routing.h"
#include "support/numbers.h"

#include "chip/pipeline/pipeline.h"
#include "switch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab_test
{

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

// Ports of the chip.
inline constexpr int PORT_A = 1;        ///< Ethernet0
inline constexpr int PORT_B = 2;        ///< Ethernet4, with a subinterface of VLAN 10
inline constexpr int CHANNEL_1 = 3;     ///< Ethernet8, a member of the port-channel
inline constexpr int CHANNEL_2 = 4;     ///< Ethernet12, the other one
inline constexpr int VLAN_UNTAGGED = 5; ///< Ethernet16, in VLAN 100
inline constexpr int VLAN_TAGGED = 6;   ///< Ethernet20, in VLAN 100
inline constexpr int SECONDARY = 7;     ///< Ethernet24, in VLAN 101, a secondary of 100
inline constexpr int RED = 8;           ///< Ethernet28, in another VRF
inline constexpr std::string_view ROUTER = "02:00:00:00:0a:01";
inline constexpr std::string_view HOST = "02:aa:00:00:00:09";
inline constexpr std::string_view ALL = "ff:ff:ff:ff:ff:ff";

using rtifhal_test::Numbers;

/** A host's frame around a packet. */
struct From {
    std::string_view mac = HOST;
    std::string_view to = ROUTER;
    std::vector<int> tags = {}; ///< 16 bits each, the outer one first
};

/** What a packet is made of. */
struct Packet {
    std::string_view from = "10.0.0.9"; ///< a colon makes it IPv6
    std::string_view to = "10.0.0.1";
    int ttl = 64;
    int protocol = 17;
    Bytes payload = {};        ///< behind the IP header; empty: eight bytes of a UDP header
    bool dont_fragment = true; ///< of IPv4
    int fragment = 0;          ///< of IPv4: offset in units of 8 bytes, with 0x2000 for more
};

Bytes ip_frame(const Packet &packet, const From &from = {});
/** An echo request of 10 bytes of data, of either family. */
Bytes echo_frame(const Packet &packet, const From &from = {});
/** An ARP request or reply. */
Bytes arp_frame(bool request, std::string_view sender, std::string_view sender_mac,
                std::string_view target, const From &from = {.to = ALL});
/** An ICMPv6 message with its checksum, hop limit 255. */
Bytes icmp6_frame(std::string_view from, std::string_view to, Bytes message, const From &link);
/** A neighbour solicitation to the solicited-node group. An empty MAC: without the option. */
Bytes ns_frame(std::string_view from, std::string_view target, std::string_view mac = HOST,
               const std::vector<int> &tags = {});
/** A neighbour advertisement to the switch. */
Bytes na_frame(std::string_view from, std::string_view to, std::string_view mac = HOST,
               const std::vector<int> &tags = {});
/** A payload of `size` bytes: 0, 1, 2, … behind a UDP header. */
Bytes udp_payload(std::size_t size);

/**
 * A frame in words: "02:… > ff:… tag 10 ARP who has 10.0.0.9 tell 10.0.0.1 at 02:…". What is
 * wrong with a checksum or a length is told.
 */
std::string tell(const Bytes &frame);

/** A switch. */
class CpuTest : public ::testing::Test
{
protected:
    explicit CpuTest(const simswitch::Options &options = {});

    /** Gives a frame to a port and tells what came out, "2: …" a frame. */
    Lines give(int port, const Bytes &frame);
    /** Lets time pass, then does what is due, and tells what came out. */
    Lines pass(int milliseconds);
    /** Makes a host known, as a configuration does. */
    void know(std::string_view interface, std::string_view address, std::string_view mac,
              std::string_view port = "");
    /** "Ethernet0 10.0.0.9 02:…", "Vlan100 10.1.0.9 02:… behind Ethernet24 in 101". */
    Lines neighbors() const;
    /** What the CPU has counted, "2 echo requests answered". */
    Lines counted() const;

    simswitch::Switch hardware;
    lab::config::Description config;
    lab::l3lif::Layer layer{hardware};
    simswitch::chip::pipeline::Pipeline pipeline{hardware.chip};
    lab::routing::Routing routing{hardware, layer, pipeline.l2()};
    std::chrono::milliseconds now{5000};
    std::vector<std::pair<int, Bytes>> sent;
    lab::cpu::Forwarder forwarder{hardware, layer, routing, pipeline,
                                  [this](int port, std::span<const std::uint8_t> frame) {
                                      sent.emplace_back(port, Bytes(frame.begin(), frame.end()));
                                  }};

private:
    Lines take_sent();
};

/** The same on the other chip. */
class CpuOnTrident2Test : public CpuTest
{
protected:
    CpuOnTrident2Test() : CpuTest({.chip = simswitch::chip::Kind::trident2}) {}
};

} // namespace lab_test
