/*
 * recordings.h: the commands `rtif replay` and `rtif diff`: a recording run
 * again, and two of them beside each other. record/recording.h has what a
 * recording is; up, run and shell make one with --record.
 */
#pragma once

#include "commands/command_line.h"
#include "record/compare.h"
#include "record/report.h"

#include "chip/limits.h"

#include <filesystem>
#include <optional>

namespace lab::commands
{

/** What the user asked for. */
struct ReplayOptions {
    std::filesystem::path recording = {};
    std::optional<simswitch::chip::Kind> chip = {}; ///< nothing: as recorded
    record::ReplayView view = {};
};

/**
 * Runs a recording again, in this process's own library.
 *
 * @return 0 when all is as recorded; 1 when something differs; 2 for a file that is no recording,
 *         or whose configuration can't be used, which is told on `terminal.err`
 */
int replay(const ReplayOptions &options, const Terminal &terminal);

/** What the user asked for. */
struct DiffOptions {
    std::filesystem::path before = {};
    std::filesystem::path after = {};
    record::CompareOptions compare = {};
    record::DiffView view = {};
};

/**
 * Compares two recordings.
 *
 * @return 0 when they are the same; 1 when something differs; 2 for a file that is no recording or
 *         a request that neither has, which is told on `terminal.err`
 */
int diff(const DiffOptions &options, const Terminal &terminal);

} // namespace lab::commands
