/*
 * dump.h: the command `rtif dump`: the library's diagnostic dumps, of a
 * configuration that is brought up for it, or of what an earlier run has left.
 * l3lif/dump.h has the dumps; a session has a command of the same name.
 */
#pragma once

#include "commands/command_line.h"
#include "l3lif/layer.h"

#include "switch.h"

#include <filesystem>
#include <string>

namespace lab::commands
{

/** What the user asked for. */
struct DumpOptions {
    std::filesystem::path config = {}; ///< the configuration to bring up; empty with a state folder
    std::string name = {};             ///< the interface; empty: the tables of interface numbers
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< what an earlier run has left; empty: none
    bool json = false;
};

/**
 * Runs the command: the dump goes to `terminal.out`, what was refused to
 * `terminal.err`. A state folder stays as it is: a copy of it is restored.
 *
 * @return EXIT_DONE; EXIT_REFUSED when the library refused the dump, or
 *         something of the configuration didn't come up; EXIT_USAGE for an
 *         interface that there isn't
 * @throws config::UnusableFile when the configuration can't be used
 * @throws std::runtime_error when the state folder can't be used
 */
int dump(const DumpOptions &options, const Terminal &terminal);

/** The same of a configuration, on a switch that is there already. */
int dump_on(simswitch::Switch &hardware, const DumpOptions &options, const Terminal &terminal);

} // namespace lab::commands
