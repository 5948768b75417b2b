/*
 * wire_space.h: a part of a test in a process with a network namespace of its
 * own, in which there is a veth pair: sw0 is the switch's end, host0 the other.
 */
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <sched.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace lab_test
{

inline constexpr int CANNOT = 77; ///< exit code of a process that got no namespace

/** Runs a command of the shell in silence; whether it went well. */
inline bool shell(const std::string &command)
{
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0; // NOLINT(cert-env33-c)
}

inline void write_file(const char *path, const std::string &text)
{
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file >= 0) {
        static_cast<void>(!write(file, text.data(), text.size()));
        close(file);
    }
}

/** Goes into a network namespace of its own, as root or in a user namespace. */
inline bool enter_namespace()
{
    const unsigned user = getuid();
    const unsigned group = getgid();
    if (unshare(CLONE_NEWNET) == 0) {
        return true;
    }
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
        return false;
    }
    write_file("/proc/self/setgroups", "deny");
    write_file("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    write_file("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    return true;
}

/** The veth pair, without addresses and silent. */
inline bool make_cable()
{
    return shell("ip link add sw0 type veth peer name host0") &&
           shell("ip link set sw0 addrgenmode none up") &&
           shell("ip link set host0 addrgenmode none up");
}

/**
 * Does something in a process of its own with such a namespace. Its failures are
 * printed there and fail the test here. Skips the test where there are no namespaces.
 */
inline void in_namespace(const std::function<void()> &work)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!enter_namespace() || !make_cable()) {
            _exit(CANNOT);
        }
        work();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    if (WEXITSTATUS(status) == CANNOT) {
        GTEST_SKIP() << "no network namespace with veth pairs can be made here";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0) << "what failed is told above";
}

} // namespace lab_test
