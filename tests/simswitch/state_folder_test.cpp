/*
 * state_folder_test.cpp: who may use a state folder, who may read it, and what
 * happens when it can't be written.
 */
#include "chip/snapshot.h"
#include "state_dir.h"
#include "switch.h"

#include <fwm/state.h>
#include <fwmpd/pss.h>
#include <sdk/switch.h>
#include <sdk/vlan.h>

#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simswitch
{

namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr uid_t NOBODY = 65534;

/** "0700". */
std::string mode(const std::filesystem::path &path)
{
    struct stat found {
    };
    return stat(path.c_str(), &found) == 0 ? fmt::format("{:04o}", found.st_mode & 07777U)
                                           : "missing";
}

void expect_owner_only(const std::filesystem::path &folder)
{
    EXPECT_EQ(mode(folder), "0700");
    std::size_t files = 0;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        EXPECT_EQ(mode(file.path()), "0600") << file.path();
        ++files;
    }
    EXPECT_EQ(files, 8U) << "two databases with their logs and indexes, the lock, the count";
}

/** Opens a switch in a process of its own; gives why it was refused, or what state_error says. */
std::string opened_by_child(const std::filesystem::path &path)
{
    return said_by_child([&] { return Switch({.state_dir = path}).state_error(); });
}

/** Limits the size of files to what a write needs no more than. */
void limit_files(rlim_t bytes)
{
    (void)signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

} // namespace

TEST(StateFolder, IsTheOwnersAlone)
{
    const StateDir dir;
    const mode_t old = umask(0);
    {
        Switch sw({.state_dir = dir.path() / "a" / "state"});
        bcm_switch_control_set(0, 1, 1);
        expect_owner_only(dir.path() / "a" / "state");
    }
    umask(old);
}

TEST(StateFolder, OneThatStoodOpenIsClosed)
{
    const StateDir dir;
    chmod(dir.path().c_str(), 0755);
    {
        Switch sw({.state_dir = dir.path()});
        EXPECT_EQ(mode(dir.path()), "0700");
    }
    chmod(dir.path().c_str(), 0755);
    chmod((dir.path() / "chip.db").c_str(), 0644);
    Switch sw({.state_dir = dir.path()});
    expect_owner_only(dir.path());
}

TEST(StateFolder, AFolderOfOtherThingsKeepsItsMode)
{
    const StateDir dir;
    std::ofstream(dir.path() / "notes.txt") << "mine";
    chmod(dir.path().c_str(), 0755);
    Switch sw({.state_dir = dir.path()});
    EXPECT_EQ(mode(dir.path()), "0755");
    EXPECT_EQ(mode(dir.path() / "chip.db"), "0600");
}

TEST(StateFolder, SecondProcessIsToldWhoHoldsIt)
{
    const StateDir dir;
    std::optional<Switch> holder(std::in_place, Options{.state_dir = dir.path()});
    EXPECT_THAT(opened_by_child(dir.path()),
                AllOf(HasSubstr(dir.path().string() + ": in use by process "),
                      HasSubstr(std::to_string(getpid())), HasSubstr("test_simswitch"),
                      HasSubstr("wait until it has ended")));
    EXPECT_THAT([&] { Switch second({.state_dir = dir.path()}); },
                ThrowsMessage<state::Error>(HasSubstr("in use")));
    EXPECT_EQ(&Switch::current(), &*holder);
    holder.reset();
    EXPECT_EQ(opened_by_child(dir.path()), "");
}

TEST(StateFolder, IsFreeWhenItsHolderWasKilled)
{
    const StateDir dir;
    killed_after([&] {
        Switch sw({.state_dir = dir.path()});
        die();
    });
    EXPECT_EQ(opened_by_child(dir.path()), "");
}

TEST(StateFolder, OneThatCantBeMadeOrIsNoFolderIsRefused)
{
    const StateDir dir;
    std::ofstream(dir.path() / "file") << "no folder";
    EXPECT_THAT([&] { Switch sw({.state_dir = dir.path() / "file" / "state"}); },
                ThrowsMessage<state::Error>(HasSubstr("can't make the state folder")));
    EXPECT_THAT([&] { Switch sw({.state_dir = dir.path() / "file"}); },
                ThrowsMessage<state::Error>(HasSubstr("is no folder")));
    EXPECT_EQ(Switch::find_current(), nullptr);
}

