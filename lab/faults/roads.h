/*
 * roads.h: the roads of a configuration. road.h tells what a road is.
 *
 *   life          all comes up, every property of one interface of each kind
 *                 changes, each stops routing once, goes with its number kept
 *                 and comes back, and all goes for good
 *   fast restart  the interfaces come up with default routes to rebuild
 *   restore       what is stored comes back without a write to the chip
 *
 * Beside it: interface_steps.h has the steps on interfaces.
 */
#pragma once

#include "faults/road.h"

#include "config/description.h"
#include "switch.h"

#include <vector>

namespace lab::faults
{

/** The roads of a configuration on a chip. @param config  must outlive them */
std::vector<Road> roads_of(const config::Description &config, simswitch::chip::Kind chip);

} // namespace lab::faults
