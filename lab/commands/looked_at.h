/*
 * looked_at.h: a switch that a command brings up or opens only to look at it.
 * packet.h and explain_command.cpp look.
 */
#pragma once

#include "commands/command_line.h"
#include "session/state.h"

#include <filesystem>

namespace lab::commands
{

/**
 * Brings a configuration up with all families open; who wrote what is tracked.
 *
 * @param state  of a fresh switch
 * @return false when something of it was refused, which is told on `terminal.err`
 * @throws std::runtime_error when the configuration can't be used
 */
bool bring_up_open(session::State &state, const std::filesystem::path &config,
                   const Terminal &terminal);

/**
 * Gives the layer above of a switch that was opened on a copy of a state folder what the store and
 * the folder's configuration have. Nothing is written to the chip.
 *
 * @param state      of that switch
 * @param state_dir  the folder itself, for its configuration
 */
void restore_layer(session::State &state, const std::filesystem::path &state_dir);

} // namespace lab::commands
