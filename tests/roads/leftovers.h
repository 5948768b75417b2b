/*
 * leftovers.h: what the add and delete of each kind of interface, and of what belongs to them,
 * leave in the chip, the store and the tables, with the reason.
 *
 * Ethernet4 is routed all the time, and the VLANs of the L2 side are there.
 */
#pragma once

#include "roads/chip_match.h"
#include "roads/road_switch.h"

#include <string>
#include <vector>

namespace roads
{

/** A part, what is there before it, and what its add and delete leave. */
struct Case {
    const char *label;
    std::string name;
    Lines before;
    Lines (*left)(Kind chip);
    std::vector<Change> by_properties = {}; ///< what properties that were set leave beside that
};

const std::vector<Case> &cases();

} // namespace roads
