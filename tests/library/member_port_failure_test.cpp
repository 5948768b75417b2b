/*
 * member_port_failure_test.cpp: a port's way into VLAN 4094 and out of it, step
 * by step where one fails: what stops it, what the report says, and what stays.
 *
 * member_port_test.cpp has the roads without a failure.
 */
#include "support/member_port.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"

#include <fwmpd/wrappers.h>
#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::member_port_failure
{

namespace
{

using namespace member_port;

class MemberPortFailure : public MemberPortTest
{
protected:
    MemberPortFailure() { group_was_up(); }

    /** What a call has made and said up to a step that fails, the group being in force. */
    void expect_stop(int clear, const Calls &steps, const std::string &text)
    {
        EXPECT_EQ(clear == 0 ? in() : out(), -1);
        expect_calls(join({begins(*lif, PORT), Calls{FLUSH}, steps}));
        expect_messages({entered(*lif, PORT, clear), report(INIT, text)});
    }

    static std::string failed(const char *step, int code)
    {
        return fmt::format("{}(4094,5) failed: {}\n", step, _shr_errmsg[-code]);
    }
};

class MemberPortGroupFailure : public MemberPortTest
{
};

/** VLAN 4094 isn't there. */
class MemberPortWithoutVlan : public LibraryTest
{
protected:
    int in() { return rtifhal_init_member_port(lif->lif.ifindex, 0); }

    std::unique_ptr<Lif> lif = port(PORT);
};

const std::string ADD = "fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = ";
const std::string REMOVE = "fwmpd_bcm_vlan_port_remove(0, 4094, {5}) = ";

} // namespace

TEST_F(MemberPortGroupFailure, NoGroupLeftStopsWithAReport)
{
    for (const int code : {-6, 1}) {
        start();
        fail("fwmpd_allocate_stg", code);
        EXPECT_EQ(in(), -1);
        expect_calls(join({begins(*lif, PORT),
                           Calls{FLUSH, fmt::format("fwmpd_allocate_stg(4094) = {}", code)}}));
        expect_messages({entered(*lif, PORT, 0),
                         report(INIT, "fwmpd_allocate_stg failed for vlan:4094 port:5\n")});
        EXPECT_EQ(l3_stg_allocated, 0U);
    }
}

TEST_F(MemberPortGroupFailure, NoGroupLeftStopsTheWayOutToo)
{
    fail("fwmpd_allocate_stg", -6);
    EXPECT_EQ(out(), -1);
    EXPECT_EQ(calls().back(), "fwmpd_allocate_stg(4094) = -6");
}

TEST_F(MemberPortGroupFailure, GroupThatRefusesTheVlanStopsWithATraceAlone)
{
    for (const int code : {-7, 1}) {
        start();
        sw.chip.stgs.remove(GROUP);
        fail("bcm_stg_vlan_add", code);
        EXPECT_EQ(in(), -1);
        expect_calls(join(
            {begins(*lif, PORT), Calls{FLUSH, "fwmpd_allocate_stg(4094) = 0 [stg=2]", FLUSH,
                                       fmt::format("bcm_stg_vlan_add(0, 2, 4094) = {}", code)}}));
        expect_messages({
            entered(*lif, PORT, 0),
            trace(INIT, "fwmpd_allocate_stg allocated stg: 2 vlan 4094 port 5\n"),
            trace(INIT, fmt::format("bcm_stg_vlan_add failed for vlan:4094 stg:2 failure reason "
                                    ":{}\n",
                                    code)),
        });
        EXPECT_EQ(l3_stg_allocated, 0U);
    }
}

TEST_F(MemberPortGroupFailure, NextCallAllocatesASecondGroup)
{
    fail("bcm_stg_vlan_add", -7);
    ASSERT_EQ(in(), -1);
    start();
    EXPECT_EQ(out(), 0);
    expect_calls(join({begins(*lif, PORT), brings_group_up(3), goes_out(PORT),
                       refreshed_controls_calls(ROUTED, "0x0")}));
    EXPECT_EQ(l3_stg, 3);
    EXPECT_NE(sw.chip.stgs.find(GROUP), nullptr); // the first one is never given back
}

TEST_F(MemberPortWithoutVlan, IsNoticedByTheGroupAlone)
{
    EXPECT_EQ(in(), -1);
    EXPECT_EQ(calls().back(), "bcm_stg_vlan_add(0, 2, 4094) = -7");
    EXPECT_EQ(sw.journal.count("bcm_vlan_create"), 0U);
    EXPECT_EQ(messages().back(),
              trace(INIT, "bcm_stg_vlan_add failed for vlan:4094 stg:2 failure reason :-7\n"));
}

TEST_F(MemberPortWithoutVlan, IsNoticedByTheReadOfItsControlsWhenTheGroupIsUp)
{
    l3_stg_allocated = 1;
    EXPECT_EQ(in(), -1);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_port_untagged_vlan_set"), 1U);
    EXPECT_EQ(calls().back(), "bcm_vlan_control_vlan_get(0, 4094) = -7");
    expect_reports({report(INIT, " bcm_vlan_control_vlan_get failed for VLAN: 4094")});
}

TEST_F(MemberPortFailure, RefusedAddStops)
{
    fail("fwmpd_bcm_vlan_port_add", -5);
    expect_stop(0, {ADD + "-5"}, failed("vlan_port", -5));
}

TEST_F(MemberPortFailure, RefusedRemoveStops)
{
    fail("fwmpd_bcm_vlan_port_remove", -5);
    expect_stop(1, {REMOVE + "-5"}, failed("vlan_port", -5));
}

TEST_F(MemberPortFailure, RefusedStateStopsTheWayIn)
{
    fail("fwmpd_bcm_port_stp_set", -5);
    expect_stop(0, {ADD + "0", "fwmpd_bcm_port_stp_set(0, 5, 4) = -5"}, failed("stp set", -5));
}

TEST_F(MemberPortFailure, RefusedStateStopsTheWayOutInOtherWords)
{
    fail("fwmpd_bcm_port_stp_set", -5);
    expect_stop(1, {REMOVE + "0", "fwmpd_bcm_port_stp_set(0, 5, 0) = -5"},
                failed("port stp set", -5));
}

TEST_F(MemberPortFailure, RefusedStateInTheGroupOfVlan1Stops)
{
    fail("fwmpd_bcm_stg_stp_set", -7);
    expect_stop(1,
                {REMOVE + "0", "fwmpd_bcm_port_stp_set(0, 5, 0) = 0", "fwmpd_get_vlan_stg(1) = 1",
                 "fwmpd_bcm_stg_stp_set(0, 1, 5, 1) = -7"},
                failed("stp set", -7));
}

TEST_F(MemberPortFailure, RefusedDefaultVlanStops)
{
    fail("fwmpd_bcm_port_untagged_vlan_set", -5);
    expect_stop(0,
                {ADD + "0", "fwmpd_bcm_port_stp_set(0, 5, 4) = 0",
                 "fwmpd_bcm_port_untagged_vlan_set(0, 5, 4094) = -5"},
                failed("pvid set", -5));
}

TEST_F(MemberPortFailure, MissingControlRecordStops)
{
    for (const int clear : {0, 1}) {
        start();
        fail("fwmpd_bcm_vlan_control_vlan_get_from_cache", -1);
        const Calls road = clear == 0 ? goes_in(PORT) : goes_out(PORT);
        expect_stop(clear,
                    join({road, Calls{"fwmpd_bcm_vlan_control_vlan_get_from_cache(4094) = null"}}),
                    "fwmpd_bcm_vlan_control_vlan_get_from_cache(4094) returned NULL\n");
    }
}

TEST_F(MemberPortFailure, ControlsThatCantBeReadStop)
{
    const Calls refreshed = refreshed_controls_calls(ROUTED, "0x0");
    fail("bcm_vlan_control_vlan_get", -5);
    expect_stop(1,
                join({goes_out(PORT), Calls(refreshed.begin(), refreshed.begin() + 3),
                      Calls{"bcm_vlan_control_vlan_get(0, 4094) = -5"}}),
                " bcm_vlan_control_vlan_get failed for VLAN: 4094");
}

TEST_F(MemberPortFailure, ControlsThatCantBeWrittenStop)
{
    for (const int code : {-5, 1}) {
        start();
        Calls refreshed = refreshed_controls_calls(ROUTED, "0x0");
        refreshed.back().replace(refreshed.back().rfind('0'), 1, fmt::format("{}", code));
        fail("fwmpd_bcm_vlan_control_vlan_set", code);
        expect_stop(0, join({goes_in(PORT), refreshed}),
                    "bcm_vlan_control_vlan_set failed for VLAN: 4094\n");
    }
}

TEST_F(MemberPortFailure, PositiveAnswersOfTheOtherStepsAreNoFailures)
{
    for (const char *function : {"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_vlan_port_remove",
                                 "fwmpd_bcm_port_stp_set", "fwmpd_bcm_stg_stp_set",
                                 "fwmpd_bcm_port_untagged_vlan_set", "bcm_vlan_control_vlan_get"}) {
        sw.journal.arm({.function = function, .code = 1, .forever = true});
    }
    EXPECT_EQ(in(), 0);
    EXPECT_EQ(out(), 0);
    expect_reports({});
}

TEST_F(MemberPortFailure, NothingIsUndone)
{
    fail("fwmpd_bcm_port_untagged_vlan_set", -5);
    EXPECT_EQ(in(), -1);
    sw.end_request();
    EXPECT_TRUE(sw.chip.vlans.find(ROUTED)->members.has(PORT));
    EXPECT_EQ(sw.chip.stgs.find(GROUP)->states.at(PORT), 4);
}

TEST_F(MemberPortFailure, UnitIsThePlatformsInEveryCall)
{
    for (const char *function :
         {"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_vlan_port_remove", "fwmpd_bcm_port_stp_set",
          "fwmpd_bcm_stg_stp_set", "fwmpd_bcm_port_untagged_vlan_set", "bcm_stg_vlan_add",
          "bcm_vlan_control_vlan_get", "fwmpd_bcm_vlan_control_vlan_set"}) {
        sw.journal.arm({.function = function, .code = 0, .forever = true});
    }
    sw.journal.arm({.function = "rtifhal_get_bcm_unit", .code = 3, .forever = true});
    l3_stg_allocated = 0;
    EXPECT_EQ(in(), 0);
    EXPECT_EQ(out(), 0);
    EXPECT_EQ(calls_of({"rtifhal_get_bcm_unit"}).size(), 2U);
    EXPECT_EQ(calls_of({"bcm_stg_vlan_add", "fwmpd_bcm_vlan_port_add", "fwmpd_bcm_vlan_port_remove",
                        "fwmpd_bcm_port_stp_set", "fwmpd_bcm_stg_stp_set",
                        "fwmpd_bcm_port_untagged_vlan_set", "bcm_vlan_control_vlan_get"}),
              (Calls{"bcm_stg_vlan_add(3, 3, 4094) = 0",
                     "fwmpd_bcm_vlan_port_add(3, 4094, {0,5}, {5}) = 0",
                     "fwmpd_bcm_port_stp_set(3, 5, 4) = 0",
                     "fwmpd_bcm_port_untagged_vlan_set(3, 5, 4094) = 0",
                     "bcm_vlan_control_vlan_get(3, 4094) = 0",
                     "fwmpd_bcm_vlan_port_remove(3, 4094, {5}) = 0",
                     "fwmpd_bcm_port_stp_set(3, 5, 0) = 0", "fwmpd_bcm_stg_stp_set(3, 1, 5, 1) = 0",
                     "bcm_vlan_control_vlan_get(3, 4094) = 0"}));
    for (const auto &call : calls_of({"fwmpd_bcm_vlan_control_vlan_set"})) {
        EXPECT_TRUE(call.starts_with("fwmpd_bcm_vlan_control_vlan_set(3, 4094, ")) << call;
    }
}

} // namespace rtifhal_test::member_port_failure
