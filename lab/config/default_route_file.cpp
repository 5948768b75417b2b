/*
 * default_route_file.cpp: see default_route_file.h.
 *
 * The file has no magic, version or checksum; its size is all that can be
 * compared with what it says.
 */
#include "config/default_route_file.h"

#include "config/draft_file.h"
#include "config/json_tree.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <system_error>
#include <utility>

namespace lab::config
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t COUNT_BYTES = sizeof(std::uint32_t);

template <class... Args>
[[noreturn]] void unusable(fmt::format_string<Args...> format, Args &&...args)
{
    throw UnusableFile(fmt::format(format, std::forward<Args>(args)...));
}

std::size_t size_of_routes(std::uint32_t count)
{
    return COUNT_BYTES + std::size_t{count} * sizeof(def_route_rec_t);
}

/** Refuses a count that the size of the file contradicts. */
void check_size(std::uint32_t count, std::size_t size, std::string_view file)
{
    if (size == size_of_routes(count)) {
        return;
    }
    const std::uint32_t swapped = __builtin_bswap32(count);
    if (size == size_of_routes(swapped)) {
        unusable("{}: its numbers have the byte order of another machine; "
                 "write it on one like this",
                 file);
    }
    const std::string sizes = fmt::format("says {} routes, which are {} bytes, but has {}", count,
                                          size_of_routes(count), size);
    if (size < size_of_routes(count)) {
        unusable("{}: {}: it is cut off, or no file of default routes; write it again", file,
                 sizes);
    }
    unusable("{}: {}: something stands behind the last route, or it is no file of default routes; "
             "write it again",
             file, sizes);
}

/** Refuses a place where something is that must stay. */
void check_place(const fs::path &path, bool replace)
{
    std::error_code error;
    const auto status = fs::symlink_status(path, error);
    if (!fs::exists(status)) {
        return;
    }
    if (!fs::is_regular_file(status)) {
        unusable("{}: is {}; name a file", path.string(),
                 fs::is_directory(status) ? "a folder" : "no regular file, and is left alone");
    }
    if (!replace) {
        unusable("{}: is there already; --force replaces it", path.string());
    }
}

} // namespace

bcm_l3_egress_t egress_of(const def_route_path_t &path)
{
    bcm_l3_egress_t egress;
    static_assert(sizeof egress == sizeof path.egress);
    std::memcpy(&egress, path.egress, sizeof egress);
    return egress;
}

void set_egress(def_route_path_t &path, const bcm_l3_egress_t &egress)
{
    std::memcpy(path.egress, &egress, sizeof path.egress);
}

std::size_t count_paths(const DefaultRoutes &routes)
{
    std::size_t count = 0;
    for (const auto &route : routes) {
        count += route.paths;
    }
    return count;
}

std::string default_route_bytes(const DefaultRoutes &routes)
{
    const auto count = static_cast<std::uint32_t>(routes.size());
    std::string bytes(size_of_routes(count), '\0');
    std::memcpy(bytes.data(), &count, COUNT_BYTES);
    if (count != 0) {
        std::memcpy(bytes.data() + COUNT_BYTES, routes.data(), bytes.size() - COUNT_BYTES);
    }
    return bytes;
}

DefaultRoutes parse_default_routes(std::string_view bytes, std::string_view file)
{
    if (bytes.size() < COUNT_BYTES) {
        unusable("{}: has {} bytes, less than the count of routes at its beginning; write it again",
                 file, bytes.size());
    }
    std::uint32_t count = 0;
    std::memcpy(&count, bytes.data(), COUNT_BYTES);
    check_size(count, bytes.size(), file);
    if (count > DEFAULT_ROUTES_MAX) {
        unusable("{}: has {} routes, at most {} are read", file, count, DEFAULT_ROUTES_MAX);
    }
    DefaultRoutes routes(count);
    if (count != 0) {
        std::memcpy(routes.data(), bytes.data() + COUNT_BYTES, bytes.size() - COUNT_BYTES);
    }
    for (const auto &route : routes) {
        if (route.paths > RTIFHAL_DEF_ROUTE_PATHS) {
            unusable("{}: route {} says {} paths and has room for {}; write it again", file,
                     &route - routes.data() + 1, route.paths, RTIFHAL_DEF_ROUTE_PATHS);
        }
    }
    return routes;
}

void put_in_place(const fs::path &path, std::string_view bytes, bool replace)
{
    check_place(path, replace);
    DraftFile file(path, path.string());
    file.write_whole(bytes);
    file.take_place(replace);
}

} // namespace lab::config
