/*
 * row_text.cpp: see row_text.h.
 */
#include "faults/row_text.h"

#include "faults/sweep.h"

#include "chip/limits.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace lab::faults
{

namespace
{

/** The class of pace whose count is told. */
constexpr std::string_view LEAVES = "leaves some out";
constexpr std::string_view BREAK = "<br>";
constexpr std::string_view OR = " *or* ";
constexpr std::string_view NOTHING = "nothing";
constexpr std::string_view LEAVES_CELL = "leaves out ";

std::string escaped(std::string text)
{
    for (std::size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
        text.insert(at, "\\");
    }
    return text;
}

/** ": `vlan_create(N) failed: E`"; empty for no message. */
std::string message_text(const Said &said)
{
    return said.message.empty() ? "" : escaped(fmt::format(": `{}`", said.message));
}

/** Whether a word is in a list, whose words may have blanks around them. */
bool has_word(std::string_view list, char between, std::string_view word)
{
    while (!list.empty()) {
        const std::size_t end = list.find(between);
        std::string_view one = list.substr(0, end);
        one.remove_prefix(std::min(one.find_first_not_of(' '), one.size()));
        if (one == word) {
            return true;
        }
        list = end == std::string_view::npos ? "" : list.substr(end + 1);
    }
    return false;
}

std::string_view chip_word(int chip)
{
    return chip == static_cast<int>(simswitch::chip::Kind::trident2) ? "Trident2" : "Trident";
}

/** Whether "1-3 5" has a number. */
bool has_place(std::string_view ranges, std::uint64_t place)
{
    while (!ranges.empty()) {
        const std::size_t blank = ranges.find(' ');
        const std::string_view range = ranges.substr(0, blank);
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        const auto read = std::from_chars(range.data(), range.data() + range.size(), first);
        last = first;
        if (read.ptr != range.data() + range.size()) {
            std::from_chars(read.ptr + 1, range.data() + range.size(), last);
        }
        if (place >= first && place <= last) {
            return true;
        }
        ranges = blank == std::string_view::npos ? "" : ranges.substr(blank + 1);
    }
    return false;
}

} // namespace

std::string ranges_text(const std::set<std::uint64_t> &places)
{
    std::vector<std::string> ranges;
    for (auto place = places.begin(); place != places.end();) {
        // cppcheck-suppress derefInvalidIteratorRedundantCheck ; the loop runs while there is one
        const std::uint64_t first = *place;
        std::uint64_t last = first;
        for (++place; place != places.end() && *place == last + 1; ++place) {
            ++last;
        }
        ranges.push_back(first == last ? fmt::to_string(first) : fmt::format("{}-{}", first, last));
    }
    return fmt::format("{}", fmt::join(ranges, " "));
}

std::string calls_cell(const Row &row)
{
    std::vector<std::string> calls;
    for (const auto &[said, places] : row.calls) {
        const bool is_first = places.size() == 1 && *places.begin() == 1;
        calls.push_back(fmt::format("`{}`{}{}", said.function,
                                    is_first ? "" : " " + ranges_text(places), message_text(said)));
    }
    return fmt::format("{}", fmt::join(calls, BREAK));
}

std::string faults_cell(const Faults &faults)
{
    std::string text = "null";
    if (faults.codes.size() == ALL_CODES.size()) {
        text = "any code";
    } else if (!faults.codes.empty()) {
        const std::vector<int> codes(faults.codes.rbegin(), faults.codes.rend());
        text = fmt::format("{}", fmt::join(codes, " "));
    }
    if (faults.forever.size() == 1) {
        text += *faults.forever.begin() ? ", for ever" : ", once";
    }
    if (faults.chips.size() == 1) {
        text += fmt::format(", {}", chip_word(*faults.chips.begin()));
    }
    if (!faults.variants.empty()) {
        text += fmt::format(" ({})", fmt::join(faults.variants, ", "));
    }
    return text;
}

std::string pace_cell(const Row &row)
{
    if (row.consequences.pace != LEAVES) {
        return row.consequences.pace;
    }
    return row.least == row.most ? fmt::format("{}{}", LEAVES_CELL, row.least)
                                 : fmt::format("{}{}-{}", LEAVES_CELL, row.least, row.most);
}

std::string stays_cell(const Row &row)
{
    std::string text;
    for (const std::string &stays : row.stays) {
        text += text.empty() && &stays == &*row.stays.begin() ? "" : std::string(OR);
        text += stays.empty() && row.stays.size() > 1 ? NOTHING : stays;
    }
    const std::string &broken = row.consequences.broken;
    return escaped(broken.empty() ? text : fmt::format("**{}**{}{}", broken, BREAK, text));
}

bool names_call(const std::string &cell, const Outcome &outcome)
{
    const Said said = said_of(outcome);
    const std::string name = fmt::format("`{}`", said.function);
    const std::string message = message_text(said);
    for (std::size_t begin = 0; begin != std::string::npos;) {
        const std::size_t end = cell.find(BREAK, begin);
        std::string_view call = std::string_view(cell).substr(
            begin, end == std::string::npos ? std::string::npos : end - begin);
        begin = end == std::string::npos ? end : end + BREAK.size();
        if (!call.starts_with(name) || !call.ends_with(message)) {
            continue;
        }
        call.remove_prefix(name.size());
        call.remove_suffix(message.size());
        if (call.empty()
                ? outcome.failing.place == 1
                : call.front() == ' ' && has_place(call.substr(1), outcome.failing.place)) {
            return true;
        }
    }
    return false;
}

bool names_fault(std::string_view cell, const Outcome &outcome)
{
    const Failing &failing = outcome.failing;
    std::string_view variants;
    if (const std::size_t begin = cell.find(" ("); begin != std::string_view::npos) {
        variants = cell.substr(begin + 2, cell.size() - begin - 3);
        cell = cell.substr(0, begin);
    }
    const std::string_view codes = cell.substr(0, cell.find(','));
    const bool code =
        failing.has_code ? codes == "any code" || has_word(codes, ' ', fmt::to_string(failing.code))
                         : codes == "null";
    const bool mode =
        cell.find(failing.forever ? ", once" : ", for ever") == std::string_view::npos;
    const std::string_view chip = chip_word(static_cast<int>(outcome.chip));
    const std::size_t other = cell.find(", Trident");
    const bool on_chip = other == std::string_view::npos || cell.substr(other + 2) == chip;
    return code && mode && on_chip &&
           (variants.empty() || has_word(variants, ',', outcome.variant));
}

bool names_stays(const std::string &cell, const Outcome &outcome)
{
    const std::string stays = escaped(stays_of(outcome));
    for (std::size_t begin = 0; begin != std::string::npos;) {
        const std::size_t end = cell.find(OR, begin);
        const std::string one =
            cell.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
        if (one == stays || (stays.empty() && one == NOTHING)) {
            return true;
        }
        begin = end == std::string::npos ? end : end + OR.size();
    }
    return false;
}

bool begins_as(std::string_view cell, std::string_view pace)
{
    return pace == LEAVES ? cell.starts_with(LEAVES_CELL) : cell == pace;
}

std::string outcome_text(const Outcome &outcome)
{
    const Failing &failing = outcome.failing;
    const Consequences seen = consequences_of(outcome, false);
    return fmt::format("{} {}, {}: call {} of {} {}: result {}, {} of {} later calls made, says "
                       "\"{}\", leaves \"{}\", again \"{}\"{}{}",
                       chip_word(static_cast<int>(outcome.chip)), outcome.kind, outcome.asked,
                       failing.place, failing.function,
                       failing.has_code ? fmt::format("gives {}{}", failing.code,
                                                      failing.forever ? " for ever" : "")
                                        : "gives nothing",
                       outcome.result, outcome.made, outcome.later, said_of(outcome).message,
                       stays_of(outcome), seen.again,
                       seen.broken.empty() ? "" : ", BROKEN: ", seen.broken);
}

} // namespace lab::faults
