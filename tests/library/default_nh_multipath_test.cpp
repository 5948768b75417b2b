/*
 * default_nh_multipath_test.cpp: saved default routes with several paths: when
 * enough of them are ready, which get a next hop, and how a rebuild replaces
 * what was there.
 */
#include "support/default_routes.h"

#include "fwm/host_state.h"

#include <fmt/format.h>

#include <numeric>

namespace rtifhal_test::default_nh_multipath
{

namespace
{

using namespace route_call;

constexpr int FIRST_ID = 100000;
constexpr int FIRST_GROUP = 200000;
constexpr const char *MULTIPATH = "0x4100";

class MultipathDefaultRoutes : public DefaultRoutesTest
{
protected:
    static Message traced(const std::string &text) { return trace(CREATE_DEFAULT_NH, text); }
    static Message reported(const std::string &text) { return report(CREATE_DEFAULT_NH, text); }

    static Message not_ready_report(unsigned n)
    {
        return reported(
            fmt::format("intf is not ready :{:#x} rc:interface not ready\n", interface_of(n)));
    }

    /** Ids in a row, as the chip gives them. */
    static std::vector<int> ids(int first, unsigned count)
    {
        std::vector<int> made(count);
        std::iota(made.begin(), made.end(), first);
        return made;
    }

    /** Next hops over the first interfaces, whose ids are given in a row. */
    static std::vector<std::string> creates(unsigned count, int first_id)
    {
        std::vector<std::string> made;
        for (unsigned n = 0; n < count; ++n) {
            made.push_back(create(n, first_id + static_cast<int>(n)));
        }
        return made;
    }

    static std::vector<int> members_of_set(const def_egress_set_t &set)
    {
        return {set.egress_ids, set.egress_ids + set.egress_count};
    }

    void armed_comes_up(unsigned n) { rtifhal_trident_create_default_nh(interface_of(n)); }
};

std::vector<std::string> joined(std::vector<std::string> list, const std::vector<std::string> &more)
{
    list.insert(list.end(), more.begin(), more.end());
    return list;
}

TEST_F(MultipathDefaultRoutes, TwoPathsAreBuiltOnceOneIsReady)
{
    loaded({route_over_interfaces(interfaces(2))});
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_ready(0), found_not_ready(1),
                  text_of_not_ready(), found_ready(0), create(0, FIRST_ID), found_not_ready(1),
                  text_of_not_ready(), group({FIRST_ID}, FIRST_GROUP), route_init(),
                  add_route(FIRST_GROUP, MULTIPATH)});
    expect_messages(between_start_and_end({
        not_ready_report(1),
        traced("effective:1, total=2valid\n"),
        traced("Adj create for ecmp succeeded l3_iif 11, 1, 100000\n"),
        traced("egress create v4, total 1/2, 186a0, encap 7\n"),
        not_ready_report(1),
        traced("Adj restore passed for handle 200000 \n"),
        traced("multipath create v4, total 1, 30d40, encap 7"),
        traced("route add  v4, 10000000 intf 200000, ret=0\n"),
    }));
}

TEST_F(MultipathDefaultRoutes, Ip6RouteCarriesBothFlags)
{
    loaded({ip6_route_over({path_over(interface_of(0)), path_over(interface_of(1))})});
    first_ready(2);
    comes_up(1);
    expect_sdk_calls({create(0, FIRST_ID), create(1, FIRST_ID + 1),
                      group({FIRST_ID, FIRST_ID + 1}, FIRST_GROUP), route_init(),
                      add_route(FIRST_GROUP, "0x24100")});
    EXPECT_EQ(messages().at(7).text, "multipath create v6, total 2, 30d40, encap 7");
}

TEST_F(MultipathDefaultRoutes, SetTellsWhatWasBuilt)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(1);
    EXPECT_EQ(egresses[0].in_use, 1U);
    EXPECT_EQ(egresses[0].is_ecmp, 1U);
    EXPECT_EQ(egresses[0].ecmp_id, static_cast<std::uint32_t>(FIRST_GROUP));
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID, 2));
}

TEST_F(MultipathDefaultRoutes, ThreeQuartersOfThePathsRoundedDownAreEnough)
{
    const std::vector<std::pair<unsigned, unsigned>> paths_and_enough = {
        {2, 1}, {3, 2}, {4, 3}, {5, 3}, {6, 4}, {7, 5}, {8, 6}, {63, 47}, {64, 48},
    };
    for (const auto &[paths, enough] : paths_and_enough) {
        sw.directory.clear();
        loaded({route_over_interfaces(interfaces(paths))});
        first_ready(enough - 1);
        comes_up(0);
        EXPECT_TRUE(sdk_calls().empty()) << paths;
        first_ready(enough);
        comes_up(enough - 1);
        EXPECT_EQ(sw.journal.count("bcm_l3_egress_create"), enough) << paths;
        EXPECT_EQ(egresses[0].egress_count, static_cast<int>(enough)) << paths;
        rtifhal_trident_destroy_default_nh();
    }
}

