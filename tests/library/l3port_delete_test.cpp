/*
 * l3port_delete_test.cpp: the steps of a routed port's delete: what stops the
 * interface step, what only leaves a message, and that the entry point never
 * fails.
 *
 * l3port_road_test.cpp has the road without failures.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/misread.h"
#include "support/vlan_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <utility>

namespace rtifhal_test::l3port_delete
{

namespace
{

constexpr int PORT = 5;

const std::string ENTRY = "rtifhal_trident_del_l3port";
const std::string STEP = "rtifhal_trident_l3port_del";
const std::string PORT_CONTROL = "fwmpd_bcm_port_control_set";
const std::string DISCARD_NOTHING = "fwmpd_bcm_port_discard_set(0, 5, 0) = 0";

Message del_failed(const Lif &lif)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to del: {}, 0\n", ENTRY, lif.index()));
}

Message rm_failed(const Lif &lif)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to rm: {}, 0\n", ENTRY, lif.index()));
}

class L3PortDelete : public LibraryTest
{
protected:
    /** A port that is up with the number 3. */
    L3PortDelete()
    {
        l3iif_table_init();
        rtifhal_trident_add_l3port(lif->get(), 1);
        sw.end_request();
        start();
    }
    /** The port is down, its record kept. */
    void parked()
    {
        ASSERT_EQ(rtifhal_trident_del_l3port(lif->get(), 0), 0);
        sw.end_request();
        start();
    }

    std::unique_ptr<Lif> lif = port(PORT);
};

} // namespace

TEST_F(L3PortDelete, NoInterfaceIsASuccessWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_del_l3port(nullptr, 1), 0);
    expect_calls({});
}

TEST_F(L3PortDelete, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_trident_l3port_del(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: destroy - 1\n"),
                     report(STEP, " Got l3lif as or l3lif_pd_ctxt null")});
}

TEST_F(L3PortDelete, StepWithoutAContextSaysTheSame)
{
    const auto other = port(6);
    EXPECT_EQ(rtifhal_trident_l3port_del(other->get(), 1), -1);
    expect_calls({called::unit()});
    expect_reports({report(STEP, " Got l3lif as or l3lif_pd_ctxt null")});
}

TEST_F(L3PortDelete, StepWithoutARecordIsRefusedInSilence)
{
    const auto other = port(6);
    other->with_bare_context();
    EXPECT_EQ(rtifhal_trident_l3port_del(other->get(), 1), -1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get", PORT_CONTROL}), Calls{});
    expect_reports({});
}

TEST_F(L3PortDelete, InterfaceWithoutAPortIsRefused)
{
    const auto other = tunnel(1);
    other->with_record(7);
    EXPECT_EQ(rtifhal_trident_l3port_del(other->get(), 1), -1);
    expect_calls({called::unit(), called::type(*other, 24)});
    expect_reports({report(STEP, "unable to get itf(" + other->decimal() + ")\n")});
}

TEST_F(L3PortDelete, MainInterfaceStandsInTheTrace)
{
    const auto main = port(9);
    lif->lif.main_l3lif = main->get();
    rtifhal_trident_l3port_del(lif->get(), 1);
    EXPECT_EQ(messages().at(1), trace(STEP, fmt::format("ifindex = {} main {} destroy = 1\n",
                                                        lif->hex(), main->hex())));
}

TEST_F(L3PortDelete, ObjectThatCantBeReadStopsBeforeThePort)
{
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 3) = -7");
    expect_reports(
        {report(STEP, fmt::format("itf get ({}) failed: {}\n", lif->decimal(), _shr_errmsg[7]))});
}

TEST_F(L3PortDelete, ObjectOfAnotherNumberStopsBeforeThePort)
{
    const MisreadInterface other(4);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({PORT_CONTROL, "rtifhal_bcm_l3_intf_delete"}), Calls{});
    expect_reports({report(STEP, "itf get (3) mismatch\n")});
    EXPECT_EQ(lif->record()->l3intf_id, 3);
}

TEST_F(L3PortDelete, QueueIsFlushedOnTheParkedRoadToo)
{
    parked();
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    const Calls before_the_port = calls_after(calls(), called::intf_init());
    EXPECT_EQ(Calls(before_the_port.begin(), before_the_port.begin() + 2),
              (Calls{called::flush(), "fwmpd_bcm_port_control_set(0, 5, 8, 1) = 0"}));
    EXPECT_EQ(calls_of({"bcm_l3_intf_get", "rtifhal_bcm_l3_intf_delete"}), Calls{});
    EXPECT_EQ(messages().at(2), trace(STEP, "brcm_prog_complete = 1, l3intf_id = 0\n"));
    EXPECT_EQ(messages().at(3), trace(STEP, "Using prev_l3_if_index 3\n"));
}

TEST_F(L3PortDelete, ParkedNumberIsHeldBack)
{
    parked();
    rtifhal_trident_l3port_del(lif->get(), 1);
    EXPECT_TRUE(held_back(3));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

namespace
{

/** A port control that the chip refuses with -4, and its message around the id. */
struct RefusedControl {
    std::string name;
    std::string arguments;
    std::string before_id;
};

class L3PortDeleteRefused : public L3PortDelete,
                            public ::testing::WithParamInterface<RefusedControl>
{
protected:
    /** The control fails, nothing comes after it, and the message names that id. */
    void expect_refusal(int id)
    {
        const RefusedControl &control = GetParam();
        fail_when(PORT_CONTROL, control.arguments, -4);
        EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), -1);
        EXPECT_EQ(calls().back(), fmt::format("{}({}) = -4", PORT_CONTROL, control.arguments));
        expect_reports({report(
            STEP, fmt::format("{}{}) failed: {}\n", control.before_id, id, _shr_errmsg[4]))});
    }
};

} // namespace

