/*
 * plan.h: what the chip should hold for the addresses, neighbours and routes of
 * a switch, as its interfaces stand: egress objects, routes, tunnel initiators.
 * chip_writer.h writes it.
 */
#pragma once

#include "routing/chip_writer.h"
#include "routing/places.h"
#include "routing/records.h"
#include "routing/view.h"
#include "routing/ways.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab::routing
{

/** What a plan is made of. */
struct PlanInputs {
    const std::vector<InterfaceView> &interfaces;
    const std::vector<OwnAddress> &addresses;
    const std::vector<Neighbor> &neighbors;
    const std::vector<StaticRoute> &routes;
    const std::vector<config::Tunnel> &tunnels;
    const Ways &ways;
    const Places &places;
};

/** "neighbor 10.0.0.9 of Ethernet0": the name of a host's egress object. */
std::string neighbor_name(std::string_view interface, const config::IpAddress &address);

/** The key of a route in the chip. @param vrf  1..65535 */
simswitch::chip::RouteKey route_key(std::uint16_t vrf, const config::Prefix &prefix);

/**
 * Makes the plan.
 *
 * @param inputs    what there is
 * @param problems  receives a sentence for each that can't be planned
 */
ChipPlan make_plan(const PlanInputs &inputs, std::vector<std::string> &problems);

} // namespace lab::routing
