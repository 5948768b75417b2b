/*
 * faults.cpp: see faults.h.
 */
#include "commands/faults.h"

#include "commands/command.h"
#include "config/reader.h"
#include "config/shown.h"
#include "faults/report.h"
#include "session/errors.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <memory>
#include <ostream>
#include <sstream>

namespace lab::commands
{

namespace
{

constexpr int LAST_CODE = -99;
constexpr int MAX_JOBS = 64;

/** What `rtif sweep` is given. */
struct Words {
    std::string chip = "both";
    std::string codes = {};
    FaultsOptions options = {};
};

FaultsOptions options_of(const Words &words, const Terminal &terminal)
{
    FaultsOptions options = words.options;
    if (words.chip != "both") {
        options.sweep.chips = {chip_kinds().at(words.chip)};
    }
    if (!words.codes.empty()) {
        options.sweep.codes = parse_codes(words.codes);
    }
    options.sweep.progress = terminal.colour && !options.json;
    return options;
}

void check_codes(const std::string &codes)
{
    try {
        if (!codes.empty()) {
            parse_codes(codes);
        }
    } catch (const session::UsageError &error) {
        throw CLI::ValidationError("--codes", error.what());
    }
}

} // namespace

std::vector<int> parse_codes(const std::string &text)
{
    std::vector<int> codes;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');) {
        int code = 0;
        const char *end = word.data() + word.size();
        const auto read = std::from_chars(word.data(), end, code);
        if (read.ec != std::errc() || read.ptr != end || code >= 0 || code < LAST_CODE) {
            throw session::UsageError(fmt::format(
                "'{}' is no code that a call fails with: give numbers from -1 to {} with commas "
                "between them, such as -1,-6",
                word, LAST_CODE));
        }
        codes.push_back(code);
    }
    if (codes.empty()) {
        throw session::UsageError("no code is given: give numbers such as -1,-6");
    }
    return codes;
}

int faults(const FaultsOptions &options, std::ostream &out)
{
    const config::Description config = config::read_config(options.config);
    const faults::SweepResult result = faults::sweep(config, options.sweep);
    const auto print = options.json ? faults::print_json : faults::print_text;
    print(result, options.config.string(), out);
    return result.broken() == 0 ? EXIT_DONE : EXIT_REFUSED;
}

Command add_faults(CLI::App &app)
{
    const auto words = std::make_shared<Words>();
    CLI::App *command = app.add_subcommand(
        "sweep",
        "Lets every platform call of every request fail, and tells what each failure means");
    command->add_option("config", words->options.config, "The switch's configuration")
        ->required()
        ->type_name("CONFIG.json");
    command->add_option("--chip", words->chip, "The kind of chip: trident, trident2 or both")
        ->check(CLI::IsMember({"trident", "trident2", "both"}))
        ->type_name("KIND")
        ->capture_default_str();
    command
        ->add_option("--request", words->options.sweep.request,
                     "Only this request (\"add Ethernet0\") or kind of request (\"add a port\")")
        ->type_name("NAME");
    command
        ->add_option("--codes", words->codes, "What the calls fail with; without it -1,-4,-6,-7,-8")
        ->type_name("CODES");
    command->add_flag(
        "--quick", words->options.sweep.quick,
        "Of each kind of request the first call of each function, once, with one code");
    command->add_flag("--json", words->options.json, "Prints one JSON object");
    command->add_option("--jobs", words->options.sweep.jobs, "Processes side by side")
        ->check(CLI::Range(1, MAX_JOBS))
        ->type_name("N")
        ->capture_default_str();
    command->callback([words] { check_codes(words->codes); });
    command->footer("Exit codes: 0 all holds, 1 something breaks or failed, 2 usage.");
    return {command, [words](const Terminal &terminal) {
                try {
                    return faults(options_of(*words, terminal), terminal.out);
                } catch (const session::UsageError &error) {
                    terminal.err << config::harmless_lines(error.what()) << '\n';
                    return EXIT_USAGE;
                }
            }};
}

} // namespace lab::commands