TEST_F(MultipathDefaultRoutes, ThreeQuartersAreReckonedIn32Bits)
{
    auto route = route_over_interfaces(interfaces(1));
    route.paths = 0x55555556; // three times that is 2
    loaded({route});
    ready(0);
    comes_up(0);
    EXPECT_EQ(sdk_calls().at(0), create(0, FIRST_ID));
    EXPECT_EQ(sdk_calls().at(1), group({FIRST_ID}, FIRST_GROUP));
}

TEST_F(MultipathDefaultRoutes, EightPathsAreNotBuiltWithFive)
{
    loaded({route_over_interfaces(interfaces(8))});
    first_ready(5);
    comes_up(4);
    expect_sdk_calls({});
    expect_messages(
        between_start_and_end({not_ready_report(5), not_ready_report(6), not_ready_report(7)}));
}

TEST_F(MultipathDefaultRoutes, EightPathsAreBuiltAtTheSixthAndAgainAtTheSeventh)
{
    loaded({route_over_interfaces(interfaces(8))});
    first_ready(6);
    comes_up(5);
    expect_sdk_calls(
        joined(creates(6, FIRST_ID), {group(ids(FIRST_ID, 6), FIRST_GROUP), route_init(),
                                      add_route(FIRST_GROUP, MULTIPATH)}));

    ready(6);
    comes_up(6);
    const int second = FIRST_ID + 6;
    auto expected = joined(creates(7, second), {group(ids(second, 7), FIRST_GROUP + 1),
                                                route_init(), add_route(FIRST_GROUP + 1, MULTIPATH),
                                                group_init(), destroy_group(FIRST_GROUP)});
    for (const int id : ids(FIRST_ID, 6)) {
        expected.push_back(destroy(id));
    }
    expect_sdk_calls(expected);
    EXPECT_EQ(sw.chip.egresses.size(), 7U);
    EXPECT_EQ(sw.chip.multipath_groups.size(), 1U);
}

TEST_F(MultipathDefaultRoutes, InterfaceThatARouteDoesNotListBuildsNothing)
{
    loaded({route_over_interfaces(interfaces(4))});
    first_ready(5);
    comes_up(4);
    EXPECT_EQ(lookups(), (std::vector<std::string>{found_ready(0), found_ready(1), found_ready(2),
                                                   found_ready(3)}));
    expect_sdk_calls({});
    expect_messages(between_start_and_end({}));
}

TEST_F(MultipathDefaultRoutes, InterfaceOfAnUnusedPathAloneBuildsNothing)
{
    loaded({route_over({path_over(interface_of(0)), path_over(interface_of(1)),
                        unused_path_over(interface_of(2))})});
    first_ready(3);
    comes_up(2);
    expect_sdk_calls({});
    expect_messages(between_start_and_end({traced("total:2, not_valid\n")}));
}

TEST_F(MultipathDefaultRoutes, UnusedPathDoesNotCountAsReady)
{
    loaded({route_over({path_over(interface_of(0)), path_over(interface_of(1)),
                        unused_path_over(interface_of(2)), unused_path_over(interface_of(3))})});
    first_ready(4);
    comes_up(0);
    EXPECT_EQ(lookups(), (std::vector<std::string>{found_ready(0), found_ready(1)}));
    expect_sdk_calls({});
}

TEST_F(MultipathDefaultRoutes, UnusedPathOfABuiltRouteGetsANextHopAllTheSame)
{
    loaded({route_over({path_over(interface_of(0)), unused_path_over(interface_of(1))})});
    first_ready(2);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_ready(0), found_ready(0),
                  create(0, FIRST_ID), found_ready(1), create(1, FIRST_ID + 1),
                  group({FIRST_ID, FIRST_ID + 1}, FIRST_GROUP), route_init(),
                  add_route(FIRST_GROUP, MULTIPATH)});
}

TEST_F(MultipathDefaultRoutes, SamePathTwiceIsCountedAndBuiltTwice)
{
    loaded({route_over_interfaces({interface_of(0), interface_of(0)})});
    ready(0);
    comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID), create(0, FIRST_ID + 1),
                      group({FIRST_ID, FIRST_ID + 1}, FIRST_GROUP), route_init(),
                      add_route(FIRST_GROUP, MULTIPATH)});
}

