/*
 * page.cpp: see page.h.
 */
#include "faults/page.h"

#include "faults/failing_calls.h"
#include "faults/row_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <ostream>
#include <sstream>

namespace lab::faults
{

namespace
{

constexpr std::string_view HEADING = "## ";
constexpr std::size_t COLUMNS = 6;

constexpr std::string_view BEGIN = R"(# What a failing call means

Each request of `{0}` was made once for every platform call that it makes, with that call
failing: with each of five codes, once and for ever. This page is what became of it. `./dev faults --write`
makes it anew, `rtif sweep CONFIG` does the same for any configuration.

## How to read it

A heading is a kind of request. Below it, calls whose failure has the same consequences share a row.

| column | |
|---|---|
| call | the platform function, which of its calls in the request (no number: the first), and the first error message, with N for a number and E for the text of an error; [messages.md](messages.md) has all of them; `malloc` is any allocation |
| fails | with which codes, and whether only once or from there on for ever; *null*: it gives no record or no memory; a chip's name: on that chip only; in parentheses: only with such requests of that kind |
| result | what the request returns; *its code*: the code of the call |
| then | *goes on*: every later call is made all the same; *stops*: none is; *leaves out*: so many of them are not made |
| leaves | of a request whose result shows the failure: what is there that wasn't before it. Of one that returns as if nothing had failed: what is otherwise than it should be |
| deleted and added again | whether the object works once the layer above has deleted it and added it again without the failure, and what of the failure stays even then |

## What to do

* A result other than 0 (of a router MAC: no station) means that the object is there in part. Delete it and add it
  again. Where the last column says *works*, nothing is left of the failure.
* A result of 0 with a message means that the object works but for what the column *leaves* names. Delete it and add
  it again at a time when it may stop.
* A result of 0 without a message is found by nobody but `rtif check`, or by who reads this page.
* *works, but for good* names what no request takes back: the process has to start anew on an empty chip, which is a
  cold start. *refused* means that the object doesn't come back until then.
* *numbers in use* for good is one interface number that nobody has and nobody gets.

What holds after every one of these failures: the process lives, no memory is written that isn't its own, no number is
handed out twice, and once the object was deleted and added again the accounting of the library says what the chip's
VLANs say.

## What is never made to fail

| why | functions |
|---|---|
)";

std::vector<std::string> cells_of(const std::string &line)
{
    std::vector<std::string> cells;
    std::string cell;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '|' && line[i - 1] != '\\') {
            const std::size_t first = cell.find_first_not_of(' ');
            const std::size_t last = cell.find_last_not_of(' ');
            cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
            cell.clear();
        } else {
            cell += line[i];
        }
    }
    return cells;
}

/** The rows of a page by the heading that they stand under. */
std::map<std::string, std::vector<std::vector<std::string>>> read_page(std::string_view page)
{
    std::map<std::string, std::vector<std::vector<std::string>>> sections;
    std::istringstream in{std::string(page)};
    std::string heading;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with(HEADING)) {
            heading = line.substr(HEADING.size());
        } else if (line.starts_with("| ")) {
            if (auto cells = cells_of(line); cells.size() == COLUMNS) {
                sections[heading].push_back(std::move(cells));
            }
        }
    }
    return sections;
}

/** Whether a row tells an outcome. */
bool tells(const std::vector<std::string> &cells, const Outcome &outcome)
{
    if (!names_call(cells[0], outcome) || !names_fault(cells[1], outcome)) {
        return false;
    }
    const bool hands_up = cells[2] == "its code" && outcome.result == outcome.failing.code;
    const Consequences seen = consequences_of(outcome, hands_up);
    return cells[2] == seen.result && begins_as(cells[3], seen.pace) &&
           names_stays(cells[4], outcome) && cells[5] == seen.again;
}

} // namespace

std::vector<std::string> page_lines(const std::vector<Row> &rows)
{
    std::vector<std::string> lines;
    std::string kind;
    for (const Row &row : rows) {
        if (row.consequences.kind != kind) {
            kind = row.consequences.kind;
            if (!lines.empty()) {
                lines.emplace_back();
            }
            lines.push_back(fmt::format("{}{}", HEADING, kind));
            lines.emplace_back();
            lines.emplace_back(
                "| call | fails | result | then | leaves | deleted and added again |");
            lines.emplace_back("|---|---|---|---|---|---|");
        }
        const std::array<std::string, COLUMNS> cells = {
            calls_cell(row), faults_cell(row.faults), row.consequences.result,
            pace_cell(row),  stays_cell(row),         row.consequences.again,
        };
        lines.push_back(fmt::format("| {} |", fmt::join(cells, " | ")));
    }
    return lines;
}

void print_page(const SweepResult &result, std::string_view file, std::ostream &out)
{
    out << fmt::format(fmt::runtime(BEGIN), file);
    for (const NeverFail &reason : never_fail()) {
        out << fmt::format("| {} | `{}`{}{} |\n", reason.why, fmt::join(reason.functions, "`, `"),
                           reason.pattern.empty() ? "" : ", ", reason.pattern);
    }
    out << '\n';
    for (const std::string &line : page_lines(rows_of(result.outcomes))) {
        out << line << '\n';
    }
}

std::vector<std::string> untold(std::string_view page, const std::vector<Outcome> &outcomes)
{
    const auto sections = read_page(page);
    std::vector<std::string> lines;
    for (const Outcome &outcome : outcomes) {
        const auto section = sections.find(outcome.kind);
        const bool is_told = section != sections.end() &&
                             std::ranges::any_of(section->second, [&outcome](const auto &cells) {
                                 return tells(cells, outcome);
                             });
        if (!is_told) {
            lines.push_back(outcome_text(outcome));
        }
    }
    return lines;
}

} // namespace lab::faults
