/*
 * state_dir.h: a state folder of a test's own, and processes that use one and
 * are killed.
 */
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>

namespace simswitch
{

/** A folder that goes with its owner. */
class StateDir
{
public:
    StateDir();
    ~StateDir();
    StateDir(const StateDir &) = delete;
    StateDir &operator=(const StateDir &) = delete;

    const std::filesystem::path &path() const { return path_; }
    /** Runs statements on a file of it, as the sqlite3 tool would. */
    void sql(const std::string &file, const std::string &statements) const;

private:
    std::filesystem::path path_;
};

/** Ends this process as `kill -9` does. */
[[noreturn]] void die();

/** Runs a body in a process of its own, which dies: at the body's end, or where the body does. */
void killed_after(const std::function<void()> &body);

/**
 * Runs a body in a process of its own.
 *
 * @param body  gives what the process hands back; an exception's text is handed back too
 */
std::string said_by_child(const std::function<std::string()> &body);

} // namespace simswitch
