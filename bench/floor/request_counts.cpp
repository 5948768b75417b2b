/*
 * request_counts.cpp: how many instructions each request takes, by the library and as straight
 * calls; under valgrind's callgrind, which counts them: scripts/instructions.py runs it.
 *
 *     valgrind --tool=callgrind --collect-atstart=no request_counts trident
 *
 * For each request and side one dump is left, named by its trigger: "port: add/library". What
 * the platform does counts on both sides.
 */
#include "sides.h"

#include <fmt/format.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <exception>
#include <string>

namespace
{

using floor_bench::MeasuredCycle;
using floor_bench::Side;

void count_round(floor_bench::World &world, const MeasuredCycle &measured, Side side)
{
    for (std::size_t i = 0; i < measured.cycle->requests.size(); ++i) {
        const std::string name =
            measured.cycle->requests[i].name + (side == Side::library ? "/library" : "/floor");
        CALLGRIND_ZERO_STATS;
        CALLGRIND_TOGGLE_COLLECT;
        make_request(world, measured, side, i);
        CALLGRIND_TOGGLE_COLLECT;
        CALLGRIND_DUMP_STATS_AT(name.c_str());
        follow_up(world, measured, side, i);
    }
}

int count(null_platform::Chip chip)
{
    floor_bench::World world(chip);
    for (const MeasuredCycle &measured : floor_bench::measured_cycles(chip)) {
        prepare(world, measured);
        count_round(world, measured, Side::library);
        count_round(world, measured, Side::floor);
        finish(world, measured);
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string chip = argc == 2 ? argv[1] : "";
    if (chip != "trident" && chip != "trident2") {
        fmt::print(stderr, "usage: valgrind --tool=callgrind request_counts trident|trident2\n");
        return 2;
    }
    if (RUNNING_ON_VALGRIND == 0) {
        fmt::print(stderr, "request_counts: nothing counts outside valgrind\n");
        return 2;
    }
    try {
        return count(chip == "trident2" ? null_platform::Chip::trident2
                                        : null_platform::Chip::trident);
    } catch (const std::exception &error) {
        fmt::print(stderr, "request_counts: {}\n", error.what());
        return 1;
    }
}
