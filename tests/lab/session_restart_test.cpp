/*
 * session_restart_test.cpp: `restart` in a script: the process ends, and the next one goes on
 * behind it with what the state folder has kept.
 */
#include "script_run.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace
{

using lab_test::CommandRun;
using lab_test::EXAMPLES;
using lab_test::Folder;
using lab_test::rtif;
using testing::HasSubstr;
using testing::Not;

/** Runs a text behind `up kinds.json`, as a file or from the standard input. */
CommandRun run(const std::string &text, bool from_input = false, const std::string &words = "")
{
    const Folder own;
    const auto script = own.path / "script";
    std::ofstream(script) << "up " << (EXAMPLES / "kinds.json").string() << "\n" << text;
    return rtif(fmt::format("run {} --state {} {}{}", words, (own.path / "state").string(),
                            from_input ? "- <" : "", script.string()));
}

TEST(SessionRestart, ARestoreKeepsNumbersAndBringsUpWhatTheConfigurationHas)
{
    const CommandRun done =
        run("expect interface Vlan100 iif = 6\n"
            "del Ethernet0 keep\n"
            "del Ethernet4.10\n"
            "restart restore\n"
            "expect interface Vlan100 iif = 6\n"
            "expect interface Ethernet0 state = up\n"
            "expect interface Ethernet0 iif = 3   # nobody knows of a kept one\n"
            "expect interface Ethernet4.10 iif = 10   # 7 is held back\n"
            "expect iif 7 state = \"held back\"\n"
            "del Vlan100\n"
            "add Vlan100\n");
    EXPECT_EQ(done.code, 0) << done.out;
    EXPECT_THAT(done.out, HasSubstr("restart restore                                   "
                                    "7 of 7 interfaces up, "));
}

TEST(SessionRestart, ALabelOfAKeptInterfaceLeavesNoNumberBehind)
{
    const CommandRun done = run("del Vlan100 keep\n"
                                "set Vlan100 acl-label 0\n"
                                "expect code = -1\n"
                                "restart restore\n"
                                "expect no message \"failed\"\n"
                                "expect interface Vlan100 state = up\n"
                                "expect interface Vlan100 iif = 6\n");
    EXPECT_EQ(done.code, 0) << done.out;
}

TEST(SessionRestart, TheRecordOfAPortChannelsLastSubinterfaceOutlivesIt)
{
    const CommandRun done = run("del PortChannel0001.20\n"
                                "restart restore\n"
                                "expect interface PortChannel0001.20 iif = 8\n");
    EXPECT_EQ(done.code, 0) << done.out;
}

TEST(SessionRestart, ALabelledSubinterfaceOfAPortChannelComesBackOnce)
{
    const CommandRun done = run("set PortChannel0001.20 acl-label 3\n"
                                "restart restore\n"
                                "expect interface PortChannel0001.20 iif = 8\n");
    EXPECT_EQ(done.code, 0) << done.out;
    EXPECT_THAT(done.out, HasSubstr("restart restore                                   "
                                    "7 of 7 interfaces up, "));
}

TEST(SessionRestart, APairThatWasTakenBackIsOneAgain)
{
    const Folder own;
    const auto script = own.path / "script";
    std::ofstream(script) << "up " << RTIFHAL_SOURCE_DIR << "/tests/model/lifecycles.json\n"
                          << "pvlan del Vlan100 Vlan102\n"
                             "restart restore\n"
                             "expect station 00:00:5e:00:01:01 vlan = 102\n";
    const CommandRun done =
        rtif(fmt::format("run --state {} {}", (own.path / "state").string(), script.string()));
    EXPECT_EQ(done.code, 0) << done.out;
}

TEST(SessionRestart, AFastAndAColdStartBeginAnew)
{
    for (const std::string mode : {"fast", "cold"}) {
        const CommandRun done = run("del Ethernet4.10\nadd Ethernet4.10\nrestart " + mode +
                                    "\nexpect interface Ethernet4.10 iif = 7\n"
                                    "expect no message \"failed\"\n"
                                    "show iif\n");
        EXPECT_EQ(done.code, 0) << done.out;
        EXPECT_THAT(done.out, Not(HasSubstr("held back"))) << mode;
    }
}

TEST(SessionRestart, GoesOnSeveralTimesAndFromTheStandardInput)
{
    const CommandRun done = run("restart restore\ndel Ethernet0\nrestart restore\n"
                                "expect interface Ethernet0 iif = 10\nrestart cold\n"
                                "expect interface Ethernet0 iif = 3\n",
                                true, "--chip trident2");
    EXPECT_EQ(done.code, 0) << done.out;
}

TEST(SessionRestart, LinesAreCountedOnAndAnEarlierRefusalStays)
{
    const CommandRun unmet = run("restart cold\n\nexpect interface Ethernet0 iif = 4\n");
    EXPECT_EQ(unmet.code, 1);
    EXPECT_THAT(unmet.out, HasSubstr("script:4: expect interface Ethernet0 iif = 4\n"
                                     "    expected interface Ethernet0 iif = 4\n"
                                     "    seen     3\n"));
    const CommandRun refused = run("fail rtifhal_bcm_l3_ingress_create -6\nset Ethernet0 vrf 9\n"
                                   "restart cold\nexpect interface Ethernet0 vrf = 1\n");
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.out, HasSubstr("script:3: set Ethernet0 vrf 9\n"));
    EXPECT_THAT(refused.out, HasSubstr("no expect accepts it"));
}

TEST(SessionRestart, NeedsAFolderAConfigurationAndAKnownStart)
{
    const CommandRun in_memory = lab_test::run_script("up kinds.json\nrestart cold\n");
    EXPECT_EQ(in_memory.code, 1);
    EXPECT_THAT(in_memory.out, HasSubstr("start with --state DIR"));
    const CommandRun unknown = run("restart warm\n");
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.out, HasSubstr("(restore, fast or cold)"));
    const Folder own;
    const std::string state = " --state " + (own.path / "state").string();
    const CommandRun early = rtif("run - " + state, "echo restart cold | ");
    EXPECT_EQ(early.code, 1);
    EXPECT_THAT(early.out, HasSubstr("begin with 'up FILE'"));
    const CommandRun shell =
        rtif("shell" + state, fmt::format("printf 'up {}\\nrestart cold\\n' | ",
                                          (EXAMPLES / "kinds.json").string()));
    EXPECT_THAT(shell.out, HasSubstr("only a script that 'rtif run' runs"));
}

} // namespace
