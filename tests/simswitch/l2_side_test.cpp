/*
 * l2_side_test.cpp: what the L2 side does to a switched VLAN through the wrapper
 * layer, from its creation to its end.
 */
#include "chip/snapshot.h"
#include "fwm/wrappers.h"
#include "outcome_matchers.h"
#include "switch.h"

namespace simswitch
{

namespace
{

struct L2Side : testing::Test {
    Switch host;
    fwm::Wrappers &wrappers = host.wrappers;

    const chip::Vlan &vlan(int id = 100) const { return *host.chip.vlans.find(id); }
    int state(int stg, std::size_t port) const { return host.chip.stgs.find(stg)->states.at(port); }
};

} // namespace

TEST_F(L2Side, NewVlanIsInTheChipAtOnceItsControlsAreQueued)
{
    EXPECT_THAT(wrappers.create_vlan(100, {.vrf = 1, .flags = 0x238}), Done());
    EXPECT_EQ(vlan(), chip::Vlan{});
    EXPECT_EQ(wrappers.vlan_controls(100)->vc_flags, 0x238U);
    EXPECT_EQ(wrappers.pending(), 1U);
    host.end_request();
    EXPECT_EQ(vlan().controls, (chip::VlanControls{.vrf = 1, .flags = 0x238}));
    EXPECT_EQ(wrappers.chip_writes(), 2U);
}

TEST_F(L2Side, NewVlanHasNothingOfTheOneBefore)
{
    wrappers.create_vlan(100, {.vrf = 7});
    wrappers.vlan_blocks(100).broadcast.pbits[0] = 0x20;
    const bcm_vlan_block_t *record = &wrappers.vlan_blocks(100);
    wrappers.destroy_vlan(100);
    EXPECT_THAT(wrappers.create_vlan(100), Done());
    EXPECT_EQ(wrappers.vlan_controls(100)->vc_vrf, 0U);
    EXPECT_EQ(wrappers.vlan_blocks(100).broadcast.pbits[0], 0U);
    EXPECT_EQ(&wrappers.vlan_blocks(100), record);
    host.end_request();
    EXPECT_EQ(vlan(), chip::Vlan{});
}

TEST_F(L2Side, WhatWaitsIsWrittenBeforeWhatGoesAtOnce)
{
    wrappers.create_vlan(100);
    wrappers.destroy_vlan(100);
    EXPECT_THAT(wrappers.create_vlan(100), Done());
    ASSERT_EQ(wrappers.own_flushes().size(), 1U);
    EXPECT_EQ(wrappers.own_flushes().front().text, "2 writes");
    EXPECT_THAT(wrappers.set_vlan_stg(100, chip::DEFAULT_STG), Done());
    EXPECT_THAT(wrappers.set_vlan_stg(100, chip::DEFAULT_STG), Done());
    EXPECT_EQ(wrappers.own_flushes().size(), 2U) << "nothing waits, nothing is flushed";
}

TEST_F(L2Side, RefusedVlanChangesNoCache)
{
    wrappers.create_vlan(100, {.vrf = 7});
    wrappers.vlan_blocks(100).broadcast.pbits[0] = 0x20;
    EXPECT_THAT(wrappers.create_vlan(100), Refused(-8, "VLAN 100 exists already"));
    EXPECT_EQ(wrappers.vlan_controls(100)->vc_vrf, 7U);
    EXPECT_EQ(wrappers.vlan_blocks(100).broadcast.pbits[0], 0x20U);
    EXPECT_THAT(wrappers.create_vlan(4096), Refused(-4, "VLAN 4096 is not in 1..4095"));
    EXPECT_EQ(wrappers.chip_writes(), 2U);
    EXPECT_EQ(wrappers.pending(), 0U);
}

TEST_F(L2Side, FullTableRefusesAVlan)
{
    Switch small({.limits = {.vlans = 2}});
    EXPECT_THAT(small.wrappers.create_vlan(100), Done());
    EXPECT_THAT(small.wrappers.create_vlan(101), Refused(-6, "VLAN table full: 2 of 2"));
}

TEST_F(L2Side, VlanMovesBetweenGroups)
{
    int stg = 0;
    host.chip.stgs.create(stg);
    wrappers.create_vlan(100);
    EXPECT_THAT(wrappers.set_vlan_stg(100, stg), Done());
    EXPECT_EQ(vlan().stg, stg);
    EXPECT_THAT(wrappers.set_vlan_stg(100, 9), Refused(-7, "spanning tree group 9 does not exist"));
    EXPECT_THAT(wrappers.set_vlan_stg(101, stg), Refused(-7, "VLAN 101 does not exist"));
    EXPECT_EQ(vlan().stg, stg);
}

TEST_F(L2Side, MembersComeTaggedAndUntagged)
{
    wrappers.create_vlan(100);
    wrappers.add_vlan_ports(100, {5, 6}, {6});
    wrappers.set_untagged_vlan(6, 100);
    host.end_request();
    EXPECT_EQ(vlan().members, (chip::PortSet{5, 6}));
    EXPECT_EQ(vlan().untagged, chip::PortSet{6});
    EXPECT_EQ(host.chip.ports.get(6).untagged_vlan, 100);
}

TEST_F(L2Side, WholeLifeOfAVlanLeavesNothingBehind)
{
    const auto before = chip::snapshot(host.chip);
    int stg = 0;
    host.chip.stgs.create(stg);
    wrappers.create_vlan(100, {.flags = 0x38});
    wrappers.set_vlan_stg(100, stg);
    wrappers.remove_vlan_ports(1, {5});
    wrappers.add_vlan_ports(100, {5}, {5});
    wrappers.set_untagged_vlan(5, 100);
    wrappers.set_stg_state(stg, 5, chip::STP_FORWARDING);
    host.end_request();
    EXPECT_EQ(state(stg, 5), chip::STP_FORWARDING);

    wrappers.remove_vlan_ports(100, {5});
    wrappers.destroy_vlan(100);
    wrappers.add_vlan_ports(1, {5}, {5});
    wrappers.set_untagged_vlan(5, 1);
    host.end_request();
    host.chip.stgs.remove(stg);
    EXPECT_EQ(chip::changes(before, chip::snapshot(host.chip)), std::vector<std::string>{});
    EXPECT_EQ(wrappers.vlan_controls(100)->vc_flags, 0U);
}

TEST_F(L2Side, NothingOfItIsInTheJournal)
{
    wrappers.create_vlan(100);
    wrappers.set_vlan_stg(100, 1);
    wrappers.destroy_vlan(100);
    host.end_request();
    EXPECT_EQ(host.journal.calls(), std::vector<std::string>{});
}

} // namespace simswitch
