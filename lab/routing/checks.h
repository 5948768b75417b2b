/*
 * checks.h: whether a neighbour or a static route that somebody asks for makes
 * sense on this switch. routing.h asks before it takes one over.
 */
#pragma once

#include "routing/records.h"

#include "config/description.h"
#include "l3lif/layer.h"

#include "chip/pipeline/l2_table.h"

#include <vector>

namespace lab::routing
{

/** What is checked against. */
struct Scenery {
    const config::Description &config;
    const l3lif::Layer &layer;
    const simswitch::chip::pipeline::L2Table &l2;
};

/**
 * Checks a neighbour.
 *
 * @param routes  the static routes; one to an interface alone makes its hosts neighbours
 * @throws UnknownName, Error
 */
void check_neighbor(const Scenery &scenery, const std::vector<StaticRoute> &routes,
                    const Neighbor &neighbor);

/** Checks a static route, of whose prefix the bits behind the length are 0. @throws as above */
void check_route(const Scenery &scenery, const StaticRoute &route);

} // namespace lab::routing
