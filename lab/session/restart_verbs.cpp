/*
 * restart_verbs.cpp: a restart in the middle of a session: the command, which ends the process, and
 * what the layers above do in the next one. l3lif/restart.h plays the restart, commands/run.h
 * begins the process.
 */
#include "session/verbs.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/restart.h"
#include "l3lif/restart_state.h"
#include "session/errors.h"
#include "session/nearest.h"

#include "report/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace lab::session
{

namespace
{

using l3lif::RestartMode;

constexpr std::array MODES = {RestartMode::restore, RestartMode::fast, RestartMode::cold};

RestartMode parse_mode(const std::string &word)
{
    std::vector<std::string> names;
    for (const RestartMode mode : MODES) {
        if (l3lif::mode_name(mode) == word) {
            return mode;
        }
        names.emplace_back(l3lif::mode_name(mode));
    }
    throw UsageError(unknown("start", word, names) + " (restore, fast or cold)");
}

/** The requests of a restore, and of what came after it. */
std::vector<Step> restored(State &state)
{
    l3lif::RestartResult result =
        l3lif::restart(state.hardware, state.layer, RestartMode::restore, &*state.config);
    std::vector<Step> steps = {{"restore the global context", result.globals}};
    for (l3lif::RestoredInterface &one : result.interfaces) {
        const l3lif::LifPlan &plan = one.interface->lif->plan();
        if (plan.trunk != 0 && plan.main != 0) {
            // It is stored under its port-channel's ifindex, and has no members.
            one.request.expected = l3lif::NO_MEMBERS;
        }
        steps.push_back({fmt::format("restore {}", plan.name), std::move(one.request)});
    }
    for (l3lif::LateRequest &late :
         l3lif::complete(state.hardware, state.layer, *state.config).requests) {
        const bool gives_station = late.asked == l3lif::ADD_ROUTER_MAC;
        steps.push_back({std::move(late.asked), std::move(late.request), gives_station});
    }
    return steps;
}

std::vector<Step> brought_up(State &state, RestartMode mode)
{
    l3lif::restart(state.hardware, state.layer, mode, &*state.config);
    std::vector<Step> steps;
    for (const l3lif::NamedRequest &named : l3lif::requests_up(state.layer)) {
        steps.push_back({named.asked, *named.request, named.gives_station});
    }
    return steps;
}

} // namespace

Outcome run_restart(State &state, const Words &words)
{
    const RestartMode mode = parse_mode(words.front());
    if (state.state_dir.empty()) {
        throw Impossible(
            "nothing outlives the process: chip and store are in memory; start with --state DIR");
    }
    if (!state.config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
    if (!state.can_restart) {
        throw Impossible("only a script that 'rtif run' runs can end its process");
    }
    Outcome outcome{"the process ends, and another one begins"};
    outcome.restart = mode;
    return outcome;
}

Outcome begin_again(State &state, l3lif::RestartMode mode)
{
    try {
        state.config = config::read_config(l3lif::kept_config(state.state_dir));
    } catch (const config::UnusableFile &error) {
        throw Impossible(error.what());
    }
    std::vector<Step> steps =
        mode == RestartMode::restore ? restored(state) : brought_up(state, mode);
    state.routing.configure(*state.config);
    if (mode == RestartMode::restore) {
        state.routing.take_over();
    }
    Outcome outcome =
        state.finish(fmt::format("restart {}", l3lif::mode_name(mode)), std::move(steps));
    outcome.summary = fmt::format(
        "{}{}, {}", outcome.refused ? fmt::format("refused: code {}, ", state.last.code()) : "",
        count_up(state.scene()), report::counted(state.last.call_count(), "call"));
    return outcome;
}

} // namespace lab::session
