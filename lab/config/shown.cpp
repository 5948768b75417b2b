/*
 * shown.cpp: see shown.h.
 */
#include "config/shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace lab::config
{

namespace
{

/** Code points that steer a terminal, tabs apart. */
bool is_control(std::uint32_t point)
{
    return (point < 0x20 && point != '\t') || (point >= 0x7f && point <= 0x9f);
}

/** Code points that change the order in which others are shown. */
bool is_direction(std::uint32_t point)
{
    return point == 0x061c || (point >= 0x200e && point <= 0x200f) ||
           (point >= 0x2028 && point <= 0x202e) || (point >= 0x2066 && point <= 0x2069);
}

/** How many bytes a sequence has that begins with this one; 0 for none that may begin one. */
std::size_t sequence_length(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        return 2;
    }
    if (first >= 0xe0 && first <= 0xef) {
        return 3;
    }
    return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

/** Adds a text, the line ends as they are or not. */
void add_harmless(std::string_view text, bool keeps_line_ends, std::string &shown)
{
    for (std::size_t at = 0; at < text.size();) {
        const Character next = character_at(text, at);
        const std::size_t length = std::max<std::size_t>(next.length, 1);
        if (next.is_harmless || (keeps_line_ends && text[at] == '\n')) {
            shown += text.substr(at, length);
        } else {
            for (const char byte : text.substr(at, length)) {
                fmt::format_to(std::back_inserter(shown), "\\x{:02x}",
                               static_cast<unsigned char>(byte));
            }
        }
        at += length;
    }
}

} // namespace

Character character_at(std::string_view text, std::size_t at)
{
    static constexpr std::uint32_t LOWEST[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text[at]);
    const std::size_t length = sequence_length(first);
    if (length == 0 || length > text.size() - at) {
        return {first};
    }
    std::uint32_t point = length == 1 ? first : first & (0x7fU >> length);
    for (const char next : text.substr(at + 1, length - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xc0U) != 0x80) {
            return {first};
        }
        point = point << 6 | (byte & 0x3fU);
    }
    const bool surrogate = point >= 0xd800 && point <= 0xdfff;
    if (point < LOWEST[length] || point > 0x10ffff || surrogate) {
        return {first};
    }
    return {point, length, !is_control(point) && !is_direction(point)};
}

bool can_be_shown(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const Character next = character_at(text, at);
        if (!next.is_harmless) {
            return false;
        }
        at += next.length;
    }
    return true;
}

std::string harmless(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    add_harmless(text, false, shown);
    return shown;
}

std::string harmless_lines(std::string_view text)
{
    std::string shown;
    shown.reserve(text.size());
    add_harmless(text, true, shown);
    return shown;
}

} // namespace lab::config
