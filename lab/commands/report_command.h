/*
 * report_command.h: the command `rtif report`: writes the page of a switch, one
 * HTML file that shows its interfaces, tables and calls. docs/report.md tells
 * what is in it.
 */
#pragma once

#include "commands/command_line.h"

#include "chip/limits.h"

#include <cstddef>
#include <filesystem>

namespace lab::commands
{

/** Calls that a page holds unless the user asks for more or fewer. */
inline constexpr std::size_t REPORT_CALLS = 50000;
/** The largest number that the user may ask for. */
inline constexpr std::size_t REPORT_CALLS_MAX = 1000000000;

/** What the user asked for. */
struct ReportOptions {
    std::filesystem::path config = {};    ///< the configuration; empty with a state folder
    std::filesystem::path state_dir = {}; ///< folder of an earlier run; empty with a configuration
    std::filesystem::path out = {};       ///< the file to write
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::size_t calls = REPORT_CALLS; ///< calls that the page may hold
};

/**
 * Runs the command.
 *
 * @param terminal  receives where the page is and how large, and what isn't up
 * @return 0; 1 when the page was written and not everything is up
 * @throws config::UnusableFile when the configuration can't be used, or the page can't be written
 * @throws std::runtime_error when the state folder can't be used, or the page would be the
 *         configuration or lie in that folder
 */
int report(const ReportOptions &options, const Terminal &terminal);

} // namespace lab::commands
