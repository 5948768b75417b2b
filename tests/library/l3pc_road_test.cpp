/*
 * l3pc_road_test.cpp: the whole road of a routed port-channel's members: the
 * first comes up and brings the trunk and the L3 interface, the second joins,
 * one goes, the last one goes and takes the interface with it. Every call and
 * every message, on both chips.
 *
 * l3pc_add_test.cpp, l3pc_trunk_test.cpp and l3pc_delete_test.cpp have the
 * single steps, l3pc_subinterfaces_test.cpp the replay of subinterfaces.
 */
#include "support/l3port_roads.h"
#include "support/member_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <fwm/state.h>
#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::l3pc_road
{

namespace
{

using namespace member_road;

class MemberRoad : public MemberTest
{
};

class MemberRoadOnTrident2 : public MemberTest
{
protected:
    MemberRoadOnTrident2() : MemberTest({.chip = Kind::trident2}) {}
};

} // namespace

TEST_F(MemberRoad, FirstUpMakesEveryCall)
{
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_calls(first_up(*main, *first, Kind::trident, ordinary_start()));
}

TEST_F(MemberRoad, FirstUpLeavesEveryMessage)
{
    rtifhal_trident_add_l3pc(first->get(), 1);
    expect_messages(first_up_messages(*main, *first, Kind::trident));
}

TEST_F(MemberRoadOnTrident2, FirstUpMakesEveryCall)
{
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_calls(first_up(*main, *first, Kind::trident2, ordinary_start()));
}

TEST_F(MemberRoadOnTrident2, FirstUpLeavesTheSameMessages)
{
    rtifhal_trident_add_l3pc(first->get(), 1);
    expect_messages(first_up_messages(*main, *first, Kind::trident2));
}

TEST_F(MemberRoad, FirstUpFillsBothRecords)
{
    rtifhal_trident_add_l3pc(first->get(), 1);
    EXPECT_EQ(first->lif.lif_state, 3U);
    EXPECT_EQ(first->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(first->lif.int_vlan, 0);
    EXPECT_EQ(first->lif.tid, 0U);
    EXPECT_EQ(main->lif.lif_state, 3U);
    EXPECT_EQ(main->lif.int_vlan, 4094);
    EXPECT_EQ(main->lif.tid, 8U);
    EXPECT_EQ(main->record()->l3intf_id, IIF);
}

TEST_F(MemberRoad, FirstUpIsInTheChipAfterTheRequest)
{
    brought_up(*first, 1);
    const simswitch::chip::Trunk *trunk = sw.chip.trunks.find(TRUNK);
    ASSERT_NE(trunk, nullptr);
    EXPECT_EQ(trunk->psc, 9);
    ASSERT_EQ(trunk->members.size(), 1U);
    EXPECT_EQ(trunk->members[0].gport, 0x8000005);
    EXPECT_EQ(sw.chip.ports.get(FIRST).untagged_vlan, 4094);
    EXPECT_EQ(sw.chip.ports.control(FIRST, 67), IIF);
    EXPECT_NE(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(4094)->members.text(), "{0,5}");
}

TEST_F(MemberRoad, FirstUpOnAFastRestartPublishesTheMemberAndServesDefaultRoutes)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_calls(first_up(*main, *first, Kind::trident, l3port_road::fast_restart(*first)));
}

TEST_F(MemberRoad, RestoreModeProgramsAMemberLikeAnyStart)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_trunk_member_add", "rtifhal_bcm_l3_intf_create"}).size(), 2U);
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberRoad, SecondUpMakesEveryCall)
{
    brought_up(*first, 1);
    EXPECT_EQ(rtifhal_trident_add_l3pc(second->get(), 0), 0);
    expect_calls(second_up(*main, *second, Kind::trident));
    EXPECT_EQ(second->lif.lif_state, 3U);
}

TEST_F(MemberRoad, SecondUpLeavesEveryMessageAndNoReport)
{
    brought_up(*first, 1);
    rtifhal_trident_add_l3pc(second->get(), 0);
    expect_messages(second_up_messages(*main, *second, Kind::trident));
    expect_reports({});
}

