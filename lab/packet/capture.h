/*
 * capture.h: a capture sent through a switch: each frame as if it had come in on
 * one port at its own time, and for each port on which something leaves a
 * capture of its own.
 *
 * capture_file.h reads and writes the files, tally.h counts, cpu/forwarder.h
 * forwards. The clock is the capture's: what the switch's CPU waits for is due
 * by the times of the frames.
 */
#pragma once

#include "packet/capture_file.h"
#include "packet/tally.h"

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace lab::session
{
struct State;
}

namespace lab::packet
{

/** What is to be done. */
struct CaptureOptions {
    std::string port;          ///< name of the port on which the frames come in
    std::filesystem::path in;  ///< the capture
    std::filesystem::path out; ///< folder for what leaves: new, or empty
};

/** What left on a port. */
struct CaptureOut {
    std::string port; ///< its name
    Traffic traffic;
    std::filesystem::path file; ///< the capture of it
};

/** Frames that weren't taken. */
struct NotTaken {
    std::string why;
    Count frames;
};

/** What became of a capture. */
struct CaptureResult {
    std::string port;            ///< on which the frames came in
    std::filesystem::path in;    ///< the capture
    std::uint64_t frames = 0;    ///< records in it
    std::string broken;          ///< why it ended in the middle; empty when it didn't
    std::uint64_t backwards = 0; ///< frames whose time is before an earlier one's
    std::vector<NotTaken> not_taken;
    Tally tally;                 ///< of those that were
    std::vector<CaptureOut> out; ///< in the order of the ports' numbers

    /** Whether all of the capture could be read. */
    bool ok() const { return broken.empty(); }
};

/**
 * Sends a capture through the switch of a session that has a configuration up.
 *
 * A frame that the capture cut short or that is longer than 9600 bytes is counted
 * and not taken. When the last one is through, time goes on until the switch's
 * CPU waits for nothing any more.
 *
 * @throws session::UsageError for an unknown port, with the nearest
 * @throws CaptureError for a capture that can't be used, a folder that isn't
 *         empty or can't be written
 */
CaptureResult play_capture(session::State &state, const CaptureOptions &options);

/** Prints what became of a capture: fates, and what left where. */
void print_text(const CaptureResult &result, std::ostream &out);
/** The same as one JSON object. */
void print_json(const CaptureResult &result, std::ostream &out);

/** The name of a port's capture: its own, what a file can't have as "_". */
std::string file_name(const std::string &port);

} // namespace lab::packet
