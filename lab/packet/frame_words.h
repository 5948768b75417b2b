/*
 * frame_words.h: the words that say what frame goes in: the same for the command
 * `rtif packet` and the session's `packet`. make_frame.h makes the frame.
 */
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::packet
{

/** An option. */
struct FrameOption {
    std::string_view name;   ///< "--ip"
    std::string_view values; ///< what stands behind it, "SRC DST"
    std::size_t count;       ///< number of those words
    std::string_view help;   ///< what it says, a sentence without a full stop
};

/** All options, in the order of help. */
std::span<const FrameOption> frame_options();

/** Their names. */
std::vector<std::string> frame_option_names();

/** The words behind each option that was given. */
using FrameWords = std::map<std::string, std::vector<std::string>, std::less<>>;

/**
 * Reads options as they stand in a line.
 *
 * @param words  "--in", "Ethernet0", "--ip", …
 * @return the words behind each option
 * @throws session::UsageError for an unknown option, with the nearest; for one that is given
 *         twice, or without its words
 */
FrameWords read_frame_words(const std::vector<std::string> &words);

} // namespace lab::packet
