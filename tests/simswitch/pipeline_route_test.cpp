/*
 * pipeline_route_test.cpp: which frames are routed, where they go and what they
 * look like when they leave.
 */
#include "chip/pipeline/flow_hash.h"
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

/** Two routed ports, 5 with interface 7 and 6 with 8; 10.9.0.0/16 is behind port 6. */
struct PipelineRouting : PipelineTest {
    explicit PipelineRouting(Kind kind = Kind::trident) : PipelineTest(kind)
    {
        station = router_mac();
        routed_port(5, 7);
        routed_port(6, 8);
        egress = next_hop(8, 6);
        route("10.9.0.0/16", egress);
    }
    int station = 0;
    int egress = 0;
};

struct PipelineRouting2 : PipelineRouting {
    PipelineRouting2() : PipelineRouting(Kind::trident2) {}
};

const std::string SENT_6 = "SENT port 6 untagged: routed";

} // namespace

TEST_F(PipelineRouting, ARoutedPacketGetsMacsTtlAndChecksum)
{
    EXPECT_EQ(send(5, ip_frame({.ttl = 64})), SENT_6);
    EXPECT_EQ(got(6), ip_frame({.to = OTHER_MAC, .from = ROUTER_MAC, .ttl = 63}));
}

TEST_F(PipelineRouting, ARoutedIp6PacketGetsMacsAndHopLimit)
{
    route("2001:db8:9::/48", egress);
    const Make make = {.source = "2001:db8:1::2", .destination = "2001:db8:9::1", .ttl = 64};
    Make out = make;
    out.to = OTHER_MAC;
    out.from = ROUTER_MAC;
    out.ttl = 63;
    EXPECT_EQ(send(5, ip_frame(make)), SENT_6);
    EXPECT_EQ(got(6), ip_frame(out));
}

TEST_F(PipelineRouting, OnlyFramesToAStationAreRouted)
{
    chip.stations.remove(station);
    int id = 0;
    chip.stations.create({.flags = 0x3c,
                          .mac = ROUTER_MAC,
                          .mac_mask = BROADCAST,
                          .vlan = ROUTED_VLAN,
                          .vlan_mask = 0xfff,
                          .src_port = 6,
                          .src_port_mask = 127},
                         id);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: not routable: its destination MAC is no station's");
    EXPECT_THAT(trace.nearest(), testing::StartsWith("station 1 (flags 0x3c"));
    EXPECT_THAT(trace.nearest(), testing::EndsWith("another port"));
    chip.ports.set_control(6, PORT_CONTROL_INGRESS, 7);
    EXPECT_EQ(send(6, ip_frame()), SENT_6);
}

TEST_F(PipelineRouting, AStationTakesItsClassesOnly)
{
    route("2001:db8:9::/48", egress);
    const Bytes four = ip_frame();
    const Bytes six = ip_frame({.source = "2001:db8:1::2", .destination = "2001:db8:9::1"});
    Station record = *chip.stations.find(station);
    record.flags = 0x18;
    chip.stations.set(station, record);
    EXPECT_EQ(send(5, four), "DROPPED: not routable: the station doesn't take its kind");
    EXPECT_EQ(send(5, six), SENT_6);
    record.flags = 0x14;
    chip.stations.set(station, record);
    EXPECT_EQ(send(5, four), SENT_6);
    EXPECT_EQ(send(5, six), "DROPPED: not routable: the station doesn't take its kind");
}

TEST_F(PipelineRouting, PortControlsSwitchTheFamiliesOfARoutedPort)
{
    route("2001:db8:9::/48", egress);
    const Bytes six = ip_frame({.source = "2001:db8:1::2", .destination = "2001:db8:9::1"});
    chip.ports.set_control(5, PORT_CONTROL_IP4, 0);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: not routable: routing of its kind is off");
    EXPECT_EQ(line(Stage::family), "MISS port 5 IPv4 is off by port control 8");
    EXPECT_EQ(send(5, six), SENT_6);
    chip.ports.set_control(5, PORT_CONTROL_IP4, 1);
    chip.ports.set_control(5, PORT_CONTROL_IP6, 0);
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
    EXPECT_EQ(send(5, six), "DROPPED: not routable: routing of its kind is off");
    EXPECT_EQ(line(Stage::family), "MISS port 5 IPv6 is off by port control 9");
}

TEST_F(PipelineRouting, VlanFlagsSwitchTheFamiliesOfAnSvi)
{
    svi(100, 9, {0, 10, 11});
    const Bytes frame = ip_frame({.tags = {100}});
    EXPECT_EQ(send(10, frame), SENT_6);
    VlanControls controls = chip.vlans.find(100)->controls;
    controls.flags = 0x10;
    chip.vlans.set_controls(100, controls);
    EXPECT_EQ(send(10, frame), SENT_6);
    controls.flags = 0x8;
    chip.vlans.set_controls(100, controls);
    EXPECT_THAT(send(10, frame), testing::StartsWith("SENT port 11 tagged 100: flooded"));
    EXPECT_EQ(line(Stage::family), "MISS vlan 100 IPv4 is off by flag 0x8 of the VLAN's controls");
}

