/*
 * wire_offload_test.cpp: what the kernel leaves to a network adapter: tags put
 * back, checksums written. And how a frame is told in a line.
 */
#include "wire/frame_text.h"
#include "wire/offload.h"

#include <gtest/gtest.h>
#include <tins/tins.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using lab::wire::complete_checksum;
using lab::wire::put_tag_back;
using Bytes = std::vector<std::uint8_t>;

const Tins::EthernetII ETHERNET("02:00:00:00:0b:01", "02:00:00:00:0a:09");
const Tins::IP IP4("10.0.1.9", "10.0.0.9");
const Tins::IPv6 IP6("2001:db8:0:1::9", "2001:db8::9");

/** A frame as it is on the wire. */
Bytes wire(Tins::PDU &&pdu)
{
    return pdu.serialize();
}

/** Whether a frame with a wrong checksum gets its own back. */
void expect_completed(Bytes frame, std::size_t place)
{
    const Bytes good = frame;
    frame.at(place) ^= 0x5a;
    frame.at(place + 1) ^= 0xa5;
    EXPECT_TRUE(complete_checksum(frame));
    EXPECT_EQ(frame, good);
}

TEST(WireChecksum, OfEachProtocol)
{
    const Tins::RawPDU data("odd");
    expect_completed(wire(ETHERNET / IP4 / Tins::UDP(53, 4000) / data), 14 + 20 + 6);
    expect_completed(wire(ETHERNET / IP4 / Tins::TCP(80, 4000) / data), 14 + 20 + 16);
    expect_completed(wire(ETHERNET / IP4 / Tins::ICMP() / data), 14 + 20 + 2);
    expect_completed(wire(ETHERNET / IP6 / Tins::UDP(53, 4000) / data), 14 + 40 + 6);
    expect_completed(wire(ETHERNET / IP6 / Tins::TCP(80, 4000) / data), 14 + 40 + 16);
    expect_completed(wire(ETHERNET / IP6 / Tins::ICMPv6(Tins::ICMPv6::ECHO_REQUEST) / data),
                     14 + 40 + 2);
    expect_completed(wire(ETHERNET / Tins::Dot1Q(100) / IP4 / Tins::UDP(53, 4000) / data),
                     18 + 20 + 6);
}

TEST(WireChecksum, PaddingDoesNotCount)
{
    Bytes frame = wire(ETHERNET / IP4 / Tins::UDP(53, 4000) / Tins::RawPDU("x"));
    frame.resize(60, 0xee);
    expect_completed(frame, 14 + 20 + 6);
}

TEST(WireChecksum, OfUdpIsNeverZero)
{
    Bytes frame = wire(ETHERNET / IP4 / Tins::UDP(53, 4000) / Tins::RawPDU(Bytes{0, 0}));
    // The data that make the sum 0: what is missing to it.
    frame.at(42) = frame.at(40);
    frame.at(43) = frame.at(41);
    EXPECT_TRUE(complete_checksum(frame));
    EXPECT_EQ(frame.at(40), 0xff);
    EXPECT_EQ(frame.at(41), 0xff);
}

TEST(WireChecksum, NotOfFragmentsNorOtherProtocolsNorOtherFrames)
{
    Tins::IP first = IP4;
    first.flags(Tins::IP::MORE_FRAGMENTS);
    Tins::IP second = IP4;
    second.fragment_offset(1);
    Tins::IP other = IP4;
    other.protocol(47);
    const Tins::RawPDU data(Bytes(40, 1));
    for (Bytes frame :
         {wire(ETHERNET / first / Tins::UDP(53, 4000) / data),
          wire(ETHERNET / second / Tins::UDP(53, 4000) / data), wire(ETHERNET / other / data),
          wire(ETHERNET / Tins::ARP("10.0.0.1", "10.0.0.9")), wire(ETHERNET / data), Bytes(5),
          Bytes()}) {
        const Bytes before = frame;
        EXPECT_FALSE(complete_checksum(frame));
        EXPECT_EQ(frame, before);
    }
}

TEST(WireChecksum, OfAPacketThatIsCutOffNeither)
{
    // Short ones are padded to 60 bytes.
    Bytes whole = wire(ETHERNET / IP4 / Tins::TCP(80, 4000));
    whole.resize(14 + 20 + 20);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes frame(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(complete_checksum(frame)) << size;
    }
    // The packet itself ends before the header of TCP does.
    Bytes frame = whole;
    frame.at(17) = 20 + 17;
    EXPECT_FALSE(complete_checksum(frame));
}

