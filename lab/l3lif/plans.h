/*
 * plans.h: what a configuration gives the layer above to bring up: each
 * interface with its numbers in the switch. layer.h takes the plans one by one.
 */
#pragma once

#include "config/description.h"
#include "l3lif/lif.h"

#include <vector>

namespace lab::l3lif
{

/**
 * The plans of all interfaces of supported kinds in the order of bringing up:
 * ports, port-channels, their subinterfaces, tunnels.
 */
std::vector<LifPlan> plans_of(const config::Description &description);

} // namespace lab::l3lif
