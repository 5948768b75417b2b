/*
 * rows.h: outcomes brought together: calls of one kind of request whose failure
 * has the same consequences are one row. page.h prints them.
 */
#pragma once

#include "faults/outcome.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace lab::faults
{

// clang-tidy takes the 0 in a defaulted comparison for a null pointer.

/** The consequences of a failure, in words. */
struct Consequences {
    std::string kind;   ///< of the request
    std::string result; ///< "0", "-1", "the call's code"
    std::string pace;   ///< "goes on", "stops", "leaves some out"
    std::string again;  ///< "works", "works, but: …", "refused: …"
    std::string broken; ///< what has to hold and doesn't; empty

    auto operator<=>(const Consequences &) const = default; // NOLINT(modernize-use-nullptr)
};

/** With which faults they come. */
struct Faults {
    std::set<int> codes;            ///< empty for a call whose result is no code
    std::set<bool> forever;         ///< once (false), for ever (true)
    std::set<int> chips;            ///< the kinds as numbers
    std::set<std::string> variants; ///< of the request; empty: all that there are

    auto operator<=>(const Faults &) const = default; // NOLINT(modernize-use-nullptr)
};

/** A function, and the first error message when it fails; its numbers are N. */
struct Said {
    std::string function;
    std::string message; ///< empty for none

    auto operator<=>(const Said &) const = default; // NOLINT(modernize-use-nullptr)
};

/** A row. */
struct Row {
    Consequences consequences;
    Faults faults;
    std::map<Said, std::set<std::uint64_t>> calls = {}; ///< with their places in a request
    std::set<std::string> stays = {}; ///< what it leaves, one of these; an empty one for nothing
    std::size_t least = 0;            ///< the fewest later calls that were left out
    std::size_t most = 0;             ///< and the most
};

/** The consequences of an outcome. @param hands_up  its result is the call's code */
Consequences consequences_of(const Outcome &outcome, bool hands_up);

/** What an outcome leaves. */
std::string stays_of(const Outcome &outcome);
/** What an outcome says. */
Said said_of(const Outcome &outcome);

/** All rows: kinds of requests in the order of their first one, within them by the first call. */
std::vector<Row> rows_of(const std::vector<Outcome> &outcomes);

} // namespace lab::faults
