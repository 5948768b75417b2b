/*
 * l3pc_delete_test.cpp: the steps of a port-channel member's delete: what
 * stops it, what only leaves a message, and that a delete that stopped can be
 * tried again.
 *
 * l3pc_road_test.cpp has the road without failures, l3pc_subinterfaces_test.cpp
 * the subinterfaces that a member takes along.
 */
#include "support/member_roads.h"
#include "support/misread.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <utility>

namespace rtifhal_test::l3pc_delete
{

namespace
{

using namespace member_road;

const std::string ENTRY = "rtifhal_trident_del_l3pc";
const std::string STEP = "rtifhal_trident_l3pc_del";
const std::string MEMBER_DELETE = "fwmpd_bcm_trunk_member_delete";
const std::string VLAN_REMOVE = "fwmpd_bcm_vlan_port_remove";
const std::string DISCARD = "fwmpd_bcm_port_discard_set";

Message del_failed(const Lif &member)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to del: {}, 0\n", ENTRY, member.index()));
}

Message rm_failed(const Lif &member)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to rm: {}, 0\n", ENTRY, member.index()));
}

/** The egress step finds no context of the member's own, and says so. */
Message no_context_to_leave(const Lif &member)
{
    return report("rtifhal_l3_egr_delete",
                  "Failed to delete l3lif pd context for intf " + member.index());
}

/** Both members are up. */
class MemberDelete : public MemberTest
{
protected:
    MemberDelete() { both_up(); }

    /** The interface step on the first member. */
    int del(int destroy) { return rtifhal_trident_l3pc_del(first->get(), destroy); }
    /** The calls of the second half, from the trunk on. */
    Calls second_half() const { return calls_of({MEMBER_DELETE, VLAN_REMOVE, DISCARD}); }
    /** Those calls with the codes that they gave. */
    static Calls second_half(int member_code, int vlan_code, int discard_code)
    {
        return {
            fmt::format("{}(0, 8, {}) = {}", MEMBER_DELETE, member_of_trunk(FIRST), member_code),
            fmt::format("{}(0, 4094, {{5}}) = {}", VLAN_REMOVE, vlan_code),
            fmt::format("{}(0, 5, 0) = {}", DISCARD, discard_code),
        };
    }
    void expect_still_programmed() const
    {
        EXPECT_EQ(first->lif.lif_state, 3U);
        EXPECT_EQ(main->lif.lif_state, 3U);
    }
};

} // namespace

TEST_F(MemberDelete, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_del_l3pc(nullptr, 1), -1);
    expect_calls({});
}

TEST_F(MemberDelete, MemberThatIsNotUpIsLeftAlone)
{
    for (const std::uint32_t state : {0U, 4U, 2U, 0x103U}) {
        start();
        first->lif.lif_state = state;
        EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 0);
        expect_calls({});
        expect_messages({trace(ENTRY, "\n" + ENTRY + ": L3LIF: 0x10400000, 1\n")});
        EXPECT_EQ(first->lif.lif_state, state);
    }
}

TEST_F(MemberDelete, StateOfThePortChannelDoesNotCount)
{
    main->lif.lif_state = 4;
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), 0);
    EXPECT_EQ(second_half(), second_half(0, 0, 0));
    EXPECT_EQ(first->lif.lif_state, 4U);
}

TEST_F(MemberDelete, FailedEgressStepStopsWithItsValue)
{
    fail("if_index_get_type", 5);
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 5);
    expect_calls({called::no_type(*first, 5)});
    expect_reports({del_failed(*first)});
    expect_still_programmed();
}

TEST_F(MemberDelete, FailedIngressStepStopsWithItsValue)
{
    fail("if_index_get_type", 5, 2);
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 5);
    EXPECT_EQ(calls().back(), called::no_type(*first, 5));
    expect_reports({no_context_to_leave(*first), del_failed(*first)});
    expect_still_programmed();
}

TEST_F(MemberDelete, IngressStepWithoutARecordStops)
{
    const auto bare = port_channel(7);
    bare->with_bare_context();
    first->lif.main_l3lif = bare->get();
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), -1);
    EXPECT_EQ(calls_of({PORT_CONTROL}), Calls{});
    expect_reports({no_context_to_leave(*first), del_failed(*first)});
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberDelete, FailedInterfaceStepStopsWithItsValue)
{
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 3) = -7");
    expect_reports({
        no_context_to_leave(*first),
        report(STEP, fmt::format("itf get (3) failed: {}\n", _shr_errmsg[7])),
        rm_failed(*first),
    });
    expect_still_programmed();
}

TEST_F(MemberDelete, DeleteThatStoppedCanBeTriedAgain)
{
    fail("bcm_l3_intf_get", -7);
    rtifhal_trident_del_l3pc(first->get(), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), 0);
    EXPECT_EQ(second_half(), second_half(0, 0, 0));
    EXPECT_EQ(first->lif.lif_state, 4U);
}

