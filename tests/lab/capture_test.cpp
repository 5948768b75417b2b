/*
 * capture_test.cpp: captures of scapy and of Wireshark's tools sent through a
 * switch: what leaves, when, and what is told of the rest. capture_bad_test.cpp
 * has what can't be used.
 */
#include "capture_run.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace
{

using lab_test::CAPTURES;
using lab_test::frames_of;
using Capture = lab_test::CaptureTest;

/** The time of the first frame of those that scapy made. */
constexpr std::int64_t BEGIN = 1'700'000'000'000'000'000;

const std::string FATES = "FATE     FRAMES  FIRST  REASON\n"
                          "sent          3      2  routed\n"
                          "to CPU        1      1  ARP on a routed interface\n"
                          "to CPU        1      4  its TTL ends here\n"
                          "dropped       1      7  no VLAN translation, and the port drops what "
                          "misses\n"
                          "dropped       1      6  not routable: its destination MAC is no "
                          "station's\n"
                          "dropped       1      5  no route to its destination\n"
                          "\n"
                          "PORT       FRAMES  BYTES  FILE\n"
                          "Ethernet0       2    133  out/Ethernet0.pcap\n"
                          "Ethernet4       3    157  out/Ethernet4.pcap\n";

TEST_F(Capture, SummaryTellsEveryFate)
{
    EXPECT_EQ(text_of(play(CAPTURES / "scapy.pcap")),
              "scapy.pcap: 8 frames, all into Ethernet0\n\n" + FATES);
}

TEST_F(Capture, AllFormsOfACaptureMeanTheSame)
{
    for (const std::string name :
         {"scapy-nanoseconds.pcap", "scapy-big-endian.pcap", "scapy.pcapng", "wireshark.pcapng"}) {
        EXPECT_EQ(text_of(play(CAPTURES / name)),
                  fmt::format("{}: 8 frames, all into Ethernet0\n\n{}", name, FATES));
        std::filesystem::remove_all(folder.path / "out");
    }
}

TEST_F(Capture, WhatDumpcapSawOfALinuxHost)
{
    EXPECT_EQ(text_of(play(CAPTURES / "dumpcap.pcapng")),
              "dumpcap.pcapng: 5 frames, all into Ethernet0\n\n"
              "FATE     FRAMES  FIRST  REASON\n"
              "sent          4      1  routed\n"
              "dropped       1      5  no route to its destination\n"
              "\n"
              "PORT       FRAMES  BYTES  FILE\n"
              "Ethernet4       4    338  out/Ethernet4.pcap\n");
}

TEST_F(Capture, WhatText2pcapWrote)
{
    const auto result = play(CAPTURES / "wireshark-text2pcap.pcapng");
    EXPECT_EQ(result.tally.out().at(2), (lab::packet::Traffic{2, 92}));
}

TEST_F(Capture, FramesLeaveAtTheirOwnTimesAndRouted)
{
    play(CAPTURES / "scapy.pcap");
    const auto in = frames_of(CAPTURES / "scapy.pcap");
    const auto out = frames_of(folder.path / "out/Ethernet4.pcap");
    ASSERT_EQ(out.size(), 3U);
    const std::vector<std::size_t> routed = {1, 2, 7};
    for (std::size_t i = 0; i < out.size(); ++i) {
        auto expected = in.at(routed[i]);
        const std::vector<std::uint8_t> macs = {2, 0, 0, 0, 0x0b, 9, 2, 0, 0, 0, 0x0b, 1};
        std::copy(macs.begin(), macs.end(), expected.bytes.begin());
        simswitch::chip::pipeline::decrement_ttl(std::span(expected.bytes).subspan(14));
        EXPECT_EQ(out[i], expected) << i;
    }
}

TEST_F(Capture, NanosecondsStay)
{
    play(CAPTURES / "scapy-nanoseconds.pcap");
    const auto out = frames_of(folder.path / "out/Ethernet4.pcap");
    ASSERT_EQ(out.size(), 3U);
    EXPECT_EQ(out[0].nanoseconds, BEGIN + 1'000'500);
    EXPECT_EQ(out[2].nanoseconds, BEGIN + 7'003'500);
}

TEST_F(Capture, MicrosecondsStayMicroseconds)
{
    play(CAPTURES / "scapy.pcap");
    std::ifstream file(folder.path / "out/Ethernet4.pcap", std::ios::binary);
    std::string magic(4, ' ');
    file.read(magic.data(), 4);
    EXPECT_EQ(magic, "\xd4\xc3\xb2\xa1");
}

TEST_F(Capture, ASecondCaptureOfWhatLeftGoesOn)
{
    play(CAPTURES / "scapy.pcap");
    const lab::packet::CaptureOptions options{"Ethernet4", folder.path / "out/Ethernet4.pcap",
                                              folder.path / "again"};
    // Its destination MAC is the host's, not the switch's.
    const auto result = lab::packet::play_capture(state, options);
    EXPECT_EQ(text_of(result), "out/Ethernet4.pcap: 3 frames, all into Ethernet4\n\n"
                               "FATE     FRAMES  FIRST  REASON\n"
                               "dropped       3      1  not routable: its destination MAC is no "
                               "station's\n"
                               "\nNothing left the switch.\n");
}

TEST_F(Capture, AnUnknownNeighbourIsAskedForInTheCapturesTime)
{
    lab::session::run_neighbor(state, {"del", "Ethernet4", "10.0.1.9"});
    play(CAPTURES / "wireshark-text2pcap.pcapng");
    const auto in = frames_of(CAPTURES / "wireshark-text2pcap.pcapng");
    const auto asked = frames_of(folder.path / "out/Ethernet4.pcap");
    std::vector<std::int64_t> seconds;
    for (const auto &frame : asked) {
        EXPECT_EQ(frame.bytes.at(12) << 8 | frame.bytes.at(13), 0x0806);
        seconds.push_back((frame.nanoseconds - in.front().nanoseconds) / 1'000'000'000);
    }
    EXPECT_EQ(seconds, (std::vector<std::int64_t>{0, 1, 2}));
    // Then it is told to the senders, when the last question is a second old.
    const auto told = frames_of(folder.path / "out/Ethernet0.pcap");
    ASSERT_FALSE(told.empty());
    EXPECT_EQ((told.back().nanoseconds - in.front().nanoseconds) / 1'000'000'000, 3);
}

TEST_F(Capture, PortsWithoutANameHaveTheirNumber)
{
    EXPECT_EQ(lab::packet::file_name("Ethernet4"), "Ethernet4.pcap");
    EXPECT_EQ(lab::packet::file_name("Ethernet-BP0"), "Ethernet-BP0.pcap");
    EXPECT_EQ(lab::packet::file_name("17"), "port17.pcap");
    EXPECT_EQ(lab::packet::file_name("../a/b c"), "___a_b_c.pcap");
}

TEST_F(Capture, JsonHasAll)
{
    std::ostringstream out;
    print_json(play(CAPTURES / "scapy.pcap"), out);
    const auto object = nlohmann::json::parse(out.str());
    EXPECT_EQ(object["port"], "Ethernet0");
    EXPECT_EQ(object["frames"], 8);
    EXPECT_EQ(object["taken"], 8);
    EXPECT_EQ(object["not_taken"], nlohmann::json::array());
    EXPECT_EQ(object["broken"], nullptr);
    EXPECT_EQ(object["fates"].size(), 6U);
    EXPECT_EQ(
        object["fates"][0],
        (nlohmann::json{{"fate", "sent"}, {"reason", "routed"}, {"frames", 3}, {"first", 2}}));
    EXPECT_EQ(object["out"][1],
              (nlohmann::json{{"port", "Ethernet4"},
                              {"frames", 3},
                              {"bytes", 157},
                              {"file", (folder.path / "out/Ethernet4.pcap").string()}}));
}

} // namespace
