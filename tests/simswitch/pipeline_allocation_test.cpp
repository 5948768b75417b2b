/*
 * pipeline_allocation_test.cpp: forwarding allocates nothing. Every allocation of
 * the program is counted, but under a sanitizer, which has its own operators and
 * needs them.
 */
#include "allocations.h"
#include "pipeline_chip.h"

#ifndef __SANITIZE_ADDRESS__

namespace simswitch::chip::pipeline
{

using PipelineAllocation = PipelineTest;

TEST_F(PipelineAllocation, TenThousandFramesAllocateNothing)
{
    router_mac();
    routed_port(5, 7);
    routed_port(6, 8);
    route("10.9.0.0/16", next_hop(8, 6));
    svi(200, 12, {0, 10, 11, 12});
    subinterface(module_port(0, 5), {5}, 100, 9);
    const std::array<std::pair<int, Bytes>, 6> frames = {
        std::pair(5, ip_frame({.size = 64})),
        std::pair(5, ip_frame({.tags = {100}})),
        std::pair(5, ip_frame({.destination = "10.10.0.1"})),
        std::pair(5, plain_frame(TYPE_ARP, {.to = BROADCAST})),
        std::pair(10, plain_frame(0x1234, {.to = OTHER_MAC, .tags = {200}})),
        std::pair(11, plain_frame(0x1234, {.to = HOST_MAC, .from = OTHER_MAC, .tags = {200}}))};
    pipeline.run(5, frames[0].second, result);
    Bytes moving = plain_frame(0x1234, {.to = OTHER_MAC, .tags = {200}});
    const std::size_t before = allocations();
    std::size_t sent = 0;
    for (std::size_t i = 0; i < 10000; ++i) {
        moving[10] = static_cast<std::uint8_t>(i >> 8);
        moving[11] = static_cast<std::uint8_t>(i);
        const auto &[port, frame] = frames[i % frames.size()];
        pipeline.run(port, frame, result);
        sent += result.verdict == Verdict::sent ? 1 : 0;
        pipeline.run(12, moving, result);
    }
    EXPECT_EQ(allocations() - before, 0U);
    EXPECT_EQ(sent, 6666U);
    EXPECT_EQ(pipeline.l2().size(), pipeline.l2().limit());
}

} // namespace simswitch::chip::pipeline

#endif
