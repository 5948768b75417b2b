/*
 * processes.h: bodies that run in a process of their own, and folders for what
 * such processes leave.
 */
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace sweep
{

using Lines = std::vector<std::string>;

/** How a process ended, and what it handed back. */
struct Ended {
    bool by_kill = false; ///< by SIGKILL
    bool well = false;    ///< at its body's end
    std::string how;      ///< "exit code 1", "signal 11"
    Lines lines;          ///< what its body gave; of an exception its text
};

/**
 * Runs a body in a process of its own, which begins as this one is now.
 *
 * @param body  gives what the process hands back; no line has a line end in it
 */
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

} // namespace sweep
