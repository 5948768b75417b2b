/*
 * growth_bench.cpp: what a request costs as there is more of something, on the null platform.
 *
 *     growth_bench [--quick] [--json FILE] [Google Benchmark's options]
 *
 * Each size is measured in a process of its own, as the library's tables begin anew in one. The
 * sizes take turns for some rounds; a figure is the median of many times in the fastest round, as
 * what else the machine does comes and goes and slows whole rounds down. What grows is the
 * library's own work: no function of the null platform takes longer with more interfaces, but for
 * its trees, which take logarithmic time.
 */
#include "growth_requests.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

using bench::Request;
using bench::Subject;
using null_platform::Chip;

constexpr int ROUNDS = 7;
constexpr int QUICK_ROUNDS = 2;
constexpr double SECONDS = 0.003; ///< that a request is measured for, each round
constexpr double QUICK_SECONDS = 0.001;

/** One size of one thing on a chip. */
struct Cell {
    Chip chip;
    Subject subject;
    std::size_t count;
};

/** The interfaces that a chip takes are the numbers it has, less the four in use by itself. */
const std::vector<Cell> CELLS = [] {
    std::vector<Cell> cells;
    const auto add = [&cells](Chip chip, Subject subject,
                              std::initializer_list<std::size_t> counts) {
        for (const std::size_t count : counts) {
            cells.push_back({chip, subject, count});
        }
    };
    add(Chip::trident, Subject::interfaces, {16, 256, 1024, 3580});
    add(Chip::trident2, Subject::interfaces, {16, 256, 1024, 7676});
    add(Chip::trident2, Subject::svis, {16, 256, 1024, 4093});
    add(Chip::trident2, Subject::virtual_macs, {16, 256, 1024, 4000});
    add(Chip::trident2, Subject::pairs, {16, 256, 1000});
    add(Chip::trident2, Subject::subinterfaces, {16, 256, 1024, 4093});
    add(Chip::trident2, Subject::channel_subinterfaces, {16, 256, 1024, 4093});
    return cells;
}();

const char *text(Chip chip)
{
    return chip == Chip::trident ? "trident" : "trident2";
}

/** What is measured of a request at one size. */
struct Figures {
    double nanoseconds = 0; ///< a request's, in the fastest round
    double calls = 0;       ///< of the platform, a request's
};

/** By cell, then in the order of the requests. */
struct Row {
    std::size_t cell;
    std::string request;
    Figures figures;
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** The requests of this process's network. */
std::vector<Request> requests;

/**
 * A request as a benchmark, by its number. Its time is that of `timed` alone, the median of all
 * iterations.
 */
void measure(benchmark::State &state)
{
    const Request &request = requests[static_cast<std::size_t>(state.range(0))];
    const auto units = static_cast<double>(request.units);
    std::vector<double> taken;
    std::uint64_t calls = 0;
    while (state.KeepRunning()) {
        request.before();
        const std::uint64_t calls_before = null_platform::calls();
        const auto begin = std::chrono::steady_clock::now();
        request.timed();
        const auto end = std::chrono::steady_clock::now();
        calls = null_platform::calls() - calls_before;
        request.after();
        const std::chrono::duration<double> seconds = end - begin;
        state.SetIterationTime(seconds.count());
        taken.push_back(seconds.count() * 1e9 / units);
    }
    state.counters["ns"] = median(taken);
    state.counters["calls"] = static_cast<double>(calls) / units;
}

benchmark::internal::Benchmark *const by_number =
    benchmark::RegisterBenchmark("request", measure)->UseManualTime();

/** Writes a line for each benchmark that ran: nanoseconds, calls, name. */
class LineReporter : public benchmark::BenchmarkReporter
{
public:
    explicit LineReporter(std::FILE *to) : to_(to) {}

    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            std::fprintf(to_, "%.17g %.17g %s\n", run.counters.at("ns").value,
                         run.counters.at("calls").value,
                         requests[std::stoul(run.run_name.args)].name.c_str());
        }
    }

private:
    std::FILE *to_;
};

