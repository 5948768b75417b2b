/*
 * model_walk.cpp: random lifecycles for as long as one likes.
 *
 *     model_walk [--steps N] [--seed S] [--length N] [--chip trident|trident2] [--no-restarts]
 *                [--no-faults] [--config FILE] [--out FILE]
 */
#include "model/check.h"

#include <CLI/CLI.hpp>

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <iostream>
#include <random>

int main(int argc, char **argv)
try {
    using namespace model_test;
    CheckOptions options;
    std::size_t steps = 10000;
    std::string chip = "both";
    bool no_faults = false;
    bool no_restarts = false;
    options.seed = std::random_device{}();
    CLI::App app("Random lifecycles of interfaces against a naive model of them");
    app.add_option("--steps", steps, "At least so many steps, of both chips together");
    app.add_option("--seed", options.seed, "Where the random numbers begin");
    app.add_option("--length", options.length, "The longest lifecycle, in steps");
    app.add_option("--chip", chip, "trident or trident2")
        ->check(CLI::IsMember({"trident", "trident2", "both"}));
    app.add_option("--config", options.config, "The configuration");
    app.add_option("--out", options.out, "The file for a script that shows a difference");
    app.add_flag("--no-faults", no_faults, "No call fails");
    app.add_flag("--no-restarts", no_restarts, "Nothing is restarted");
    CLI11_PARSE(app, argc, argv);
    options.draw = {.faults = !no_faults, .restarts = !no_restarts};

    const auto begin = std::chrono::steady_clock::now();
    Checked all;
    const std::uint64_t first = options.seed;
    while (all.steps < steps && all.text.empty()) {
        for (const auto kind : {simswitch::chip::Kind::trident, simswitch::chip::Kind::trident2}) {
            const bool is_trident2 = kind == simswitch::chip::Kind::trident2;
            if (all.text.empty() && (chip == "both" || (chip == "trident2") == is_trident2)) {
                options.chip = kind;
                all += check_lifecycles(options);
            }
        }
        fmt::print(std::cout, "seed {}: {} steps so far, {} failing calls, {} restarts\n",
                   options.seed, all.steps, all.faults, all.restarts);
        std::cout << std::flush;
        ++options.seed;
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    fmt::print(
        "{} steps in {} lifecycles, {} failing calls, {} restarts, seeds {} to {}, {:.0f} s\n",
        all.steps, all.lifecycles, all.faults, all.restarts, first, options.seed - 1,
        seconds.count());
    if (!all.text.empty()) {
        fmt::print(std::cerr, "{}", all.text);
        return 1;
    }
    return 0;
} catch (const std::exception &error) {
    std::fprintf(stderr, "model_walk: %s\n", error.what());
    return 1;
}
