/*
 * whole_operations.h: how many requests to the library and platform calls there
 * are in what whole.cpp measures.
 */
#pragma once

#include "chip/limits.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace bench
{

/** What is measured. */
enum class Work : std::uint8_t {
    up,              ///< a configuration is brought up
    up_with_state,   ///< the same with a state folder
    restore,         ///< a restart restores what the store has of it
    restore_and_rest ///< and brings up what the store has not
};

/** A folder for what is written, which goes with it. */
class TemporaryFolder
{
public:
    /** @throws std::runtime_error when none can be made */
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::filesystem::path path;
};

/** A configuration and the state folder beside it. */
struct Place {
    std::filesystem::path config;
    std::filesystem::path state;
};

/** Requests to the library, and the calls that it made for them. */
struct Operations {
    std::uint64_t requests = 0;
    std::uint64_t calls = 0;
};

/**
 * Does the work with a mixed configuration in a process of its own and counts. What the
 * lab asks the switch by itself counts as well.
 *
 * @throws std::runtime_error when the process fails
 */
Operations count_operations(Work work, std::size_t interfaces, simswitch::chip::Kind chip);

} // namespace bench
