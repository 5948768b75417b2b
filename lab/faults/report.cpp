/*
 * report.cpp: see report.h.
 */
#include "faults/report.h"

#include "config/shown.h"
#include "faults/row_text.h"
#include "faults/rows.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace lab::faults
{

namespace
{

/** The rows of one kind of request, and the lines below each of them. */
class Section
{
public:
    void add(const Row &row)
    {
        const Consequences &seen = row.consequences;
        bool is_first = true;
        for (const auto &[said, places] : row.calls) {
            const std::string call = fmt::format("{} {}", said.function, ranges_text(places));
            if (std::exchange(is_first, false)) {
                table_.add(
                    {call, faults_cell(row.faults), seen.result, pace_cell(row), seen.again});
            } else {
                table_.add({call, "", "", "", ""});
            }
            below_.emplace_back();
            if (!said.message.empty()) {
                below_.back().push_back("says " + said.message);
            }
        }
        if (!seen.broken.empty()) {
            below_.back().push_back("BROKEN: " + seen.broken);
        } else if (row.stays != std::set<std::string>{""}) {
            below_.back().push_back("leaves " + stays_cell(row));
        }
    }

    void print(std::ostream &out) const
    {
        fmt::print(out, "{}\n", table_.titles());
        for (std::size_t i = 0; i < table_.size(); ++i) {
            fmt::print(out, "{}\n", table_.line(i, ""));
            for (const std::string &line : below_[i]) {
                fmt::print(out, "    {}\n", line);
            }
        }
    }

private:
    report::TextTable table_{
        {{"CALL"}, {"FAILS"}, {"RESULT"}, {"THEN"}, {"DELETED AND ADDED AGAIN"}}, 4};
    std::vector<std::vector<std::string>> below_;
};

nlohmann::json json_of(const Row &row)
{
    const Consequences &seen = row.consequences;
    nlohmann::json calls = nlohmann::json::array();
    for (const auto &[said, places] : row.calls) {
        calls.push_back({{"function", said.function}, {"places", places}, {"says", said.message}});
    }
    return {{"request", seen.kind},
            {"calls", std::move(calls)},
            {"codes", row.faults.codes},
            {"once", row.faults.forever.contains(false)},
            {"for_ever", row.faults.forever.contains(true)},
            {"trident", row.faults.chips.contains(0)},
            {"trident2", row.faults.chips.contains(1)},
            {"result", seen.result},
            {"then", seen.pace},
            {"left_out_least", row.least},
            {"left_out_most", row.most},
            {"variants", row.faults.variants},
            {"leaves", row.stays},
            {"again", seen.again},
            {"broken", seen.broken}};
}

std::size_t sum(const std::map<std::string, std::size_t> &counts)
{
    std::size_t all = 0;
    for (const auto &[name, count] : counts) {
        all += count;
    }
    return all;
}

} // namespace

void print_totals(const SweepResult &result, std::ostream &out)
{
    fmt::print(out, "{} of {}; {} made; {} in which something breaks\n",
               report::counted(sum(result.requests), "request"),
               report::counted(result.requests.size(), "kind"),
               report::counted(result.outcomes.size(), "failure"), result.broken());
    fmt::print(out, "{} of {} left out, as they can't fail\n",
               report::counted(sum(result.never_fail), "call"),
               report::counted(result.never_fail.size(), "function"));
    if (!result.sees_allocations) {
        fmt::print(out, "allocations were left out: this program can't let those of the shared "
                        "library fail; './dev faults' does\n");
    }
    for (const std::string &note : result.notes) {
        fmt::print(out, "{}\n", note);
    }
}

void print_text(const SweepResult &result, std::string_view file, std::ostream &out)
{
    fmt::print(out, "{}\n", config::harmless(file));
    const auto rows = rows_of(result.outcomes);
    for (auto row = rows.begin(); row != rows.end();) {
        const std::string &kind = row->consequences.kind;
        Section section;
        for (; row != rows.end() && row->consequences.kind == kind; ++row) {
            section.add(*row);
        }
        fmt::print(out, "\n{}\n", kind);
        section.print(out);
    }
    out << '\n';
    print_totals(result, out);
}

void print_json(const SweepResult &result, std::string_view file, std::ostream &out)
{
    nlohmann::json rows = nlohmann::json::array();
    for (const Row &row : rows_of(result.outcomes)) {
        rows.push_back(json_of(row));
    }
    const nlohmann::json json = {{"config", file},
                                 {"requests", result.requests},
                                 {"failures", result.outcomes.size()},
                                 {"broken", result.broken()},
                                 {"allocations", result.sees_allocations},
                                 {"left_out", result.never_fail},
                                 {"notes", result.notes},
                                 {"rows", std::move(rows)}};
    out << json.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) << '\n';
}

} // namespace lab::faults
