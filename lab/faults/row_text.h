/*
 * row_text.h: the cells of a row in words. page.h and report.h put them into
 * tables.
 */
#pragma once

#include "faults/rows.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

namespace lab::faults
{

/** Places of calls: "1-3 5". */
std::string ranges_text(const std::set<std::uint64_t> &places);

/** "`bcm_vlan_create` 1-3: `vlan_create(N) failed: E`", as many as there are, <br> between them. */
std::string calls_cell(const Row &row);
/** "any code, once, Trident2 (number kept)". */
std::string faults_cell(const Faults &faults);
/** "goes on", "leaves out 1-3". */
std::string pace_cell(const Row &row);
/** What it leaves, and what has to hold and doesn't. */
std::string stays_cell(const Row &row);

/** Whether a cell of calls names that of an outcome, with what it says. */
bool names_call(const std::string &cell, const Outcome &outcome);
/** Whether a cell of faults names that of an outcome. */
bool names_fault(std::string_view cell, const Outcome &outcome);
/** Whether a cell of what is left has what an outcome leaves. */
bool names_stays(const std::string &cell, const Outcome &outcome);
/** Whether a cell of pace is of a class of pace. */
bool begins_as(std::string_view cell, std::string_view pace);

/** One outcome in a line, for who looks for the reason of a difference. */
std::string outcome_text(const Outcome &outcome);

} // namespace lab::faults
