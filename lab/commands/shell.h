/*
 * shell.h: the command `rtif shell`: the session's language as it is typed,
 * with completion and history. run.h has the same for scripts.
 */
#pragma once

#include "commands/command_line.h"

#include "switch.h"

#include <filesystem>

namespace lab::commands
{

/** What the user asked for. */
struct ShellOptions {
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< folder of chip and store; empty: in memory
    std::filesystem::path record = {};    ///< file for every request and call; empty: none
};

/**
 * Runs the command until `quit`, or the end of what is typed. Errors don't end
 * it. From a standard input that is no terminal lines are read without prompt
 * and editing.
 *
 * @return EXIT_DONE
 * @throws std::runtime_error when the state folder or the terminal can't be used, or the recording
 *         not be written
 */
int shell(const ShellOptions &options, const Terminal &terminal);

} // namespace lab::commands
