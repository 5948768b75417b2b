/*
 * whole.cpp: what a user waits for: `rtif up` of thousands of mixed interfaces,
 * with and without a state folder, and the restarts after it. Each is a process
 * of its own, whose time and memory are measured from outside;
 * whole_operations.h counts what it does.
 */
#include "mixed_configuration.h"
#include "whole_operations.h"

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using simswitch::chip::Kind;

/** A chip and as many interfaces as it is measured with. */
struct Scale {
    Kind chip;
    const char *word; ///< behind --chip
    std::size_t interfaces;
};

constexpr Scale SCALES[] = {{Kind::trident, "trident", 3400}, {Kind::trident2, "trident2", 7000}};

/** What is run. */
struct Case {
    const char *name;
    bench::Work work;
    double goal_seconds;
};

constexpr Case CASES[] = {
    {"rtif up", bench::Work::up, 1.0},
    {"rtif up --state", bench::Work::up_with_state, 3.0},
    {"rtif restart --mode restore", bench::Work::restore, 0.5},
    {"rtif restart --mode restore --then-up", bench::Work::restore_and_rest, 0.5},
};

/** How one process did. */
struct Run {
    double seconds;     ///< as a clock on the wall tells; on a busy machine more than it takes
    double cpu_seconds; ///< of the process, and of the system for it
    long peak_rss_kib;
};

/** What was measured of a case at a scale. */
struct Row {
    Case what;
    Scale scale;
    Run run;
    bench::Operations operations;
};

double seconds_of(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/** Runs a command with its output thrown away; it must succeed. */
Run run(std::vector<std::string> words)
{
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        execv(arguments.front(), arguments.data());
        _exit(127);
    }
    int status = -1;
    rusage used{};
    if (child < 0 || wait4(child, &status, 0, &used) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        throw std::runtime_error(fmt::format("{} has failed", fmt::join(words, " ")));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    return {took.count(), seconds_of(used.ru_utime) + seconds_of(used.ru_stime), used.ru_maxrss};
}

std::vector<std::string> words_for(const fs::path &rtif, const Case &what, const Scale &scale,
                                   const bench::Place &place)
{
    using bench::Work;
    const bool is_up = what.work == Work::up || what.work == Work::up_with_state;
    if (is_up) {
        std::vector<std::string> words = {rtif, "up", "--chip", scale.word, place.config};
        if (what.work == Work::up_with_state) {
            words.insert(words.end(), {"--state", place.state});
        }
        return words;
    }
    std::vector<std::string> words = {rtif, "restart", "--mode", "restore", "--state", place.state};
    if (what.work == Work::restore_and_rest) {
        words.emplace_back("--then-up");
    }
    return words;
}

/** The run of median time. */
Run measure(const fs::path &rtif, const Case &what, const Scale &scale, int runs)
{
    const bench::TemporaryFolder folder;
    const bench::Place place = {folder.path / "mixed.json", folder.path / "state"};
    std::ofstream(place.config) << lab_test::mixed_configuration(scale.interfaces, scale.chip);
    // A restart needs what an earlier process has left, and adds to it; an up begins in an
    // empty folder.
    const fs::path left = folder.path / "left";
    if (what.work != bench::Work::up && what.work != bench::Work::up_with_state) {
        run(words_for(rtif, {"", bench::Work::up_with_state, 0}, scale, {place.config, left}));
    }
    std::vector<Run> all;
    for (int i = 0; i < runs; ++i) {
        fs::remove_all(place.state);
        if (fs::exists(left)) {
            fs::copy(left, place.state, fs::copy_options::recursive);
        }
        all.push_back(run(words_for(rtif, what, scale, place)));
    }
    std::ranges::sort(all, {}, &Run::seconds);
    return all.at(all.size() / 2);
}

double per_second(const Row &row)
{
    return static_cast<double>(row.operations.requests + row.operations.calls) / row.run.seconds;
}

void print(const Row &row)
{
    fmt::print("{:<38} {:<8} {:>5} interfaces {:>6.3f} s ({:.3f} of CPU, goal {}) {:>8} calls "
               "{:>5} requests "
               "{:>8.0f} a second {:>6} KiB\n",
               row.what.name, row.scale.word, row.scale.interfaces, row.run.seconds,
               row.run.cpu_seconds, row.what.goal_seconds, row.operations.calls,
               row.operations.requests, per_second(row), row.run.peak_rss_kib);
}

std::string json(const std::vector<Row> &rows)
{
    std::string text =
        fmt::format("{{\"kind\": \"whole\", \"measured\": \"{:%Y-%m-%dT%H:%M:%SZ}\", \"rows\": [",
                    fmt::gmtime(std::time(nullptr)));
    for (const Row &row : rows) {
        const auto &[requests, calls] = row.operations;
        fmt::format_to(std::back_inserter(text),
                       "{}\n  {{\"name\": \"{}\", \"chip\": \"{}\", \"interfaces\": {}, "
                       "\"seconds\": {:.4f}, \"cpu_seconds\": {:.4f}, \"operations\": {}, "
                       "\"requests\": {}, \"calls\": {}, "
                       "\"operations_per_second\": {:.0f}, \"peak_rss_kib\": {}, "
                       "\"goal_seconds\": {}}}",
                       &row == rows.data() ? "" : ",", row.what.name, row.scale.word,
                       row.scale.interfaces, row.run.seconds, row.run.cpu_seconds, requests + calls,
                       requests, calls, per_second(row), row.run.peak_rss_kib,
                       row.what.goal_seconds);
    }
    return text + "\n]}\n";
}

int measure_all(int runs, const fs::path &json_file)
{
    const fs::path rtif = fs::read_symlink("/proc/self/exe").parent_path() / "rtif";
    std::vector<Row> rows;
    for (const Scale &scale : SCALES) {
        for (const Case &what : CASES) {
            rows.push_back({what, scale, measure(rtif, what, scale, runs),
                            bench::count_operations(what.work, scale.interfaces, scale.chip)});
            print(rows.back());
        }
    }
    if (!json_file.empty()) {
        std::ofstream(json_file) << json(rows);
    }
    return 0;
}

/** Runs with the arguments of main; returns the exit code. */
int run_with(int argc, char **argv)
{
    CLI::App app("Times rtif with thousands of interfaces");
    std::string json_file;
    bool quick = false;
    int runs = 7;
    app.add_option("--json", json_file, "Writes what was measured to this file");
    app.add_option("--runs", runs, "Runs of each, the median of which counts")
        ->check(CLI::Range(1, 1000));
    app.add_flag("--quick", quick, "One run of each");
    CLI11_PARSE(app, argc, argv);
    return measure_all(quick ? 1 : runs, json_file);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run_with(argc, argv);
    } catch (const std::exception &error) {
        std::fputs("whole: ", stderr);
        std::fputs(error.what(), stderr);
        std::fputs("\n", stderr);
        return 1;
    }
}
