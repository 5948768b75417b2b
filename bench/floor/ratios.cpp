/*
 * ratios.cpp: see ratios.h.
 *
 * Only the request under the clock is timed, not the rest of its cycle. What reading the clock
 * takes is subtracted; a cycle of one request is made many times between two readings.
 */
#include "ratios.h"

#include "sides.h"
#include "ticks.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

namespace floor_bench
{

namespace
{

/** Times that a request which is a cycle of its own is made between two readings. */
constexpr int TIMES_AT_ONCE = 64;

/** Counter that a run leaves its time in. */
constexpr char TIME[] = "seconds";

constexpr int EMPTY_SPANS = 20001;

/** What a run measures: so often a request alone, at once as above, or so many cycles. */
constexpr int SPANS_ALONE = 200;
constexpr int CYCLES = 2000;

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/**
 * The mean without the slowest hundredth, in which something else had the processor. The
 * median would jump from step to step where the counter advances in steps, as those of virtual
 * machines do.
 */
double trimmed_mean(std::vector<double> values)
{
    const std::size_t kept = values.size() - values.size() / 100;
    const auto end = values.begin() + static_cast<std::ptrdiff_t>(kept);
    std::nth_element(values.begin(), end - 1, values.end());
    return std::accumulate(values.begin(), end, 0.0) / static_cast<double>(kept);
}

/** What two readings of the clock show with nothing between them. */
double empty_span()
{
    std::vector<double> spans;
    for (int i = 0; i < EMPTY_SPANS; ++i) {
        const std::uint64_t start = ticks();
        spans.push_back(static_cast<double>(ticks() - start));
    }
    return trimmed_mean(std::move(spans));
}

/** One request under the clock. */
struct Timed {
    World *world;
    MeasuredCycle measured;
    std::size_t request;
    Side side;
    double empty_span; /**< in ticks */
    double tick;       /**< in seconds */
};

double seconds_of(const Timed &timed, std::uint64_t span)
{
    return (static_cast<double>(span) - timed.empty_span) * timed.tick;
}

bool is_alone(const MeasuredCycle &measured)
{
    return measured.cycle->requests.size() == 1;
}

double time_alone(const Timed &timed)
{
    const std::uint64_t start = ticks();
    for (int i = 0; i < TIMES_AT_ONCE; ++i) {
        make_request(*timed.world, timed.measured, timed.side, timed.request);
    }
    const std::uint64_t end = ticks();
    return seconds_of(timed, end - start) / TIMES_AT_ONCE;
}

double time_in_cycle(const Timed &timed)
{
    double seconds = 0;
    for (std::size_t i = 0; i < timed.measured.cycle->requests.size(); ++i) {
        const std::uint64_t start = ticks();
        make_request(*timed.world, timed.measured, timed.side, i);
        const std::uint64_t end = ticks();
        if (i == timed.request) {
            seconds = seconds_of(timed, end - start);
        }
        follow_up(*timed.world, timed.measured, timed.side, i);
    }
    return seconds;
}

void run(benchmark::State &state, const Timed &timed)
{
    prepare(*timed.world, timed.measured);
    const bool alone = is_alone(timed.measured);
    std::vector<double> times;
    while (state.KeepRunning()) {
        const double seconds = alone ? time_alone(timed) : time_in_cycle(timed);
        state.SetIterationTime(std::max(seconds, 1e-9));
        times.push_back(seconds);
    }
    state.counters[TIME] = trimmed_mean(std::move(times));
    finish(*timed.world, timed.measured);
}

/** A timed request as Google Benchmark runs it. */
class TimedRun : public benchmark::internal::Benchmark
{
public:
    TimedRun(const std::string &name, const Timed &timed) : Benchmark(name.c_str()), timed_(timed)
    {
        UseManualTime();
        Iterations(is_alone(timed.measured) ? SPANS_ALONE : CYCLES);
    }
    void Run(benchmark::State &state) override { run(state, timed_); }

private:
    Timed timed_;
};

/** Takes the time of each run instead of printing them. */
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                times[run.run_name.function_name].push_back(run.counters.at(TIME).value);
            }
        }
    }

    std::map<std::string, std::vector<double>> times{};
};

std::string run_name(std::size_t number, Side side)
{
    return std::to_string(number) + (side == Side::library ? " library" : " floor");
}

void initialize(int runs)
{
    std::string name = "floor_bench";
    std::string repetitions = "--benchmark_repetitions=" + std::to_string(runs);
    std::string order = "--benchmark_enable_random_interleaving=true";
    char *arguments[] = {name.data(), repetitions.data(), order.data(), nullptr};
    int count = 3;
    benchmark::Initialize(&count, arguments);
}

} // namespace

std::vector<Ratio> measured_ratios(null_platform::Chip chip, int runs)
{
    initialize(runs);
    World world(chip);
    const double empty = empty_span();
    const double tick = seconds_a_tick();
    std::vector<Ratio> ratios;
    for (const MeasuredCycle &measured : measured_cycles(chip)) {
        for (std::size_t i = 0; i < measured.cycle->requests.size(); ++i) {
            for (const Side side : {Side::library, Side::floor}) {
                const Timed timed{&world, measured, i, side, empty, tick};
                benchmark::internal::RegisterBenchmarkInternal(
                    new TimedRun(run_name(ratios.size(), side), timed));
            }
            ratios.push_back({.request = measured.cycle->requests[i].name,
                              .chip = chip == null_platform::Chip::trident ? "trident" : "trident2",
                              .calls = measured.floor[i].calls});
        }
    }
    Collector collector;
    (void)benchmark::RunSpecifiedBenchmarks(&collector);
    for (std::size_t i = 0; i < ratios.size(); ++i) {
        ratios[i].library_ns = 1e9 * median(collector.times.at(run_name(i, Side::library)));
        ratios[i].floor_ns = 1e9 * median(collector.times.at(run_name(i, Side::floor)));
    }
    return ratios;
}

double geometric_mean(const std::vector<Ratio> &ratios)
{
    double sum = 0;
    for (const Ratio &ratio : ratios) {
        sum += std::log(ratio.ratio());
    }
    return ratios.empty() ? 0 : std::exp(sum / static_cast<double>(ratios.size()));
}

} // namespace floor_bench
