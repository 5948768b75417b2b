/*
 * escape.h: any text as a part of one line of a recording, and back. What a
 * terminal may be given stays as it is, so that a recording can be read and
 * searched; the rest is escaped. recording.h has the format.
 */
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lab::record
{

/**
 * A text without line ends and control characters: \n, \r, \\, and \x1b for each other byte
 * that config/shown.h holds back. A tab stays.
 */
std::string escaped(std::string_view text);

/** The text that was escaped; nothing where an escape isn't one that `escaped` writes. */
std::optional<std::string> unescaped(std::string_view line);

/** A text of which only what a terminal must not get is escaped: a text with escapes already. */
std::string one_line(std::string_view text);

} // namespace lab::record
