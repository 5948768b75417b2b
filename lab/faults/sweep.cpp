/*
 * sweep.cpp: see sweep.h.
 */
#include "faults/sweep.h"

#include "faults/failing_calls.h"
#include "faults/lettered.h"
#include "faults/roads.h"
#include "faults/run.h"
#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>

namespace lab::faults
{

namespace
{

// The letters of what a share hands back.
constexpr char OUTCOME = 'O';
constexpr char LEFT_OUT = 'L';
constexpr char NAME = 'N';
constexpr char KIND = 'K';
constexpr char NOTE = '!';
constexpr char ALLOCATIONS = 'M';

/** One process's share of a sweep. */
class Share
{
public:
    Share(const config::Description &config, const SweepOptions &options, std::size_t number)
        : config_(config), options_(options), number_(number)
    {
    }

    Lines go()
    {
        for (const auto chip : options_.chips) {
            for (Road &road : roads_of(config_, chip)) {
                ++road_;
                // A road changes what the library has in this process for good.
                const Ended ended = in_process([&] { return go(road); });
                if (!ended.well) {
                    throw std::runtime_error(
                        fmt::format("{}: {}", road.name,
                                    ended.lines.empty() ? ended.how : ended.lines.front()));
                }
                lines_.insert(lines_.end(), ended.lines.begin(), ended.lines.end());
            }
        }
        return std::move(lines_);
    }

private:
    Lines go(Road &road);
    std::set<std::size_t> chosen_steps(const Road &road, World *world);
    Lines first_calls(const Road &road, World *world, const std::set<std::size_t> &asked);
    void take_calls(const Place &place, const Clean &clean);
    void take(const Place &place, const Clean &clean, const Failing &failing);
    bool is_asked(const Step &step) const
    {
        return options_.request.empty() || options_.request == step.kind ||
               options_.request == step.asked;
    }
    void tell(const Road &road, std::size_t step) const;

