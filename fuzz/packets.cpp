/*
 * packets.cpp: frames of any bytes: through the pipeline of a chip that is programmed with
 * everything, where traffic and trace must agree, or through a small switch with its CPU.
 *
 * An input is a list of frames, each with its port, its length and what is put in order before it
 * goes: checksums that nobody finds by chance.
 */
#include "expect.h"
#include "frame_repair.h"
#include "input.h"
#include "session_on_switch.h"

#include "cpu/forwarder.h"

#include "chip/pipeline/pipeline.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace
{

namespace pipeline = simswitch::chip::pipeline;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t FRAMES_MAX = 16;
constexpr std::uint8_t TO_CPU_TOO = 1;
// What stands before a frame, in one byte.
constexpr std::uint8_t REPAIR = 1;
constexpr std::uint8_t WAIT = 2;
constexpr std::uint8_t PAD = 4;

/** A frame and how it is given. */
struct Given {
    int port;
    bool waits;
    Bytes bytes;
};

Given next_frame(fuzz::Input &input)
{
    const std::uint8_t how = input.byte();
    Given given{input.byte() % 112, (how & WAIT) != 0, {}};
    const auto bytes = input.bytes(input.byte());
    given.bytes.assign(bytes.begin(), bytes.end());
    if ((how & PAD) != 0) {
        given.bytes.resize(given.bytes.size() + input.number(2) % pipeline::FRAME_MAX);
    }
    if ((how & REPAIR) != 0) {
        fuzz::repair(given.bytes);
    }
    return given;
}

bool same(const pipeline::Result &left, const pipeline::Result &right)
{
    if (left.verdict != right.verdict || left.reason != right.reason || left.cpu != right.cpu ||
        left.cpu_reason != right.cpu_reason || left.ingress != right.ingress ||
        left.ingress_vlan != right.ingress_vlan || left.egress != right.egress) {
        return false;
    }
    for (int port = 0; port <= simswitch::chip::LAST_PORT; ++port) {
        Bytes mine(left.size_on(port));
        Bytes other(right.size_on(port));
        if (left.write(port, mine) != right.write(port, other) || mine != other) {
            return false;
        }
    }
    return true;
}

/** Frames through the pipeline alone, each as a trace and as traffic. */
void forward(fuzz::Input &input)
{
    static fuzz::SessionOnSwitch on(std::filesystem::path(RTIFHAL_SOURCE_DIR) / "examples");
    static auto &pipeline = []() -> pipeline::Pipeline & {
        on.up("packets.json");
        static pipeline::Pipeline made(on.hardware.chip);
        return made;
    }();
    static const auto traced = std::make_unique<pipeline::Result>();
    static const auto result = std::make_unique<pipeline::Result>();
    pipeline.l2().flush();
    for (std::size_t i = 0; i < FRAMES_MAX && !input.empty(); ++i) {
        const Given given = next_frame(input);
        pipeline::Trace trace;
        pipeline.trace(given.port, given.bytes, *traced, trace);
        pipeline.run(given.port, given.bytes, *result);
        fuzz::expect(same(*traced, *result), "a trace tells what happens to traffic");
        for (const auto &line : trace.text()) {
            fuzz::expect_one_line(line);
        }
    }
}

/** Frames through a switch with its CPU. What it sends comes back to it as if from a host. */
void take(fuzz::Input &input)
{
    fuzz::StateOnSwitch on;
    std::size_t sent = 0;
    lab::cpu::Forwarder forwarder(on.hardware, on.state.layer, on.state.routing, on.state.pipeline,
                                  [&sent](int /*port*/, std::span<const std::uint8_t> frame) {
                                      fuzz::expect(frame.size() >= 14 &&
                                                       frame.size() <= pipeline::FRAME_MAX + 4,
                                                   "what leaves is a frame");
                                      ++sent;
                                  });
    std::chrono::milliseconds now{1000};
    for (std::size_t i = 0; i < FRAMES_MAX && !input.empty(); ++i) {
        const Given given = next_frame(input);
        forwarder.take(given.port, given.bytes, now);
        now += std::chrono::milliseconds(given.waits ? 1500 : 1);
        forwarder.tick(now);
    }
    for (int i = 0; i < 100 && forwarder.next_due(); ++i) {
        now = *forwarder.next_due();
        forwarder.tick(now);
    }
    fuzz::expect(!forwarder.next_due(), "the CPU waits for nothing for ever");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    if ((input.byte() & TO_CPU_TOO) != 0) {
        take(input);
    } else {
        forward(input);
    }
    return 0;
}
