/*
 * roads.cpp: see roads.h.
 */
#include "faults/roads.h"

#include "faults/address_steps.h"
#include "faults/interface_steps.h"
#include "faults/restart_roads.h"
#include "l3lif/plans.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace lab::faults
{

namespace
{

using l3lif::LifPlan;

void append(std::vector<Step> &steps, std::vector<Step> more)
{
    std::move(more.begin(), more.end(), std::back_inserter(steps));
}

/** The first plan of each kind. */
std::vector<LifPlan> one_of_each(const std::vector<LifPlan> &plans)
{
    std::vector<LifPlan> chosen;
    std::set<std::string> known;
    std::ranges::copy_if(plans, std::back_inserter(chosen), [&known](const LifPlan &plan) {
        return known.insert(kind_words(plan)).second;
    });
    return chosen;
}

void add_ups(const config::Description &config, const std::vector<LifPlan> &plans,
             std::vector<Step> &steps)
{
    steps.push_back(router_mac_step(config));
    append(steps, vlan_steps(config));
    for (const LifPlan &plan : plans) {
        steps.push_back(add_step(plan));
    }
    append(steps, pair_steps(config));
    append(steps, virtual_mac_steps(config, plans));
}

void add_changes(const std::vector<LifPlan> &plans, std::vector<Step> &steps)
{
    const auto chosen = one_of_each(plans);
    for (const LifPlan &plan : chosen) {
        append(steps, property_steps(plan));
    }
    append(steps, ipv6_steps());
    for (const LifPlan &plan : chosen) {
        append(steps, disable_steps(plan));
    }
}

void add_downs(const config::Description &config, const std::vector<LifPlan> &plans,
               std::vector<Step> &steps)
{
    append(steps, virtual_mac_removals(config, plans));
    append(steps, pair_removals(config));
    for (auto plan = plans.rbegin(); plan != plans.rend(); ++plan) {
        steps.push_back(delete_step(*plan, true));
    }
    for (const LifPlan &plan : plans) {
        steps.push_back(add_again_step(plan));
    }
    for (auto plan = plans.rbegin(); plan != plans.rend(); ++plan) {
        steps.push_back(delete_step(*plan, false));
    }
    steps.push_back(vlans_end_step());
    steps.push_back(router_mac_removal());
}

Road life(const config::Description &config, simswitch::chip::Kind chip)
{
    Road road{.name = "life", .chip = chip, .begin = [&config, chip] {
                  return std::make_unique<World>(config, simswitch::Options{.chip = chip});
              }};
    const auto plans = l3lif::plans_of(config);
    add_ups(config, plans, road.steps);
    add_changes(plans, road.steps);
    append(road.steps, port_steps(config, plans));
    add_downs(config, plans, road.steps);
    return road;
}

} // namespace

std::vector<Road> roads_of(const config::Description &config, simswitch::chip::Kind chip)
{
    std::vector<Road> roads;
    roads.push_back(life(config, chip));
    roads.push_back(fast_restart_road(config, chip));
    roads.push_back(restore_road(config, chip));
    return roads;
}

} // namespace lab::faults
