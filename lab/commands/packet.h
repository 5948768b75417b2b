/*
 * packet.h: the command `rtif packet`: brings a configuration up and tells where
 * a frame goes and why, or sends a whole capture through. packet/explain.h and
 * packet/capture.h do it.
 */
#pragma once

#include "commands/command_line.h"
#include "packet/frame_words.h"

#include "switch.h"

#include <filesystem>
#include <string>
#include <vector>

namespace lab::commands
{

/** What the user asked for. */
struct PacketOptions {
    std::filesystem::path config = {};
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    packet::FrameWords words = {};           ///< the frame; of a capture --in alone
    std::vector<std::string> neighbors = {}; ///< "INTERFACE,ADDRESS,MAC" or with ",PORT"
    std::filesystem::path capture = {};      ///< frames to send through in place of one; or empty
    std::filesystem::path out = {};          ///< folder for what a capture's frames become
    bool json = false;
};

/**
 * Runs the command.
 *
 * @return EXIT_DONE whatever became of the frame; EXIT_REFUSED when something of the
 *         configuration was refused, a neighbour can't be where it should, or a capture can't be
 *         read to its end; EXIT_USAGE for words that make no sense
 * @throws std::runtime_error when the configuration or a file can't be used
 */
int packet(const PacketOptions &options, const Terminal &terminal);

/** The same on a switch that is there already. */
int packet_on(simswitch::Switch &hardware, const PacketOptions &options, const Terminal &terminal);

} // namespace lab::commands
