/*
 * check_state_error_test.cpp: a state folder that can't be used comes out of
 * `rtif check` and `rtif restart` as one line that says what and what to do.
 */
#include "restart_run.h"

#include "services/sqlite.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using lab_test::bytes_of;
using lab_test::CommandRun;
using lab_test::rtif;
using lab_test::source_path;
using testing::HasSubstr;
using testing::StartsWith;

constexpr uid_t NOBODY = 65534;

class StateErrors : public testing::TestWithParam<const char *>
{
protected:
    StateErrors()
    {
        const CommandRun run = rtif(fmt::format(
            "up {} --state {}", source_path("examples/kinds.json").string(), state.string()));
        EXPECT_EQ(run.code, 0) << run.out;
    }

    /** "check --state DIR" or "restart --state DIR --mode …". */
    std::string command(const fs::path &dir) const
    {
        const std::string words = GetParam();
        const std::size_t blank = std::min(words.find(' '), words.size());
        return fmt::format("{} --state {}{}", words.substr(0, blank), dir.string(),
                           words.substr(blank));
    }
    /** Runs the command, which is refused in one line that names the folder. */
    std::string refused(const fs::path &dir, const std::string &before = "") const
    {
        const CommandRun run = rtif(command(dir), before);
        EXPECT_EQ(run.code, 1) << run.out;
        EXPECT_EQ(std::ranges::count(run.out, '\n'), 1) << run.out;
        EXPECT_THAT(run.out, StartsWith(dir.string()));
        return run.out;
    }
    void put(const char *file, const std::string &bytes) const
    {
        std::ofstream(state / file, std::ios::binary) << bytes;
    }

    lab_test::Folder folder;
    fs::path state = folder.path / "state";
};

INSTANTIATE_TEST_SUITE_P(Folders, StateErrors,
                         testing::Values("check", "restart --mode restore", "restart --mode cold"),
                         [](const auto &info) {
                             std::string name = info.param;
                             std::erase_if(name, [](char c) { return c == ' ' || c == '-'; });
                             return name;
                         });

} // namespace

TEST_P(StateErrors, MissingFolderOrOneWithoutState)
{
    EXPECT_THAT(refused(folder.path / "nowhere"), HasSubstr("is no folder"));
    EXPECT_FALSE(fs::exists(folder.path / "nowhere"));
    EXPECT_THAT(refused(state / "chip.db"), HasSubstr("is no folder"));
    EXPECT_THAT(refused(folder.path), HasSubstr("holds no state of a switch"));
    EXPECT_FALSE(fs::exists(folder.path / "lock"));
}

TEST_P(StateErrors, TruncatedFiles)
{
    for (const char *file : {"chip.db", "store.sqlite", "commits"}) {
        const std::string whole = bytes_of(state / file);
        put(file, whole.substr(0, whole.size() / 2));
        EXPECT_THAT(refused(state), HasSubstr("the state is damaged")) << file;
        put(file, whole);
    }
    fs::remove(state / "store.sqlite");
    EXPECT_THAT(refused(state), HasSubstr("the state is damaged"));
}

TEST_P(StateErrors, FlippedBytes)
{
    for (const char *file : {"chip.db", "store.sqlite", "commits"}) {
        const std::string whole = bytes_of(state / file);
        std::string flipped = whole;
        for (std::size_t at = 20; at < flipped.size(); at += 97) {
            flipped[at] = static_cast<char>(flipped[at] ^ 0x55);
        }
        put(file, flipped);
        EXPECT_THAT(refused(state), HasSubstr("the state is damaged")) << file;
        put(file, whole);
    }
    EXPECT_EQ(rtif(command(state)).code, 0) << "whole again";
}

TEST_P(StateErrors, AnotherVersion)
{
    {
        namespace sqlite = simswitch::services::sqlite;
        sqlite::Database database(state / "chip.db");
        sqlite::Statement(database, "REPLACE INTO meta VALUES (?, ?, ?)")
            .bind("version")
            .bind("99")
            .bind_sum()
            .run();
    }
    EXPECT_THAT(refused(state), HasSubstr("was made by another version of the switch"));
}

TEST_P(StateErrors, InUseByAnotherProcess)
{
    const int lock = open((state / "lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    put("lock", "4711 (rtif shell)");
    EXPECT_THAT(refused(state), HasSubstr("in use by process 4711 (rtif shell)"));
    close(lock);
    EXPECT_EQ(rtif(command(state)).code, 0);
}

TEST_P(StateErrors, FolderThatOnlyCanBeRead)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to become nobody";
    }
    chmod(folder.path.c_str(), 0755);
    for (const auto &file : fs::directory_iterator(state)) {
        chmod(file.path().c_str(), 0400);
        ASSERT_EQ(chown(file.path().c_str(), NOBODY, NOBODY), 0);
    }
    chmod(state.c_str(), 0500);
    ASSERT_EQ(chown(state.c_str(), NOBODY, NOBODY), 0);
    const std::string nobody = "setpriv --reuid 65534 --clear-groups ";
    const CommandRun able = rtif("--version", nobody);
    if (able.code != 0) {
        GTEST_SKIP() << able.out;
    }
    if (std::string(GetParam()) == "check") {
        const CommandRun run = rtif(command(state), nobody);
        EXPECT_EQ(run.code, 0) << run.out;
    } else {
        EXPECT_THAT(refused(state, nobody), HasSubstr("can't be written"));
    }
}

TEST_P(StateErrors, FullDisk)
{
    // The limit stands for the disk; the shell's trap makes it a failed write.
    const std::string full = "trap '' XFSZ; ulimit -f 8; ";
    const CommandRun run = rtif(command(state), full);
    if (std::string(GetParam()) == "check") {
        // The copy doesn't fit.
        EXPECT_EQ(run.code, 1);
        EXPECT_THAT(run.out, HasSubstr("can't be copied to"));
    } else if (std::string(GetParam()) == "restart --mode cold") {
        EXPECT_EQ(run.code, 1) << run.out;
        EXPECT_THAT(run.out, HasSubstr("make room"));
    }
    EXPECT_EQ(rtif("check --state " + state.string()).code, 0) << "the last good moment";
}

TEST_P(StateErrors, StateOfAnotherChipIsNoErrorButAnotherMakeIs)
{
    fs::remove_all(state);
    ASSERT_EQ(rtif(fmt::format("up {} --chip trident2 --state {}",
                               source_path("examples/kinds.json").string(), state.string()))
                  .code,
              0);
    const CommandRun run = rtif(command(state));
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_THAT(run.out, HasSubstr("Trident2"));
    EXPECT_THAT(rtif(fmt::format("up {} --state {}", source_path("examples/kinds.json").string(),
                                 state.string()))
                    .out,
                HasSubstr("holds the state of a Trident2, and a Trident was asked for"));
}
