/*
 * make_frame.h: a frame made from words (frame_words.h), on the switch of a
 * session: ports and MACs go by their names there.
 */
#pragma once

#include "packet/frame_words.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab::session
{
struct State;
}

namespace lab::packet
{

/** A frame and where it comes in. */
struct MadeFrame {
    int port = 0;                      ///< the chip's port
    std::string port_name{};           ///< its name
    std::string note{};                ///< why it is that port and tag; or empty
    std::vector<std::uint8_t> bytes{}; ///< without FCS
};

/** Where frames come in. */
struct InPlace {
    int port = 0;            ///< the chip's port
    std::string port_name{}; ///< its name
    int vlan = -1;           ///< VLAN of the tag that a subinterface's frames have, -1 for none
    std::string note{};      ///< why it is that port; or empty
};

/**
 * The port that a name behind --in means.
 *
 * @param name   a port, a port-channel (its first member) or a subinterface (its port)
 * @param state  a session with a configuration that is up
 * @throws session::UsageError for any other name, with the nearest
 * @throws session::Impossible without a configuration, or for a port-channel without a member
 */
InPlace find_in(const std::string &name, const session::State &state);

/** The names that may stand behind --in. */
std::vector<std::string> in_names(const session::State &state);

/** The names that may stand behind --dmac. */
std::vector<std::string> destination_names(const session::State &state);

/**
 * Makes a frame.
 *
 * @param words  the options
 * @param state  a session with a configuration that is up
 * @return the frame, of the length that --size says, and its port
 * @throws session::UsageError for a missing, bad or contradicting option
 * @throws session::Impossible without a configuration, and for a MAC of an interface that is down
 */
MadeFrame make_frame(const FrameWords &words, const session::State &state);

} // namespace lab::packet
