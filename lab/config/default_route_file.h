/*
 * default_route_file.h: the binary file of default routes that the library
 * reads at the first interface of a fast restart: its bytes, and how it is put
 * in place.
 *
 * default_route_reader.h makes routes of the JSON form, default_route_writer.h
 * the JSON form of routes.
 */
#pragma once

#include "rtifhal_types.h"

#include <sdk/l3.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace lab::config
{

/** The most routes that are read or written: both families of 512 VRFs. */
inline constexpr std::size_t DEFAULT_ROUTES_MAX = 1024;

/** Saved default routes as they stand in the file. */
using DefaultRoutes = std::vector<def_route_rec_t>;

/** The egress object whose image a path holds. */
bcm_l3_egress_t egress_of(const def_route_path_t &path);
/** Puts the image of an egress object into a path. */
void set_egress(def_route_path_t &path, const bcm_l3_egress_t &egress);
/** The paths of all routes together. */
std::size_t count_paths(const DefaultRoutes &routes);

/**
 * The file's bytes: the count in the byte order of this machine, then the
 * routes.
 *
 * @param routes  at most DEFAULT_ROUTES_MAX, each with at most 64 paths
 */
std::string default_route_bytes(const DefaultRoutes &routes);

/**
 * Takes a file's bytes apart.
 *
 * @param bytes  the whole file
 * @param file   the name that messages begin with
 * @throws UnusableFile when its count and its size don't agree, or a count is
 *         larger than what there is room for
 */
DefaultRoutes parse_default_routes(std::string_view bytes, std::string_view file);

/**
 * Puts a file in place whole: it is written under another name in the same
 * folder, for its owner only, and renamed. A failure leaves nothing behind.
 *
 * @param path     the file
 * @param bytes    what it shall hold
 * @param replace  whether it may take the place of a regular file
 * @throws UnusableFile when something is there that can't be replaced, or the
 *         file can't be written
 */
void put_in_place(const std::filesystem::path &path, std::string_view bytes, bool replace);

} // namespace lab::config
