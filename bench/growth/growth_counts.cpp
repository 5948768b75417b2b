/*
 * growth_counts.cpp: how many instructions each request takes among so many interfaces, under
 * valgrind's callgrind, which counts them: scripts/growth_instructions.py runs it.
 *
 *     valgrind --tool=callgrind --collect-atstart=no growth_counts trident2 7676
 *
 * For each request one dump is left, named by its trigger. What the platform does counts too.
 */
#include "growth_requests.h"

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace
{

void count(null_platform::Chip chip, std::size_t interfaces)
{
    bench::Network network(chip);
    for (const bench::Request &request :
         requests_of(network, bench::Subject::interfaces, interfaces)) {
        request.before();
        CALLGRIND_ZERO_STATS;
        CALLGRIND_TOGGLE_COLLECT;
        request.timed();
        CALLGRIND_TOGGLE_COLLECT;
        CALLGRIND_DUMP_STATS_AT(request.name.c_str());
        request.after();
    }
}

} // namespace

int main(int words, char **word)
{
    const long interfaces = words == 3 ? std::strtol(word[2], nullptr, 10) : 0;
    const bool first = words == 3 && std::strcmp(word[1], "trident") == 0;
    if (interfaces < 16 || (!first && std::strcmp(word[1], "trident2") != 0)) {
        std::fputs("usage: growth_counts trident|trident2 INTERFACES\n", stderr);
        return 2;
    }
    if (RUNNING_ON_VALGRIND == 0) {
        std::fputs("growth_counts: it has to run under valgrind\n", stderr);
        return 2;
    }
    try {
        count(first ? null_platform::Chip::trident : null_platform::Chip::trident2,
              static_cast<std::size_t>(interfaces));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "growth_counts: %s\n", error.what());
        return 1;
    }
    return 0;
}
