/*
 * recorder.h: writes a recording while a run goes on, request by request, so
 * that neither a long run needs memory for it nor a run that is killed loses
 * what was recorded. recording.h has the format.
 */
#pragma once

#include "l3lif/request_watch.h"
#include "record/recording.h"

#include "switch.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iosfwd>
#include <string>
#include <string_view>

namespace lab::record
{

/** Writes the requests of a switch into a stream, as long as it lives. */
class Recorder
{
public:
    /**
     * Begins the recording.
     *
     * @param hardware  whose requests are written; must outlive this
     * @param header    its chip, limits and version are those of the switch and of this command
     * @param out       must outlive this; flushed after each request
     */
    Recorder(const simswitch::Switch &hardware, Header header, std::ostream &out);

    /** Writes the configuration that a session's next command brings up. */
    void configuration(const std::string &name, std::string_view text);
    /** Writes a session's command, before what it asks for. */
    void command(std::string_view line);
    /** Ends the recording: it is complete. */
    void finish();

private:
    void take(const l3lif::SeenRequest &request);

    std::ostream &out_;
    std::size_t requests_ = 0;
    std::size_t calls_ = 0;
    l3lif::RequestWatch watch_;
};

/** The file of a recording, opened before anything runs. */
class RecordingFile
{
public:
    /**
     * Opens the file, in place of one that is there.
     *
     * @param path       the file, or a character device such as /dev/stdout
     * @param config     the configuration that is run, which must not be the same file
     * @param state_dir  the state folder, in which it must not be; empty: none
     * @throws std::runtime_error when it can't be written, is the configuration, in the state
     *         folder, or something else than a file, a pipe for one
     */
    RecordingFile(const std::filesystem::path &path, const std::filesystem::path &config,
                  const std::filesystem::path &state_dir = {});

    std::ostream &out() { return out_; }
    /** @throws std::runtime_error when not all could be written */
    void close();

private:
    std::filesystem::path path_;
    std::ofstream out_;
};

} // namespace lab::record
