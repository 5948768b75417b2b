/*
 * capture.cpp: a capture of any bytes: each frame that it gives is in the file, and all of them go
 * through a small switch.
 */
#include "expect.h"
#include "session_on_switch.h"

#include "faults/processes.h"
#include "packet/capture.h"
#include "packet/capture_file.h"
#include "session/errors.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{

namespace fs = std::filesystem;
namespace packet = lab::packet;

/** Reads all of it; how many frames there are. */
std::size_t count_frames(const fs::path &file, std::size_t size)
{
    packet::CaptureReader reader(file);
    packet::Captured captured;
    std::size_t frames = 0;
    std::size_t bytes = 0;
    while (reader.next(captured)) {
        ++frames;
        bytes += captured.bytes.size();
        fuzz::expect(bytes <= size, "a capture gives no more bytes than it has");
    }
    fuzz::expect_one_line(reader.broken());
    return frames;
}

void play(const fs::path &file, const fs::path &out)
{
    fuzz::StateOnSwitch on;
    const auto result = packet::play_capture(on.state, {"Ethernet0", file, out});
    std::ostringstream text;
    packet::print_text(result, text);
    packet::print_json(result, text);
    fuzz::expect_harmless(text.str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const lab::faults::Folder folder;
    const fs::path file = folder.path() / "in.pcap";
    const fs::path out = folder.path() / "out";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    try {
        if (count_frames(file, size) != 0) {
            play(file, out);
        }
    } catch (const packet::CaptureError &error) {
        fuzz::expect_one_line(error.what());
    }
    std::error_code error;
    fs::remove_all(out, error);
    return 0;
}
