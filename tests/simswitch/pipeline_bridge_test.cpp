/*
 * pipeline_bridge_test.cpp: frames that stay in their VLAN: known and unknown
 * addresses, block masks, the CPU, trunks, tags on the way out.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

constexpr Mac GROUP = {0x01, 0x00, 0x5e, 0x01, 0x01, 0x01};

struct PipelineBridge : PipelineTest {
    PipelineBridge() { bridged_vlan(100, {0, 5, 6, 7, 8}, {6}); }
    std::string from(int port, const Mac &source, const Mac &destination)
    {
        return send(port, plain_frame(0x1234, {.to = destination, .from = source, .tags = {100}}));
    }
};

} // namespace

TEST_F(PipelineBridge, UnknownGoesToAllOthersTaggedAsTheVlanSays)
{
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC), "SENT port 6 untagged, ports 7,8 tagged 100: flooded "
                                            "in its VLAN; a copy TO CPU: the CPU is in its VLAN");
    const Bytes in = plain_frame(0x1234, {.to = OTHER_MAC, .from = HOST_MAC, .tags = {100}});
    EXPECT_EQ(got(7), in);
    EXPECT_EQ(got(6), plain_frame(0x1234, {.to = OTHER_MAC, .from = HOST_MAC}));
    EXPECT_EQ(result.size_on(5), 0U);
}

TEST_F(PipelineBridge, LearnedAddressesGetTheirFramesAlone)
{
    from(5, HOST_MAC, OTHER_MAC);
    EXPECT_EQ(from(6, OTHER_MAC, HOST_MAC), "SENT port 5 tagged 100: bridged to a known address");
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC), "SENT port 6 untagged: bridged to a known address");
    EXPECT_EQ(from(6, ROUTER_MAC, OTHER_MAC),
              "DROPPED: its destination is behind the port that it came in on");
}

TEST_F(PipelineBridge, ATraceLearnsNothing)
{
    const Bytes frame = plain_frame(0x1234, {.to = OTHER_MAC, .from = HOST_MAC, .tags = {100}});
    pipeline.trace(5, frame, result, trace);
    EXPECT_EQ(pipeline.l2().size(), 0U);
    EXPECT_EQ(line(Stage::learning), "- l2 100/00:aa:bb:cc:dd:01 would be learned");
}

TEST_F(PipelineBridge, AddressesOfOtherVlansAreOthers)
{
    bridged_vlan(101, {5, 6});
    from(5, HOST_MAC, OTHER_MAC);
    EXPECT_EQ(send(6, plain_frame(0x1234, {.to = HOST_MAC, .from = OTHER_MAC, .tags = {101}})),
              "SENT port 5 tagged 101: flooded in its VLAN");
}

TEST_F(PipelineBridge, EachBlockMaskHoldsBackItsClassOnly)
{
    pipeline.l2().add_group(100, {1, 0, 0, 0, 0, 7}, {6, 7, 8, 9});
    const auto verdicts = [this] {
        const auto ports = [this](const Mac &to) {
            from(5, HOST_MAC, to);
            PortSet all = result.tagged;
            all |= result.untagged;
            return all.text();
        };
        return std::vector<std::string>{ports({1, 0, 0, 0, 0, 7}), ports(GROUP), ports(OTHER_MAC),
                                        ports(BROADCAST)};
    };
    using Ports = std::vector<std::string>;
    EXPECT_EQ(verdicts(), (Ports{"{6-8}", "{6-8}", "{6-8}", "{6-8}"}));
    chip.vlans.set_blocks(100, {.known_multicast = {6}});
    EXPECT_EQ(verdicts(), (Ports{"{7,8}", "{6-8}", "{6-8}", "{6-8}"}));
    chip.vlans.set_blocks(100, {.unknown_multicast = {6}});
    EXPECT_EQ(verdicts(), (Ports{"{6-8}", "{7,8}", "{6-8}", "{6-8}"}));
    chip.vlans.set_blocks(100, {.unknown_unicast = {6}});
    EXPECT_EQ(verdicts(), (Ports{"{6-8}", "{6-8}", "{7,8}", "{6-8}"}));
    chip.vlans.set_blocks(100, {.broadcast = {6}});
    EXPECT_EQ(verdicts(), (Ports{"{6-8}", "{6-8}", "{6-8}", "{7,8}"}));
}

TEST_F(PipelineBridge, TheCpuInAMaskGetsNoCopy)
{
    chip.vlans.set_blocks(100, {.broadcast = {0}});
    from(5, HOST_MAC, BROADCAST);
    EXPECT_FALSE(result.cpu);
    from(5, HOST_MAC, OTHER_MAC);
    EXPECT_TRUE(result.cpu);
}

TEST_F(PipelineBridge, AKnownAddressPassesTheMasks)
{
    from(6, OTHER_MAC, HOST_MAC);
    chip.vlans.set_blocks(100, {.unknown_unicast = PortSet::all()});
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC), "SENT port 6 untagged: bridged to a known address");
}

TEST_F(PipelineBridge, OneMemberOfATrunkGetsAFlood)
{
    trunk(2, {6, 7});
    for (int i = 0; i < 20; ++i) {
        from(5, {0, 1, 2, 3, 4, static_cast<std::uint8_t>(i)}, OTHER_MAC);
        EXPECT_NE(result.left_on(6), result.left_on(7));
        EXPECT_TRUE(result.left_on(8));
    }
    EXPECT_EQ(from(6, HOST_MAC, BROADCAST).substr(0, 22), "SENT ports 5,8 tagged ");
}

TEST_F(PipelineBridge, StationsBehindATrunkAreLearnedThere)
{
    trunk(2, {6, 7});
    from(6, OTHER_MAC, HOST_MAC);
    EXPECT_EQ(pipeline.l2().find(100, OTHER_MAC)->gport, trunk_gport(2));
    from(5, HOST_MAC, OTHER_MAC);
    EXPECT_NE(result.left_on(6), result.left_on(7));
    EXPECT_EQ(from(7, HOST_MAC, OTHER_MAC),
              "DROPPED: its destination is behind the port that it came in on");
}

TEST_F(PipelineBridge, AStaticAddressOnAPortOutsideTheVlan)
{
    pipeline.l2().add_static(100, OTHER_MAC, module_port(0, 9));
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC),
              "DROPPED: the port that it leaves on isn't in the VLAN");
    EXPECT_EQ(trace.nearest(), "port 9 is in VLAN 1");
}

TEST_F(PipelineBridge, AStaticAddressOfTheCpuOrBehindATrunkThatIsGone)
{
    pipeline.l2().add_static(100, OTHER_MAC, module_port(0, CPU_PORT));
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC), "TO CPU: its destination is a station of the CPU");
    pipeline.l2().add_static(100, OTHER_MAC, trunk_gport(9));
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC),
              "DROPPED: the trunk of the next hop doesn't exist or is empty");
    EXPECT_EQ(trace.nearest(), "there is no trunk at all");
    pipeline.l2().add_static(100, OTHER_MAC, module_port(0, 300));
    EXPECT_EQ(from(5, HOST_MAC, OTHER_MAC), "DROPPED: no such port");
}

TEST_F(PipelineBridge, AFrameIsWrittenWhereItLeavesAndOnlyWhole)
{
    from(5, HOST_MAC, OTHER_MAC);
    Bytes room(result.size_on(7) - 1);
    EXPECT_EQ(result.write(7, room), 0U);
    room.resize(room.size() + 1);
    EXPECT_EQ(result.write(7, room), room.size());
    EXPECT_EQ(result.write(5, room), 0U);
}

TEST_F(PipelineBridge, WhatTheCpuSendsIsBridgedAndNotSentBack)
{
    EXPECT_EQ(from(0, ROUTER_MAC, BROADCAST),
              "SENT port 6 untagged, ports 5,7,8 tagged 100: flooded in its VLAN");
    EXPECT_EQ(pipeline.l2().size(), 0U);
}

TEST_F(PipelineBridge, TwoTagsAndThePriorityArePassedOn)
{
    const Make make = {.to = OTHER_MAC, .from = HOST_MAC, .tags = {0xa064, 0x2007}};
    send(5, plain_frame(0x1234, make));
    EXPECT_EQ(got(7), plain_frame(0x1234, make));
    EXPECT_EQ(got(6), plain_frame(0x1234, {.to = OTHER_MAC, .from = HOST_MAC, .tags = {0x2007}}));
}

TEST_F(PipelineBridge, NothingIsBridgedOnARoutedPort)
{
    routed_port(9, 7);
    routed_port(10, 8);
    EXPECT_EQ(send(9, plain_frame(0x1234, {.to = OTHER_MAC})),
              "DROPPED: not routable: no IP packet");
    EXPECT_EQ(send(9, ip_frame({.to = OTHER_MAC})),
              "DROPPED: not routable: its destination MAC is no station's");
    EXPECT_EQ(pipeline.l2().size(), 0U);
}

TEST_F(PipelineBridge, IgmpGoesToTheCpuAloneUntilSnoopingIsOff)
{
    const Bytes report = ip_frame(
        {.to = GROUP, .tags = {100}, .destination = "239.1.1.1", .protocol = PROTOCOL_IGMP});
    EXPECT_EQ(send(5, report), "TO CPU: IGMP in a VLAN that snoops");
    chip.vlans.set_controls(100, {.flags = 0x800});
    EXPECT_THAT(send(5, report), testing::StartsWith("SENT port 6 untagged, ports 7,8 tagged"));
}

} // namespace simswitch::chip::pipeline