/** Builds the network of a cell and measures its requests; the process's whole work. */
void run_cell(const Cell &cell, double seconds, std::FILE *to)
{
    bench::Network network(cell.chip);
    requests = bench::requests_of(network, cell.subject, cell.count);
    by_number->MinTime(seconds)->DenseRange(0, static_cast<std::int64_t>(requests.size()) - 1);
    LineReporter reporter(to);
    benchmark::RunSpecifiedBenchmarks(&reporter);
}

/** Takes the lines of one process into the rows. */
void take_lines(std::FILE *from, std::size_t cell, std::vector<Row> &rows)
{
    char line[256];
    while (std::fgets(line, sizeof line, from) != nullptr) {
        std::istringstream words(line);
        double nanoseconds = 0;
        double calls = 0;
        std::string request;
        if (!std::getline(words >> nanoseconds >> calls >> std::ws, request)) {
            continue;
        }
        auto row = std::find_if(rows.begin(), rows.end(), [&](const Row &one) {
            return one.cell == cell && one.request == request;
        });
        if (row == rows.end()) {
            row = rows.insert(rows.end(), {cell, request, {nanoseconds, calls}});
        }
        row->figures.nanoseconds = std::min(row->figures.nanoseconds, nanoseconds);
    }
}

/** Measures a cell in a process of its own; whether that ended well. */
bool measure_cell(std::size_t cell, double seconds, std::vector<Row> &rows)
{
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("growth_bench: pipe");
        return false;
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        std::FILE *const to = fdopen(ends[1], "w");
        run_cell(CELLS[cell], seconds, to);
        std::fclose(to);
        std::_Exit(0);
    }
    close(ends[1]);
    std::FILE *const from = fdopen(ends[0], "r");
    take_lines(from, cell, rows);
    std::fclose(from);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

nlohmann::ordered_json json_of(const std::vector<Row> &rows)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Row &row : rows) {
        const Cell &cell = CELLS[row.cell];
        list.push_back({{"request", row.request},
                        {"chip", text(cell.chip)},
                        {"subject", bench::text(cell.subject)},
                        {"count", cell.count},
                        {"calls", row.figures.calls},
                        {"ns", row.figures.nanoseconds}});
    }
    const std::time_t now = std::time(nullptr);
    char measured[32];
    std::strftime(measured, sizeof measured, "%FT%TZ", std::gmtime(&now));
    return {{"kind", "growth"}, {"measured", measured}, {"rows", list}};
}

/** Measures all cells in turns; whether all ended well. */
bool measure_all(bool quick, std::vector<Row> &rows)
{
    for (int round = 0; round < (quick ? QUICK_ROUNDS : ROUNDS); ++round) {
        for (std::size_t cell = 0; cell < CELLS.size(); ++cell) {
            if (!measure_cell(cell, quick ? QUICK_SECONDS : SECONDS, rows)) {
                const Cell &failed = CELLS[cell];
                fmt::print(stderr, "growth_bench: {} {} on {} couldn't be measured\n", failed.count,
                           bench::text(failed.subject), text(failed.chip));
                return false;
            }
        }
    }
    return true;
}

/** The program; its exit code. */
int run(int count, char **words)
{
    benchmark::Initialize(&count, words);
    std::string file;
    bool quick = false;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--quick") {
            quick = true;
        } else if (word == "--json" && i + 1 < count) {
            file = words[++i];
        } else {
            fmt::print(stderr, "usage: growth_bench [--quick] [--json FILE]\n");
            return 2;
        }
    }
    std::vector<Row> rows;
    if (!measure_all(quick, rows)) {
        return 1;
    }
    const nlohmann::ordered_json found = json_of(rows);
    if (file.empty()) {
        fmt::print("{}\n", found.dump(1));
    } else if (!(std::ofstream(file) << found.dump(1) << '\n')) {
        fmt::print(stderr, "growth_bench: {} can't be written\n", file);
        return 1;
    }
    return 0;
}

} // namespace

int main(int count, char **words)
{
    try {
        return run(count, words);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "growth_bench: %s\n", error.what());
        return 1;
    }
}
