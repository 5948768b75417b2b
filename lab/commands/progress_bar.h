/*
 * progress_bar.h: a line on the terminal that shows how far a long run is, while
 * it lasts. l3lif/progress.h tells it.
 *
 * It is for people who wait: nothing is drawn in the first moments, nothing that
 * isn't a terminal sees any of it, and it is gone when the run is over or ends by
 * an exception.
 */
#pragma once

#include "l3lif/progress.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace lab::commands
{

/**
 * The line for a terminal of a width, never as wide as that: what is done, a bar
 * as long as there is room for, the numbers.
 *
 * @param what   what is being done, "bringing up"
 * @param done   0 to `total`
 * @param width  columns of the terminal; 0 where it doesn't know
 * @return the line without a line end; empty where not even the numbers have room
 */
std::string progress_line(std::string_view what, std::size_t done, std::size_t total,
                          std::size_t width);

/** The line on a terminal, as a rule that of standard error. */
class ProgressBar
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /** Where it is drawn, and when. */
    struct Options {
        int terminal;              ///< file descriptor
        Milliseconds delay{300};   ///< nothing is drawn before
        Milliseconds interval{50}; ///< from one drawing to the next, at least
    };

    /** @param wanted  whether standard error is a terminal to draw on; see can_show */
    explicit ProgressBar(bool wanted);
    explicit ProgressBar(const Options &options) : wanted_(true), options_(options) {}
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    /** Whether standard error is a terminal that can draw over a line, and NO_PROGRESS isn't set.
     */
    static bool can_show();

    /**
     * What tells the bar; empty where none is wanted.
     *
     * @param what  what is being done; must outlive the bar
     */
    l3lif::Progress listener(std::string_view what);
    /** Takes the line away, before anything else is printed. */
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    void show(std::string_view what, std::size_t done, std::size_t total);

    bool wanted_;
    Options options_;
    bool is_drawn_ = false;
    Clock::time_point next_ = Clock::now() + options_.delay; ///< nothing is drawn before
};

} // namespace lab::commands
