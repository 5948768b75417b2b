/*
 * shell.cpp: see shell.h.
 */
#include "commands/shell.h"

#include "commands/line_editor.h"
#include "commands/session_recording.h"
#include "config/shown.h"
#include "l3lif/shown_calls.h"
#include "session/complete.h"
#include "session/errors.h"
#include "session/line_reader.h"
#include "session/session.h"
#include "session/words.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace lab::commands
{

namespace
{

/** What a line is done in. */
struct Shell {
    session::Session &session;
    SessionRecording *recording; ///< null: none is made
    const Terminal &terminal;
};

/** Does a line and tells how it went; false when it ends the session. */
bool step(const Shell &in, std::string_view line)
{
    const Terminal &terminal = in.terminal;
    try {
        if (in.recording != nullptr) {
            in.recording->before(line);
        }
        const session::Outcome outcome = in.session.execute(line);
        if (!outcome.summary.empty()) {
            fmt::print(terminal.out, "{}\n", outcome.summary);
        }
        terminal.out << outcome.shown << std::flush;
        return !outcome.quit;
    } catch (const session::Unmet &unmet) {
        fmt::print(terminal.err, "{}\nseen     {}\n", config::harmless_lines(unmet.what()),
                   config::harmless_lines(unmet.seen()));
    } catch (const std::exception &error) {
        fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
    }
    return true;
}

void run_plain(const Shell &shell)
{
    session::LineReader reader(std::cin, session::LINE_MAX_BYTES);
    for (auto line = reader.next(); line; line = reader.next()) {
        if (line->is_beyond) {
            fmt::print(shell.terminal.err, "{}\n", session::SCRIPT_TOO_LONG);
            return;
        }
        if (!step(shell, line->text)) {
            return;
        }
    }
}

/** Where the lines of all shells are kept; empty where nobody has a home. */
std::filesystem::path history_file()
{
    const auto folder = [](const char *name) {
        const char *value = std::getenv(name);
        return std::filesystem::path(value == nullptr ? "" : value);
    };
    const std::filesystem::path state = folder("XDG_STATE_HOME");
    if (state.is_absolute()) {
        return state / "rtif/history";
    }
    const std::filesystem::path home = folder("HOME");
    return home.is_absolute() ? home / ".local/state/rtif/history" : std::filesystem::path();
}

void run_edited(const Shell &shell, const simswitch::Switch &hardware)
{
    session::Session &session = shell.session;
    LineEditor editor(
        "rtif> ",
        [&session](std::string_view line) { return session::complete(session.state(), line); },
        history_file());
    fmt::print(shell.terminal.out, "rtif on a {}. 'help' lists the commands, Tab completes.\n",
               hardware.chip.kind() == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident");
    shell.terminal.out << std::flush;
    for (auto line = editor.next(); line; line = editor.next()) {
        session.set_width(LineEditor::columns());
        if (!step(shell, *line)) {
            return;
        }
    }
}

} // namespace

int shell(const ShellOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    // A session remembers what its last command asked, and that by itself.
    const l3lif::ShownCalls shown(hardware, true, true);
    session::Session session(hardware, options.state_dir);
    session.tell_packets(terminal.colour);
    std::optional<SessionRecording> recording;
    if (!options.record.empty()) {
        recording.emplace(hardware, session, "rtif shell", options.record);
    }
    const Shell typed = {session, recording ? &*recording : nullptr, terminal};
    if (isatty(STDIN_FILENO) == 1) {
        run_edited(typed, hardware);
    } else {
        run_plain(typed);
    }
    if (recording) {
        recording->finish();
    }
    return EXIT_DONE;
}

} // namespace lab::commands
