/*
 * sweep.cpp: see sweep.h.
 */
#include "faults/sweep.h"

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

// What a share hands back, line by line: a letter, then the text.
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
    void take_step(Place place);
    void take_calls(const Place &place, const Clean &clean);
    bool has_new(const Step &step, const Clean &clean) const;
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
    const std::size_t before = world.hardware.heap.live_blocks();
    void *volatile block = std::malloc(1);
    const bool is_seen = world.hardware.heap.live_blocks() != before;
    std::free(block);
    return is_seen;
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
        return {fmt::format("{}{}: left out, {}", NOTE, road.name, obstacle.what())};
    }
    const std::unique_ptr<World> world = road.from_begin ? nullptr : road.begin();
    if (world != nullptr && sees_allocations(*world)) {
        lines_.emplace_back(1, ALLOCATIONS);
    }
    for (std::size_t i = 0; i < road.steps.size(); ++i) {
        const Step &step = road.steps[i];
        if (step.swept) {
            lines_.push_back(NAME + step.asked);
            lines_.push_back(NAME + step.kind);
            if (is_asked(step)) {
                tell(road, i);
                take_step({road, i, world.get(), options_.quick ? Depth::quick : Depth::full});
            }
        }
        if (world != nullptr) {
            if (step.before) {
                step.before();
            }
            step.make(*world);
        }
    }
    return std::move(lines_);
}

/** Whether a function that can fail is called by requests of this kind for the first time. */
bool Share::has_new(const Step &step, const Clean &clean) const
{
    return std::ranges::any_of(clean.calls, [&](const CleanCall &call) {
        return call.can_fail && !known_.contains({step.kind + step.variant, call.function});
    });
}

void Share::take_step(Place place)
{
    const Step &step = place.road.steps[place.step];
    if (options_.quick) {
        const Depth depth = std::exchange(place.depth, Depth::calls);
        if (!has_new(step, run_clean(place))) {
            return;
        }
        place.depth = depth;
    }
    take_calls(place, run_clean(place));
}

void Share::take_calls(const Place &place, const Clean &clean)
{
    const Step &step = place.road.steps[place.step];
    lines_.push_back(KIND + step.kind);
    for (const std::string &refused : clean.refused) {
        lines_.push_back(fmt::format("{}{} without a failure, then {}", NOTE, step.asked, refused));
    }
    std::map<std::string, std::uint64_t> seen;
    for (const CleanCall &call : clean.calls) {
        if (!call.can_fail) {
            lines_.push_back(LEFT_OUT + call.function);
            continue;
        }
        const std::uint64_t nth = ++seen[call.function];
        const bool is_new = known_.insert({step.kind + step.variant, call.function}).second;
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
        lines_.push_back(fmt::format("{}{:02}{:09} {}", OUTCOME, road_, turn_,
                                     to_line(run_failing(place, clean, failing))));
    }
}

void take_line(const std::string &line, bool is_first, SweepResult &result,
               std::set<std::string> &names)
{
    const std::string text = line.substr(1);
    if (line.front() == ALLOCATIONS) {
        result.sees_allocations = true;
    } else if (line.front() == NAME) {
        names.insert(text);
    } else if (is_first && line.front() == LEFT_OUT) {
        ++result.never_fail[text];
    } else if (is_first && line.front() == KIND) {
        ++result.requests[text];
    } else if (is_first && line.front() == NOTE) {
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
            if (line.front() == OUTCOME) {
                lines.push_back(line.substr(1));
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
