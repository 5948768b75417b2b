/*
 * report.cpp: see report.h. A hunk names the lines in both recordings by their
 * numbers there, "2.14", so that they are found again.
 */
#include "record/report.h"

#include "record/escape.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::record
{

namespace
{

constexpr std::string_view COLOUR_REMOVED = "\x1b[31m";
constexpr std::string_view COLOUR_ADDED = "\x1b[32m";
constexpr std::string_view COLOUR_PLACE = "\x1b[36m";
constexpr std::string_view COLOUR_OFF = "\x1b[0m";
// Lines that are the same, before and behind those that aren't.
constexpr std::size_t CONTEXT = 3;
// Where the first difference of a replay is shown, more of what comes before it tells more.
constexpr std::size_t CONTEXT_FIRST = 6;
constexpr std::size_t FIRST_LINES_MAX = 40;

std::string chip_name(const Recording &recording)
{
    return recording.header.chip == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident";
}

std::string amount_text(const Recording &recording)
{
    return fmt::format("{}, {}", report::counted(recording.requests.size(), "request"),
                       report::counted(recording.calls(), "call"));
}

/** What was run: the configuration, or a script with the one that it brought up. */
std::string run_text(const Header &header)
{
    std::string config = escaped(header.configuration);
    if (header.script.empty()) {
        return config;
    }
    return escaped(header.script) + (config.empty() ? "" : " with " + config);
}

/** Prints the lines of requests beside each other. */
class HunkPrinter
{
public:
    HunkPrinter(std::ostream &out, bool colour) : out_(out), colour_(colour) {}

    /** All of a request that isn't the same, with some lines around. */
    void print_all(const RequestPair &pair)
    {
        print_result(pair);
        left_ = SIZE_MAX;
        std::size_t at = 0;
        while (at < pair.steps.size()) {
            at = print_next(pair, at, CONTEXT);
        }
    }

    /** The first place that isn't the same, and how much more there is. */
    void print_first(const RequestPair &pair)
    {
        print_result(pair);
        left_ = FIRST_LINES_MAX;
        const std::size_t end = print_next(pair, 0, CONTEXT_FIRST);
        const auto rest = std::span(pair.steps).subspan(end);
        const auto more = static_cast<std::size_t>(std::ranges::count_if(
            rest, [](const Step &step) { return step.kind != StepKind::same; }));
        if (more != 0) {
            fmt::print(out_, "  … and {} of this request\n", report::counted(more, "more line"));
        }
    }

private:
    /** Prints the next place that isn't the same; gives where the one behind it may begin. */
    std::size_t print_next(const RequestPair &pair, std::size_t at, std::size_t context)
    {
        const std::size_t first = next_difference(pair.steps, at);
        if (first == pair.steps.size()) {
            return first;
        }
        const std::size_t end = hunk_end(pair.steps, first, context);
        return print_hunk(pair, first - std::min(first - at, context), end);
    }

    static std::size_t next_difference(const std::vector<Step> &steps, std::size_t at)
    {
        while (at < steps.size() && steps[at].kind == StepKind::same) {
            ++at;
        }
        return at;
    }

    /** Differences that are near one another stand in one hunk. */
    static std::size_t hunk_end(const std::vector<Step> &steps, std::size_t first,
                                std::size_t context)
    {
        std::size_t end = first;
        for (std::size_t at = first; at < steps.size() && at <= end + 2 * context; ++at) {
            if (steps[at].kind != StepKind::same) {
                end = at;
            }
        }
        return std::min(end + 1 + context, steps.size());
    }

    void print_result(const RequestPair &pair)
    {
        if (pair.other_result()) {
            line(COLOUR_REMOVED, '-', fmt::format("result {}", pair.before->result));
            line(COLOUR_ADDED, '+', fmt::format("result {}", pair.after->result));
        }
    }

    /** "call 2.14", "message 2.3", "the end" */
    static std::string place(const RecordedRequest &request, std::size_t number, std::size_t index)
    {
        if (index < request.calls) {
            return fmt::format("call {}.{}", number, index + 1);
        }
        return index < request.lines.size()
                   ? fmt::format("message {}.{}", number, index - request.calls + 1)
                   : "end";
    }

    /** Gives where it ends: before `end` where no more may be printed. */
    std::size_t print_hunk(const RequestPair &pair, std::size_t first, std::size_t end)
    {
        const Step &start = pair.steps[first];
        const std::string before = place(*pair.before, pair.before->number, start.before);
        const std::string after = place(*pair.after, pair.after->number, start.after);
        paint(COLOUR_PLACE, before == after ? fmt::format("@@ {} @@", before)
                                            : fmt::format("@@ - {} + {} @@", before, after));
        for (; first < end && left_ != 0; ++first, --left_) {
            print_step(pair, pair.steps[first]);
        }
        return first;
    }

    void print_step(const RequestPair &pair, const Step &step)
    {
        if (step.kind == StepKind::same) {
            line("", ' ', pair.before->lines[step.before]);
            return;
        }
        if (step.kind != StepKind::added) {
            line(COLOUR_REMOVED, '-', pair.before->lines[step.before]);
        }
        if (step.kind != StepKind::removed) {
            line(COLOUR_ADDED, '+', pair.after->lines[step.after]);
        }
    }

    void line(std::string_view colour, char mark, std::string_view text)
    {
        paint(colour, fmt::format("{} {}", mark, text));
    }

    void paint(std::string_view colour, const std::string &text)
    {
        const bool painted = colour_ && !colour.empty();
        fmt::print(out_, "{}{}{}\n", painted ? colour : "", text, painted ? COLOUR_OFF : "");
    }

    std::ostream &out_;
    bool colour_;
    std::size_t left_ = 0; ///< lines that may be printed yet
};

std::string name_of(const RequestPair &pair)
{
    return std::string(pair.before != nullptr ? pair.before->name : pair.after->name);
}

std::string result_text(const RequestPair &pair)
{
    if (pair.other_result()) {
        return fmt::format("{} -> {}", pair.before->result, pair.after->result);
    }
    return std::string(pair.before != nullptr ? pair.before->result : pair.after->result);
}

/** What there is to say of a request that isn't the same in both. */
std::string remark_of(const RequestPair &pair, std::string_view before, std::string_view after)
{
    if (pair.after == nullptr) {
        return fmt::format("only {}", before);
    }
    if (pair.before == nullptr) {
        return fmt::format("only {}", after);
    }
    return pair.moved ? "in another order" : "";
}

std::string calls_text(const RecordedRequest *request)
{
    return request == nullptr ? "-" : fmt::to_string(request->calls);
}

/** A line for each request that isn't the same in both. */
void print_differing_requests(const Comparison &comparison, std::string_view before,
                              std::string_view after, std::ostream &out)
{
    report::TextTable table({{"REQUEST", false},
                             {"CALLS -", true},
                             {"CALLS +", true},
                             {"SAME", true},
                             {"CHANGED", true},
                             {"GONE", true},
                             {"NEW", true},
                             {"RESULT", false},
                             {"", false}},
                            0);
    for (const RequestPair &pair : comparison.pairs) {
        if (pair.equal() && !pair.moved) {
            continue;
        }
        const bool both = pair.before != nullptr && pair.after != nullptr;
        const auto number = [&pair, both](StepKind kind) {
            return both ? fmt::to_string(pair.count(kind)) : "-";
        };
        table.add({name_of(pair), calls_text(pair.before), calls_text(pair.after),
                   number(StepKind::same), number(StepKind::changed), number(StepKind::removed),
                   number(StepKind::added), result_text(pair), remark_of(pair, before, after)});
    }
    fmt::print(out, "{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        fmt::print(out, "{}\n", table.line(i, ""));
    }
    fmt::print(out, "\n");
}

/** "15 requests: 3 the same, 12 differ, 1 only in a.rec" */
std::string totals_text(const Comparison &comparison, std::string_view before,
                        std::string_view after)
{
    std::string text = fmt::format(
        "{}: {} the same, {} {}", report::counted(comparison.pairs.size(), "request"),
        comparison.equal, comparison.different, comparison.different == 1 ? "differs" : "differ");
    if (comparison.only_before != 0) {
        text += fmt::format(", {} only {}", comparison.only_before, before);
    }
    if (comparison.only_after != 0) {
        text += fmt::format(", {} only {}", comparison.only_after, after);
    }
    if (comparison.moved != 0) {
        text += fmt::format(", {} in another order", comparison.moved);
    }
    return text;
}

void print_identity(char mark, const Recording &recording, std::ostream &out)
{
    fmt::print(out, "{} {}: {}, {}, rtif {}, {}{}\n", mark, one_line(recording.file),
               chip_name(recording), run_text(recording.header), escaped(recording.header.rtif),
               amount_text(recording), recording.is_complete ? "" : ", cut off");
}

void note_configurations(const Recording &before, const Recording &after, std::ostream &out)
{
    if (before.header.config != after.header.config) {
        fmt::print(out, "The configurations are not the same.\n");
    }
    if (before.header.then_down != after.header.then_down) {
        fmt::print(out, "Only {} took everything down again.\n",
                   one_line(before.header.then_down ? before.file : after.file));
    }
}

/** The request of a replay that is shown: the first that isn't as it was. */
const RequestPair *first_difference(const Recording &recorded, const Comparison &comparison)
{
    const auto found = std::ranges::find_if(comparison.pairs, [&recorded](const auto &pair) {
        const bool beyond = pair.before == nullptr && !recorded.is_complete;
        return !beyond && (!pair.equal() || pair.moved);
    });
    return found == comparison.pairs.end() ? nullptr : &*found;
}

void print_first_difference(const Recording &recorded, const Recording &now,
                            const RequestPair &pair, const ReplayView &view, std::ostream &out)
{
    if (pair.before == nullptr) {
        fmt::print(out, "First difference: request {} of the run, {}, is not in the recording\n",
                   pair.after->number, name_of(pair));
        return;
    }
    fmt::print(out, "First difference: request {} of {}, {} ({}:{})\n", pair.before->number,
               recorded.requests.size(), name_of(pair), one_line(recorded.file), pair.before->line);
    if (pair.after == nullptr) {
        fmt::print(out, "  it is not asked for any more; the run has {} now\n",
                   report::counted(now.requests.size(), "request"));
    } else if (pair.moved) {
        fmt::print(out, "  it comes earlier now, as request {} of {}\n", pair.after->number,
                   now.requests.size());
    }
    if (pair.after != nullptr) {
        HunkPrinter(out, view.colour).print_first(pair);
    }
}

} // namespace

bool is_as_recorded(const Recording &recorded, const Comparison &comparison)
{
    return first_difference(recorded, comparison) == nullptr;
}

void print_diff(const Recording &before, const Recording &after, const Comparison &comparison,
                const DiffView &view, std::ostream &out)
{
    print_identity('-', before, out);
    print_identity('+', after, out);
    note_configurations(before, after, out);
    fmt::print(out, "\n");
    const std::string old_name = fmt::format("in {}", one_line(before.file));
    const std::string new_name = fmt::format("in {}", one_line(after.file));
    if (!comparison.all_equal()) {
        print_differing_requests(comparison, old_name, new_name, out);
    }
    fmt::print(out, "{}\n", totals_text(comparison, old_name, new_name));
    if (view.summary) {
        return;
    }
    HunkPrinter printer(out, view.colour);
    for (const RequestPair &pair : comparison.pairs) {
        const bool wanted = view.request.empty() || view.request == name_of(pair);
        if (wanted && pair.before != nullptr && pair.after != nullptr && !pair.equal()) {
            fmt::print(out, "\n{} (lines {} and {})\n", name_of(pair), pair.before->line,
                       pair.after->line);
            printer.print_all(pair);
        }
    }
}

void print_replay(const Recording &recorded, const Recording &now, const Comparison &comparison,
                  const ReplayView &view, std::ostream &out)
{
    fmt::print(out, "{}: {}, recorded by rtif {} on a {}\n", one_line(recorded.file),
               run_text(recorded.header), escaped(recorded.header.rtif), chip_name(recorded));
    fmt::print(out, "{} run again on a {} by rtif {}\n\n", amount_text(recorded), chip_name(now),
               now.header.rtif);
    const RequestPair *first = first_difference(recorded, comparison);
    if (first != nullptr) {
        print_first_difference(recorded, now, *first, view, out);
        fmt::print(out, "\n");
    }
    if (view.all && first != nullptr) {
        print_differing_requests(comparison, "in the recording", "now", out);
    }
    if (!recorded.is_complete) {
        fmt::print(out,
                   "The recording has no end: its run was cut off after {}.\n"
                   "What the run has beyond them now is no difference.\n",
                   report::counted(recorded.requests.size(), "request"));
    }
    fmt::print(out, "{}\n", totals_text(comparison, "in the recording", "now"));
}

} // namespace lab::record
