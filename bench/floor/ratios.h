/*
 * ratios.h: how long each request takes, by the library and as straight calls.
 */
#pragma once

#include "null_platform.h"

#include <cstddef>
#include <string>
#include <vector>

namespace floor_bench
{

/** A request's medians. */
struct Ratio {
    std::string request{};
    std::string chip{};
    std::size_t calls = 0; /**< of the platform, libc's and GLib's among them */
    double library_ns = 0;
    double floor_ns = 0;

    double ratio() const { return floor_ns > 0 ? library_ns / floor_ns : 0; }
};

/**
 * Measures every request on a chip, with Google Benchmark: runs of both sides in random order,
 * each run's time by manual timing. To be called once a process.
 *
 * @param runs  runs of each side; the median of them counts
 */
std::vector<Ratio> measured_ratios(null_platform::Chip chip, int runs);

/** @return the geometric mean of the ratios; 0 without any */
double geometric_mean(const std::vector<Ratio> &ratios);

} // namespace floor_bench
