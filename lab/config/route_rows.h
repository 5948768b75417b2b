/*
 * route_rows.h: static routes, known hosts and static stations: rows of
 * STATIC_ROUTE, NEIGH and FDB. Beside it: interface_rows.h, vlan_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

#include <string>
#include <vector>

namespace lab::config
{

/**
 * Reads STATIC_ROUTE, NEIGH and FDB; VRFs, VLANs, interfaces and tunnels are
 * known by then.
 *
 * @param tables       the file
 * @param description  receives routes, neighbours, stations and skipped rows
 */
void read_routes(const Tables &tables, Description &description);

/**
 * Why a host can't be on the networks of an interface.
 *
 * @param interface  the interface
 * @param address    the host's address
 * @param routes     static routes; one to the interface alone makes its hosts neighbours
 * @return part of a sentence; empty when it can
 */
std::string host_problem(const RoutedInterface &interface, const IpAddress &address,
                         const std::vector<StaticRoute> &routes);

} // namespace lab::config
