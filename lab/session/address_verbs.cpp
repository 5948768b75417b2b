/*
 * address_verbs.cpp: the commands on addresses: router MACs, virtual MACs, and
 * the private-VLAN pairs that mirror them.
 */
#include "session/verbs.h"

#include "session/errors.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace lab::session
{

namespace
{

int station_of(const l3lif::Layer &layer, const config::Mac &mac)
{
    for (const auto &[station, known] : layer.router_macs()) {
        if (known == mac) {
            return station;
        }
    }
    std::vector<std::string> known;
    for (const auto &[station, other] : layer.router_macs()) {
        known.push_back(config::mac_text(other));
    }
    throw Impossible(fmt::format(
        "{} is no router MAC; {}", config::mac_text(mac),
        known.empty() ? "there is none" : fmt::format("those are {}", fmt::join(known, ", "))));
}

/** The interface of its own that a VLAN has, up or kept; null when it has none. */
const l3lif::LifPlan *own_interface(const l3lif::Layer &layer, std::uint16_t vlan)
{
    for (const auto &interface : layer.interfaces()) {
        const l3lif::LifPlan &plan = interface->lif->plan();
        if (plan.kind == config::Kind::svi && plan.vlan == vlan &&
            interface->standing() != l3lif::Standing::down) {
            return &plan;
        }
    }
    return nullptr;
}

/** Why two VLANs can't be made a pair; empty when they can. */
std::string pair_problem(const l3lif::Layer &layer, const l3lif::PairPlan &wanted)
{
    if (wanted.primary == wanted.secondary) {
        return fmt::format("VLAN {} can't be its own secondary", wanted.primary);
    }
    for (const l3lif::Pair &pair : layer.pairs()) {
        if (pair.plan == wanted) {
            return fmt::format("VLANs {} and {} are a pair already", wanted.primary,
                               wanted.secondary);
        }
        if (pair.plan.secondary == wanted.secondary) {
            return fmt::format("VLAN {} is a secondary of VLAN {} already", wanted.secondary,
                               pair.plan.primary);
        }
        if (pair.plan.secondary == wanted.primary || pair.plan.primary == wanted.secondary) {
            return fmt::format("VLAN {} is a {} already",
                               pair.plan.secondary == wanted.primary ? wanted.primary
                                                                     : wanted.secondary,
                               pair.plan.secondary == wanted.primary ? "secondary" : "primary");
        }
    }
    // The same as for the rows of a configuration.
    if (const l3lif::LifPlan *own = own_interface(layer, wanted.secondary); own != nullptr) {
        return fmt::format("VLAN {} has an interface of its own, and the primary's is to route for "
                           "it: delete {} first",
                           wanted.secondary, own->name);
    }
    return "";
}

/** A VLAN that is in no pair any more is an ordinary one. */
void settle_role(State &state, std::uint16_t vlan)
{
    const auto &pairs = state.layer.pairs();
    const bool is_in_pair =
        std::any_of(pairs.begin(), pairs.end(), [vlan](const l3lif::Pair &pair) {
            return pair.plan.primary == vlan || pair.plan.secondary == vlan;
        });
    if (!is_in_pair) {
        state.layer.set_role(vlan, config::VlanRole::none);
    }
}

} // namespace

Outcome run_rmac(State &state, const Words &words)
{
    const config::Mac mac = parse_mac(words[1]);
    const std::string command = command_text("rmac", words);
    if (!adds(words)) {
        const int station = station_of(state.layer, mac);
        return state.finish(command, {{command, state.layer.remove_router_mac(station)}});
    }
    for (const auto &[station, known] : state.layer.router_macs()) {
        if (known == mac) {
            throw Impossible(fmt::format("{} is a router MAC already, at station {}",
                                         config::mac_text(mac), station));
        }
    }
    Outcome outcome = state.finish(command, {{command, state.layer.add_router_mac(mac), true}});
    if (!outcome.refused) {
        outcome.summary += fmt::format(", station {}", state.last.code());
    }
    return outcome;
}

Outcome run_vmac(State &state, const Words &words)
{
    const bool add = adds(words);
    const l3lif::LifPlan &owner = state.interface(words[1]).lif->plan();
    l3lif::VirtualMacPlan plan;
    plan.owner = owner.name;
    plan.ifindex = owner.ifindex;
    plan.vlan = owner.kind == config::Kind::svi ? owner.vlan : std::uint16_t{0};
    plan.mac = parse_mac(words[2]);
    plan.source = "session";
    const std::string command = command_text("vmac", words);
    return state.finish(command, {{command, add ? state.layer.add_virtual_mac(std::move(plan))
                                                : state.layer.remove_virtual_mac(plan)}});
}

Outcome run_pvlan(State &state, const Words &words)
{
    const bool add = adds(words);
    const l3lif::PairPlan pair{state.vlan(words[1]), state.vlan(words[2])};
    const std::string command = command_text("pvlan", words);
    if (add) {
        if (const std::string problem = pair_problem(state.layer, pair); !problem.empty()) {
            throw Impossible(problem);
        }
        state.layer.set_role(pair.primary, config::VlanRole::primary);
        state.layer.set_role(pair.secondary, config::VlanRole::secondary);
        return state.finish(command, {{command, state.layer.add_pair(pair)}});
    }
    const auto &pairs = state.layer.pairs();
    if (std::none_of(pairs.begin(), pairs.end(),
                     [&pair](const l3lif::Pair &known) { return known.plan == pair; })) {
        throw Impossible(fmt::format("VLANs {} and {} are no pair", pair.primary, pair.secondary));
    }
    Outcome outcome = state.finish(command, {{command, state.layer.remove_pair(pair)}});
    settle_role(state, pair.primary);
    settle_role(state, pair.secondary);
    return outcome;
}

} // namespace lab::session
