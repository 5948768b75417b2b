/*
 * egress_test.cpp: the egress step, the last of each add and the first of each
 * delete.
 */
#include "support/l3_objects.h"
#include "support/library_test.h"

#include "rtifhal_kelvo_trident/l3_objects/egress.h"

#include <sdk/error.h>

namespace rtifhal_test::egress
{

namespace
{

constexpr const char *CREATE = "rtifhal_l3_egr_create";
constexpr const char *DELETE = "rtifhal_l3_egr_delete";
const std::string EGRESS_INIT = "bcm_l3_egress_t_init()";

std::string switch_control(int code = 0)
{
    return "fwmpd_bcm_switch_control_set(0, 230, 1) = " + std::to_string(code);
}

class Egress : public LibraryTest
{
protected:
    Egress()
    {
        lif->with_record(7);
        start();
    }

    std::unique_ptr<Lif> lif = port(5);
};

} // namespace

TEST_F(Egress, CreateSetsTheSwitchControlAndCounts)
{
    EXPECT_EQ(rtifhal_l3_egr_create(lif->get()), 0);
    expect_calls({EGRESS_INIT, called::unit(), switch_control()});
    expect_messages({});
    EXPECT_EQ(l3_egress_count, 1U);
    sw.end_request();
    EXPECT_EQ(sw.chip.switch_controls.get(230), 1);
}

TEST_F(Egress, CreateSetsTheControlAndCountsEachTime)
{
    rtifhal_l3_egr_create(lif->get());
    rtifhal_l3_egr_create(lif->get());
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_switch_control_set"), 2U);
    EXPECT_EQ(l3_egress_count, 2U);
}

TEST_F(Egress, RefusedControlIsReportedHandedUpAndNotCounted)
{
    fail("fwmpd_bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_l3_egr_create(lif->get()), -4);
    expect_calls({EGRESS_INIT, called::unit(), switch_control(-4)});
    expect_messages(
        {report(CREATE, std::string("itf set egr (7) failed: ") + _shr_errmsg[4] + "\n")});
    EXPECT_EQ(l3_egress_count, 0U);
}

TEST_F(Egress, PositiveAnswerIsHandedUpAndCounts)
{
    fail("fwmpd_bcm_switch_control_set", 3);
    EXPECT_EQ(rtifhal_l3_egr_create(lif->get()), 3);
    expect_messages({});
    EXPECT_EQ(l3_egress_count, 1U);
}

TEST_F(Egress, RefusedControlOfATakenDownInterfacePrintsItsLiveNumber)
{
    const auto parked = port(6);
    fail("fwmpd_bcm_switch_control_set", -4);
    rtifhal_l3_egr_create(parked->with_parked(300).get());
    expect_messages(
        {report(CREATE, std::string("itf set egr (0) failed: ") + _shr_errmsg[4] + "\n")});
}

TEST_F(Egress, MissingContextOrPropertiesAreReported)
{
    const auto no_context = port(6);
    lif->without_properties();
    for (Lif *bare : {no_context.get(), lif.get()}) {
        start();
        EXPECT_EQ(rtifhal_l3_egr_create(bare->get()), -1);
        expect_calls({EGRESS_INIT, called::unit()});
        expect_messages(
            {report(CREATE, "Failed to get l3lif pd context for intf " + bare->index())});
    }
    EXPECT_EQ(l3_egress_count, 0U);
}

TEST_F(Egress, MissingRecordFailsSilently)
{
    const auto bare = port(6);
    EXPECT_EQ(rtifhal_l3_egr_create(bare->with_bare_context().get()), -1);
    expect_calls({EGRESS_INIT, called::unit()});
    expect_messages({});
}

TEST_F(Egress, SubinterfaceOfAPortNeedsItsOwnContext)
{
    const auto sub = subinterface(*lif, 10);
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), -1);
    expect_calls({EGRESS_INIT, called::unit(), called::is_port_channel(*lif, 0)});
    expect_messages({report(CREATE, "Failed to get l3lif pd context for intf " + sub->index())});
    EXPECT_EQ(rtifhal_l3_egr_create(sub->with_record(8).get()), 0);
}

