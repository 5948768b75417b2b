/*
 * restart_text.h: a run of `rtif restart` for people. restart_json.h has the
 * same for machines.
 */
#pragma once

#include "report/restart_report.h"

#include <iosfwd>

namespace lab::report
{

/** Prints a run. */
void print_restart(const RestartReport &report, const View &view, std::ostream &out);

} // namespace lab::report
