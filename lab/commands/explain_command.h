/*
 * explain_command.h: the command `rtif explain`: what a number of the chip
 * stands for, after a configuration was brought up or in a state folder.
 * explain/explain.h finds it out; a session has a command of the same name.
 */
#pragma once

#include "commands/command_line.h"

#include "chip/limits.h"

#include <filesystem>
#include <string>

namespace lab::commands
{

/** What the user asked for. */
struct ExplainOptions {
    std::string kind = {};             ///< "iif", "vlan", "station", "port", "egress"
    std::string number = {};           ///< in decimal
    std::filesystem::path config = {}; ///< the configuration to bring up; empty with a state folder
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< what an earlier run has left; empty: none
    bool json = false;
};

/**
 * Runs the command. A state folder stays as it is: a copy of it is looked at.
 *
 * @return EXIT_DONE; EXIT_REFUSED for a number that stands for nothing, and when something of the
 *         configuration was refused; EXIT_USAGE for words that make no sense
 * @throws std::runtime_error when the configuration or the state folder can't be used
 */
int explain_number(const ExplainOptions &options, const Terminal &terminal);

} // namespace lab::commands
