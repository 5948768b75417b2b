/*
 * default_nh_test.cpp: saved default routes with a single path, and when
 * routes are looked at at all. Beside it: default_nh_multipath_test.cpp,
 * default_nh_destroy_test.cpp and default_nh_file_test.cpp.
 */
#include "support/default_routes.h"

#include "fwm/host_state.h"

#include <fwm/state.h>
#include <sdk/l3.h>

#include <cstring>

namespace rtifhal_test::default_nh
{

namespace
{

using namespace route_call;

constexpr int FIRST_ID = 100000;
constexpr const char *NOT_READY_0 = "intf is not ready :0x10000000 rc:interface not ready\n";

class DefaultRoutes : public DefaultRoutesTest
{
protected:
    static Message traced(const std::string &text) { return trace(CREATE_DEFAULT_NH, text); }
    static Message reported(const std::string &text) { return report(CREATE_DEFAULT_NH, text); }
    /** What is said when the route over the n-th interface is built for it. */
    static std::vector<Message> built(const std::string &family)
    {
        return between_start_and_end({
            traced("Adj restore passed for handle 100000 \n"),
            traced("egress create " + family + ", total 1, 186a0, encap 7\n"),
            traced("route add  " + family + ", 10000000 intf 100000, ret=0\n"),
        });
    }
};

TEST_F(DefaultRoutes, OrdinaryStartLooksAtNothing)
{
    sw.system.fast_restart = false;
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    expect_calls({"sysmgr_is_fastboot_restart() = 0"});
    expect_messages({});
}

TEST_F(DefaultRoutes, SkipKeyThatContainsTrueTurnsThemOff)
{
    for (const std::string value : {"TRUE", "\"TRUE\"", "xTRUEx", "  TRUE"}) {
        sw.system.set_key("fwm", "skip_default_nh", value);
        loaded({route_over_interfaces(interfaces(1))});
        ready(0);
        comes_up(0);
        EXPECT_EQ(calls().size(), 2U) << value;
        EXPECT_TRUE(sdk_calls().empty()) << value;
        expect_messages({});
        reset_library();
    }
}

TEST_F(DefaultRoutes, SkipKeyThatDoesNotContainTrueHasNoEffect)
{
    for (const std::string value : {"FALSE", "true", "TRU", ""}) {
        sw.system.set_key("fwm", "skip_default_nh", value);
        loaded({});
        comes_up(0);
        expect_messages(between_start_and_end({}));
        reset_library();
    }
}

TEST_F(DefaultRoutes, SkipKeyIsCutAtFourteenCharacters)
{
    sw.system.set_key("fwm", "skip_default_nh", "12345678901TRUE");
    loaded({});
    comes_up(0);
    expect_messages(between_start_and_end({}));
}

TEST_F(DefaultRoutes, RouteIsBuiltWhenItsInterfaceComesUp)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_ready(0), create(0, FIRST_ID), route_init(),
                  add_route(FIRST_ID)});
    expect_messages(built("v4"));
}

TEST_F(DefaultRoutes, AnyOtherFamilyIsIp6)
{
    for (const std::uint32_t family : {1U, 2U, 0xFFFFFFFFU}) {
        auto route = route_over_interfaces(interfaces(1));
        route.family = family;
        loaded({route});
        ready(0);
        comes_up(0);
        EXPECT_EQ(sdk_calls().at(2), add_route(FIRST_ID, "0x20100"));
        expect_messages(built("v6"));
        rtifhal_trident_destroy_default_nh();
    }
}

TEST_F(DefaultRoutes, NextHopKeepsItsImageButForInterfaceAndOneFlag)
{
    auto path = path_over(interface_of(0));
    bcm_l3_egress_t image = {};
    std::memset(&image, 0xA5, sizeof image);
    image.flags = 0x21;
    std::memcpy(path.egress, &image, sizeof image);
    loaded({route_over({path})});
    ready(0);
    comes_up(0);

    const auto *made = sw.chip.egresses.find(FIRST_ID);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->flags, 0x121U);
    EXPECT_EQ(made->interface, static_cast<int>(iif_of(0)));
    EXPECT_EQ(made->mac, (simswitch::chip::Mac{0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5}));
    EXPECT_EQ(made->port, static_cast<int>(0xA5A5A5A5));
    EXPECT_EQ(made->reserved.back(), 0xA5A5A5A5U);
    EXPECT_EQ(std::memcmp(def_routes[0].path[0].egress, path.egress, sizeof path.egress), 0);
}

