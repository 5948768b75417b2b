/*
 * loop.h: waits for what happens, by GLib's main loop: a file descriptor can be
 * read, a time has come, somebody wants the program to end. Between two of these
 * nothing runs.
 */
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace lab::wire
{

/** An event loop. What a callback throws ends it and comes out of run(). */
class Loop
{
public:
    using Time = std::chrono::milliseconds; ///< of the clock of now()

    Loop();
    ~Loop();
    Loop(const Loop &) = delete;
    Loop &operator=(const Loop &) = delete;

    /** Calls when a descriptor can be read or has an error, until unwatch(). */
    void watch(int fd, std::function<void()> ready);
    /** Ends a watch; may be called by its own callback. */
    void unwatch(int fd);
    /** Calls once at a time, at once for one that has passed; nothing: not at all. Replaces the
     * time that was set before. */
    void set_alarm(std::optional<Time> at);
    /** What an alarm calls. */
    void on_alarm(std::function<void()> ring) { ring_ = std::move(ring); }
    /** Ends the loop at a time. */
    void quit_at(Time at);
    /** Ends the loop when SIGINT or SIGTERM comes. */
    void quit_on_signals();
    /** Runs until quit(). @throws what a callback threw */
    void run();
    /** Ends run(). */
    void quit();

    /** A clock that only goes forward. */
    static Time now();

private:
    struct Parts;
    void call(const std::function<void()> &callback);

    std::unique_ptr<Parts> parts_;
    std::function<void()> ring_;
    std::exception_ptr failure_;
};

} // namespace lab::wire
