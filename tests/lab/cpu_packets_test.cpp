/*
 * cpu_packets_test.cpp: packets to the switch, and reports to the senders of
 * packets that go nowhere.
 */
#include "cpu_switch.h"

#include <algorithm>

namespace lab_test
{

namespace
{

using CpuPackets = CpuTest;

TEST_F(CpuPackets, AnEchoRequestIsAnsweredWithItsOwnData)
{
    EXPECT_EQ(give(PORT_A, echo_frame({})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 0/0 "
                    "0x12340007 with 10 bytes"});
    ASSERT_EQ(sent.size(), 1U);
    const Bytes expected = {0,   0,   0,   0,   0x12, 0x34, 0,   7,   'a',
                            'b', 'c', 'd', 'e', 'f',  'g',  'h', 'i', 'j'};
    Bytes reply(sent[0].second.begin() + 34, sent[0].second.begin() + 52);
    std::fill_n(reply.begin() + 2, 2, 0);
    EXPECT_EQ(reply, expected);
}

TEST_F(CpuPackets, AnEchoRequestOfIp6IsAnswered)
{
    EXPECT_EQ(
        give(PORT_A, echo_frame({.from = "2001:db8::9", .to = "2001:db8::1"})),
        Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 ICMP "
              "129/0 0x12340007 with 10 bytes"});
    EXPECT_EQ(give(PORT_A, echo_frame({.from = "fe80::9", .to = "fe80::ff:fe00:a01"})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 fe80::ff:fe00:a01 > fe80::9 ttl 64 "
                    "ICMP 129/0 0x12340007 with 10 bytes"});
}

TEST_F(CpuPackets, TheReplyLeavesWhereTheRequestCameFrom)
{
    EXPECT_EQ(give(PORT_B, echo_frame({.from = "10.0.3.9", .to = "10.0.3.1"}, {.tags = {10}})),
              Lines{"2: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 tag 10 10.0.3.1 > 10.0.3.9 ttl 64 "
                    "ICMP 0/0 0x12340007 with 10 bytes"});
    EXPECT_EQ(give(CHANNEL_2, echo_frame({.from = "10.0.2.9", .to = "10.0.2.1"})),
              Lines{"4: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.2.1 > 10.0.2.9 ttl 64 "
                    "ICMP 0/0 0x12340007 with 10 bytes"});
    EXPECT_EQ(give(VLAN_TAGGED,
                   echo_frame({.from = "10.1.0.9", .to = "10.1.0.1"}, {.tags = {100 | 3 << 13}})),
              Lines{"6: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 tag 100 priority 3 10.1.0.1 > "
                    "10.1.0.9 ttl 64 ICMP 0/0 0x12340007 with 10 bytes"});
    EXPECT_EQ(give(SECONDARY, echo_frame({.from = "10.1.0.9", .to = "10.1.0.254"},
                                         {.to = "00:00:5e:00:01:08"})),
              Lines{"7: 00:00:5e:00:01:08 > 02:aa:00:00:00:09 10.1.0.254 > 10.1.0.9 ttl 64 "
                    "ICMP 0/0 0x12340007 with 10 bytes"});
}

TEST_F(CpuPackets, AnAddressOfAnotherInterfaceOfTheVrfIsReached)
{
    EXPECT_EQ(give(PORT_A, echo_frame({.to = "10.0.1.1", .ttl = 1})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.1.1 > 10.0.0.9 ttl 64 ICMP 0/0 "
                    "0x12340007 with 10 bytes"});
    EXPECT_EQ(give(RED, echo_frame({.to = "10.0.1.1"})), Lines{});
}

TEST_F(CpuPackets, NobodyListensToUdp)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.payload = udp_payload(4)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 3/3 "
                    "with 32 bytes"});
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "2001:db8::9", .to = "2001:db8::1"})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 "
                    "ICMP 1/4 with 48 bytes"});
    EXPECT_EQ(give(PORT_A, ip_frame({.protocol = 6, .payload = Bytes(20)})), Lines{});
    EXPECT_EQ(counted(),
              (Lines{"2 unreachable sent", "1 ignored: of a protocol that nobody listens to"}));
}

