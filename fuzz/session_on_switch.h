/*
 * session_on_switch.h: a session on a fresh switch, with a library as it is after loading, and a
 * configuration up: what most targets play their inputs on.
 *
 * switch/switch.json is small, so that bringing it up takes little: each kind of interface once.
 */
#pragma once

#include "session/session.h"
#include "session/state.h"

#include "switch.h"

#include <filesystem>
#include <string>

namespace fuzz
{

/** The folder with switch.json alone. */
std::filesystem::path switch_folder();

/** The switch and its session. */
class SessionOnSwitch
{
public:
    explicit SessionOnSwitch(const std::filesystem::path &folder = switch_folder(),
                             simswitch::chip::Kind chip = simswitch::chip::Kind::trident);

    /** Brings a configuration of the folder up, with all that it routes open. */
    void up(const std::string &file = "switch.json");

    simswitch::Switch hardware;
    lab::session::Session session;
};

/** The same below a session: its parts, for targets that need no language. */
class StateOnSwitch
{
public:
    StateOnSwitch();

    simswitch::Switch hardware;
    lab::session::State state;
};

} // namespace fuzz
