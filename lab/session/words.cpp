/*
 * words.cpp: see words.h.
 */
#include "session/words.h"

#include "session/errors.h"

#include <fmt/format.h>

#include <cstdint>

namespace lab::session
{

namespace
{

constexpr char COMMENT = '#';
constexpr char QUOTE = '"';
constexpr char ESCAPE = '\\';

bool is_blank(char c)
{
    return c == ' ' || c == '\t';
}

/** Code points that steer a terminal, tabs apart. */
bool is_control(std::uint32_t point)
{
    return (point < 0x20 && point != '\t') || (point >= 0x7f && point <= 0x9f);
}

/** Code points that change the order in which others are shown. */
bool is_direction(std::uint32_t point)
{
    return (point >= 0x200e && point <= 0x200f) || (point >= 0x2028 && point <= 0x202e) ||
           (point >= 0x2066 && point <= 0x2069);
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

/** The code point at a place; its length becomes 0 when the bytes are no UTF-8. */
std::uint32_t code_point(std::string_view text, std::size_t at, std::size_t &length)
{
    static constexpr std::uint32_t LOWEST[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text[at]);
    length = sequence_length(first);
    if (length == 0 || at + length > text.size()) {
        length = 0;
        return first;
    }
    std::uint32_t point = length == 1 ? first : first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[at + i]);
        if ((byte & 0xc0U) != 0x80) {
            length = 0;
            return first;
        }
        point = point << 6 | (byte & 0x3fU);
    }
    const bool surrogate = point >= 0xd800 && point <= 0xdfff;
    if (point < LOWEST[length] || point > 0x10ffff || surrogate) {
        length = 0;
        return first;
    }
    return point;
}

void check_bytes(std::string_view line)
{
    for (std::size_t at = 0; at < line.size();) {
        std::size_t length = 0;
        const std::uint32_t point = code_point(line, at, length);
        if (length == 0) {
            throw UsageError(fmt::format("byte {:#04x} in column {} is no UTF-8: only text is read",
                                         point, at + 1));
        }
        if (is_control(point) || is_direction(point)) {
            throw UsageError(fmt::format(
                "column {} holds the control character U+{:04X}: take it out", at + 1, point));
        }
        at += length;
    }
}

/** The words of a line that is read from left to right. */
class Cutter
{
public:
    explicit Cutter(std::string_view line) : line_(line) {}

    Unfinished cut()
    {
        while (at_ < line_.size() && !result_.in_comment) {
            if (is_blank(line_[at_])) {
                finish_word();
                ++at_;
            } else if (line_[at_] == COMMENT && !in_word_) {
                result_.in_comment = true;
            } else {
                take();
            }
        }
        return std::move(result_);
    }
    /** Whether a word stands at the end, be it an empty one in quotes. */
    bool in_word() const { return in_word_; }

private:
    void finish_word()
    {
        if (in_word_) {
            result_.before.push_back(std::move(result_.last));
            result_.last.clear();
        }
        in_word_ = false;
    }

    /** A character of a word, or all that stands in quotes. */
    void take()
    {
        in_word_ = true;
        if (line_[at_] != QUOTE) {
            result_.last += line_[at_++];
            return;
        }
        for (++at_; at_ < line_.size() && line_[at_] != QUOTE; ++at_) {
            const bool escaped = line_[at_] == ESCAPE && at_ + 1 < line_.size() &&
                                 (line_[at_ + 1] == QUOTE || line_[at_ + 1] == ESCAPE);
            at_ += escaped ? 1 : 0;
            result_.last += line_[at_];
        }
        result_.in_quotes = at_ >= line_.size();
        ++at_;
    }

    std::string_view line_;
    std::size_t at_ = 0;
    bool in_word_ = false;
    Unfinished result_;
};

} // namespace

Words split(std::string_view line)
{
    if (line.size() > LINE_MAX_BYTES) {
        throw UsageError(fmt::format("the line is longer than {} bytes", LINE_MAX_BYTES));
    }
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    check_bytes(line);
    Cutter cutter(line);
    Unfinished result = cutter.cut();
    if (result.in_quotes) {
        throw UsageError("a quote is opened and not closed");
    }
    if (cutter.in_word()) {
        result.before.push_back(std::move(result.last));
    }
    return std::move(result.before);
}

Unfinished split_unfinished(std::string_view line)
{
    return Cutter(line).cut();
}

bool can_be_shown(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = 0;
        const std::uint32_t point = code_point(text, at, length);
        if (length == 0 || is_control(point) || is_direction(point)) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string as_written(std::string_view word)
{
    const bool bare = !word.empty() && word.front() != COMMENT &&
                      word.find_first_of(" \t\"") == std::string_view::npos;
    if (bare) {
        return std::string(word);
    }
    std::string text(1, QUOTE);
    for (const char c : word) {
        if (c == QUOTE || c == ESCAPE) {
            text += ESCAPE;
        }
        text += c;
    }
    return text + QUOTE;
}

} // namespace lab::session
