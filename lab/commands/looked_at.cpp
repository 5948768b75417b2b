/*
 * looked_at.cpp: see looked_at.h.
 */
#include "commands/looked_at.h"

#include "config/reader.h"
#include "l3lif/restart.h"
#include "l3lif/restart_state.h"
#include "session/verbs.h"

#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

namespace lab::commands
{

bool bring_up_open(session::State &state, const std::filesystem::path &config,
                   const Terminal &terminal)
{
    state.hardware.chip.track_authors();
    bool refused = session::run_up(state, {config.string(), "open"}).refused;
    const auto &interfaces = state.config->interfaces;
    if (std::any_of(interfaces.begin(), interfaces.end(),
                    [](const auto &interface) { return interface.routes(true); })) {
        refused = session::run_ipv6(state, {"on"}).refused || refused;
    }
    if (refused) {
        fmt::print(terminal.err, "{}: something was refused, 'rtif up' tells of it\n",
                   state.config->file);
    }
    return !refused;
}

void restore_layer(session::State &state, const std::filesystem::path &state_dir)
{
    if (const auto file = l3lif::kept_config(state_dir); !file.empty()) {
        state.config = config::read_config(file);
    }
    l3lif::restart(state.hardware, state.layer, l3lif::RestartMode::restore,
                   state.config ? &*state.config : nullptr);
}

} // namespace lab::commands
