/*
 * pipeline_trace_test.cpp: what a trace looks like, line by line.
 */
#include "pipeline_chip.h"

#include <fmt/ranges.h>
#include <set>

namespace simswitch::chip::pipeline
{

namespace
{

struct PipelineTrace : PipelineTest {
    PipelineTrace()
    {
        router_mac();
        routed_port(5, 7);
        routed_port(6, 8);
        route("10.9.0.0/16", next_hop(8, 6));
    }
    std::string traced(int port, const Bytes &frame)
    {
        send(port, frame);
        return fmt::format("{}", fmt::join(trace.text(), "\n"));
    }
};

} // namespace

TEST_F(PipelineTrace, ARoutedFrame)
{
    subinterface(module_port(0, 5), {5}, 100, 9);
    EXPECT_EQ(traced(5, ip_frame({.tags = {100}, .size = 64})),
              R"(-    frame            64 bytes, IPv4 10.0.0.2 to 10.9.0.1 TTL 64
HIT  port             port 5: tag with VLAN 100, discard 0
HIT  VLAN translation vlan_translation gport 0x8000005 type 8 outer 100 inner 65535: VLAN 4094, ingress interface 9
HIT  VLAN             vlan 100: port 5 is a member
HIT  spanning tree    stg 1: port 5 is forwarding
HIT  interface        l3_ingress 9: by the translation, vrf 1 urpf 0 class 0 ipmc 0 qos 0 flags 0x0
HIT  station          station 1: flags 0x1c mac 00:11:22:33:44:55/ff:ff:ff:ff:ff:ff vlan 0/0x0 port 0/0x0
HIT  family           l3_ingress 9: IPv4 is on
HIT  route            route vrf 1 10.9.0.0/16: egress 100000 flags 0x0
HIT  egress           egress 100000: interface 8 mac 00:aa:bb:cc:dd:02 vlan 0 module 0 port 6 trunk 0 encap 0 flags 0x0
HIT  L3 interface     l3_interface 8: mac 00:11:22:33:44:55 vlan 4094 vrf 1 mtu 1500 ttl 0 tunnel 0 flags 0x0
HIT  leave            vlan 4094: port 6, untagged
SENT port 6 untagged: routed
  destination MAC: 00:11:22:33:44:55 -> 00:aa:bb:cc:dd:02
  source MAC: 00:aa:bb:cc:dd:01 -> 00:11:22:33:44:55
  tag: VLAN 100 priority 0 -> none
  TTL: 64 -> 63
  checksum: 0x66b4 -> 0x67b4)");
}

TEST_F(PipelineTrace, ADroppedFrameNamesTheNearestEntry)
{
    EXPECT_EQ(traced(5, ip_frame({.destination = "10.10.0.1"})),
              R"(-    frame            42 bytes, IPv4 10.0.0.2 to 10.10.0.1 TTL 64
HIT  port             port 5: untagged, discard 0
HIT  VLAN             vlan 4094: port 5 is a member
HIT  spanning tree    stg 1: port 5 is forwarding
HIT  interface        l3_ingress 7: by port control 67, vrf 1 urpf 0 class 0 ipmc 0 qos 0 flags 0x0
HIT  station          station 1: flags 0x1c mac 00:11:22:33:44:55/ff:ff:ff:ff:ff:ff vlan 0/0x0 port 0/0x0
HIT  family           l3_ingress 7: IPv4 is on
MISS route            route vrf 1 10.10.0.1: none matches; nearest: route vrf 1 10.9.0.0/16 (egress 100000 flags 0x0)
DROPPED: no route to its destination
  nearest: route vrf 1 10.9.0.0/16 (egress 100000 flags 0x0))");
}

TEST_F(PipelineTrace, AFrameForTheCpu)
{
    EXPECT_EQ(traced(5, plain_frame(TYPE_ARP, {.to = BROADCAST})),
              R"(-    frame            60 bytes, ARP
HIT  port             port 5: untagged, discard 0
HIT  VLAN             vlan 4094: port 5 is a member
HIT  spanning tree    stg 1: port 5 is forwarding
HIT  interface        l3_ingress 7: by port control 67, vrf 1 urpf 0 class 0 ipmc 0 qos 0 flags 0x0
-    station          station: none for ff:ff:ff:ff:ff:ff in VLAN 4094 from port 5
HIT  trap             ARP on a routed interface
TO CPU: ARP on a routed interface)");
}

TEST_F(PipelineTrace, ChangesAreRecordsToo)
{
    send(5, ip_frame());
    ASSERT_EQ(trace.changes().size(), 4U);
    EXPECT_EQ(trace.changes()[2].field, "TTL");
    EXPECT_EQ(trace.changes()[2].before, "64");
    EXPECT_EQ(trace.changes()[2].after, "63");
}

TEST_F(PipelineTrace, EveryStageAndReasonHasWords)
{
    std::set<std::string> words;
    for (int stage = 0; stage <= static_cast<int>(Stage::bridge); ++stage) {
        EXPECT_TRUE(words.insert(text(static_cast<Stage>(stage))).second) << stage;
    }
    for (int reason = 1; reason <= static_cast<int>(Reason::nobody); ++reason) {
        EXPECT_NE(text(static_cast<Reason>(reason)), std::string("no reason")) << reason;
        EXPECT_TRUE(words.insert(text(static_cast<Reason>(reason))).second) << reason;
    }
    EXPECT_STREQ(text(Reason::none), "no reason");
}

} // namespace simswitch::chip::pipeline
