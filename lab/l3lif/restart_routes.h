/*
 * restart_routes.h: the file of default routes where the library looks for it
 * on a fast restart. config/default_route_file.h has the file itself.
 */
#pragma once

#include <filesystem>

namespace lab::l3lif
{

/** Where the library looks. */
std::filesystem::path default_routes_place();

/**
 * Puts a copy of a file of default routes where the library looks for it, in a
 * folder that only this process sees. The file itself stays.
 *
 * @param file  as `rtif default-routes` writes it
 * @throws config::UnusableFile when it can't be read or is no such file
 * @throws std::runtime_error when the machine gives this process no such folder
 */
void provide_default_routes(const std::filesystem::path &file);

} // namespace lab::l3lif
