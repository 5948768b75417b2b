/*
 * restart_plans.h: which interface a stored record is of: by the configuration,
 * or by what the record, the trunk map and the chip say. restart.h restores it.
 */
#pragma once

#include "l3lif/lif.h"

#include "services/store.h"
#include "switch.h"

#include <vector>

namespace lab::l3lif
{

/**
 * Whether a record is of a subinterface of the port-channel that it is stored
 * under. The library works on the port-channel's ifindex then, so that the
 * record stands in the place of the port-channel's own.
 */
bool is_channel_subinterface(const simswitch::services::StoredInterface &stored);

/** The plan among those of a configuration that a record is of; null when none is. */
const LifPlan *find_plan(const std::vector<LifPlan> &plans,
                         const simswitch::services::StoredInterface &stored);

/** A plan from the record alone; a port-channel's members are those of its trunk. */
LifPlan plan_from_record(const simswitch::Switch &hardware,
                         const simswitch::services::StoredInterface &stored);

} // namespace lab::l3lif
