/*
 * chip_match.h: whether two chips hold the same but for the numbers that the
 * library and the chip hand out: those of interfaces, stations, egress objects,
 * multipath groups and tunnels.
 *
 * Nothing is left out: each number of one chip stands for exactly one of the
 * other, wherever it is named. road_switch.h has the switches.
 */
#pragma once

#include "l3lif/layer.h"

#include "chip/chip.h"
#include "switch.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace roads
{

/**
 * A chip's entries, each with the names of what it refers to in the place of numbers; fields too
 * that no line of a snapshot shows. Sorted.
 *
 * @param numbers  interfaces by their names; one that the chip has and that isn't among them
 *                 stays a number
 * @return a line each; entries that are the same but for their own number are there as often
 */
std::vector<std::string> named_entries(const simswitch::chip::Chip &chip,
                                       const std::map<std::string, int> &numbers);

/**
 * The library's tables, the store and the wrappers' caches, with names in the place of numbers;
 * of a virtual MAC the station that the chip has under the number that the library keeps. Sorted.
 * Which numbers are held back isn't in it.
 */
std::vector<std::string> named_tables(simswitch::Switch &hardware, const lab::l3lif::Layer &layer);

/** The first place where two lists part, as "place 7: - …, + …"; empty where they don't. */
std::string first_difference(const std::vector<std::string> &one,
                             const std::vector<std::string> &other);

/** What of a line is otherwise by another road. */
struct Change {
    std::string_view begin; ///< of the line
    std::string_view from;
    std::string_view to;
};

/** Lines with changes, each made once in each line that begins so. Sorted. */
std::vector<std::string> changed(std::vector<std::string> lines,
                                 const std::vector<Change> &changes);

} // namespace roads
