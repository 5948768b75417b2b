/*
 * sides.h: a cycle of requests, made by the library or as its straight calls.
 */
#pragma once

#include "floor_calls.h"
#include "requests.h"

#include <vector>

namespace floor_bench
{

/** How often a cycle is gone through before it is measured. */
inline constexpr int ROUNDS_AHEAD = 3;

/** Who makes the calls. */
enum class Side : bool { library, floor };

/** A cycle with the straight calls of its requests. */
struct MeasuredCycle {
    const Cycle *cycle;
    const FloorRequest *floor; /**< one for each request of the cycle */
};

/**
 * All cycles. Throws std::runtime_error when the straight calls were made for other requests.
 *
 * @param chip  the chip whose straight calls are wanted
 */
std::vector<MeasuredCycle> measured_cycles(null_platform::Chip chip);

/** Prepares a cycle, and goes through it a few times by either side. */
void prepare(World &world, const MeasuredCycle &measured);

/** Undoes the preparation. */
void finish(World &world, const MeasuredCycle &measured);

/** Makes a request of a cycle; `requests[i]` of it by its number. */
inline void make_request(World &world, const MeasuredCycle &measured, Side side, std::size_t i)
{
    if (side == Side::floor) {
        measured.floor[i].run();
    } else {
        measured.cycle->requests[i].run(world);
    }
}

/** Does what the layer above does behind a request of the library. */
inline void follow_up(World &world, const MeasuredCycle &measured, Side side, std::size_t i)
{
    if (void (*const then)(World &) = measured.cycle->requests[i].then;
        side == Side::library && then != nullptr) {
        then(world);
    }
}

/** Goes through a cycle once. */
void go_round(World &world, const MeasuredCycle &measured, Side side);

} // namespace floor_bench
