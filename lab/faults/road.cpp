/*
 * road.cpp: see road.h.
 */
#include "faults/road.h"

namespace lab::faults
{

World::World(const config::Description &config, const simswitch::Options &options)
    : config(config), hardware(options)
{
    // Where the program wraps the allocations, they are calls like any other.
    hardware.heap.tracking = true;
}

bool Again::done() const
{
    return gives_station ? request.code != l3lif::Layer::NO_STATION : request.code == 0;
}

} // namespace lab::faults
