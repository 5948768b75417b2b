/*
 * state_damage_test.cpp: a damaged state folder is refused in words, or what it
 * held is found whole: never a crash, never half of it.
 */
#include "chip/snapshot.h"
#include "state_dir.h"
#include "switch.h"

#include <fwmpd/platform.h>

#include <fmt/format.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace simswitch
{

namespace
{

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

/** What the chip, the caches and the store hold, in words. */
std::string content(Switch &sw)
{
    return fmt::format("{}\n{}\n{} {}", fmt::join(chip::snapshot(sw.chip), "\n"),
                       sw.wrappers.vlan_controls(100)->vc_vrf, sw.store.stored_interfaces().size(),
                       sw.store.global_config().has_value());
}

/** Some of everything. */
void work(Switch &sw)
{
    for (int vlan = 100; vlan < 160; ++vlan) {
        sw.wrappers.create_vlan(vlan, {.vrf = 3});
        sw.wrappers.add_vlan_ports(vlan, {1, 5, 9}, {5});
    }
    sw.end_request();
    l3lif lif{};
    for (lif.ifindex = 1; lif.ifindex < 40; ++lif.ifindex) {
        sw.store.store_interface(lif);
    }
    sw.store.store_global_config(fwmpd_global_config);
}

/** A folder that was filled, and copies of it to be damaged. */
struct StateDamage : testing::TestWithParam<bool> {
    StateDir dir;
    fs::path good = dir.path() / "good";
    fs::path bad = dir.path() / "bad";
    std::string expected;
    std::size_t refused = 0;

    /** Ended properly or, as the parameter says, killed with its logs not yet in the files. */
    void SetUp() override
    {
        killed_after([this] {
            auto sw = std::make_unique<Switch>(Options{.state_dir = good});
            work(*sw);
            if (GetParam()) {
                die();
            }
        });
        copy();
        Switch sw({.state_dir = bad});
        expected = content(sw);
        ASSERT_THAT(expected, HasSubstr("VLAN 159"));
    }
    void copy() const
    {
        fs::remove_all(bad);
        fs::copy(good, bad, fs::copy_options::recursive);
    }
    /** The files that hold something. */
    std::vector<fs::path> files() const
    {
        std::vector<fs::path> found;
        for (const auto &file : fs::directory_iterator(good)) {
            const std::string name = file.path().filename().string();
            if (name != "lock" && !name.ends_with("-shm")) {
                found.push_back(file.path().filename());
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    /** Opens the damaged copy: it says no in words, or has all. */
    void expect_whole_or_refused(const std::string &how)
    {
        try {
            Switch sw({.state_dir = bad});
            EXPECT_EQ(content(sw), expected) << how;
        } catch (const state::Error &error) {
            EXPECT_THAT(error.what(), AllOf(HasSubstr(bad.string()), HasSubstr("; "))) << how;
            ++refused;
        }
        EXPECT_EQ(Switch::find_current(), nullptr);
    }
};

} // namespace

TEST_P(StateDamage, TruncatedFileIsRefusedOrDoesNoHarm)
{
    std::size_t cuts = 0;
    for (const fs::path &file : files()) {
        const auto size = fs::file_size(good / file);
        for (const std::uintmax_t length :
             {std::uintmax_t{0}, std::uintmax_t{1}, std::uintmax_t{100}, size / 3, size / 2,
              size - std::min<std::uintmax_t>(size, 4096), size - 1}) {
            copy();
            fs::resize_file(bad / file, length);
            expect_whole_or_refused(fmt::format("{} cut to {}", file.string(), length));
            ++cuts;
        }
    }
    // The log of a killed process may make a shortened file whole again.
    EXPECT_GE(refused, cuts / 2);
}

TEST_P(StateDamage, MissingFileIsRefused)
{
    for (const fs::path &file : files()) {
        copy();
        fs::remove(bad / file);
        expect_whole_or_refused(file.string() + " is missing");
    }
    EXPECT_EQ(refused, files().size());
}

TEST_P(StateDamage, FlippedByteIsRefusedOrDoesNoHarm)
{
    std::size_t flips = 0;
    for (const fs::path &file : files()) {
        const auto size = fs::file_size(good / file);
        const std::uintmax_t stride = size / 50 + 5;
        for (std::uintmax_t place = 0; place < size; place += stride) {
            copy();
            std::fstream bytes(bad / file, std::ios::in | std::ios::out | std::ios::binary);
            bytes.seekg(static_cast<std::streamoff>(place));
            const auto byte = static_cast<unsigned>(bytes.get());
            bytes.seekp(static_cast<std::streamoff>(place));
            bytes.put(static_cast<char>(byte ^ (1U << (place % 8))));
            bytes.close();
            expect_whole_or_refused(fmt::format("{} byte {} flipped", file.string(), place));
            ++flips;
        }
    }
    EXPECT_GT(refused, flips / 20);
}

TEST_P(StateDamage, ForeignFilesAreRefusedOrDoNoHarm)
{
    for (const fs::path &file : files()) {
        copy();
        std::ofstream(bad / file) << std::string(9000, 'x');
        expect_whole_or_refused(file.string() + " is something else");
    }
    EXPECT_GE(refused, 3U);
}

TEST_P(StateDamage, DamageStaysAsItIsAndIsToldAgain)
{
    std::string first;
    for (int times = 0; times < 2; ++times) {
        if (times == 0) {
            copy();
            fs::resize_file(bad / "commits", 5);
        }
        EXPECT_THAT([&] { Switch sw({.state_dir = bad}); },
                    ThrowsMessage<state::Error>(HasSubstr(
                        "bad: commits: is not what was written to it; the state is damaged: put a "
                        "copy of the folder in its place, or remove the folder to begin with an "
                        "empty switch")));
    }
}

INSTANTIATE_TEST_SUITE_P(, StateDamage, testing::Bool(),
                         [](const auto &info) { return info.param ? "Killed" : "Ended"; });

namespace
{

/** Changes chip.db by SQL and gives what the next switch says. */
std::string said_after(const std::string &statements)
{
    const StateDir dir;
    {
        Switch sw({.state_dir = dir.path()});
        sw.wrappers.create_vlan(100);
        int id = 0;
        sw.chip.stations.create({}, id);
        sw.end_request();
    }
    dir.sql("chip.db", statements);
    try {
        Switch sw({.state_dir = dir.path()});
        return "taken";
    } catch (const state::Error &error) {
        return error.what();
    }
}

} // namespace

TEST(StateDamageBySql, RowsThatWereChangedAreNamed)
{
    EXPECT_THAT(said_after("UPDATE vlan SET vrf = 5 WHERE id = 100"),
                HasSubstr("chip.db: table vlan, row 2: is not what was written to it"));
    EXPECT_THAT(said_after("UPDATE station SET id = 2"), HasSubstr("table station, row 1: is not"));
    EXPECT_THAT(said_after("UPDATE vlan SET members = '{1-'"),
                HasSubstr("table vlan, row 1: members \"{1-\" makes no sense"));
    EXPECT_THAT(said_after("UPDATE vlan SET vrf = -1"),
                HasSubstr("table vlan, row 1: vrf -1 does not fit"));
    EXPECT_THAT(said_after("UPDATE meta SET value = 'x' WHERE name = 'chip'"),
                HasSubstr("table meta, row chip: is not what was written to it"));
}

TEST(StateDamageBySql, AnotherMakeOfTablesIsRefused)
{
    EXPECT_THAT(said_after("DROP TABLE station"), HasSubstr("its tables are not those"));
    EXPECT_THAT(said_after("CREATE TABLE more (id)"), HasSubstr("its tables are not those"));
    EXPECT_THAT(said_after("DROP TABLE meta"), HasSubstr("it has no table meta"));
    EXPECT_THAT(said_after("DELETE FROM meta WHERE name = 'chip'"),
                HasSubstr("table meta: has no row chip"));
    EXPECT_THAT(said_after("DELETE FROM commits"), HasSubstr("0 of the "));
}

TEST(StateDamageBySql, AnotherVersionIsRefused)
{
    for (const std::string version : {"1", "3"}) {
        const StateDir dir;
        {
            Switch sw({.state_dir = dir.path()});
        }
        {
            services::sqlite::Database database(dir.path() / "chip.db");
            services::sqlite::Statement(database, "REPLACE INTO meta VALUES (?, ?, ?)")
                .bind("version")
                .bind(version)
                .bind_sum()
                .run();
        }
        EXPECT_THAT([&] { Switch sw({.state_dir = dir.path()}); },
                    ThrowsMessage<state::Error>(HasSubstr(
                        "chip.db: was made by another version of the switch (version " + version +
                        " of the tables, "
                        "this one has 2); use that one")));
    }
}

} // namespace simswitch
