/*
 * words.h: a line of the session's language, cut into its words.
 *
 * Words stand between blanks and tabs. A word with blanks or a # in it stands
 * in quotes, in which \" and \\ are a quote and a backslash. What stands behind
 * a # that begins a word is a comment.
 *
 * What passes here can be shown on a terminal as it stands: bytes that are no
 * UTF-8 and control characters are refused. verbs.h has what the words mean.
 */
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** The longest line that is read, in bytes. */
inline constexpr std::size_t LINE_MAX_BYTES = 4096;

/** A line's words, without quotes. */
using Words = std::vector<std::string>;

/** Where in a line a word begins, and the words before it: what completion looks at. */
struct Unfinished {
    Words before;           ///< the words that are finished
    std::string last;       ///< the beginning of the word at the end; empty behind a blank
    bool in_quotes = false; ///< the last word has an open quote
    bool in_comment = false;
};

/**
 * Cuts a line into words.
 *
 * @param line  without its line end; a carriage return at its end is dropped
 * @return the words; none for an empty line or a comment
 * @throws UsageError for a line longer than LINE_MAX_BYTES, a quote that isn't
 *         closed, a control character, or bytes that are no UTF-8
 */
Words split(std::string_view line);

/** The same of the beginning of a line, up to the cursor; whatever stands there. */
Unfinished split_unfinished(std::string_view line);

/** Whether a text could stand in a line and be shown as it is. */
bool can_be_shown(std::string_view text);

/** A word as it is written: in quotes where it needs them. */
std::string as_written(std::string_view word);

/** A line as it is written, its words one blank apart. */
std::string as_written(const Words &words);

} // namespace lab::session
