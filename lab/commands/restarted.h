/*
 * restarted.h: the process that takes the place of another one in the middle of
 * a script: `restart` ends the one, and the other goes on with the lines behind
 * it. run.h runs the script, session/restart_verbs.cpp has the command.
 */
#pragma once

#include "l3lif/restart.h"

#include <cstddef>
#include <filesystem>
#include <istream>
#include <string>

namespace lab::commands
{

struct RunOptions;

/** What a process hands to the one that takes its place, beside the rest of the script. */
struct Restarted {
    l3lif::RestartMode mode = l3lif::RestartMode::restore;
    std::size_t line = 0;              ///< of the `restart`, from 1
    int code = 0;                      ///< what the script came to so far
    std::string name = {};             ///< of the script, for messages
    std::filesystem::path folder = {}; ///< what relative paths start from

    /** In one word, for a command line. */
    std::string word() const;
    /** Reads such a word. @throws std::runtime_error for any other one */
    static Restarted parse(const std::string &word);
};

/**
 * Puts another process in the place of this one, which runs the rest of a script.
 * The switch must have been closed.
 *
 * @param rest  behind the `restart`
 * @throws std::runtime_error when it can't be started
 */
[[noreturn]] void go_on_in_another_process(const RunOptions &options, const Restarted &restarted,
                                           std::istream &rest);

} // namespace lab::commands
