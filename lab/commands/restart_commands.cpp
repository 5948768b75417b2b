/*
 * restart_commands.cpp: the options of default-routes, restart and check. See
 * command.h.
 */
#include "commands/command.h"

#include "commands/check.h"
#include "commands/default_routes.h"
#include "commands/restart.h"

#include <map>
#include <memory>
#include <string>

namespace lab::commands
{

namespace
{

const std::map<std::string, l3lif::RestartMode> MODES = {{"restore", l3lif::RestartMode::restore},
                                                         {"fast", l3lif::RestartMode::fast},
                                                         {"cold", l3lif::RestartMode::cold}};

/** The folder of an earlier run. */
void add_saved_state(CLI::App &command, std::string &state_dir)
{
    command.add_option("--state", state_dir, "The state folder that an earlier run has left")
        ->required()
        ->type_name("DIR");
}

/** What `rtif restart` is given. */
struct RestartWords {
    std::string state_dir = {};
    std::string mode = {};
    std::string config = {};
    std::string default_routes = {};
    RestartOptions options = {};
};

void check_words(const RestartWords &words)
{
    if (!words.default_routes.empty() && words.mode != "fast") {
        throw CLI::ValidationError("--default-routes", "is for --mode fast");
    }
    if (words.options.then_up && words.mode != "restore") {
        throw CLI::ValidationError("--then-up", "is for --mode restore");
    }
}

} // namespace

Command add_restart(CLI::App &app)
{
    const auto parsed = std::make_shared<RestartWords>();
    CLI::App *restart = app.add_subcommand(
        "restart",
        "Starts the forwarding process again on a state folder; docs/restart.md has more");
    add_saved_state(*restart, parsed->state_dir);
    CLI::Option *mode =
        restart->add_option("--mode", parsed->mode, "The kind of start: restore, fast or cold")
            ->required()
            ->check(CLI::IsMember(MODES))
            ->type_name("MODE");
    restart
        ->add_option("--config", parsed->config,
                     "The configuration, in place of the one in the state folder")
        ->type_name("CONFIG.json");
    restart
        ->add_option("--default-routes", parsed->default_routes,
                     "fast: the file of default routes, as 'rtif default-routes' writes it")
        ->type_name("FILE")
        ->needs(mode);
    restart->add_flag("--then-up", parsed->options.then_up,
                      "restore: then brings up what the configuration has and the store had not");
    restart->add_flag("--json", parsed->options.json, "Prints one JSON object");
    restart->add_flag("--calls", parsed->options.view.calls,
                      "Prints the platform calls under each interface, in order");
    restart->add_flag("--trace", parsed->options.view.trace,
                      "Prints the library's messages under each interface, with their level");
    restart->callback([parsed] { check_words(*parsed); });
    restart->footer("Exit codes: 0 done, 1 refused or failed, 2 usage.");
    return {restart, [parsed](const Terminal &terminal) {
                RestartOptions options = parsed->options;
                options.state_dir = parsed->state_dir;
                options.mode = MODES.at(parsed->mode);
                options.config = parsed->config;
                options.default_routes = parsed->default_routes;
                options.view.colour = terminal.colour;
                options.progress = terminal.progress;
                return commands::restart(options, terminal.out);
            }};
}

Command add_check(CLI::App &app)
{
    struct Parsed {
        std::string state_dir;
        CheckOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *check = app.add_subcommand(
        "check", "Compares what store, chip and library have of each other, and changes nothing");
    add_saved_state(*check, parsed->state_dir);
    check->add_flag("--json", parsed->options.json, "Prints one JSON object");
    check->footer("Exit codes: 0 no difference, 1 differences or refused, 2 usage.");
    return {check, [parsed](const Terminal &terminal) {
                CheckOptions options = parsed->options;
                options.state_dir = parsed->state_dir;
                return commands::check(options, terminal.out);
            }};
}

Command add_default_routes(CLI::App &app)
{
    const auto options = std::make_shared<DefaultRoutesOptions>();
    CLI::App *command = app.add_subcommand(
        "default-routes",
        "Writes the file of default routes that a fast restart reads, or shows one");
    command->add_option("routes", options->routes, "The routes; docs/restart.md has their form")
        ->type_name("FILE.json");
    command->add_option("out", options->out, "The file to write, for its owner only")
        ->type_name("OUT");
    CLI::Option *read = command->add_option("--read", options->read, "Shows this file as a table")
                            ->type_name("FILE")
                            ->excludes("routes", "out");
    command->add_flag("--json", options->json, "Shows it in the form that is read")->needs(read);
    command->add_flag("--force", options->force, "Replaces OUT")->excludes(read);
    command
        ->add_option("--config", options->config,
                     "Names of this configuration count beside the switch's own")
        ->type_name("CONFIG.json");
    command->callback([options] {
        if (options->read.empty() && (options->routes.empty() || options->out.empty())) {
            throw CLI::RequiredError("FILE.json and OUT, or --read FILE,");
        }
    });
    command->footer("Exit codes: 0 done, 1 refused, 2 usage.");
    return {command,
            [options](const Terminal &terminal) { return default_routes(*options, terminal.out); }};
}

} // namespace lab::commands