TEST_F(CpuPackets, TheEndOfATtlIsReportedWithThePacketsHead)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9", .ttl = 1, .payload = udp_payload(4)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 11/0 "
                    "with 32 bytes"});
    ASSERT_EQ(sent.size(), 1U);
    const Bytes asked = ip_frame({.to = "10.0.1.9", .ttl = 1, .payload = udp_payload(4)});
    EXPECT_EQ(Bytes(sent[0].second.begin() + 42, sent[0].second.end()),
              Bytes(asked.begin() + 14, asked.begin() + 46));
    // A neighbour that isn't known makes no difference.
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.10", .ttl = 1})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 11/0 "
                    "with 28 bytes"});
    EXPECT_EQ(counted(), Lines{"2 time exceeded sent"});
}

TEST_F(CpuPackets, TheEndOfAHopLimitIsReported)
{
    know("Ethernet4", "2001:db8:1::9", "02:bb:00:00:00:09");
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "2001:db8::9", .to = "2001:db8:1::9", .ttl = 1})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 "
                    "ICMP 3/0 with 48 bytes"});
}

TEST_F(CpuPackets, AReportIsAsLongAsItMayBe)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    know("Ethernet4", "2001:db8:1::9", "02:bb:00:00:00:09");
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9", .ttl = 1, .payload = udp_payload(1300)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 11/0 "
                    "with 548 bytes"});
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "2001:db8::9",
                                     .to = "2001:db8:1::9",
                                     .ttl = 1,
                                     .payload = udp_payload(1300)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 "
                    "ICMP 3/0 with 1232 bytes"});
}

TEST_F(CpuPackets, APacketThatIsTooLongIsReportedWithTheMtu)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    know("Ethernet4", "2001:db8:1::9", "02:bb:00:00:00:09");
    // 1400 bytes.
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9", .payload = udp_payload(1373)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 3/4 "
                    "0x578 with 548 bytes"});
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "2001:db8::9",
                                     .to = "2001:db8:1::9",
                                     .payload = udp_payload(1353)})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 "
                    "ICMP 2/0 0x578 with 1232 bytes"});
    EXPECT_EQ(
        give(PORT_A,
             ip_frame({.to = "10.0.1.9", .payload = udp_payload(1373), .dont_fragment = false})),
        Lines{});
    EXPECT_EQ(counted(), (Lines{"2 packet too big sent",
                                "1 ignored: longer than the MTU, and nothing is fragmented here"}));
}

TEST_F(CpuPackets, NoErrorIsReportedAboutAnErrorOrAFragmentsTail)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    know("Ethernet4", "2001:db8:1::9", "02:bb:00:00:00:09");
    const Packet dying4 = {.to = "10.0.1.9", .ttl = 1};
    const Packet dying6 = {.from = "2001:db8::9", .to = "2001:db8:1::9", .ttl = 1};
    for (const std::uint8_t type : Bytes{3, 4, 5, 11, 12}) {
        Packet packet = dying4;
        packet.protocol = 1;
        packet.payload = {type, 0, 0, 0, 0, 0, 0, 0};
        EXPECT_EQ(give(PORT_A, ip_frame(packet)), Lines{}) << int{type};
    }
    for (const std::uint8_t type : Bytes{1, 2, 3, 4, 127}) {
        Packet packet = dying6;
        packet.protocol = 58;
        packet.payload = {type, 0, 0, 0, 0, 0, 0, 0};
        EXPECT_EQ(give(PORT_A, ip_frame(packet)), Lines{}) << int{type};
        // The same behind hop-by-hop and destination options.
        packet.protocol = 0;
        packet.payload = {60, 0, 1, 4, 0, 0, 0, 0, 58, 0, 1, 4, 0, 0, 0, 0, type, 0, 0, 0, 0, 0};
        EXPECT_EQ(give(PORT_A, ip_frame(packet)), Lines{}) << int{type};
    }
    Packet tail = dying4;
    tail.fragment = 1;
    EXPECT_EQ(give(PORT_A, ip_frame(tail)), Lines{});
    tail = dying6;
    tail.protocol = 44;
    tail.payload = {17, 0, 0, 8, 0, 0, 0, 1, 1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(give(PORT_A, ip_frame(tail)), Lines{});
    EXPECT_EQ(counted(), Lines{"17 ignored: error about an error, a group or a fragment's tail"});
    // An echo request isn't an error, nor is a first fragment a tail.
    EXPECT_EQ(give(PORT_A, echo_frame(dying4)).size(), 1U);
    Packet first = dying4;
    first.fragment = 0x2000;
    first.dont_fragment = false;
    EXPECT_EQ(give(PORT_A, ip_frame(first)).size(), 1U);
}

