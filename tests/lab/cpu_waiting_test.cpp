/*
 * cpu_waiting_test.cpp: packets to hosts that aren't known: who is asked, how
 * often, and what becomes of what waits.
 */
#include "cpu_switch.h"

namespace lab_test
{

namespace
{

using CpuWaiting = CpuTest;

constexpr std::string_view OTHER = "02:bb:00:00:00:09";

const Lines ASKED = {"2: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff ARP who has 10.0.1.9 tell 10.0.1.1 "
                     "at 02:00:00:00:0a:01"};

TEST_F(CpuWaiting, APacketWaitsUntilItsNeighbourAnswers)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9"})), ASKED);
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9", .payload = udp_payload(1)})), Lines{});
    EXPECT_EQ(give(PORT_B, arp_frame(false, "10.0.1.9", OTHER, "10.0.1.1", {.mac = OTHER})),
              (Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.0.1.9 ttl 63 "
                     "protocol 17 with 8 bytes",
                     "2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.0.1.9 ttl 63 "
                     "protocol 17 with 9 bytes"}));
    EXPECT_EQ(forwarder.next_due(), std::nullopt);
    EXPECT_EQ(neighbors(), Lines{"Ethernet4 10.0.1.9 02:bb:00:00:00:09"});
    EXPECT_EQ(counted(),
              (Lines{"1 neighbours learned", "1 neighbours asked for",
                     "2 packets that waited for a neighbour", "2 waiting packets sent on"}));
}

TEST_F(CpuWaiting, ANeighbourIsSolicitedFromTheLinkLocalAddress)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.from = "2001:db8::9", .to = "2001:db8:1::12:3456"})),
              Lines{"2: 02:00:00:00:0a:01 > 33:33:ff:12:34:56 fe80::ff:fe00:a01 > "
                    "ff02::1:ff12:3456 ttl 255 NS 2001:db8:1::12:3456 from 02:00:00:00:0a:01"});
    EXPECT_EQ(give(PORT_B, na_frame("2001:db8:1::12:3456", "fe80::ff:fe00:a01", OTHER)),
              Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 2001:db8::9 > 2001:db8:1::12:3456 "
                    "ttl 63 protocol 17 with 8 bytes"});
}

TEST_F(CpuWaiting, TheGatewayOfARouteIsAskedFor)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.9.3.4"})), ASKED);
    EXPECT_EQ(give(PORT_B, arp_frame(false, "10.0.1.9", OTHER, "10.0.1.1", {.mac = OTHER})),
              Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.9.3.4 ttl 63 protocol "
                    "17 with 8 bytes"});
}

TEST_F(CpuWaiting, AnSvisHostIsAskedForOnAllPortsAndInItsSecondaries)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.1.0.9"})),
              (Lines{"5: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff ARP who has 10.1.0.9 tell 10.1.0.1 "
                     "at 02:00:00:00:0a:01",
                     "6: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff tag 100 ARP who has 10.1.0.9 tell "
                     "10.1.0.1 at 02:00:00:00:0a:01",
                     "7: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff ARP who has 10.1.0.9 tell 10.1.0.1 "
                     "at 02:00:00:00:0a:01"}));
    EXPECT_EQ(give(SECONDARY, arp_frame(false, "10.1.0.9", OTHER, "10.1.0.1", {.mac = OTHER})),
              Lines{"7: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.1.0.9 ttl 63 protocol "
                    "17 with 8 bytes"});
}

TEST_F(CpuWaiting, ASubinterfacesHostIsAskedForWithItsTag)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.3.9"})),
              Lines{"2: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff tag 10 ARP who has 10.0.3.9 tell "
                    "10.0.3.1 at 02:00:00:00:0a:01"});
    EXPECT_EQ(
        give(PORT_B, arp_frame(false, "10.0.3.9", OTHER, "10.0.3.1", {.mac = OTHER, .tags = {10}})),
        Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 tag 10 10.0.0.9 > 10.0.3.9 ttl 63 "
              "protocol 17 with 8 bytes"});
}

TEST_F(CpuWaiting, EachQuestionTakesAnotherMemberOfAPortChannel)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.4.9"})),
              Lines{"3: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff tag 20 ARP who has 10.0.4.9 tell "
                    "10.0.4.1 at 02:00:00:00:0a:01"});
    EXPECT_EQ(pass(1000),
              Lines{"4: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff tag 20 ARP who has 10.0.4.9 tell "
                    "10.0.4.1 at 02:00:00:00:0a:01"});
}

