/*
 * point.h: what must hold after a process was killed at one moment of a road.
 *
 * A restart in restore mode writes nothing to the chip and has every stored
 * interface back under its number, and so has the restart after it. Then the
 * configuration is brought up, and each interface of it works; what differs
 * from a configuration that was brought up at once is in the table of
 * differences.h. A last restart finds all of it.
 */
#pragma once

#include "sweep/engine/road.h"

#include <map>
#include <string>

namespace sweep
{

/** The chip after a configuration was brought up at once. */
Lines brought_up_at_once(const Road &road);

/** What was found after a moment. */
struct Found {
    Lines failures;                   ///< what doesn't hold
    std::map<std::string, int> known; ///< how often each known difference was met, by its name
};

/**
 * Kills a process at a moment of a road and restarts.
 *
 * @param expected  the chip after the configuration was brought up at once
 */
Found check_point(const Road &road, std::size_t moment, const Lines &expected);

} // namespace sweep
