/*
 * words.cpp: see words.h.
 */
#include "session/words.h"

#include "config/shown.h"
#include "session/errors.h"

#include <fmt/format.h>

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

void check_bytes(std::string_view line)
{
    for (std::size_t at = 0; at < line.size();) {
        const config::Character next = config::character_at(line, at);
        if (next.length == 0) {
            throw UsageError(fmt::format("byte {:#04x} in column {} is no UTF-8: only text is read",
                                         next.point, at + 1));
        }
        if (!next.is_harmless) {
            throw UsageError(fmt::format(
                "column {} holds the control character U+{:04X}: take it out", at + 1, next.point));
        }
        at += next.length;
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
    return config::can_be_shown(text);
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

std::string as_written(const Words &words)
{
    std::string text;
    for (const std::string &word : words) {
        text += text.empty() ? "" : " ";
        text += as_written(word);
    }
    return text;
}

} // namespace lab::session
