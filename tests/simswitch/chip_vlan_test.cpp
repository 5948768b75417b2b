/*
 * chip_vlan_test.cpp: VLANs and spanning tree groups.
 */
#include "chip/stgs.h"
#include "outcome_matchers.h"

#include <gmock/gmock.h>

#include <map>

namespace simswitch::chip
{

namespace
{

struct ChipVlan : testing::Test {
    Vlans vlans{4095};
    Stgs stgs{256, vlans};

    int state(int stg, std::size_t port) const { return stgs.find(stg)->states.at(port); }
};

} // namespace

TEST_F(ChipVlan, VlanOneExistsAtBootWithAllPorts)
{
    EXPECT_EQ(vlans.size(), 1U);
    EXPECT_EQ(vlans.find(1)->members.text(), "{0-104}");
    EXPECT_EQ(vlans.find(1)->untagged, PortSet::front());
    EXPECT_EQ(vlans.find(1)->stg, DEFAULT_STG);
}

TEST_F(ChipVlan, NewVlanIsEmptyAndInTheDefaultGroup)
{
    EXPECT_THAT(vlans.create(100), Done());
    EXPECT_EQ(*vlans.find(100), Vlan{});
    EXPECT_EQ(stgs.vlans_of(DEFAULT_STG), (std::vector<int>{1, 100}));
}

TEST_F(ChipVlan, IdsAre1To4095)
{
    EXPECT_THAT(vlans.create(4095), Done());
    EXPECT_THAT(vlans.create(0), Refused(-4, "VLAN 0 is not in 1..4095"));
    EXPECT_THAT(vlans.create(4096), Refused(-4, "VLAN 4096 is not in 1..4095"));
    EXPECT_THAT(vlans.set_controls(4096, {}), Refused(-4, "VLAN 4096 is not in 1..4095"));
}

TEST_F(ChipVlan, ExistingVlanIsRefused)
{
    vlans.create(100);
    vlans.set_controls(100, {.flags = 7});
    EXPECT_THAT(vlans.create(100), Refused(-8, "VLAN 100 exists already"));
    EXPECT_EQ(vlans.find(100)->controls.flags, 7U);
}

TEST_F(ChipVlan, FullTableRefuses)
{
    Vlans small(2);
    EXPECT_THAT(small.create(2), Done());
    EXPECT_THAT(small.create(3), Refused(-6, "VLAN table full: 2 of 2"));
}

TEST_F(ChipVlan, UnknownVlanIsRefusedByEverySetter)
{
    const auto refused = Refused(-7, "VLAN 100 does not exist");
    VlanControls controls;
    EXPECT_THAT(vlans.remove(100), refused);
    EXPECT_THAT(vlans.add_ports(100, {5}, {}), refused);
    EXPECT_THAT(vlans.remove_ports(100, {5}), refused);
    EXPECT_THAT(vlans.set_controls(100, {}), refused);
    EXPECT_THAT(vlans.set_blocks(100, {}), refused);
    EXPECT_THAT(vlans.get_controls(100, controls), refused);
}

TEST_F(ChipVlan, PortsLeaveTaggedUnlessNamedUntagged)
{
    vlans.create(100);
    vlans.add_ports(100, {0, 5, 6}, {5, 7});
    EXPECT_EQ(vlans.find(100)->members, (PortSet{0, 5, 6}));
    EXPECT_EQ(vlans.find(100)->untagged, PortSet{5});
    vlans.add_ports(100, {5}, {});
    EXPECT_TRUE(vlans.find(100)->untagged.empty());
}

TEST_F(ChipVlan, RemovingAPortThatIsNoMemberIsNoFailure)
{
    vlans.create(100);
    vlans.add_ports(100, {5, 6}, {5});
    EXPECT_THAT(vlans.remove_ports(100, {5, 7}), Done());
    EXPECT_EQ(vlans.find(100)->members, PortSet{6});
    EXPECT_TRUE(vlans.find(100)->untagged.empty());
}

TEST_F(ChipVlan, ControlsAndMasksGoWithTheVlan)
{
    vlans.create(100);
    vlans.set_controls(100, {.vrf = 3, .rest = {1, 2}});
    vlans.set_blocks(100, {.broadcast = {5}});
    EXPECT_EQ(vlans.find(100)->controls.rest.at(1), 2U);
    vlans.remove(100);
    vlans.create(100);
    EXPECT_EQ(*vlans.find(100), Vlan{});
}

TEST_F(ChipVlan, TextShowsAllOfAVlan)
{
    vlans.create(100);
    vlans.add_ports(100, {5}, {5});
    EXPECT_EQ(text(*vlans.find(100)),
              "stg 1 members {5} untagged {5} controls vrf 0 iif 0 flags 0x0 class 0 urpf 0 "
              "blocks kmc {} umc {} uuc {} bc {}");
}

TEST_F(ChipVlan, GroupOneForwardsAtBootAndNewGroupsAreDisabled)
{
    int stg = 0;
    EXPECT_THAT(stgs.create(stg), Done());
    EXPECT_EQ(stg, 2);
    EXPECT_EQ(state(1, 104), STP_FORWARDING);
    EXPECT_EQ(state(1, 105), STP_DISABLED);
    EXPECT_EQ(state(2, 5), STP_DISABLED);
}

TEST_F(ChipVlan, GroupZeroIsThereAtBootAndForwardsWithoutAVlan)
{
    ASSERT_NE(stgs.find(0), nullptr);
    EXPECT_EQ(text(*stgs.find(0)), "forwarding {0-104} blocking {} listening {} learning {}");
    EXPECT_EQ(state(0, 105), STP_DISABLED);
    EXPECT_EQ(stgs.vlans_of(0), std::vector<int>{});
    EXPECT_EQ(stgs.size(), 2U);
}

TEST_F(ChipVlan, GroupZeroStays)
{
    vlans.create(100);
    stgs.add_vlan(0, 100);
    EXPECT_THAT(stgs.remove(0), Refused(-4, "spanning tree group 0 is the chip's own and stays"));
    EXPECT_EQ(stgs.vlans_of(0), std::vector<int>{100});
}

TEST_F(ChipVlan, VlanInGroupZeroForwardsOnItsPorts)
{
    vlans.create(100);
    vlans.add_ports(100, {5}, {});
    EXPECT_THAT(stgs.add_vlan(0, 100), Done());
    EXPECT_EQ(vlans.find(100)->stg, 0);
    EXPECT_EQ(state(vlans.find(100)->stg, 5), STP_FORWARDING);
    EXPECT_THAT(stgs.set_state_of_port(5, STP_BLOCKING), Done());
    EXPECT_EQ(state(0, 5), STP_BLOCKING);
    EXPECT_THAT(stgs.set_state(0, 5, STP_FORWARDING), Done());
    EXPECT_EQ(state(0, 5), STP_FORWARDING);
    EXPECT_THAT(stgs.add_vlan(1, 100), Done());
    EXPECT_EQ(stgs.vlans_of(0), std::vector<int>{});
}

TEST_F(ChipVlan, GroupZeroTakesNoPlaceInTheTable)
{
    Stgs small(3, vlans);
    int stg = -1;
    EXPECT_THAT(small.create(stg), Done());
    EXPECT_EQ(stg, 2);
    EXPECT_THAT(small.create(stg), Done());
    EXPECT_EQ(stg, 3);
    EXPECT_THAT(small.create(stg), Refused(-6, "spanning tree group table full: 3 of 3"));
    EXPECT_EQ(stg, 3);
    EXPECT_THAT(small.remove(2), Done());
    EXPECT_THAT(small.create(stg), Done());
    EXPECT_EQ(stg, 2);
}

TEST_F(ChipVlan, CopyOfTheGroupsBringsGroupZeroBack)
{
    stgs.set_state(0, 5, STP_BLOCKING);
    const auto copy = stgs.all();
    stgs.clear();
    EXPECT_EQ(stgs.find(0), nullptr);
    for (const auto &[id, record] : copy) {
        EXPECT_THAT(stgs.restore(id, record), Done());
    }
    EXPECT_EQ(stgs.all(), copy);
    EXPECT_THAT(stgs.restore(-1, {}), Refused(-4, "spanning tree group -1 is not in 0..256"));
    EXPECT_THAT(stgs.restore(257, {}), Refused(-4, "spanning tree group 257 is not in 0..256"));
    int stg = 0;
    EXPECT_THAT(stgs.create(stg), Done());
    EXPECT_EQ(stg, 2);
}

TEST_F(ChipVlan, VlanMovesBetweenGroups)
{
    int stg = 0;
    stgs.create(stg);
    vlans.create(100);
    EXPECT_THAT(stgs.add_vlan(stg, 100), Done());
    EXPECT_EQ(vlans.find(100)->stg, stg);
    EXPECT_EQ(stgs.vlans_of(DEFAULT_STG), std::vector<int>{1});
    EXPECT_THAT(stgs.remove(stg), Done());
    EXPECT_EQ(vlans.find(100)->stg, DEFAULT_STG);
}

TEST_F(ChipVlan, GroupRefusals)
{
    Stgs small(1, vlans);
    int stg = -1;
    EXPECT_THAT(small.create(stg), Refused(-6, "spanning tree group table full: 1 of 1"));
    EXPECT_EQ(stg, -1);
    EXPECT_THAT(stgs.add_vlan(9, 1), Refused(-7, "spanning tree group 9 does not exist"));
    EXPECT_THAT(stgs.add_vlan(1, 100), Refused(-7, "VLAN 100 does not exist"));
    EXPECT_THAT(stgs.remove(9), Refused(-7, "spanning tree group 9 does not exist"));
    EXPECT_THAT(stgs.remove(1),
                Refused(-4, "spanning tree group 1 is the default group and stays"));
    EXPECT_THAT(stgs.set_state(9, 5, 4), Refused(-7, "spanning tree group 9 does not exist"));
    EXPECT_THAT(stgs.set_state(1, 256, 4), Refused(-4, "port 256 is not in 0..255"));
    EXPECT_THAT(stgs.set_state(1, 5, 5), Refused(-4, "spanning tree state 5 is not in 0..4"));
}

TEST_F(ChipVlan, PortStateGoesToTheGroupsOfThePortsVlans)
{
    int routed = 0;
    int other = 0;
    stgs.create(routed);
    stgs.create(other);
    vlans.create(4094);
    stgs.add_vlan(routed, 4094);
    vlans.add_ports(4094, {5}, {5});
    vlans.remove_ports(1, {5});
    EXPECT_THAT(stgs.set_state_of_port(5, STP_BLOCKING), Done());
    EXPECT_EQ(state(routed, 5), STP_BLOCKING);
    EXPECT_EQ(state(other, 5), STP_DISABLED);
    EXPECT_EQ(state(DEFAULT_STG, 5), STP_FORWARDING);
}

namespace
{

/** What Vlans::groups_of_port says, found by a look at each VLAN. */
std::map<int, int> counted_groups(const Vlans &vlans, int port)
{
    std::map<int, int> groups;
    for (const auto &[id, vlan] : vlans.all()) {
        if (vlan.members.has(port)) {
            ++groups[vlan.stg];
        }
    }
    return groups;
}

MATCHER(CountsItsGroups, "")
{
    for (int port = 0; port <= LAST_PORT; ++port) {
        if (arg.groups_of_port(port) != counted_groups(arg, port)) {
            *result_listener << "port " << port;
            return false;
        }
    }
    return true;
}

} // namespace

TEST_F(ChipVlan, GroupsOfAPortFollowItsVlans)
{
    EXPECT_THAT(vlans, CountsItsGroups()) << "at boot";
    vlans.create(100);
    vlans.create(101);
    vlans.add_ports(100, {1, 2, 255}, {});
    vlans.add_ports(101, {2, 3}, {2});
    EXPECT_THAT(vlans, CountsItsGroups()) << "joined";
    int stg = 0;
    stgs.create(stg);
    stgs.add_vlan(stg, 100);
    EXPECT_THAT(vlans, CountsItsGroups()) << "moved";
    EXPECT_EQ(vlans.groups_of_port(2), (std::map<int, int>{{DEFAULT_STG, 2}, {stg, 1}}));
    vlans.add_ports(100, {1, 4}, {4});
    vlans.remove_ports(100, {2, 3});
    EXPECT_THAT(vlans, CountsItsGroups()) << "some joined again, some never were in";
    stgs.remove(stg);
    EXPECT_THAT(vlans, CountsItsGroups()) << "its group is gone";
    vlans.remove(100);
    EXPECT_THAT(vlans, CountsItsGroups()) << "removed";
    const auto before = vlans.all();
    vlans.clear();
    EXPECT_THAT(vlans, CountsItsGroups()) << "cleared";
    for (const auto &[id, vlan] : before) {
        vlans.restore(id, vlan);
    }
    EXPECT_THAT(vlans, CountsItsGroups()) << "restored";
    EXPECT_EQ(vlans.groups_of_port(3), (std::map<int, int>{{DEFAULT_STG, 2}}));
}

} // namespace simswitch::chip
