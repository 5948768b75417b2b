/*
 * dump_command_test.cpp: `rtif dump` as a user has it: what it prints, its exit
 * codes, and the transcripts of docs/commands.md.
 */
#include "commands/dump.h"
#include "restart_run.h"
#include "transcripts.h"
#include "up_run.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>
#include <string>

namespace
{

using lab_test::CommandRun;
using lab_test::rtif;
using lab_test::source_path;
using testing::HasSubstr;

std::string example(const std::string &name)
{
    return source_path("examples/" + name + ".json").string();
}

class DumpCommand : public testing::TestWithParam<const char *>
{
protected:
    CommandRun dump(const std::string &arguments) const
    {
        return rtif(fmt::format("dump --chip {} {}", GetParam(), arguments));
    }

    lab_test::Folder folder;
    /** The numbers that a chip of this kind doesn't have are never free. */
    const std::string beyond = GetParam() == std::string("trident") ? "3584-8191" : "7680-8191";
};

TEST_P(DumpCommand, TablesOfNumbers)
{
    const CommandRun run = dump(example("kinds"));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, " l3lif bitmap: 0-9," + beyond + "\n l3lif bitmap: \n");
}

TEST_P(DumpCommand, VirtualMacsOfAnInterface)
{
    // The virtual MACs of campus.json are those of VLAN interfaces.
    const CommandRun port = dump(example("leaf") + " Ethernet8");
    EXPECT_EQ(port.code, 0);
    EXPECT_EQ(port.out, "Ethernet8 has no virtual MAC\n");
    const CommandRun svi = dump(example("campus") + " Vlan101");
    EXPECT_EQ(svi.code, 1);
    EXPECT_EQ(svi.out, "unable to get intf(805306469)\n"
                       "Vlan101 is a VLAN interface: the dump looks the interface's port up first, "
                       "so only ports and their subinterfaces have one\n");
}

TEST_P(DumpCommand, StateOfAnEarlierRun)
{
    const std::string state = (folder.path / "state").string();
    ASSERT_EQ(
        rtif(fmt::format("up {} --chip {} --state {}", example("kinds"), GetParam(), state)).code,
        0);
    const auto before = lab_test::bytes_of(folder.path / "state/store.sqlite");
    const CommandRun numbers = rtif("dump --state " + state);
    EXPECT_EQ(numbers.code, 0);
    EXPECT_EQ(numbers.out, " l3lif bitmap: 0-4,6-9," + beyond + "\n l3lif bitmap: \n");
    const CommandRun port = rtif(fmt::format("dump --state {} Ethernet0", state));
    EXPECT_EQ(port.code, 0);
    EXPECT_EQ(port.out, "Ethernet0 has no virtual MAC: a restore brings none back\n");
    EXPECT_EQ(rtif(fmt::format("dump --state {} Vlan100", state)).code, 1);
    EXPECT_EQ(rtif(fmt::format("dump --state {} Vlan10", state)).code, 2);
    EXPECT_EQ(lab_test::bytes_of(folder.path / "state/store.sqlite"), before);
    // Without a configuration interfaces have the switch's own names.
    std::filesystem::remove(folder.path / "state/config.json");
    EXPECT_EQ(rtif(fmt::format("dump --state {} Ethernet1/1", state)).code, 0);
}

TEST_P(DumpCommand, NumbersThatAreHeldBackAreRestored)
{
    const std::string state = (folder.path / "state").string();
    const std::string script = (folder.path / "script").string();
    std::ofstream(script) << "up " << example("kinds") << "\ndel Ethernet0\nadd Ethernet0\n";
    ASSERT_EQ(rtif(fmt::format("run --chip {} --state {} {}", GetParam(), state, script)).code, 0);
    EXPECT_EQ(rtif("dump --state " + state).out,
              " l3lif bitmap: 0-4,6-10," + beyond + "\n l3lif bitmap: 3\n");
}

