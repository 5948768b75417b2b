/*
 * views.h: a switch and the library as lines that can be compared: the chip
 * with the names of interfaces in the place of their numbers, and the tables
 * of the library.
 */
#pragma once

#include "sweep/engine/processes.h"

#include "l3lif/layer.h"
#include "switch.h"

namespace sweep
{

/**
 * The chip, sorted. A number of an interface stands as its name, or as
 * "nobody's"; stations have no number; a VLAN and a port are a line for each
 * thing they have.
 */
Lines chip_view(const simswitch::Switch &hardware, const lab::l3lif::Layer &layer);

/** The tables of the library, and the ports and controls of VLANs as the wrappers have them. */
Lines library_tables(simswitch::Switch &hardware);

/** What only one of two sorted lists has: "- " the first, "+ " the second. */
Lines differences(const Lines &before, const Lines &after);

} // namespace sweep
