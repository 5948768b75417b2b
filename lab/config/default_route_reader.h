/*
 * default_route_reader.h: reads default routes in their JSON form, strictly: a
 * saved next hop that nobody meant would take a VRF's traffic.
 *
 * default_route_writer.h makes the form, default_route_file.h the binary file.
 * docs/restart.md has the form for people.
 */
#pragma once

#include "config/default_route_file.h"
#include "config/default_route_names.h"

#include <string_view>

namespace lab::config
{

/**
 * Reads the JSON form.
 *
 * @param text   the file's text
 * @param file   the name that messages begin with
 * @param names  the names that interfaces, ports and VRFs may have
 * @throws UnusableFile for whatever isn't the form, with the route, the path
 *         and what was expected
 */
DefaultRoutes read_default_routes(std::string_view text, std::string_view file,
                                  const RouteNames &names);

} // namespace lab::config
