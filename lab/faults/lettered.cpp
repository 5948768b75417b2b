/*
 * lettered.cpp: see lettered.h.
 */
#include "faults/lettered.h"

namespace lab::faults
{

void add_lettered(Lines &lines, char letter, std::string_view text)
{
    lines.emplace_back(1, letter).append(text);
}

Lettered read_lettered(const std::string &line)
{
    return {line.front(), line.substr(1)};
}

} // namespace lab::faults
