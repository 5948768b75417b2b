/*
 * restart_command_test.cpp: `rtif restart` as a user has it: what it shows, in
 * text and JSON, its exit codes, and the document's transcript.
 */
#include "restart_run.h"
#include "services/pss_folder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>

namespace
{

using lab_test::bytes_of;
using lab_test::CommandRun;
using lab_test::rtif;
using lab_test::source_path;
using lab_test::without;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class RestartCommand : public testing::Test
{
protected:
    std::string state() const { return (folder.path / "state").string(); }
    static std::string example(const std::string &name)
    {
        return source_path("examples/" + name + ".json").string();
    }
    CommandRun up(const std::string &name, const std::string &chip = "trident") const
    {
        return rtif(fmt::format("up {} --chip {} --state {}", example(name), chip, state()));
    }
    CommandRun restart(const std::string &options) const
    {
        return rtif(fmt::format("restart --state {} {}", state(), options));
    }

    lab_test::Folder folder;
};

} // namespace

TEST_F(RestartCommand, RestoreShowsWhatCameBackWithoutAWrite)
{
    ASSERT_EQ(up("kinds").code, 0);
    const CommandRun run = restart("--mode restore");
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_THAT(without(run.out, folder.path.string() + "/"),
                StartsWith("state: Trident, restore: 6 of 6 stored interfaces, 0 chip writes\n"));
    EXPECT_THAT(run.out, AllOf(HasSubstr("102 rtifhal_trident_l3port_restore: Error - PC tree "
                                         "empty 20001000\n"),
                               HasSubstr("numbers held back: none\n"),
                               HasSubstr("VLANs of the L2 side, marked again: 100,101\n")));
}

TEST_F(RestartCommand, KindOfChipIsTheFoldersOwn)
{
    ASSERT_EQ(up("kinds", "trident2").code, 0);
    EXPECT_THAT(restart("--mode restore").out, HasSubstr("Trident2, restore: 6 of 6"));
    EXPECT_THAT(restart("--mode cold").out, HasSubstr("Trident2, cold start"));
}

TEST_F(RestartCommand, JsonHasTheSame)
{
    ASSERT_EQ(up("kinds").code, 0);
    const auto object = nlohmann::json::parse(restart("--mode restore --then-up --json").out);
    EXPECT_EQ(object["mode"], "restore");
    EXPECT_EQ(object["chip_writes"], 0);
    EXPECT_EQ(object["interfaces"].size(), 6U);
    EXPECT_EQ(object["interfaces"][0]["name"], "Ethernet0");
    EXPECT_EQ(object["interfaces"][0]["iif"], 3);
    EXPECT_EQ(object["interfaces"][0]["port_vlans"][0]["vlan"], 4094);
    EXPECT_EQ(object["then"]["chip_writes"], 0);
    EXPECT_EQ(object["then"]["requests"][0]["request"], "take PortChannel0001 over from the chip");
    EXPECT_EQ(object["l2_vlans"], (nlohmann::json{100, 101}));
}

TEST_F(RestartCommand, ColdBeginsEmpty)
{
    ASSERT_EQ(up("kinds").code, 0);
    const CommandRun run = restart("--mode cold");
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, AllOf(HasSubstr("cold start: chip and store began empty"),
                               HasSubstr("7 interfaces: 7 up, 0 failed")));
}

TEST_F(RestartCommand, FastBringsDefaultRoutesAndAdjacencies)
{
    ASSERT_EQ(up("leaf").code, 0);
    const std::string routes = (folder.path / "routes").string();
    ASSERT_EQ(rtif(fmt::format("default-routes {} {} --config {}", example("default-routes"),
                               routes, example("leaf")))
                  .code,
              0);
    const std::string before = bytes_of(routes);
    const CommandRun run = restart("--mode fast --default-routes " + routes);
    if (run.out.find("for this process alone") != std::string::npos) {
        GTEST_SKIP() << run.out;
    }
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_THAT(run.out, AllOf(HasSubstr("fast restart: the chip began empty; 40 of 40 interfaces"),
                               HasSubstr("3 default routes"), HasSubstr("ipv4 VRF 1"),
                               HasSubstr("    Ethernet48 3c:2c:30:07:f0:01 port 49\n"),
                               HasSubstr("adjacencies asked for: 40")));
    EXPECT_EQ(bytes_of(routes), before) << "the library had a copy";
    EXPECT_THAT(restart("--mode fast").out, HasSubstr("0 default routes"));
}

TEST_F(RestartCommand, WhatMakesNoSenseIsRefused)
{
    EXPECT_EQ(rtif("restart --mode restore").code, 2);
    EXPECT_EQ(restart("").code, 2);
    EXPECT_EQ(restart("--mode warm").code, 2);
    EXPECT_EQ(restart("--mode restore --default-routes x").code, 2);
    EXPECT_EQ(restart("--mode cold --then-up").code, 2);
}

TEST_F(RestartCommand, ConfigurationIsTheFoldersOrTheNamedOne)
{
    ASSERT_EQ(up("kinds").code, 0);
    EXPECT_EQ(bytes_of(folder.path / "state/config.json"), bytes_of(example("kinds")));
    std::filesystem::remove(folder.path / "state/config.json");
    const CommandRun refused = restart("--mode cold");
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.out, HasSubstr("holds no configuration; name it with --config"));
    EXPECT_EQ(restart("--mode restore").code, 0);
    EXPECT_EQ(restart("--mode cold --config " + example("leaf")).code, 0);
    EXPECT_EQ(bytes_of(folder.path / "state/config.json"), bytes_of(example("leaf")));
}

TEST_F(RestartCommand, RoutesThatAreNoneAreRefused)
{
    ASSERT_EQ(up("kinds").code, 0);
    const std::string file = (folder.path / "routes").string();
    EXPECT_THAT(restart("--mode fast --default-routes " + file).out, HasSubstr("can't be read"));
    std::ofstream(file) << "nonsense";
    const CommandRun run = restart("--mode fast --default-routes " + file);
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.out, StartsWith(file + ": "));
}

/** Each command of the document's transcripts, run in a folder of the test, shows what it says. */
TEST_F(RestartCommand, TranscriptsOfTheDocumentAreWhatIsShown)
{
    const std::string page = bytes_of(source_path("docs/restart.md"));
    const std::string fence = "```console\n";
    int commands = 0;
    for (std::size_t at = page.find(fence); at != std::string::npos; at = page.find(fence, at)) {
        at += fence.size();
        std::istringstream block(page.substr(at, page.find("```", at) - at));
        std::string shown;
        std::vector<std::string> expected;
        const auto compare = [&shown, &expected] {
            for (const std::string &line : expected) {
                EXPECT_THAT(shown, HasSubstr(line + "\n"));
            }
            expected.clear();
        };
        for (std::string line; std::getline(block, line);) {
            if (line.starts_with("$ rtif ")) {
                compare();
                const CommandRun run =
                    rtif(line.substr(7), fmt::format("ln -sfn {} {}/examples; cd {}; ",
                                                     source_path("examples").string(),
                                                     folder.path.string(), folder.path.string()));
                shown = "\n" + run.out;
                ++commands;
            } else if (line != "…" && !line.empty()) {
                expected.push_back("\n" + line);
            }
        }
        compare();
    }
    EXPECT_GE(commands, 8);
}
