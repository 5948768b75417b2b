/*
 * progress_bar.cpp: see progress_bar.h.
 */
#include "commands/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace lab::commands
{

namespace
{

constexpr std::size_t USUAL_WIDTH = 80;
constexpr std::size_t BAR_MAX = 40;
constexpr std::size_t BAR_MIN = 5; ///< a shorter bar tells less than its room is worth

std::size_t width_of(int terminal)
{
    winsize size = {};
    return ioctl(terminal, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

/** One write, so that the terminal never shows half of it. */
void put(int terminal, std::string_view text)
{
    // A terminal that has gone is no reason to end the run.
    (void)!write(terminal, text.data(), text.size());
}

/** Who is in the background would draw over what others print. */
bool is_in_background(int terminal)
{
    const pid_t group = tcgetpgrp(terminal);
    return group != -1 && group != getpgrp();
}

} // namespace

std::string progress_line(std::string_view what, std::size_t done, std::size_t total,
                          std::size_t width)
{
    const std::size_t room = (width == 0 ? USUAL_WIDTH : width) - 1;
    const std::size_t percent = total == 0 ? 100 : done * 100 / total;
    const std::string numbers =
        fmt::format("{:>3}%  {:>{}}/{}", percent, done, fmt::formatted_size("{}", total), total);
    std::string short_line = fmt::format("{}{:>{}}", what, numbers, numbers.size() + 2);
    if (short_line.size() > room) {
        return numbers.size() > room ? "" : numbers;
    }
    const std::size_t left = room - short_line.size();
    if (left < BAR_MIN + 4) {
        return short_line;
    }
    // The bar's brackets and the blanks before it.
    const std::size_t bar = std::min(BAR_MAX, left - 4);
    const std::size_t full = total == 0 ? bar : done * bar / total;
    return fmt::format("{}  [{:#<{}}{:.<{}}]  {}", what, "", full, "", bar - full, numbers);
}

ProgressBar::ProgressBar(bool wanted) : wanted_(wanted), options_({.terminal = STDERR_FILENO}) {}

bool ProgressBar::can_show()
{
    const char *kind = std::getenv("TERM");
    const char *unwanted = std::getenv("NO_PROGRESS");
    const bool is_wanted = unwanted == nullptr || *unwanted == '\0';
    const bool can_draw = kind != nullptr && std::string_view(kind) != "dumb";
    return is_wanted && can_draw && isatty(STDERR_FILENO) == 1;
}

l3lif::Progress ProgressBar::listener(std::string_view what)
{
    if (!wanted_) {
        return {};
    }
    return [this, what](std::size_t done, std::size_t total) { show(what, done, total); };
}

void ProgressBar::show(std::string_view what, std::size_t done, std::size_t total)
{
    const Clock::time_point now = Clock::now();
    if (now < next_ || is_in_background(options_.terminal)) {
        return;
    }
    next_ = now + options_.interval;
    // The line goes over the last one, and what that one had more of is wiped out.
    put(options_.terminal,
        fmt::format("\r{}\x1b[K", progress_line(what, done, total, width_of(options_.terminal))));
    is_drawn_ = true;
}

void ProgressBar::clear()
{
    if (is_drawn_) {
        put(options_.terminal, "\r\x1b[K");
        is_drawn_ = false;
    }
}

} // namespace lab::commands
