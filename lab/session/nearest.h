/*
 * nearest.h: the known word that an unknown one was meant to be.
 */
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/**
 * The known word that is fewest edits away: letters put in, left out, changed,
 * or two swapped.
 *
 * @param word   any text
 * @param known  the words to choose from
 * @return the first of the nearest ones; nothing when none is near enough to
 *         have been meant, a third of the word's letters at most
 */
std::optional<std::string> nearest(std::string_view word, const std::vector<std::string> &known);

/** "unknown command 'shwo': did you mean 'show'?"; without the question when nothing is near. */
std::string unknown(std::string_view what, std::string_view word,
                    const std::vector<std::string> &known);

} // namespace lab::session
