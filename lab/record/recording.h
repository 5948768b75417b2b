/*
 * recording.h: a recording: all that a run asked of the library and what came
 * of it, a line for each request, call and message. The file is text:
 *
 *     rtif-recording 1
 *     rtif 0.1.0
 *     chip trident
 *     limits vlans=16                      table sizes, where they aren't the kind's own
 *     configuration examples/kinds.json
 *     then down                            the run took everything down again
 *     config {                             the configuration, line by line
 *     script examples/changes.rtif         of a session, in place of these three
 *     request 3 add Ethernet0 = 0 (91 calls, 53 messages)
 *     call 3.1 sdk bcm_vlan_create(0, 4094) = -8  (VLAN 4094 exists)
 *     message 3.1 trace rtifhal_vlan_create: Created 4094 vlan
 *     refused 3 …                          what the chip refused when the queue was written out
 *     end 15 requests, 594 calls
 *
 * A session's commands stand between its requests, each before what it asked for, and the
 * configuration before the command that brings it up:
 *
 *     configuration examples/kinds.json
 *     config {
 *     do up kinds.json
 *
 * It has all that a replay needs. recorder.h writes it, replay.h runs it again,
 * compare.h compares two. docs/recording.md tells it to people.
 */
#pragma once

#include "chip/limits.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lab::record
{

/** The form of the file; a reader takes its own only. */
inline constexpr int FORMAT_VERSION = 1;
/** The largest recording that is read. */
inline constexpr std::size_t RECORDING_MAX_BYTES = std::size_t{256} << 20U;
/** The most lines of one. */
inline constexpr std::size_t RECORDING_MAX_LINES = 4'000'000;
/** The longest line, in bytes. */
inline constexpr std::size_t RECORDING_LINE_MAX = std::size_t{64} << 10U;

/** A file that is no recording or can't be read as one; the text has its name and the line. */
class UnusableRecording : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** What a recording begins with. */
struct Header {
    std::string rtif = {}; ///< version of the command that wrote it
    simswitch::chip::Kind chip = simswitch::chip::Kind::trident;
    simswitch::chip::Limits limits = {}; ///< table sizes; 0 where they are the kind's own
    std::string configuration = {};      ///< the name that the configuration had
    bool then_down = false;              ///< everything was taken down again
    std::string config = {};             ///< the configuration's text
    std::string script = {};             ///< what a session's commands came from; empty: no session
};

/** A request of a recording. The views are into the recording's text. */
struct RecordedRequest {
    std::string_view name;   ///< "add Ethernet0", escaped as in the file
    std::string_view result; ///< its code, "0"
    std::size_t number = 0;  ///< its number in the recording, from 1
    std::size_t line = 0;    ///< its line in the file, from 1
    std::size_t calls = 0;   ///< how many of `lines` are calls; the first ones
    /** What stands behind the numbers of its lines: calls, then messages, then what was refused. */
    std::vector<std::string_view> lines;
};

/** A whole recording. */
struct Recording {
    std::string file;                        ///< the name that messages begin with
    std::unique_ptr<const std::string> text; ///< of the file; stays where it is in a move
    Header header;
    std::vector<RecordedRequest> requests;
    std::vector<std::string> commands; ///< of a session, in order
    bool is_complete = false;          ///< it has its `end`; otherwise the run was cut off

    /** Calls of all requests. */
    std::size_t calls() const;
};

/**
 * Reads a recording.
 *
 * @param text  the file's text
 * @param file  the name that messages begin with
 * @throws UnusableRecording where it isn't one, with the line; for one of another version
 */
Recording read_recording_text(std::string text, std::string file);

/** The same from a file of at most RECORDING_MAX_BYTES. */
Recording read_recording(const std::filesystem::path &path);

/** "trident" or "trident2", as --chip has them. */
std::string_view chip_word(simswitch::chip::Kind kind);

} // namespace lab::record
