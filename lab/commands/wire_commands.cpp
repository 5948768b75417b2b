/*
 * wire_commands.cpp: the options of wire. See command.h.
 */
#include "commands/command.h"

#include "commands/wire.h"
#include "session/errors.h"

#include <memory>
#include <string>
#include <vector>

namespace lab::commands
{

namespace
{

constexpr double SECONDS_MAX = 1e6; // eleven days
constexpr double MILLISECONDS = 1000;

struct Parsed {
    std::string config;
    std::string chip = "trident";
    std::string state_dir;
    std::vector<std::string> ports;
    double seconds = 0;
    WireOptions options;
};

int run_parsed(const Parsed &parsed, const Terminal &terminal)
{
    WireOptions options = parsed.options;
    options.config = parsed.config;
    options.chip = chip_kinds().at(parsed.chip);
    options.state_dir = parsed.state_dir;
    if (parsed.seconds > 0) {
        options.lasts = std::chrono::milliseconds(
            static_cast<std::chrono::milliseconds::rep>(parsed.seconds * MILLISECONDS));
    }
    return wire(options, terminal);
}

} // namespace

Command add_wire(CLI::App &app)
{
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *wire =
        app.add_subcommand("wire", "Brings a configuration up and forwards between network "
                                   "interfaces of this "
                                   "machine, each standing for a port; docs/wire.md has more");
    wire->add_option("config", parsed->config, "The switch's configuration, a config_db.json")
        ->required()
        ->type_name("CONFIG.json");
    wire->add_option("--port", parsed->ports, "A port and the interface that it is on; repeatable")
        ->required()
        ->type_name("PORT=INTERFACE")
        ->allow_extra_args(false);
    add_chip_option(*wire, parsed->chip);
    add_state_option(*wire, parsed->state_dir);
    wire->add_flag("--ipv6", parsed->options.ipv6,
                   "IPv6 of the switch on also without an IPv6 address in the "
                   "configuration");
    wire->add_flag("--verbose", parsed->options.verbose, "Prints a line for each frame");
    wire->add_option("--seconds", parsed->seconds, "Ends after this time; else by Ctrl-C")
        ->check(CLI::Range(0.001, SECONDS_MAX))
        ->type_name("N");
    wire->add_flag("--json", parsed->options.json, "Prints one JSON object a line");
    wire->callback([parsed] {
        try {
            for (const std::string &text : parsed->ports) {
                parsed->options.ports.push_back(parse_binding(text));
            }
        } catch (const session::UsageError &error) {
            throw CLI::ValidationError(error.what());
        }
    });
    wire->footer("Exit codes: 0 ended by time, SIGINT or SIGTERM, 1 refused, or "
                 "all interfaces\n"
                 "gone, 2 usage. Frames of interfaces need CAP_NET_RAW.");
    return {wire, [parsed](const Terminal &terminal) { return run_parsed(*parsed, terminal); }};
}

} // namespace lab::commands
