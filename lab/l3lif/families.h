/*
 * families.h: the families of an interface's addresses that the chip doesn't
 * route yet, switched on. Adding a port opens its controls for IPv4 alone; the
 * layer above then sets the property.
 *
 * property_requests.h makes the requests, bring_up.h what comes before.
 */
#pragma once

#include "config/description.h"
#include "l3lif/layer.h"
#include "l3lif/request.h"

#include "switch.h"

#include <string>
#include <vector>

namespace lab::l3lif
{

/** A property that was set. */
struct OpenedFamily {
    std::string asked; ///< "set Ethernet0 ipv6 on"
    Request request;
};

/**
 * Sets the property of each family that an interface has addresses of and that
 * the chip doesn't route on it. Interfaces that aren't up are left alone.
 *
 * @param config    gives the addresses
 * @param layer     the interfaces, brought up
 * @param hardware  the switch that they are on
 * @return the requests in the order of the interfaces; none where all is open
 */
std::vector<OpenedFamily> open_families(const config::Description &config, Layer &layer,
                                        simswitch::Switch &hardware);

} // namespace lab::l3lif
