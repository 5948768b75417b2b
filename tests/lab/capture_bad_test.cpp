/*
 * capture_bad_test.cpp: captures that can't be used, or not all of: cut short,
 * broken, not Ethernet; folders that aren't for what leaves.
 */
#include "capture_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <iterator>
#include <random>
#include <sstream>

namespace
{

using lab_test::CaptureBytes;
using lab_test::CAPTURES;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

class CaptureBad : public lab_test::CaptureTest
{
protected:
    /** A frame that a switch drops at once, of a length. */
    static Bytes frame(std::size_t size) { return Bytes(size, 0x22); }
    std::filesystem::path file() const { return folder.path / "in.pcap"; }
    /** Why a text is no capture. */
    std::string refused(const std::string &text)
    {
        std::ofstream(file(), std::ios::binary) << text;
        return refusal({"Ethernet0", file(), folder.path / "out"});
    }
};

TEST_F(CaptureBad, SnappedFramesAreCountedAndNotTaken)
{
    EXPECT_EQ(text_of(play(CAPTURES / "wireshark-snapped.pcap")),
              "wireshark-snapped.pcap: 8 frames, 0 into Ethernet0\n"
              "  8 frames not taken: cut short by the capture, frame 1 the first\n"
              "\nNothing left the switch.\n");
}

TEST_F(CaptureBad, WhatIsBeforeTheCutGoesThrough)
{
    const auto result = play(CAPTURES / "cut-off.pcap");
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(result.frames, 4U);
    EXPECT_EQ(result.tally.frames(), 4U);
    EXPECT_THAT(text_of(result), HasSubstr("cut-off.pcap: 4 frames, all into Ethernet0\n"
                                           "  the file can't be read behind frame 4: truncated "
                                           "dump file"));
}

TEST_F(CaptureBad, AFileMayEndAnywhere)
{
    const std::string whole = CaptureBytes().frame(1, frame(60)).frame(2, frame(61)).text();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string text = whole.substr(0, size);
        std::ofstream(file(), std::ios::binary) << text;
        if (size < 24) {
            EXPECT_THROW(lab::packet::CaptureReader{file()}, lab::packet::CaptureError);
            continue;
        }
        lab::packet::CaptureReader reader(file());
        lab::packet::Captured captured;
        std::size_t frames = 0;
        while (reader.next(captured)) {
            EXPECT_TRUE(captured.is_whole());
            ++frames;
        }
        EXPECT_EQ(frames, (size >= 100 ? 1U : 0U) + (size >= 177 ? 1U : 0U)) << size;
        EXPECT_EQ(reader.broken().empty(), size == 24 || size == 100 || size == 177) << size;
    }
}

TEST_F(CaptureBad, BrokenLengths)
{
    struct Case {
        std::uint32_t stored;
        std::uint32_t length;
        std::uint64_t frames;
        std::uint64_t taken;
        bool ok;
    };
    // 60 bytes are there.
    for (const Case &each :
         {Case{60, 60, 1, 1, true}, Case{60, 59, 1, 0, true}, Case{60, 0xffffffff, 1, 0, true},
          Case{59, 60, 1, 0, false}, Case{0xffffffff, 60, 0, 0, false}, Case{61, 61, 0, 0, false},
          Case{0, 0, 1, 1, false}, Case{0, 60, 1, 0, false}}) {
        CaptureBytes bytes;
        bytes.record(1, each.stored, each.length, frame(60)).write(file());
        const auto result = play(file());
        EXPECT_EQ(result.frames, each.frames) << each.stored << " " << each.length;
        EXPECT_EQ(result.tally.frames(), each.taken) << each.stored << " " << each.length;
        EXPECT_EQ(result.ok(), each.ok) << each.stored << " " << each.length;
        std::filesystem::remove_all(folder.path / "out");
    }
}

TEST_F(CaptureBad, FramesOfEveryLength)
{
    CaptureBytes()
        .frame(1, frame(0))
        .frame(1, frame(13))
        .frame(1, frame(9600))
        .frame(1, frame(9601))
        .frame(1, frame(20000))
        .write(file());
    EXPECT_EQ(text_of(play(file())),
              "in.pcap: 5 frames, 3 into Ethernet0\n"
              "  2 frames not taken: longer than 9600 bytes, frame 4 the first\n"
              "\n"
              "FATE     FRAMES  FIRST  REASON\n"
              "dropped       2      1  too short to be a frame\n"
              "dropped       1      3  not routable: no IP packet\n"
              "\nNothing left the switch.\n");
}