TEST_F(MultipathDefaultRoutes, InterfaceThatIsLostBetweenTheLookUpsIsLeftOut)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    start();
    fail("l3lif_get_iif_for_ifindex_new", simswitch::fwm::ERROR_INTERFACE_NOT_READY, 3);
    armed_comes_up(0);
    expect_sdk_calls({create(1, FIRST_ID), group({FIRST_ID}, FIRST_GROUP), route_init(),
                      add_route(FIRST_GROUP, MULTIPATH)});
    expect_reports({not_ready_report(0)});
}

TEST_F(MultipathDefaultRoutes, RefusedNextHopIsReportedAndLeftOut)
{
    loaded({route_over_interfaces(interfaces(3))});
    first_ready(3);
    start();
    fail("bcm_l3_egress_create", -1, 2);
    armed_comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID), create(1, 0), create(2, FIRST_ID + 1),
                      group({FIRST_ID, FIRST_ID + 1}, FIRST_GROUP), route_init(),
                      add_route(FIRST_GROUP, MULTIPATH)});
    expect_reports({reported("Adj create for ecmp failed l3_iif 12\n")});
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID, 2));
}

TEST_F(MultipathDefaultRoutes, PositiveCodeOfANextHopIsAFailureToo)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    start();
    fail("bcm_l3_egress_create", 1);
    armed_comes_up(0);
    expect_reports({reported("Adj create for ecmp failed l3_iif 11\n")});
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID, 1));
}

TEST_F(MultipathDefaultRoutes, RefusedFirstNextHopDoesNotKeepTheOldSetFromBeingSaved)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    start();
    fail("bcm_l3_egress_create", -1);
    armed_comes_up(0);
    expect_sdk_calls({create(0, 0), create(1, FIRST_ID + 2), group({FIRST_ID + 2}, FIRST_GROUP + 1),
                      route_init(), add_route(FIRST_GROUP + 1, MULTIPATH), group_init(),
                      destroy_group(FIRST_GROUP), destroy(FIRST_ID), destroy(FIRST_ID + 1)});
}

TEST_F(MultipathDefaultRoutes, WithoutAnyNextHopThereIsNoGroupAndNoRoute)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    start();
    sw.journal.arm({.function = "bcm_l3_egress_create", .forever = true});
    armed_comes_up(0);
    expect_sdk_calls({create(0, 0), create(1, 0)});
    expect_messages(between_start_and_end({
        traced("effective:2, total=2valid\n"),
        reported("Adj create for ecmp failed l3_iif 11\n"),
        reported("Adj create for ecmp failed l3_iif 12\n"),
    }));
    EXPECT_EQ(egresses[0].in_use, 0U);
}

TEST_F(MultipathDefaultRoutes, RebuildWithoutAnyNextHopLeavesTheOldSetInPlace)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    const auto before = egresses[0];
    start();
    sw.journal.arm({.function = "bcm_l3_egress_create", .forever = true});
    armed_comes_up(0);
    expect_sdk_calls({create(0, 0), create(1, 0)});
    EXPECT_EQ(members_of_set(egresses[0]), members_of_set(before));
    EXPECT_EQ(egresses[0].ecmp_id, before.ecmp_id);
    EXPECT_EQ(sw.chip.egresses.size(), 2U);
}

TEST_F(MultipathDefaultRoutes, RefusedGroupEndsItsRouteAlone)
{
    loaded({route_over_interfaces(interfaces(2)), route_over_interfaces({interface_of(0)})});
    first_ready(2);
    start();
    fail("bcm_l3_egress_multipath_create", -1);
    armed_comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID), create(1, FIRST_ID + 1),
                      group({FIRST_ID, FIRST_ID + 1}, 0), create(0, FIRST_ID + 2), route_init(),
                      add_route(FIRST_ID + 2)});
    expect_reports({reported("ECMP restore failed for handle 0 \n")});
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID, 2));
    EXPECT_EQ(egresses[0].in_use, 1U);
    EXPECT_EQ(egresses[0].is_ecmp, 0U);
    EXPECT_EQ(egresses[0].ecmp_id, 0U);
}

TEST_F(MultipathDefaultRoutes, RefusedGroupOfARebuildLeavesTheSavedSetUndestroyed)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    start();
    fail("bcm_l3_egress_multipath_create", -1);
    armed_comes_up(0);
    expect_sdk_calls(
        {create(0, FIRST_ID + 2), create(1, FIRST_ID + 3), group({FIRST_ID + 2, FIRST_ID + 3}, 0)});
    EXPECT_EQ(members_of_set(curr_egress), ids(FIRST_ID, 2));
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID + 2, 2));
    EXPECT_EQ(egresses[0].ecmp_id, static_cast<std::uint32_t>(FIRST_GROUP));
}

