/*
 * growth_parts.h: what the files of growth_requests.h share: requests by what they are about.
 */
#pragma once

#include "growth_requests.h"

#include <array>

namespace bench
{

using Requests = std::vector<Request>;
using Interfaces = std::vector<Interface *>;

/** An interface that is up, and the name of its kind. */
struct Standing {
    const char *kind;
    Interface *interface;
};

/** Appends the add and the delete of interfaces that aren't up. */
void come_and_go(Requests &requests, Network &network, const std::string &kind,
                 const Interfaces &batch);

/** Appends add and delete of virtual MACs on an interface. @param first  number of the first MAC */
void add_virtual_macs(Requests &requests, const std::string &name, const Interface &interface,
                      std::uint32_t first);
void add_router_macs(Requests &requests);
/** Makes a VLAN a primary with one secondary, before its SVI comes up. */
void make_primary(std::uint16_t primary, std::uint16_t secondary);
/** Appends add and delete of pairs. @param first  VLAN of the first secondary */
void add_pairs(Requests &requests, std::uint16_t primary, std::uint16_t first);
Requests of_virtual_macs(Network &network, std::size_t count);
Requests of_pairs(Network &network, std::size_t count);

/** Appends every property of every kind, the class label, and the end of routing. */
void add_changes(Requests &requests, const std::array<Standing, 6> &standing);
/** Appends one property of a port, or of a port-channel, which its subinterfaces share. */
void add_port_change(Requests &requests, Interface &port);
void add_port_channel_change(Requests &requests, Interface &channel);
/** Appends the restore of each kind and of the numbers that are held back. */
void add_restores(Requests &requests, Network &network, const std::array<Standing, 6> &standing);
/** Appends the rebuild of two saved default routes over an interface. */
void add_default_routes(Requests &requests, std::uint32_t ifindex);

} // namespace bench
