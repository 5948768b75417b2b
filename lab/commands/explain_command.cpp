/*
 * explain_command.cpp: see explain_command.h. The options stand here too.
 */
#include "commands/explain_command.h"

#include "commands/command.h"
#include "commands/looked_at.h"
#include "config/shown.h"
#include "explain/explain.h"
#include "explain/report.h"
#include "l3lif/restart_state.h"
#include "session/errors.h"
#include "session/state.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <memory>
#include <ostream>
#include <string>

namespace lab::commands
{

namespace
{

int print_finding(const session::State &state, const ExplainOptions &options,
                  const Terminal &terminal)
{
    const explain::Finding finding = explain::explain(state, options.kind, options.number);
    if (options.json) {
        terminal.out << explain::json_of(finding);
        return finding.found ? EXIT_DONE : EXIT_REFUSED;
    }
    if (!finding.found) {
        fmt::print(terminal.err, "{}\n", config::harmless(finding.title));
        return EXIT_REFUSED;
    }
    terminal.out << explain::text_of(finding);
    return EXIT_DONE;
}

int explain_saved(const ExplainOptions &options, const Terminal &terminal)
{
    const l3lif::SavedCopy copy(options.state_dir);
    const auto hardware = copy.open();
    session::State state{*hardware};
    restore_layer(state, options.state_dir);
    return print_finding(state, options, terminal);
}

int explain_config(const ExplainOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip});
    session::State state{hardware};
    const bool up = bring_up_open(state, options.config, terminal);
    const int code = print_finding(state, options, terminal);
    return up ? code : EXIT_REFUSED;
}

} // namespace

int explain_number(const ExplainOptions &options, const Terminal &terminal)
{
    try {
        explain::check_words(options.kind, options.number);
        return options.state_dir.empty() ? explain_config(options, terminal)
                                         : explain_saved(options, terminal);
    } catch (const session::UsageError &error) {
        fmt::print(terminal.err, "{}\n", config::harmless_lines(error.what()));
        return EXIT_USAGE;
    }
}

Command add_explain(CLI::App &app)
{
    struct Parsed {
        std::string config;
        std::string state_dir;
        std::string chip = "trident";
        ExplainOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *explain = app.add_subcommand(
        "explain", "Tells what a number of the chip stands for, who holds it since which request, "
                   "and what depends on it");
    explain
        ->add_option(
            "kind", parsed->options.kind,
            fmt::format("The kind of number: {}", fmt::join(explain::subject_words(), ", ")))
        ->required()
        ->type_name("KIND");
    explain->add_option("number", parsed->options.number, "The number")->required()->type_name("N");
    explain->add_option("config", parsed->config, "The configuration that is brought up")
        ->type_name("CONFIG.json");
    CLI::Option *chip = add_chip_option(*explain, parsed->chip);
    explain
        ->add_option("--state", parsed->state_dir,
                     "In place of CONFIG.json: the state folder that an earlier run has left, "
                     "looked at in a copy")
        ->type_name("DIR")
        ->excludes(chip);
    explain->add_flag("--json", parsed->options.json, "Prints one JSON object");
    explain->callback([parsed] {
        if (parsed->state_dir.empty() && parsed->config.empty()) {
            throw CLI::RequiredError("CONFIG.json, or --state DIR,");
        }
        if (!parsed->state_dir.empty() && !parsed->config.empty()) {
            throw CLI::ValidationError("--state",
                                       "goes without CONFIG.json: the folder has its own");
        }
    });
    explain->footer(
        "CONFIG.json is brought up with the families of its addresses open and with its "
        "routes and\nhosts, as `up CONFIG.json open` of a session does, not as "
        "`rtif up`, which opens less.\nExit codes: 0 done, 1 a number that stands for nothing, or "
        "refused, 2 usage.");
    return {explain, [parsed](const Terminal &terminal) {
                ExplainOptions options = parsed->options;
                options.config = parsed->config;
                options.chip = chip_kinds().at(parsed->chip);
                options.state_dir = parsed->state_dir;
                return explain_number(options, terminal);
            }};
}

} // namespace lab::commands
