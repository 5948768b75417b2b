/*
 * views.h: a switch and the library as lines that can be compared: the chip
 * with the names of interfaces in the place of their numbers, the tables of the
 * library, what stands in the store.
 */
#pragma once

#include "faults/processes.h"

#include "l3lif/layer.h"
#include "switch.h"

namespace lab::faults
{

/**
 * The chip, sorted. A number of an interface stands as its name, or as
 * "nobody's"; stations have no number; a VLAN and a port are a line for each
 * thing they have.
 */
Lines chip_view(const simswitch::Switch &hardware, const l3lif::Layer &layer);

/**
 * The exported tables of the library, sorted, and the ports and controls of
 * VLANs as the wrappers have them.
 */
Lines library_tables(simswitch::Switch &hardware);

/**
 * All of it, sorted, with the names of interfaces as the library knows their
 * numbers: the chip, the library's tables with the names of
 * interfaces and the count of numbers in use, the store, the VLANs that the
 * forwarding manager knows, where each interface of the layer stands.
 */
Lines whole_view(simswitch::Switch &hardware, const l3lif::Layer &layer);

/** What only one of two sorted lists has: "- " the first, "+ " the second. */
Lines differences(const Lines &before, const Lines &after);

} // namespace lab::faults
