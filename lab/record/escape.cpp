/*
 * escape.cpp: see escape.h.
 */
#include "record/escape.h"

#include "config/shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>

namespace lab::record
{

namespace
{

void append_bytes(std::string &line, std::string_view bytes)
{
    for (const char byte : bytes) {
        fmt::format_to(std::back_inserter(line), "\\x{:02x}", static_cast<unsigned char>(byte));
    }
}

/** The byte of an escape, whose letters stand behind the backslash; takes them off. */
std::optional<char> take_escape(std::string_view &rest)
{
    const char letter = rest.empty() ? '\0' : rest.front();
    rest.remove_prefix(rest.empty() ? 0 : 1);
    switch (letter) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case '\\':
        return '\\';
    case 'x':
        break;
    default:
        return std::nullopt;
    }
    const std::string_view digits = rest.substr(0, 2);
    unsigned value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || read.ec != std::errc() || read.ptr != digits.data() + 2) {
        return std::nullopt;
    }
    rest.remove_prefix(2);
    return static_cast<char>(value);
}

} // namespace

std::string escaped(std::string_view text)
{
    std::string line;
    line.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const config::Character next = config::character_at(text, at);
        const std::size_t length = std::max<std::size_t>(next.length, 1);
        if (text[at] == '\n' || text[at] == '\r') {
            line += text[at] == '\n' ? "\\n" : "\\r";
        } else if (text[at] == '\\') {
            line += "\\\\";
        } else if (next.is_harmless) {
            line += text.substr(at, length);
        } else {
            append_bytes(line, text.substr(at, length));
        }
        at += length;
    }
    return line;
}

std::optional<std::string> unescaped(std::string_view line)
{
    std::string text;
    text.reserve(line.size());
    while (!line.empty()) {
        const std::size_t backslash = std::min(line.find('\\'), line.size());
        text += line.substr(0, backslash);
        line.remove_prefix(backslash);
        if (line.empty()) {
            break;
        }
        line.remove_prefix(1);
        const std::optional<char> byte = take_escape(line);
        if (!byte) {
            return std::nullopt;
        }
        text += *byte;
    }
    return text;
}

std::string one_line(std::string_view text)
{
    return config::harmless(text);
}

} // namespace lab::record