TEST(WireTag, GoesBehindTheMacs)
{
    Bytes room = {0xee, 0xee, 0xee, 0xee, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 8, 0, 0x45};
    const auto frame = put_tag_back(room, 0x8100, 0x6064);
    EXPECT_EQ(Bytes(frame.begin(), frame.end()),
              (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0x81, 0, 0x60, 0x64, 8, 0, 0x45}));
}

TEST(WireTag, AFrameWithoutMacsStaysAsItIs)
{
    Bytes room = {0xee, 0xee, 0xee, 0xee, 1, 2, 3};
    const auto frame = put_tag_back(room, 0x8100, 100);
    EXPECT_EQ(Bytes(frame.begin(), frame.end()), (Bytes{1, 2, 3}));
    Bytes none = {0xee};
    EXPECT_TRUE(put_tag_back(none, 0x8100, 100).empty());
}

TEST(WireFrameText, TellsWhatAFrameIs)
{
    using lab::wire::text;
    const Tins::RawPDU data("ping");
    Tins::IP other = IP4;
    other.protocol(47);
    other.ttl(9);
    EXPECT_EQ(text(wire(ETHERNET / IP4 / Tins::ICMP() / data)),
              "IPv4 10.0.0.9 > 10.0.1.9 ICMP ttl 128, 60 bytes");
    EXPECT_EQ(text(wire(ETHERNET / Tins::Dot1Q(100) / IP4 / Tins::UDP() / data)),
              "VLAN 100 IPv4 10.0.0.9 > 10.0.1.9 UDP ttl 128, 64 bytes");
    EXPECT_EQ(text(wire(ETHERNET / other / data)),
              "IPv4 10.0.0.9 > 10.0.1.9 protocol 47 ttl 9, 60 bytes");
    EXPECT_EQ(text(wire(ETHERNET / IP6 / Tins::TCP())),
              "IPv6 2001:db8::9 > 2001:db8:0:1::9 TCP ttl 0, 74 bytes");
    EXPECT_EQ(text(wire(Tins::ARP::make_arp_request("10.0.0.1", "10.0.0.9", "02:00:00:00:0a:09"))),
              "ARP who has 10.0.0.1 from 10.0.0.9, 60 bytes");
    EXPECT_EQ(text(Bytes(13)), "no frame, 13 bytes");
    EXPECT_EQ(text(Bytes(14, 0x22)), "type 0x2222, 14 bytes");
}

TEST(WireFrameText, TakesAnyBytes)
{
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same every run
    const Bytes whole = wire(Tins::ARP::make_arp_request("10.0.0.1", "10.0.0.9"));
    for (int round = 0; round < 1000; ++round) {
        Bytes frame = whole;
        frame.resize(random() % 64);
        for (std::uint8_t &byte : frame) {
            byte = random() % 8 == 0 ? static_cast<std::uint8_t>(random()) : byte;
        }
        const Bytes before = frame;
        EXPECT_FALSE(lab::wire::text(frame).empty());
        complete_checksum(frame);
        EXPECT_EQ(frame.size(), before.size());
    }
}

TEST(WireFrameText, TellsItsFate)
{
    namespace pipeline = simswitch::chip::pipeline;
    const auto result = std::make_unique<pipeline::Result>();
    result->verdict = pipeline::Verdict::sent;
    result->reason = pipeline::Reason::routed;
    EXPECT_EQ(lab::wire::fate_text(*result), "routed");
    result->reason = pipeline::Reason::flooded;
    result->cpu = true;
    EXPECT_EQ(lab::wire::fate_text(*result), "flooded in its VLAN, a copy to the CPU");
    result->verdict = pipeline::Verdict::to_cpu;
    result->reason = pipeline::Reason::arp;
    EXPECT_EQ(lab::wire::fate_text(*result), "to the CPU: ARP on a routed interface");
    result->verdict = pipeline::Verdict::dropped;
    result->reason = pipeline::Reason::no_route;
    EXPECT_EQ(lab::wire::fate_text(*result), "dropped: no route to its destination");
}

} // namespace
