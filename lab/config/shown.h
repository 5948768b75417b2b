/*
 * shown.h: texts that come from outside, a file's names above all, as they may go to a terminal.
 * What steers a terminal, changes the order of what is shown, or is no UTF-8 is never printed raw.
 *
 * names.h puts a text in quotes by the same rules.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lab::config
{

/** A character of a text. */
struct Character {
    std::uint32_t point = 0; ///< its code point; the byte where the bytes are no UTF-8
    std::size_t length = 0;  ///< in bytes; 0 where the bytes are no UTF-8
    bool is_harmless = false;
};

/** The character at a place of a text. A tab is harmless, a line end isn't. */
Character character_at(std::string_view text, std::size_t at);

/** Whether a text could stand in a line and be shown as it is. */
bool can_be_shown(std::string_view text);

/** A text with each byte of what isn't harmless as \x1b. Of what is, nothing changes. */
std::string harmless(std::string_view text);

/** The same of a text of several lines, whose line ends stay. */
std::string harmless_lines(std::string_view text);

} // namespace lab::config
