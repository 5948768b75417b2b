/*
 * run.h: the command `rtif run`: a script of the session's language, line by
 * line. session/session.h has the language, shell.h the same for a terminal.
 */
#pragma once

#include "commands/command_line.h"
#include "commands/restarted.h"

#include "switch.h"

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

namespace lab::commands
{

/** What the user asked for. */
struct RunOptions {
    std::string script = {}; ///< its path, "-" for the standard input
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< folder of chip and store; empty: in memory
    bool quiet = false;                   ///< only failures are told
    std::filesystem::path record = {};    ///< file for every request and call; empty: none
    /** The process comes after a `restart` in the script; restarted.h. */
    std::optional<Restarted> restarted = {};
};

/**
 * Runs the command: each line with its outcome goes to `terminal.out`, what ends
 * the script to `terminal.err`.
 *
 * A command that the library refuses doesn't end the script. It counts as a
 * failure unless an expectation on its code or messages is met before the next
 * command asks the library for something.
 *
 * A `restart` ends the process: the rest of the script is run by the next one, which takes its
 * place. It can't be done while a recording is made, which ends with its process.
 *
 * @return EXIT_DONE; EXIT_REFUSED for an expectation that isn't met, a command
 *         that can't be done, a refusal that no expectation accepts, a script that
 *         can't be read; EXIT_USAGE for a line that makes no sense
 * @throws std::runtime_error when the state folder can't be used, or the recording not be written
 */
int run_script(const RunOptions &options, const Terminal &terminal);

/**
 * The same on a switch that is there already, without restarts.
 *
 * @param in    the script
 * @param name  of the script, for messages
 */
int run_script_on(simswitch::Switch &hardware, const RunOptions &options, std::istream &in,
                  const std::string &name, const Terminal &terminal);

} // namespace lab::commands
