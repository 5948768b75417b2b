/*
 * command_line.cpp: see command_line.h.
 */
#include "commands/command_line.h"

#include "commands/check.h"
#include "commands/default_routes.h"
#include "commands/dump.h"
#include "commands/restart.h"
#include "commands/run.h"
#include "commands/shell.h"
#include "commands/up.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace lab::commands
{

namespace
{

using simswitch::chip::Kind;

const std::map<std::string, Kind> CHIPS = {{"trident", Kind::trident},
                                           {"trident2", Kind::trident2}};

const std::map<std::string, l3lif::RestartMode> MODES = {{"restore", l3lif::RestartMode::restore},
                                                         {"fast", l3lif::RestartMode::fast},
                                                         {"cold", l3lif::RestartMode::cold}};

/** What the command line gives, as it is parsed. */
struct Parsed {
    std::string config;
    std::string chip = "trident";
    std::string state_dir;
    UpOptions up;
    RunOptions run;
    DefaultRoutesOptions default_routes;
    std::string default_routes_file;
    std::string mode;
    RestartOptions restart;
    CheckOptions check;
    DumpOptions dump;
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

/** The folder of an earlier run. */
void add_saved_state(CLI::App &command, Parsed &parsed)
{
    command
        .add_option("--state", parsed.state_dir, "The state folder that an earlier run has left")
        ->required()
        ->type_name("DIR");
}

CLI::App *add_restart(CLI::App &app, Parsed &parsed)
{
    CLI::App *restart = app.add_subcommand(
        "restart",
        "Starts the forwarding process again on a state folder; docs/restart.md has more");
    add_saved_state(*restart, parsed);
    CLI::Option *mode =
        restart->add_option("--mode", parsed.mode, "The kind of start: restore, fast or cold")
            ->required()
            ->check(CLI::IsMember(MODES))
            ->type_name("MODE");
    restart
        ->add_option("--config", parsed.config,
                     "The configuration, in place of the one in the state folder")
        ->type_name("CONFIG.json");
    restart
        ->add_option("--default-routes", parsed.default_routes_file,
                     "fast: the file of default routes, as 'rtif default-routes' writes it")
        ->type_name("FILE")
        ->needs(mode);
    restart->add_flag("--then-up", parsed.restart.then_up,
                      "restore: then brings up what the configuration has and the store had not");
    restart->add_flag("--json", parsed.restart.json, "Prints one JSON object");
    restart->add_flag("--calls", parsed.restart.view.calls,
                      "Prints the platform calls under each interface, in order");
    restart->add_flag("--trace", parsed.restart.view.trace,
                      "Prints the library's messages under each interface, with their level");
    restart->callback([&parsed] {
        if (!parsed.default_routes_file.empty() && parsed.mode != "fast") {
            throw CLI::ValidationError("--default-routes", "is for --mode fast");
        }
        if (parsed.restart.then_up && parsed.mode != "restore") {
            throw CLI::ValidationError("--then-up", "is for --mode restore");
        }
    });
    restart->footer("Exit codes: 0 done, 1 refused or failed, 2 usage.");
    return restart;
}

CLI::App *add_check(CLI::App &app, Parsed &parsed)
{
    CLI::App *check = app.add_subcommand(
        "check", "Compares what store, chip and library have of each other, and changes nothing");
    add_saved_state(*check, parsed);
    check->add_flag("--json", parsed.check.json, "Prints one JSON object");
    check->footer("Exit codes: 0 no difference, 1 differences or refused, 2 usage.");
    return check;
}

CLI::App *add_dump(CLI::App &app, Parsed &parsed)
{
    CLI::App *dump = app.add_subcommand(
        "dump", "Prints the library's diagnostic dumps: of a port its virtual MACs, without a name "
                "the tables of interface numbers");
    dump->add_option("config", parsed.config, "The configuration that is brought up")
        ->type_name("CONFIG.json");
    dump->add_option("name", parsed.dump.name, "The interface")->type_name("NAME");
    CLI::Option *chip = dump->add_option("--chip", parsed.chip, "The kind of chip")
                            ->check(CLI::IsMember(CHIPS))
                            ->type_name("KIND")
                            ->capture_default_str();
    dump->add_option("--state", parsed.state_dir,
                     "In place of CONFIG.json: the state folder that an earlier run has left, "
                     "restored in a copy")
        ->type_name("DIR")
        ->excludes(chip);
    dump->add_flag("--json", parsed.dump.json, "Prints one JSON object");
    dump->callback([&parsed] {
        if (parsed.state_dir.empty() && parsed.config.empty()) {
            throw CLI::RequiredError("CONFIG.json, or --state DIR,");
        }
        if (parsed.state_dir.empty()) {
            return;
        }
        if (!parsed.dump.name.empty()) {
            throw CLI::ValidationError("--state",
                                       "goes without CONFIG.json: the folder has its own");
        }
        // What stands alone beside a state folder is the interface.
        parsed.dump.name = std::exchange(parsed.config, "");
    });
    dump->footer("Exit codes: 0 done, 1 refused, 2 usage.");
    return dump;
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

int run_restart(const Parsed &parsed, const Terminal &terminal)
{
    RestartOptions options = parsed.restart;
    options.state_dir = parsed.state_dir;
    options.mode = MODES.at(parsed.mode);
    options.config = parsed.config;
    options.default_routes = parsed.default_routes_file;
    options.view.colour = terminal.colour;
    return restart(options, terminal.out);
}

int run_check(const Parsed &parsed, const Terminal &terminal)
{
    CheckOptions options = parsed.check;
    options.state_dir = parsed.state_dir;
    return check(options, terminal.out);
}

int run_dump(const Parsed &parsed, const Terminal &terminal)
{
    DumpOptions options = parsed.dump;
    options.config = parsed.config;
    options.chip = CHIPS.at(parsed.chip);
    options.state_dir = parsed.state_dir;
    return dump(options, terminal);
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
    const CLI::App *again = add_restart(app, parsed);
    const CLI::App *checked = add_check(app, parsed);
    const CLI::App *dumped = add_dump(app, parsed);
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
            if (again->parsed()) {
                return run_restart(parsed, terminal);
            }
            if (checked->parsed()) {
                return run_check(parsed, terminal);
            }
            if (dumped->parsed()) {
                return run_dump(parsed, terminal);
            }
            return typed->parsed() ? run_shell(parsed, terminal) : run_up(parsed, terminal);
        },
        terminal);
}

} // namespace lab::commands
