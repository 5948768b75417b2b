/*
 * default_nh_destroy_test.cpp: what the chip holds for saved default routes
 * goes: a set of next hops alone, and all of them at the end.
 */
#include "support/default_routes.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <algorithm>
#include <cstring>
#include <regex>

namespace rtifhal_test::default_nh_destroy
{

namespace
{

using namespace route_call;

constexpr int FIRST_ID = 100000;
constexpr int FIRST_GROUP = 200000;

class EgressSet : public DefaultRoutesTest
{
protected:
    /** A set that names a group, 0 for none, and next hops. */
    static def_egress_set_t set_of(int group_id, const std::vector<int> &ids)
    {
        def_egress_set_t set = {};
        set.in_use = 1;
        set.is_ecmp = group_id != 0 ? 1 : 0;
        set.ecmp_id = static_cast<std::uint32_t>(group_id);
        set.egress_count = static_cast<int>(ids.size());
        std::copy(ids.begin(), ids.end(), set.egress_ids);
        return set;
    }

    /** Both roads of a null pointer: a line in the system log, and the same at level 102. */
    void expect_null_reported(const std::string &function)
    {
        const std::regex wanted(function + " [0-9]+ Error, passed NULL parameter");
        ASSERT_EQ(syslog_texts().size(), 1U);
        ASSERT_EQ(messages().size(), 1U);
        EXPECT_TRUE(std::regex_match(syslog_texts().front(), wanted)) << syslog_texts().front();
        EXPECT_TRUE(std::regex_match(messages().front().text, wanted)) << messages().front();
        EXPECT_EQ(messages().front().text, syslog_texts().front());
        EXPECT_EQ(messages().front().level, 102);
        EXPECT_EQ(messages().front().function, function);
    }
};

TEST_F(EgressSet, IsCopiedWhole)
{
    auto from = set_of(FIRST_GROUP, {1, 2, 3});
    from.egress_ids[63] = 64;
    def_egress_set_t to = {};
    save_curr_egress(&to, &from);
    EXPECT_EQ(std::memcmp(&to, &from, sizeof to), 0);
    expect_calls({});
    expect_messages({});
}

TEST_F(EgressSet, CopyToNullIsReported)
{
    const auto from = set_of(0, {1});
    save_curr_egress(nullptr, &from);
    expect_null_reported("save_curr_egress");
}

TEST_F(EgressSet, CopyFromNullIsReportedAndChangesNothing)
{
    auto to = set_of(0, {1});
    save_curr_egress(&to, nullptr);
    expect_null_reported("save_curr_egress");
    EXPECT_EQ(to.egress_ids[0], 1U);
}

TEST_F(EgressSet, NullIsReported)
{
    clear_old_egress(nullptr);
    expect_null_reported("clear_old_egress");
}

TEST_F(EgressSet, ThatIsNotInUseStaysInTheChip)
{
    auto set = set_of(FIRST_GROUP, {FIRST_ID});
    set.in_use = 0;
    clear_old_egress(&set);
    expect_calls({});
    expect_messages({});
}

TEST_F(EgressSet, GroupGoesBeforeItsMembers)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    const auto set = egresses[0];
    start();
    clear_old_egress(&set);
    expect_calls(
        {group_init(), destroy_group(FIRST_GROUP), destroy(FIRST_ID), destroy(FIRST_ID + 1)});
    expect_messages({});
    EXPECT_EQ(egresses[0].egress_count, 2);
}

TEST_F(EgressSet, GroupIsDestroyedByItsIdWhateverTheKindSays)
{
    auto set = set_of(FIRST_GROUP, {});
    set.is_ecmp = 0;
    clear_old_egress(&set);
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_ecmp_destroy"), 1U);
}

TEST_F(EgressSet, RefusedGroupIsReportedAndTheMembersStillGo)
{
    const auto set = set_of(FIRST_GROUP, {FIRST_ID});
    clear_old_egress(&set);
    const std::regex wanted("clear_old_egress [0-9]+ Error while destroyin ecmp_id 200000");
    EXPECT_TRUE(std::regex_match(syslog_texts().front(), wanted)) << syslog_texts().front();
    EXPECT_EQ(reports().front(),
              report("clear_old_egress", "Error while destroying ecmp_id 200000"));
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_destroy"), 1U);
}

TEST_F(EgressSet, RefusedMemberIsReportedAndTheOthersStillGo)
{
    loaded({route_over_interfaces(interfaces(3))});
    first_ready(3);
    comes_up(0);
    const auto set = egresses[0];
    start();
    fail("bcm_l3_egress_destroy", -7);
    clear_old_egress(&set);
    const std::string text = "Error: -7, Failed to delete adj 100000\n";
    expect_reports({report("clear_old_egress", text)});
    EXPECT_EQ(syslog_texts(), std::vector<std::string>{text});
    EXPECT_EQ(sdk_calls().back(), destroy(FIRST_ID + 2));
}

TEST_F(EgressSet, PositiveCodesAreFailuresToo)
{
    const auto set = set_of(FIRST_GROUP, {FIRST_ID});
    fail("bcm_l3_egress_ecmp_destroy", 1);
    fail("bcm_l3_egress_destroy", 1);
    clear_old_egress(&set);
    expect_reports({report("clear_old_egress", "Error while destroying ecmp_id 200000"),
                    report("clear_old_egress", "Error: 1, Failed to delete adj 100000\n")});
}

TEST_F(EgressSet, SixtyFourMembersGo)
{
    std::vector<int> ids(64);
    for (int i = 0; i < 64; ++i) {
        ids[static_cast<std::size_t>(i)] = FIRST_ID + i;
    }
    const auto set = set_of(0, ids);
    clear_old_egress(&set);
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_destroy"), 64U);
}

TEST_F(EgressSet, CountOutsideTheSetReadsNothingOutsideIt)
{
    for (const int count : {-1, 65, 0x7FFFFFFF}) {
        auto set = set_of(0, {FIRST_ID});
        set.egress_count = count;
        start();
        clear_old_egress(&set);
        EXPECT_LE(sw.journal.count("bcm_l3_egress_destroy"), 64U) << count;
    }
}

class DefaultRoutesDestroy : public DefaultRoutesTest
{
};

TEST_F(DefaultRoutesDestroy, DoesNothingBeforeTheFileWasLookedFor)
{
    rtifhal_trident_destroy_default_nh();
    expect_calls({});
    expect_messages({});
}

TEST_F(DefaultRoutesDestroy, TakesAllSetsBackAndForgetsTheRoutes)
{
    loaded({route_over_interfaces({interface_of(0)}), route_over_interfaces({interface_of(5)}),
            route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    start();
    rtifhal_trident_destroy_default_nh();
    expect_calls({destroy(FIRST_ID), group_init(), destroy_group(FIRST_GROUP),
                  destroy(FIRST_ID + 1), destroy(FIRST_ID + 2), "free(record)", "free(record)"});
    expect_messages({});
    EXPECT_EQ(egresses, nullptr);
    EXPECT_EQ(def_routes, nullptr);
    EXPECT_EQ(num_def_routes, 0U);
    EXPECT_EQ(def_routes_loaded, 0U);
}

TEST_F(DefaultRoutesDestroy, LeavesTheRoutesInTheChip)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(sw.chip.egresses.size(), 0U);
    EXPECT_EQ(sw.chip.routes.size(), 1U);
}

TEST_F(DefaultRoutesDestroy, GoesOnAfterASetThatIsRefused)
{
    loaded(
        {route_over_interfaces({interface_of(0)}), ip6_route_over({path_over(interface_of(0))})});
    ready(0);
    comes_up(0);
    start();
    fail("bcm_l3_egress_destroy", -1);
    rtifhal_trident_destroy_default_nh();
    expect_reports({report("clear_old_egress", "Error: -1, Failed to delete adj 100000\n")});
    EXPECT_EQ(sdk_calls().back(), destroy(FIRST_ID + 1));
    EXPECT_EQ(def_routes_loaded, 0U);
}

TEST_F(DefaultRoutesDestroy, WithoutAFileStaysLoaded)
{
    def_routes_loaded = 1;
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(def_routes_loaded, 1U);
    expect_sdk_calls({});
    expect_messages({});
}

TEST_F(DefaultRoutesDestroy, ASecondTimeDoesNothing)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    rtifhal_trident_destroy_default_nh();
    start();
    rtifhal_trident_destroy_default_nh();
    expect_calls({});
}

TEST_F(DefaultRoutesDestroy, IsNotTiedToAFastRestart)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    sw.system.fast_restart = false;
    start();
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(calls().front(), destroy(FIRST_ID));
}

} // namespace

} // namespace rtifhal_test::default_nh_destroy
