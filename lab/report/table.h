/*
 * table.h: a run of `rtif up` for people: a table of the interfaces, totals,
 * then what wasn't taken and why. json.h has the same for machines.
 */
#pragma once

#include "report/up_result.h"

#include <iosfwd>

namespace lab::report
{

/** Prints a run. */
void print_table(const UpResult &result, const View &view, std::ostream &out);

} // namespace lab::report
