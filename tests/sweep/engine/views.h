/*
 * views.h: a switch and the library as lines that can be compared:
 * faults/views.h, and what the library keeps to itself.
 */
#pragma once

#include "faults/views.h"
#include "sweep/engine/processes.h"

#include "switch.h"

namespace sweep
{

using lab::faults::chip_view;
using lab::faults::differences;

/** Its tables as faults/views.h has them, and its spanning tree group. */
Lines library_tables(simswitch::Switch &hardware);

} // namespace sweep
