/*
 * failing_calls_test.cpp: which calls a sweep makes fail, and which it leaves
 * out as no platform lets them fail.
 */
#include "faults/failing_calls.h"
#include "faults/lettered.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace faults_test
{

namespace
{

using lab::faults::can_fail;
using simswitch::CallRecord;

CallRecord call(const std::string &function, const std::string &result)
{
    return {.function = function, .result = result};
}

} // namespace

TEST(FailingCalls, CodesRecordsAndMemoryCanFail)
{
    EXPECT_TRUE(can_fail(call("bcm_vlan_create", "0")));
    EXPECT_TRUE(can_fail(call("fwmpd_bcm_vlan_control_vlan_get_from_cache", "record")));
    EXPECT_TRUE(can_fail(call("malloc", "0x55d0")));
    EXPECT_TRUE(can_fail(call("avl_create", "tree")));
    EXPECT_TRUE(can_fail(call("avl_insert", "0")));
}

TEST(FailingCalls, AnEntryThatWasFoundLeavesItsTree)
{
    EXPECT_FALSE(can_fail(call("avl_delete", "record")));
    EXPECT_FALSE(can_fail(call("avl_find", "record")));
}

TEST(FailingCalls, NumbersAnswersAndFilledRecordsDoNotFail)
{
    EXPECT_FALSE(can_fail(call("fwmpd_get_vlan_stg", "2")));
    EXPECT_FALSE(can_fail(call("if_index_is_sub_intf", "1")));
    EXPECT_FALSE(can_fail(call("sysmgr_is_fastboot_restart", "0")));
    EXPECT_FALSE(can_fail(call("fwmpd_trident_get_bvbt", "record")));
    EXPECT_FALSE(can_fail(call("bcm_trunk_info_t_init", "0")));
    EXPECT_FALSE(can_fail(call("sdwrap_event", "0")));
    EXPECT_FALSE(can_fail(call("anything", ""))) << "it gives nothing";
}

TEST(FailingCalls, ListsAreSortedAndTheirReasonsTold)
{
    for (const lab::faults::NeverFail &reason : lab::faults::never_fail()) {
        EXPECT_TRUE(std::ranges::is_sorted(reason.functions)) << reason.why;
        EXPECT_FALSE(reason.why.empty());
        for (const std::string_view function : reason.functions) {
            EXPECT_FALSE(can_fail(call(std::string(function), "0"))) << function;
        }
    }
}

TEST(FailingCalls, AResultThatIsANumberIsACode)
{
    using lab::faults::gives_code;
    EXPECT_TRUE(gives_code(call("bcm_vlan_create", "-8")));
    EXPECT_TRUE(gives_code(call("bcm_vlan_create", "0")));
    EXPECT_FALSE(gives_code(call("malloc", "0x10")));
    EXPECT_FALSE(gives_code(call("avl_create", "null")));
    EXPECT_FALSE(gives_code(call("free", "")));
}

TEST(FailingCalls, AnAllocationHasOneName)
{
    using lab::faults::known_name;
    EXPECT_EQ(known_name(call("malloc", "record")), "malloc");
    EXPECT_EQ(known_name(call("calloc", "record")), "malloc");
    EXPECT_EQ(known_name(call("bcm_vlan_create", "0")), "bcm_vlan_create");
}

TEST(Lettered, ALineComesApartAsItWasPutTogether)
{
    lab::faults::Lines lines;
    lab::faults::add_lettered(lines, 'C', "bcm_vlan_create(0, 7)");
    lab::faults::add_lettered(lines, 'M', "");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lab::faults::read_lettered(lines[0]).letter, 'C');
    EXPECT_EQ(lab::faults::read_lettered(lines[0]).text, "bcm_vlan_create(0, 7)");
    EXPECT_EQ(lab::faults::read_lettered(lines[1]).letter, 'M');
    EXPECT_EQ(lab::faults::read_lettered(lines[1]).text, "");
}

} // namespace faults_test
