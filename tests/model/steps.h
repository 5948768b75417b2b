/*
 * steps.h: steps drawn at random, for every interface, VLAN and MAC of a configuration.
 */
#pragma once

#include "config/description.h"
#include "model/step.h"

#include <rapidcheck.h>

#include <vector>

namespace model_test
{

/** What may be drawn beside requests. */
struct Draw {
    bool faults = true;
    bool restarts = true;
};

/** Any number of steps. A list shrinks to shorter ones, a step with a fault to one without. */
rc::Gen<std::vector<Step>> any_steps(const lab::config::Description &config, const Draw &draw);

} // namespace model_test
