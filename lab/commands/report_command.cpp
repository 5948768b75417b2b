/*
 * report_command.cpp: see report_command.h. The options stand here too.
 */
#include "commands/report_command.h"

#include "commands/command.h"
#include "commands/up.h"
#include "config/reader.h"
#include "config/shown.h"
#include "l3lif/plans.h"
#include "l3lif/restart.h"
#include "l3lif/restart_state.h"
#include "page/document.h"
#include "page/gather.h"
#include "page/kept_extras.h"
#include "page/page_file.h"
#include "page/samples.h"
#include "report/text.h"
#include "session/state.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lab::commands
{

namespace
{

namespace fs = std::filesystem;

/** What is wrong with a number of calls; or nothing. */
std::string calls_problem(std::string &word)
{
    std::size_t number = 0;
    const char *end = word.data() + word.size();
    const auto read = std::from_chars(word.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number <= REPORT_CALLS_MAX
               ? ""
               : fmt::format("{} is no number of calls; 0 to {} are taken", word, REPORT_CALLS_MAX);
}

/** What is wrong with the name of a file; or nothing. */
std::string name_problem(std::string &word)
{
    return word.empty() ? "is empty; name a file for the page" : "";
}

/** Refuses to write over what the page is made of. */
void check_out(const ReportOptions &options)
{
    std::error_code error;
    if (fs::equivalent(options.out, options.config, error)) {
        throw std::runtime_error(fmt::format("{}: is the configuration itself; name another file "
                                             "for the page",
                                             options.out.string()));
    }
    const fs::path place = page::page_place(options.out);
    const fs::path folder = place.has_parent_path() ? place.parent_path() : ".";
    if (!options.state_dir.empty() && fs::equivalent(folder, options.state_dir, error)) {
        throw std::runtime_error(fmt::format("{}: is in the state folder, which isn't changed; "
                                             "name a file elsewhere",
                                             options.out.string()));
    }
}

std::string page_size_text(std::size_t bytes)
{
    constexpr double KILO = 1000;
    const auto size = static_cast<double>(bytes);
    return size < KILO * KILO ? fmt::format("{:.0f} kB", size / KILO)
                              : fmt::format("{:.1f} MB", size / (KILO * KILO));
}

int finish_page(const ReportOptions &options, const page::Page &page, const Terminal &terminal)
{
    const std::string document = page::document_of(page);
    page::write_page(options.out, document);
    std::size_t up = 0;
    for (const page::InterfaceLines &lines : page.interfaces) {
        up += lines.state == "up" ? 1U : 0U;
    }
    const std::size_t failed = page.interfaces.size() - up;
    fmt::print(terminal.out, "{}: {}, {} up, {} not; {}\n", config::harmless(options.out.string()),
               report::counted(page.interfaces.size(), "interface"), up, failed,
               page_size_text(document.size()));
    if (page.without_calls != 0) {
        fmt::print(
            terminal.out,
            "the calls of {} are left out: the page holds {}; --calls takes another number\n",
            report::counted(page.without_calls, "interface"),
            report::counted(page.call_limit, "call"));
    }
    return failed == 0 && page.failed_requests == 0 ? EXIT_DONE : EXIT_REFUSED;
}

int report_config(const ReportOptions &options, const Terminal &terminal)
{
    simswitch::Switch hardware({.chip = options.chip});
    hardware.chip.track_authors();
    session::State state{hardware};
    state.config = config::read_config(options.config);
    const page::Requests requests = page::bring_up(state);
    const auto result = result_of(hardware, *state.config, state.layer);
    page::Page page = page::gather(state, result, &requests, options.calls);
    page::add_samples(state, page);
    return finish_page(options, page, terminal);
}

/** Makes what the configuration has and the store hasn't, which is down, and sorts all as it. */
void make_the_rest(session::State &state)
{
    const auto plans = l3lif::plans_of(*state.config);
    for (const l3lif::LifPlan &plan : plans) {
        if (state.layer.routed().find(plan.name) == nullptr) {
            state.layer.routed().make(plan);
        }
    }
    state.layer.routed().sort_as(plans);
}

/**
 * A subinterface of a port-channel may have lost its record to that of another one, which is stored
 * in the same place. The chip has it all the same; what is missing is the library's number alone.
 */
bool is_whole_in_chip(const simswitch::chip::Chip &chip, const report::InterfaceResult &result)
{
    const l3lif::LifPlan &plan = result.interface->lif->plan();
    const l3lif::HardwareView &view = result.view;
    const simswitch::chip::Vlan *vlan = chip.vlans.find(plan.vlan);
    return plan.kind == config::Kind::subinterface && plan.trunk != 0 &&
           result.interface->lif->iif() == 0 && view.has_interface && vlan != nullptr &&
           chip.l3_ingresses.find(view.iif) != nullptr &&
           std::ranges::all_of(view.ports, [&](int port) { return vlan->members.has(port); });
}

int report_state(const ReportOptions &options, const Terminal &terminal)
{
    const l3lif::SavedCopy copy(options.state_dir);
    const auto hardware = copy.open();
    session::State state{*hardware};
    if (const auto file = l3lif::kept_config(options.state_dir); !file.empty()) {
        state.config = config::read_config(file);
    }
    // The chip stays as it is: a restore writes nothing to it.
    l3lif::restart(*hardware, state.layer, l3lif::RestartMode::restore,
                   state.config ? &*state.config : nullptr);
    config::Description nameless;
    nameless.file = options.state_dir.string();
    if (state.config) {
        make_the_rest(state);
    }
    const config::Description &known = state.config ? *state.config : nameless;
    auto result = result_of(*hardware, known, state.layer);
    for (report::InterfaceResult &one : result.interfaces) {
        if (is_whole_in_chip(hardware->chip, one)) {
            one.up = true;
            one.error.clear();
        }
    }
    const page::KeptExtras extras(*hardware, known, result);
    page::Page page = page::gather(state, result, nullptr, options.calls);
    page.source = options.state_dir.string();
    if (state.config) {
        page::add_samples(state, page);
    } else {
        page.notes.push_back(fmt::format(
            "{}: has no config.json: names are what the library has stored, or made of its "
            "numbers, and virtual MACs and private-VLAN pairs aren't known",
            options.state_dir.string()));
    }
    return finish_page(options, page, terminal);
}

} // namespace

int report(const ReportOptions &options, const Terminal &terminal)
{
    check_out(options);
    return options.state_dir.empty() ? report_config(options, terminal)
                                     : report_state(options, terminal);
}

Command add_report(CLI::App &app)
{
    struct Parsed {
        std::string config;
        std::string state_dir;
        std::string out;
        std::string chip = "trident";
        std::size_t calls = REPORT_CALLS;
    };
    const auto parsed = std::make_shared<Parsed>();
    CLI::App *report = app.add_subcommand(
        "report", "Writes an HTML page of a switch: interfaces, calls, tables; docs/report.md "
                  "has more");
    CLI::Option *config =
        report->add_option("config", parsed->config, "The configuration that is brought up")
            ->type_name("CONFIG.json");
    CLI::Option *chip = add_chip_option(*report, parsed->chip);
    CLI::Option *calls =
        report
            ->add_option("--calls", parsed->calls,
                         "How many calls the page may hold; those of later interfaces are left "
                         "out, of failed ones last")
            ->check(CLI::Validator(calls_problem, ""))
            ->type_name("N")
            ->capture_default_str();
    report
        ->add_option("--state", parsed->state_dir,
                     "In place of CONFIG.json: the state folder that an earlier run has left; it "
                     "isn't changed")
        ->type_name("DIR")
        ->excludes(config, chip, calls);
    report->add_option("-o,--out", parsed->out, "The page; a file of that name is replaced")
        ->required()
        ->check(CLI::Validator(name_problem, ""))
        ->type_name("FILE.html");
    report->callback([parsed] {
        if (parsed->state_dir.empty() && parsed->config.empty()) {
            throw CLI::RequiredError("CONFIG.json, or --state DIR,");
        }
    });
    report->footer("Exit codes: 0 done, 1 refused or not everything is up, 2 usage.");
    return {report, [parsed](const Terminal &terminal) {
                ReportOptions options;
                options.config = parsed->config;
                options.state_dir = parsed->state_dir;
                options.out = parsed->out;
                options.chip = chip_kinds().at(parsed->chip);
                options.calls = parsed->calls;
                return commands::report(options, terminal);
            }};
}

} // namespace lab::commands
