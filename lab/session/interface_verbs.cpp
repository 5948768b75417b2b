/*
 * interface_verbs.cpp: the commands on interfaces: bringing a configuration up,
 * adding and deleting interfaces of it, their properties.
 */
#include "session/verbs.h"

#include "config/reader.h"
#include "config/shown.h"
#include "l3lif/bring_up.h"
#include "l3lif/families.h"
#include "l3lif/interface_state.h"
#include "l3lif/plans.h"
#include "l3lif/property_requests.h"
#include "l3lif/restart_state.h"
#include "session/errors.h"
#include "session/nearest.h"
#include "session/properties.h"

#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace lab::session
{

namespace
{

bool is_label(const Property &property)
{
    return property.store == nullptr;
}

/** Refuses the interface of a private VLAN's secondary, for which the primary's routes. */
void need_no_secondary(const State &state, const l3lif::LifPlan &plan)
{
    if (plan.kind != config::Kind::svi) {
        return;
    }
    for (const l3lif::Pair &pair : state.layer.pairs()) {
        if (pair.plan.secondary == plan.vlan) {
            throw Impossible(fmt::format("VLAN {} is a secondary of VLAN {}, whose interface "
                                         "routes for it: end the pair first",
                                         plan.vlan, pair.plan.primary));
        }
    }
}

} // namespace

std::string count_up(const Scene &scene)
{
    std::size_t up = 0;
    for (const SceneInterface &interface : scene.interfaces) {
        up += interface.state == "up" ? 1 : 0;
    }
    return fmt::format("{} of {} up", up, report::counted(scene.interfaces.size(), "interface"));
}

Outcome run_up(State &state, const Words &words)
{
    if (words.size() == 2 && words[1] != "open") {
        throw UsageError(unknown("word", words[1], {"open"}) + " (open, or nothing)");
    }
    if (state.config) {
        throw Impossible(
            fmt::format("{} is up already: a session has one configuration", state.config->file));
    }
    try {
        auto config = state.given_config ? config::read_config_text(state.given_config->text,
                                                                    state.given_config->name)
                                         : config::read_config(state.folder / words.front());
        l3lif::keep_config(state.hardware.state_dir(), state.folder / words.front());
        state.config = std::move(config);
    } catch (const config::UnusableFile &error) {
        throw Impossible(error.what());
    }
    std::vector<std::string> notes = state.config->notes;
    notes.insert(notes.end(), state.notes.begin(), state.notes.end());
    state.notes.clear();
    l3lif::bring_all_up(*state.config, state.layer);
    std::vector<l3lif::OpenedFamily> opened;
    if (words.size() == 2) {
        opened = l3lif::open_families(*state.config, state.layer, state.hardware);
    }
    state.routing.configure(*state.config);

    std::vector<Step> steps;
    for (const l3lif::NamedRequest &named : l3lif::requests_up(state.layer)) {
        steps.push_back({named.asked, *named.request, named.gives_station});
    }
    for (l3lif::OpenedFamily &family : opened) {
        steps.push_back({std::move(family.asked), std::move(family.request)});
    }
    Outcome outcome = state.finish(command_text("up", words), std::move(steps));
    outcome.summary = fmt::format(
        "{}{}, {}", outcome.refused ? fmt::format("refused: code {}, ", state.last.code()) : "",
        count_up(state.scene()), report::counted(state.last.call_count(), "call"));
    if (const std::size_t skipped = state.config->skipped.size(); skipped != 0) {
        outcome.summary += fmt::format(", {} not taken", report::counted(skipped, "row"));
    }
    for (const auto &row : state.config->skipped) {
        outcome.shown += fmt::format("    {}\n", config::harmless(state.config->message(row)));
    }
    for (const auto &note : notes) {
        outcome.shown += fmt::format("    {}\n", config::harmless(note));
    }
    return outcome;
}

Outcome run_add(State &state, const Words &words)
{
    l3lif::Interface &interface = state.interface(words.front());
    need_no_secondary(state, interface.lif->plan());
    const std::string command = command_text("add", words);
    return state.finish(command, {{command, state.layer.bring_up(interface)}});
}

Outcome run_del(State &state, const Words &words)
{
    l3lif::Interface &interface = state.interface(words.front());
    const std::string &name = words.front();
    if (words.size() == 2 && words[1] != "keep") {
        throw UsageError(unknown("word", words[1], {"keep"}) + " (keep, or nothing)");
    }
    const bool keep = words.size() == 2;
    const l3lif::Standing standing = interface.standing();
    if (standing == l3lif::Standing::down || (keep && standing == l3lif::Standing::kept)) {
        const std::string_view shown = l3lif::state_of(state.hardware.chip, interface, {});
        throw Impossible(shown == "failed"
                             ? fmt::format("{} has failed and left nothing to delete", name)
                             : fmt::format("{} is {} already", name, shown));
    }
    const auto subinterfaces = state.layer.routed().subinterfaces_of(interface);
    if (!subinterfaces.empty()) {
        throw Impossible(fmt::format("{} has subinterfaces that are up: delete {} first", name,
                                     fmt::join(subinterfaces, ", ")));
    }
    const std::string command = command_text("del", words);
    Outcome outcome = state.finish(command, {{command, state.layer.take_down(interface, keep)}});
    if (keep && interface.standing() == l3lif::Standing::down) {
        outcome.summary += "; it is gone for good, as each tunnel is";
    }
    return outcome;
}

Outcome run_set(State &state, const Words &words)
{
    l3lif::Interface &interface = state.interface(words[0]);
    const Property &changed = property(words[1]);
    const std::uint32_t value = parse_value(changed, words[2]);
    const std::string command = command_text("set", words);
    l3lif::Lif &lif = *interface.lif;
    if (is_label(changed)) {
        return state.finish(command,
                            {{command, l3lif::set_label(state.hardware, lif, command,
                                                        static_cast<std::uint16_t>(value))}});
    }
    changed.store(*lif.record()->l3lif_pi_ctxt, value);
    if (interface.standing() != l3lif::Standing::up) {
        return {fmt::format("{} is not up: it has this when it is added", words[0])};
    }
    return state.finish(command, {{command, l3lif::set_property(state.hardware, lif, command,
                                                                changed.svi_id, value)}});
}

Outcome run_get(State &state, const Words &words)
{
    l3lif::Interface &interface = state.interface(words[0]);
    const Property &read = property(words[1]);
    if (!read.readable) {
        throw UsageError(fmt::format("{} can't be read: the library has no identifier to read it "
                                     "by; 'show' has what the chip holds",
                                     read.name));
    }
    const std::string command = command_text("get", words);
    std::uint32_t value = 0;
    Outcome outcome =
        state.finish(command, {{command, l3lif::get_property(state.hardware, *interface.lif,
                                                             command, read.svi_id, value)}});
    if (!outcome.refused) {
        outcome.summary = value_text(read, value);
    }
    return outcome;
}

Outcome run_disable(State &state, const Words &words)
{
    l3lif::Interface &interface = state.interface(words[0]);
    const std::string command = command_text("disable", words);
    return state.finish(command,
                        {{command, l3lif::disable(state.hardware, *interface.lif, command)}});
}

} // namespace lab::session
