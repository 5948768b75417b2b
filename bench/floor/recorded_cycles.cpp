/*
 * recorded_cycles.cpp: see recorded_cycles.h.
 */
#include "recorded_cycles.h"

#include <stdexcept>

namespace floor_bench
{

namespace
{

std::vector<RecordedRequest> record_once(World &world, const Cycle &cycle)
{
    std::vector<RecordedRequest> requests;
    for (const Request &request : cycle.requests) {
        recording::begin();
        request.run(world);
        requests.push_back({request.name, recording::end()});
        if (request.then != nullptr) {
            request.then(world);
        }
    }
    return requests;
}

} // namespace

void run_once(World &world, const Cycle &cycle)
{
    for (const Request &request : cycle.requests) {
        request.run(world);
        if (request.then != nullptr) {
            request.then(world);
        }
    }
}

std::vector<RecordedRequest> recorded(World &world, const Cycle &cycle)
{
    if (cycle.before != nullptr) {
        cycle.before(world);
    }
    for (int i = 0; i < WARM_UPS; ++i) {
        run_once(world, cycle);
    }
    recording::know(world.objects());
    std::vector<RecordedRequest> first = record_once(world, cycle);
    const std::vector<RecordedRequest> second = record_once(world, cycle);
    for (std::size_t i = 0; i < first.size(); ++i) {
        const std::string parted = recording::difference(first[i].calls, second[i].calls);
        if (!parted.empty()) {
            throw std::runtime_error(first[i].name + ", a second time: " + parted);
        }
    }
    if (cycle.after != nullptr) {
        cycle.after(world);
    }
    return first;
}

} // namespace floor_bench
