/*
 * recorded_cycles.h: a cycle of requests recorded, once it has come to rest.
 */
#pragma once

#include "call_writer.h"
#include "requests.h"

#include <vector>

namespace floor_bench
{

/** How often a cycle is gone through before it is recorded or measured. */
inline constexpr int WARM_UPS = 3;

/** Goes through a cycle once. */
void run_once(World &world, const Cycle &cycle);

/**
 * Records a cycle. Its preparation is done and undone.
 *
 * @return the requests with their calls; throws std::runtime_error when a second time calls
 *         something else
 */
std::vector<RecordedRequest> recorded(World &world, const Cycle &cycle);

} // namespace floor_bench
