/*
 * report.h: what `rtif sweep` prints: its rows as tables or as JSON, and the
 * totals. page.h has the same as a page of the documentation.
 */
#pragma once

#include "faults/sweep.h"

#include <iosfwd>
#include <string_view>

namespace lab::faults
{

/** Prints a table for each kind of request, then the totals. @param file  the configuration's name
 */
void print_text(const SweepResult &result, std::string_view file, std::ostream &out);

/** Prints one JSON object. @param file  the configuration's name */
void print_json(const SweepResult &result, std::string_view file, std::ostream &out);

/** Prints the totals, a few lines. */
void print_totals(const SweepResult &result, std::ostream &out);

} // namespace lab::faults
