/*
 * wire.h: the command `rtif wire`: brings a configuration up and forwards between
 * network interfaces of this machine, each standing for a port of the chip.
 * wire/wire.h does it.
 */
#pragma once

#include "commands/command_line.h"
#include "wire/wire.h"

#include "switch.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lab::commands
{

/** What the user asked for. */
struct WireOptions {
    std::filesystem::path config = {};
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    std::filesystem::path state_dir = {}; ///< folder of chip and store; empty: in memory
    std::vector<wire::Binding> ports = {};
    bool ipv6 = false;    ///< IPv6 of the switch on, whatever the configuration has
    bool verbose = false; ///< a line for each frame
    bool json = false;    ///< one JSON object a line
    std::optional<std::chrono::milliseconds> lasts = {}; ///< nothing: until it is ended
};

/**
 * Reads a port and its interface.
 *
 * @param text  "Ethernet0=veth0"
 * @throws session::UsageError for anything else
 */
wire::Binding parse_binding(const std::string &text);

/**
 * Runs the command: a line on `terminal.out` when it is ready, then what happens,
 * counters at the end.
 *
 * @return EXIT_DONE; EXIT_REFUSED when the configuration can't be brought up, an
 *         interface can't be used or all are gone; EXIT_USAGE for an unknown port
 *         and one that is given twice
 * @throws std::runtime_error when the state folder can't be used
 */
int wire(const WireOptions &options, const Terminal &terminal);

/** The same on a switch that is there already. */
int wire_on(simswitch::Switch &hardware, const WireOptions &options, const Terminal &terminal);

} // namespace lab::commands
