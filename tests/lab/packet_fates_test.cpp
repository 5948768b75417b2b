/*
 * packet_fates_test.cpp: why packets end where they end, and what else meets
 * the same fate: each reason of the pipeline.
 */
#include "packet_run.h"

#include "packet/fates.h"

#include "chip/pipeline/numbers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace lab_test
{

namespace
{

namespace pipeline = simswitch::chip::pipeline;

class PacketFates : public PacketTest
{
protected:
    /** The end of a packet in a line, and in the next ones what else ends so. */
    std::string end_of(const std::string &words)
    {
        std::string lines = fate(words);
        for (const std::string &other : told().fates) {
            lines += "\n  " + other;
        }
        return lines;
    }
};

TEST_F(PacketFates, OfFramesThatLeave)
{
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.50.1.1"),
              "sent Ethernet16 untagged\n"
              "  every packet to 10.50.0.0/16 from Ethernet0, Ethernet4, Ethernet36, "
              "PortChannel0001 and 5 more (VRF default)");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.60.1.1"),
              "sent Ethernet8 untagged\n"
              "  every packet to 10.60.0.0/16 from Ethernet0, Ethernet4, Ethernet36, "
              "PortChannel0001 and 5 more (VRF default), its flow choosing one of 3 paths");
    EXPECT_EQ(end_of("--in Ethernet40 --ip 10.9.40.9 10.9.44.9"),
              "sent Ethernet44 untagged\n"
              "  every packet to 10.9.44.9 from Ethernet40 and Ethernet44 (VRF Vrf_red)");
    EXPECT_EQ(end_of("--in Ethernet28 --dmac 02:00:00:02:00:19 --ip 10.2.0.9 10.2.0.19"),
              "sent Ethernet32 tagged 200\n"
              "  every frame to 02:00:00:02:00:19 in VLAN 200");
    EXPECT_EQ(end_of("--in Ethernet28 --dmac 02:00:00:02:00:99 --ip 10.2.0.9 10.2.0.99"),
              "sent Ethernet32 tagged 200, a copy to the CPU\n"
              "  every frame to an address that isn't known in VLAN 200");
    EXPECT_EQ(end_of("--in Ethernet28 --arp 10.2.0.9 10.2.0.1"),
              "sent Ethernet32 tagged 200, a copy to the CPU\n"
              "  every broadcast in VLAN 200");
    EXPECT_EQ(end_of("--in Ethernet28 --dmac 01:00:5e:01:01:01 --ip 10.2.0.9 239.1.1.1"),
              "sent Ethernet32 tagged 200\n"
              "  every frame to a group that isn't known in VLAN 200");
}

TEST_F(PacketFates, OfFramesToTheCpu)
{
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.4.1"),
              "to the CPU: its next hop is the CPU; 10.0.4.1 is an address of Ethernet4\n"
              "  every packet to 10.0.4.1 from Ethernet0, Ethernet4, Ethernet36, PortChannel0001 "
              "and 5 more (VRF default)");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.4.99"),
              "to the CPU: its next hop is the CPU; 10.0.4.99 isn't known on Ethernet4: the CPU "
              "asks for it\n"
              "  every packet to an unknown host of 10.0.4.0/24 from Ethernet0, Ethernet4, "
              "Ethernet36, PortChannel0001 and 5 more (VRF default)");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.4.9 --ttl 1"),
              "to the CPU: its TTL ends here\n"
              "  every packet with a TTL of 1 or 0 that is to be routed");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.36.9 --size 1600"),
              "to the CPU: longer than the MTU of the L3 interface; 1586 bytes are more than the "
              "1500 of Ethernet36\n"
              "  every packet longer than 1500 bytes that leaves by Ethernet36, 2 routes: "
              "10.0.36.9/32 and 10.60.0.0/16");
    EXPECT_EQ(end_of("--in Ethernet0 --arp 10.0.0.9 10.0.0.1"),
              "to the CPU: ARP on a routed interface\n"
              "  every ARP request on Ethernet0");
    EXPECT_EQ(end_of("--in Ethernet0 --dmac 01:80:c2:00:00:02 --ip 10.0.0.9 10.0.0.1"),
              "to the CPU: a bridge protocol's frame\n"
              "  every frame to 01:80:c2:00:00:00 to 0f on Ethernet0");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 224.0.0.5"),
              "to the CPU: a link-local packet on a routed interface\n"
              "  every packet on Ethernet0 to 224.0.0.0/24, ff02::/16 or a link-local address of "
              "the switch");
    EXPECT_EQ(end_of("--in Ethernet0 --dmac broadcast --ip 10.0.0.9 255.255.255.255"),
              "to the CPU: an IPv4 broadcast on a routed interface\n"
              "  every IPv4 broadcast on Ethernet0");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 239.1.1.1 --proto 2"),
              "to the CPU: IGMP in a VLAN that snoops\n"
              "  all IGMP in VLAN 4094");
    EXPECT_EQ(
        end_of("--in Ethernet0 --hex 3333ff0000010200000000fe86dd6000000000083aff"
               "20010db800000000000000000000000920010db80000000000000000000000018700000000000000"),
        "to the CPU: neighbour discovery on a routed interface\n"
        "  all neighbour discovery on Ethernet0");
}

