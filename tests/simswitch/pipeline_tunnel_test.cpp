/*
 * pipeline_tunnel_test.cpp: packets that leave through a tunnel.
 */
#include "pipeline_chip.h"

namespace simswitch::chip::pipeline
{

namespace
{

constexpr const char *SENT_6 = "SENT port 6 untagged: routed";
constexpr const char *SIX = "2001:db8:1::2";

/** 10.9.0.0/16 and 2001:db8:9::/48 are behind tunnel 20, which leaves by port 6. */
struct PipelineTunnel : PipelineTest {
    PipelineTunnel()
    {
        router_mac();
        routed_port(5, 7);
        routed_port(6, 8);
        interface(20, ROUTED_VLAN);
        EXPECT_THAT(
            chip.tunnels.create(20, {.index = 3, .source_ip = 0x0a010021, .dest_ip = 0x0a010020}),
            Done());
        egress = next_hop(20, 6);
        route("10.9.0.0/16", egress);
        route("2001:db8:9::/48", egress);
    }

    /** What port 6 gets of a packet: a new Ethernet header, an outer IP header, the packet. */
    Bytes wrapped(const Bytes &inner_frame, const std::vector<int> &outer, int tag = 0) const
    {
        Bytes out(OTHER_MAC.begin(), OTHER_MAC.end());
        out.insert(out.end(), ROUTER_MAC.begin(), ROUTER_MAC.end());
        const std::vector<int> types =
            tag != 0 ? std::vector<int>{0x81, 0, tag >> 8, tag, 8, 0} : std::vector<int>{8, 0};
        for (const auto &bytes : {types, outer}) {
            for (const int byte : bytes) {
                out.push_back(static_cast<std::uint8_t>(byte));
            }
        }
        out.insert(out.end(), inner_frame.begin() + ETHERNET_HEADER, inner_frame.end());
        return out;
    }

    void set_mtu(int mtu)
    {
        L3Interface interface = *chip.l3_interfaces.find(20);
        interface.mtu = mtu;
        EXPECT_THAT(chip.l3_interfaces.set(20, interface), Done());
    }

