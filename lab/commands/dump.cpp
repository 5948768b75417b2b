/*
 * dump.cpp: see dump.h.
 */
#include "commands/dump.h"

#include "config/reader.h"
#include "l3lif/bring_up.h"
#include "l3lif/dump.h"
#include "l3lif/restart.h"
#include "l3lif/restart_state.h"
#include "report/text.h"
#include "session/nearest.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <ostream>
#include <sstream>
#include <utility>
#include <vector>

namespace lab::commands
{

namespace
{

/** Requests of a configuration that were refused. */
std::size_t refused_requests(const l3lif::Layer &layer)
{
    std::size_t refused = 0;
    for (const l3lif::NamedRequest &named : l3lif::requests_up(layer)) {
        const bool ok = named.gives_station ? named.request->code != l3lif::Layer::NO_STATION
                                            : named.request->ok();
        refused += ok ? 0 : 1;
    }
    return refused;
}

void print_json(const DumpOptions &options, const l3lif::Dump &dump, const std::string &why,
                std::ostream &out)
{
    using Json = nlohmann::ordered_json;
    Json lines = Json::array();
    std::istringstream text(dump.text);
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    Json errors = dump.request.errors();
    if (!why.empty()) {
        errors.push_back(why);
    }
    const Json object = {{"interface", options.name.empty() ? Json() : Json(options.name)},
                         {"code", dump.request.code},
                         {"lines", std::move(lines)},
                         {"errors", std::move(errors)}};
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

/** Prints a dump as the diagnostic command has it. */
void print_text(const DumpOptions &options, const l3lif::Dump &dump, const std::string &why,
                const Terminal &terminal)
{
    terminal.out << dump.text;
    const auto errors = dump.request.errors();
    for (const std::string &error : errors) {
        fmt::print(terminal.err, "{}\n", error);
    }
    if (!why.empty()) {
        fmt::print(terminal.err, "{}\n", why);
    } else if (dump.text.empty() && dump.request.ok()) {
        fmt::print(terminal.out, "{} has no virtual MAC{}\n", options.name,
                   options.state_dir.empty() ? "" : ": a restore brings none back");
    }
}

int dump_layer(simswitch::Switch &hardware, const l3lif::Layer &layer, const DumpOptions &options,
               const Terminal &terminal)
{
    l3lif::Dump dump;
    std::string why;
    if (options.name.empty()) {
        dump = l3lif::dump_numbers(hardware, "dump");
    } else {
        const l3lif::Interface *interface = layer.routed().find(options.name);
        if (interface == nullptr) {
            std::vector<std::string> names;
            for (const auto &known : layer.interfaces()) {
                names.push_back(known->lif->plan().name);
            }
            fmt::print(terminal.err, "{}\n",
                       session::unknown("interface", report::plain(options.name), names));
            return EXIT_USAGE;
        }
        dump = l3lif::dump_interface(hardware, *interface->lif, "dump " + options.name);
        why = dump.request.code == 0 ? "" : l3lif::why_no_dump(interface->lif->plan());
    }
    if (options.json) {
        print_json(options, dump, why, terminal.out);
    } else {
        print_text(options, dump, why, terminal);
    }
    return dump.request.ok() ? EXIT_DONE : EXIT_REFUSED;
}

int dump_restored(const DumpOptions &options, const Terminal &terminal)
{
    const l3lif::SavedCopy copy(options.state_dir);
    const auto hardware = copy.open();
    std::optional<config::Description> config;
    if (const auto file = l3lif::kept_config(options.state_dir); !file.empty()) {
        config = config::read_config(file);
    }
    l3lif::Layer layer(*hardware);
    l3lif::restart(*hardware, layer, l3lif::RestartMode::restore, config ? &*config : nullptr);
    return dump_layer(*hardware, layer, options, terminal);
}

} // namespace

int dump(const DumpOptions &options, const Terminal &terminal)
{
    if (!options.state_dir.empty()) {
        return dump_restored(options, terminal);
    }
    simswitch::Switch hardware({.chip = options.chip});
    return dump_on(hardware, options, terminal);
}

int dump_on(simswitch::Switch &hardware, const DumpOptions &options, const Terminal &terminal)
{
    const config::Description config = config::read_config(options.config);
    l3lif::Layer layer(hardware);
    l3lif::bring_all_up(config, layer);
    const int code = dump_layer(hardware, layer, options, terminal);
    const std::size_t refused = refused_requests(layer);
    if (refused == 0 || code == EXIT_USAGE) {
        return code;
    }
    fmt::print(terminal.err, "{}: {} refused, 'rtif up' tells of {}\n", config.file,
               report::counted(refused, "request"), refused == 1 ? "it" : "them");
    return EXIT_REFUSED;
}

} // namespace lab::commands
