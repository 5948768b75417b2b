/*
 * session.h: a session: lines of the language go in, one after the other, and
 * what each came to comes out. commands/run.h feeds it a script,
 * commands/shell.h what somebody types.
 *
 * words.h cuts a line, verbs.h has the commands, state.h what they work on,
 * complete.h what may come next.
 */
#pragma once

#include "l3lif/bring_up.h"
#include "session/state.h"

#include "switch.h"

#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

namespace lab::session
{

/** A session on a switch. */
class Session
{
public:
    /**
     * @param hardware   the switch; must outlive this
     * @param state_dir  its state folder, in which an earlier run is forgotten; empty: in memory
     * @param folder     what relative paths of files start from; empty: the process's own
     */
    explicit Session(simswitch::Switch &hardware, const std::filesystem::path &state_dir = {},
                     const std::filesystem::path &folder = {})
        : state_{hardware, state_dir, folder}
    {
        state_.notes = l3lif::forget_earlier_run(hardware, state_dir);
        hardware.chip.track_authors();
    }

    /**
     * A session in a process that `restart` of an earlier one has led to; restart() comes first.
     *
     * @param hardware   just opened on the folder; must outlive this
     * @param state_dir  its state folder, in which the earlier process has left chip and store
     * @param folder     what relative paths of files start from
     */
    static std::unique_ptr<Session> after_restart(simswitch::Switch &hardware,
                                                  const std::filesystem::path &state_dir,
                                                  const std::filesystem::path &folder)
    {
        return std::unique_ptr<Session>(new Session(AfterRestart{}, hardware, state_dir, folder));
    }
    /**
     * What the layers above do at the start of such a process, with the configuration in the
     * folder: restart.h has it, and after a restore what is then brought up.
     *
     * @return what it came to
     * @throws Impossible when the folder can't be used
     */
    Outcome restart(l3lif::RestartMode mode);
    /** From now on `restart` is done, by who looks at its outcome. */
    void allow_restart() { state_.can_restart = true; }

    /**
     * Does a line.
     *
     * @param line  a command with its arguments, or nothing, or a comment
     * @return what it came to
     * @throws UsageError, Impossible, Unmet
     */
    Outcome execute(std::string_view line);

    /** From now on `up` brings this up, whatever file it names. */
    void give_config(GivenConfig config) { state_.given_config = std::move(config); }
    /** From now on `packet` shows its whole trace. @param colour  coloured, for a terminal */
    void tell_packets(bool colour)
    {
        state_.tells_packets = true;
        state_.colour = colour;
    }
    /** Sets the columns of the terminal for what is shown from now on; 0 for none. */
    void set_width(Width width) { state_.width = width; }
    const State &state() const { return state_; }

private:
    struct AfterRestart {
    };
    Session(AfterRestart /*tag*/, simswitch::Switch &hardware,
            const std::filesystem::path &state_dir, const std::filesystem::path &folder)
        : state_{hardware, state_dir, folder}
    {
        hardware.chip.track_authors();
    }

    State state_;
};

} // namespace lab::session
