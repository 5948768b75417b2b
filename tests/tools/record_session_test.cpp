/*
 * record_session_test.cpp: recordings of sessions: what `rtif run --record` and
 * `rtif shell --record` write, and that a replay does the same commands again.
 */
#include "record_run.h"

#include "record/recording.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <sstream>

namespace
{

using record_test::Ran;
using record_test::TUNNEL;
using record_test::with;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/** rtif in a folder with a switch of one tunnel. */
class RecordSession : public record_test::InFolder
{
protected:
    RecordSession() { write("tunnel.json", TUNNEL); }

    /** Records a script under the name some.rtif. */
    Ran record(const std::string &script, const std::string &options = "") const
    {
        write("some.rtif", script);
        return rtif("run --record some.rec " + options + " some.rtif");
    }
    /** The recording without its configuration, calls and messages. */
    std::string outline() const
    {
        std::istringstream in(read("some.rec"));
        std::string text;
        for (std::string line; std::getline(in, line);) {
            const std::string word = line.substr(0, line.find(' '));
            if (word == "script" || word == "configuration" || word == "do" || word == "request" ||
                word == "end") {
                text += line + "\n";
            }
        }
        return text;
    }
    void expect_same_again() const
    {
        const Ran ran = rtif("replay some.rec");
        EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
        EXPECT_THAT(ran.out, EndsWith(" the same, 0 differ\n"));
    }
};

TEST_F(RecordSession, CommandsStandBeforeWhatTheyAskedForAndLooksAreLeftOut)
{
    EXPECT_EQ(record("# a comment\n"
                     "\n"
                     "ipv6 on\n"
                     "show ports\n"
                     "up   tunnel.json\n"
                     "expect code = 0\n"
                     "fail rtifhal_bcm_l3_ingress_create -6\n"
                     "set MuxTunnel0 \"vrf\" 5  # refused\n"
                     "expect code = 0\n"
                     "explain iif 3\n"
                     "help\n"
                     "get MuxTunnel0 vrf\n"
                     "quit\n"
                     "del MuxTunnel0\n",
                     "--quiet")
                  .code,
              0);
    EXPECT_EQ(outline(), "script some.rtif\n"
                         "do ipv6 on\n"
                         "request 1 ipv6 on = 0 (4 calls, 0 messages)\n"
                         "configuration tunnel.json\n"
                         "do up tunnel.json\n"
                         "request 2 add router MAC 02:00:00:00:00:09 = 1 (6 calls, 1 messages)\n"
                         "request 3 add MuxTunnel0 = 0 (25 calls, 26 messages)\n"
                         "do fail rtifhal_bcm_l3_ingress_create -6\n"
                         "do set MuxTunnel0 vrf 5\n"
                         "request 4 set MuxTunnel0 vrf 5 = 0 (15 calls, 17 messages)\n"
                         "do get MuxTunnel0 vrf\n"
                         "request 5 get MuxTunnel0 vrf = 0 (0 calls, 1 messages)\n"
                         "end 5 requests, 50 calls\n");
    expect_same_again();
}

TEST_F(RecordSession, TheExampleOfAllPropertiesIsReplayedOnBothChips)
{
    for (const std::string chip : {"trident", "trident2"}) {
        ASSERT_EQ(
            rtif("run --quiet --record some.rec --chip " + chip + " examples/changes.rtif").code,
            0);
        expect_same_again();
    }
    const Ran other = rtif("replay some.rec --chip trident");
    EXPECT_EQ(other.code, 1);
    EXPECT_THAT(other.out, AllOf(StartsWith("some.rec: examples/changes.rtif with "
                                            "examples/kinds.json, recorded by rtif "),
                                 HasSubstr("First difference: request 4 of ")));
}

TEST_F(RecordSession, TheConfigurationIsInItAndItsFileIsNotNeeded)
{
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    std::filesystem::remove(folder / "tunnel.json");
    std::filesystem::remove(folder / "some.rtif");
    expect_same_again();
}

TEST_F(RecordSession, AScriptThatFailsLeavesWhatItDid)
{
    ASSERT_EQ(record("up tunnel.json\nexpect iif MuxTunnel0 = 9\nset MuxTunnel0 mtu 1400\n").code,
              1);
    EXPECT_THAT(outline(), Not(HasSubstr("mtu")));
    EXPECT_THAT(outline(), EndsWith("end 2 requests, 31 calls\n"));
    expect_same_again();
    // The command that can't be done is the last one.
    ASSERT_EQ(record("up tunnel.json\ndel MuxTunnel0\ndel MuxTunnel0\n").code, 1);
    EXPECT_THAT(outline(), HasSubstr("do del MuxTunnel0\nend 3 requests"));
    expect_same_again();
    ASSERT_EQ(record("up nowhere.json\n").code, 1);
    EXPECT_EQ(outline(), "script some.rtif\ndo up nowhere.json\nend 0 requests, 0 calls\n");
    expect_same_again();
    ASSERT_EQ(record("shwo\n").code, 2);
    EXPECT_EQ(outline(), "script some.rtif\nend 0 requests, 0 calls\n");
}

TEST_F(RecordSession, AChangedCallOfACommandIsTheFirstDifference)
{
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    write("some.rec", with(read("some.rec"), "vrf=1 mtu=1400", "vrf=1 mtu=1300"));
    const Ran ran = rtif("replay some.rec");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out,
                HasSubstr("First difference: request 3 of 3, set MuxTunnel0 mtu 1400 (some.rec:"));
    EXPECT_THAT(ran.out, HasSubstr("vrf=1 mtu=1300 ttl=0 tunnel=1}) = 0\n+ wrapper "));
}

