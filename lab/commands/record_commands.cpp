/*
 * record_commands.cpp: the options of replay and diff. See command.h.
 */
#include "commands/command.h"

#include "commands/recordings.h"

#include <memory>
#include <string>

namespace lab::commands
{

namespace
{

constexpr const char *RECORD_EXIT_CODES =
    "Exit codes: 0 the same, 1 something differs, 2 a file that is no recording, or usage.";

} // namespace

Command add_replay(CLI::App &app)
{
    struct Parsed {
        std::string recording;
        std::string chip = {};
        ReplayOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *replay = app.add_subcommand(
        "replay", "Runs the requests of a recording again and shows the first difference");
    replay
        ->add_option("recording", parsed->recording,
                     "What up, run or shell has written with --record FILE")
        ->required()
        ->type_name("FILE");
    replay
        ->add_option("--chip", parsed->chip,
                     "The kind of chip, trident or trident2, in place of the recorded one")
        ->check(CLI::IsMember(chip_kinds()))
        ->type_name("KIND");
    replay->add_flag("--all", parsed->options.view.all,
                     "Prints a line for each request that differs");
    replay->footer(RECORD_EXIT_CODES);
    return {replay, [parsed](const Terminal &terminal) {
                ReplayOptions options = parsed->options;
                options.recording = parsed->recording;
                if (!parsed->chip.empty()) {
                    options.chip = chip_kinds().at(parsed->chip);
                }
                options.view.colour = terminal.colour;
                return commands::replay(options, terminal);
            }};
}

Command add_diff(CLI::App &app)
{
    struct Parsed {
        std::string before;
        std::string after;
        DiffOptions options;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *diff =
        app.add_subcommand("diff", "Compares two recordings request by request: of two chips, of "
                                   "two versions, of two configurations");
    diff->add_option("A", parsed->before, "What up, run or shell has written with --record FILE")
        ->required()
        ->type_name("FILE");
    diff->add_option("B", parsed->after, "Another recording")->required()->type_name("FILE");
    diff->add_flag("--summary", parsed->options.view.summary,
                   "Prints a line for each request that differs, and no more");
    CLI::Option *summary = diff->get_option("--summary");
    diff->add_option("--request", parsed->options.view.request,
                     "Prints the lines of this request alone, \"add Ethernet0\"")
        ->type_name("NAME")
        ->excludes(summary);
    diff->add_flag("--calls", parsed->options.compare.calls_only,
                   "Compares calls and results, and leaves messages out");
    diff->footer(RECORD_EXIT_CODES);
    return {diff, [parsed](const Terminal &terminal) {
                DiffOptions options = parsed->options;
                options.before = parsed->before;
                options.after = parsed->after;
                options.view.colour = terminal.colour;
                return commands::diff(options, terminal);
            }};
}

} // namespace lab::commands
