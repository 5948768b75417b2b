/*
 * record_refused_test.cpp: files that a recording isn't written to, and
 * recordings that aren't read: cut off, with other line ends, with lines that
 * no run writes.
 */
#include "record_run.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>
#include <sys/stat.h>

namespace
{

using record_test::Ran;
using record_test::with;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class RecordRefused : public record_test::TunnelRecording
{
};

TEST_F(RecordRefused, AFileWithoutANameIsUsage)
{
    const Ran ran = rtif("up tunnel.json --record ''");
    EXPECT_EQ(ran.code, 2);
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, AllOf(HasSubstr("--record"), HasSubstr("the name of a file is wanted")));
}

TEST_F(RecordRefused, APipeIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const Ran ran = rtif("up tunnel.json --record pipe");
    EXPECT_EQ(ran.code, 1);
    EXPECT_EQ(ran.err, "pipe: is a pipe; a recording goes into a file\n");
    EXPECT_EQ(rtif("up tunnel.json --record examples").err,
              "examples: is a folder; a recording goes into a file\n");
}

TEST_F(RecordRefused, DevicesAreTaken)
{
    EXPECT_EQ(rtif("up tunnel.json --record /dev/null").code, 0);
    // The output of the test is a file; through a pipe it is a pipe.
    EXPECT_THAT(rtif("up tunnel.json --record /dev/stdout | cat").out,
                HasSubstr("end 2 requests, 31 calls\n"));
}

TEST_F(RecordRefused, TheStateFolderIsNotWrittenInto)
{
    const std::string words = ": is in the state folder, which has its own files; name a file "
                              "elsewhere\n";
    // The folder is there only the second time.
    for (int i = 0; i < 2; ++i) {
        for (const char *name : {"kept/some.rec", "./kept/config.json", "kept/../kept/some.rec"}) {
            const Ran ran = rtif(std::string("up tunnel.json --state kept --record ") + name);
            EXPECT_EQ(ran.code, 1) << name;
            EXPECT_EQ(ran.err, name + words);
        }
        ASSERT_EQ(rtif("up tunnel.json --state kept --record kept.rec").code, 0);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "kept" / "some.rec"));
}

TEST_F(RecordRefused, OtherLineEndsAreNamed)
{
    const std::string text = std::regex_replace(recorded(), std::regex("\n"), "\r\n");
    EXPECT_EQ(refused(text), "edited.rec:1: the line ends with CR LF, as some transfers and "
                             "editors make it; a recording has LF alone: `sed -i 's/\\r$//' FILE` "
                             "mends it\n");
    EXPECT_THAT(refused(with(recorded(), "chip trident\n", "chip trident\r\n")),
                StartsWith("edited.rec:3: the line ends with CR LF"));
}

TEST_F(RecordRefused, CutOffInItsConfigurationSaysSo)
{
    const std::string text = recorded();
    const std::size_t end = text.find("request 1 ");
    constexpr std::size_t STEP = 11;
    std::size_t lines = 0;
    for (std::size_t size = text.find('\n') + 1; size < end - 8; size += STEP) {
        const std::string cut = text.substr(0, size);
        lines = static_cast<std::size_t>(std::count(cut.begin(), cut.end(), '\n')) + 1;
        EXPECT_EQ(refused(cut),
                  fmt::format("edited.rec:{}: the recording is cut off here, before its "
                              "configuration ends; it can't be used: record the run again\n",
                              lines));
    }
    EXPECT_EQ(lines, 6U);
    // A run that was killed before its first request has ended has its whole configuration.
    write("edited.rec", text.substr(0, end + 5));
    EXPECT_EQ(rtif("replay edited.rec").code, 0);
}

TEST_F(RecordRefused, LinesThatNoRunWritesAreRefusedByTheirNumber)
{
    const std::string text = recorded();
    const std::string call = "call 2.4 service fwmpd_inband_init() = 0";
    for (const char *other :
         {"call 2.4 service foo", "call 2.4 bird fwmpd_inband_init() = 0", "call 2.4 service (",
          "call 2.4 service foo(", "call 2.4 service", "call 2.4 service f o()"}) {
        EXPECT_THAT(refused(with(text, call, other)),
                    StartsWith("edited.rec:20: a call is \"call 3.1 LAYER FUNCTION(…)\""))
            << other;
    }
    const std::string message = "message 2.2 trace rtifhal_l3tun_add: Entry: create - 1";
    for (const char *other : {"message 2.2 fatal x: y", "message 2.2 trace", "message 2.2 trace x",
                              "message 2.2 level- x: y", "message 2.2 level-x x: y"}) {
        EXPECT_THAT(refused(with(text, message, other)),
                    StartsWith("edited.rec:43: a message is \"message 3.1 LEVEL FUNCTION: TEXT\""))
            << other;
    }
}

TEST_F(RecordRefused, SizesThatNoTableHasAreRefused)
{
    const std::string text = recorded();
    for (const char *limit : {"vlans=99999999999", "vlans=1000001", "vlans=0"}) {
        EXPECT_EQ(refused(with(text, "chip trident\n",
                               std::string("chip trident\nlimits ") + limit + "\n")),
                  std::string("edited.rec:4: \"") + limit +
                      "\" is no size of a table; those are 1 to 1000000\n");
    }
    EXPECT_THAT(rtif("up tunnel.json --record x.rec").err, Not(HasSubstr("size")));
}

} // namespace
