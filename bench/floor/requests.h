/*
 * requests.h: what is measured: requests to the library, in cycles after which the world is as
 * it was before.
 */
#pragma once

#include "world.h"

#include <string>
#include <vector>

namespace floor_bench
{

/** A request; it is measured from the call of the library to its return. */
struct Request {
    std::string name{};
    void (*run)(World &world) = nullptr;
    /** What the layer above does behind it, unmeasured, or null. */
    void (*then)(World &world) = nullptr;
};

/** Requests in an order that can be gone through again and again. */
struct Cycle {
    void (*before)(World &world) = nullptr; /**< once before the first time, or null */
    void (*after)(World &world) = nullptr;  /**< once after the last time, or null */
    std::vector<Request> requests{};
};

/** All cycles, the same in each process. */
const std::vector<Cycle> &cycles();

} // namespace floor_bench
