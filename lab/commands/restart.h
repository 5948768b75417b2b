/*
 * restart.h: the command `rtif restart`: starts the forwarding process again on
 * a state folder that an earlier one has left, and shows what came back.
 * l3lif/restart.h plays the restart.
 */
#pragma once

#include "l3lif/restart.h"
#include "report/up_result.h"

#include <filesystem>
#include <iosfwd>

namespace lab::commands
{

/** What the user asked for. */
struct RestartOptions {
    std::filesystem::path state_dir = {};
    l3lif::RestartMode mode = l3lif::RestartMode::restore;
    std::filesystem::path config = {};         ///< empty: the one in the state folder
    std::filesystem::path default_routes = {}; ///< fast: the file of default routes; empty: none
    bool then_up = false;                      ///< restore: then brings up what the store had not
    bool json = false;
    bool progress = false; ///< shows on standard error how far it is
    report::View view = {};
};

/**
 * Runs the command.
 *
 * @param options  what was asked for
 * @param out      receives the result
 * @return 0; 1 when the chip was written to in a restore, or something failed
 * @throws config::UnusableFile when the configuration or the default routes can't be used
 * @throws std::runtime_error when the state folder can't be used, or a fast or
 *         cold restart has no configuration
 */
int restart(const RestartOptions &options, std::ostream &out);

/** The same on a switch that is there already, opened on the state folder. */
int restart_on(simswitch::Switch &hardware, const RestartOptions &options, std::ostream &out);

} // namespace lab::commands