TEST_F(RecordSession, AnotherCommandAsksForSomethingElse)
{
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    const std::string text = read("some.rec");
    write("some.rec", with(text, "do set MuxTunnel0 mtu 1400", "do set MuxTunnel9 mtu 1400"));
    EXPECT_THAT(rtif("replay some.rec").out,
                HasSubstr("\n  it is not asked for any more; the run has 2 requests now\n"));
    write("some.rec", with(text, "do set MuxTunnel0 mtu 1400", "do banana"));
    EXPECT_EQ(rtif("replay some.rec").code, 1);
}

TEST_F(RecordSession, OneThatWasCutOffIsComparedAsFarAsItGoes)
{
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    const std::string text = read("some.rec");
    for (const char *cut : {"configuration", "  \"TUNNEL\"", "do up", "request 1", "call 2.3",
                            "do set", "request 3", "end 3"}) {
        const std::size_t at = text.find(cut);
        ASSERT_NE(at, std::string::npos) << cut;
        write("cut.rec", text.substr(0, at));
        const Ran ran = rtif("replay cut.rec");
        EXPECT_EQ(ran.code, 0) << cut << ran.out << ran.err;
        EXPECT_THAT(ran.out, HasSubstr("\nThe recording has no end: ")) << cut;
    }
}

TEST_F(RecordSession, LinesThatASessionNeverHasAreRefused)
{
    ASSERT_EQ(record("up tunnel.json\n").code, 0);
    const std::string text = read("some.rec");
    const auto problem = [this](const std::string &edited) {
        write("edited.rec", edited);
        const Ran ran = rtif("replay edited.rec");
        EXPECT_EQ(ran.code, 2) << ran.out;
        return ran.err;
    };
    EXPECT_THAT(problem(with(text, "script some.rtif", "script")),
                HasSubstr("edited.rec:4: \"script\" has the name of one"));
    EXPECT_THAT(problem(with(text, "\nconfig {", "\nconfug {")), HasSubstr("config …"));
    EXPECT_THAT(problem(with(text, "do up", "du up")),
                HasSubstr("or the next request has to stand here"));
    EXPECT_THAT(problem(with(text, "do up", "do \\q")), HasSubstr("an escape that a recording"));
    // Commands are a session's alone.
    ASSERT_EQ(rtif("up tunnel.json --record up.rec").code, 0);
    EXPECT_THAT(problem(with(read("up.rec"), "\nrequest 1 ", "\ndo up tunnel.json\nrequest 1 ")),
                HasSubstr("or the next request has to stand here"));
}