TEST_F(Egress, SubinterfaceOfAPortChannelNeedsTheMainInterfacesContext)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    sub->with_record(8);
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), -1);
    expect_messages({report(CREATE, "Failed to get l3lif pd context for intf " + main->index())});
    main->with_record(41);
    start();
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), 0);
    expect_calls(
        {EGRESS_INIT, called::unit(), called::is_port_channel(*main, 1), switch_control()});
}

TEST_F(Egress, SubinterfaceOfAPortChannelNeedsTheMainInterfacesPropertiesAndRecord)
{
    const auto main = port_channel(7);
    const auto sub = subinterface(*main, 10);
    sub->with_record(8);
    main->with_record(41).without_properties();
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), -1);
    expect_messages({report(CREATE, "Failed to get l3lif pd context for intf " + main->index())});
    const auto bare = port_channel(8);
    bare->with_bare_context();
    sub->lif.main_l3lif = bare->get();
    start();
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), -1);
    expect_calls({EGRESS_INIT, called::unit(), called::is_port_channel(*bare, 1)});
    expect_messages({});
}

TEST_F(Egress, SubinterfaceOfAPortChannelNeedsNothingOfItsOwn)
{
    const auto main = port_channel(7);
    main->with_record(41);
    const auto sub = subinterface(*main, 10);
    sub->without_properties();
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), 0);
    expect_messages({});
    fail("fwmpd_bcm_switch_control_set", -4);
    EXPECT_EQ(rtifhal_l3_egr_create(sub->get()), -4);
    expect_reports(
        {report(CREATE, std::string("itf set egr (41) failed: ") + _shr_errmsg[4] + "\n")});
}

TEST_F(Egress, SubinterfaceOfAPortIgnoresItsMainInterface)
{
    const auto main = port(6);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(rtifhal_l3_egr_create(sub->with_record(8).get()), 0);
    expect_calls(
        {EGRESS_INIT, called::unit(), called::is_port_channel(*main, 0), switch_control()});
    expect_messages({});
}

TEST_F(Egress, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(rtifhal_l3_egr_create(lif->get()), -3); // this chip has no other unit
    expect_calls({EGRESS_INIT, "rtifhal_get_bcm_unit(0) = 3",
                  "fwmpd_bcm_switch_control_set(3, 230, 1) = -3"});
}

TEST_F(Egress, DeleteSendsNothing)
{
    EXPECT_EQ(rtifhal_l3_egr_delete(lif->get()), 0);
    expect_calls({});
    expect_messages({});
}

TEST_F(Egress, DeleteDoesNotCountDown)
{
    rtifhal_l3_egr_create(lif->get());
    rtifhal_l3_egr_delete(lif->get());
    EXPECT_EQ(l3_egress_count, 1U);
}

TEST_F(Egress, DeleteWithoutAContextReportsAndSucceeds)
{
    const auto bare = port(6);
    EXPECT_EQ(rtifhal_l3_egr_delete(bare->get()), 0);
    expect_calls({});
    expect_messages(
        {report(DELETE, "Failed to delete l3lif pd context for intf " + bare->index())});
}

TEST_F(Egress, DeleteWithoutARecordSaysNothing)
{
    const auto bare = port(6);
    EXPECT_EQ(rtifhal_l3_egr_delete(bare->with_bare_context().get()), 0);
    expect_messages({});
}

TEST_F(Egress, DeleteOfASubinterfaceLooksForItsOwnContext)
{
    const auto main = port_channel(7);
    main->with_record(41);
    const auto sub = subinterface(*main, 10);
    EXPECT_EQ(rtifhal_l3_egr_delete(sub->get()), 0);
    expect_calls({});
    expect_reports({report(DELETE, "Failed to delete l3lif pd context for intf " + sub->index())});
}

TEST_F(Egress, NullInterfaceMakesNoCall)
{
    EXPECT_EQ(rtifhal_l3_egr_create(nullptr), -1);
    EXPECT_EQ(rtifhal_l3_egr_delete(nullptr), 0);
    expect_calls({});
}

} // namespace rtifhal_test::egress