TEST_P(L3PortDeleteRefused, StopsUnderTheLiveNumber)
{
    expect_refusal(3);
}

TEST_P(L3PortDeleteRefused, StopsAParkedInterfaceUnderMinusOne)
{
    parked();
    expect_refusal(-1);
}

TEST_P(L3PortDeleteRefused, PositiveAnswerIsNoRefusal)
{
    fail_when(PORT_CONTROL, GetParam().arguments, 1);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    expect_reports({});
}

INSTANTIATE_TEST_SUITE_P(
    L3PortDelete, L3PortDeleteRefused,
    ::testing::Values(RefusedControl{"Ip4", "0, 5, 8, 1", "itf set [IP4] ("},
                      RefusedControl{"Ip4Multicast", "0, 5, 10, 1", "itf set [IP4] ("},
                      RefusedControl{"Ip6", "0, 5, 9, 1", "itf set [IP6] ("},
                      RefusedControl{"Ip6Multicast", "0, 5, 11, 0", "itf set [IP6] ("},
                      RefusedControl{"Mpls", "0, 5, 14, 1", "Intf set [MPLS] ("}),
    [](const auto &row) { return row.param.name; });

TEST_F(L3PortDelete, RecordThatGoesUnderWayStopsBeforeTheVlan)
{
    l3_pd *taken = nullptr;
    sw.journal.arm({.function = PORT_CONTROL, .when = [&](std::string_view arguments) {
                        if (arguments == "0, 5, 14, 1") {
                            taken = std::exchange(lif->lif.l3lif_pd_ctxt->l3_pd, nullptr);
                        }
                        return false;
                    }});
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_remove"}), Calls{});
    expect_reports({report(STEP, "itf delete(3) failed\n")});
    lif->lif.l3lif_pd_ctxt->l3_pd = taken;
}

TEST_F(L3PortDelete, RefusedVlanPrintsTheTextOfTheMplsControlAndGoesOn)
{
    fail("fwmpd_bcm_vlan_port_remove", -4);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    EXPECT_EQ(calls().back(), DISCARD_NOTHING);
    expect_reports({
        report("rtifhal_vlan_delete",
               fmt::format("vlan_port(4094, 5) failed: {}\n", _shr_errmsg[4])),
        report(STEP,
               fmt::format("itf vlan enable({}) failed: {}\n", lif->decimal(), _shr_errmsg[0])),
    });
}

TEST_F(L3PortDelete, RefusedVlanAfterAPositiveMplsControlPrintsThatCode)
{
    fail_when(PORT_CONTROL, "0, 5, 14, 1", 3);
    fail("fwmpd_bcm_vlan_port_remove", -4);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    EXPECT_EQ(reports().back(), report(STEP, fmt::format("itf vlan enable({}) failed: {}\n",
                                                         lif->decimal(), _shr_errmsg[19])));
}

TEST_F(L3PortDelete, RefusedDiscardIsReportedOnly)
{
    fail("fwmpd_bcm_port_discard_set", -4);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    expect_reports({report(
        STEP, fmt::format("port_discard({}) failed: {}\n", lif->decimal(), _shr_errmsg[4]))});
}

TEST_F(L3PortDelete, PositiveAnswersAreNoRefusals)
{
    fail("bcm_l3_intf_get", 1);
    fail("fwmpd_bcm_port_discard_set", 1);
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    expect_reports({});
}

TEST_F(L3PortDelete, VlanIsTheInterfacesInternalOne)
{
    lif->lif.int_vlan = 100;
    EXPECT_EQ(rtifhal_trident_l3port_del(lif->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_remove"}),
              Calls{"fwmpd_bcm_vlan_port_remove(0, 100, {5}) = 0"});
}

TEST_F(L3PortDelete, EntryIgnoresTheStateAndNeverFails)
{
    lif->lif.lif_state = 9;
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(rtifhal_trident_del_l3port(lif->get(), 1), 0);
    EXPECT_EQ(reports().back(), rm_failed(*lif));
    EXPECT_EQ(lif->lif.lif_state, 4U);
}

TEST_F(L3PortDelete, EntryReportsEachFailedStepAndGoesOn)
{
    Lif unreadable(0);
    EXPECT_EQ(rtifhal_trident_del_l3port(unreadable.get(), 1), 0);
    expect_calls({called::no_type(unreadable, 1), called::no_type(unreadable, 1), called::unit()});
    expect_reports({
        del_failed(unreadable),
        del_failed(unreadable),
        report(STEP, " Got l3lif as or l3lif_pd_ctxt null"),
        rm_failed(unreadable),
    });
    EXPECT_EQ(unreadable.lif.lif_state, 4U);
}

TEST_F(L3PortDelete, EntryOnAnInterfaceWithoutARecordReportsTwoSteps)
{
    const auto other = port(6);
    other->with_bare_context();
    EXPECT_EQ(rtifhal_trident_del_l3port(other->get(), 0), 0);
    expect_reports({del_failed(*other), rm_failed(*other)});
    EXPECT_EQ(other->lif.lif_state, 4U);
}

TEST_F(L3PortDelete, PortBeyondTheTableGoesDownWithoutItsMode)
{
    const auto far = port(105);
    ASSERT_EQ(rtifhal_trident_add_l3port(far->get(), 1), 0);
    start();
    EXPECT_EQ(rtifhal_trident_del_l3port(far->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_stp_set", "bcm_vlan_control_port_set"}), Calls{});
    EXPECT_EQ(calls().back(), "fwmpd_bcm_port_discard_set(0, 105, 0) = 0");
    expect_reports({});
}

} // namespace rtifhal_test::l3port_delete
