/*
 * ifp_drop_failure_test.cpp: the drop rule, step by step where the chip
 * refuses: what stops the call, what the report says, and what the next call
 * finds.
 *
 * ifp_drop_test.cpp has the roads without a refusal.
 */
#include "support/drop_rule.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::ifp_drop_failure
{

namespace
{

using namespace drop_rule;

const std::string INSTALL = "rtifhal_install_ifp_drop";
const std::string GROUP_AGAIN = "bcm_field_group_create_id(0, qualifiers {13 82}, 0, 11) = -8";

/** A step, its report, and how many calls stand before it. */
struct Step {
    const char *function;
    const char *words;
    std::size_t calls_before;
};

// What makes the rule; the others come with every call.
const Step BUILD_STEPS[] = {
    {"bcm_field_group_create_id", "group_create", 1},
    {"bcm_field_entry_create", "entry_create", 2},
    {"bcm_field_qualify_L3Routable", "rtb_create", 3},
    {"bcm_field_action_add", "action_add", 4},
};
const Step FIRST_PORT_LAST_STEPS[] = {
    {"bcm_field_qualify_InPorts", "action_add", 5},
    {"bcm_field_entry_install", "action_add", 6},
};
const Step LATER_PORT_STEPS[] = {
    {"bcm_field_qualify_InPorts_get", "action_add", 1},
    {"bcm_field_qualify_InPorts", "action_add", 2},
    {"bcm_field_entry_install", "action_add", 3},
};

class DropRuleFailure : public DropRuleTest
{
protected:
    DropRuleFailure() = default;
    explicit DropRuleFailure(const simswitch::Options &options) : DropRuleTest(options) {}

    /** The step refuses the port with -5: the call ends there, with that report alone. */
    void expect_stop(const Step &step, int port)
    {
        start();
        fail(step.function, -5);
        EXPECT_EQ(rtifhal_install_ifp_drop(0, port), -1) << step.function;
        ASSERT_EQ(calls().size(), step.calls_before + 1) << step.function;
        EXPECT_TRUE(calls().back().starts_with(step.function)) << calls().back();
        EXPECT_TRUE(calls().back().ends_with(" = -5")) << calls().back();
        expect_messages({report(
            INSTALL, fmt::format("{}({}) failed: {}\n", step.words, port, _shr_errmsg[5]))});
    }

    /** The next call fails at the group, which is there, and does nothing else. */
    void expect_group_refused(int port)
    {
        start();
        EXPECT_EQ(rtifhal_install_ifp_drop(0, port), -1);
        expect_calls({"fwmpd_trident_batch_flush() = 0", GROUP_AGAIN});
        expect_messages(
            {report(INSTALL, fmt::format("group_create({}) failed: {}\n", port, _shr_errmsg[8]))});
    }
};

/** The five entries of the platform fill the table. */
class DropRuleWithoutRoom : public DropRuleFailure
{
protected:
    DropRuleWithoutRoom() : DropRuleFailure({.limits = {.field_entries = 5}}) {}
};

} // namespace

TEST_F(DropRuleFailure, EachStepOfTheBuildStopsTheFirstPort)
{
    for (const Step &step : BUILD_STEPS) {
        sw.chip.field_groups.remove(GROUP);
        expect_stop(step, 5);
        EXPECT_EQ(sw.chip.field_groups.find(GROUP) != nullptr, step.calls_before > 1);
    }
}

TEST_F(DropRuleFailure, HalfBuiltGroupIsRefusedByTheChipTheSecondTime)
{
    for (const Step &step : BUILD_STEPS) {
        if (step.calls_before == 1) {
            continue; // no group was made
        }
        sw.chip.field_groups.remove(GROUP);
        expect_stop(step, 5);
        expect_group_refused(5);
        expect_group_refused(6);
    }
}

TEST_F(DropRuleFailure, RefusedGroupIsTriedAnewByTheNextCall)
{
    expect_stop(BUILD_STEPS[0], 5);
    start();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    expect_calls(join({made(), rewritten("{6}", "{6}")}));
}

TEST_F(DropRuleFailure, EntryIsLeftWithTheQualifierWhenTheActionIsRefused)
{
    expect_stop(BUILD_STEPS[3], 5);
    EXPECT_EQ(rule(), "group 11 not installed, copy (l3-routable 0)");
    expect_group_refused(5);
    EXPECT_EQ(rule(), "group 11 not installed, copy (l3-routable 0)");
}

TEST_F(DropRuleWithoutRoom, LeavesAGroupWithoutAnEntryThatIsRefusedFromThenOn)
{
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), -1);
    EXPECT_EQ(calls().back(), "bcm_field_entry_create(0, 11) = -6");
    expect_messages({report(INSTALL, fmt::format("entry_create(5) failed: {}\n", _shr_errmsg[6]))});
    expect_group_refused(5);
}

