/*
 * up.cpp: see up.h.
 */
#include "commands/up.h"

#include "config/reader.h"
#include "l3lif/layer.h"
#include "l3lif/leftovers.h"
#include "l3lif/plans.h"
#include "l3lif/readback.h"
#include "report/json.h"
#include "report/table.h"

#include <fmt/format.h>

namespace lab::commands
{

namespace
{

/** Why interfaces of a kind are not brought up. */
std::string not_yet(config::Kind kind)
{
    switch (kind) {
    case config::Kind::svi:
        return "VLAN interfaces are not brought up yet";
    case config::Kind::port:
    case config::Kind::port_channel:
    case config::Kind::subinterface:
    case config::Kind::tunnel:
        break;
    }
    return "such interfaces are not brought up yet";
}

std::vector<config::SkippedRow> all_skipped(config::Description &config)
{
    for (const auto &interface : config.interfaces) {
        if (!l3lif::supports(interface.kind)) {
            config.skipped.push_back({interface.table, interface.name, not_yet(interface.kind)});
        }
    }
    config.sort_skipped();
    return config.skipped;
}

/** An ordinary start finds the switch empty: what an earlier run has stored is void. */
void forget_earlier_run(simswitch::Switch &hardware, const UpOptions &options,
                        std::vector<std::string> &notes)
{
    const auto stored = hardware.store.stored_interfaces();
    if (!options.state_dir.empty()) {
        hardware.power_cycle();
    }
    if (!stored.empty()) {
        notes.push_back(
            fmt::format("{}: {} interfaces of an earlier run are dropped from the store",
                        options.state_dir.string(), stored.size()));
    }
}

report::InterfaceResult judge(const simswitch::Switch &hardware, const l3lif::Interface &interface)
{
    report::InterfaceResult result{
        &interface, l3lif::read_back(hardware, *interface.lif), false, {}};
    result.up = interface.up.code == 0 && result.view.missing.empty();
    if (!result.up) {
        result.error = interface.up.last_error();
        if (result.error.empty()) {
            result.error = result.view.missing;
        }
    }
    return result;
}

/** Tells once of interfaces on which the chip doesn't route what the file asks for. */
void note_families(const simswitch::Switch &hardware, report::UpResult &result)
{
    std::vector<std::string> names;
    for (const auto &interface : result.interfaces) {
        const auto &plan = interface.interface->lif->plan();
        const auto &view = interface.view;
        if (interface.up && (plan.ipv4 != view.ipv4 || plan.ipv6 != view.ipv6)) {
            names.push_back(plan.name);
        }
    }
    if (names.empty()) {
        return;
    }
    const bool by_port = hardware.chip.kind() == simswitch::chip::Kind::trident;
    result.notes.push_back(fmt::format(
        "{}: {} of {} interfaces, {} the first, do not route the families of their addresses{}",
        result.config->file, names.size(), result.interfaces.size(), names.front(),
        by_port ? ": on a Trident those are controls of the port, and bringing a port up opens "
                  "it for IPv4 only, bringing a subinterface up for both"
                : ""));
}

report::Teardown tear_down(simswitch::Switch &hardware, l3lif::Layer &layer,
                           const l3lif::Moment &before)
{
    report::Teardown teardown;
    teardown.clean = layer.take_down();
    teardown.left = l3lif::left_behind(before, hardware);
    teardown.by_design = l3lif::stays_by_design(before, hardware);
    return teardown;
}

} // namespace

int up(const UpOptions &options, std::ostream &out)
{
    simswitch::Switch hardware({.chip = options.chip, .state_dir = options.state_dir});
    return up_on(hardware, options, out);
}

int up_on(simswitch::Switch &hardware, const UpOptions &options, std::ostream &out)
{
    config::Description config = config::read_config(options.config);
    report::UpResult result;
    result.config = &config;
    result.chip = hardware.chip.kind() == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident";
    result.skipped = all_skipped(config);
    result.notes = config.notes;
    forget_earlier_run(hardware, options, result.notes);

    const l3lif::Moment before = l3lif::look(hardware);
    l3lif::Layer layer(hardware);
    result.layer = &layer;
    layer.add_router_mac(config.device_mac);
    for (auto &plan : l3lif::plans_of(config)) {
        layer.bring_up(std::move(plan));
    }
    for (const auto &interface : layer.interfaces()) {
        result.interfaces.push_back(judge(hardware, *interface));
    }
    note_families(hardware, result);
    if (options.then_down) {
        result.teardown = tear_down(hardware, layer, before);
    }

    if (options.json) {
        report::print_json(result, options.view, out);
    } else {
        report::print_table(result, options.view, out);
    }
    return result.ok() ? 0 : 1;
}

} // namespace lab::commands
