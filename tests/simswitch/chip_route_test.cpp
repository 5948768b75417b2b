/*
 * chip_route_test.cpp: egress objects, multipath groups and routes.
 */
#include "chip/routes.h"
#include "outcome_matchers.h"

namespace simswitch::chip
{

namespace
{

struct ChipRoute : testing::Test {
    Egresses egresses{3};
    MultipathGroups groups{1, egresses};
    Routes routes{2, egresses, groups};

    int make_egress(int port)
    {
        int id = 0;
        egresses.create({.interface = 3, .port = port}, id);
        return id;
    }
};

} // namespace

TEST_F(ChipRoute, IdsBeginAt100000And200000)
{
    EXPECT_EQ(make_egress(5), 100000);
    EXPECT_EQ(make_egress(6), 100001);
    int group = 0;
    EXPECT_THAT(groups.create({{100000, 100001}}, group), Done());
    EXPECT_EQ(group, 200000);
    EXPECT_EQ(text(*groups.find(group)), "members 100000 100001");
}

TEST_F(ChipRoute, EgressRefusals)
{
    make_egress(1);
    make_egress(2);
    make_egress(3);
    int untouched = -1;
    EXPECT_THAT(egresses.create({}, untouched), Refused(-6, "egress object table full: 3 of 3"));
    EXPECT_EQ(untouched, -1);
    EXPECT_THAT(egresses.remove(5), Refused(-7, "egress object 5 does not exist"));
    EXPECT_THAT(egresses.set(5, {}), Refused(-7, "egress object 5 does not exist"));
}

TEST_F(ChipRoute, GroupRefusals)
{
    const int egress = make_egress(5);
    int group = -1;
    EXPECT_THAT(groups.create({{}}, group),
                Refused(-4, "number of group members 0 is not in 1..64"));
    EXPECT_THAT(groups.create({std::vector<int>(65, egress)}, group),
                Refused(-4, "number of group members 65 is not in 1..64"));
    EXPECT_THAT(groups.create({{egress, 7}}, group), Refused(-7, "egress object 7 does not exist"));
    EXPECT_EQ(group, -1);
    groups.create({{egress}}, group);
    EXPECT_THAT(groups.create({{egress}}, group),
                Refused(-6, "multipath group table full: 1 of 1"));
    EXPECT_THAT(groups.remove(7), Refused(-7, "multipath group 7 does not exist"));
}

TEST_F(ChipRoute, RemovingAGroupLeavesItsMembers)
{
    const int egress = make_egress(5);
    int group = 0;
    groups.create({{egress}}, group);
    EXPECT_THAT(groups.remove(group), Done());
    EXPECT_NE(egresses.find(egress), nullptr);
}

TEST_F(ChipRoute, SetReplacesTheRouteOfTheSamePrefix)
{
    const RouteKey default_route = ip4_key(1, 0, 0);
    const int first = make_egress(5);
    const int second = make_egress(6);
    EXPECT_THAT(routes.set(default_route, {.next_hop = first}), Done());
    EXPECT_THAT(routes.create(default_route, {.next_hop = second}),
                Refused(-8, "route vrf 1 0.0.0.0/0 exists already"));
    EXPECT_THAT(routes.set(default_route, {.next_hop = second}), Done());
    EXPECT_EQ(routes.size(), 1U);
    EXPECT_EQ(routes.find(default_route)->next_hop, second);
}

TEST_F(ChipRoute, VrfAndFamilyAreDifferentRoutes)
{
    const int egress = make_egress(5);
    const std::array<std::uint8_t, 16> zero{};
    routes.set(ip4_key(1, 0, 0), {.next_hop = egress});
    routes.set(ip6_key(1, zero, zero), {.next_hop = egress});
    EXPECT_EQ(routes.size(), 2U);
    EXPECT_THAT(routes.set(ip4_key(2, 0, 0), {.next_hop = egress}),
                Refused(-6, "route table full: 2 of 2"));
}

TEST_F(ChipRoute, NextHopMustExist)
{
    EXPECT_THAT(routes.set(ip4_key(1, 0, 0), {.next_hop = 7}),
                Refused(-7, "egress object 7 does not exist"));
    EXPECT_THAT(routes.set(ip4_key(1, 0, 0), {.next_hop = 7, .multipath = true}),
                Refused(-7, "multipath group 7 does not exist"));
    EXPECT_THAT(routes.remove(ip4_key(1, 0, 0)),
                Refused(-7, "route vrf 1 0.0.0.0/0 does not exist"));
}

TEST_F(ChipRoute, BitsOutsideTheMaskDontCount)
{
    EXPECT_EQ(ip4_key(1, 0x0a010203, 0xffff0000), ip4_key(1, 0x0a010000, 0xffff0000));
    EXPECT_EQ(text(ip4_key(1, 0x0a010203, 0xffff0000)), "vrf 1 10.1.0.0/16");
    EXPECT_EQ(text(ip4_key(1, 0x0a010203, 0xff00ff00)), "vrf 1 10.0.2.0/255.0.255.0");
}

TEST_F(ChipRoute, Ip6PrefixText)
{
    std::array<std::uint8_t, 16> net{0x20, 0x01, 0x0d, 0xb8};
    std::array<std::uint8_t, 16> mask{0xff, 0xff, 0xff, 0xff};
    EXPECT_EQ(text(ip6_key(1, net, mask)), "vrf 1 2001:db8::/32");
    net = mask = {};
    EXPECT_EQ(text(ip6_key(1, net, mask)), "vrf 1 ::/0");
}

} // namespace simswitch::chip
