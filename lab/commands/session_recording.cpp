/*
 * session_recording.cpp: see session_recording.h.
 */
#include "commands/session_recording.h"

#include "config/reader.h"
#include "session/errors.h"
#include "session/verbs.h"
#include "session/words.h"

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace lab::commands
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view FIRST_BYTES = "rtif-recording ";

/** The file, unless it has something that nobody wants to lose. */
const fs::path &replaceable(const fs::path &path)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) == 0) {
        return path;
    }
    std::string begin(FIRST_BYTES.size(), '\0');
    std::ifstream(path, std::ios::binary).read(begin.data(), std::ssize(begin));
    if (begin != FIRST_BYTES) {
        throw std::runtime_error(fmt::format(
            "{}: is there already and is no recording; name another file", path.string()));
    }
    return path;
}

record::Header header_of(const std::string &script)
{
    record::Header header;
    header.script = script;
    return header;
}

} // namespace

SessionRecording::SessionRecording(const simswitch::Switch &hardware, session::Session &session,
                                   const std::string &name, const fs::path &path)
    : session_(session), file_(replaceable(path), {}, session.state().state_dir),
      recorder_(hardware, header_of(name), file_.out())
{
}

void SessionRecording::before(std::string_view line)
{
    const session::Words words = session::split(line);
    if (words.empty() || session::only_looks(words.front())) {
        return;
    }
    if (words.front() == "restart") {
        throw session::Impossible(
            "a recording ends with its process: without --record a script can restart");
    }
    if (words.front() == "up" && words.size() > 1 && !session_.state().config) {
        keep_config(words[1]);
    }
    recorder_.command(session::as_written(words));
}

/** What is recorded is what comes up, also where the file changes in between. */
void SessionRecording::keep_config(const std::string &file)
{
    const fs::path path = session_.state().folder / file;
    try {
        session::GivenConfig given = {path.string(), config::read_file(path)};
        config::read_config_text(given.text, given.name);
        recorder_.configuration(given.name, given.text);
        session_.give_config(std::move(given));
    } catch (const config::UnusableFile &) {
        // The command itself tells of it.
    }
}

void SessionRecording::finish()
{
    recorder_.finish();
    file_.close();
}

} // namespace lab::commands
