/*
 * session_commands.cpp: the options of up, run, shell and dump. See command.h.
 */
#include "commands/command.h"

#include "commands/dump.h"
#include "commands/run.h"
#include "commands/shell.h"
#include "commands/up.h"

#include <memory>
#include <string>
#include <utility>

namespace lab::commands
{

namespace
{

/** What goes into every command here. */
struct SwitchWords {
    std::string chip = "trident";
    std::string state_dir = {};
};

void add_switch_options(CLI::App &command, SwitchWords &words)
{
    add_chip_option(command, words.chip);
    add_state_option(command, words.state_dir);
}

void add_record_option(CLI::App &command, std::string &file)
{
    command
        .add_option("--record", file,
                    "Writes every request, call and message into this file, for replay and diff")
        ->type_name("FILE")
        ->check([](const std::string &name) {
            return name.empty() ? std::string("the name of a file is wanted") : std::string();
        });
}

} // namespace

Command add_up(CLI::App &app)
{
    struct Parsed : SwitchWords {
        std::string config;
        std::string record = {};
        UpOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *up = app.add_subcommand(
        "up", "Brings the routed interfaces of a configuration up and shows what the chip holds");
    up->add_option("config", parsed->config, "The switch's configuration, a config_db.json")
        ->required()
        ->type_name("CONFIG.json");
    add_switch_options(*up, *parsed);
    up->add_flag("--json", parsed->options.json, "Prints one JSON object");
    up->add_flag("--calls", parsed->options.view.calls,
                 "Prints the platform calls under each interface, in order");
    up->add_flag("--trace", parsed->options.view.trace,
                 "Prints the library's messages under each interface, with their level");
    up->add_flag("--then-down", parsed->options.then_down,
                 "Takes everything down again and tells what was left behind");
    add_record_option(*up, parsed->record);
    up->footer("Exit codes: 0 done (rows that are not taken are no failure), 1 refused, 2 usage.");
    return {up, [parsed](const Terminal &terminal) {
                UpOptions options = parsed->options;
                options.config = parsed->config;
                options.chip = chip_kinds().at(parsed->chip);
                options.state_dir = parsed->state_dir;
                options.record = parsed->record;
                options.view.colour = terminal.colour;
                options.progress = terminal.progress;
                return commands::up(options, terminal.out);
            }};
}

Command add_run(CLI::App &app)
{
    struct Parsed : SwitchWords {
        RunOptions options;
        std::string record = {};
        std::string restarted = {};
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *run = app.add_subcommand(
        "run", "Runs a script: one command a line, as in the shell; docs/commands.md has them");
    run->add_option("script", parsed->options.script, "The script, - for the standard input")
        ->required()
        ->type_name("SCRIPT");
    add_switch_options(*run, *parsed);
    run->add_flag("--quiet", parsed->options.quiet, "Prints failures only");
    add_record_option(*run, parsed->record);
    // Only a process that takes the place of another one has it.
    run->add_option("--restarted", parsed->restarted)->group("");
    run->footer("Exit codes: 0 done, 1 an expectation that isn't met, a command that can't be\n"
                "done, or a refusal that no expectation accepts, 2 a line that makes no sense.");
    return {run, [parsed](const Terminal &terminal) {
                RunOptions options = parsed->options;
                options.chip = chip_kinds().at(parsed->chip);
                options.state_dir = parsed->state_dir;
                options.record = parsed->record;
                if (!parsed->restarted.empty()) {
                    options.restarted = Restarted::parse(parsed->restarted);
                }
                return run_script(options, terminal);
            }};
}

Command add_shell(CLI::App &app)
{
    struct Parsed : SwitchWords {
        std::string record = {};
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *shell =
        app.add_subcommand("shell", "Takes commands one by one; 'help' there lists them");
    add_switch_options(*shell, *parsed);
    add_record_option(*shell, parsed->record);
    shell->footer("Tab completes, the arrow keys bring earlier lines back, Ctrl-D ends it.");
    return {shell, [parsed](const Terminal &terminal) {
                return commands::shell(
                    {chip_kinds().at(parsed->chip), parsed->state_dir, parsed->record}, terminal);
            }};
}

Command add_dump(CLI::App &app)
{
    struct Parsed : SwitchWords {
        std::string config;
        DumpOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *dump = app.add_subcommand(
        "dump", "Prints the library's diagnostic dumps: of a port its virtual MACs, without a name "
                "the tables of interface numbers");
    dump->add_option("config", parsed->config, "The configuration that is brought up")
        ->type_name("CONFIG.json");
    dump->add_option("name", parsed->options.name, "The interface")->type_name("NAME");
    CLI::Option *chip = add_chip_option(*dump, parsed->chip);
    dump->add_option("--state", parsed->state_dir,
                     "In place of CONFIG.json: the state folder that an earlier run has left, "
                     "restored in a copy")
        ->type_name("DIR")
        ->excludes(chip);
    dump->add_flag("--json", parsed->options.json, "Prints one JSON object");
    dump->callback([parsed] {
        if (parsed->state_dir.empty() && parsed->config.empty()) {
            throw CLI::RequiredError("CONFIG.json, or --state DIR,");
        }
        if (parsed->state_dir.empty()) {
            return;
        }
        if (!parsed->options.name.empty()) {
            throw CLI::ValidationError("--state",
                                       "goes without CONFIG.json: the folder has its own");
        }
        // What stands alone beside a state folder is the interface.
        parsed->options.name = std::exchange(parsed->config, "");
    });
    dump->footer("Exit codes: 0 done, 1 refused, 2 usage.");
    return {dump, [parsed](const Terminal &terminal) {
                DumpOptions options = parsed->options;
                options.config = parsed->config;
                options.chip = chip_kinds().at(parsed->chip);
                options.state_dir = parsed->state_dir;
                return commands::dump(options, terminal);
            }};
}

} // namespace lab::commands
