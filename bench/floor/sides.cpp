/*
 * sides.cpp: see sides.h.
 */
#include "sides.h"

#include <algorithm>
#include <stdexcept>

namespace floor_bench
{

const void *objects[OBJECTS];
alignas(64) unsigned char scratch[SCRATCH_SIZE];

std::vector<MeasuredCycle> measured_cycles(null_platform::Chip chip)
{
    const FloorRequests &floor =
        chip == null_platform::Chip::trident2 ? floor_of_trident2 : floor_of_trident;
    std::vector<MeasuredCycle> all;
    std::size_t next = 0;
    for (const Cycle &cycle : cycles()) {
        all.push_back({&cycle, floor.first + next});
        for (const Request &request : cycle.requests) {
            if (next == floor.count || request.name != floor.first[next].name) {
                throw std::runtime_error(request.name + " has no straight calls");
            }
            ++next;
        }
    }
    return all;
}

void go_round(World &world, const MeasuredCycle &measured, Side side)
{
    for (std::size_t i = 0; i < measured.cycle->requests.size(); ++i) {
        make_request(world, measured, side, i);
        follow_up(world, measured, side, i);
    }
}

void prepare(World &world, const MeasuredCycle &measured)
{
    if (measured.cycle->before != nullptr) {
        measured.cycle->before(world);
    }
    for (int i = 0; i < ROUNDS_AHEAD; ++i) {
        go_round(world, measured, Side::library);
    }
    const std::vector<const void *> now = world.objects();
    std::copy_n(now.begin(), std::min(now.size(), OBJECTS), objects);
    for (int i = 0; i < ROUNDS_AHEAD; ++i) {
        go_round(world, measured, Side::floor);
    }
}

void finish(World &world, const MeasuredCycle &measured)
{
    if (measured.cycle->after != nullptr) {
        measured.cycle->after(world);
    }
}

} // namespace floor_bench
