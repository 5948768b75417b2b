/*
 * load_time.cpp: how long a process takes to load the shared library.
 *
 * Each run forks a process that calls dlopen once. This program brings the
 * symbols that the library leaves open, those of the null platform. Prints one
 * JSON object, which scripts/measured.py takes.
 */
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int RUNS = 400;
constexpr const char *GLIB = "libglib-2.0.so.0";

/** One way of loading. */
struct Way {
    const char *what;
    int flags;
    bool glib_before; ///< GLib is in the process already
    std::vector<std::int64_t> nanoseconds{};
};

/** Loads the library in this process; the time in nanoseconds, -1 with a line on stderr if it
 * can't. */
std::int64_t load(const char *library, const Way &way)
{
    if (way.glib_before && dlopen(GLIB, RTLD_NOW) == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return -1;
    }
    const auto begin = std::chrono::steady_clock::now();
    void *const handle = dlopen(library, way.flags);
    const auto end = std::chrono::steady_clock::now();
    if (handle == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return -1;
    }
    return std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count();
}

/** The same in a process of its own, which is gone when this returns. */
std::int64_t load_in_child(const char *library, const Way &way)
{
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("pipe");
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::int64_t taken = load(library, way);
        _exit(write(ends[1], &taken, sizeof taken) == sizeof taken ? 0 : 1);
    }
    close(ends[1]);
    std::int64_t taken = -1;
    if (child < 0 || read(ends[0], &taken, sizeof taken) != sizeof taken) {
        taken = -1;
    }
    close(ends[0]);
    if (child > 0) {
        waitpid(child, nullptr, 0);
    }
    return taken;
}

double median_microseconds(std::vector<std::int64_t> nanoseconds)
{
    const auto middle = nanoseconds.begin() + static_cast<std::ptrdiff_t>(nanoseconds.size() / 2);
    std::nth_element(nanoseconds.begin(), middle, nanoseconds.end());
    return static_cast<double>(*middle) / 1000.0;
}

} // namespace

int main(int count, char **words)
{
    if (count != 2) {
        std::fputs("usage: load_time LIBRARY\n", stderr);
        return 2;
    }
    std::vector<Way> ways = {
        {"bound at once, GLib in the process", RTLD_NOW, true},
        {"bound lazily, GLib in the process", RTLD_LAZY, true},
        {"bound at once, GLib with it", RTLD_NOW, false},
        {"bound lazily, GLib with it", RTLD_LAZY, false},
    };
    for (int run = 0; run < RUNS; ++run) {
        for (Way &way : ways) {
            const std::int64_t taken = load_in_child(words[1], way);
            if (taken < 0) {
                return 1;
            }
            way.nanoseconds.push_back(taken);
        }
    }
    std::printf("{\"runs\": %d, \"rows\": [", RUNS);
    const char *separator = "";
    for (const Way &way : ways) {
        std::printf("%s\n  {\"what\": \"%s\", \"microseconds\": %.1f}", separator, way.what,
                    median_microseconds(way.nanoseconds));
        separator = ",";
    }
    std::puts("]}");
    return 0;
}
