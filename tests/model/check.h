/*
 * check.h: lifecycles drawn at random and walked; the shortest of those that show a difference.
 */
#pragma once

#include "model/steps.h"
#include "model/walk.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace model_test
{

/** The configuration with two or three interfaces of each kind. */
inline const std::filesystem::path LIFECYCLES =
    std::filesystem::path(RTIFHAL_SOURCE_DIR) / "tests" / "model" / "lifecycles.json";

/** What is drawn. */
struct CheckOptions {
    std::filesystem::path config = LIFECYCLES;
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::uint64_t seed = 1;
    int lifecycles = 20; ///< number of lists
    int length = 200;    ///< the longest of them
    Draw draw = {};
    Walk walk = {};                 ///< the chip and the configuration count from here
    std::filesystem::path out = {}; ///< the file for the script; empty: one in the temporary folder
};

/** What came of it. */
struct Checked {
    std::size_t steps = 0; ///< of the lifecycles without a difference
    std::size_t lifecycles = 0;
    std::size_t faults = 0;
    std::size_t restarts = 0;
    std::string text = {};          ///< the difference and its script, in words; empty for none
    std::filesystem::path out = {}; ///< where the script is
    Walked shortest = {};           ///< the shortest that shows the difference

    Checked &operator+=(const Checked &other);
};

/** Walks lifecycles until one shows a difference, and shrinks it. */
Checked check_lifecycles(const CheckOptions &options);

} // namespace model_test
