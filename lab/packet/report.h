/*
 * report.h: an explanation as people read it: one line a stage, the verdict,
 * what changed, what else meets the same fate. json.h has it for machines.
 */
#pragma once

#include "packet/explanation.h"

#include <cstddef>
#include <iosfwd>

namespace lab::packet
{

/** How an explanation is shown. */
struct ReportView {
    std::size_t width = 0; ///< columns of the terminal; 0 for none: lines of up to 120
    bool colour = false;   ///< the terminal wants colours
};

/** Prints an explanation as text. */
void print_text(const Explanation &explanation, const ReportView &view, std::ostream &out);

/** Prints an explanation as one JSON object; docs/packets.md tells its shape. */
void print_json(const Explanation &explanation, std::ostream &out);

} // namespace lab::packet
