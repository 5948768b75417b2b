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
#include <string_view>

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
     * Does a line.
     *
     * @param line  a command with its arguments, or nothing, or a comment
     * @return what it came to
     * @throws UsageError, Impossible, Unmet
     */
    Outcome execute(std::string_view line);

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
    State state_;
};

} // namespace lab::session