TEST(StateFolder, OneThatCantBeWrittenIsRefused)
{
    const StateDir dir;
    {
        Switch sw({.state_dir = dir.path()});
    }
    chmod(dir.path().c_str(), 0500);
    for (const auto &file : std::filesystem::directory_iterator(dir.path())) {
        chmod(file.path().c_str(), 0400);
    }
    if (geteuid() == 0) {
        ASSERT_EQ(chown(dir.path().c_str(), NOBODY, NOBODY), 0);
        for (const auto &file : std::filesystem::directory_iterator(dir.path())) {
            ASSERT_EQ(chown(file.path().c_str(), NOBODY, NOBODY), 0);
        }
    }
    const std::string said = said_by_child([&]() -> std::string {
        // Root may write anywhere.
        if (geteuid() == 0 && seteuid(NOBODY) != 0) {
            return "can't become nobody";
        }
        return Switch({.state_dir = dir.path()}).state_error();
    });
    EXPECT_THAT(said, AllOf(HasSubstr("can't be written: Permission denied"),
                            HasSubstr("make the folder writable")));
}

TEST(StateFolder, AnotherChipIsRefused)
{
    const StateDir dir;
    {
        Switch sw({.limits = {.stations = 5}, .state_dir = dir.path()});
    }
    EXPECT_THAT([&] { Switch sw({.chip = chip::Kind::trident2, .state_dir = dir.path()}); },
                ThrowsMessage<state::Error>(
                    HasSubstr("holds the state of a Trident, and a Trident2 was asked for; ask for "
                              "a Trident")));
    EXPECT_THAT([&] { Switch sw({.state_dir = dir.path()}); },
                ThrowsMessage<state::Error>(
                    HasSubstr("its chip was made with stations = 5, and 512 was asked for")));
    EXPECT_EQ(Switch({.limits = {.stations = 5}, .state_dir = dir.path()}).state_error(), "");
}

TEST(StateFolder, FullDiskKeepsTheLastGoodMoment)
{
    const StateDir dir;
    constexpr int LAST = 400;
    const std::string said = said_by_child([&]() -> std::string {
        Switch sw({.state_dir = dir.path()});
        limit_files(static_cast<rlim_t>(std::filesystem::file_size(dir.path() / "chip.db-wal")) +
                    200'000);
        int failed_at = 0;
        for (int control = 1; control <= LAST; ++control) {
            EXPECT_EQ(bcm_switch_control_set(0, control, control), 0);
            if (failed_at == 0 && !sw.state_error().empty()) {
                failed_at = control;
            }
        }
        EXPECT_EQ(sw.chip.switch_controls.all().size(), std::size_t{LAST}) << "goes on in memory";
        l3lif lif{};
        EXPECT_EQ(rtifhal_pss_l3port_store(g_fwm_pss_context, 1, &lif), -1);
        return testing::Test::HasFailure() ? "failed"
                                           : fmt::format("{} {}", failed_at, sw.state_error());
    });
    EXPECT_THAT(said, AllOf(HasSubstr("chip.db: can't be read or written"),
                            HasSubstr("File too large"), HasSubstr("keeps the moment before")));
    const int failed_at = std::stoi(said);
    ASSERT_GT(failed_at, 1) << said;
    Switch found({.state_dir = dir.path()});
    EXPECT_EQ(found.chip.switch_controls.all().size(), static_cast<std::size_t>(failed_at) - 1);
    EXPECT_THAT(found.store.stored_interfaces(), IsEmpty());
    EXPECT_EQ(found.state_error(), "");
}

TEST(StateFolder, DiskThatIsFullFromTheStartIsRefused)
{
    for (const rlim_t bytes : {0U, 10U, 100U, 1'000U, 5'000U, 20'000U}) {
        const StateDir dir;
        const std::string said = said_by_child([&]() -> std::string {
            limit_files(bytes);
            return Switch({.state_dir = dir.path()}).state_error();
        });
        EXPECT_THAT(said, AllOf(HasSubstr(dir.path().string()), HasSubstr("make room"))) << bytes;
        EXPECT_EQ(opened_by_child(dir.path()), "") << bytes;
    }
}

TEST(StateFolder, WithoutOneNothingIsWrittenOrMissed)
{
    Switch sw;
    bcm_switch_control_set(0, 1, 1);
    sw.end_request();
    sw.power_cycle();
    EXPECT_EQ(sw.state_error(), "");
    EXPECT_TRUE(chip::same_state(sw.chip, Switch().chip));
}

} // namespace simswitch
