/*
 * default_nh_file_test.cpp: the file in which default routes wait over a fast
 * restart: when it is read, that it goes at once, and files that nobody should
 * have written.
 */
#include "support/default_routes.h"
#include "support/private_pss.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace rtifhal_test::default_nh_file
{

namespace
{

namespace fs = std::filesystem;
using namespace route_call;

constexpr int FIRST_ID = 100000;
constexpr std::size_t ROUTE_BYTES = 5900;
constexpr std::size_t SET_BYTES = 272;

class DefaultRoutesFile : public DefaultRoutesTest
{
protected:
    void SetUp() override
    {
        if (!pss.obstacle().empty()) {
            GTEST_SKIP() << pss.obstacle();
        }
    }

    void write_bytes(const std::string &bytes) const
    {
        std::ofstream(file(), std::ios::binary) << bytes;
    }

    /** A file that announces `count` routes and holds these. */
    void write(std::uint32_t count, const std::vector<def_route_rec_t> &routes) const
    {
        std::string bytes(sizeof count, '\0');
        std::memcpy(bytes.data(), &count, sizeof count);
        for (const auto &route : routes) {
            bytes.append(reinterpret_cast<const char *>(&route), sizeof route);
        }
        write_bytes(bytes);
    }

    void write(const std::vector<def_route_rec_t> &routes) const
    {
        write(static_cast<std::uint32_t>(routes.size()), routes);
    }

    static fs::path file() { return PrivatePss::folder() / "default_route.txt"; }
    static bool is_there() { return fs::exists(fs::symlink_status(file())); }

    /** No routes, the file gone, and not looked for again. */
    static void expect_no_routes()
    {
        EXPECT_EQ(num_def_routes, 0U);
        EXPECT_EQ(def_routes_loaded, 1U);
        EXPECT_FALSE(is_there());
    }

    /** A machine that hands out no block of that size and above. */
    void limit_memory(std::size_t bytes)
    {
        sw.journal.arm(
            {.function = "calloc", .forever = true, .when = [bytes](std::string_view arguments) {
                 const std::string text(arguments);
                 return std::stoull(text) * std::stoull(text.substr(text.find(", ") + 2)) >= bytes;
             }});
    }

    PrivatePss pss;
};

/** Writes a 32-bit word, as this machine has it, into the image of a file. */
void put(std::string &bytes, std::size_t offset, std::uint32_t word)
{
    std::memcpy(&bytes.at(offset), &word, sizeof word);
}

TEST_F(DefaultRoutesFile, IsReadAndRemovedAtTheFirstInterface)
{
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key(), "calloc(1, 5900) = record",
                  "calloc(1, 272) = record", found_ready(0), create(0, FIRST_ID), route_init(),
                  add_route(FIRST_ID)});
    EXPECT_FALSE(is_there());
    EXPECT_EQ(num_def_routes, 1U);
    EXPECT_EQ(def_routes_loaded, 1U);
}

TEST_F(DefaultRoutesFile, IsRemovedEvenIfNoInterfaceIsReady)
{
    write({route_over_interfaces(interfaces(1))});
    comes_up(0);
    EXPECT_FALSE(is_there());
    EXPECT_EQ(num_def_routes, 1U);
    expect_sdk_calls({});
}

TEST_F(DefaultRoutesFile, IsRemovedByAnInterfaceThatNoRouteLists)
{
    write({route_over_interfaces(interfaces(1))});
    comes_up(9);
    EXPECT_FALSE(is_there());
    ready(0);
    comes_up(0);
    expect_sdk_calls({create(0, FIRST_ID), route_init(), add_route(FIRST_ID)});
}

TEST_F(DefaultRoutesFile, IsGoneBeforeTheFirstNextHopIsMade)
{
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    bool there = true;
    sw.journal.arm({.function = "bcm_l3_egress_create", .when = [&there](std::string_view) {
                        there = is_there();
                        return false;
                    }});
    comes_up(0);
    EXPECT_FALSE(there);
}

TEST_F(DefaultRoutesFile, IsClosed)
{
    const auto open_files = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    write({route_over_interfaces(interfaces(1))});
    const auto before = open_files();
    comes_up(0);
    EXPECT_EQ(open_files(), before);
}

TEST_F(DefaultRoutesFile, IsReadOnce)
{
    write({route_over_interfaces(interfaces(1))});
    comes_up(0);
    write({});
    comes_up(0);
    EXPECT_TRUE(is_there());
    EXPECT_EQ(num_def_routes, 1U);
}

