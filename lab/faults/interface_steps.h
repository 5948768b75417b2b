/*
 * interface_steps.h: the steps of a road on routed interfaces. roads.h puts
 * them into order.
 */
#pragma once

#include "faults/road.h"

#include "l3lif/lif.h"

#include <string>
#include <vector>

namespace lab::faults
{

/** "a port", "a subinterface of a port-channel": the kind of an interface in a step's name. */
std::string kind_words(const l3lif::LifPlan &plan);

/** Its first add. @param variant  "fast restart", or empty */
Step add_step(const l3lif::LifPlan &plan, const std::string &variant = "");
/** Its add after it was deleted with its number kept. */
Step add_again_step(const l3lif::LifPlan &plan);
/** Its delete. @param keep  its number stays for its next add */
Step delete_step(const l3lif::LifPlan &plan, bool keep);
/** Stops it from routing, and lets it route again. */
std::vector<Step> disable_steps(const l3lif::LifPlan &plan);
/** Changes each property, and changes it back; only a way back of its own is swept. */
std::vector<Step> property_steps(const l3lif::LifPlan &plan);

/**
 * Deletes an interface and adds it again, with what stands on it: its
 * subinterfaces, its virtual MACs, the private-VLAN pairs of its VLAN.
 */
std::vector<Again> rebuild(World &world, const std::string &name);

} // namespace lab::faults