TEST_F(CpuWaiting, ThreeQuestionsThenTheSendersAreTold)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9"})), ASKED);
    EXPECT_EQ(forwarder.next_due(), std::chrono::milliseconds(6000));
    EXPECT_EQ(pass(999), Lines{});
    EXPECT_EQ(pass(1), ASKED);
    EXPECT_EQ(give(CHANNEL_2, ip_frame({.from = "10.0.2.9", .to = "10.0.1.9"})), Lines{});
    EXPECT_EQ(pass(1000), ASKED);
    EXPECT_EQ(pass(1000),
              (Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 3/1 "
                     "with 28 bytes",
                     "4: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.2.1 > 10.0.2.9 ttl 64 ICMP 3/1 "
                     "with 28 bytes"}));
    EXPECT_EQ(forwarder.next_due(), std::nullopt);
    EXPECT_EQ(counted(), (Lines{"3 neighbours asked for", "2 packets that waited for a neighbour",
                                "2 unreachable sent"}));
    // Another packet begins anew.
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.9"})), ASKED);
}

TEST_F(CpuWaiting, AnIp6SenderIsToldThatTheAddressIsUnreachable)
{
    give(PORT_A, ip_frame({.from = "2001:db8::9", .to = "2001:db8:1::9"}));
    pass(1000);
    pass(1000);
    EXPECT_EQ(pass(1000),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 64 "
                    "ICMP 1/3 with 48 bytes"});
}

TEST_F(CpuWaiting, WhatSomebodyElseMakesKnownIsSentOn)
{
    give(PORT_A, ip_frame({.to = "10.0.1.9"}));
    know("Ethernet4", "10.0.1.9", OTHER);
    EXPECT_EQ(pass(1000),
              Lines{"2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.0.1.9 ttl 63 protocol "
                    "17 with 8 bytes"});
}

TEST_F(CpuWaiting, AWaitingPacketThatIsTooLongIsReportedOnceTheNeighbourIsKnown)
{
    give(PORT_A, ip_frame({.to = "10.0.1.9", .payload = udp_payload(1373)}));
    EXPECT_EQ(give(PORT_B, arp_frame(false, "10.0.1.9", OTHER, "10.0.1.1", {.mac = OTHER})),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 10.0.0.1 > 10.0.0.9 ttl 64 ICMP 3/4 "
                    "0x578 with 548 bytes"});
}

TEST_F(CpuWaiting, EightPacketsWaitForANeighbourAndTheOldestGivesWay)
{
    for (std::size_t i = 0; i < 10; ++i) {
        give(PORT_A, ip_frame({.to = "10.0.1.9", .payload = udp_payload(i)}));
    }
    const Lines lines =
        give(PORT_B, arp_frame(false, "10.0.1.9", OTHER, "10.0.1.1", {.mac = OTHER}));
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines.front(), "2: 02:00:00:00:0a:01 > 02:bb:00:00:00:09 10.0.0.9 > 10.0.1.9 ttl 63 "
                             "protocol 17 with 10 bytes");
    EXPECT_EQ(forwarder.counters().of(lab::cpu::Ignored::queue_full), 2U);
}

TEST_F(CpuWaiting, PacketsWaitForSoManyNeighbours)
{
    for (int i = 0; i < 300; ++i) {
        const std::string host = fmt::format("10.{}.{}", i < 150 ? "0.1" : "1.0", 10 + i % 150);
        give(PORT_A, ip_frame({.to = host}));
    }
    EXPECT_EQ(forwarder.counters().of(lab::cpu::Done::waited), 256U);
    EXPECT_EQ(forwarder.counters().of(lab::cpu::Ignored::waiting_full), 44U);
}

TEST_F(CpuWaiting, NobodyIsAskedForTheEndsOfANetwork)
{
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.255"})), Lines{});
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.1.0"})), Lines{});
    EXPECT_EQ(counted(), Lines{"2 ignored: sent to a group"});
}

TEST_F(CpuWaiting, NobodyIsAskedOnAPortThatIsBlocked)
{
    const auto *vlan = hardware.chip.vlans.find(100);
    ASSERT_NE(vlan, nullptr);
    hardware.chip.stgs.set_state(vlan->stg, VLAN_TAGGED, simswitch::chip::STP_DISABLED);
    simswitch::chip::VlanBlocks blocks = vlan->blocks;
    blocks.broadcast.add(VLAN_UNTAGGED);
    hardware.chip.vlans.set_blocks(100, blocks);
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.1.0.9"})),
              Lines{"7: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff ARP who has 10.1.0.9 tell 10.1.0.1 "
                    "at 02:00:00:00:0a:01"});
}

} // namespace

} // namespace lab_test