TEST_F(DefaultRoutesFile, StaysOnAnOrdinaryStart)
{
    sw.system.fast_restart = false;
    write({route_over_interfaces(interfaces(1))});
    comes_up(0);
    EXPECT_TRUE(is_there());
    EXPECT_EQ(def_routes_loaded, 0U);
    expect_messages({});
}

TEST_F(DefaultRoutesFile, StaysWhereThePlatformSkipsDefaultRoutes)
{
    sw.system.set_key("fwm", "skip_default_nh", "IS TRUE");
    write({route_over_interfaces(interfaces(1))});
    comes_up(0);
    EXPECT_TRUE(is_there());
    EXPECT_EQ(def_routes_loaded, 0U);
    expect_messages({});
}

TEST_F(DefaultRoutesFile, ThatIsNotThereIsNeverLookedForAgain)
{
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key()});
    expect_messages(between_start_and_end({}));

    write({route_over_interfaces(interfaces(1))});
    rtifhal_trident_destroy_default_nh();
    ready(0);
    comes_up(0);
    expect_calls({fast_restart(), no_skip_key()});
    expect_messages(between_start_and_end({}));
    EXPECT_TRUE(is_there());
    EXPECT_EQ(num_def_routes, 0U);
}

TEST_F(DefaultRoutesFile, ThatCanNotBeOpenedIsAsIfItWereNotThere)
{
    fs::create_symlink("nowhere", file());
    comes_up(0);
    expect_messages(between_start_and_end({}));
    EXPECT_TRUE(is_there());
    EXPECT_EQ(def_routes_loaded, 1U);
    EXPECT_EQ(def_routes, nullptr);
}

TEST_F(DefaultRoutesFile, IsLookedForAgainAfterADestroy)
{
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    rtifhal_trident_destroy_default_nh();
    write({ip6_route_over({path_over(interface_of(0))})});
    comes_up(0);
    EXPECT_EQ(sdk_calls().back(), add_route(FIRST_ID, "0x20100"));
    EXPECT_FALSE(is_there());
}

TEST_F(DefaultRoutesFile, HoldsItsWordsAtTheirPlaces)
{
    constexpr std::size_t SECOND = 4 + ROUTE_BYTES;
    constexpr std::size_t LAST_PATH = SECOND + 12 + std::size_t{63} * 92;
    std::string bytes(4 + 2 * ROUTE_BYTES, '\0');
    put(bytes, 0, 2);
    put(bytes, SECOND, 1);
    put(bytes, SECOND + 4, 33);
    put(bytes, SECOND + 8, 64);
    put(bytes, LAST_PATH + 80, 0x50);
    put(bytes, LAST_PATH + 84, 1);
    put(bytes, LAST_PATH + 88, 0x1000000a);
    write_bytes(bytes);
    comes_up(0);

    ASSERT_EQ(num_def_routes, 2U);
    EXPECT_EQ(def_routes[1].family, 1U);
    EXPECT_EQ(def_routes[1].vrf, 33U);
    EXPECT_EQ(def_routes[1].paths, 64U);
    EXPECT_EQ(def_routes[1].path[63].egress[20], 0x50U);
    EXPECT_EQ(def_routes[1].path[63].valid, 1U);
    EXPECT_EQ(def_routes[1].path[63].ifindex, 0x1000000aU);
}

TEST_F(DefaultRoutesFile, RouteOfSixtyFourPathsIsBuiltFromItsBytes)
{
    write({route_over_interfaces(interfaces(64))});
    first_ready(64);
    comes_up(63);
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_create"), 64U);
    EXPECT_EQ(sw.chip.multipath_groups.find(200000)->members.size(), 64U);
}

