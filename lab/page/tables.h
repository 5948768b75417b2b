/*
 * tables.h: how full the chip's tables are, for the page of a switch.
 */
#pragma once

#include "page/records.h"

#include "chip/chip.h"

#include <vector>

namespace lab::page
{

/** The fill of each table that has a size, in the order of the road of a packet. */
std::vector<TableFill> tables_of(const simswitch::chip::Chip &chip);

/**
 * The library's own numbers of interfaces. They may be used up while the chip's tables have
 * room: the chip keeps the upper ones for itself, the library the first ones. A number that is
 * held back counts as free, as it is given out when no other is left.
 */
TableFill numbers_of(simswitch::chip::Kind chip);

} // namespace lab::page