TEST_F(MultipathDefaultRoutes, RebuildAfterARefusedGroupDestroysItsNextHopsAndTheGroupBefore)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    fail("bcm_l3_egress_multipath_create", -1);
    comes_up(0);
    comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID + 4), create(1, FIRST_ID + 5),
                      group({FIRST_ID + 4, FIRST_ID + 5}, FIRST_GROUP + 1), route_init(),
                      add_route(FIRST_GROUP + 1, MULTIPATH), group_init(),
                      destroy_group(FIRST_GROUP), destroy(FIRST_ID + 2), destroy(FIRST_ID + 3)});
    EXPECT_NE(sw.chip.egresses.find(FIRST_ID), nullptr);
    EXPECT_NE(sw.chip.egresses.find(FIRST_ID + 1), nullptr);
}

TEST_F(MultipathDefaultRoutes, PositiveCodeOfAGroupIsAFailureToo)
{
    loaded({route_over_interfaces(interfaces(2))});
    first_ready(2);
    start();
    fail("bcm_l3_egress_multipath_create", 1);
    armed_comes_up(0);
    expect_reports({reported("ECMP restore failed for handle 0 \n")});
    EXPECT_EQ(sw.journal.count("bcm_l3_route_add"), 0U);
}

TEST_F(MultipathDefaultRoutes, RefusedRouteGoesToTheSystemLogAndTheOldSetStillGoes)
{
    loaded({route_over_interfaces(interfaces(4))});
    first_ready(3);
    comes_up(0);
    start();
    fail("bcm_l3_route_add", -6);
    armed_comes_up(0);
    EXPECT_EQ(syslog_texts(), std::vector<std::string>{
                                  "### ERROR ADDING DEF_ROUTE for ifindex 0x10000000 multipath 1 "
                                  "tmp_index 3 total_ecmp 4"});
    EXPECT_EQ(sdk_calls().back(), destroy(FIRST_ID + 2));
    EXPECT_EQ(messages().at(messages().size() - 2).text,
              "route add  v4, 10000000 intf 200001, ret=-6\n");
}

TEST_F(MultipathDefaultRoutes, FewerNextHopsThanBeforeAreCountedAnew)
{
    loaded({route_over_interfaces(interfaces(4))});
    first_ready(4);
    comes_up(0);
    sw.directory.set_ready(interface_of(1), false);
    comes_up(0);
    EXPECT_EQ(members_of_set(egresses[0]), ids(FIRST_ID + 4, 3));
    EXPECT_EQ(sw.chip.egresses.size(), 3U);
}

TEST_F(MultipathDefaultRoutes, GroupDoesNotStickToASinglePathRouteBehindIt)
{
    loaded({route_over_interfaces(interfaces(2)), route_over_interfaces({interface_of(0)})});
    first_ready(2);
    comes_up(0);
    EXPECT_EQ(sdk_calls().back(), add_route(FIRST_ID + 2, "0x100"));
    comes_up(0);
    EXPECT_EQ(sw.chip.egresses.size(), 3U);
}

TEST_F(MultipathDefaultRoutes, UnusedSinglePathBehindTellsTheCodeOfTheLastPath)
{
    loaded({route_over_interfaces({interface_of(0), interface_of(1)}),
            route_over({unused_path_over(interface_of(0))})});
    ready(0);
    comes_up(0);
    EXPECT_EQ(reports().back(), reported("intf is not valid :0x10000000 rc:interface not ready\n"));
}

TEST_F(MultipathDefaultRoutes, MorePathsThanARouteHoldsAreWalkedToTheSixtyFourth)
{
    for (const std::uint32_t paths : {65U, 0xFFFFFFFFU}) {
        auto route = route_over_interfaces(interfaces(64));
        route.paths = paths;
        loaded({route, route_over_interfaces({interface_of(70)})});
        first_ready(64);
        comes_up(0);
        const auto made = sw.journal.count("bcm_l3_egress_create");
        EXPECT_LE(lookups().size(), 128U) << paths;
        EXPECT_TRUE(made == 64 || (made == 0 && paths > 65)) << made << " of " << paths;
        EXPECT_EQ(egresses[1].in_use, 0U) << paths;
        rtifhal_trident_destroy_default_nh();
    }
}

} // namespace

} // namespace rtifhal_test::default_nh_multipath