TEST_F(MemberRoadOnTrident2, SecondUpMakesEveryCall)
{
    brought_up(*first, 1);
    EXPECT_EQ(rtifhal_trident_add_l3pc(second->get(), 0), 0);
    expect_calls(second_up(*main, *second, Kind::trident2));
}

TEST_F(MemberRoadOnTrident2, SecondUpLeavesTheSameMessages)
{
    brought_up(*first, 1);
    rtifhal_trident_add_l3pc(second->get(), 0);
    expect_messages(second_up_messages(*main, *second, Kind::trident2));
}

TEST_F(MemberRoad, SecondDownMakesEveryCall)
{
    both_up();
    EXPECT_EQ(rtifhal_trident_del_l3pc(second->get(), 0), 0);
    expect_calls(down(*main, *second, SECOND, Kind::trident, false));
    EXPECT_EQ(second->lif.lif_state, 4U);
    EXPECT_EQ(main->lif.lif_state, 4U);
    EXPECT_EQ(main->record()->l3intf_id, IIF);
    EXPECT_EQ(main->record()->brcm_prog_complete, 0U);
}

TEST_F(MemberRoad, SecondDownLeavesEveryMessage)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    expect_messages(down_messages(*main, *second, SECOND, false));
}

TEST_F(MemberRoadOnTrident2, SecondDownMakesEveryCall)
{
    both_up();
    EXPECT_EQ(rtifhal_trident_del_l3pc(second->get(), 0), 0);
    expect_calls(down(*main, *second, SECOND, Kind::trident2, false));
}

TEST_F(MemberRoadOnTrident2, SecondDownLeavesTheSameMessages)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    expect_messages(down_messages(*main, *second, SECOND, false));
}

TEST_F(MemberRoad, LastDownMakesEveryCall)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 0);
    expect_calls(down(*main, *first, FIRST, Kind::trident, true));
    EXPECT_EQ(first->lif.lif_state, 4U);
    EXPECT_EQ(main->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
}

TEST_F(MemberRoad, LastDownLeavesEveryMessage)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    start();
    rtifhal_trident_del_l3pc(first->get(), 1);
    expect_messages(down_messages(*main, *first, FIRST, true));
}

TEST_F(MemberRoadOnTrident2, LastDownMakesEveryCall)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 0);
    expect_calls(down(*main, *first, FIRST, Kind::trident2, true));
    start();
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(MemberRoadOnTrident2, LastDownLeavesTheSameMessages)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    start();
    rtifhal_trident_del_l3pc(first->get(), 1);
    expect_messages(down_messages(*main, *first, FIRST, true));
}

TEST_F(MemberRoad, TrunkStaysWithoutMembers)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    rtifhal_trident_del_l3pc(first->get(), 1);
    sw.end_request();
    const simswitch::chip::Trunk *trunk = sw.chip.trunks.find(TRUNK);
    ASSERT_NE(trunk, nullptr);
    EXPECT_TRUE(trunk->members.empty());
}

TEST_F(MemberRoad, FirstUpAgainFindsTheTrunkAndReportsThat)
{
    brought_up(*first, 1);
    rtifhal_trident_del_l3pc(first->get(), 1);
    start();
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_reports(
        {report("rtifhal_alloc_l3pc_add",
                fmt::format("bcm_trunk_get(unit=0, tid=8) failed: {}\n", _shr_errmsg[0]))});
    // The number of before is held back as long as there are others.
    EXPECT_EQ(main->record()->l3intf_id, IIF + 1);
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberRoad, PortThatGoesIsUntiedAndTheOtherStaysTied)
{
    both_up();
    rtifhal_trident_del_l3pc(second->get(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.control(FIRST, 67), IIF);
    EXPECT_EQ(sw.chip.ports.control(SECOND, 67), 0);
}

} // namespace rtifhal_test::l3pc_road