TEST_F(RecordSession, ARestartCantBeRecorded)
{
    const Ran ran = record("up tunnel.json\nrestart restore\n", "--state kept");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.err, "some.rtif:2: restart restore\n    a recording ends with its process: "
                       "without --record a script can restart\n");
    expect_same_again();
}

TEST_F(RecordSession, OnlyARecordingIsReplaced)
{
    ASSERT_EQ(record("up tunnel.json\n").code, 0);
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    EXPECT_THAT(outline(), HasSubstr("mtu 1400"));
    for (const std::string file : {"tunnel.json", "some.rtif"}) {
        const std::string before = read(file);
        const Ran ran = rtif("run --record " + file + " some.rtif");
        EXPECT_EQ(ran.code, 1);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, file + ": is there already and is no recording; name another file\n");
        EXPECT_EQ(read(file), before);
    }
    write("empty", "");
    EXPECT_EQ(rtif("run --record empty some.rtif").code, 0);
    ASSERT_EQ(rtif("run --state kept some.rtif").code, 0);
    EXPECT_EQ(rtif("run --state kept --record kept/some.rec some.rtif").code, 1);
    EXPECT_EQ(rtif("run --record nowhere/some.rec some.rtif").code, 1);
    EXPECT_EQ(rtif("run --record '' some.rtif").code, 2);
}

TEST_F(RecordSession, AShellGoesOnAfterErrorsAndSoDoesItsReplay)
{
    write("typed", "up tunnel.json\ndel Mux\nshwo\nset MuxTunnel0 vrf 5\nquit\n");
    EXPECT_EQ(rtif("shell --record some.rec <typed").code, 0);
    EXPECT_EQ(outline(), "script rtif shell\n"
                         "configuration tunnel.json\n"
                         "do up tunnel.json\n"
                         "request 1 add router MAC 02:00:00:00:00:09 = 1 (6 calls, 1 messages)\n"
                         "request 2 add MuxTunnel0 = 0 (25 calls, 26 messages)\n"
                         "do del Mux\n"
                         "do set MuxTunnel0 vrf 5\n"
                         "request 3 set MuxTunnel0 vrf 5 = 0 (15 calls, 16 messages)\n"
                         "end 3 requests, 46 calls\n");
    expect_same_again();
    EXPECT_THAT(rtif("replay some.rec").out, StartsWith("some.rec: rtif shell with tunnel.json, "));
}

TEST_F(RecordSession, TwoScriptsAreComparedRequestByRequest)
{
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 mtu 1400\n").code, 0);
    std::filesystem::rename(folder / "some.rec", folder / "a.rec");
    ASSERT_EQ(record("up tunnel.json\nset MuxTunnel0 vrf 5\nset MuxTunnel0 mtu 1400\n").code, 0);
    const Ran ran = rtif("diff a.rec some.rec --summary");
    EXPECT_EQ(ran.code, 1);
    EXPECT_THAT(ran.out, AllOf(HasSubstr("- a.rec: Trident, some.rtif with tunnel.json, rtif "),
                               HasSubstr("set MuxTunnel0 vrf 5"), HasSubstr("only in some.rec")));
}

TEST_F(RecordSession, TheStandardInputHasItsName)
{
    write("typed", "up tunnel.json\n");
    ASSERT_EQ(rtif("run --record some.rec - <typed").code, 0);
    EXPECT_THAT(outline(), StartsWith("script standard input\nconfiguration tunnel.json\n"));
    expect_same_again();
}

} // namespace
