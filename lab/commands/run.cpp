/*
 * run.cpp: see run.h.
 */
#include "commands/run.h"

#include "commands/session_recording.h"
#include "config/shown.h"
#include "l3lif/shown_calls.h"
#include "session/errors.h"
#include "session/line_reader.h"
#include "session/session.h"
#include "session/words.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace lab::commands
{

namespace
{

// Where the outcomes stand, unless a command is longer.
constexpr std::size_t OUTCOME_COLUMN = 48;
constexpr std::string_view BYTE_ORDER_MARK = "\xef\xbb\xbf";

/** A line as it is told: without its comment, its words one blank apart. */
std::string as_told(const std::string &line)
{
    return session::as_written(session::split(line));
}

/** The same of a line that may be none at all, whose place is told in any case. */
std::string as_told_if_possible(const std::string &line)
{
    try {
        return as_told(line);
    } catch (const session::UsageError &) {
        const std::size_t end = line.find_last_not_of('\r');
        const std::string text = end == std::string::npos ? "" : line.substr(0, end + 1);
        return session::can_be_shown(text) && text.size() <= session::LINE_MAX_BYTES
                   ? text
                   : "(a line that can't be shown)";
    }
}

/** A script on its way through a session. */
class Script
{
public:
    Script(session::Session &session, std::string name, bool quiet, const Terminal &terminal)
        : session_(session), name_(std::move(name)), quiet_(quiet), terminal_(terminal)
    {
    }

    int run(std::istream &in)
    {
        session::LineReader reader(in, session::LINE_MAX_BYTES);
        bool goes_on = begin();
        while (goes_on) {
            auto line = reader.next();
            if (!line) {
                break;
            }
            if (line->number == 1 && line->text.starts_with(BYTE_ORDER_MARK)) {
                line->text.erase(0, BYTE_ORDER_MARK.size());
            }
            line->number += first_;
            goes_on = step(*line);
        }
        tell_refusal();
        return code_;
    }

    /** The script goes on behind a restart. */
    void come_after(const Restarted &restarted)
    {
        restarted_ = restarted;
        first_ = restarted.line;
        code_ = restarted.code;
    }
    /** What the next process is told, where the script has ended in a restart. */
    const std::optional<Restarted> &next() const { return next_; }
    /** From now on each line is recorded before it is done. */
    void record_in(SessionRecording &recording) { recording_ = &recording; }

private:
    /** What a restart before the first line comes to; false when the script ends with it. */
    bool begin()
    {
        return !restarted_ || done({restarted_->line,
                                    fmt::format("restart {}", l3lif::mode_name(restarted_->mode))},
                                   [this] { return session_.restart(restarted_->mode); });
    }

    /** Does a line; false when it is the last one. */
    bool step(const session::Line &line)
    {
        return done(line, [this, &line] {
            if (line.is_beyond) {
                throw session::UsageError(std::string(session::SCRIPT_TOO_LONG));
            }
            if (recording_ != nullptr) {
                recording_->before(line.text);
            }
            return session_.execute(line.text);
        });
    }

    bool done(const session::Line &line, const std::function<session::Outcome()> &work)
    {
        try {
            const session::Outcome outcome = work();
            if (outcome.restart) {
                tell_refusal();
                next_ = {*outcome.restart, line.number, code_, name_, {}};
                return false;
            }
            keep_book(line, outcome);
            tell(line, outcome);
            return !outcome.quit;
        } catch (const session::Unmet &unmet) {
            fail(line, EXIT_REFUSED,
                 fmt::format("{}\n    seen     {}", unmet.what(), unmet.seen()));
        } catch (const session::Impossible &impossible) {
            fail(line, EXIT_REFUSED, impossible.what());
        } catch (const session::UsageError &error) {
            fail(line, EXIT_USAGE, error.what());
        }
        return false;
    }

    /** Tells of a refusal that no expectation has accepted. */
    void tell_refusal()
    {
        if (refused_.number != 0) {
            code_ = code_ == EXIT_DONE ? EXIT_REFUSED : code_;
            terminal_.out << std::flush;
            fmt::print(terminal_.err, "{}:{}: {}\n    {}; no expect accepts it\n{}",
                       config::harmless(name_), refused_.number, as_told(refused_.text),
                       refusal_.summary, refusal_.shown);
        }
        refused_ = {};
    }

    void keep_book(const session::Line &line, const session::Outcome &outcome)
    {
        if (outcome.asked) {
            tell_refusal();
        }
        if (outcome.refused) {
            refused_ = line;
            refusal_ = outcome;
        }
        if (outcome.looked) {
            refused_ = {};
        }
    }

    void tell(const session::Line &line, const session::Outcome &outcome)
    {
        if (quiet_ || (outcome.summary.empty() && outcome.shown.empty())) {
            return;
        }
        const std::string command = as_told(line.text);
        if (outcome.summary.empty()) {
            fmt::print(terminal_.out, "{}\n", command);
        } else {
            fmt::print(terminal_.out, "{:<{}}  {}\n", command, OUTCOME_COLUMN, outcome.summary);
        }
        terminal_.out << outcome.shown << std::flush;
    }

    void fail(const session::Line &line, int code, const std::string &why)
    {
        tell_refusal();
        code_ = code;
        terminal_.out << std::flush;
        fmt::print(terminal_.err, "{}:{}: {}\n    {}\n", config::harmless(name_), line.number,
                   as_told_if_possible(line.text), config::harmless_lines(why));
    }

    session::Session &session_;
    std::string name_;
    bool quiet_;
    const Terminal &terminal_;
    SessionRecording *recording_ = nullptr;
    std::optional<Restarted> restarted_ = {}; ///< where the script goes on
    std::optional<Restarted> next_ = {};
    std::size_t first_ = 0; ///< lines before the first one
    int code_ = EXIT_DONE;
    session::Line refused_ = {};    ///< a refusal that no expectation has accepted yet; 0: none
    session::Outcome refusal_ = {}; ///< what it came to
};

/** Runs a script, or what is behind a restart in it, up to its end or the next restart. */
int run_process(const RunOptions &options, std::istream &in, const Terminal &terminal,
                std::optional<Restarted> &next)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    // A session remembers what its last command asked, and that by itself.
    const l3lif::ShownCalls shown(hardware, true, true);
    const std::string name = options.restarted       ? options.restarted->name
                             : options.script == "-" ? "standard input"
                                                     : options.script;
    // Files stand beside the script that names them, wherever it is run.
    const auto folder = options.restarted ? options.restarted->folder
                        : options.script == "-"
                            ? std::filesystem::path()
                            : std::filesystem::path(options.script).parent_path();
    const auto session =
        options.restarted ? session::Session::after_restart(hardware, options.state_dir, folder)
                          : std::make_unique<session::Session>(hardware, options.state_dir, folder);
    session->allow_restart();
    Script script(*session, name, options.quiet, terminal);
    if (options.restarted) {
        script.come_after(*options.restarted);
    }
    std::optional<SessionRecording> recording;
    if (!options.record.empty()) {
        recording.emplace(hardware, *session, name, options.record);
        script.record_in(*recording);
    }
    const int code = script.run(in);
    if (recording) {
        recording->finish();
    }
    next = script.next();
    if (next) {
        next->folder = folder;
    }
    return code;
}

int run_up_to_restart(const RunOptions &options, std::istream &in, const Terminal &terminal)
{
    std::optional<Restarted> next;
    const int code = run_process(options, in, terminal, next);
    if (next) {
        terminal.out << std::flush;
        terminal.err << std::flush;
        go_on_in_another_process(options, *next, in);
    }
    return code;
}

} // namespace

int run_script(const RunOptions &options, const Terminal &terminal)
{
    if (options.script == "-") {
        return run_up_to_restart(options, std::cin, terminal);
    }
    std::error_code error;
    if (std::filesystem::is_directory(options.script, error)) {
        throw std::runtime_error(options.script + ": is a folder, not a script");
    }
    std::ifstream in(options.script, std::ios::binary);
    if (!in) {
        throw std::runtime_error(options.script + ": the script can't be opened");
    }
    return run_up_to_restart(options, in, terminal);
}

int run_script_on(simswitch::Switch &hardware, const RunOptions &options, std::istream &in,
                  const std::string &name, const Terminal &terminal)
{
    const auto folder = options.script == "-" ? std::filesystem::path()
                                              : std::filesystem::path(options.script).parent_path();
    session::Session session(hardware, options.state_dir, folder);
    return Script(session, name, options.quiet, terminal).run(in);
}

} // namespace lab::commands
