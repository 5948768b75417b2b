/*
 * command_line.cpp: see command_line.h.
 */
#include "commands/command_line.h"

#include "commands/up.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <map>
#include <ostream>
#include <string>

namespace lab::commands
{

namespace
{

using simswitch::chip::Kind;

const std::map<std::string, Kind> CHIPS = {{"trident", Kind::trident},
                                           {"trident2", Kind::trident2}};

/** What the command line gives, as it is parsed. */
struct Parsed {
    std::string config;
    std::string chip = "trident";
    std::string state_dir;
    UpOptions options;
};

CLI::App *add_up(CLI::App &app, Parsed &parsed)
{
    CLI::App *up = app.add_subcommand(
        "up", "Brings the routed interfaces of a configuration up and shows what the chip holds");
    up->add_option("config", parsed.config, "The switch's configuration, a config_db.json")
        ->required()
        ->type_name("CONFIG.json");
    up->add_option("--chip", parsed.chip, "The kind of chip: trident or trident2")
        ->check(CLI::IsMember(CHIPS))
        ->type_name("KIND")
        ->capture_default_str();
    up->add_flag("--json", parsed.options.json, "Prints one JSON object");
    up->add_flag("--calls", parsed.options.view.calls,
                 "Prints the platform calls under each interface, in order");
    up->add_flag("--trace", parsed.options.view.trace,
                 "Prints the library's messages under each interface, with their level");
    up->add_option("--state", parsed.state_dir, "Keeps the persistent store in this folder")
        ->type_name("DIR");
    up->add_flag("--then-down", parsed.options.then_down,
                 "Takes everything down again and tells what was left behind");
    up->footer("Exit codes: 0 done (rows that are not taken are no failure), 1 refused, 2 usage.");
    return up;
}

/** Runs a command; a failure is one line. */
int run_up(const Parsed &parsed, const Terminal &terminal)
{
    UpOptions options = parsed.options;
    options.config = parsed.config;
    options.chip = CHIPS.at(parsed.chip);
    options.state_dir = parsed.state_dir;
    options.view.colour = terminal.colour;
    try {
        const int code = up(options, terminal.out);
        if (!terminal.out.flush()) {
            terminal.err << "rtif: the output cannot be written\n";
            return EXIT_REFUSED;
        }
        return code;
    } catch (const std::exception &error) {
        terminal.err << error.what() << '\n';
        return EXIT_REFUSED;
    }
}

} // namespace

int run(int argc, const char *const *argv, const Terminal &terminal)
{
    CLI::App app("rtif: routed interfaces on an embedded switch", "rtif");
    app.set_version_flag("--version", "rtif " RTIF_VERSION);
    app.require_subcommand(1);
    Parsed parsed;
    add_up(app, parsed);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error, terminal.out, terminal.err) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    return run_up(parsed, terminal);
}

} // namespace lab::commands
