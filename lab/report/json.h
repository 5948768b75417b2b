/*
 * json.h: a run of `rtif up` for machines, as one JSON object. table.h has the
 * same for people.
 */
#pragma once

#include "report/up_result.h"

#include <iosfwd>

namespace lab::report
{

/** Prints a run as one object. */
void print_json(const UpResult &result, const View &view, std::ostream &out);

} // namespace lab::report
