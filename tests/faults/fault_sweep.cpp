/*
 * fault_sweep.cpp: the program fault_sweep: makes every platform call and every
 * allocation of every request of a configuration fail, and writes what becomes
 * of it as docs/failures.md, or holds that page against it. `./dev faults` runs
 * it; `rtif sweep` does the same but for allocations.
 */
#include "faults/page.h"
#include "faults/report.h"
#include "faults/rows.h"
#include "faults/sweep.h"

#include "config/reader.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

struct Words {
    std::string config;
    std::string page;
    bool write = false;
    lab::faults::SweepOptions options;
};

std::string content_of(const std::string &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/** Writes the page, or tells where it differs; whether it is as it should be. */
bool settle_page(const Words &words, const lab::faults::SweepResult &result)
{
    std::ostringstream page;
    lab::faults::print_page(result, std::filesystem::path(words.config).generic_string(), page);
    if (words.write) {
        std::ofstream out(words.page, std::ios::binary);
        if (!(out << page.str() << std::flush)) {
            throw std::runtime_error(words.page + ": can't be written");
        }
        fmt::print("{} written, {} rows\n", words.page,
                   lab::faults::rows_of(result.outcomes).size());
        return true;
    }
    const std::string there = content_of(words.page);
    const auto missing = untold(there, result.outcomes);
    // A quick sweep has a part of the page only.
    if (words.options.quick ? missing.empty() : there == page.str()) {
        return true;
    }
    fmt::print("{} is not what was found; './dev faults --write' makes it anew\n", words.page);
    for (const std::string &line : missing) {
        fmt::print("    {}\n", line);
    }
    return false;
}

int run(const Words &words)
{
    const auto config = lab::config::read_config(words.config);
    const auto begin = std::chrono::steady_clock::now();
    const auto result = lab::faults::sweep(config, words.options);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    for (const lab::faults::Row &row : lab::faults::rows_of(result.outcomes)) {
        if (!row.consequences.broken.empty()) {
            fmt::print("BROKEN {}: {}\n", row.consequences.kind, row.consequences.broken);
        }
    }
    lab::faults::print_totals(result, std::cout);
    fmt::print("{:.0f} s\n", taken.count());
    const bool as_it_should = settle_page(words, result);
    return as_it_should && result.broken() == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
try {
    Words words;
    words.options.progress = true;
    CLI::App app("Makes every platform call of every request of a configuration fail");
    app.add_option("config", words.config, "the configuration")->required();
    app.add_option("page", words.page, "the page of what each failure means")->required();
    auto *write =
        app.add_flag("--write", words.write, "writes the page; without it the page is looked at");
    app.add_flag("--quick", words.options.quick,
                 "of each kind of request the first call of each function, once, with one code")
        ->excludes(write);
    app.add_option("--jobs", words.options.jobs, "processes side by side")
        ->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);
    return run(words);
} catch (const std::exception &error) {
    std::fprintf(stderr, "fault_sweep: %s\n", error.what());
    return 1;
}
