/*
 * command_line.cpp: see command_line.h.
 */
#include "commands/command_line.h"

#include "commands/default_routes.h"
#include "commands/run.h"
#include "commands/shell.h"
#include "commands/up.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
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
    UpOptions up;
    RunOptions run;
    DefaultRoutesOptions default_routes;
};

/** What all commands have. */
void add_switch_options(CLI::App &command, Parsed &parsed)
{
    command.add_option("--chip", parsed.chip, "The kind of chip: trident or trident2")
        ->check(CLI::IsMember(CHIPS))
        ->type_name("KIND")
        ->capture_default_str();
    command
        .add_option("--state", parsed.state_dir, "Keeps chip and persistent store in this folder")
        ->type_name("DIR");
}

CLI::App *add_up(CLI::App &app, Parsed &parsed)
{
    CLI::App *up = app.add_subcommand(
        "up", "Brings the routed interfaces of a configuration up and shows what the chip holds");
    up->add_option("config", parsed.config, "The switch's configuration, a config_db.json")
        ->required()
        ->type_name("CONFIG.json");
    add_switch_options(*up, parsed);
    up->add_flag("--json", parsed.up.json, "Prints one JSON object");
    up->add_flag("--calls", parsed.up.view.calls,
                 "Prints the platform calls under each interface, in order");
    up->add_flag("--trace", parsed.up.view.trace,
                 "Prints the library's messages under each interface, with their level");
    up->add_flag("--then-down", parsed.up.then_down,
                 "Takes everything down again and tells what was left behind");
    up->footer("Exit codes: 0 done (rows that are not taken are no failure), 1 refused, 2 usage.");
    return up;
}

CLI::App *add_run(CLI::App &app, Parsed &parsed)
{
    CLI::App *run = app.add_subcommand(
        "run", "Runs a script: one command a line, as in the shell; docs/commands.md has them");
    run->add_option("script", parsed.run.script, "The script, - for the standard input")
        ->required()
        ->type_name("SCRIPT");
    add_switch_options(*run, parsed);
    run->add_flag("--quiet", parsed.run.quiet, "Prints failures only");
    run->footer("Exit codes: 0 done, 1 an expectation that isn't met, a command that can't be\n"
                "done, or a refusal that no expectation accepts, 2 a line that makes no sense.");
    return run;
}

CLI::App *add_shell(CLI::App &app, Parsed &parsed)
{
    CLI::App *shell =
        app.add_subcommand("shell", "Takes commands one by one; 'help' there lists them");
    add_switch_options(*shell, parsed);
    shell->footer("Tab completes, the arrow keys bring earlier lines back, Ctrl-D ends it.");
    return shell;
}

CLI::App *add_default_routes(CLI::App &app, DefaultRoutesOptions &options)
{
    CLI::App *command = app.add_subcommand(
        "default-routes",
        "Writes the file of default routes that a fast restart reads, or shows one");
    command->add_option("routes", options.routes, "The routes; docs/restart.md has their form")
        ->type_name("FILE.json");
    command->add_option("out", options.out, "The file to write, for its owner only")
        ->type_name("OUT");
    CLI::Option *read = command->add_option("--read", options.read, "Shows this file as a table")
                            ->type_name("FILE")
                            ->excludes("routes", "out");
    command->add_flag("--json", options.json, "Shows it in the form that is read")->needs(read);
    command->add_flag("--force", options.force, "Replaces OUT")->excludes(read);
    command
        ->add_option("--config", options.config,
                     "Names of this configuration count beside the switch's own")
        ->type_name("CONFIG.json");
    command->callback([&options] {
        if (options.read.empty() && (options.routes.empty() || options.out.empty())) {
            throw CLI::RequiredError("FILE.json and OUT, or --read FILE,");
        }
    });
    command->footer("Exit codes: 0 done, 1 refused, 2 usage.");
    return command;
}

int run_up(const Parsed &parsed, const Terminal &terminal)
{
    UpOptions options = parsed.up;
    options.config = parsed.config;
    options.chip = CHIPS.at(parsed.chip);
    options.state_dir = parsed.state_dir;
    options.view.colour = terminal.colour;
    return up(options, terminal.out);
}

int run_run(const Parsed &parsed, const Terminal &terminal)
{
    RunOptions options = parsed.run;
    options.chip = CHIPS.at(parsed.chip);
    options.state_dir = parsed.state_dir;
    return run_script(options, terminal);
}

int run_shell(const Parsed &parsed, const Terminal &terminal)
{
    return shell({CHIPS.at(parsed.chip), parsed.state_dir}, terminal);
}

/** Runs a command; a failure is one line. */
int run_command(const std::function<int()> &command, const Terminal &terminal)
{
    try {
        const int code = command();
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
    const CLI::App *script = add_run(app, parsed);
    const CLI::App *typed = add_shell(app, parsed);
    const CLI::App *defaults = add_default_routes(app, parsed.default_routes);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error, terminal.out, terminal.err) == 0 ? EXIT_DONE : EXIT_USAGE;
    }
    return run_command(
        [&] {
            if (script->parsed()) {
                return run_run(parsed, terminal);
            }
            if (defaults->parsed()) {
                return default_routes(parsed.default_routes, terminal.out);
            }
            return typed->parsed() ? run_shell(parsed, terminal) : run_up(parsed, terminal);
        },
        terminal);
}

} // namespace lab::commands
