/*
 * capture_run.h: captures sent through the switch of examples/ping.json, and
 * files of captured frames made byte by byte.
 */
#pragma once

#include "packet/capture.h"
#include "session/state.h"
#include "session/verbs.h"
#include "session_run.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lab_test
{

inline const std::filesystem::path CAPTURES =
    std::filesystem::path(RTIFHAL_SOURCE_DIR) / "tests/lab/captures";

/** A frame that was read from a capture. */
struct FrameRead {
    std::int64_t nanoseconds; ///< since 1970
    std::vector<std::uint8_t> bytes;

    bool operator==(const FrameRead &) const = default;
};

/** All frames of a capture. */
inline std::vector<FrameRead> frames_of(const std::filesystem::path &path)
{
    lab::packet::CaptureReader reader(path);
    std::vector<FrameRead> frames;
    lab::packet::Captured captured;
    while (reader.next(captured)) {
        frames.push_back({captured.time.count(), {captured.bytes.begin(), captured.bytes.end()}});
    }
    EXPECT_EQ(reader.broken(), "");
    return frames;
}

/** A capture in the old form, little-endian, written byte by byte. */
class CaptureBytes
{
public:
    CaptureBytes()
    {
        add32(0xa1b2c3d4);
        add32(0x00040002); // version 2.4
        add32(0);
        add32(0);
        add32(0x40000);
        add32(1); // Ethernet
    }
    /** Adds a record. @param stored  the length that it says it has stored */
    CaptureBytes &record(std::uint32_t second, std::uint32_t stored, std::uint32_t length,
                         const std::vector<std::uint8_t> &bytes)
    {
        add32(second);
        add32(0);
        add32(stored);
        add32(length);
        text_.append(bytes.begin(), bytes.end());
        return *this;
    }
    /** Adds a frame that is all there. */
    CaptureBytes &frame(std::uint32_t second, const std::vector<std::uint8_t> &bytes)
    {
        const auto size = static_cast<std::uint32_t>(bytes.size());
        return record(second, size, size, bytes);
    }
    const std::string &text() const { return text_; }
    std::filesystem::path write(const std::filesystem::path &path) const
    {
        std::ofstream(path, std::ios::binary) << text_;
        return path;
    }

private:
    void add32(std::uint32_t value)
    {
        for (int shift = 0; shift < 32; shift += 8) {
            text_ += static_cast<char>(value >> shift & 0xff);
        }
    }
    std::string text_;
};

/** The switch of examples/ping.json with a neighbour on each of Ethernet0 and Ethernet4. */
class CaptureTest : public ::testing::Test
{
protected:
    CaptureTest()
        : hardware((rtifhal_test::reset_library(), simswitch::Options{})), state{hardware,
                                                                                 {},
                                                                                 EXAMPLES}
    {
        lab::session::run_up(state, {"ping.json", "open"});
        lab::session::run_ipv6(state, {"on"});
        know("Ethernet0", "10.0.0.9", "02:00:00:00:0a:09");
        know("Ethernet0", "2001:db8::9", "02:00:00:00:0a:09");
        know("Ethernet4", "10.0.1.9", "02:00:00:00:0b:09");
        know("Ethernet4", "2001:db8:0:1::9", "02:00:00:00:0b:09");
    }

    void know(const std::string &interface, const std::string &address, const std::string &mac)
    {
        lab::session::run_neighbor(state, {"add", interface, address, mac});
    }
    /** Sends a capture into Ethernet0; what leaves is in folder/out. */
    lab::packet::CaptureResult play(const std::filesystem::path &in)
    {
        return lab::packet::play_capture(state, {"Ethernet0", in, folder.path / "out"});
    }
    /** Why a capture can't be sent; empty when it can. */
    std::string refusal(const lab::packet::CaptureOptions &options)
    {
        try {
            lab::packet::play_capture(state, options);
        } catch (const std::exception &error) {
            return error.what();
        }
        return "";
    }
    /** A report without the paths, which differ from run to run. */
    std::string text_of(const lab::packet::CaptureResult &result) const
    {
        std::ostringstream out;
        print_text(result, out);
        std::string text = out.str();
        for (const std::string &path : {folder.path.string() + "/", CAPTURES.string() + "/"}) {
            for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path)) {
                text.erase(at, path.size());
            }
        }
        return text;
    }

    simswitch::Switch hardware;
    lab::session::State state;
    Folder folder;
};

} // namespace lab_test
