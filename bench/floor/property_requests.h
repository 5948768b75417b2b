/*
 * property_requests.h: the requests that change a property of a standing interface.
 */
#pragma once

#include "requests.h"

namespace floor_bench
{

/** Adds a cycle for each property of each kind, and for the switch's own. */
void add_property_cycles(std::vector<Cycle> &all);

} // namespace floor_bench
