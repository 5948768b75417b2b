/*
 * shell.cpp: see shell.h.
 */
#include "commands/shell.h"

#include "commands/line_editor.h"
#include "config/shown.h"
#include "session/complete.h"
#include "session/errors.h"
#include "session/line_reader.h"
#include "session/session.h"
#include "session/words.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace lab::commands
{

namespace
{

/** Does a line and tells how it went; false when it ends the session. */
bool step(session::Session &session, std::string_view line, const Terminal &terminal)
{
    try {
        const session::Outcome outcome = session.execute(line);
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

void run_plain(session::Session &session, const Terminal &terminal)
{
    session::LineReader reader(std::cin, session::LINE_MAX_BYTES);
    for (auto line = reader.next(); line; line = reader.next()) {
        if (line->is_beyond) {
            fmt::print(terminal.err, "{}\n", session::SCRIPT_TOO_LONG);
            return;
        }
        if (!step(session, line->text, terminal)) {
            return;
        }
    }
}

void run_edited(session::Session &session, const simswitch::Switch &hardware,
                const Terminal &terminal)
{
    LineEditor editor("rtif> ", [&session](std::string_view line) {
        return session::complete(session.state(), line);
    });
    fmt::print(terminal.out, "rtif on a {}. 'help' lists the commands, Tab completes.\n",
               hardware.chip.kind() == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident");
    terminal.out << std::flush;
    for (auto line = editor.next(); line; line = editor.next()) {
        session.set_width(LineEditor::columns());
        if (!step(session, *line, terminal)) {
            return;
        }
    }
}

} // namespace

int shell(const ShellOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    session::Session session(hardware, options.state_dir);
    session.tell_packets(terminal.colour);
    if (isatty(STDIN_FILENO) == 1) {
        run_edited(session, hardware, terminal);
    } else {
        run_plain(session, terminal);
    }
    return EXIT_DONE;
}

} // namespace lab::commands
