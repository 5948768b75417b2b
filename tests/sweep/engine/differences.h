/*
 * differences.h: in what a switch may differ that was restarted and brought up
 * after a kill from one that was brought up at once, and why it can't be
 * otherwise.
 */
#pragma once

#include "sweep/engine/processes.h"

#include <map>
#include <string>
#include <string_view>

namespace sweep
{

/** A known difference. */
struct Known {
    std::string_view name;   ///< short
    std::string_view reason; ///< why nothing can be done about it
    /** Whether a line of difference, "+ VLAN 100 stg 2", is it. */
    bool (*is)(std::string_view line);
};

/** All that are known. */
const std::vector<Known> &known_differences();

/** Takes the known ones out of a list, and counts each by its name. */
Lines unknown_among(const Lines &differences, std::map<std::string, int> &known);

} // namespace sweep