TEST_F(CaptureBad, TimesThatGoBackAreTold)
{
    CaptureBytes().frame(9, frame(60)).frame(7, frame(60)).frame(10, frame(60)).write(file());
    EXPECT_THAT(text_of(play(file())),
                HasSubstr("in.pcap: 3 frames, all into Ethernet0\n"
                          "  1 frame earlier than one before: taken at the time of that one\n"));
}

TEST_F(CaptureBad, AnEmptyCapture)
{
    CaptureBytes().write(file());
    EXPECT_EQ(text_of(play(file())),
              "in.pcap: 0 frames, all into Ethernet0\n\nNothing left the switch.\n");
}

TEST_F(CaptureBad, JsonTellsWhatWasNotTaken)
{
    std::ostringstream out;
    print_json(play(CAPTURES / "wireshark-snapped.pcap"), out);
    const auto object = nlohmann::json::parse(out.str());
    EXPECT_EQ(object["taken"], 0);
    EXPECT_EQ(object["not_taken"],
              nlohmann::json::array(
                  {{{"reason", "cut short by the capture"}, {"frames", 8}, {"first", 1}}}));
}

TEST_F(CaptureBad, OnlyEthernet)
{
    const auto in = CAPTURES / "wireshark-cooked.pcap";
    EXPECT_EQ(refusal({"Ethernet0", in, folder.path / "out"}),
              in.string() + ": its frames are Linux cooked v1, not Ethernet: capture on one "
                            "Ethernet interface");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "out"));
}

TEST_F(CaptureBad, FilesThatAreNoCapture)
{
    EXPECT_THAT(refused("hello, this is a text and no capture at all"),
                HasSubstr("in.pcap: can't be read as pcap or pcapng: unknown file format"));
    EXPECT_THAT(refusal({"Ethernet0", folder.path / "none.pcap", folder.path / "out"}),
                HasSubstr("none.pcap: can't be read as pcap or pcapng: No such file"));
    EXPECT_THAT(refusal({"Ethernet0", folder.path, folder.path / "out"}),
                HasSubstr(": a folder, not a capture"));
    EXPECT_FALSE(std::filesystem::exists(folder.path / "out"));
}

TEST_F(CaptureBad, NothingIsOverwritten)
{
    play(CAPTURES / "scapy.pcap");
    const auto before = lab_test::frames_of(folder.path / "out/Ethernet4.pcap");
    EXPECT_THAT(refusal({"Ethernet0", CAPTURES / "dumpcap.pcapng", folder.path / "out"}),
                testing::AllOf(HasSubstr("out: the folder isn't empty (Ethernet"),
                               HasSubstr(": nothing is overwritten, so give an empty or a new "
                                         "one")));
    EXPECT_EQ(lab_test::frames_of(folder.path / "out/Ethernet4.pcap"), before);
}

TEST_F(CaptureBad, AFolderThatIsAFile)
{
    std::ofstream(folder.path / "out") << "text";
    EXPECT_THAT(refusal({"Ethernet0", CAPTURES / "scapy.pcap", folder.path / "out"}),
                HasSubstr("out: the folder can't be made: "));
}

TEST_F(CaptureBad, AnUnknownPort)
{
    EXPECT_EQ(refusal({"Ethernt0", CAPTURES / "scapy.pcap", folder.path / "out"}),
              "unknown port 'Ethernt0': did you mean 'Ethernet0'?");
}

TEST_F(CaptureBad, RandomBytesNeverMoreThanRefused)
{
    std::mt19937 random(20240229); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same every run
    std::ifstream source(CAPTURES / "scapy.pcapng", std::ios::binary);
    const std::string whole(std::istreambuf_iterator<char>(source), {});
    for (int round = 0; round < 30; ++round) {
        std::string text = whole;
        for (int i = 0; i < 4; ++i) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        const std::string why = refused(text);
        EXPECT_TRUE(why.empty() || why.find("in.pcap: ") != std::string::npos) << why;
        std::filesystem::remove_all(folder.path / "out");
    }
}

} // namespace
