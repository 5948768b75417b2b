/*
 * floor_test.cpp: what is recorded is what was called, and the straight calls of each request
 * are the library's: the same, in the same order, with the same arguments.
 */
#include "recorded_cycles.h"
#include "sides.h"

#include <gtest/gtest.h>

#include <fwm/trace.h>
#include <fwmpd/wrappers.h>
#include <sdk/vlan.h>

#include <cstdlib>
#include <string>

namespace
{

using floor_bench::MeasuredCycle;
using floor_bench::Side;
using recording::Calls;

Calls calls_of(floor_bench::World &world, const MeasuredCycle &measured, Side side, std::size_t i)
{
    recording::begin();
    make_request(world, measured, side, i);
    return recording::end();
}

/** Compares both sides of a chip's requests; gives the number of calls. */
std::size_t compare_sides(null_platform::Chip chip)
{
    floor_bench::World world(chip);
    std::size_t calls = 0;
    for (const MeasuredCycle &measured : floor_bench::measured_cycles(chip)) {
        prepare(world, measured);
        recording::know(world.objects());
        std::vector<Calls> wanted;
        for (std::size_t i = 0; i < measured.cycle->requests.size(); ++i) {
            wanted.push_back(calls_of(world, measured, Side::library, i));
            follow_up(world, measured, Side::library, i);
        }
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const Calls made = calls_of(world, measured, Side::floor, i);
            EXPECT_EQ(recording::difference(wanted[i], made), "") << measured.floor[i].name;
            EXPECT_EQ(made.size(), measured.floor[i].calls) << measured.floor[i].name;
            calls += made.size();
        }
        finish(world, measured);
    }
    return calls;
}

/** The calls that a piece of code makes. */
template <class Code> Calls noted(Code code)
{
    recording::begin();
    code();
    return recording::end();
}

// The library's tables are the process's: each chip has a process of its own.
TEST(FloorDeathTest, StraightCallsAreTheLibrarysOnATrident)
{
    EXPECT_EXIT(
        {
            const std::size_t calls = compare_sides(null_platform::Chip::trident);
            std::_Exit(!::testing::Test::HasFailure() && calls > 5000 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(FloorDeathTest, StraightCallsAreTheLibrarysOnATrident2)
{
    EXPECT_EXIT(
        {
            const std::size_t calls = compare_sides(null_platform::Chip::trident2);
            std::_Exit(!::testing::Test::HasFailure() && calls > 5000 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(Recording, AnotherNumberIsADifference)
{
    const Calls first = noted([] { (void)fwmpd_bcm_port_discard_set(0, 3, 0); });
    const Calls second = noted([] { (void)fwmpd_bcm_port_discard_set(0, 3, 1); });
    ASSERT_EQ(first.size(), 1U);
    EXPECT_EQ(recording::difference(first, first), "");
    EXPECT_EQ(recording::difference(first, second),
              "call 0, fwmpd_bcm_port_discard_set: argument 2 differs");
}

TEST(Recording, AnotherByteInARecordIsADifference)
{
    bcm_vlan_control_vlan_t control = {};
    const Calls first = noted([&] { (void)bcm_vlan_control_vlan_set(0, 5, control); });
    control.vc_vrf = 1;
    const Calls second = noted([&] { (void)bcm_vlan_control_vlan_set(0, 5, control); });
    EXPECT_EQ(recording::difference(first, second),
              "call 0, bcm_vlan_control_vlan_set: argument 2 differs");
}

TEST(Recording, ArgumentsBehindATextCount)
{
    const auto trace = [](int number, const char *name) {
        return noted(
            [=] { fwm_ds_trace_add("f", "g", 1, 0, "% d of %s: %02x\n", 7, name, number); });
    };
    const Calls calls = trace(12, "port");
    ASSERT_EQ(calls[0].arguments.size(), 8U);
    EXPECT_EQ(calls[0].arguments[5].number, 7);
    EXPECT_EQ(calls[0].arguments[6].bytes, "port");
    EXPECT_EQ(calls[0].arguments[7].number, 12);
    EXPECT_NE(recording::difference(calls, trace(13, "port")), "");
    EXPECT_NE(recording::difference(calls, trace(12, "tunnel")), "");
}

TEST(Recording, OrderAndNumberOfCallsCount)
{
    const auto flush = [] { (void)fwmpd_trident_batch_flush(); };
    const Calls one = noted(flush);
    const Calls two = noted([&] {
        flush();
        flush();
    });
    EXPECT_EQ(recording::difference(one, two), "1 calls expected, 2 seen");
    EXPECT_EQ(recording::difference(noted([] { (void)bcm_vlan_create(0, 9); }), one),
              "call 0: bcm_vlan_create expected, fwmpd_trident_batch_flush seen");
}

} // namespace
