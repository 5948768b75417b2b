/*
 * state.cpp: see state.h.
 */
#include "session/state.h"

#include "config/address.h"
#include "config/names.h"
#include "l3lif/interface_state.h"
#include "session/errors.h"
#include "session/nearest.h"

#include "report/text.h"

#include "services/ifindex.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace lab::session
{

namespace
{

constexpr std::size_t PROBLEMS_SHOWN = 10;

/** The number in the chip of an interface that is up or kept; 0 for another. */
int number_of(const l3lif::Interface &interface)
{
    const l3lif_pd_ctxt *context = std::as_const(*interface.lif).record()->l3lif_pd_ctxt;
    if (context == nullptr || context->l3_pd == nullptr) {
        return 0;
    }
    const l3_pd &hardware = *context->l3_pd;
    return hardware.brcm_prog_complete != 0 ? hardware.prev_l3_if_index : hardware.l3intf_id;
}

void name_interfaces(const State &state, Scene &scene)
{
    for (const auto &interface : state.layer.interfaces()) {
        const l3lif::LifPlan &plan = interface->lif->plan();
        const bool is_up = interface->standing() == l3lif::Standing::up;
        SceneInterface shown{plan.name, config::kind_name(plan.kind), {}, {}};
        if (is_up) {
            shown.view = l3lif::read_back(state.hardware, *interface->lif);
        } else {
            shown.view.iif = number_of(*interface);
        }
        shown.state = l3lif::state_of(state.hardware.chip, *interface, shown.view);
        scene.interfaces.push_back(std::move(shown));
        scene.ifindexes[plan.ifindex] = plan.name;
        if (const int iif = number_of(*interface); iif != 0) {
            scene.iifs[iif] = plan.name;
        }
    }
}

/** What the routes lack since the last command, a few lines of it. */
std::string new_problems(const std::vector<std::string> &before,
                         const std::vector<std::string> &now)
{
    std::string text;
    std::size_t count = 0;
    for (const std::string &problem : now) {
        if (std::find(before.begin(), before.end(), problem) != before.end()) {
            continue;
        }
        if (++count <= PROBLEMS_SHOWN) {
            text += fmt::format("    {}\n", problem);
        }
    }
    if (count > PROBLEMS_SHOWN) {
        text += fmt::format("    and {} more\n", count - PROBLEMS_SHOWN);
    }
    return text;
}

} // namespace

std::string State::sync_routing()
{
    routing.sync();
    const std::vector<std::string> before = std::exchange(told_problems, routing.problems());
    return new_problems(before, told_problems);
}

Scene State::scene() const
{
    Scene scene{hardware};
    name_interfaces(*this, scene);
    scene.router_macs = layer.router_macs();
    scene.routing = &routing;
    scene.packet = packet ? &*packet : nullptr;
    if (!config) {
        return scene;
    }
    for (const auto &[name, port] : config->ports) {
        if (port.chip_port != 0) {
            scene.ports[static_cast<int>(port.chip_port)] = name;
        }
    }
    for (const auto &[name, channel] : config->port_channels) {
        if (channel.trunk != 0) {
            scene.trunks[static_cast<int>(channel.trunk)] = name;
        }
    }
    for (const auto &[name, vlan] : config->vlans) {
        if (vlan.refused.empty()) {
            scene.vlans[vlan.id] = name;
        }
    }
    return scene;
}

std::vector<std::string> State::interface_names() const
{
    std::vector<std::string> names;
    for (const auto &interface : layer.interfaces()) {
        names.push_back(interface->lif->plan().name);
    }
    return names;
}

l3lif::Interface &State::interface(std::string_view name) const
{
    if (!config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
    l3lif::Interface *found = layer.routed().find(name);
    if (found == nullptr) {
        throw UsageError(unknown("interface", name, interface_names()));
    }
    return *found;
}

std::vector<std::string> State::port_names() const
{
    std::vector<std::string> names;
    if (config) {
        for (const auto &[name, port] : config->ports) {
            if (port.chip_port != 0) {
                names.push_back(name);
            }
        }
    }
    return names;
}

const config::Port &State::port(std::string_view name) const
{
    if (!config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
    const auto found = config->ports.find(name);
    if (found == config->ports.end()) {
        throw UsageError(unknown("port", name, port_names()));
    }
    if (found->second.chip_port == 0) {
        throw Impossible(fmt::format("{} can't be used: {}", name, found->second.refused));
    }
    return found->second;
}

std::uint32_t State::ifindex(std::string_view name) const
{
    if (!config || config->ports.contains(name)) {
        return simswitch::if_index::port(port(name).chip_port - 1);
    }
    const l3lif::Interface *found = layer.routed().find(name);
    if (found == nullptr) {
        std::vector<std::string> names = port_names();
        const std::vector<std::string> interfaces = interface_names();
        names.insert(names.end(), interfaces.begin(), interfaces.end());
        throw UsageError(unknown("port or interface", name, names));
    }
    return found->lif->plan().ifindex;
}

std::uint16_t State::vlan(std::string_view word) const
{
    if (!config) {
        throw Impossible("no configuration is up: begin with 'up FILE'");
    }
    std::vector<std::string> names;
    const auto number = config::parse_number(word);
    for (const auto &[name, vlan] : config->vlans) {
        if (!vlan.refused.empty()) {
            continue;
        }
        if (name == word || (number && *number == vlan.id)) {
            return vlan.id;
        }
        names.push_back(name);
    }
    throw UsageError(unknown("VLAN", word, names) +
                     fmt::format(" (those of {} can be used)", config->file));
}

Outcome State::finish(const std::string &command, std::vector<Step> steps)
{
    last = LastRequest(command, std::move(steps));
    Outcome outcome;
    outcome.asked = true;
    outcome.refused = last.refused();
    outcome.summary = fmt::format(
        "{}, {}", outcome.refused ? fmt::format("refused: code {}", last.code()) : "done",
        report::counted(last.call_count(), "call"));
    for (const std::string &error : last.errors()) {
        outcome.shown += fmt::format("    {}\n", error);
    }
    if (const std::string call = last.silent_refusal(); !call.empty()) {
        outcome.shown += fmt::format("    {}\n", call);
    }
    outcome.shown += sync_routing();
    if (!hardware.state_error().empty()) {
        throw Impossible(hardware.state_error());
    }
    return outcome;
}

config::Mac parse_mac(std::string_view word)
{
    std::string reason;
    const auto mac = config::parse_mac(word, reason);
    if (!mac) {
        throw UsageError(reason);
    }
    return *mac;
}

} // namespace lab::session
