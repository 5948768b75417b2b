/*
 * run.cpp: see run.h.
 */
#include "faults/run.h"

#include "faults/failing_calls.h"
#include "faults/holds.h"
#include "faults/leaks.h"
#include "faults/lettered.h"
#include "faults/views.h"
#include "faults/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace lab::faults
{

namespace
{

using simswitch::CallRecord;

CleanCall clean_call(const CallRecord &record)
{
    return {std::string(known_name(record)), record.function + "(" + record.arguments + ")",
            can_fail(record), gives_code(record)};
}

/** The world in front of the step, in a process that may change it. */
class Ground
{
public:
    explicit Ground(const Place &place)
    {
        if (place.world != nullptr) {
            world_ = place.world;
            return;
        }
        own_ = place.road.begin();
        world_ = own_.get();
        for (std::size_t i = 0; i < place.step; ++i) {
            make(place.road.steps[i]);
        }
    }
    World &world() const { return *world_; }
    l3lif::Request make(const Step &step) const
    {
        if (step.before) {
            step.before();
        }
        return step.make(*world_);
    }

private:
    std::unique_ptr<World> own_;
    World *world_ = nullptr;
};

// The letters of a clean run's lines.
constexpr char CALL = 'C';
constexpr char BEFORE = '<';
constexpr char AFTER = '>';
constexpr char AGAIN = 'A';
constexpr char RESULT = 'R';
constexpr char BLOCKS = 'B';
constexpr char BROKEN = '!';
constexpr char REFUSED = '?';
constexpr char ERROR = 'E';

void add(Lines &lines, char what, const Lines &texts)
{
    for (const std::string &text : texts) {
        add_lettered(lines, what, text);
    }
}

/** The error messages, a line each. */
Lines errors_of(const l3lif::Request &request)
{
    Lines errors = request.errors();
    for (std::string &error : errors) {
        std::ranges::replace(error, '\n', ' ');
    }
    return errors;
}

void check_again(const std::vector<Again> &done, Lines &refused)
{
    for (const Again &again : done) {
        if (again.must_work && !again.done()) {
            refused.push_back(fmt::format("{}: code {}, {}", again.asked, again.request.code,
                                          again.request.last_error()));
        }
    }
}

Lines all_broken(const World &world)
{
    Lines all = broken_holds(world, true);
    const Lines later = broken_holds(world, false);
    all.insert(all.end(), later.begin(), later.end());
    return all;
}

/** The views behind a step, and what doesn't hold or doesn't work even so. */
void add_consequences(World &world, const Step &step, Lines &lines)
{
    add(lines, AFTER, whole_view(world.hardware, world.layer));
    add(lines, BROKEN, all_broken(world));
    Lines refused;
    check_again(step.again(world), refused);
    add(lines, REFUSED, refused);
    add(lines, BROKEN, all_broken(world));
    add(lines, AGAIN, whole_view(world.hardware, world.layer));
    add_lettered(lines, BLOCKS, fmt::to_string(world.hardware.heap.live_blocks()));
}

Lines clean_lines(const Place &place)
{
    const Ground ground(place);
    World &world = ground.world();
    const Step &step = place.road.steps[place.step];
    Lines lines;
    add(lines, BEFORE, whole_view(world.hardware, world.layer));
    world.hardware.journal.clear();
    const l3lif::Request request = ground.make(step);
    for (const CallRecord &record : world.hardware.journal.records()) {
        if (!record.trace_sink) {
            const CleanCall call = clean_call(record);
            add_lettered(
                lines, CALL,
                fmt::format("{}{}{}", call.can_fail ? 1 : 0, call.has_code ? 1 : 0, call.text));
        }
    }
    add_lettered(lines, RESULT, fmt::to_string(request.code));
    add(lines, ERROR, errors_of(request));
    add_consequences(world, step, lines);
    return lines;
}

Clean read_clean(const Lines &lines)
{
    Clean clean;
    for (const std::string &line : lines) {
        const auto [letter, text] = read_lettered(line);
        switch (letter) {
        case CALL: {
            const std::string call = text.substr(2);
            const simswitch::CallRecord named{.function = call.substr(0, call.find('('))};
            clean.calls.push_back(
                {std::string(known_name(named)), call, text[0] == '1', text[1] == '1'});
            break;
        }
        case BEFORE:
            clean.before.push_back(text);
            break;
        case AFTER:
            clean.after.push_back(text);
            break;
        case AGAIN:
            clean.again.push_back(text);
            break;
        case BROKEN:
            clean.broken.push_back(text);
            break;
        case ERROR:
            clean.errors.push_back(text);
            break;
        case REFUSED:
            clean.refused.push_back(text);
            break;
        case RESULT:
            clean.result = std::stoi(text);
            break;
        default:
            clean.blocks = std::stoul(text);
            break;
        }
    }
    return clean;
}

/** How many of the clean run's calls behind the failing one were made, wherever. */
void count_later(const std::vector<CallRecord> &records, const Clean &clean, std::size_t failed,
                 Outcome &outcome)
{
    std::uint64_t seen = 0;
    std::size_t first = 0;
    while (first < clean.calls.size() && seen < outcome.failing.place) {
        seen += clean.calls[first++].function == outcome.failing.function ? 1 : 0;
    }
    std::map<std::string_view, std::size_t> expected;
    for (std::size_t i = first; i < clean.calls.size(); ++i) {
        if (clean.calls[i].can_fail) {
            ++expected[clean.calls[i].text];
            ++outcome.later;
        }
    }
    for (std::size_t i = failed + 1; i < records.size(); ++i) {
        const CleanCall call = clean_call(records[i]);
        const auto found = expected.find(call.text);
        if (found != expected.end() && found->second != 0) {
            --found->second;
            ++outcome.made;
        } else if (!records[i].trace_sink && call.can_fail) {
            ++outcome.other;
        }
    }
}

/**
 * What differs from both a clean run and one whose object was deleted and made
 * again: a delete has consequences of its own, which are no failure's.
 */
Lines lasting(const Clean &clean, const Lines &now)
{
    Lines both;
    std::ranges::set_intersection(clean.after, clean.again, std::back_inserter(both));
    Lines lines;
    for (const std::string &line : differences(both, now)) {
        const bool is_known = std::ranges::binary_search(clean.after, line.substr(2)) ||
                              std::ranges::binary_search(clean.again, line.substr(2));
        if (line.front() == '-' || !is_known) {
            lines.push_back(line);
        }
    }
    return lines;
}

/** Takes over what isn't known. */
void add_new(Lines &to, std::string_view prefix, const Lines &lines, const Lines &known)
{
    for (const std::string &line : lines) {
        if (std::ranges::find(known, line) == known.end()) {
            to.push_back(fmt::format("{}{}", prefix, line));
        }
    }
}

/** The first message that isn't made without a failure too. */
std::string first_new(const Lines &messages, const Lines &known)
{
    const auto found = std::ranges::find_if(messages, [&known](const std::string &message) {
        return std::ranges::find(known, message) == known.end();
    });
    return found == messages.end() ? "" : *found;
}

void make_again(World &world, const Step &step, const Clean &clean, Outcome &outcome)
{
    for (const Again &again : step.again(world)) {
        if (again.must_work && !again.done() && outcome.again.empty()) {
            outcome.again = fmt::format("{}: code {}, {}", again.asked, again.request.code,
                                        again.request.last_error());
        }
    }
    outcome.lasts = lasting(clean, whole_view(world.hardware, world.layer));
    const std::size_t blocks = world.hardware.heap.live_blocks();
    if (blocks > clean.blocks) {
        outcome.lasts.push_back(fmt::format("+ {} blocks of memory", blocks - clean.blocks));
    }
    add_new(outcome.broken, "added again, ", all_broken(world), clean.broken);
}

/** Lets a call fail: of a name that several functions share, the one that the clean run has there.
 */
void arm(simswitch::Journal &journal, const Clean &clean, const Failing &failing)
{
    std::map<std::string, std::uint64_t> seen;
    std::uint64_t left = failing.place;
    std::string last;
    for (const CleanCall &call : clean.calls) {
        if (left != 0 && call.function == failing.function) {
            last = call.text.substr(0, call.text.find('('));
            ++seen[last];
            --left;
        }
    }
    if (left != 0) {
        // It isn't made without a failure; the journal then finds that it isn't made with one.
        last = failing.function;
        seen[last] = failing.place;
    }
    journal.arm(
        {.function = last, .code = failing.code, .nth = seen[last], .forever = failing.forever});
    for (const char *other : {"malloc", "calloc"}) {
        if (failing.forever && failing.function == "malloc" && last != other) {
            journal.arm(
                {.function = other, .code = failing.code, .nth = seen[other] + 1, .forever = true});
        }
    }
}

std::string fail_in_process(const Place &place, const Clean &clean, Outcome outcome)
{
    const Ground ground(place);
    World &world = ground.world();
    const Step &step = place.road.steps[place.step];
    simswitch::Journal &journal = world.hardware.journal;
    journal.clear();
    arm(journal, clean, outcome.failing);
    const l3lif::Request request = ground.make(step);
    journal.disarm();
    const auto failed = std::ranges::find(journal.records(), "injected", &CallRecord::reason);
    if (failed == journal.records().end()) {
        outcome.broken.push_back("the call was not made");
        return to_line(outcome);
    }
    outcome.result = request.code;
    outcome.said = first_new(errors_of(request), clean.errors);
    count_later(journal.records(), clean,
                static_cast<std::size_t>(failed - journal.records().begin()), outcome);
    const Lines after = whole_view(world.hardware, world.layer);
    outcome.stays = outcome.result == clean.result ? in_words(differences(clean.after, after))
                                                   : in_words(differences(clean.before, after));
    add_new(outcome.broken, "", broken_holds(world, true), clean.broken);
    add_new(outcome.stays, "", broken_holds(world, false), clean.broken);
    make_again(world, step, clean, outcome);
    if (place.depth == Depth::full && has_leaked()) {
        outcome.broken.emplace_back("memory is lost");
    }
    return to_line(outcome);
}

} // namespace

Clean run_clean(const Place &place)
{
    const Ended ended = in_process([&place] { return clean_lines(place); });
    if (!ended.well) {
        throw std::runtime_error(
            fmt::format("{}: the clean run ended with {}{}", place.road.steps[place.step].asked,
                        ended.how, ended.lines.empty() ? "" : ": " + ended.lines.front()));
    }
    return read_clean(ended.lines);
}

Outcome run_failing(const Place &place, const Clean &clean, const Failing &failing)
{
    const Step &step = place.road.steps[place.step];
    Outcome outcome{.chip = place.road.chip,
                    .road = place.road.name,
                    .kind = step.kind,
                    .variant = step.variant,
                    .asked = step.asked,
                    .failing = failing};
    const Ended ended =
        in_process([&]() -> Lines { return {fail_in_process(place, clean, outcome)}; });
    if (ended.well && ended.lines.size() == 1) {
        return from_line(ended.lines.front());
    }
    outcome.broken.push_back(fmt::format("the process ended with {}{}", ended.how,
                                         ended.lines.empty() ? "" : ": " + ended.lines.front()));
    return outcome;
}

} // namespace lab::faults
