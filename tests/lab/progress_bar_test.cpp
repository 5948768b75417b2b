/*
 * progress_bar_test.cpp: the line that tells on a terminal how far a long run
 * is: what it looks like, when it is there, and that nothing of it stays.
 */
#include "commands/progress_bar.h"

#include "mixed_configuration.h"
#include "up_run.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace lab_test
{

namespace
{

using lab::commands::progress_line;
using lab::commands::ProgressBar;
using std::chrono::milliseconds;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char *WIPE = "\r\x1b[K";

/** A terminal of some columns; what is written to it can be read. */
class Screen
{
public:
    explicit Screen(unsigned short columns)
    {
        winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        EXPECT_EQ(openpty(&reader_, &terminal, nullptr, nullptr, &size), 0);
        fcntl(reader_, F_SETFL, O_NONBLOCK);
    }
    ~Screen()
    {
        close(reader_);
        close(terminal);
    }
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    /** What was written since the last look. */
    std::string written() const
    {
        std::string text;
        std::array<char, 4096> buffer{};
        ssize_t length = 0;
        while ((length = read(reader_, buffer.data(), buffer.size())) > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(length));
        }
        return text;
    }
    void resize(unsigned short columns) const
    {
        const winsize size = {.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
        ioctl(terminal, TIOCSWINSZ, &size);
    }

    int terminal = -1;

private:
    int reader_ = -1;
};

} // namespace

TEST(ProgressLine, HasABarBetweenWordsAndNumbers)
{
    EXPECT_EQ(progress_line("restoring", 0, 7000, 60),
              "restoring  [.............................]    0%     0/7000");
    EXPECT_EQ(progress_line("restoring", 3500, 7000, 60),
              "restoring  [##############...............]   50%  3500/7000");
    EXPECT_EQ(progress_line("restoring", 7000, 7000, 60),
              "restoring  [#############################]  100%  7000/7000");
}

TEST(ProgressLine, GivesTheBarUpFirstAndTheWordsNext)
{
    EXPECT_EQ(progress_line("restoring", 35, 70, 30), "restoring   50%  35/70");
    EXPECT_EQ(progress_line("restoring", 35, 70, 20), " 50%  35/70");
    EXPECT_EQ(progress_line("restoring", 35, 70, 11), "");
}

TEST(ProgressLine, NeverReachesTheLastColumn)
{
    for (std::size_t width = 1; width < 200; ++width) {
        for (const std::size_t done : {0U, 1U, 4999U, 5000U}) {
            EXPECT_LT(progress_line("bringing up", done, 5000, width).size(), width);
        }
    }
}

TEST(ProgressLine, NothingToDoIsDone)
{
    EXPECT_THAT(progress_line("restoring", 0, 0, 80), EndsWith("100%  0/0"));
}

TEST(ProgressLine, TerminalWithoutAWidthCountsAsOneOf80Columns)
{
    EXPECT_EQ(progress_line("restoring", 1, 2, 0), progress_line("restoring", 1, 2, 80));
}

TEST(ProgressBarTest, IsDrawnOverAndOverAndWipedOut)
{
    const Screen screen(40);
    {
        ProgressBar bar({.terminal = screen.terminal, .delay = {}, .interval = {}});
        const auto progress = bar.listener("restoring");
        progress(1, 2);
        EXPECT_EQ(screen.written(),
                  fmt::format("\r{}\x1b[K", progress_line("restoring", 1, 2, 40)));
        screen.resize(30);
        progress(2, 2);
        EXPECT_EQ(screen.written(),
                  fmt::format("\r{}\x1b[K", progress_line("restoring", 2, 2, 30)));
    }
    EXPECT_EQ(screen.written(), WIPE);
}

TEST(ProgressBarTest, IsWipedOutBeforeAMessageAndNotAgain)
{
    const Screen screen(80);
    ProgressBar bar({.terminal = screen.terminal, .delay = {}, .interval = {}});
    bar.listener("restoring")(1, 2);
    EXPECT_THAT(screen.written(), Not(IsEmpty()));
    bar.clear();
    EXPECT_EQ(screen.written(), WIPE);
    bar.clear();
    EXPECT_THAT(screen.written(), IsEmpty());
}

TEST(ProgressBarTest, ShortRunsShowNothing)
{
    const Screen screen(80);
    {
        ProgressBar bar({.terminal = screen.terminal, .delay = std::chrono::hours(1)});
        const auto progress = bar.listener("restoring");
        for (std::size_t done = 1; done <= 1000; ++done) {
            progress(done, 1000);
        }
    }
    EXPECT_THAT(screen.written(), IsEmpty());
}

TEST(ProgressBarTest, IsDrawnOnceInAnInterval)
{
    const Screen screen(80);
    ProgressBar bar({.terminal = screen.terminal, .delay = {}, .interval = std::chrono::hours(1)});
    const auto progress = bar.listener("restoring");
    progress(1, 3);
    EXPECT_THAT(screen.written(), HasSubstr("1/3"));
    progress(2, 3);
    progress(3, 3);
    EXPECT_THAT(screen.written(), IsEmpty());
}

TEST(ProgressBarTest, NobodyIsToldWhereNoneIsWanted)
{
    ProgressBar bar(false);
    EXPECT_FALSE(bar.listener("restoring"));
}

namespace
{

/** How a run of rtif ended whose standard error, or all of it, is a terminal. */
struct Ended {
    int code;
    std::string errors; ///< what was written to the terminal that standard error is
};

/** Runs rtif with standard error on a terminal, its output thrown away. */
Ended run_rtif(const std::vector<std::string> &words, const char *variable, const char *value)
{
    int terminal = -1;
    const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process == 0) {
        setenv("TERM", "vt100", 1);
        unsetenv("NO_PROGRESS");
        setenv(variable, value, 1);
        dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
        std::vector<char *> arguments = {const_cast<char *>("rtif")};
        for (const std::string &word : words) {
            arguments.push_back(const_cast<char *>(word.c_str()));
        }
        arguments.push_back(nullptr);
        execv(RTIFHAL_RTIF, arguments.data());
        _exit(127);
    }
    Ended ended = {-1, ""};
    std::array<char, 4096> buffer{};
    ssize_t length = 0;
    // At its end a terminal without a process answers with an error.
    while ((length = read(terminal, buffer.data(), buffer.size())) > 0) {
        ended.errors.append(buffer.data(), static_cast<std::size_t>(length));
    }
    int status = -1;
    waitpid(process, &status, 0);
    close(terminal);
    ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

/** A configuration whose bring-up takes longer than a bar waits, in any build. */
/** So many that bringing them up takes longer than the bar waits. */
#ifdef RTIFHAL_WITH_SANITIZER
constexpr std::size_t LONG_RUN = 1500;
#else
constexpr std::size_t LONG_RUN = 7000;
#endif

class ProgressOfRtif : public testing::Test
{
protected:
    ProgressOfRtif()
    {
        std::ofstream(config) << mixed_configuration(LONG_RUN, simswitch::chip::Kind::trident2);
    }

    Ended up(const char *variable = "LANG", const char *value = "C") const
    {
        return run_rtif({"up", "--chip", "trident2", config}, variable, value);
    }

    Folder folder;
    std::filesystem::path config = folder.path / "mixed.json";
};

} // namespace

TEST_F(ProgressOfRtif, IsShownOnATerminalAndLeavesNothing)
{
    const Ended ended = up();
    EXPECT_EQ(ended.code, 0);
    EXPECT_THAT(ended.errors, HasSubstr("bringing up  ["));
    EXPECT_THAT(ended.errors, EndsWith(WIPE));
    EXPECT_EQ(ended.errors.find('\n'), std::string::npos);
}

TEST_F(ProgressOfRtif, IsNotShownWhereItIsNotWanted)
{
    EXPECT_EQ(up("NO_PROGRESS", "1").errors, "");
    EXPECT_EQ(up("TERM", "dumb").errors, "");
}

TEST_F(ProgressOfRtif, ShortRunShowsNothing)
{
    const std::string leaf = std::string(RTIFHAL_SOURCE_DIR) + "/examples/kinds.json";
    EXPECT_EQ(run_rtif({"up", leaf}, "LANG", "C").errors, "");
}

} // namespace lab_test
