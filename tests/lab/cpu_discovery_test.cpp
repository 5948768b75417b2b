/*
 * cpu_discovery_test.cpp: ARP and neighbour discovery: what is answered, how,
 * and what is learned.
 */
#include "cpu_switch.h"

namespace lab_test
{

namespace
{

using CpuDiscovery = CpuTest;

TEST_F(CpuDiscovery, AnArpRequestForARoutedPortIsAnsweredAndItsSenderLearned)
{
    EXPECT_EQ(give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 ARP 10.0.0.1 is at "
                    "02:00:00:00:0a:01, to 10.0.0.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(neighbors(), Lines{"Ethernet0 10.0.0.9 02:aa:00:00:00:09"});
    EXPECT_EQ(counted(), (Lines{"1 ARP requests answered", "1 neighbours learned"}));
    // Once more: nothing new.
    give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1"));
    EXPECT_EQ(counted(), (Lines{"2 ARP requests answered", "1 neighbours learned"}));
}

TEST_F(CpuDiscovery, AnArpReplyIsAsLongAsTheShortestFrame)
{
    give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1"));
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent.front().second.size(), 60U);
}

TEST_F(CpuDiscovery, TheReplyHasTheTagOfTheRequest)
{
    EXPECT_EQ(
        give(PORT_B, arp_frame(true, "10.0.3.9", HOST, "10.0.3.1", {.to = ALL, .tags = {10}})),
        Lines{"2: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 tag 10 ARP 10.0.3.1 is at "
              "02:00:00:00:0a:01, to 10.0.3.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(give(CHANNEL_2, arp_frame(true, "10.0.4.9", HOST, "10.0.4.1",
                                        {.to = ALL, .tags = {20 | 5 << 13}})),
              Lines{"4: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 tag 20 priority 5 ARP 10.0.4.1 is "
                    "at 02:00:00:00:0a:01, to 10.0.4.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(neighbors(), (Lines{"Ethernet4.10 10.0.3.9 02:aa:00:00:00:09",
                                  "PortChannel1.20 10.0.4.9 02:aa:00:00:00:09"}));
}

TEST_F(CpuDiscovery, ATagThatOnlyHasAPriorityGetsAReplyWithoutOne)
{
    EXPECT_EQ(
        give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1", {.to = ALL, .tags = {3 << 13}})),
        Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 ARP 10.0.0.1 is at "
              "02:00:00:00:0a:01, to 10.0.0.9 at 02:aa:00:00:00:09"});
}

TEST_F(CpuDiscovery, ARequestInAVlanIsAnsweredOnItsPortAndFlooded)
{
    EXPECT_EQ(give(VLAN_TAGGED,
                   arp_frame(true, "10.1.0.9", HOST, "10.1.0.1", {.to = ALL, .tags = {100}})),
              (Lines{"5: 02:aa:00:00:00:09 > ff:ff:ff:ff:ff:ff ARP who has 10.1.0.1 tell 10.1.0.9 "
                     "at 02:aa:00:00:00:09",
                     "6: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 tag 100 ARP 10.1.0.1 is at "
                     "02:00:00:00:0a:01, to 10.1.0.9 at 02:aa:00:00:00:09"}));
    EXPECT_EQ(neighbors(), Lines{"Vlan100 10.1.0.9 02:aa:00:00:00:09 behind Ethernet20"});
}

TEST_F(CpuDiscovery, AVirtualAddressIsAnsweredWithItsVirtualMac)
{
    const Lines lines = give(VLAN_UNTAGGED, arp_frame(true, "10.1.0.9", HOST, "10.1.0.254"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1], "5: 00:00:5e:00:01:08 > 02:aa:00:00:00:09 ARP 10.1.0.254 is at "
                        "00:00:5e:00:01:08, to 10.1.0.9 at 02:aa:00:00:00:09");
}