TEST_P(DumpCommand, JsonHasTheSame)
{
    const auto numbers = nlohmann::json::parse(dump("--json " + example("kinds")).out);
    EXPECT_TRUE(numbers["interface"].is_null());
    EXPECT_EQ(numbers["code"], 0);
    EXPECT_EQ(numbers["lines"],
              (nlohmann::json{" l3lif bitmap: 0-9," + beyond, " l3lif bitmap: "}));
    const CommandRun run = dump("--json " + example("kinds") + " MuxTunnel0");
    EXPECT_EQ(run.code, 1);
    const auto tunnel = nlohmann::json::parse(run.out);
    EXPECT_EQ(tunnel["interface"], "MuxTunnel0");
    EXPECT_EQ(tunnel["code"], -1);
    EXPECT_TRUE(tunnel["lines"].empty());
    EXPECT_EQ(tunnel["errors"].size(), 2U);
    EXPECT_THAT(tunnel["errors"][1], HasSubstr("MuxTunnel0 is a tunnel: "));
}

TEST_P(DumpCommand, WhatCannotBeDoneIsRefused)
{
    const CommandRun name = dump(example("kinds") + " Ethernet16");
    EXPECT_EQ(name.code, 2);
    EXPECT_EQ(name.out, "unknown interface 'Ethernet16': did you mean 'Ethernet0'?\n");
    EXPECT_EQ(dump("/nowhere.json").code, 1);
    EXPECT_EQ(dump("").code, 2);
    EXPECT_EQ(dump("a b c").code, 2);
    EXPECT_EQ(dump("--state x").code, 2);
    EXPECT_EQ(rtif("dump --state x a b").code, 2);
    const CommandRun folder_without = rtif("dump --state " + folder.path.string());
    EXPECT_EQ(folder_without.code, 1);
    EXPECT_THAT(folder_without.out, HasSubstr(folder.path.string()));
}

INSTANTIATE_TEST_SUITE_P(BothChips, DumpCommand, ::testing::Values("trident", "trident2"));

TEST(DumpCommandOn, WhatDidNotComeUpIsTold)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    hardware.journal.arm({.function = "rtifhal_bcm_l3_intf_create", .code = -6});
    std::ostringstream out;
    std::ostringstream err;
    const lab::commands::DumpOptions options = {.config = example("kinds")};
    EXPECT_EQ(lab::commands::dump_on(hardware, options, {out, err}), 1);
    EXPECT_THAT(out.str(), HasSubstr(" l3lif bitmap: 0-"));
    EXPECT_THAT(err.str(), HasSubstr("kinds.json: 1 request refused, 'rtif up' tells of it\n"));
}

TEST(DumpCommandOn, VirtualMacsAreLinesOfTheirOwn)
{
    rtifhal_test::reset_library();
    const lab_test::Folder folder;
    const auto config = folder.path / "sag.json";
    std::ofstream(config) << R"({"DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:0a:01"}},
        "PORT": {"Ethernet0": {}}, "INTERFACE": {"Ethernet0": {}, "Ethernet0|10.0.0.1/24": {}},
        "VRRP": {"Ethernet0|8": {"vip": "10.0.0.9"}}})";
    simswitch::Switch hardware;
    std::ostringstream out;
    std::ostringstream err;
    const lab::commands::DumpOptions options = {.config = config, .name = "Ethernet0"};
    EXPECT_EQ(lab::commands::dump_on(hardware, options, {out, err}), 0) << err.str();
    EXPECT_EQ(out.str(), "Ethernet0:pd: vlan=4094 fhrp_mac=00:00:5e:00:01:08\n");
}

TEST(CommandsPage, TranscriptsAreWhatIsShown)
{
    const lab_test::Folder folder;
    EXPECT_GE(lab_test::expect_transcripts(source_path("docs/commands.md"), folder), 5);
}

} // namespace