    const config::Description &config_;
    const SweepOptions &options_;
    std::size_t number_;
    int road_ = 0;
    std::size_t turn_ = 0;
    Lines lines_;
    std::set<std::pair<std::string, std::string>> known_; ///< kind of request and function
};

/** Whether an allocation is a call: the program is linked so that it is. */
bool sees_allocations(const World &world)
{
    // By a pointer: of malloc itself a compiler knows that it changes nothing that the program
    // sees.
    void *(*volatile const allocate)(std::size_t) = std::malloc;
    const std::size_t before = world.hardware.heap.live_blocks();
    void *block = allocate(1);
    const bool is_seen = world.hardware.heap.live_blocks() != before;
    std::free(block);
    return is_seen;
}

/** Makes a step; the journal has its calls alone. */
void make_step(const Step &step, World &world)
{
    world.hardware.journal.clear();
    if (step.before) {
        step.before();
    }
    step.make(world);
}

void Share::tell(const Road &road, std::size_t step) const
{
    if (options_.progress && number_ == 0) {
        fmt::print(stderr, "{} {}: {} of {}, {}\n",
                   road.chip == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident", road.name,
                   step + 1, road.steps.size(), road.steps[step].asked);
    }
}

Lines Share::go(Road &road)
{
    lines_.clear();
    try {
        if (road.prepare) {
            road.prepare(road);
        }
    } catch (const std::runtime_error &obstacle) {
        add_lettered(lines_, NOTE, fmt::format("{}: left out, {}", road.name, obstacle.what()));
        return std::move(lines_);
    }
    const std::unique_ptr<World> world = road.from_begin ? nullptr : road.begin();
    if (world != nullptr && sees_allocations(*world)) {
        add_lettered(lines_, ALLOCATIONS, "");
    }
    const std::set<std::size_t> chosen = chosen_steps(road, world.get());
    for (std::size_t i = 0; i < road.steps.size(); ++i) {
        const Step &step = road.steps[i];
        if (step.swept) {
            add_lettered(lines_, NAME, step.asked);
            add_lettered(lines_, NAME, step.kind);
        }
        if (chosen.contains(i)) {
            tell(road, i);
            const Place place{road, i, world.get(), options_.quick ? Depth::quick : Depth::full};
            take_calls(place, run_clean(place));
        }
        if (world != nullptr) {
            make_step(step, *world);
        }
    }
    return std::move(lines_);
}

/**
 * The steps to look at. For a quick sweep a process goes the road ahead and
 * tells where requests of a kind call a function for the first time.
 */
std::set<std::size_t> Share::chosen_steps(const Road &road, World *world)
{
    std::set<std::size_t> asked;
    for (std::size_t i = 0; i < road.steps.size(); ++i) {
        if (road.steps[i].swept && is_asked(road.steps[i])) {
            asked.insert(i);
        }
    }
    if (!options_.quick) {
        return asked;
    }
    const Ended ended = in_process([&] { return first_calls(road, world, asked); });
    if (!ended.well) {
        throw std::runtime_error(
            fmt::format("the process that looked for new calls ended with {}", ended.how));
    }
    std::set<std::size_t> chosen;
    for (const std::string &line : ended.lines) {
        chosen.insert(std::stoul(line));
    }
    return chosen;
}

Lines Share::first_calls(const Road &road, World *world, const std::set<std::size_t> &asked)
{
    std::unique_ptr<World> own;
    if (world == nullptr) {
        own = road.begin();
        world = own.get();
    }
    World &here = *world;
    Lines chosen;
    for (std::size_t i = 0; i < road.steps.size(); ++i) {
        make_step(road.steps[i], here);
        bool is_new = false;
        for (const auto &record : here.hardware.journal.records()) {
            is_new |= asked.contains(i) && !record.trace_sink && can_fail(record) &&
                      known_.insert({road.steps[i].kind, std::string(known_name(record))}).second;
        }
        if (is_new) {
            chosen.push_back(fmt::to_string(i));
        }
    }
    return chosen;
}

void Share::take_calls(const Place &place, const Clean &clean)
{
    const Step &step = place.road.steps[place.step];
    add_lettered(lines_, KIND, step.kind);
    for (const std::string &refused : clean.refused) {
        add_lettered(lines_, NOTE,
                     fmt::format("{} without a failure, then {}", step.asked, refused));
    }
    std::map<std::string, std::uint64_t> seen;
    for (const CleanCall &call : clean.calls) {
        if (!call.can_fail) {
            add_lettered(lines_, LEFT_OUT, call.function);
            continue;
        }
        const std::uint64_t nth = ++seen[call.function];
        const bool is_new = known_.insert({step.kind, call.function}).second;
        if (options_.quick && !is_new) {
            continue;
        }
        for (const int code : options_.codes) {
            const bool one = options_.quick || !call.has_code;
            if (one && code != options_.codes.front()) {
                break;
            }
            take(place, clean, {call.function, nth, code, false, call.has_code});
            if (!options_.quick) {
                take(place, clean, {call.function, nth, code, true, call.has_code});
            }
        }
    }
}

void Share::take(const Place &place, const Clean &clean, const Failing &failing)
{
    if (turn_++ % options_.jobs == number_) {
        // The order of all is put together again from this number.
        add_lettered(lines_, OUTCOME,
                     fmt::format("{:02}{:09} {}", road_, turn_,
                                 to_line(run_failing(place, clean, failing))));
    }
}

void take_line(const std::string &line, bool is_first, SweepResult &result,
               std::set<std::string> &names)
{
    const auto [letter, text] = read_lettered(line);
    if (letter == ALLOCATIONS) {
        result.sees_allocations = true;
    } else if (letter == NAME) {
        names.insert(text);
    } else if (is_first && letter == LEFT_OUT) {
        ++result.never_fail[text];
    } else if (is_first && letter == KIND) {
        ++result.requests[text];
    } else if (is_first && letter == NOTE) {
        result.notes.push_back(text);
    }
}

} // namespace

std::size_t SweepResult::broken() const
{
    return static_cast<std::size_t>(std::ranges::count_if(
        outcomes, [](const Outcome &outcome) { return !outcome.broken.empty(); }));
}

SweepResult sweep(const config::Description &config, const SweepOptions &options)
{
    std::vector<Process> shares;
    for (std::size_t number = 0; number < options.jobs; ++number) {
        shares.emplace_back([&, number] { return Share(config, options, number).go(); });
    }
    SweepResult result;
    std::set<std::string> names;
    std::vector<std::string> lines;
    for (Process &share : shares) {
        const Ended ended = share.wait();
        if (!ended.well) {
            throw std::runtime_error(fmt::format(
                "a share of the sweep ended with {}",
                ended.lines.empty() ? ended.how : ended.how + ": " + ended.lines.front()));
        }
        for (const std::string &line : ended.lines) {
            if (read_lettered(line).letter == OUTCOME) {
                lines.push_back(read_lettered(line).text);
            } else {
                take_line(line, &share == &shares.front(), result, names);
            }
        }
    }
    if (!options.request.empty() && result.requests.empty()) {
        throw session::UsageError(
            session::unknown("request", options.request, {names.begin(), names.end()}));
    }
    std::ranges::sort(lines);
    result.outcomes.reserve(lines.size());
    for (const std::string &line : lines) {
        result.outcomes.push_back(from_line(line.substr(line.find(' ') + 1)));
    }
    return result;
}

} // namespace lab::faults
