/*
 * words.h: differences of a switch, and messages, in the few words that a table
 * has room for.
 */
#pragma once

#include "faults/processes.h"

#include <string>
#include <string_view>

namespace lab::faults
{

/**
 * Differences in short words, each once, sorted: "L3 interface", "without
 * ingress object", "other controls of a VLAN".
 *
 * @param differences  as faults/views.h gives them: what is there and wasn't, or the reverse
 */
Lines in_words(const Lines &differences);

/** A message whose numbers are N and whose text of an error is E. */
std::string without_numbers(std::string_view message);

} // namespace lab::faults