TEST_F(DefaultRoutesFile, LongerThanAnnouncedIsReadAsFarAsAnnounced)
{
    write(1, {route_over_interfaces(interfaces(1)), route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    EXPECT_EQ(num_def_routes, 1U);
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_create"), 1U);
    EXPECT_FALSE(is_there());
}

TEST_F(DefaultRoutesFile, ThatIsEmptyLeavesNoRoutesAndIsLookedForAgainAfterADestroy)
{
    write_bytes("");
    comes_up(0);
    expect_no_routes();
    expect_messages(between_start_and_end({}));

    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(def_routes_loaded, 0U);
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    EXPECT_EQ(sw.journal.count("bcm_l3_egress_create"), 1U);
}

TEST_F(DefaultRoutesFile, ThatIsEmptyLeavesNoRoutesWhateverTheCountWas)
{
    num_def_routes = 7;
    write_bytes("");
    comes_up(0);
    expect_no_routes();
}

TEST_F(DefaultRoutesFile, ThatAnnouncesNothingLeavesNoRoutes)
{
    write({});
    comes_up(0);
    expect_no_routes();
    EXPECT_EQ(calls_of({"calloc"}),
              (std::vector<std::string>{"calloc(1, 5900) = record", "calloc(1, 272) = record"}));
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(def_routes_loaded, 0U);
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(DefaultRoutesFile, ThatEndsInsideTheCountDoesNoHarm)
{
    write_bytes(std::string("\x01\x00", 2));
    comes_up(0);
    EXPECT_LE(num_def_routes, 1U);
    EXPECT_FALSE(is_there());
    expect_sdk_calls({});
}

TEST_F(DefaultRoutesFile, ThatEndsEarlyLeavesZeroedRoutes)
{
    write(3, {route_over_interfaces(interfaces(1))});
    ready(0);
    comes_up(0);
    ASSERT_EQ(num_def_routes, 3U);
    EXPECT_EQ(def_routes[2].paths, 0U);
    expect_sdk_calls({create(0, FIRST_ID), route_init(), add_route(FIRST_ID)});
    EXPECT_EQ(reports().size(), 2U);
}

TEST_F(DefaultRoutesFile, ThatEndsInsideARouteLeavesItsPathsUnused)
{
    write({route_over_interfaces(interfaces(4))});
    fs::resize_file(file(), 4 + 12 + 2 * 92);
    first_ready(4);
    comes_up(0);
    ASSERT_EQ(num_def_routes, 1U);
    EXPECT_EQ(def_routes[0].path[1].ifindex, interface_of(1));
    EXPECT_EQ(def_routes[0].path[2].valid, 0U);
    expect_sdk_calls({});
    expect_messages(between_start_and_end({trace(CREATE_DEFAULT_NH, "total:2, not_valid\n"),
                                           trace(CREATE_DEFAULT_NH, "total:3, not_valid\n")}));
}

TEST_F(DefaultRoutesFile, ThatAnnouncesMoreThanMemoryHoldsLeavesNoRoutes)
{
    for (const std::uint32_t count : {700000U, 0x80000000U, 0xFFFFFFFFU}) {
        reset_library();
        limit_memory(std::size_t{1} << 30);
        write(count, {route_over_interfaces(interfaces(1))});
        ready(0);
        comes_up(0);
        expect_no_routes();
        expect_messages(between_start_and_end({}));
        rtifhal_trident_destroy_default_nh();
        EXPECT_EQ(sw.heap.live_blocks(), 0U) << count;
    }
}

TEST_F(DefaultRoutesFile, WithoutMemoryForTheRoutesLeavesNoRoutes)
{
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("calloc", -1);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_no_routes();
    expect_sdk_calls({});
}

TEST_F(DefaultRoutesFile, WithoutMemoryForTheSetsLeavesNoRoutes)
{
    write({route_over_interfaces(interfaces(1))});
    ready(0);
    start();
    fail("calloc", -1, 2);
    rtifhal_trident_create_default_nh(interface_of(0));
    expect_no_routes();
    expect_sdk_calls({});
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(DefaultRoutesFile, RouteWithMorePathsThanItHoldsDoesNoHarm)
{
    for (const std::uint32_t paths : {65U, 0xFFFFFFFFU}) {
        auto route = route_over_interfaces(interfaces(64));
        route.paths = paths;
        write({route});
        first_ready(64);
        comes_up(0);
        EXPECT_LE(sw.journal.count("bcm_l3_egress_create"), 64U) << paths;
        EXPECT_LE(egresses[0].egress_count, 64) << paths;
        rtifhal_trident_destroy_default_nh();
    }
}

TEST_F(DefaultRoutesFile, IsGivenBackWholeByADestroy)
{
    write({route_over_interfaces(interfaces(1)), route_over_interfaces(interfaces(2))});
    first_ready(2);
    comes_up(0);
    EXPECT_EQ(sw.heap.live_bytes(), 2 * (ROUTE_BYTES + SET_BYTES));
    rtifhal_trident_destroy_default_nh();
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

} // namespace

} // namespace rtifhal_test::default_nh_file
