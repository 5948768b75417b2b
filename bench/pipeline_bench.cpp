/*
 * pipeline_bench.cpp: how many frames a second the packet pipeline takes, by what
 * becomes of them, and what a trace costs beside them. All frames have 64 bytes.
 *
 * `allocs/frame` counts calls of operator new. It is 0 but for traces, or the
 * program ends with 1.
 */
#include "allocations.h"
#include "programmed_chip.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <vector>

namespace
{

namespace pipeline = simswitch::chip::pipeline;

using pipeline::Bytes;
using pipeline::ip_frame;
using pipeline::Reason;

constexpr std::size_t FLOWS = 1000;

bool went_wrong = false;

/** Frames that come in on a port, one after the other, and what is to become of each. */
struct Traffic {
    int port = bench::IN_PORT;
    Reason fate = Reason::routed;
    std::vector<Bytes> frames{};
};

Traffic one_flow(const std::string &destination, Reason fate = Reason::routed)
{
    return {.fate = fate, .frames = {ip_frame({.destination = destination, .size = 64})}};
}

/** A flow to each of the networks. */
Traffic over_all_routes()
{
    Traffic traffic;
    for (std::size_t flow = 0; flow < FLOWS; ++flow) {
        traffic.frames.push_back(
            ip_frame({.destination = fmt::format("10.{}.{}.9", flow / 256, flow % 256),
                      .source_port = static_cast<int>(flow),
                      .size = 64}));
    }
    return traffic;
}

/** Flows that share the paths of a group. */
Traffic over_paths()
{
    Traffic traffic;
    for (std::size_t flow = 0; flow < FLOWS; ++flow) {
        traffic.frames.push_back(ip_frame(
            {.destination = "11.0.0.9", .source_port = static_cast<int>(flow), .size = 64}));
    }
    return traffic;
}

Traffic routed_ip6()
{
    return {.frames = {
                ip_frame({.source = "2001:db8:1::2", .destination = "2001:db8::9", .size = 64})}};
}

/** Between two ports of a VLAN; to a known address or to all. */
Traffic in_a_vlan(const simswitch::chip::Mac &to, Reason fate)
{
    return {.port = bench::FIRST_BRIDGED_PORT,
            .fate = fate,
            .frames = {ip_frame({.to = to,
                                 .from = bench::station_mac(bench::FIRST_BRIDGED_PORT),
                                 .tags = {bench::BRIDGED_VLAN},
                                 .size = 64})}};
}

/** Takes a frame of the traffic after the other, `take` being one frame's work. */
template <class Take>
void measure(benchmark::State &state, const Traffic &traffic, bool may_allocate, Take take)
{
    pipeline::Result result;
    for (const Bytes &frame : traffic.frames) {
        take(traffic.port, frame, result);
        if (result.reason != traffic.fate) {
            went_wrong = true;
            state.SkipWithError(text(result.reason));
            return;
        }
    }
    std::size_t next = 0;
    const std::size_t before = simswitch::chip::pipeline::allocations();
    for (auto round : state) {
        take(traffic.port, traffic.frames[next], result);
        benchmark::DoNotOptimize(result.size);
        next = next + 1 == traffic.frames.size() ? 0 : next + 1;
    }
    const std::size_t allocated = simswitch::chip::pipeline::allocations() - before;
    went_wrong = went_wrong || (allocated != 0 && !may_allocate);
    const auto frames = static_cast<double>(state.iterations());
    state.counters["frames/s"] = benchmark::Counter(frames, benchmark::Counter::kIsRate);
    state.counters["allocs/frame"] = static_cast<double>(allocated) / frames;
}

void run(benchmark::State &state, const Traffic &traffic)
{
    bench::ProgrammedChip chip;
    measure(state, traffic, false, [&chip](int port, const Bytes &frame, pipeline::Result &result) {
        chip.pipeline().run(port, frame, result);
    });
}

void trace(benchmark::State &state, const Traffic &traffic)
{
    bench::ProgrammedChip chip;
    measure(state, traffic, true, [&chip](int port, const Bytes &frame, pipeline::Result &result) {
        pipeline::Trace trace;
        chip.pipeline().trace(port, frame, result, trace);
    });
}

BENCHMARK_CAPTURE(run, routed_one_flow, one_flow("10.0.0.9"));
BENCHMARK_CAPTURE(run, routed_1000_flows_1000_routes, over_all_routes());
BENCHMARK_CAPTURE(run, routed_1000_flows_8_paths, over_paths());
BENCHMARK_CAPTURE(run, routed_ip6, routed_ip6());
BENCHMARK_CAPTURE(run, routed_into_a_tunnel, one_flow("12.0.0.9"));
BENCHMARK_CAPTURE(run, bridged,
                  in_a_vlan(bench::station_mac(bench::FIRST_BRIDGED_PORT + 1), Reason::bridged));
BENCHMARK_CAPTURE(run, flooded_to_7_ports, in_a_vlan(pipeline::BROADCAST, Reason::flooded));
BENCHMARK_CAPTURE(run, dropped_no_route, one_flow("13.0.0.9", Reason::no_route));
BENCHMARK_CAPTURE(trace, routed_one_flow, one_flow("10.0.0.9"));
BENCHMARK_CAPTURE(trace, dropped_no_route, one_flow("13.0.0.9", Reason::no_route));

} // namespace

int main(int count, char **words)
{
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (went_wrong) {
        std::fputs("a frame met another fate than expected, or forwarding allocated\n", stderr);
    }
    return went_wrong ? 1 : 0;
}
