/*
 * command.h: a command of rtif as the command line has it: its options, and what
 * runs it. command_line.cpp asks for each of them; session_commands.cpp,
 * restart_commands.cpp, packet_commands.cpp, wire_commands.cpp, record_commands.cpp and others have
 * their options.
 */
#pragma once

#include "commands/command_line.h"

#include "chip/limits.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <string>

namespace lab::commands
{

/** A command that the command line knows. */
struct Command {
    CLI::App *app;                              ///< its options
    std::function<int(const Terminal &)> run{}; ///< does it; returns the exit code
};

/** The kinds of chip by the word behind --chip. */
const std::map<std::string, simswitch::chip::Kind> &chip_kinds();

/** Adds --chip. @param chip  receives the word, which is one of chip_kinds() */
CLI::Option *add_chip_option(CLI::App &command, std::string &chip);

/** Adds --state for a folder that is made. @param state_dir  receives the folder */
CLI::Option *add_state_option(CLI::App &command, std::string &state_dir);

// Each adds a command with its options to the app, which must outlive what it returns.

// session_commands.cpp
Command add_up(CLI::App &app);
Command add_run(CLI::App &app);
Command add_shell(CLI::App &app);
Command add_dump(CLI::App &app);
// restart_commands.cpp
Command add_default_routes(CLI::App &app);
Command add_restart(CLI::App &app);
Command add_check(CLI::App &app);
// packet_commands.cpp
Command add_packet(CLI::App &app);
// record_commands.cpp
Command add_replay(CLI::App &app);
Command add_diff(CLI::App &app);
// explain_command.cpp
Command add_explain(CLI::App &app);
// faults.cpp
Command add_faults(CLI::App &app);
// wire_commands.cpp
Command add_wire(CLI::App &app);
// report_command.cpp
Command add_report(CLI::App &app);

} // namespace lab::commands
