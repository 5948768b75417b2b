/*
 * default_routes.h: the command `rtif default-routes`: writes the file of
 * default routes that a fast restart reads, and shows one.
 */
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>

namespace lab::commands
{

/** What the user asked for. */
struct DefaultRoutesOptions {
    std::string routes = {}; ///< the JSON form that is to be written
    std::string out = {};    ///< the binary file that is written
    std::string read = {};   ///< the binary file that is shown; empty: one is written
    std::string config = {}; ///< the configuration whose names count; empty for none
    bool json = false;       ///< shows it in the JSON form
    bool force = false;      ///< replaces a file
};

/**
 * Runs the command.
 *
 * @param options  what was asked for
 * @param out      receives what is shown
 * @return 0
 * @throws config::UnusableFile when a file can't be read, makes no sense or
 *         can't be written
 */
int default_routes(const DefaultRoutesOptions &options, std::ostream &out);

} // namespace lab::commands