TEST_F(MemberDelete, ContextThatWentWithAnotherMemberStops)
{
    ASSERT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3pc(second->get(), 1), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({
        no_context_to_leave(*second),
        report("rtifhal_l3_ing_delete",
               "Failed to create l3lif pd context for intf " + main->index()),
        report(STEP, "l3lif_pd_ctxt is NULL\n"),
        rm_failed(*second),
    });
    EXPECT_EQ(second->lif.lif_state, 3U);
    EXPECT_EQ(main->lif.lif_state, 4U);
}

TEST_F(MemberDelete, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_trident_l3pc_del(nullptr, 1), -1);
    expect_calls({});
    expect_messages(
        {trace(STEP, " Entry: - \n"), report(STEP, " Got l3lif or l3lif->main_l3lif as null")});
}

TEST_F(MemberDelete, StepWithoutAPortChannelSaysTheSame)
{
    first->lif.main_l3lif = nullptr;
    EXPECT_EQ(del(1), -1);
    expect_calls({});
    expect_messages(
        {trace(STEP, " Entry: - \n"), report(STEP, " Got l3lif or l3lif->main_l3lif as null")});
}

TEST_F(MemberDelete, EntryWithoutAPortChannelStopsAtTheInterfaceStep)
{
    first->lif.main_l3lif = nullptr;
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), -1);
    expect_reports({
        no_context_to_leave(*first),
        report("rtifhal_l3_ing_delete",
               "Failed to create l3lif pd context for intf " + first->index()),
        report(STEP, " Got l3lif or l3lif->main_l3lif as null"),
        rm_failed(*first),
    });
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberDelete, MemberWithoutAPortIsRefused)
{
    const auto other = tunnel(1);
    other->lif.main_l3lif = main->get();
    EXPECT_EQ(rtifhal_trident_l3pc_del(other->get(), 1), -1);
    expect_calls({called::type(*other, 24)});
    expect_reports({report(STEP, "unable to get itf(" + other->decimal() + ")\n")});
}

TEST_F(MemberDelete, ContextMustBeThere)
{
    const auto none = port_channel(7);
    first->lif.main_l3lif = none->get();
    EXPECT_EQ(del(1), -1);
    expect_calls(join({port_asked(*first, FIRST), Calls{called::unit(), called::intf_init()}}));
    expect_reports({report(STEP, "l3lif_pd_ctxt is NULL\n")});
}

TEST_F(MemberDelete, RecordMissingIsRefusedInSilence)
{
    const auto bare = port_channel(7);
    bare->with_bare_context();
    first->lif.main_l3lif = bare->get();
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({});
}

TEST_F(MemberDelete, ObjectOfAnotherNumberStops)
{
    const MisreadInterface other(4);
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls_of({PORT_CONTROL, MEMBER_DELETE}), Calls{});
    expect_reports({report(STEP, "itf get (3) mismatch\n")});
    EXPECT_NE(main->record(), nullptr);
}

TEST_F(MemberDelete, NumberOfAParkedPortChannelIsZero)
{
    const auto parked = port_channel(7);
    parked->with_parked(IIF);
    first->lif.main_l3lif = parked->get();
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get"}).size(), 1U);
    EXPECT_TRUE(calls().back().starts_with("bcm_l3_intf_get(0, 0) = -"));
}

TEST_F(MemberDelete, AllFiveControlsAreOnOnTheWayOut)
{
    main->properties = {};
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(port_controls(), port_closed(FIRST));
}

/** A port control that the chip refuses with -4, and its message around the id. */
struct RefusedControl {
    std::string name;
    int control;
    std::string before_id;
};

class MemberDeleteRefused : public MemberDelete,
                            public ::testing::WithParamInterface<RefusedControl>
{
protected:
    std::string arguments() const { return fmt::format("0, 5, {}, 1", GetParam().control); }
};

TEST_P(MemberDeleteRefused, StopsBeforeTheObjectAndTheTrunk)
{
    fail_when(PORT_CONTROL, arguments(), -4);
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls().back(), fmt::format("{}({}) = -4", PORT_CONTROL, arguments()));
    expect_reports(
        {report(STEP, fmt::format("{}(3) failed: {}\n", GetParam().before_id, _shr_errmsg[4]))});
    EXPECT_EQ(main->record()->l3intf_id, IIF);
    sw.end_request();
    EXPECT_EQ(sw.chip.trunks.find(TRUNK)->members.size(), 2U);
}

TEST_P(MemberDeleteRefused, PositiveAnswerIsNoRefusal)
{
    fail_when(PORT_CONTROL, arguments(), 1);
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(port_controls().size(), 5U);
    expect_reports({});
}

INSTANTIATE_TEST_SUITE_P(MemberDelete, MemberDeleteRefused,
                         ::testing::Values(RefusedControl{"Ip4", 8, "itf set [IP4] "},
                                           RefusedControl{"Ip4Multicast", 10, "itf set [IP4] "},
                                           RefusedControl{"Ip6", 9, "itf set [IP6] "},
                                           RefusedControl{"Ip6Multicast", 11, "itf set [IP6] "},
                                           RefusedControl{"Mpls", 14, "itf set [MPLS] "}),
                         [](const auto &row) { return row.param.name; });

