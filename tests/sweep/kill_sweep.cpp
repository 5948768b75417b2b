/*
 * kill_sweep.cpp: the program kill_sweep: kills a process at every moment of
 * bringing a configuration up and of taking it down, on both chips, and looks
 * at what the restarts after it find. `./dev sweep` runs it. Progress and what
 * fails go to the error stream, the totals to the output.
 */
#include "sweep/engine/point.h"

#include "config/reader.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <vector>

namespace
{

using sweep::Road;

/** What one process of several does. */
struct Share {
    std::string config;
    std::size_t number = 0;
    std::size_t of = 1;
    std::size_t stride = 1;
    std::size_t first = 0;
    std::size_t last = SIZE_MAX;
    std::string chip = "both";
    std::string direction = "both";
};

struct Totals {
    std::size_t points = 0;
    std::size_t failed = 0;
    std::map<std::string, int> known;
};

void report(const Road &road, std::size_t moment, const std::string &call,
            const sweep::Lines &failures)
{
    fmt::print(stderr, "FAILED {} moment {}: {}\n", sweep::name(road), moment, call);
    for (const std::string &failure : failures) {
        fmt::print(stderr, "    {}\n", failure);
    }
}

void go(const Road &road, const Share &share, Totals &totals)
{
    const sweep::Lines moments = sweep::moments_of(road);
    const sweep::Lines expected = sweep::brought_up_at_once(road);
    const auto begin = std::chrono::steady_clock::now();
    std::size_t points = 0;
    std::size_t turn = 0;
    const std::size_t step = std::max<std::size_t>(moments.size() / 10, 1);
    for (std::size_t moment = 0; moment < moments.size(); ++moment) {
        const bool is_point = moment % share.stride == 0 || moment + 1 == moments.size();
        if (is_point && turn++ % share.of == share.number && moment >= share.first &&
            moment <= share.last) {
            const sweep::Found found = sweep::check_point(road, moment, expected);
            ++points;
            if (!found.failures.empty()) {
                ++totals.failed;
                report(road, moment, moments[moment], found.failures);
            }
            for (const auto &[name, count] : found.known) {
                totals.known[name] += count;
            }
        }
        if ((moment + 1) % step == 0) {
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
            fmt::print(stderr, "{} {}/{}: moment {} of {}, {} points, {} failed, {:.0f} s\n",
                       sweep::name(road), share.number + 1, share.of, moment + 1, moments.size(),
                       points, totals.failed, taken.count());
        }
    }
    totals.points += points;
}

int run(const Share &share)
{
    const lab::config::Description config = lab::config::read_config(share.config);
    Totals totals;
    for (const auto chip : {simswitch::chip::Kind::trident, simswitch::chip::Kind::trident2}) {
        for (const auto direction : {sweep::Direction::up, sweep::Direction::down}) {
            const bool is_trident2 = chip == simswitch::chip::Kind::trident2;
            const bool is_down = direction == sweep::Direction::down;
            if ((share.chip == "both" || (share.chip == "trident2") == is_trident2) &&
                (share.direction == "both" || (share.direction == "down") == is_down)) {
                go({chip, direction, &config}, share, totals);
            }
        }
    }
    for (const auto &[name, count] : totals.known) {
        fmt::print("known {} {}\n", count, name);
    }
    fmt::print("points {} failed {}\n", totals.points, totals.failed);
    return totals.failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
try {
    Share share;
    CLI::App app("Kills a process at every moment of bringing a configuration up and down");
    app.add_option("config", share.config, "the configuration")->required();
    app.add_option("--share", share.number, "which share of the points, from 0");
    app.add_option("--of", share.of, "number of shares")->check(CLI::PositiveNumber);
    app.add_option("--stride", share.stride, "one moment of so many")->check(CLI::PositiveNumber);
    app.add_option("--first", share.first, "the first moment");
    app.add_option("--last", share.last, "the last moment");
    app.add_option("--chip", share.chip)->check(CLI::IsMember({"trident", "trident2", "both"}));
    app.add_option("--direction", share.direction)->check(CLI::IsMember({"up", "down", "both"}));
    CLI11_PARSE(app, argc, argv);
    return run(share);
} catch (const std::exception &error) {
    std::fprintf(stderr, "kill_sweep: %s\n", error.what());
    return 1;
}
