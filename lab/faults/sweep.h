/*
 * sweep.h: every call of every request of a configuration made to fail, and
 * what became of each: the roads gone by a few processes side by side.
 *
 * run.h does one call; rows.h brings the outcomes together.
 */
#pragma once

#include "config/description.h"
#include "faults/outcome.h"
#include "switch.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace lab::faults
{

/** The codes that a call fails with: internal, parameter, full, not found, exists. */
inline const std::vector<int> ALL_CODES = {-1, -4, -6, -7, -8};

/** What is to be made to fail. */
struct SweepOptions {
    std::vector<simswitch::chip::Kind> chips = {simswitch::chip::Kind::trident,
                                                simswitch::chip::Kind::trident2};
    std::string request = {};           ///< a kind of request, or one request; empty: all
    std::vector<int> codes = ALL_CODES; ///< that calls give
    bool quick = false;    ///< of each kind of request, the first call of each function, once, -1
    std::size_t jobs = 1;  ///< processes side by side
    bool progress = false; ///< tells on the error stream how far it is
};

/** What it came to. */
struct SweepResult {
    std::vector<Outcome> outcomes;                 ///< in the order of requests, calls, codes
    std::map<std::string, std::size_t> never_fail; ///< calls that were left out, by function
    std::map<std::string, std::size_t> requests;   ///< how many of each kind were looked at
    std::vector<std::string> notes;                ///< what wasn't looked at, and why
    bool sees_allocations = false;                 ///< the program lets allocations fail

    /** The outcomes in which something doesn't hold that has to. */
    std::size_t broken() const;
};

/**
 * Goes all roads of a configuration. The library must be as it is after
 * loading; this process leaves it so.
 *
 * @throws session::UsageError for a request that there is none of, with the nearest
 * @throws std::runtime_error when a process can't do its share, with why
 */
SweepResult sweep(const config::Description &config, const SweepOptions &options);

} // namespace lab::faults