TEST_F(CpuPackets, WhatIsNotOneHostGetsNoAnswer)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    // The chip doesn't route those from 127.0.0.1 or 224.0.0.9.
    for (const std::string_view source : {"0.0.0.0", "10.0.0.255", "10.0.0.0", "10.0.0.1"}) {
        EXPECT_EQ(give(PORT_A, echo_frame({.from = source})), Lines{}) << source;
        EXPECT_EQ(give(PORT_A, ip_frame({.from = source, .to = "10.0.1.9", .ttl = 1})), Lines{})
            << source;
    }
    EXPECT_EQ(give(PORT_A, echo_frame({}, {.mac = "03:aa:00:00:00:09"})), Lines{});
    EXPECT_EQ(counted(), Lines{"9 ignored: not from a single host"});
}

TEST_F(CpuPackets, AFragmentOrADamagedEchoRequestIsNotAnswered)
{
    EXPECT_EQ(give(PORT_A, echo_frame({.dont_fragment = false, .fragment = 0x2000})), Lines{});
    EXPECT_EQ(give(PORT_A, echo_frame({.dont_fragment = false, .fragment = 3})), Lines{});
    Bytes damaged = echo_frame({});
    damaged[50] ^= 1U;
    EXPECT_EQ(give(PORT_A, damaged), Lines{});
    EXPECT_EQ(counted(), (Lines{"1 ignored: wrong checksum", "2 ignored: fragment"}));
}

TEST_F(CpuPackets, AHundredErrorsASecondAreSent)
{
    const Bytes udp = ip_frame({});
    std::size_t reports = 0;
    for (int i = 0; i < 150; ++i) {
        reports += give(PORT_A, udp).size();
    }
    EXPECT_EQ(reports, 100U);
    now += std::chrono::milliseconds(50);
    for (int i = 0; i < 10; ++i) {
        reports += give(PORT_A, udp).size();
    }
    EXPECT_EQ(reports, 105U);
    EXPECT_EQ(counted(),
              (Lines{"105 unreachable sent", "55 ignored: too many errors in a second"}));
    // Echo replies are no errors.
    EXPECT_EQ(give(PORT_A, echo_frame({})).size(), 1U);
}

TEST_F(CpuPackets, WhatIsNotForTheCpuIsCounted)
{
    EXPECT_EQ(
        give(PORT_A, ip_frame({.to = "224.0.0.5", .protocol = 89}, {.to = "01:00:5e:00:00:05"})),
        Lines{});
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "255.255.255.255"}, {.to = ALL})), Lines{});
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "fe80::9", .to = "fe80::77"})), Lines{});
    EXPECT_EQ(counted(), (Lines{"2 ignored: sent to a group",
                                "1 ignored: for an address that isn't of the interface"}));
}

TEST_F(CpuPackets, WhatTheChipForwardsLeavesAsItDecides)
{
    know("Ethernet4", "10.0.1.9", "02:bb:00:00:00:09");
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9"})),
              Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.0.1.9 ttl 63 protocol "
                    "17 with 8 bytes"});
    EXPECT_EQ(counted(), Lines{});
    const auto &result = forwarder.take(PORT_A, ip_frame({.to = "10.77.0.1"}), now);
    EXPECT_EQ(result.verdict, simswitch::chip::pipeline::Verdict::dropped);
    EXPECT_EQ(result.reason, simswitch::chip::pipeline::Reason::no_route);
}

} // namespace

} // namespace lab_test
