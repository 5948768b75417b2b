/*
 * record_stream_test.cpp: a recording while it is written, and recordings of any
 * bytes.
 */
#include "record_run.h"

#include "record/recorder.h"
#include "support/load_time_state.h"

#include "config/address.h"
#include "l3lif/layer.h"

#include <gmock/gmock.h>

#include <random>

namespace
{

using lab::record::read_recording_text;
using lab::record::Recorder;
using lab::record::UnusableRecording;
using record_test::TUNNEL;
using ::testing::EndsWith;
using ::testing::HasSubstr;

constexpr lab::config::Mac STREAM_MAC = {2, 0, 0, 0, 0, 9};

/** A switch whose requests are recorded into a file. */
class RecordStream : public record_test::InFolder
{
protected:
    RecordStream() { rtifhal_test::reset_library(); }

    simswitch::Switch hardware;
};

TEST_F(RecordStream, EachRequestIsInTheFileAsSoonAsItIsDone)
{
    lab::record::RecordingFile file(folder / "some.rec", folder / "none.json");
    Recorder recorder(hardware, {}, file.out());
    EXPECT_THAT(read("some.rec"), EndsWith("\nconfiguration \nconfig\n"));
    lab::l3lif::Layer layer(hardware);
    layer.add_router_mac(STREAM_MAC);
    EXPECT_THAT(read("some.rec"),
                HasSubstr("\nrequest 1 add router MAC 02:00:00:00:00:09 = 1 (6 calls, 1 "
                          "messages)\n"));
    EXPECT_THAT(read("some.rec"), EndsWith("rmac (02:00:00:00:00:09) @ idx:1\n"));
    layer.remove_router_mac(1);
    EXPECT_THAT(read("some.rec"), HasSubstr("\nrequest 2 delete router MAC at station 1 = 0 ("));
}

TEST_F(RecordStream, NeedsNoMoreMemoryThanOneRequest)
{
    lab::l3lif::keep_errors_only(hardware);
    std::ostringstream out;
    {
        Recorder recorder(hardware, {}, out);
        lab::l3lif::Layer layer(hardware);
        for (int round = 0; round < 20; ++round) {
            layer.add_router_mac(STREAM_MAC);
            EXPECT_LE(hardware.journal.records().size(), 10U);
            EXPECT_TRUE(layer.router_mac().messages.empty());
            layer.remove_router_mac(1);
        }
        recorder.finish();
    }
    const auto recording = read_recording_text(out.str(), "some.rec");
    EXPECT_EQ(recording.requests.size(), 40U);
    EXPECT_EQ(recording.requests[38].lines, recording.requests[0].lines);
    EXPECT_THAT(std::string(recording.requests[38].lines.back()),
                HasSubstr("trace rtifhal_trident_rmac_add: "));
}

TEST_F(RecordStream, AFailureOfTheChipIsInItWithItsReason)
{
    std::ostringstream out;
    {
        Recorder recorder(hardware, {}, out);
        lab::l3lif::Layer layer(hardware);
        hardware.journal.arm({.function = "bcm_l2_station_add", .code = -6});
        layer.add_router_mac(STREAM_MAC);
    }
    EXPECT_THAT(out.str(), HasSubstr("\nrequest 1 add router MAC 02:00:00:00:00:09 = 65535 ("));
    EXPECT_THAT(out.str(), HasSubstr(" = -6  (injected)\n"));
    EXPECT_THAT(out.str(), HasSubstr("\nmessage 1.1 error rtifhal_trident_rmac_add: "));
    EXPECT_FALSE(read_recording_text(out.str(), "some.rec").is_complete);
}

TEST_F(RecordStream, WhenItIsOverNobodyIsWatched)
{
    std::ostringstream out;
    {
        const Recorder recorder(hardware, {}, out);
    }
    const std::string before = out.str();
    lab::l3lif::Layer layer(hardware);
    layer.add_router_mac(STREAM_MAC);
    EXPECT_EQ(out.str(), before);
}

TEST_F(RecordStream, AnyBytesAreReadOrRefusedInOneLine)
{
    write("tunnel.json", TUNNEL);
    ASSERT_EQ(rtif("up tunnel.json --record some.rec").code, 0);
    const std::string good = read("some.rec");
    std::mt19937 random(11); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bytes in every run
    constexpr std::string_view PIECES[] = {
        "\n",     "(",  ")",    " = ",  "\\",      "99999999999999999999",
        "config", "\0", "\xff", "end ", "call 1.", " messages)"};
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = good;
        for (std::size_t edits = 1 + random() % 3; edits > 0; --edits) {
            const std::size_t at = random() % text.size();
            text.replace(at, random() % 9, PIECES[random() % std::size(PIECES)]);
        }
        try {
            const auto recording = read_recording_text(text, "some.rec");
            ASSERT_LE(recording.requests.size(), 2U);
        } catch (const UnusableRecording &error) {
            ++refused;
            ASSERT_THAT(error.what(), ::testing::MatchesRegex("some\\.rec:[0-9]+: [^\n]+"));
        }
    }
    // Most edits break a line's number or its form; some are within a text.
    EXPECT_GT(refused, 500);
    EXPECT_LT(refused, 2900);
}

} // namespace
