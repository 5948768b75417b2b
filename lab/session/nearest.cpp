/*
 * nearest.cpp: see nearest.h.
 */
#include "session/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace lab::session
{

namespace
{

// Longer words are no names of anything, and not worth the work.
constexpr std::size_t WORD_MAX = 80;
constexpr std::size_t SHOWN_MAX = 60;
constexpr char JOINT = '_';

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same(char a, char b)
{
    return lower(a) == lower(b);
}

/** Edits between two words; upper and lower case are one. */
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> before_last(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, changed});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
        std::swap(before_last, last);
        std::swap(last, row);
    }
    return last[b.size()];
}

/**
 * The same, for names in several parts: one that lacks the candidate's first
 * parts, as the rtifhal_ of rtifhal_bcm_l3_intf_create, is one edit away from it.
 */
std::size_t distance_of_name(std::string_view word, std::string_view candidate)
{
    std::size_t fewest = distance(word, candidate);
    if (word.find(JOINT) == word.npos) {
        return fewest;
    }
    for (std::size_t at = candidate.find(JOINT);
         at != candidate.npos && candidate.size() - at > word.size() / 2;
         at = candidate.find(JOINT, at + 1)) {
        fewest = std::min(fewest, distance(word, candidate.substr(at + 1)) + 1);
    }
    return fewest;
}

/** A word that isn't known may be long. */
std::string shortened(std::string_view word)
{
    if (word.size() <= SHOWN_MAX) {
        return std::string(word);
    }
    std::size_t end = SHOWN_MAX;
    // Not within a character of several bytes.
    while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xc0U) == 0x80) {
        --end;
    }
    return fmt::format("{}…", word.substr(0, end));
}

} // namespace

std::optional<std::string> nearest(std::string_view word, const std::vector<std::string> &known)
{
    if (word.empty() || word.size() > WORD_MAX) {
        return std::nullopt;
    }
    const std::size_t limit = std::max<std::size_t>(1, (word.size() + 1) / 3);
    const std::string *best = nullptr;
    std::size_t fewest = limit + 1;
    for (const std::string &candidate : known) {
        const std::size_t edits = distance_of_name(word, candidate);
        if (edits < fewest) {
            best = &candidate;
            fewest = edits;
        }
    }
    return best == nullptr ? std::nullopt : std::optional<std::string>(*best);
}

std::string unknown(std::string_view what, std::string_view word,
                    const std::vector<std::string> &known)
{
    const auto meant = nearest(word, known);
    if (meant) {
        return fmt::format("unknown {} '{}': did you mean '{}'?", what, shortened(word), *meant);
    }
    return fmt::format("unknown {} '{}'", what, shortened(word));
}

} // namespace lab::session
