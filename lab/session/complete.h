/*
 * complete.h: what may stand at the cursor of a line: commands, names of
 * interfaces, properties, values, functions, tables, files.
 */
#pragma once

#include "session/state.h"

#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** The words that a line can go on with. */
struct Completion {
    std::string typed;              ///< of the word at the cursor; empty behind a blank
    std::vector<std::string> words; ///< those that begin so, in order, each once
    /** What all of them have behind `typed`. */
    std::string common() const;
};

/** Completes a line. @param line  up to the cursor */
Completion complete(const State &state, std::string_view line);

} // namespace lab::session
