/*
 * pipeline_frame_test.cpp: what is read in a frame, what is found wrong with it,
 * and the change of a TTL.
 */
#include "chip/pipeline/flow_hash.h"
#include "pipeline_frames.h"

#include <gtest/gtest.h>

namespace simswitch::chip::pipeline
{

namespace
{

Frame read(const Bytes &bytes)
{
    Frame frame;
    parse(bytes, frame);
    return frame;
}

} // namespace

TEST(PipelineFrame, ReadsAnIp4Packet)
{
    const Bytes bytes = ip_frame({.ttl = 9});
    const Frame frame = read(bytes);
    EXPECT_EQ(frame.fault, nullptr);
    EXPECT_EQ(frame.destination, ROUTER_MAC);
    EXPECT_EQ(frame.source, HOST_MAC);
    EXPECT_EQ(frame.payload, Payload::ip4);
    EXPECT_EQ(address_text(false, frame.from), "10.0.0.2");
    EXPECT_EQ(address_text(false, frame.to), "10.9.0.1");
    EXPECT_EQ(frame.ttl, 9);
    EXPECT_EQ(frame.l3_length, 28U);
    EXPECT_EQ(frame.l4, 34U);
}

TEST(PipelineFrame, ReadsTwoTagsAndNoThird)
{
    const Bytes bytes =
        ip_frame({.tags = {0x6064, 7}, .source = "2001:db8::1", .destination = "2001:db8::2"});
    const Frame frame = read(bytes);
    EXPECT_EQ(frame.tags, 2);
    EXPECT_EQ(frame.tag_vlan(), 100);
    EXPECT_EQ(frame.inner, 7);
    EXPECT_EQ(frame.payload, Payload::ip6);
    EXPECT_EQ(address_text(true, frame.to), "2001:db8::2");

    const Bytes three = ip_frame({.tags = {1, 2, 3}});
    EXPECT_EQ(read(three).payload, Payload::other);
}

TEST(PipelineFrame, PaddingIsNotThePacket)
{
    Bytes bytes = ip_frame();
    bytes.resize(60);
    EXPECT_EQ(read(bytes).l3_length, 28U);
    EXPECT_EQ(read(bytes).fault, nullptr);
}

TEST(PipelineFrame, FaultsOfIp4)
{
    const auto fault = [](auto edit) {
        Bytes bytes = ip_frame();
        edit(bytes);
        const Frame frame = read(bytes);
        return std::string(frame.fault == nullptr ? "none" : frame.fault);
    };
    EXPECT_EQ(fault([](Bytes &b) { b.resize(33); }), "IPv4 header cut off");
    EXPECT_EQ(fault([](Bytes &b) { b[14] = 0x55; }), "IPv4 header of another version");
    EXPECT_EQ(fault([](Bytes &b) { b[14] = 0x44; }), "IPv4 header length out of range");
    EXPECT_EQ(fault([](Bytes &b) { b[14] = 0x4f; }), "IPv4 header length out of range");
    EXPECT_EQ(fault([](Bytes &b) { b[17] = 29; }), "IPv4 length doesn't fit the frame");
    EXPECT_EQ(fault([](Bytes &b) { b[17] = 19; }), "IPv4 length doesn't fit the frame");
    EXPECT_EQ(fault([](Bytes &b) { ++b[22]; }), "IPv4 header checksum is wrong");
}

TEST(PipelineFrame, FaultsOfIp6AndOfEthernet)
{
    Bytes six = ip_frame({.source = "2001:db8::1", .destination = "2001:db8::2"});
    six[14] = 0x40;
    EXPECT_STREQ(read(six).fault, "IPv6 header of another version");
    six[14] = 0x60;
    six[19] = 9;
    EXPECT_STREQ(read(six).fault, "IPv6 length doesn't fit the frame");
    six.resize(53);
    EXPECT_STREQ(read(six).fault, "IPv6 header cut off");

    Frame frame;
    EXPECT_FALSE(parse(Bytes(13), frame));
    EXPECT_STREQ(frame.fault, "Ethernet header cut off");
    Bytes tag = plain_frame(TYPE_ARP, {.tags = {5}});
    tag.resize(17);
    EXPECT_FALSE(parse(tag, frame));
    EXPECT_STREQ(frame.fault, "802.1Q tag cut off");
}

TEST(PipelineFrame, EveryCutOfAFrameIsReadWithoutReachingOutside)
{
    const Bytes whole =
        ip_frame({.tags = {100, 7}, .source = "2001:db8::1", .destination = "2001:db8::2"});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(read(cut).fault, nullptr) << size;
    }
}

TEST(PipelineFrame, LaterFragmentsHaveNoPorts)
{
    Bytes bytes = ip_frame();
    bytes[21] = 5; // fragment offset
    fix_checksum(bytes);
    EXPECT_EQ(read(bytes).fault, nullptr);
    EXPECT_EQ(read(bytes).l4, 0U);
}

