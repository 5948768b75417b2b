/*
 * run.h: one step of a road run clean, and run with one call failing, each in
 * a process of its own that begins as this one is, or at the road's begin.
 */
#pragma once

#include "faults/outcome.h"
#include "faults/road.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lab::faults
{

/** A call of a clean run. */
struct CleanCall {
    std::string function;
    std::string text;     ///< with its arguments
    bool can_fail = true; ///< it answers with a code, a record or an allocation
    bool has_code = true; ///< its result is a code
};

/** What a step does when nothing fails. */
struct Clean {
    std::vector<CleanCall> calls;
    int result = 0;
    Lines errors;           ///< what it reports even so
    Lines before;           ///< the whole view before it
    Lines after;            ///< and after it
    Lines again;            ///< and after what it made was deleted and made again
    std::size_t blocks = 0; ///< allocations of the library that live then
    Lines broken;           ///< what doesn't hold even so
    Lines refused;          ///< what didn't work when it was made again
};

/** How much is looked at. */
enum class Depth : std::uint8_t {
    quick, ///< all but lost memory, which the leak checker takes its time to find
    full,
};

/** Where a step stands: its road, and the world in front of it. */
struct Place {
    const Road &road;
    std::size_t step = 0;
    World *world = nullptr; ///< in front of the step; null: each run goes there from the begin
    Depth depth = Depth::full;
};

/**
 * Runs a step clean, then takes it back and makes it again.
 *
 * @throws std::runtime_error when it crashes
 */
Clean run_clean(const Place &place);

/** Runs it with a call failing. @param clean  what it does otherwise */
Outcome run_failing(const Place &place, const Clean &clean, const Failing &failing);

} // namespace lab::faults