TEST_F(CpuDiscovery, AHostInASecondaryVlanIsAnsweredAndLearnedThere)
{
    EXPECT_EQ(give(SECONDARY, arp_frame(true, "10.1.0.9", HOST, "10.1.0.254")),
              Lines{"7: 00:00:5e:00:01:08 > 02:aa:00:00:00:09 ARP 10.1.0.254 is at "
                    "00:00:5e:00:01:08, to 10.1.0.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(neighbors(), Lines{"Vlan100 10.1.0.9 02:aa:00:00:00:09 behind Ethernet24 in 101"});
}

TEST_F(CpuDiscovery, AHostThatMovesIsLearnedAnew)
{
    give(VLAN_UNTAGGED, arp_frame(true, "10.1.0.9", HOST, "10.1.0.9"));
    EXPECT_EQ(neighbors(), Lines{"Vlan100 10.1.0.9 02:aa:00:00:00:09 behind Ethernet16"});
    give(VLAN_TAGGED, arp_frame(true, "10.1.0.9", HOST, "10.1.0.9", {.to = ALL, .tags = {100}}));
    EXPECT_EQ(neighbors(), Lines{"Vlan100 10.1.0.9 02:aa:00:00:00:09 behind Ethernet20"});
    give(VLAN_TAGGED, arp_frame(true, "10.1.0.9", "02:aa:00:00:00:0a", "10.1.0.9",
                                {.mac = "02:aa:00:00:00:0a", .to = ALL, .tags = {100}}));
    EXPECT_EQ(neighbors(), Lines{"Vlan100 10.1.0.9 02:aa:00:00:00:0a behind Ethernet20"});
}

TEST_F(CpuDiscovery, AnAddressOfAnotherInterfaceOrVrfIsNotAnswered)
{
    EXPECT_EQ(give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.1.1")), Lines{});
    EXPECT_EQ(give(RED, arp_frame(true, "10.0.1.9", HOST, "10.0.1.1")), Lines{});
    EXPECT_EQ(give(RED, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1")),
              Lines{"8: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 ARP 10.0.0.1 is at "
                    "02:00:00:00:0a:01, to 10.0.0.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(neighbors(), (Lines{"Ethernet0 10.0.0.9 02:aa:00:00:00:09",
                                  "Ethernet28 10.0.0.9 02:aa:00:00:00:09"}));
}

TEST_F(CpuDiscovery, AProbeIsAnsweredAndNothingLearnedOfIt)
{
    EXPECT_EQ(give(PORT_A, arp_frame(true, "0.0.0.0", HOST, "10.0.0.1")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 ARP 10.0.0.1 is at "
                    "02:00:00:00:0a:01, to 0.0.0.0 at 02:aa:00:00:00:09"});
    EXPECT_EQ(neighbors(), Lines{});
}

TEST_F(CpuDiscovery, WhatNobodyMayClaimIsNotLearned)
{
    const auto claim = [this](std::string_view address, std::string_view mac) {
        EXPECT_EQ(give(PORT_A, arp_frame(true, address, mac, "10.0.0.77")), Lines{}) << address;
    };
    claim("10.0.0.1", HOST);                // the switch's
    claim("10.0.0.255", HOST);              // the network's
    claim("10.0.0.0", HOST);                //
    claim("10.0.1.9", HOST);                // another interface's network
    claim("10.0.0.9", "03:aa:00:00:00:09"); // a group
    claim("10.0.0.9", "00:00:00:00:00:00"); // nobody
    claim("10.0.0.9", ROUTER);              // the switch itself
    claim("10.0.0.9", "00:00:5e:00:01:08"); // its virtual MAC
    claim("224.0.0.9", HOST);
    EXPECT_EQ(neighbors(), Lines{});
    EXPECT_EQ(counted(), (Lines{"3 ignored: not from a single host",
                                "3 ignored: from an address or MAC of the switch",
                                "3 ignored: neighbour not of the interface's network"}));
}

TEST_F(CpuDiscovery, WhatAConfigurationSaysIsNotLearnedOtherwise)
{
    know("Ethernet0", "10.0.0.9", "02:aa:00:00:00:77");
    give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1"));
    EXPECT_EQ(neighbors(), Lines{"Ethernet0 10.0.0.9 02:aa:00:00:00:77"});
    EXPECT_EQ(counted(), (Lines{"1 ARP requests answered", "1 ignored: neighbour is static"}));
}

TEST_F(CpuDiscovery, ASolicitationIsAnsweredAndItsSenderLearned)
{
    EXPECT_EQ(give(PORT_A, ns_frame("2001:db8::9", "2001:db8::1")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 255 "
                    "NA 2001:db8::1 is at 02:00:00:00:0a:01 R S O"});
    EXPECT_EQ(neighbors(), Lines{"Ethernet0 2001:db8::9 02:aa:00:00:00:09"});
}

TEST_F(CpuDiscovery, TheLinkLocalAddressOfAnInterfaceIsAnswered)
{
    EXPECT_EQ(give(PORT_A, ns_frame("fe80::9", "fe80::ff:fe00:a01")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 fe80::ff:fe00:a01 > fe80::9 ttl 255 "
                    "NA fe80::ff:fe00:a01 is at 02:00:00:00:0a:01 R S O"});
    // It has no IPv6.
    EXPECT_EQ(give(CHANNEL_1, ns_frame("fe80::9", "fe80::ff:fe00:a01")), Lines{});
    EXPECT_EQ(neighbors(), Lines{});
}

TEST_F(CpuDiscovery, AProbeForAnOwnAddressIsAnsweredToAll)
{
    EXPECT_EQ(give(PORT_A, ns_frame("::", "2001:db8::1", "")),
              Lines{"1: 02:00:00:00:0a:01 > 33:33:00:00:00:01 2001:db8::1 > ff02::1 ttl 255 NA "
                    "2001:db8::1 is at 02:00:00:00:0a:01 R O"});
    EXPECT_EQ(give(PORT_A, ns_frame("::", "2001:db8::1", HOST)), Lines{});
    EXPECT_EQ(counted(), (Lines{"1 neighbour solicitations answered", "1 ignored: malformed"}));
}

TEST_F(CpuDiscovery, AnAdvertisementIsLearned)
{
    EXPECT_EQ(give(PORT_B, na_frame("2001:db8:1::9", "2001:db8:1::1")), Lines{});
    EXPECT_EQ(neighbors(), Lines{"Ethernet4 2001:db8:1::9 02:aa:00:00:00:09"});
}

TEST_F(CpuDiscovery, DiscoveryFromBehindARouterOrDamagedIsIgnored)
{
    Bytes far = ns_frame("2001:db8::9", "2001:db8::1");
    far[14 + 7] = 254;
    EXPECT_EQ(give(PORT_A, far), Lines{});
    Bytes damaged = ns_frame("2001:db8::9", "2001:db8::1");
    damaged.back() ^= 1U;
    EXPECT_EQ(give(PORT_A, damaged), Lines{});
    EXPECT_EQ(neighbors(), Lines{});
    EXPECT_EQ(counted(), (Lines{"1 ignored: wrong checksum",
                                "1 ignored: hop limit of neighbour discovery isn't 255"}));
}

TEST_F(CpuDiscovery, ARouterSolicitationGetsNoAdvertisement)
{
    EXPECT_EQ(give(PORT_A, icmp6_frame("fe80::9", "ff02::2", {133, 0, 0, 0, 0, 0, 0, 0},
                                       {.to = "33:33:00:00:00:02"})),
              Lines{});
    EXPECT_EQ(counted(), Lines{"1 ignored: of a protocol that nobody listens to"});
}

using CpuDiscoveryOnTrident2 = CpuOnTrident2Test;

TEST_F(CpuDiscoveryOnTrident2, BothFamiliesAreAnsweredAndHostsAskedFor)
{
    EXPECT_EQ(give(PORT_A, arp_frame(true, "10.0.0.9", HOST, "10.0.0.1")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 ARP 10.0.0.1 is at "
                    "02:00:00:00:0a:01, to 10.0.0.9 at 02:aa:00:00:00:09"});
    EXPECT_EQ(give(PORT_A, ns_frame("2001:db8::9", "2001:db8::1")),
              Lines{"1: 02:00:00:00:0a:01 > 02:aa:00:00:00:09 2001:db8::1 > 2001:db8::9 ttl 255 "
                    "NA 2001:db8::1 is at 02:00:00:00:0a:01 R S O"});
    EXPECT_EQ(give(SECONDARY, echo_frame({.from = "10.1.0.9", .to = "10.1.0.254"},
                                         {.to = "00:00:5e:00:01:08"})),
              Lines{"7: 00:00:5e:00:01:08 > 02:aa:00:00:00:09 10.1.0.254 > 10.1.0.9 ttl 64 "
                    "ICMP 0/0 0x12340007 with 10 bytes"});
    EXPECT_EQ(give(PORT_A, ip_frame({.to = "10.0.3.9"})),
              Lines{"2: 02:00:00:00:0a:01 > ff:ff:ff:ff:ff:ff tag 10 ARP who has 10.0.3.9 tell "
                    "10.0.3.1 at 02:00:00:00:0a:01"});
}

} // namespace

} // namespace lab_test