    int egress = 0;
};

/** The outer header of 10.1.0.33 to 10.1.0.32. */
std::vector<int> outer(int tos, int length, int protocol, int checksum)
{
    return {0x45,
            tos,
            length >> 8,
            length & 0xff,
            0,
            0,
            0x40,
            0,
            64,
            protocol,
            checksum >> 8,
            checksum & 0xff,
            10,
            1,
            0,
            33,
            10,
            1,
            0,
            32};
}

} // namespace

TEST_F(PipelineTunnel, AnIpv4PacketGetsAnOuterHeader)
{
    Bytes frame = ip_frame({.size = 64});
    frame[15] = 0xb8; // TOS
    fix_checksum(frame);
    EXPECT_EQ(send(5, frame), SENT_6);
    Bytes inner = ip_frame({.ttl = 63, .size = 64});
    inner[15] = 0xb8;
    fix_checksum(inner);
    EXPECT_EQ(got(6), wrapped(inner, outer(0xb8, 70, 4, 0x25ba)));
    const Bytes out = got(6);
    EXPECT_EQ(checksum(std::span(out).subspan(ETHERNET_HEADER, IP4_HEADER)), 0);
    EXPECT_EQ(line(Stage::tunnel), "HIT tunnel 20 index 3 10.1.0.33 -> 10.1.0.32, IPv4 in IPv4");
}

TEST_F(PipelineTunnel, AnIpv6PacketGetsAnIpv4Header)
{
    Bytes frame = ip_frame({.source = SIX, .destination = "2001:db8:9::1"});
    frame[14] = 0x6b; // traffic class 0xb8
    frame[15] = 0x80;
    EXPECT_EQ(send(5, frame), SENT_6);
    --frame[21];
    EXPECT_EQ(got(6), wrapped(frame, outer(0xb8, 68, 41, 0x2597)));
    EXPECT_EQ(line(Stage::tunnel), "HIT tunnel 20 index 3 10.1.0.33 -> 10.1.0.32, IPv6 in IPv4");
}

TEST_F(PipelineTunnel, TheTraceTellsTheOuterAddresses)
{
    send(5, ip_frame({.source = SIX, .destination = "2001:db8:9::1"}));
    const std::vector<std::string> text = trace.text();
    ASSERT_GE(text.size(), 6U);
    EXPECT_EQ((std::vector<std::string>{text.end() - 6, text.end()}),
              (std::vector<std::string>{
                  "  destination MAC: 00:11:22:33:44:55 -> 00:aa:bb:cc:dd:02",
                  "  source MAC: 00:aa:bb:cc:dd:01 -> 00:11:22:33:44:55", "  hop limit: 64 -> 63",
                  "  outer source: none -> 10.1.0.33", "  outer destination: none -> 10.1.0.32",
                  "  outer protocol: none -> 41"}));
}

TEST_F(PipelineTunnel, TheEgressObjectsVlanAndTagCount)
{
    bridged_vlan(300, {6});
    Egress record = *chip.egresses.find(egress);
    record.vlan = 300;
    chip.egresses.set(egress, record);
    EXPECT_EQ(send(5, ip_frame()), "SENT port 6 tagged 300: routed");
    EXPECT_EQ(got(6), wrapped(ip_frame({.ttl = 63}), outer(0, 48, 4, 0x2688), 300));
}

TEST_F(PipelineTunnel, WhatFillsAShortFrameUpStaysOutside)
{
    Bytes frame = ip_frame();
    frame.resize(60);
    EXPECT_EQ(send(5, frame), SENT_6);
    EXPECT_EQ(got(6), wrapped(ip_frame({.ttl = 63}), outer(0, 48, 4, 0x2688)));
}

TEST_F(PipelineTunnel, TheMtuIsThePacketsWithoutTheOuterHeader)
{
    EXPECT_EQ(send(5, ip_frame({.size = 1514})), SENT_6);
    EXPECT_EQ(result.size_on(6), 1534U);
    EXPECT_EQ(send(5, ip_frame({.size = 1515})), "TO CPU: longer than the MTU of the L3 interface");
}

TEST_F(PipelineTunnel, TheLongestFrameHasRoomForTheOuterHeader)
{
    set_mtu(0);
    const Bytes fits = ip_frame({.size = FRAME_MAX - IP4_HEADER});
    EXPECT_EQ(send(5, fits), SENT_6);
    EXPECT_EQ(got(6).size(), FRAME_MAX);
    EXPECT_EQ(send(5, ip_frame({.size = FRAME_MAX - IP4_HEADER + 1})),
              "TO CPU: longer than the MTU of the L3 interface");
    EXPECT_EQ(line(Stage::tunnel), "MISS tunnel 20 index 3 10.1.0.33 -> 10.1.0.32, IPv4 in IPv4; "
                                   "too long for a frame");
}

TEST_F(PipelineTunnel, TtlEndsBeforeTheTunnel)
{
    EXPECT_EQ(send(5, ip_frame({.ttl = 1})), "TO CPU: its TTL ends here");
    EXPECT_EQ(line(Stage::tunnel), "");
}

TEST_F(PipelineTunnel, AnInitiatorThatIsGone)
{
    L3Interface interface = *chip.l3_interfaces.find(20);
    chip.tunnels.remove(20);
    EXPECT_EQ(send(5, ip_frame()), SENT_6);
    EXPECT_EQ(line(Stage::tunnel), "");
    chip.l3_interfaces.set(20, interface);
    chip.tunnels.create(8, {.index = 4, .source_ip = 1, .dest_ip = 2});
    EXPECT_EQ(send(5, ip_frame()),
              "DROPPED: the tunnel initiator of the L3 interface doesn't exist");
    EXPECT_EQ(trace.nearest(), "tunnel of L3 interface 8 (index 4 0.0.0.1 -> 0.0.0.2)");
}

TEST_F(PipelineTunnel, OutOfATrunkByTheInnerFlow)
{
    trunk(4, {6, 9});
    chip.vlans.add_ports(ROUTED_VLAN, {9}, {9});
    chip.egresses.set(egress, {.interface = 20, .mac = OTHER_MAC, .trunk = 4});
    PortSet seen;
    for (int flow = 0; flow < 16; ++flow) {
        send(5, ip_frame({.source_port = flow}));
        seen |= result.untagged;
    }
    EXPECT_EQ(seen, (PortSet{6, 9}));
}

} // namespace simswitch::chip::pipeline
