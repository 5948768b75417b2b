/*
 * rows.cpp: see rows.h.
 */
#include "faults/rows.h"

#include "faults/words.h"
#include "l3lif/layer.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace lab::faults
{

namespace
{

/** Calls that were failed with every code in turn. */
using Call = std::tuple<int, std::string, std::string, std::uint64_t, bool>;

Call call_of(const Outcome &outcome)
{
    return {static_cast<int>(outcome.chip), outcome.asked, outcome.failing.function,
            outcome.failing.place, outcome.failing.forever};
}

/** The calls whose code the request hands up: another code than -1 shows it. */
std::set<Call> handed_up(const std::vector<Outcome> &outcomes)
{
    std::set<Call> calls;
    for (const Outcome &outcome : outcomes) {
        const Failing &failing = outcome.failing;
        if (failing.has_code && failing.code != -1 && outcome.result == failing.code) {
            calls.insert(call_of(outcome));
        }
    }
    return calls;
}

std::string pace_class(const Outcome &outcome)
{
    if (outcome.later == 0) {
        return outcome.result == 0 ? "goes on" : "stops";
    }
    if (outcome.made == outcome.later) {
        return "goes on";
    }
    return outcome.made == 0 ? "stops" : "leaves some out";
}

std::string again_words(const Outcome &outcome)
{
    const Lines lasts = in_words(outcome.lasts);
    const std::string differs = fmt::format("{}", fmt::join(lasts, ", "));
    if (!outcome.again.empty()) {
        return "refused: " + without_numbers(outcome.again) +
               (differs.empty() ? "" : "; " + differs);
    }
    return differs.empty() ? "works" : "works, but for good: " + differs;
}

/** A row in the making: the consequences of one function that leave the same. */
struct Part {
    std::set<std::uint64_t> places;
    Faults faults;
    std::size_t least = SIZE_MAX;
    std::size_t most = 0;
    std::size_t first = SIZE_MAX; ///< place of its first outcome among all
};

using Parts = std::map<std::tuple<Consequences, Said, std::string>, Part>;

/** The variants of each kind of request. */
std::map<std::string, std::set<std::string>> variants_of(const std::vector<Outcome> &outcomes)
{
    std::map<std::string, std::set<std::string>> variants;
    for (const Outcome &outcome : outcomes) {
        variants[outcome.kind].insert(outcome.variant);
    }
    return variants;
}

Parts parts_of(const std::vector<Outcome> &outcomes)
{
    const std::set<Call> codes_up = handed_up(outcomes);
    Parts parts;
    std::size_t number = 0;
    for (const Outcome &outcome : outcomes) {
        const Failing &failing = outcome.failing;
        const bool hands_up = outcome.result == failing.code && codes_up.contains(call_of(outcome));
        Part &part =
            parts[{consequences_of(outcome, hands_up), said_of(outcome), stays_of(outcome)}];
        part.places.insert(failing.place);
        part.faults.chips.insert(static_cast<int>(outcome.chip));
        part.faults.forever.insert(failing.forever);
        part.faults.variants.insert(outcome.variant);
        if (failing.has_code) {
            part.faults.codes.insert(failing.code);
        }
        part.least = std::min(part.least, outcome.later - outcome.made);
        part.most = std::max(part.most, outcome.later - outcome.made);
        part.first = std::min(part.first, number++);
    }
    const auto variants = variants_of(outcomes);
    for (auto &[key, part] : parts) {
        if (part.faults.variants == variants.at(std::get<Consequences>(key).kind)) {
            part.faults.variants.clear();
        }
    }
    return parts;
}

void widen(Row &row, const Row &by)
{
    for (const auto &[said, places] : by.calls) {
        row.calls[said].insert(places.begin(), places.end());
    }
    row.stays.insert(by.stays.begin(), by.stays.end());
    row.least = std::min(row.least, by.least);
    row.most = std::max(row.most, by.most);
}

/** Rows with the place of their first outcome among all. */
using Placed = std::vector<std::pair<std::size_t, Row>>;

/** Brings rows together that have the same key. */
// NOLINTNEXTLINE(performance-unnecessary-value-param): it moves its rows on
template <class Key> Placed merged(Placed rows, Key key)
{
    std::map<decltype(key(rows.front().second)), std::size_t> known;
    Placed result;
    for (auto &[first, row] : rows) {
        const auto [found, is_new] = known.try_emplace(key(row), result.size());
        if (is_new) {
            result.emplace_back(first, std::move(row));
            continue;
        }
        auto &[first_of_all, all] = result[found->second];
        first_of_all = std::min(first_of_all, first);
        widen(all, row);
    }
    return result;
}

std::set<Said> functions_of(const Row &row)
{
    std::set<Said> functions;
    for (const auto &[said, places] : row.calls) {
        functions.insert(said);
    }
    return functions;
}

} // namespace

Consequences consequences_of(const Outcome &outcome, bool hands_up)
{
    std::string result = hands_up ? "its code" : fmt::to_string(outcome.result);
    if (outcome.result == l3lif::Layer::NO_STATION) {
        result = "no station";
    }
    return {.kind = outcome.kind,
            .result = std::move(result),
            .pace = pace_class(outcome),
            .again = again_words(outcome),
            .broken = without_numbers(fmt::format("{}", fmt::join(outcome.broken, "; ")))};
}

/** Nothing is rolled back: where nothing was called behind the failure, all before it stays. */
std::string stays_of(const Outcome &outcome)
{
    const bool is_all = outcome.result != 0 && outcome.made == 0 && outcome.other == 0;
    if (is_all && !outcome.stays.empty()) {
        return "what it did before";
    }
    return without_numbers(fmt::format("{}", fmt::join(outcome.stays, ", ")));
}

Said said_of(const Outcome &outcome)
{
    return {outcome.failing.function, without_numbers(outcome.said)};
}

std::vector<Row> rows_of(const std::vector<Outcome> &outcomes)
{
    Placed rows;
    for (const auto &[key, part] : parts_of(outcomes)) {
        const auto &[consequences, said, stays] = key;
        rows.emplace_back(part.first, Row{.consequences = consequences,
                                          .faults = part.faults,
                                          .calls = {{said, part.places}},
                                          .stays = {stays},
                                          .least = part.least,
                                          .most = part.most});
    }
    // Functions that leave the same share a row, then calls of the same functions that don't.
    rows = merged(std::move(rows), [](const Row &row) {
        return std::tuple(row.consequences, row.faults, row.stays);
    });
    rows = merged(std::move(rows), [](const Row &row) {
        return std::tuple(row.consequences, row.faults, functions_of(row));
    });
    std::map<std::string, std::size_t> kinds;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        kinds.emplace(outcomes[i].kind, i);
    }
    std::ranges::stable_sort(rows, {}, [&kinds](const auto &placed) {
        return std::pair(kinds.at(placed.second.consequences.kind), placed.first);
    });
    std::vector<Row> sorted;
    sorted.reserve(rows.size());
    for (auto &[first, row] : rows) {
        sorted.push_back(std::move(row));
    }
    return sorted;
}

} // namespace lab::faults
