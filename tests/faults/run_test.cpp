/*
 * run_test.cpp: a request with one call failing, on roads that are made for the
 * purpose: what the engine finds of what goes wrong.
 */
#include "faults/faults_world.h"

#include "faults/run.h"
#include "faults/views.h"

#include <sdk/vlan.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

namespace faults_test
{

namespace
{

using lab::faults::Again;
using lab::faults::Clean;
using lab::faults::Failing;
using lab::faults::Outcome;
using lab::faults::Road;
using lab::l3lif::Request;

constexpr int VLAN = 300;

Request request(World &world, const std::function<int()> &work)
{
    return lab::l3lif::make_request(world.hardware, "test", work);
}

/** A road of one request that makes a VLAN; on failure it does something else. */
Road road_that(const std::function<int(int code)> &on_failure)
{
    static const lab::config::Description config = example();
    Road road{.name = "test",
              .begin = [] { return std::make_unique<World>(config, simswitch::Options{}); }};
    const auto make = [on_failure](World &world) {
        return request(world, [&on_failure] {
            const int code = bcm_vlan_create(0, VLAN);
            const int next = bcm_vlan_create(0, VLAN + 1);
            return code != 0 ? on_failure(code) : next;
        });
    };
    road.steps.push_back(
        {.kind = "make VLANs", .asked = "make VLANs", .make = make, .again = [make](World &world) {
             std::vector<Again> done;
             done.push_back({"end VLANs", request(world, [&world] {
                                 world.hardware.wrappers.destroy_vlan(VLAN);
                                 world.hardware.wrappers.destroy_vlan(VLAN + 1);
                                 return 0;
                             })});
             done.push_back({.asked = "make VLANs", .request = make(world), .must_work = true});
             return done;
         }});
    return road;
}

Outcome failed(const Road &road, const Failing &failing)
{
    const std::unique_ptr<World> world = road.begin();
    const lab::faults::Place place{road, 0, world.get(), lab::faults::Depth::quick};
    return lab::faults::run_failing(place, lab::faults::run_clean(place), failing);
}

const Failing FIRST{.function = "bcm_vlan_create", .code = -6};

} // namespace

TEST(RunClean, KnowsCallsResultAndViews)
{
    const Road road = road_that([](int code) { return code; });
    const std::unique_ptr<World> world = road.begin();
    const Clean clean = lab::faults::run_clean({road, 0, world.get()});
    ASSERT_EQ(clean.calls.size(), 2U);
    EXPECT_EQ(clean.calls[0].text, "bcm_vlan_create(0, 300)");
    EXPECT_TRUE(clean.calls[0].can_fail && clean.calls[0].has_code);
    EXPECT_EQ(clean.result, 0);
    EXPECT_GT(clean.after.size(), clean.before.size());
    // The end of a VLAN leaves its cached controls, at 0.
    EXPECT_EQ(lab::faults::differences(clean.after, clean.again),
              (Lines{"+ VLAN 300 cached vrf 0 iif 0 flags 0x0 class 0 urpf 0",
                     "+ VLAN 301 cached vrf 0 iif 0 flags 0x0 class 0 urpf 0"}));
    EXPECT_EQ(clean.broken, Lines{});
    EXPECT_EQ(clean.refused, Lines{});
    EXPECT_EQ(world->hardware.chip.vlans.find(VLAN), nullptr) << "this process stands before it";
}

TEST(RunFailing, TellsResultLaterCallsAndWhatStays)
{
    const Outcome seen = failed(road_that([](int code) { return code; }), FIRST);
    EXPECT_EQ(seen.result, -6);
    EXPECT_EQ(seen.later, 1U);
    EXPECT_EQ(seen.made, 1U);
    EXPECT_EQ(seen.other, 0U);
    EXPECT_EQ(seen.stays, Lines{"VLAN"});
    EXPECT_EQ(seen.again, "");
    EXPECT_EQ(seen.lasts, Lines{});
    EXPECT_EQ(seen.broken, Lines{});
}

TEST(RunFailing, WhatAFailureLeavesForGoodIsFound)
{
    const Outcome seen = failed(road_that([](int code) {
                                    bcm_vlan_create(0, 77);
                                    return code;
                                }),
                                FIRST);
    EXPECT_EQ(seen.other, 1U);
    ASSERT_FALSE(seen.lasts.empty());
    for (const std::string &line : seen.lasts) {
        EXPECT_TRUE(line.starts_with("+ VLAN 77 ")) << line;
    }
}

TEST(RunFailing, WhatCannotBeMadeAgainIsFound)
{
    Road road = road_that([](int code) { return code; });
    road.steps.front().again = [](World &world) {
        std::vector<Again> done;
        done.push_back({.asked = "make VLANs",
                        .request = request(world, [] { return bcm_vlan_create(0, VLAN + 1); }),
                        .must_work = true});
        return done;
    };
    EXPECT_EQ(failed(road, FIRST).again.substr(0, 21), "make VLANs: code -8, ");
}

TEST(RunFailing, ACrashIsFound)
{
    const Outcome seen = failed(road_that([](int /*code*/) -> int { _exit(3); }), FIRST);
    EXPECT_EQ(seen.broken, Lines{"the process ended with exit code 3"});
}

TEST(RunFailing, ALostBlockIsFound)
{
    const Outcome seen = failed(road_that([](int code) {
                                    static void *lost = nullptr;
                                    lost = std::malloc(24);
                                    return lost != nullptr ? code : 0;
                                }),
                                FIRST);
    EXPECT_EQ(seen.lasts, Lines{"+ 1 blocks of memory"});
}

TEST(RunFailing, ACallThatIsNotMadeIsFound)
{
    Failing third = FIRST;
    third.place = 3;
    const Outcome seen = failed(road_that([](int code) { return code; }), third);
    EXPECT_EQ(seen.broken, Lines{"the call was not made"});
}

} // namespace faults_test
