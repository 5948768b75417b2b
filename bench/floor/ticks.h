/*
 * ticks.h: a clock that is fine enough for a single call: the processor's counter. The
 * system's own may advance in steps of tens of nanoseconds.
 */
#pragma once

#include <chrono>
#include <cstdint>

#ifdef __x86_64__
#include <x86intrin.h>
#endif

namespace floor_bench
{

/** @return the counter */
inline std::uint64_t ticks()
{
#ifdef __x86_64__
    // What stands before is over, and nothing behind has begun.
    _mm_lfence();
    const std::uint64_t counter = __rdtsc();
    _mm_lfence();
    return counter;
#else
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

/** Holds the counter against the system's clock for a while. @return seconds from tick to tick */
inline double seconds_a_tick()
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds WHILE{50};
    const auto begin = Clock::now();
    const std::uint64_t first = ticks();
    while (Clock::now() - begin < WHILE) {
    }
    const std::chrono::duration<double> passed = Clock::now() - begin;
    return passed.count() / static_cast<double>(ticks() - first);
}

} // namespace floor_bench
