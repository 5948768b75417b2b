/*
 * check_text.h: a run of `rtif check`, for people and for machines.
 */
#pragma once

#include "check/check.h"

#include <iosfwd>
#include <string>

namespace lab::report
{

/**
 * Prints what a check came to.
 *
 * @param state  the state folder
 * @param chip   "Trident" or "Trident2"
 */
void print_check(const check::CheckResult &result, const std::string &state,
                 const std::string &chip, std::ostream &out);

/** The same as one JSON object. */
void print_check_json(const check::CheckResult &result, const std::string &state,
                      const std::string &chip, std::ostream &out);

} // namespace lab::report