TEST_F(MemberDelete, RefusedObjectIsSeenByNobody)
{
    fail("rtifhal_bcm_l3_intf_delete", -7);
    EXPECT_EQ(del(1), 0);
    EXPECT_EQ(second_half(), second_half(0, 0, 0));
    expect_reports({});
    EXPECT_EQ(main->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(MemberDelete, RecordThatGoesUnderWayIsReportedOnly)
{
    l3_pd *taken = nullptr;
    sw.journal.arm({.function = PORT_CONTROL, .when = [&](std::string_view arguments) {
                        if (arguments == "0, 5, 14, 1") {
                            taken = std::exchange(main->lif.l3lif_pd_ctxt->l3_pd, nullptr);
                        }
                        return false;
                    }});
    EXPECT_EQ(del(1), 0);
    EXPECT_EQ(second_half(), second_half(0, 0, 0));
    expect_reports(
        {report(STEP, fmt::format("bcm_l3_intf_delete(3) failed: {}\n", _shr_errmsg[1]))});
    main->lif.l3lif_pd_ctxt->l3_pd = taken;
}

TEST_F(MemberDelete, AnyNonzeroDestroyIsOne)
{
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), -2), 0);
    EXPECT_EQ(main->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(MemberDelete, MissingTrunkIdStopsTheSecondHalf)
{
    const auto other = port(9);
    other->with_record(IIF);
    other->lif.int_vlan = 4094;
    first->lif.main_l3lif = other->get();
    EXPECT_EQ(del(0), -1);
    EXPECT_EQ(calls().back(), called::is_port_channel(*other, 0));
    expect_reports({report(STEP, "unable to get tid itf(" + first->decimal() + ")\n")});
}

TEST_F(MemberDelete, MissingTrunkIdStopsAfterTheObjectHasGone)
{
    const auto other = port(9);
    other->with_record(IIF);
    first->lif.main_l3lif = other->get();
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_delete"}).size(), 1U);
    EXPECT_EQ(second_half(), Calls{});
    EXPECT_EQ(other->lif.l3lif_pd_ctxt, nullptr);
}

TEST_F(MemberDelete, RefusedMemberGoesOn)
{
    fail(MEMBER_DELETE, -7);
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), 0);
    EXPECT_EQ(second_half(), second_half(-7, 0, 0));
    expect_reports(
        {no_context_to_leave(*first),
         report(STEP, fmt::format("itf del ({}) failed: {}\n", first->decimal(), _shr_errmsg[7]))});
    EXPECT_EQ(first->lif.lif_state, 4U);
}

TEST_F(MemberDelete, MemberThatAnswersPositivelyIsNoRefusal)
{
    fail(MEMBER_DELETE, 1);
    EXPECT_EQ(del(0), 0);
    expect_reports({});
}

TEST_F(MemberDelete, RefusedVlanPrintsTheTextOfTheMemberAndGoesOn)
{
    fail(VLAN_REMOVE, -4);
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(second_half(), second_half(0, -4, 0));
    expect_reports({
        report("rtifhal_vlan_delete",
               fmt::format("vlan_port(4094, 5) failed: {}\n", _shr_errmsg[4])),
        report(STEP,
               fmt::format("itf vlan enable({}) failed: {}\n", first->decimal(), _shr_errmsg[0])),
    });
}

TEST_F(MemberDelete, RefusedVlanAfterARefusedMemberPrintsThatText)
{
    fail(MEMBER_DELETE, -7);
    fail(VLAN_REMOVE, -4);
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(reports().back(), report(STEP, fmt::format("itf vlan enable({}) failed: {}\n",
                                                         first->decimal(), _shr_errmsg[7])));
}

TEST_F(MemberDelete, RefusedVlanAfterAPositiveMemberPrintsThatText)
{
    fail(MEMBER_DELETE, 3);
    fail(VLAN_REMOVE, -4);
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(reports().back(), report(STEP, fmt::format("itf vlan enable({}) failed: {}\n",
                                                         first->decimal(), _shr_errmsg[19])));
}

TEST_F(MemberDelete, RefusedDiscardIsReportedOnly)
{
    fail(DISCARD, -4);
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(calls().back(), "rtifhal_if_has_si(" + main->index() + ") = 0");
    expect_reports({report(
        STEP, fmt::format("port_discard({}) failed: {}\n", first->decimal(), _shr_errmsg[4]))});
}

TEST_F(MemberDelete, DiscardThatAnswersPositivelyIsNoRefusal)
{
    fail(DISCARD, 1);
    EXPECT_EQ(del(0), 0);
    expect_reports({});
}

TEST_F(MemberDelete, VlanIsThePortChannelsInternalOne)
{
    main->lif.int_vlan = 100;
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(calls_of({VLAN_REMOVE}), Calls{VLAN_REMOVE + "(0, 100, {5}) = 0"});
}

TEST_F(MemberDelete, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 1);
    EXPECT_EQ(del(1), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(1, 3) = -3");
}

} // namespace rtifhal_test::l3pc_delete