TEST_F(DefaultRoutes, RouteTakesTheVrfOfTheFile)
{
    auto route = route_over_interfaces(interfaces(1));
    route.vrf = 17;
    loaded({route});
    ready(0);
    comes_up(0);
    EXPECT_NE(sw.chip.routes.find(simswitch::chip::ip4_key(17, 0, 0)), nullptr);
}

TEST_F(DefaultRoutes, SetTellsWhatWasBuilt)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    EXPECT_EQ(egresses[0].in_use, 1U);
    EXPECT_EQ(egresses[0].is_ecmp, 0U);
    EXPECT_EQ(egresses[0].ecmp_id, 0U);
    EXPECT_EQ(egresses[0].egress_count, 1);
    EXPECT_EQ(egresses[0].egress_ids[0], static_cast<std::uint32_t>(FIRST_ID));
}

TEST_F(DefaultRoutes, RouteOfAnotherInterfaceIsPassedOverInSilence)
{
    loaded({route_over_interfaces({interface_of(1)})});
    first_ready(2);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key()});
    expect_messages(between_start_and_end({}));
}

TEST_F(DefaultRoutes, UnusedPathIsReportedAndTheNextRouteFollows)
{
    loaded({route_over({unused_path_over(interface_of(0))}), route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), text_of_success(), found_ready(0),
                  create(0, FIRST_ID), route_init(), add_route(FIRST_ID)});
    expect_reports({reported("intf is not valid :0x10000000 rc:success\n")});
}

TEST_F(DefaultRoutes, UnusedPathIsReportedWithTheCodeOfTheLookUpBefore)
{
    loaded({route_over_interfaces(interfaces(1)), route_over({unused_path_over(interface_of(0))})});
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_not_ready(0), text_of_not_ready(),
                  text_of_not_ready()});
    expect_reports({reported(NOT_READY_0),
                    reported("intf is not valid :0x10000000 rc:interface not ready\n")});
}

TEST_F(DefaultRoutes, InterfaceThatIsNotReadyIsReported)
{
    loaded({route_over_interfaces(interfaces(1))});
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_not_ready(0), text_of_not_ready()});
    expect_messages(between_start_and_end({reported(NOT_READY_0)}));
}

TEST_F(DefaultRoutes, LookUpFailsWithAnyCodeThatIsNotZero)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("l3lif_get_iif_for_ifindex_new", -5);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_reports({reported("intf is not ready :0x10000000 rc:unknown error 0xfffffffb\n")});
    expect_sdk_calls({});
}

TEST_F(DefaultRoutes, RouteWithoutPathsIsExaminedButNothingIsBuilt)
{
    auto route = route_over_interfaces(interfaces(1));
    route.paths = 0;
    loaded({route});
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_ready(0)});
    expect_messages(between_start_and_end({}));
    EXPECT_EQ(egresses[0].in_use, 0U);
}

TEST_F(DefaultRoutes, RouteWithoutPathsHasItsPlaceForPathZeroReported)
{
    auto unused = route_over({unused_path_over(interface_of(0))});
    auto down = route_over_interfaces(interfaces(1));
    unused.paths = 0;
    down.paths = 0;
    loaded({unused, down});
    comes_up(0);
    expect_reports({reported("intf is not valid :0x10000000 rc:success\n"), reported(NOT_READY_0)});
    expect_sdk_calls({});
}

TEST_F(DefaultRoutes, RefusedNextHopEndsItsRouteAlone)
{
    loaded({route_over_interfaces(interfaces(1)), ip6_route_over({path_over(interface_of(0))})});
    ready(0);
    start();
    fail("bcm_l3_egress_create", -1);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_sdk_calls(
        {create(0, 0), create(0, FIRST_ID), route_init(), add_route(FIRST_ID, "0x20100")});
    expect_reports({reported("Adj restore failed for handle 0 \n")});
    EXPECT_EQ(egresses[0].in_use, 0U);
    EXPECT_EQ(egresses[0].egress_count, 0);
}

