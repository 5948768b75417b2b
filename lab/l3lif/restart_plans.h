/*
 * restart_plans.h: which interface a stored record is of: by the configuration,
 * or by what the record, the trunk map and the chip say. restart.h restores it.
 */
#pragma once

#include "l3lif/lif.h"

#include "services/store.h"
#include "switch.h"

#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lab::l3lif
{

/**
 * Whether a record is of a subinterface of the port-channel that it is stored
 * under. The library works on the port-channel's ifindex then, so that the
 * record stands in the place of the port-channel's own.
 */
bool is_channel_subinterface(const simswitch::services::StoredInterface &stored);

/** The plans of a configuration by what a record knows of its interface. */
class PlanIndex
{
public:
    /** @param plans  must outlive this, and stay as they are */
    explicit PlanIndex(const std::vector<LifPlan> &plans);

    /** The first plan that a record is of; null when none is. */
    const LifPlan *find(const simswitch::services::StoredInterface &stored) const;

private:
    std::unordered_map<std::uint32_t, const LifPlan *> by_ifindex_;
    std::unordered_map<std::uint32_t, const LifPlan *> subinterfaces_;           ///< by ifindex
    std::map<std::pair<std::uint32_t, std::uint16_t>, const LifPlan *> by_vlan_; ///< by main, VLAN
};

/** A plan from the record alone; a port-channel's members are those of its trunk. */
LifPlan plan_from_record(const simswitch::Switch &hardware,
                         const simswitch::services::StoredInterface &stored);

} // namespace lab::l3lif