TEST_F(PipelineRouting, TheCpusPortIsSwitchedByItsControlsInEveryVlan)
{
    svi(100, 9, {0, 10});
    const Bytes frame = ip_frame({.tags = {100}});
    EXPECT_EQ(send(0, frame), "SENT port 10 tagged 100: flooded in its VLAN");
    EXPECT_EQ(line(Stage::family), "MISS port 0 IPv4 is off by port control 8");
    chip.ports.set_control(CPU_PORT, PORT_CONTROL_IP4, 1);
    EXPECT_EQ(send(0, frame), SENT_6);
}

TEST_F(PipelineRouting, ADisabledInterfaceOfATridentRoutesNothing)
{
    route("2001:db8:9::/48", egress);
    const Bytes six = ip_frame({.source = "2001:db8:1::2", .destination = "2001:db8:9::1"});
    chip.l3_ingresses.set(7, {.flags = 0x5e2, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: not routable: routing of its kind is off");
    EXPECT_EQ(line(Stage::family), "MISS l3_ingress 7 IPv4 is off by flag 0x20");
    EXPECT_EQ(send(5, six), "DROPPED: not routable: routing of its kind is off");
    EXPECT_EQ(line(Stage::family), "MISS l3_ingress 7 IPv6 is off by flag 0x80");
    chip.l3_ingresses.set(7, {.flags = 0x6, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
    EXPECT_EQ(send(5, six), SENT_6);
}

TEST_F(PipelineRouting2, IngressFlagsSwitchTheFamiliesOfATrident2)
{
    route("2001:db8:9::/48", egress);
    const Bytes six = ip_frame({.source = "2001:db8:1::2", .destination = "2001:db8:9::1"});
    chip.l3_ingresses.set(7, {.flags = 0x426, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: not routable: routing of its kind is off");
    EXPECT_EQ(line(Stage::family), "MISS l3_ingress 7 IPv4 is off by flag 0x20");
    EXPECT_EQ(send(5, six), SENT_6);
    chip.l3_ingresses.set(7, {.flags = 0x486, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
    EXPECT_EQ(send(5, six), "DROPPED: not routable: routing of its kind is off");
    chip.l3_ingresses.set(7, {.flags = 0x5e2, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: not routable: routing of its kind is off");
    chip.l3_ingresses.set(7, {.flags = 0x406, .vrf = 1});
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
}

TEST_F(PipelineRouting, WhatHasABadHeaderOrAddressIsNotRouted)
{
    Bytes bad = ip_frame();
    ++bad[22];
    EXPECT_EQ(send(5, bad), "DROPPED: not routable: its IP header is bad");
    EXPECT_EQ(send(5, ip_frame({.destination = "127.0.0.1"})),
              "DROPPED: not routable: its addresses aren't for routing");
}

TEST_F(PipelineRouting, TheLongestPrefixInTheVrfOfTheInterface)
{
    routed_port(9, 10);
    route("10.9.1.0/24", next_hop(10, 9));
    EXPECT_EQ(send(5, ip_frame({.destination = "10.9.1.7"})), "SENT port 9 untagged: routed");
    EXPECT_EQ(send(5, ip_frame({.destination = "10.9.2.7"})), SENT_6);
    EXPECT_EQ(send(5, ip_frame({.destination = "10.8.0.1"})),
              "DROPPED: no route to its destination");
    EXPECT_EQ(trace.nearest(), "route vrf 1 10.9.0.0/16 (egress 100000 flags 0x0)");
    route("0.0.0.0/0", egress);
    EXPECT_EQ(send(5, ip_frame({.destination = "10.8.0.1"})), SENT_6);

    chip.l3_ingresses.set(7, {.vrf = 2});
    EXPECT_EQ(send(5, ip_frame({.destination = "10.9.1.7"})),
              "DROPPED: no route to its destination");
    EXPECT_EQ(trace.nearest(), "route vrf 1 10.9.1.0/24 (egress 100001 flags 0x0), in "
                               "another VRF");
}

TEST_F(PipelineRouting, LooseReversePathWantsARouteToTheSource)
{
    chip.l3_ingresses.set(7, {.vrf = 1, .urpf_mode = 1});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the reverse path of its source doesn't lead here");
    EXPECT_EQ(line(Stage::reverse_path), "MISS route vrf 1 10.0.0.2 loose: no route to the source");
    route("10.0.0.0/24", egress);
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
}

TEST_F(PipelineRouting, StrictReversePathWantsItOutOfTheSameInterface)
{
    chip.l3_ingresses.set(7, {.vrf = 1, .urpf_mode = 2});
    route("10.0.0.0/24", egress);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the reverse path of its source doesn't lead here");
    EXPECT_THAT(line(Stage::reverse_path), testing::EndsWith("doesn't leave by interface 7"));
    int group = 0;
    chip.multipath_groups.create({{egress, next_hop(7, 5)}}, group);
    chip.routes.set(ip4_key(1, 0x0a000000, 0xffffff00), {.next_hop = group, .multipath = true});
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
}

TEST_F(PipelineRouting, MultipathSpreadsFlowsAsTheHashSays)
{
    routed_port(9, 10);
    int group = 0;
    chip.multipath_groups.create({{egress, next_hop(10, 9)}}, group);
    route("10.20.0.0/16", group);
    int to_9 = 0;
    for (int flow = 0; flow < 100; ++flow) {
        const Bytes bytes = ip_frame({.destination = "10.20.0.1", .source_port = flow});
        send(5, bytes);
        Frame frame;
        parse(bytes, frame);
        EXPECT_TRUE(result.left_on(path_of(flow_hash(frame), 2) == 1 ? 9 : 6));
        to_9 += result.left_on(9) ? 1 : 0;
    }
    EXPECT_NEAR(to_9, 50, 20);
}

TEST_F(PipelineRouting, ObjectsThatAreGone)
{
    int group = 0;
    chip.multipath_groups.create({{egress}}, group);
    route("10.20.0.0/16", group);
    const Bytes by_group = ip_frame({.destination = "10.20.0.1"});
    EXPECT_EQ(send(5, by_group), SENT_6);
    chip.multipath_groups.remove(group);
    EXPECT_EQ(send(5, by_group), "DROPPED: the route's multipath group doesn't exist");
    EXPECT_EQ(trace.nearest(), "there is no group at all");

    chip.l3_interfaces.remove(8);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the L3 interface of the egress object doesn't exist");
    EXPECT_THAT(trace.nearest(), testing::StartsWith("L3 interface 7 (mac"));
    const int other = next_hop(7, 5);
    chip.egresses.remove(egress);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the egress object doesn't exist");
    EXPECT_THAT(trace.nearest(), testing::StartsWith(fmt::format("egress {} (interface 7", other)));
}

TEST_F(PipelineRouting, TtlAndMtu)
{
    EXPECT_EQ(send(5, ip_frame({.ttl = 1})), "TO CPU: its TTL ends here");
    EXPECT_EQ(send(5, ip_frame({.ttl = 0})), "TO CPU: its TTL ends here");
    EXPECT_EQ(send(5, ip_frame({.ttl = 2})), SENT_6);
    EXPECT_EQ(send(5, ip_frame({.size = 1514})), SENT_6);
    EXPECT_EQ(send(5, ip_frame({.size = 1515})), "TO CPU: longer than the MTU of the L3 interface");

    L3Interface interface = *chip.l3_interfaces.find(8);
    interface.mtu = 0;
    interface.ttl = 10;
    chip.l3_interfaces.set(8, interface);
    EXPECT_EQ(send(5, ip_frame({.size = 9000})), SENT_6);
    EXPECT_EQ(send(5, ip_frame({.ttl = 9})), "DROPPED: its TTL is below the L3 interface's lowest");
    EXPECT_EQ(send(5, ip_frame({.ttl = 10})), SENT_6);
}

TEST_F(PipelineRouting, ANextHopAtTheCpu)
{
    route("10.0.0.1/32", next_hop(7, CPU_PORT));
    EXPECT_EQ(send(5, ip_frame({.destination = "10.0.0.1", .ttl = 1})),
              "TO CPU: its next hop is the CPU");
}

TEST_F(PipelineRouting, ABlackHoleDropsWhatAShorterPrefixWouldForward)
{
    int hole = 0;
    chip.egresses.create({.interface = 0, .port = -1}, hole);
    route("10.9.1.0/24", hole);
    EXPECT_EQ(send(5, ip_frame({.destination = "10.9.1.7"})), "DROPPED: its route is a black hole");
    EXPECT_EQ(trace.nearest(), "");
    EXPECT_EQ(send(5, ip_frame({.destination = "10.9.2.7"})), SENT_6);
}

TEST_F(PipelineRouting, OutOfASubinterfaceWithItsTag)
{
    subinterface(module_port(0, 6), {6}, 100, 9);
    route("10.20.0.0/16", next_hop(9, 6));
    EXPECT_EQ(send(5, ip_frame({.destination = "10.20.0.1"})), "SENT port 6 tagged 100: routed");
    EXPECT_EQ(got(6), ip_frame({.to = OTHER_MAC,
                                .from = ROUTER_MAC,
                                .tags = {100},
                                .destination = "10.20.0.1",
                                .ttl = 63}));
}

TEST_F(PipelineRouting, IntoASubinterfaceAndOutUntagged)
{
    subinterface(module_port(0, 5), {5}, 100, 9);
    EXPECT_EQ(send(5, ip_frame({.tags = {100}})), SENT_6);
    EXPECT_EQ(got(6), ip_frame({.to = OTHER_MAC, .from = ROUTER_MAC, .ttl = 63}));
}

TEST_F(PipelineRouting, OutOfAnSvi)
{
    svi(100, 9, {0, 10});
    route("10.20.0.0/16", next_hop(9, 10));
    EXPECT_EQ(send(5, ip_frame({.destination = "10.20.0.1"})), "SENT port 10 tagged 100: routed");
    Egress record = *chip.egresses.find(FIRST_EGRESS + 1);
    record.vlan = 101;
    bridged_vlan(101, {10}, {10});
    chip.egresses.set(FIRST_EGRESS + 1, record);
    EXPECT_EQ(send(5, ip_frame({.destination = "10.20.0.1"})), "SENT port 10 untagged: routed");
}

TEST_F(PipelineRouting, TheWayOutMustBeThere)
{
    chip.stgs.set_state(DEFAULT_STG, 6, STP_DISABLED);
    EXPECT_EQ(send(5, ip_frame()),
              "DROPPED: the spanning tree state of the port that it leaves on lets nothing out");
    chip.vlans.remove_ports(ROUTED_VLAN, {6});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the port that it leaves on isn't in the VLAN");
    EXPECT_EQ(trace.nearest(), "port 6 is in VLAN 1");
    L3Interface interface = *chip.l3_interfaces.find(8);
    interface.vlan = 500;
    chip.l3_interfaces.set(8, interface);
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: the VLAN that it leaves in doesn't exist");
    chip.egresses.set(egress, {.interface = 8, .port = 300});
    EXPECT_EQ(send(5, ip_frame()), "DROPPED: no such port");
}

TEST_F(PipelineRouting, OutOfATrunkByTheHash)
{
    routed_port(10, 11);
    chip.vlans.add_ports(ROUTED_VLAN, {12}, {12});
    trunk(4, {10, 12});
    trunk(5, {});
    route("10.20.0.0/16", next_hop(11, trunk_gport(4)));
    int by_id = 0;
    chip.egresses.create({.interface = 11, .trunk = 4}, by_id);
    route("10.21.0.0/16", by_id);
    route("10.22.0.0/16", next_hop(11, trunk_gport(5)));
    route("10.23.0.0/16", next_hop(11, trunk_gport(6)));
    for (int flow = 0; flow < 20; ++flow) {
        for (const char *to : {"10.20.0.1", "10.21.0.1"}) {
            const Bytes bytes = ip_frame({.destination = to, .source_port = flow});
            send(5, bytes);
            Frame frame;
            parse(bytes, frame);
            EXPECT_TRUE(result.left_on(member_of(flow_hash(frame), 2) == 1 ? 12 : 10));
        }
    }
    for (const char *to : {"10.22.0.1", "10.23.0.1"}) {
        EXPECT_EQ(send(5, ip_frame({.destination = to})),
                  "DROPPED: the trunk of the next hop doesn't exist or is empty");
    }
    chip.trunks.set(5, {.members = {{.gport = trunk_gport(9)}}});
    EXPECT_EQ(send(5, ip_frame({.destination = "10.22.0.1"})),
              "DROPPED: the trunk's member is no port");
}

TEST_F(PipelineRouting, ASecondaryVlanRoutesByThePrimarysInterface)
{
    svi(100, 9, {0, 10});
    bridged_vlan(101, {0, 11});
    chip.vlans.set_controls(101, {.ingress_if = 9, .flags = 0x40});
    EXPECT_EQ(send(11, ip_frame({.tags = {101}})), SENT_6);
}

TEST_F(PipelineRouting, LabelsAreSwitchedWhereTheyAreOn)
{
    svi(100, 9, {0, 10, 11});
    const Bytes labelled = plain_frame(TYPE_MPLS, {.tags = {100}});
    EXPECT_EQ(send(10, labelled), "DROPPED: label-switched, and there are no labels");
    chip.vlans.set_controls(100, {.ingress_if = 9, .flags = 0x200});
    EXPECT_THAT(send(10, labelled), testing::StartsWith("SENT port 11 tagged 100: flooded"));

    const Bytes untagged = plain_frame(TYPE_MPLS);
    EXPECT_EQ(send(5, untagged), "DROPPED: not routable: no IP packet");
    chip.ports.set_control(5, PORT_CONTROL_MPLS, 1);
    EXPECT_EQ(send(5, untagged), "DROPPED: label-switched, and there are no labels");
}

} // namespace simswitch::chip::pipeline
