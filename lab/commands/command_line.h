/*
 * command_line.h: the command line of rtif: its commands and options, its exit
 * codes, its messages.
 */
#pragma once

#include <cstddef>
#include <iosfwd>

namespace lab::commands
{

inline constexpr int EXIT_DONE = 0; ///< done
inline constexpr int EXIT_REFUSED =
    1; ///< a bad file, something that failed, is not as expected, or was left behind
inline constexpr int EXIT_USAGE = 2; ///< the command line makes no sense

/** Where the command writes. */
struct Terminal {
    std::ostream &out;
    std::ostream &err;
    bool colour = false;   ///< `out` is a terminal that wants colours
    std::size_t width = 0; ///< columns of the terminal that `out` is; 0 for none
    bool progress =
        false; ///< standard error is a terminal on which a long run may show how far it is
};

/** Runs rtif with the arguments of main; returns the exit code. */
int run(int argc, const char *const *argv, const Terminal &terminal);

} // namespace lab::commands