TEST_F(PacketFates, OfFramesThatDontGetIn)
{
    EXPECT_EQ(end_of("--in Ethernet0 --hex 0102"),
              "dropped: too short to be a frame\n"
              "  every frame shorter than 14 bytes or cut off in its tags, on any port");
    EXPECT_EQ(end_of("--in Ethernet4 --vlan 11 --ip 10.4.10.9 10.0.0.9"),
              "dropped: no VLAN translation, and the port drops what misses\n"
              "  every frame on Ethernet4 with a tag of another VLAN than 10");
    EXPECT_EQ(end_of("--in Ethernet0 --vlan 11 --ip 10.4.10.9 10.0.0.9"),
              "dropped: no VLAN translation, and the port drops what misses\n"
              "  every tagged frame on Ethernet0: it has no translation at all");
    EXPECT_EQ(end_of("--in Ethernet28 --vlan 300 --ip 10.2.0.9 10.0.0.9"),
              "dropped: its VLAN doesn't exist\n"
              "  every frame of VLAN 300, on any port");
    EXPECT_EQ(end_of("--in Ethernet28 --vlan 100 --ip 10.2.0.9 10.0.0.9"),
              "dropped: the port isn't in its VLAN\n"
              "  every frame of VLAN 100 on Ethernet28; its ports are the CPU and Ethernet20");
    EXPECT_EQ(end_of("--in Ethernet0 --dmac 02:00:00:00:00:77 --ip 10.0.0.9 10.0.4.9"),
              "dropped: not routable: its destination MAC is no station's\n"
              "  every frame to 02:00:00:00:00:77 in VLAN 4094 on Ethernet0");
    EXPECT_EQ(end_of("--in Ethernet0 --mpls 17 --ip 10.0.0.9 10.0.4.9"),
              "dropped: not routable: no IP packet\n"
              "  everything on Ethernet0 but IPv4, IPv6 and what the CPU takes");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 127.0.0.1 10.0.4.9"),
              "dropped: not routable: its addresses aren't for routing\n"
              "  every packet on Ethernet0 from or to loopback, link-local and other addresses "
              "that nobody routes");
    EXPECT_EQ(end_of("--in Ethernet0 --dmac 01:00:5e:01:01:01 --ip 10.0.0.9 239.1.1.1"),
              "dropped: not routable: sent to a group\n"
              "  every multicast and broadcast on Ethernet0 that the CPU doesn't take");
    EXPECT_EQ(end_of("--in Ethernet36 --ip 2001:db8:36::9 2001:db8:4::9"),
              "dropped: not routable: routing of its kind is off\n"
              "  all IPv6 on Ethernet36");
    run("set Vlan200 ipv6 off");
    EXPECT_EQ(end_of("--in Ethernet28 --ip 2001:db8:200::9 2001:db8:4::9"),
              "sent Ethernet32 tagged 200, a copy to the CPU\n"
              "  every frame to an address that isn't known in VLAN 200");
}

TEST_F(PacketFates, OfFramesThatDontGetOut)
{
    EXPECT_EQ(end_of("--in Ethernet40 --ip 10.9.40.9 10.0.4.9"),
              "dropped: no route to its destination\n"
              "  every IPv4 packet that none of the 6 IPv4 routes matches, from Ethernet40 and "
              "Ethernet44 (VRF Vrf_red)");
    EXPECT_EQ(end_of("--in Ethernet40 --ip 2001:db8:36::9 2001:db8:4::9"),
              "dropped: not routable: routing of its kind is off\n"
              "  all IPv6 on Ethernet40");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.80.1.1"),
              "dropped: its route is a black hole\n"
              "  every packet to 10.80.0.0/16 from Ethernet0, Ethernet4, Ethernet36, "
              "PortChannel0001 and 5 more (VRF default)");
    run("set Ethernet0 urpf strict");
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.8.9 10.0.4.9"),
              "dropped: the reverse path of its source doesn't lead here\n"
              "  every packet on Ethernet0 from 10.0.8.9, whose route leads elsewhere");
    run("set Ethernet40 urpf loose");
    EXPECT_EQ(end_of("--in Ethernet40 --ip 10.0.8.9 10.9.44.9"),
              "dropped: the reverse path of its source doesn't lead here\n"
              "  every packet on Ethernet40 from an address without a route");
}

