/*
 * pipeline_index_test.cpp: the tries of the routes and the stations by MAC,
 * each against the table that it is made from.
 */
#include "chip/pipeline/route_index.h"
#include "chip/pipeline/station_index.h"
#include "outcome_matchers.h"
#include "pipeline_frames.h"

namespace simswitch::chip::pipeline
{

namespace
{

struct PipelineRoutes : testing::Test {
    Egresses egresses{100};
    MultipathGroups groups{10, egresses};
    Routes routes{5000, egresses, groups};
    RouteIndex index;

    PipelineRoutes()
    {
        int id = 0;
        egresses.create({}, id);
    }
    static RouteKey key(int vrf, const std::string &net, int length)
    {
        Address mask{};
        for (int bit = 0; bit < length; ++bit) {
            mask.at(static_cast<std::size_t>(bit / 8)) |=
                static_cast<std::uint8_t>(0x80 >> (bit % 8));
        }
        RouteKey key = ip6_key(vrf, address(net), mask);
        key.ip6 = net.find(':') != std::string::npos;
        return key;
    }
    void add(int vrf, const std::string &net, int length)
    {
        EXPECT_THAT(routes.create(key(vrf, net, length), {.next_hop = FIRST_EGRESS}), Done());
    }
    std::string find(int vrf, const std::string &to)
    {
        index.refresh(routes);
        const FoundRoute *found = index.find(vrf, to.find(':') != std::string::npos, address(to));
        return found == nullptr ? "none" : text(found->key);
    }
    /** The longest match by asking every route. */
    const RouteKey *slow_find(int vrf, const Address &to) const
    {
        const RouteKey *best = nullptr;
        for (const auto &[key, route] : routes.all()) {
            if (key.vrf == vrf && !key.ip6 && prefix_length(key) >= 0 &&
                common_bits(false, key.net, to) >= prefix_length(key) &&
                (best == nullptr || prefix_length(key) > prefix_length(*best))) {
                best = &key;
            }
        }
        return best;
    }
};

} // namespace

TEST_F(PipelineRoutes, TheLongestPrefixWins)
{
    add(1, "0.0.0.0", 0);
    add(1, "10.0.0.0", 8);
    add(1, "10.1.0.0", 15);
    add(1, "10.1.2.0", 23);
    add(1, "10.1.2.3", 32);
    EXPECT_EQ(find(1, "10.1.2.3"), "vrf 1 10.1.2.3/32");
    EXPECT_EQ(find(1, "10.1.3.255"), "vrf 1 10.1.2.0/23");
    EXPECT_EQ(find(1, "10.0.255.255"), "vrf 1 10.0.0.0/15");
    EXPECT_EQ(find(1, "10.2.0.0"), "vrf 1 10.0.0.0/8");
    EXPECT_EQ(find(1, "11.0.0.0"), "vrf 1 0.0.0.0/0");
}

TEST_F(PipelineRoutes, VrfsAndFamiliesAreApart)
{
    add(1, "10.0.0.0", 8);
    add(2, "0.0.0.0", 0);
    add(1, "2001:db8::", 33);
    add(1, "2001:db8::5", 128);
    EXPECT_EQ(find(2, "10.1.1.1"), "vrf 2 0.0.0.0/0");
    EXPECT_EQ(find(3, "10.1.1.1"), "none");
    EXPECT_EQ(find(1, "2001:db8::6"), "vrf 1 2001:db8::/33");
    EXPECT_EQ(find(1, "2001:db8::5"), "vrf 1 2001:db8::5/128");
    EXPECT_EQ(find(1, "2001:db8:8000::"), "none");
}

TEST_F(PipelineRoutes, FollowsTheTable)
{
    EXPECT_EQ(find(1, "10.1.1.1"), "none");
    add(1, "10.0.0.0", 8);
    EXPECT_EQ(find(1, "10.1.1.1"), "vrf 1 10.0.0.0/8");
    EXPECT_THAT(routes.remove(key(1, "10.0.0.0", 8)), Done());
    EXPECT_EQ(find(1, "10.1.1.1"), "none");
    add(1, "10.0.0.0", 9);
    routes.clear();
    EXPECT_EQ(find(1, "10.1.1.1"), "none");
}

TEST_F(PipelineRoutes, AMaskWithAHoleNeverMatches)
{
    EXPECT_THAT(routes.create(ip4_key(1, 0x0a000001, 0xff0000ff), {.next_hop = FIRST_EGRESS}),
                Done());
    EXPECT_EQ(find(1, "10.0.0.1"), "none");
    EXPECT_EQ(index.size(), 0U);
}

TEST_F(PipelineRoutes, RandomTablesAnswerAsAskingEveryRoute)
{
    Numbers random(7);
    for (int i = 0; i < 2000; ++i) {
        const auto length = random() % 33;
        const std::uint32_t mask = length == 0 ? 0 : ~0U << (32 - length);
        // Few distinct bits, so that prefixes lie within each other.
        routes.set(ip4_key(1, random() & 0x0303070f, mask), {.next_hop = FIRST_EGRESS});
    }
    index.refresh(routes);
    for (int i = 0; i < 3000; ++i) {
        const std::uint32_t to = random() & 0x0303070f;
        const Address address = ip4_key(1, to, ~0U).net;
        const FoundRoute *found = index.find(1, false, address);
        const RouteKey *expected = slow_find(1, address);
        ASSERT_EQ(found == nullptr, expected == nullptr);
        if (found != nullptr) {
            ASSERT_EQ(text(found->key), text(*expected));
        }
    }
}

TEST(PipelinePrefix, LengthsOfMasks)
{
    EXPECT_EQ(prefix_length(ip4_key(1, 0, 0)), 0);
    EXPECT_EQ(prefix_length(ip4_key(1, 0, 0xffff8000)), 17);
    EXPECT_EQ(prefix_length(ip4_key(1, 0, 0xffffffff)), 32);
    EXPECT_EQ(prefix_length(ip4_key(1, 0, 0xfffe8000)), -1);
    EXPECT_EQ(prefix_length(ip4_key(1, 0, 0x00ff0000)), -1);
    EXPECT_EQ(common_bits(false, address("10.0.0.0"), address("10.0.128.0")), 16);
    EXPECT_EQ(common_bits(true, address("2001:db8::"), address("2001:db8::")), 128);
}

TEST(PipelineStations, AnswersAsTheTable)
{
    Stations stations(400);
    StationIndex index;
    Numbers random(3);
    const auto mac = [&random] {
        return Mac{0, 0, 0, 0, 0, static_cast<std::uint8_t>(random() % 4)};
    };
    for (int i = 0; i < 300; ++i) {
        Station station{.flags = 0x1c, .mac = mac(), .mac_mask = BROADCAST};
        station.vlan = static_cast<std::uint16_t>(random() % 8);
        station.vlan_mask = random() % 3 == 0 ? 0 : 0xfff;
        station.src_port = static_cast<int>(random() % 8);
        station.src_port_mask = random() % 3 == 0 ? 0 : 127;
        if (random() % 4 == 0) {
            station.mac_mask.at(5) = 1;
        }
        int id = 0;
        ASSERT_THAT(stations.create(station, id), Done());
    }
    for (int round = 0; round < 50; ++round) {
        stations.remove(static_cast<int>(1 + random() % 300));
        index.refresh(stations);
        for (int i = 0; i < 40; ++i) {
            const Mac to = mac();
            const auto vlan = static_cast<std::uint16_t>(random() % 9);
            const auto port = static_cast<int>(random() % 9);
            const FoundStation *found = index.match(to, vlan, port);
            const std::optional<int> expected = stations.match(to, vlan, port);
            ASSERT_EQ(found == nullptr ? 0 : found->id, expected.value_or(0));
        }
    }
}

} // namespace simswitch::chip::pipeline
