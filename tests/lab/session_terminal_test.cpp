/*
 * session_terminal_test.cpp: `rtif shell` at a terminal: completion, history,
 * the keys that drop a line and end the session.
 */
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace lab_test
{

namespace
{

constexpr auto PATIENCE = std::chrono::seconds(60);

/** A shell of rtif on a terminal of its own. */
class TerminalShell
{
public:
    /** @param home  where it keeps its history */
    explicit TerminalShell(const std::filesystem::path &home)
    {
        winsize size = {.ws_row = 40, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
        process_ = forkpty(&terminal_, nullptr, nullptr, &size);
        if (process_ == 0) {
            setenv("TERM", "vt100", 1);
            setenv("LC_ALL", "C.UTF-8", 1);
            setenv("XDG_STATE_HOME", home.c_str(), 1);
            const bool there = chdir(EXAMPLES.c_str()) == 0;
            execl(RTIFHAL_RTIF, "rtif", "shell", static_cast<char *>(nullptr));
            _exit(there ? 126 : 127);
        }
    }
    ~TerminalShell()
    {
        close(terminal_);
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }
    TerminalShell(const TerminalShell &) = delete;
    TerminalShell &operator=(const TerminalShell &) = delete;

    /** Types; what was printed before is forgotten. */
    void type(std::string_view keys)
    {
        printed_.clear();
        EXPECT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /** Waits until a text is printed, behind what was waited for before. */
    bool prints(std::string_view text)
    {
        const auto end = std::chrono::steady_clock::now() + PATIENCE;
        std::size_t place = printed_.find(text);
        while (place == std::string::npos) {
            if (std::chrono::steady_clock::now() > end || !read_some()) {
                return false;
            }
            place = printed_.find(text);
        }
        printed_.erase(0, place + text.size());
        return true;
    }
    /** Waits until it takes keys one by one: what is typed before that isn't edited. */
    bool at_prompt()
    {
        if (!prints("rtif> ")) {
            return false;
        }
        const auto end = std::chrono::steady_clock::now() + PATIENCE;
        while (takes_lines() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return !takes_lines();
    }
    /** Waits for its end; its exit code. */
    int exit_code()
    {
        while (read_some()) {
        }
        int status = -1;
        waitpid(process_, &status, 0);
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    const std::string &printed() const { return printed_; }

private:
    bool takes_lines() const
    {
        termios mode = {};
        return tcgetattr(terminal_, &mode) != 0 || (mode.c_lflag & ICANON) != 0;
    }
    bool read_some()
    {
        pollfd ready = {terminal_, POLLIN, 0};
        if (poll(&ready, 1, 1000) == 0) {
            return true;
        }
        std::array<char, 4096> buffer{};
        const ssize_t length = read(terminal_, buffer.data(), buffer.size());
        if (length > 0) {
            printed_.append(buffer.data(), static_cast<std::size_t>(length));
        }
        return length > 0;
    }

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string printed_;
};

TEST(SessionTerminal, CompletesRemembersAndEnds)
{
    const Folder home;
    TerminalShell shell(home.path);
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("up kin\t\r");
    ASSERT_TRUE(shell.prints("7 of 7 interfaces up")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    // Several candidates are listed, one is put in.
    shell.type("set Ethernet\t");
    ASSERT_TRUE(shell.prints("Ethernet4.10")) << shell.printed();
    shell.type("0 mt\t4000\r");
    ASSERT_TRUE(shell.prints("done, 29 calls")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    // The last line again, by the arrow key.
    shell.type("\x1b[A\r");
    ASSERT_TRUE(shell.prints("done, 29 calls")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    // An error doesn't end it.
    shell.type("shwo\r");
    ASSERT_TRUE(shell.prints("did you mean 'show'?")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    // Ctrl-C drops what was typed: what follows is a line of its own.
    shell.type("banana");
    ASSERT_TRUE(shell.prints("banana"));
    shell.type("\x03");
    ASSERT_TRUE(shell.prints("^C")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("expect interface Ethernet0 mtu = 4000\r");
    ASSERT_TRUE(shell.prints("as expected")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("\x04");
    EXPECT_EQ(shell.exit_code(), 0);
}

TEST(SessionTerminal, RemembersLinesOfEarlierShells)
{
    const Folder home;
    const auto file = home.path / "rtif" / "history";
    for (const std::string line : {"show ports", "show b\xc3\xa4r \"a  b\""}) {
        TerminalShell shell(home.path);
        ASSERT_TRUE(shell.at_prompt()) << shell.printed();
        shell.type(line + "\r");
        ASSERT_TRUE(shell.at_prompt()) << shell.printed();
        shell.type("quit\r");
        EXPECT_EQ(shell.exit_code(), 0);
        EXPECT_EQ(std::filesystem::status(file).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
    TerminalShell shell(home.path);
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    // The last line was quit.
    shell.type("\x1b[A\x1b[A\r");
    ASSERT_TRUE(shell.prints("unknown table 'b\xc3\xa4r'")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("\x1b[A\x1b[A\x1b[A\x1b[A\x1b[A\r");
    ASSERT_TRUE(shell.prints("no ports")) << shell.printed();
}

TEST(SessionTerminal, AHistoryThatCantBeUsedIsNone)
{
    const Folder home;
    std::ofstream(home.path / "rtif") << "a file where a folder should be";
    TerminalShell shell(home.path);
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("show packet\r");
    ASSERT_TRUE(shell.prints("no packet yet")) << shell.printed();
    ASSERT_TRUE(shell.at_prompt()) << shell.printed();
    shell.type("quit\r");
    EXPECT_EQ(shell.exit_code(), 0);
}

} // namespace

} // namespace lab_test
