/*
 * session_recording.h: the recording of a session, of a script or of a shell: its
 * commands and all that they asked of the library. record/recording.h has the
 * form, run.h and shell.h feed it.
 */
#pragma once

#include "record/recorder.h"
#include "session/session.h"

#include "switch.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace lab::commands
{

/** Writes a session into a file, as long as it lives. */
class SessionRecording
{
public:
    /**
     * Opens the file. One that is there is replaced if it is a recording: what the session will
     * read isn't known yet.
     *
     * @param hardware  whose requests are written; must outlive this
     * @param session   on it; must outlive this
     * @param name      of the script, or of what stands in its place; not empty
     * @param path      the file
     * @throws std::runtime_error when it can't be written, is another file than a recording, or in
     *         the session's state folder
     */
    SessionRecording(const simswitch::Switch &hardware, session::Session &session,
                     const std::string &name, const std::filesystem::path &path);

    /**
     * Writes a line's command; to be called before the session does it.
     *
     * @throws session::UsageError for a line that makes no sense
     * @throws session::Impossible for a `restart`: a recording ends with its process
     */
    void before(std::string_view line);
    /** Ends the recording. @throws std::runtime_error when not all could be written */
    void finish();

private:
    void keep_config(const std::string &file);

    session::Session &session_;
    record::RecordingFile file_;
    record::Recorder recorder_;
};

} // namespace lab::commands