TEST_F(DefaultRoutes, PositiveCodeOfANextHopIsAFailureToo)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("bcm_l3_egress_create", 1);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_reports({reported("Adj restore failed for handle 0 \n")});
    EXPECT_EQ(sdk_calls().size(), 1U);
}

TEST_F(DefaultRoutes, RefusedNextHopOfARebuildLeavesTheOldOneInPlace)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    start();
    fail("bcm_l3_egress_create", -1);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_sdk_calls({create(0, 0)});
    EXPECT_EQ(egresses[0].egress_ids[0], static_cast<std::uint32_t>(FIRST_ID));
    EXPECT_NE(sw.chip.egresses.find(FIRST_ID), nullptr);
}

TEST_F(DefaultRoutes, RefusedRouteGoesToTheSystemLog)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("bcm_l3_route_add", -6);
    rtifhal_trident_create_default_nh(interface_of(0));
    EXPECT_EQ(syslog_texts(), std::vector<std::string>{
                                  "### ERROR ADDING DEF_ROUTE for ifindex 0x10000000 multipath 0 "
                                  "tmp_index 0 total_ecmp 1"});
    expect_messages(between_start_and_end({
        traced("Adj restore passed for handle 100000 \n"),
        traced("egress create v4, total 1, 186a0, encap 7\n"),
        traced("route add  v4, 10000000 intf 100000, ret=-6\n"),
    }));
}

TEST_F(DefaultRoutes, PositiveCodeOfARouteGoesToTheSystemLogToo)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("bcm_l3_route_add", 1);
    rtifhal_trident_create_default_nh(interface_of(0));
    EXPECT_EQ(syslog_texts().size(), 1U);
}

TEST_F(DefaultRoutes, SetOfASinglePathIsMarkedAsNoGroup)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    egresses[0].is_ecmp = 1;
    comes_up(0);
    EXPECT_EQ(egresses[0].is_ecmp, 0U);
}

TEST_F(DefaultRoutes, SecondCallDestroysTheOldNextHopAfterTheRouteAdd)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), found_ready(0), create(0, FIRST_ID + 1),
                  route_init(), add_route(FIRST_ID + 1), destroy(FIRST_ID)});
    EXPECT_EQ(curr_egress.egress_ids[0], static_cast<std::uint32_t>(FIRST_ID));
    EXPECT_EQ(egresses[0].egress_ids[0], static_cast<std::uint32_t>(FIRST_ID + 1));
    EXPECT_EQ(egresses[0].egress_count, 1);
}

TEST_F(DefaultRoutes, OldNextHopGoesEvenIfTheRouteIsRefused)
{
    loaded({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    start();
    fail("bcm_l3_route_add", -1);
    rtifhal_trident_create_default_nh(interface_of(0));
    EXPECT_EQ(sdk_calls().back(), destroy(FIRST_ID));
    EXPECT_EQ(sw.chip.egresses.size(), 1U);
}

TEST_F(DefaultRoutes, AllRoutesOfAnInterfaceAreBuiltInTheirOrder)
{
    loaded({route_over_interfaces({interface_of(0)}), route_over_interfaces({interface_of(1)}),
            ip6_route_over({path_over(interface_of(0))})});
    first_ready(2);
    comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID), route_init(), add_route(FIRST_ID),
                      create(0, FIRST_ID + 1), route_init(), add_route(FIRST_ID + 1, "0x20100")});
    EXPECT_EQ(egresses[1].in_use, 0U);
}

TEST_F(DefaultRoutes, SkippedRouteDoesNotDestroyTheSetOfTheRouteBefore)
{
    loaded({route_over_interfaces({interface_of(0)}), route_over_interfaces({interface_of(1)})});
    first_ready(2);
    comes_up(0);
    comes_up(0);
    EXPECT_EQ(calls_of({"bcm_l3_egress_destroy"}), std::vector<std::string>{destroy(FIRST_ID)});
}

TEST_F(DefaultRoutes, RouteFlagsOfIp6DoNotStickToTheNextRoute)
{
    loaded({ip6_route_over({path_over(interface_of(0))}), route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    EXPECT_EQ(sdk_calls().back(), add_route(FIRST_ID + 1, "0x100"));
}

} // namespace

} // namespace rtifhal_test::default_nh