TEST(PipelineFrame, DecrementKeepsTheChecksumRightForEveryTtl)
{
    for (int ttl = 1; ttl <= 255; ++ttl) {
        Bytes bytes = ip_frame({.destination = "10.255.0.255", .ttl = ttl, .protocol = ttl});
        decrement_ttl(std::span(bytes).subspan(ETHERNET_HEADER));
        const Frame frame = read(bytes);
        ASSERT_EQ(frame.fault, nullptr) << ttl;
        ASSERT_EQ(frame.ttl, ttl - 1);
    }
}

TEST(PipelineFrame, KindsOfGroups)
{
    const Bytes ospf = ip_frame({.to = {1, 0, 0x5e, 0, 0, 5}, .destination = "224.0.0.5"});
    EXPECT_TRUE(read(ospf).is_link_local_multicast());
    const Bytes group = ip_frame({.to = {1, 0, 0x5e, 0, 1, 5}, .destination = "224.0.1.5"});
    EXPECT_FALSE(read(group).is_link_local_multicast());
    EXPECT_TRUE(read(group).is_group());
    const Bytes bpdu = plain_frame(0x27, {.to = {1, 0x80, 0xc2, 0, 0, 0x0f}});
    EXPECT_TRUE(read(bpdu).is_bridge_protocol());
    const Bytes not_bpdu = plain_frame(0x27, {.to = {1, 0x80, 0xc2, 0, 0, 0x10}});
    EXPECT_FALSE(read(not_bpdu).is_bridge_protocol());
    EXPECT_TRUE(read(plain_frame(TYPE_ARP, {.to = BROADCAST})).is_broadcast());
}

TEST(PipelineFrame, NeighbourDiscoveryIsIcmp6Types133To137)
{
    for (const int type : {132, 133, 135, 137, 138}) {
        const Bytes bytes = ip_frame({.source = "fe80::1",
                                      .destination = "ff02::1:ff00:2",
                                      .protocol = PROTOCOL_ICMP6,
                                      .source_port = type << 8});
        EXPECT_EQ(read(bytes).is_neighbour_discovery(), type > 132 && type < 138) << type;
    }
}

TEST(PipelineFrame, AddressesThatAreNotRouted)
{
    const auto reason = [](const char *from, const char *to) {
        const Bytes bytes = ip_frame({.source = from, .destination = to});
        const char *why = not_unicast(read(bytes));
        return std::string(why == nullptr ? "" : why);
    };
    EXPECT_EQ(reason("10.0.0.1", "10.0.0.2"), "");
    EXPECT_EQ(reason("10.0.0.1", "239.1.1.1"), "the destination is a multicast address");
    EXPECT_EQ(reason("10.0.0.1", "255.255.255.255"), "the destination is no unicast address");
    EXPECT_EQ(reason("10.0.0.1", "127.0.0.1"), "the destination is no unicast address");
    EXPECT_EQ(reason("224.0.0.1", "10.0.0.2"), "the source is no unicast address");
    EXPECT_EQ(reason("2001:db8::1", "2001:db8::2"), "");
    EXPECT_EQ(reason("2001:db8::1", "ff0e::2"), "the destination is a multicast address");
    EXPECT_EQ(reason("2001:db8::1", "::1"), "the destination is no unicast address");
    EXPECT_EQ(reason("::", "2001:db8::2"), "the source is no unicast address");
    EXPECT_EQ(reason("fe80::1", "2001:db8::2"), "a link-local address stays on its link");
}

TEST(PipelineFlowHash, AFlowHasOneNumberAndFlowsSpread)
{
    const Bytes bytes = ip_frame();
    // As docs/pipeline.md states it, by hand for this flow.
    std::uint32_t expected = 0x9e3779b9U;
    for (const std::uint32_t word : {0x0a000002U, 0x0a090001U, 17U, 1000U << 16 | 2000U}) {
        expected = (expected ^ word) * 0x85ebca6bU;
        expected ^= expected >> 13;
    }
    expected ^= expected >> 16;
    EXPECT_EQ(flow_hash(read(bytes)), expected);

    const Bytes tagged = ip_frame({.to = OTHER_MAC, .tags = {100}, .ttl = 3});
    EXPECT_EQ(flow_hash(read(tagged)), expected);

    std::array<int, 4> paths{};
    std::array<int, 4> members{};
    for (int port = 0; port < 4000; ++port) {
        const Bytes flow = ip_frame({.source_port = port});
        ++paths.at(path_of(flow_hash(read(flow)), 4));
        ++members.at(member_of(flow_hash(read(flow)), 4));
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(paths.at(i), 1000, 150);
        EXPECT_NEAR(members.at(i), 1000, 150);
    }
}

TEST(PipelineFlowHash, OtherFramesGoByTheirMacs)
{
    const auto hash = [](const Mac &to, const Mac &from) {
        return flow_hash(read(plain_frame(TYPE_ARP, {.to = to, .from = from})));
    };
    EXPECT_EQ(hash(BROADCAST, HOST_MAC), hash(BROADCAST, HOST_MAC));
    EXPECT_NE(hash(BROADCAST, HOST_MAC), hash(BROADCAST, OTHER_MAC));
    EXPECT_NE(hash(BROADCAST, HOST_MAC), hash(ROUTER_MAC, HOST_MAC));
}

} // namespace simswitch::chip::pipeline
