/*
 * default_route_writer.h: default routes in their JSON form, one path a line.
 * default_route_reader.h reads it, and gives the same routes again.
 */
#pragma once

#include "config/default_route_file.h"
#include "config/default_route_names.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace lab::config
{

/** Paths behind those in use that hold something: how many are to be told. */
std::size_t spare_paths(const def_route_rec_t &route);

/** A port, module or trunk: a small number as it is, a large one, mostly a generic port, in hex. */
std::string number_text(int number);

/** Prints routes as a list of objects. */
void print_default_routes(const DefaultRoutes &routes, const RouteNames &names, std::ostream &out);

} // namespace lab::config
