/*
 * processes.h: bodies that run in a process of their own, and folders for what
 * such processes leave.
 */
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lab::faults
{

using Lines = std::vector<std::string>;

/** How a process ended, and what it handed back. */
struct Ended {
    bool by_kill = false; ///< by SIGKILL
    bool well = false;    ///< at its body's end
    std::string how;      ///< "exit code 1", "signal 11"
    Lines lines;          ///< what its body gave; of an exception its text
};

/** A body under way in a process of its own, which begins as this one was then. */
class Process
{
public:
    /**
     * Starts it.
     *
     * @param body  gives what the process hands back at its end; no line has a line end in it
     * @throws std::runtime_error when the machine gives no process or no pipe
     */
    explicit Process(const std::function<Lines()> &body);
    ~Process();
    Process(Process &&other) noexcept;
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    Process &operator=(Process &&) = delete;

    /** Waits for its end; once. */
    Ended wait();

private:
    pid_t child_ = 0;
    int in_ = -1;
};

/** Runs a body in a process of its own. The arguments are Process's. */
Ended in_process(const std::function<Lines()> &body);

/** Ends this process as `kill -9` does. */
[[noreturn]] void die();

/** A folder that goes with its owner; in memory where the machine has such a place. */
class Folder
{
public:
    Folder();
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const std::filesystem::path &path() const { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace lab::faults
