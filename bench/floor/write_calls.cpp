/*
 * write_calls.cpp: records the platform calls of each request and writes them as straight
 * calls: write_calls trident|trident2 FILE.
 *
 * A cycle is gone through a few times first. Then it is recorded twice, and both records have
 * to be the same: a request that calls something else each time has no floor.
 */
#include "call_writer.h"
#include "recorded_cycles.h"

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <string>

namespace
{

int write(const std::string &chip, const std::string &path)
{
    floor_bench::World world(chip == "trident2" ? null_platform::Chip::trident2
                                                : null_platform::Chip::trident);
    floor_bench::CallWriter writer;
    for (const floor_bench::Cycle &cycle : floor_bench::cycles()) {
        writer.add(floor_bench::recorded(world, cycle));
    }
    std::ofstream file(path);
    file << writer.source(chip);
    file.close();
    if (!file) {
        fmt::print(stderr, "write_calls: {} can't be written\n", path);
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        fmt::print(stderr, "usage: write_calls trident|trident2 FILE\n");
        return 2;
    }
    try {
        return write(argv[1], argv[2]);
    } catch (const std::exception &error) {
        fmt::print(stderr, "write_calls: {}\n", error.what());
        return 1;
    }
}
