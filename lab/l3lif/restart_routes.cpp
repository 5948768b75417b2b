/*
 * restart_routes.cpp: see restart_routes.h.
 */
#include "l3lif/restart_routes.h"

#include "config/default_route_file.h"
#include "config/json_tree.h"
#include "services/pss_folder.h"

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <system_error>
#include <unistd.h>

namespace lab::l3lif
{

namespace
{

namespace fs = std::filesystem;

std::string bytes_of(const fs::path &file)
{
    std::error_code error;
    if (fs::is_directory(file, error) || access(file.c_str(), R_OK) != 0) {
        throw config::UnusableFile(
            fmt::format("{}: can't be read; 'rtif default-routes' writes one", file.string()));
    }
    return config::read_file(file);
}

} // namespace

fs::path default_routes_place()
{
    return fs::path(simswitch::services::PSS_FOLDER) / "default_route.txt";
}

void provide_default_routes(const fs::path &file)
{
    const std::string bytes = bytes_of(file);
    (void)config::parse_default_routes(bytes, file.string());
    const std::string &obstacle = simswitch::services::make_pss_folder_private();
    std::error_code error;
    const fs::path place = default_routes_place();
    if (!obstacle.empty() &&
        (fs::exists(place, error) || access(place.parent_path().c_str(), W_OK) != 0)) {
        throw std::runtime_error(
            fmt::format("{}: can't be put there for this process alone: {}; run as root, or allow "
                        "user namespaces",
                        place.string(), obstacle));
    }
    config::put_in_place(place, bytes, true);
}

} // namespace lab::l3lif
