/*
 * restart_json.h: a run of `rtif restart` for machines, as one JSON object.
 * restart_text.h has the same for people.
 */
#pragma once

#include "report/restart_report.h"

#include <iosfwd>

namespace lab::report
{

/** Prints a run as one object. */
void print_restart_json(const RestartReport &report, std::ostream &out);

} // namespace lab::report
