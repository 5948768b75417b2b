/*
 * pipeline_ingress_test.cpp: from the wire to VLAN and ingress interface: port,
 * VLAN translation, membership, spanning tree, and which interface a frame is on.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

using PipelineIngress = PipelineTest;

TEST_F(PipelineIngress, WhatIsNoFrameOrComesFromNoPort)
{
    EXPECT_EQ(send(5, Bytes(13)), "DROPPED: too short to be a frame");
    EXPECT_EQ(send(5, Bytes(FRAME_MAX + 1)), "DROPPED: longer than any frame");
    EXPECT_EQ(line(Stage::frame), "MISS   9601 bytes, at most 9600");
    EXPECT_EQ(send(256, ip_frame()), "DROPPED: no such port");
    EXPECT_EQ(send(-1, ip_frame()), "DROPPED: no such port");
    EXPECT_EQ(send(5, Bytes{}), "DROPPED: too short to be a frame");
}

TEST_F(PipelineIngress, DiscardModes)
{
    bridged_vlan(100, {5, 6});
    const Bytes untagged = ip_frame();
    const Bytes tagged = ip_frame({.tags = {100}});
    const Bytes priority = ip_frame({.tags = {0x6000}});
    const auto verdicts = [&](int mode) {
        chip.ports.set_discard(5, mode);
        return std::vector<bool>{send(5, untagged).starts_with("SENT"),
                                 send(5, tagged).starts_with("SENT"),
                                 send(5, priority).starts_with("SENT")};
    };
    EXPECT_EQ(verdicts(0), (std::vector<bool>{true, true, true}));
    EXPECT_EQ(verdicts(1), (std::vector<bool>{false, false, false}));
    EXPECT_EQ(verdicts(2), (std::vector<bool>{false, true, false}));
    EXPECT_EQ(verdicts(3), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(send(5, tagged), "DROPPED: the port discards tagged frames");
}

TEST_F(PipelineIngress, UntaggedFramesAreInThePortsVlan)
{
    bridged_vlan(100, {5, 6}, {5, 6});
    chip.ports.set_untagged_vlan(5, 100);
    EXPECT_EQ(send(5, plain_frame(0x1234)), "SENT port 6 untagged: flooded in its VLAN");
}

TEST_F(PipelineIngress, AVlanThatIsNotThereOrNotThePorts)
{
    bridged_vlan(100, {6, 7});
    bridged_vlan(102, {5, 6});
    EXPECT_EQ(send(5, plain_frame(0x1234, {.tags = {101}})), "DROPPED: its VLAN doesn't exist");
    EXPECT_EQ(trace.nearest(), "port 5 is in VLANs 1, 102");
    EXPECT_EQ(send(5, plain_frame(0x1234, {.tags = {100}})), "DROPPED: the port isn't in its VLAN");
    EXPECT_EQ(trace.nearest(), "port 5 is in VLANs 1, 102");
}

TEST_F(PipelineIngress, SpanningTreeStates)
{
    bridged_vlan(100, {5, 6});
    int stg = 0;
    chip.stgs.create(stg);
    chip.stgs.add_vlan(stg, 100);
    chip.stgs.set_state(stg, 6, STP_FORWARDING);
    const Bytes frame = plain_frame(0x1234, {.tags = {100}});
    const Bytes bpdu = plain_frame(0x0027, {.to = {1, 0x80, 0xc2, 0, 0, 0}, .tags = {100}});
    std::vector<bool> passes;
    std::vector<bool> protocol;
    std::vector<std::size_t> learned;
    for (int state = 0; state <= 4; ++state) {
        chip.stgs.set_state(stg, 5, state);
        passes.push_back(send(5, frame).starts_with("SENT"));
        protocol.push_back(send(5, bpdu) == "TO CPU: a bridge protocol's frame");
        learned.push_back(pipeline.l2().size());
    }
    EXPECT_EQ(passes, (std::vector<bool>{false, false, false, false, true}));
    EXPECT_EQ(protocol, (std::vector<bool>{false, true, true, true, true}));
    EXPECT_EQ(learned, (std::vector<std::size_t>{0, 0, 0, 1, 1}));
}

TEST_F(PipelineIngress, APortThatIsNotForwardingGetsNothing)
{
    bridged_vlan(100, {5, 6});
    chip.stgs.set_state(DEFAULT_STG, 6, STP_BLOCKING);
    EXPECT_EQ(send(5, plain_frame(0x1234, {.tags = {100}})),
              "DROPPED: nobody else in its VLAN gets it");
}

TEST_F(PipelineIngress, TheCpusPortIsNotInTheSpanningTree)
{
    bridged_vlan(100, {0, 6});
    int stg = 0;
    chip.stgs.create(stg);
    chip.stgs.add_vlan(stg, 100);
    chip.stgs.set_state(stg, 6, STP_FORWARDING);
    EXPECT_EQ(send(0, plain_frame(0x1234, {.tags = {100}})),
              "SENT port 6 tagged 100: flooded in its VLAN");
    EXPECT_EQ(send(6, plain_frame(0x1234, {.tags = {100}})), "TO CPU: the CPU is in its VLAN");
}

TEST_F(PipelineIngress, TheInterfaceOfARoutedPortIsItsControl67)
{
    routed_port(5, 7);
    send(5, ip_frame());
    EXPECT_EQ(line(Stage::interface), "HIT l3_ingress 7 by port control 67, vrf 1 urpf 0 class 0 "
                                      "ipmc 0 qos 0 flags 0x0");
}

TEST_F(PipelineIngress, TheInterfaceOfAnSviIsItsVlans)
{
    svi(100, 9, {5, 6});
    send(5, ip_frame({.tags = {100}}));
    EXPECT_THAT(line(Stage::interface), testing::StartsWith("HIT l3_ingress 9 by the VLAN's"));
}

TEST_F(PipelineIngress, AnInterfaceThatIsGoneIsNone)
{
    routed_port(5, 7);
    routed_port(6, 10);
    chip.l3_ingresses.remove(7);
    send(5, ip_frame());
    EXPECT_EQ(line(Stage::interface), "MISS l3_ingress 7 by port control 67, does not exist");
    EXPECT_THAT(trace.lines()[4].nearest, testing::StartsWith("ingress interface 10 (vrf 1"));
}

TEST_F(PipelineIngress, ASubinterfaceIsFoundByItsTag)
{
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 8);
    send(5, ip_frame({.tags = {100}}));
    EXPECT_EQ(line(Stage::translation), "HIT vlan_translation " +
                                            text(TranslationKey{module_port(0, 5), 8, 100, 65535}) +
                                            " VLAN 4094, ingress interface 8");
    EXPECT_THAT(line(Stage::interface), testing::StartsWith("HIT l3_ingress 8 by the translation"));
}

TEST_F(PipelineIngress, TheResultTellsObjectAndVlanWhateverBecomesOfTheFrame)
{
    const auto given = [this](int port, const Bytes &frame) {
        const std::string verdict = send(port, frame);
        return fmt::format("{} {} {}", verdict.substr(0, verdict.find(':')), result.ingress,
                           result.ingress_vlan);
    };
    router_mac();
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 9);
    svi(200, 12, {0, 10, 11});
    route("10.9.0.0/16", next_hop(7, 5));
    EXPECT_EQ(given(5, plain_frame(TYPE_ARP, {.to = BROADCAST})), "TO CPU 7 4094");
    EXPECT_EQ(given(5, ip_frame({.tags = {100}})), "SENT port 5 untagged 9 4094");
    EXPECT_EQ(given(5, ip_frame({.destination = "10.8.0.1"})), "DROPPED 7 4094");
    EXPECT_EQ(given(10, plain_frame(TYPE_ARP, {.to = BROADCAST, .tags = {200}})),
              "SENT port 11 tagged 200 12 200");
    EXPECT_EQ(given(6, ip_frame()), "SENT ports 1-5,7-104 untagged 0 1");
    EXPECT_EQ(given(6, ip_frame({.tags = {300}})), "DROPPED 0 0");
}

TEST_F(PipelineIngress, ATagWithoutTranslationIsDroppedWhereThePortSaysSo)
{
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 8);
    bridged_vlan(103, {5, 6});
    const Bytes other = plain_frame(0x1234, {.tags = {103}});
    EXPECT_EQ(send(5, other), "DROPPED: no VLAN translation, and the port drops what misses");
    EXPECT_EQ(trace.nearest(),
              "translation " + text(TranslationKey{module_port(0, 5), 8, 100, 65535}));

    chip.ports.set_vlan_control(5, VLAN_CONTROL_DROPS_ON_MISS, 0);
    chip.ports.set_control(5, PORT_CONTROL_INGRESS, 0);
    EXPECT_EQ(send(5, other), "SENT port 6 tagged 103: flooded in its VLAN");
}

TEST_F(PipelineIngress, UntaggedAndPriorityTaggedFramesAreNotLookedUp)
{
    routed_port(5, 7);
    send(5, ip_frame());
    EXPECT_EQ(line(Stage::translation), "");
    send(5, ip_frame({.tags = {0x2000}}));
    EXPECT_EQ(line(Stage::translation), "");
    EXPECT_THAT(line(Stage::interface), testing::StartsWith("HIT l3_ingress 7"));
}

TEST_F(PipelineIngress, NoTranslationWhereThePortsControlsDontSwitchItOn)
{
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 8);
    chip.ports.set_vlan_control(5, VLAN_CONTROL_TRANSLATES, 0);
    send(5, ip_frame({.tags = {100}}));
    EXPECT_EQ(line(Stage::translation), "");
    EXPECT_THAT(line(Stage::interface), testing::StartsWith("HIT l3_ingress 7"));

    chip.ports.set_vlan_control(5, VLAN_CONTROL_TRANSLATES, 1);
    chip.ports.set_vlan_control(5, VLAN_CONTROL_TRANSLATE_KEY, 3);
    EXPECT_EQ(send(5, ip_frame({.tags = {100}})),
              "DROPPED: no VLAN translation, and the port drops what misses");
    EXPECT_THAT(line(Stage::translation), testing::EndsWith("the port's key type is 3, not 8"));
}

TEST_F(PipelineIngress, AMemberOfATrunkFindsTheTrunksEntryAfterItsOwn)
{
    trunk(3, {5, 6});
    routed_port(5, 7);
    subinterface(trunk_gport(3), {5}, 100, 8);
    send(5, ip_frame({.tags = {100}}));
    EXPECT_THAT(line(Stage::translation), testing::EndsWith("ingress interface 8"));

    interface(11, 100);
    chip.vlan_translations.create(
        {module_port(0, 5), 8, 100, 65535},
        {.new_outer_vlan = ROUTED_VLAN, .ingress_if = 11, .outer_tag_action = OUTER_TAG_REPLACE});
    send(5, ip_frame({.tags = {100}}));
    EXPECT_THAT(line(Stage::translation), testing::EndsWith("ingress interface 11"));
}

TEST_F(PipelineIngress, AnEntryOfOneTagIsNotForTwo)
{
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 8);
    for (const int inner : {7, 0}) {
        EXPECT_EQ(send(5, ip_frame({.tags = {100, inner}})),
                  "DROPPED: no VLAN translation, and the port drops what misses");
    }
}

TEST_F(PipelineIngress, AnEntryThatLeavesTheTagKeepsTheVlan)
{
    interface(8, 4094);
    routed_port(5, 7);
    chip.ports.set_vlan_control(5, VLAN_CONTROL_TRANSLATE_KEY, KEY_TYPE_PORT_OUTER);
    chip.vlan_translations.create({module_port(0, 5), 8, 4094, 65535},
                                  {.new_outer_vlan = 4094, .ingress_if = 8});
    send(5, ip_frame({.tags = {4094}}));
    EXPECT_THAT(line(Stage::translation), testing::EndsWith("VLAN 4094, ingress interface 8"));
    EXPECT_THAT(line(Stage::interface), testing::StartsWith("HIT l3_ingress 8"));
}

TEST_F(PipelineIngress, ATranslatedFrameMustBeInTheVlanOfItsTagAndInAVlanThatExists)
{
    routed_port(5, 7);
    subinterface(module_port(0, 5), {5}, 100, 8);
    chip.vlans.remove_ports(100, {5});
    EXPECT_EQ(send(5, ip_frame({.tags = {100}})), "DROPPED: the port isn't in its VLAN");
    chip.vlans.add_ports(100, {5}, {});
    chip.vlans.remove(ROUTED_VLAN);
    EXPECT_EQ(send(5, ip_frame({.tags = {100}})), "DROPPED: its VLAN doesn't exist");
    EXPECT_EQ(line(Stage::vlan), "MISS vlan 4094 does not exist");
}

} // namespace simswitch::chip::pipeline
