/*
 * floor_bench.cpp: what the library adds to the calls that it makes. Each request is timed as
 * the library makes it and as its platform calls alone, straight from one piece of code.
 *
 * Each chip has a process of its own, since the library's tables are the process's. The exit
 * code is 1 when something couldn't be measured; ratios don't change it.
 */
#include "ratios.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using floor_bench::Ratio;
using nlohmann::json;

struct CloseFile {
    void operator()(std::FILE *file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

json rows_of(const std::vector<Ratio> &ratios)
{
    json rows = json::array();
    for (const Ratio &ratio : ratios) {
        rows.push_back({{"request", ratio.request},
                        {"chip", ratio.chip},
                        {"calls", ratio.calls},
                        {"library_ns", ratio.library_ns},
                        {"floor_ns", ratio.floor_ns},
                        {"ratio", ratio.ratio()}});
    }
    return rows;
}

std::vector<Ratio> ratios_of(const json &rows)
{
    std::vector<Ratio> ratios;
    for (const json &row : rows) {
        ratios.push_back({row.at("request"), row.at("chip"), row.at("calls"), row.at("library_ns"),
                          row.at("floor_ns")});
    }
    return ratios;
}

/** Measures a chip in a child process, which leaves its rows in a file of both. */
std::vector<Ratio> measured_apart(null_platform::Chip chip, int runs)
{
    const File rows(std::tmpfile());
    if (!rows) {
        throw std::runtime_error("no temporary file can be made");
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::string text = rows_of(floor_bench::measured_ratios(chip, runs)).dump();
        const bool written = std::fwrite(text.data(), 1, text.size(), rows.get()) == text.size() &&
                             std::fflush(rows.get()) == 0;
        _exit(written ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("the measuring process failed");
    }
    std::rewind(rows.get());
    return ratios_of(json::parse(rows.get()));
}

void print(const std::vector<Ratio> &ratios)
{
    fmt::print("{:<44} {:<9} {:>5} {:>11} {:>9} {:>6}\n", "REQUEST", "CHIP", "CALLS", "LIBRARY ns",
               "FLOOR ns", "RATIO");
    for (const Ratio &ratio : ratios) {
        fmt::print("{:<44} {:<9} {:>5} {:>11.1f} {:>9.1f} {:>6.3f}\n", ratio.request, ratio.chip,
                   ratio.calls, ratio.library_ns, ratio.floor_ns, ratio.ratio());
    }
    const auto worst =
        std::max_element(ratios.begin(), ratios.end(),
                         [](const Ratio &a, const Ratio &b) { return a.ratio() < b.ratio(); });
    fmt::print("\ngeometric mean {:.3f}, largest {:.3f} ({}, {})\n",
               floor_bench::geometric_mean(ratios), worst->ratio(), worst->request, worst->chip);
}

int measure(const std::vector<null_platform::Chip> &chips, int runs, const std::string &path)
{
    std::vector<Ratio> all;
    for (const null_platform::Chip chip : chips) {
        const std::vector<Ratio> ratios = measured_apart(chip, runs);
        all.insert(all.end(), ratios.begin(), ratios.end());
    }
    print(all);
    if (path.empty()) {
        return 0;
    }
    std::ofstream file(path);
    file << json{{"requests", rows_of(all)}, {"geometric_mean", floor_bench::geometric_mean(all)}}
                .dump(2)
         << '\n';
    file.close();
    if (!file) {
        throw std::runtime_error(path + " can't be written");
    }
    return 0;
}

int run(int argc, char **argv)
{
    CLI::App app("What the library adds to the calls that it makes, request by request.");
    std::string chip = "both";
    std::string path;
    int runs = 15;
    app.add_option("--chip", chip, "trident, trident2, or both")
        ->check(CLI::IsMember({"trident", "trident2", "both"}));
    app.add_option("--runs", runs, "runs of each side, whose median counts")
        ->check(CLI::Range(1, 1000));
    app.add_option("--json", path, "file for the figures");
    CLI11_PARSE(app, argc, argv);
    std::vector<null_platform::Chip> chips;
    if (chip != "trident2") {
        chips.push_back(null_platform::Chip::trident);
    }
    if (chip != "trident") {
        chips.push_back(null_platform::Chip::trident2);
    }
    return measure(chips, runs, path);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        fmt::print(stderr, "floor_bench: {}\n", error.what());
        return 1;
    }
}
