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

} // namespace lab::page
