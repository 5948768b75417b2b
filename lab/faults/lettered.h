/*
 * lettered.h: lines of several kinds in one list, as a process hands them back:
 * a letter tells the kind, the text follows. run.h and sweep.h use them.
 */
#pragma once

#include "faults/processes.h"

#include <string>
#include <string_view>

namespace lab::faults
{

/** A line taken apart. */
struct Lettered {
    char letter = 0;
    std::string text;
};

/** Puts a line of a kind at the end of a list. */
void add_lettered(Lines &lines, char letter, std::string_view text);

/** Takes a line apart. @param line  that add_lettered made: it isn't empty */
Lettered read_lettered(const std::string &line);

} // namespace lab::faults
