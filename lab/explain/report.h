/*
 * report.h: a finding (finding.h) for people, sections of lines with the request
 * that put each entry there at the right, and for machines.
 */
#pragma once

#include "explain/finding.h"

#include <string>
#include <vector>

namespace lab::explain
{

/** A finding as lines, each with its line end. */
std::string text_of(const Finding &finding);

/** The title, then each section's title and facts, a line each with single blanks, no line ends. */
std::vector<std::string> lines_of(const Finding &finding);

/** The same as one JSON object, with a line end; of each entry all its authors. */
std::string json_of(const Finding &finding);

} // namespace lab::explain