TEST_F(DropRuleFailure, LastTwoStepsOfTheFirstPortUseTheWordsOfTheAction)
{
    for (const Step &step : FIRST_PORT_LAST_STEPS) {
        sw.chip.field_groups.remove(GROUP);
        sw.chip.field_entries.remove(ENTRY);
        reset_library();
        expect_stop(step, 5);
    }
}

TEST_F(DropRuleFailure, RefusedInstallOfTheFirstPortIsMadeUpForByTheNextCall)
{
    expect_stop(FIRST_PORT_LAST_STEPS[1], 5);
    EXPECT_EQ(rule(), "group 11 not installed, copy (in-ports {5}/{5} l3-routable 0 action 39)");
    start();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    expect_calls(join({read("{5}", "{5}"), rewritten("{5,6}", "{5}")}));
    expect_messages({});
}

TEST_F(DropRuleFailure, RefusedPortsOfTheFirstPortLeaveNothingToReadForTheNextCall)
{
    expect_stop(FIRST_PORT_LAST_STEPS[0], 5);
    start();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), -1);
    expect_calls(
        {"fwmpd_trident_batch_flush() = 0", "bcm_field_qualify_InPorts_get(0, 8192) = -7"});
    expect_messages({report(INSTALL, fmt::format("action_add(6) failed: {}\n", _shr_errmsg[7]))});
}

TEST_F(DropRuleFailure, EachStepOfALaterPortUsesTheWordsOfTheAction)
{
    stands_for({5});
    for (const Step &step : LATER_PORT_STEPS) {
        expect_stop(step, 6);
        EXPECT_EQ(in_ports().data.text(), "{5}") << step.function;
    }
}

TEST_F(DropRuleFailure, LaterPortThatWasNotInstalledComesWithTheNextOne)
{
    stands_for({5});
    expect_stop(LATER_PORT_STEPS[2], 6);
    start();
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 7), 0);
    expect_calls(join({read("{5,6}", "{5}"), rewritten("{5-7}", "{5}")}));
    EXPECT_EQ(in_ports().data.text(), "{5-7}");
}

TEST_F(DropRuleFailure, PositiveAnswersAreNoFailures)
{
    for (const char *function : FIELD_CALLS) {
        sw.journal.arm({.function = function, .code = 1, .forever = true});
    }
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 5), 0);
    EXPECT_EQ(rtifhal_install_ifp_drop(0, 6), 0);
    EXPECT_EQ(sw.journal.count("bcm_field_group_create_id"), 1U);
    EXPECT_EQ(sw.journal.count("bcm_field_entry_install"), 2U);
    expect_messages({});
}

TEST_F(DropRuleFailure, UnknownUnitIsRefusedAtTheGroup)
{
    EXPECT_EQ(rtifhal_install_ifp_drop(1, 5), -1);
    expect_calls({"fwmpd_trident_batch_flush() = 0",
                  "bcm_field_group_create_id(1, qualifiers {13 82}, 0, 11) = -3"});
    expect_messages({report(INSTALL, fmt::format("group_create(5) failed: {}\n", _shr_errmsg[3]))});
}

} // namespace rtifhal_test::ifp_drop_failure
