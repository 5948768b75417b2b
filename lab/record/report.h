/*
 * report.h: how a replay or two recordings compare, for people: totals, a line
 * for each request that differs, and its lines beside each other. compare.h
 * compares.
 */
#pragma once

#include "record/compare.h"
#include "record/recording.h"

#include <iosfwd>
#include <string>

namespace lab::record
{

/** What of two recordings is shown. */
struct DiffView {
    bool summary = false;     ///< no lines of requests
    std::string request = {}; ///< the lines of the requests of this name alone; empty: of all
    bool colour = false;      ///< colours, for a terminal
};

/** Prints how two recordings compare. */
void print_diff(const Recording &before, const Recording &after, const Comparison &comparison,
                const DiffView &view, std::ostream &out);

/** What of a replay is shown. */
struct ReplayView {
    bool all = false;    ///< a line for each request that differs
    bool colour = false; ///< colours, for a terminal
};

/**
 * Prints how a replay went.
 *
 * @param recorded    what was recorded
 * @param now         the new run
 * @param comparison  of both; of a recording that was cut off, with what the new run has beyond it
 */
void print_replay(const Recording &recorded, const Recording &now, const Comparison &comparison,
                  const ReplayView &view, std::ostream &out);

/** Whether a replay did what was recorded: of a run that was cut off, as far as it came. */
bool is_as_recorded(const Recording &recorded, const Comparison &comparison);

} // namespace lab::record