/** What no configuration gives: the tables of the chip written by hand. */
TEST_F(PacketFates, OfFramesThatMeetAPortShutOff)
{
    auto &tables = hardware.chip;
    tables.ports.set_discard(1, pipeline::DISCARD_ALL);
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.4.9"),
              "dropped: the port discards all frames\n"
              "  every frame on Ethernet0");
    tables.ports.set_discard(1, pipeline::DISCARD_UNTAGGED);
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.0.4.9"),
              "dropped: the port discards untagged frames\n"
              "  every untagged frame on Ethernet0");
    tables.ports.set_discard(1, pipeline::DISCARD_TAGGED);
    EXPECT_EQ(end_of("--in Ethernet0 --vlan 7 --ip 10.0.0.9 10.0.4.9"),
              "dropped: the port discards tagged frames\n"
              "  every tagged frame on Ethernet0");
    tables.stgs.set_state(2, 2, 0);
    EXPECT_EQ(end_of("--in Ethernet4 --ip 10.0.4.9 10.0.0.9"),
              "dropped: the port's spanning tree state lets nothing in\n"
              "  every frame on Ethernet4 in the VLANs of its spanning tree group: 10 and 4094");
    EXPECT_EQ(
        end_of("--in Ethernet36 --ip 10.0.36.9 10.0.4.9"),
        "dropped: the spanning tree state of the port that it leaves on lets nothing out\n"
        "  all that goes by egress 100028, 3 routes: 0.0.0.0/0, 10.0.4.9/32 and 10.60.0.0/16");
}

TEST_F(PacketFates, OfFramesThatMeetTheDropRule)
{
    run_all({"drop add Ethernet0", "drop add Ethernet4"});
    EXPECT_EQ(end_of("--in Ethernet0 --dmac 02:00:00:00:00:77 --ip 10.0.0.9 10.0.4.9"),
              "dropped: a field entry drops it\n"
              "  every frame that isn't L3-routable on Ethernet0");
}

TEST_F(PacketFates, OfPacketsWhoseNextHopIsBroken)
{
    auto &tables = hardware.chip;
    // Ethernet4's L3 interface is 4, the neighbour 10.50.0.0/16 goes by is on trunk 1.
    tables.trunks.remove(1);
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.50.1.1"),
              "dropped: the trunk of the next hop doesn't exist or is empty\n"
              "  all that goes by egress 100029, 3 routes: 10.0.8.9/32, 10.50.0.0/16 and "
              "10.60.0.0/16");
    const std::string packet = "--in Ethernet0 --ip 10.0.0.9 10.0.4.9";
    const std::string users =
        "  all that goes by egress 100028, 3 routes: 0.0.0.0/0, 10.0.4.9/32 and 10.60.0.0/16";
    tables.l3_interfaces.remove(4);
    EXPECT_EQ(end_of(packet), "dropped: the L3 interface of the egress object doesn't exist\n"
                              "  every packet that leaves by Ethernet4, 6 routes: 0.0.0.0/0, "
                              "10.0.4.9/32, 10.0.4.77/32 and 3 more");
    tables.l3_interfaces.create(4, {.vlan = 4094, .ttl = 10});
    EXPECT_EQ(end_of(packet + " --ttl 9"),
              "dropped: its TTL is below the L3 interface's lowest\n"
              "  every packet with a TTL below 10 that leaves by Ethernet4, 6 routes: 0.0.0.0/0, "
              "10.0.4.9/32, 10.0.4.77/32 and 3 more");
    tables.l3_interfaces.set(4, {.vlan = 3000});
    EXPECT_EQ(end_of(packet), "dropped: the VLAN that it leaves in doesn't exist\n" + users);
    tables.l3_interfaces.set(4, {.vlan = 100});
    EXPECT_EQ(end_of(packet), "dropped: the port that it leaves on isn't in the VLAN\n" + users);
    // 10.60.1.1 takes the path by the port-channel, whose group goes too.
    tables.multipath_groups.remove(200000);
    EXPECT_EQ(end_of("--in Ethernet0 --ip 10.0.0.9 10.60.1.1"),
              "dropped: the route's multipath group doesn't exist\n"
              "  every packet to 10.60.0.0/16 from Ethernet0, Ethernet4, Ethernet36, "
              "PortChannel0001 and 5 more (VRF default)");
    tables.egresses.remove(100028);
    EXPECT_EQ(end_of(packet), "dropped: the egress object doesn't exist\n"
                              "  all that goes by egress 100028, 2 routes: 0.0.0.0/0 and "
                              "10.0.4.9/32");
}

TEST_F(PacketFates, EachReasonHasASentence)
{
    const auto result = std::make_unique<pipeline::Result>();
    const pipeline::Trace trace;
    const auto made = frame("--in Ethernet0 --ip 10.0.0.9 10.0.4.9");
    pipeline::Frame parsed;
    pipeline::parse(made.bytes, parsed);
    const lab::packet::Names names(session.state());
    for (int reason = 1; reason <= static_cast<int>(pipeline::Reason::nobody); ++reason) {
        const auto what = static_cast<pipeline::Reason>(reason);
        result->reason = what;
        // Even where the trace tells of nothing that was met.
        const auto fates = lab::packet::fates_of(what, {names, parsed, *result, trace, 1, 1});
        ASSERT_EQ(fates.size(), 1U) << pipeline::text(what);
        EXPECT_GT(fates.front().size(), 10U) << pipeline::text(what);
        EXPECT_NE(pipeline::text(what), std::string("no reason"));
    }
}

} // namespace

} // namespace lab_test
