/*
 * session_script_test.cpp: scripts: `rtif run` with its output, its messages and
 * its exit codes, and `rtif shell` without a terminal.
 */
#include "commands/run.h"
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace lab_test
{

namespace
{

using lab::commands::EXIT_DONE;
using lab::commands::EXIT_REFUSED;
using lab::commands::EXIT_USAGE;

/** A script that lies beside the examples, so to say. */
class SessionScript : public ::testing::Test
{
protected:
    int run(const std::string &script, bool quiet = false, const std::string &name = "test.rtif")
    {
        rtifhal_test::reset_library();
        simswitch::Switch hardware;
        lab::commands::RunOptions options;
        options.script = (EXAMPLES / "test.rtif").string();
        options.quiet = quiet;
        std::istringstream in(script);
        std::ostringstream out_stream;
        std::ostringstream err_stream;
        const int code = run_script_on(hardware, options, in, name, {out_stream, err_stream});
        out = out_stream.str();
        err = err_stream.str();
        return code;
    }

    std::string out;
    std::string err;
};

TEST_F(SessionScript, TellsEachCommandWithItsOutcomeInOneLine)
{
    EXPECT_EQ(run("# first\n\nup kinds.json   # all of it\nset Ethernet0 \"mtu\"\t9000\n"
                  "expect message \"Reusing l3a_intf_id\"\nquit\nshwo\n"),
              EXIT_DONE);
    EXPECT_EQ(out,
              "up kinds.json                                     7 of 7 interfaces up, 594 calls\n"
              "set Ethernet0 mtu 9000                            done, 29 calls\n"
              "expect message \"Reusing l3a_intf_id\"              as expected\n");
    EXPECT_EQ(err, "");
}

TEST_F(SessionScript, ShowsTablesBelowTheirCommand)
{
    EXPECT_EQ(run("show routes\nrmac add 02:00:00:00:0b:01\nshow stations\n"), EXIT_DONE);
    EXPECT_EQ(out, "show routes\n"
                   "no routes\n"
                   "rmac add 02:00:00:00:0b:01                        done, 6 calls, station 1\n"
                   "show stations\n"
                   "STATION  MAC                VLAN  PORT  FLAGS  OWNER  ROLE\n"
                   "      1  02:00:00:00:0b:01     -  -     0x1c   -      router MAC\n");
}

TEST_F(SessionScript, QuietTellsNothingWhenAllIsWell)
{
    EXPECT_EQ(run("up kinds.json\nshow ports\nset Ethernet0 mtu 9000\nexpect code = 0\n", true),
              EXIT_DONE);
    EXPECT_EQ(out + err, "");
}

TEST_F(SessionScript, AnExpectationThatIsntMetEndsIt)
{
    EXPECT_EQ(run("up kinds.json\nexpect port Ethernet0 control 8 = 0 # no\nshwo\n", true),
              EXIT_REFUSED);
    EXPECT_EQ(err, "test.rtif:2: expect port Ethernet0 control 8 = 0\n"
                   "    expected port Ethernet0 control 8 = 0\n"
                   "    seen     1\n");
}

TEST_F(SessionScript, ALineThatMakesNoSenseEndsIt)
{
    EXPECT_EQ(run("show routes\nshwo  ports\nshow routes\n"), EXIT_USAGE);
    EXPECT_EQ(out, "show routes\nno routes\n");
    EXPECT_EQ(err, "test.rtif:2: shwo ports\n"
                   "    unknown command 'shwo': did you mean 'show'?\n");
}

TEST_F(SessionScript, ACommandThatCantBeDoneEndsIt)
{
    EXPECT_EQ(run("save\nshwo\n"), EXIT_REFUSED);
    EXPECT_EQ(err, "test.rtif:1: save\n    nothing can be saved: the store is in memory; start "
                   "with --state DIR\n");
}

TEST_F(SessionScript, ARefusalGoesOnAndCountsInTheEnd)
{
    EXPECT_EQ(run("up kinds.json\nfail rtifhal_bcm_l3_ingress_create -6\nset Ethernet0 vrf 9\n"
                  "set Ethernet0 vrf 8\nexpect ingress Ethernet0 vrf = 8\n"),
              EXIT_REFUSED);
    EXPECT_NE(out.find("set Ethernet0 vrf 9                               refused: code 0, 29 "
                       "calls\n    bcm_l3_ing_create(10000000) failed: table full\nset "
                       "Ethernet0 vrf 8                               done, 29 calls\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(err, "test.rtif:3: set Ethernet0 vrf 9\n"
                   "    refused: code 0, 29 calls; no expect accepts it\n"
                   "    bcm_l3_ing_create(10000000) failed: table full\n");
}

TEST_F(SessionScript, ARefusalThatIsExpectedIsNone)
{
    const std::string begin =
        "up kinds.json\nfail rtifhal_bcm_l3_ingress_create always -6\nset Ethernet0 vrf 9\n";
    EXPECT_EQ(run(begin + "expect code = 0\n", true), EXIT_DONE);
    EXPECT_EQ(out + err, "");
    EXPECT_EQ(run(begin + "show routes\nexpect no message \"banana\"\n", true), EXIT_DONE);
    // One that looks elsewhere doesn't accept it, nor does one behind the next request.
    EXPECT_EQ(run(begin + "expect ingress Ethernet0 vrf = 1\n", true), EXIT_REFUSED);
    EXPECT_EQ(run(begin + "ipv6 on\nexpect code = 0\n", true), EXIT_REFUSED);
    EXPECT_NE(err.find("test.rtif:3: set Ethernet0 vrf 9\n"), std::string::npos) << err;
    // The second one isn't accepted by what accepts the first.
    EXPECT_EQ(run(begin + "expect code = 0\nset Ethernet0 vrf 8\n", true), EXIT_REFUSED);
    EXPECT_NE(err.find("test.rtif:5: "), std::string::npos) << err;
}

TEST_F(SessionScript, ARefusalIsToldBeforeWhatEndsTheScript)
{
    EXPECT_EQ(run("up kinds.json\nfail rtifhal_bcm_l3_ingress_create -6\nset Ethernet0 vrf 9\n"
                  "expect ingress Ethernet0 vrf = 9\n",
                  true),
              EXIT_REFUSED);
    EXPECT_EQ(err.substr(0, 33), "test.rtif:3: set Ethernet0 vrf 9\n");
    EXPECT_NE(err.find("test.rtif:4: expect ingress"), std::string::npos) << err;
    EXPECT_EQ(run("up kinds.json\nfail rtifhal_bcm_l3_ingress_create -6\nset Ethernet0 vrf 9\n"
                  "shwo\n",
                  true),
              EXIT_USAGE);
}

TEST_F(SessionScript, LineEndsOfBothKindsAndNoneAreFine)
{
    EXPECT_EQ(run("\xef\xbb\xbfshow routes\r\n\r\nshow egress"), EXIT_DONE);
    EXPECT_EQ(out, "show routes\nno routes\nshow egress\nno egress objects\n");
    EXPECT_EQ(run(""), EXIT_DONE);
}

TEST_F(SessionScript, WhatCantBeShownIsToldByItsPlace)
{
    EXPECT_EQ(run("add \x1b[2JEthernet0\n"), EXIT_USAGE);
    EXPECT_EQ(err, "test.rtif:1: (a line that can't be shown)\n"
                   "    column 5 holds the control character U+001B: take it out\n");
    EXPECT_EQ(run("add \xff\n"), EXIT_USAGE);
    EXPECT_EQ(err.find('\xff'), std::string::npos);
    EXPECT_EQ(run(std::string(1000000, 'x') + "\n"), EXIT_USAGE);
    EXPECT_EQ(err, "test.rtif:1: (a line that can't be shown)\n"
                   "    the line is longer than 4096 bytes\n");
    EXPECT_EQ(run("up \"kinds.json\r\n"), EXIT_USAGE);
    EXPECT_EQ(err, "test.rtif:1: up \"kinds.json\n    a quote is opened and not closed\n");
}

TEST_F(SessionScript, ItsNameIsNotEchoedRaw)
{
    const std::string refused =
        "up kinds.json\nfail rtifhal_bcm_l3_ingress_create -6\nset Ethernet0 vrf 9\n";
    EXPECT_EQ(run(refused, true, "\x1b[2Ja.rtif"), EXIT_REFUSED);
    EXPECT_EQ(err.find('\x1b'), std::string::npos) << err;
    EXPECT_NE(err.find("a.rtif:3: set Ethernet0 vrf 9\n"), std::string::npos) << err;
    EXPECT_EQ(run("shwo\n", true, "\x1b[2Ja.rtif"), EXIT_USAGE);
    EXPECT_EQ(err.find('\x1b'), std::string::npos) << err;
}

/** What a command prints, both streams together, and its exit code. */
std::pair<std::string, int> run_command(const std::string &command)
{
    // NOLINTNEXTLINE(cert-env33-c): the command is the test's own
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    std::string text;
    char buffer[4096];
    for (std::size_t n = 0; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        text.append(buffer, n);
    }
    const int status = pclose(pipe);
    return {text, WEXITSTATUS(status)};
}

const std::string RTIF = RTIFHAL_RTIF;

TEST(SessionCommand, RunsAFileAndTheStandardInput)
{
    const Folder folder;
    std::ofstream(folder.path / "a.rtif") << "up kinds.json\nexpect interface count = 7\n";
    std::filesystem::copy(EXAMPLES / "kinds.json", folder.path);
    const std::string script = (folder.path / "a.rtif").string();
    EXPECT_EQ(run_command(RTIF + " run --quiet " + script), std::pair(std::string(), 0));
    EXPECT_EQ(run_command(RTIF + " run --chip trident2 --quiet " + script).second, 0);
    const auto [text, code] =
        run_command("cd " + EXAMPLES.string() + " && echo 'up kinds.json' | " + RTIF + " run -");
    EXPECT_EQ(code, 0) << text;
    EXPECT_EQ(run_command("echo shwo | " + RTIF + " run -"),
              std::pair(std::string("standard input:1: shwo\n    unknown command 'shwo': did you "
                                    "mean 'show'?\n"),
                        2));
}

TEST(SessionCommand, KeepsTheStoreInAFolder)
{
    const Folder folder;
    std::ofstream(folder.path / "a.rtif")
        << "up " << (EXAMPLES / "kinds.json").string() << "\nsave\n";
    const std::string command = RTIF + " run --state " + folder.path.string() + "/state " +
                                folder.path.string() + "/a.rtif";
    EXPECT_NE(run_command(command).first.find("holds 6 interfaces"), std::string::npos);
    EXPECT_NE(run_command(command).first.find("6 interfaces of an earlier run are dropped"),
              std::string::npos);
}

TEST(SessionCommand, AScriptThatCantBeReadIsRefused)
{
    const auto missing = run_command(RTIF + " run /nowhere/a.rtif");
    EXPECT_EQ(missing, std::pair(std::string("/nowhere/a.rtif: the script can't be opened\n"), 1));
    const auto folder = run_command(RTIF + " run /tmp");
    EXPECT_EQ(folder, std::pair(std::string("/tmp: is a folder, not a script\n"), 1));
    EXPECT_EQ(run_command(RTIF + " run").second, 2);
    EXPECT_EQ(run_command(RTIF + " run --chip banana -").second, 2);
}

TEST(SessionCommand, AShellWithoutATerminalGoesOnAfterErrors)
{
    const auto [text, code] = run_command(
        "printf 'shwo\\nexpect vlan 1 stg = 2\\nexpect vlan 1 stg = 1\\nquit\\nshow routes\\n' | " +
        RTIF + " shell");
    EXPECT_EQ(code, 0);
    EXPECT_EQ(text, "unknown command 'shwo': did you mean 'show'?\n"
                    "expected vlan 1 stg = 2\nseen     1\n"
                    "as expected\n");
}

} // namespace

} // namespace lab_test
