/*
 * walk.h: steps done on a switch and on the naive model side by side, until they differ.
 *
 * weakened.h tells what is asked after a failing call. What differs becomes a script that
 * `rtif run` replays.
 */
#pragma once

#include "model/facts.h"
#include "model/step.h"

#include "chip/chip.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace model_test
{

/** Where a walk begins, and what is done to it. */
struct Walk {
    std::filesystem::path config;
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    bool lies = false; ///< the model expects wrong numbers
    /** A tunnel was deleted and added until so many numbers were free; 0: not at all. */
    int numbers_left = 0;
    /** Done to the switch behind the library's back after each step; may be empty. */
    std::function<void(const Step &, simswitch::chip::Chip &)> meddle = {};
};

/** Where a walk ended. */
struct Walked {
    std::size_t steps = 0;                    ///< done; those that can't be done are left out
    std::size_t faults = 0;                   ///< calls that failed
    std::size_t restarts = 0;                 ///< restarts among the steps
    std::vector<std::string> script;          ///< lines of the session language
    std::vector<Difference> differences = {}; ///< in the last step; empty: there are none

    /** The script with what should be seen at its end. */
    std::string text() const;
};

/** Goes through steps, up to the first difference. Resets the library. */
Walked walk(const Walk &begin, const std::vector<Step> &steps);

} // namespace model_test
