/*
 * owners.cpp: see owners.h.
 */
#include "packet/owners.h"

#include "rtifhal_trident.h"
#include "services/tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace lab::packet
{

namespace chip = simswitch::chip;

namespace
{

/** The virtual MAC that the library has at a station; null when it has none there. */
const fhrp_mac_entry_t *kept_entry(int id, const chip::Station &station)
{
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto *entry = static_cast<const fhrp_mac_entry_t *>(record);
        if (static_cast<int>(entry->station_id) == id &&
            std::ranges::equal(entry->mac, station.mac)) {
            return entry;
        }
    }
    return nullptr;
}

StationOwner owner_by_library(const session::State &state, const fhrp_mac_entry_t &entry)
{
    StationOwner owner{.is_virtual = true};
    for (const auto &interface : state.layer.interfaces()) {
        const l3lif::LifPlan &plan = interface->lif->plan();
        if (plan.ifindex == entry.ifindex) {
            owner.interface = plan.name;
            owner.is_mirrored = plan.kind == config::Kind::svi && plan.vlan != entry.vlan;
        }
    }
    return owner;
}

/** The same by the configuration, where no more than one interface can have it. */
StationOwner owner_by_config(const l3lif::ConfiguredMacs &known, const chip::Station &station)
{
    StationOwner owner;
    std::set<std::string> names;
    for (const l3lif::VirtualMacPlan &mac : known.macs()) {
        if (known.has(mac, station)) {
            names.insert(mac.owner);
            owner.is_mirrored = mac.vlan != 0 && station.vlan != mac.vlan;
        }
    }
    owner.is_virtual = !names.empty();
    owner.interface = names.size() == 1 ? *names.begin() : "";
    return owner;
}

} // namespace

std::string StationOwner::text() const
{
    if (is_router) {
        return "router MAC";
    }
    if (!is_virtual) {
        return "";
    }
    return interface.empty() ? "virtual MAC" : fmt::format("virtual MAC of {}", interface);
}

StationOwner StationOwners::of(int station) const
{
    const chip::Station *found = state_.hardware.chip.stations.find(station);
    if (found == nullptr) {
        return {};
    }
    if (state_.layer.router_macs().contains(station)) {
        return {.is_router = true};
    }
    if (const fhrp_mac_entry_t *entry = kept_entry(station, *found)) {
        return owner_by_library(state_, *entry);
    }
    if (!state_.config) {
        return {};
    }
    if (!configured_) {
        configured_.emplace(*state_.config);
    }
    return owner_by_config(*configured_, *found);
}

std::vector<l3lif::VirtualMacPlan> virtual_macs_of(const session::State &state)
{
    std::vector<l3lif::VirtualMacPlan> macs;
    std::set<std::pair<std::string, config::Mac>> names;
    for (const l3lif::VirtualMac &mac : state.layer.virtual_macs()) {
        names.emplace(mac.plan.owner, mac.plan.mac);
        macs.push_back(mac.plan);
    }
    if (!state.config) {
        return macs;
    }
    const l3lif::ConfiguredMacs known(*state.config);
    const auto stations = state.hardware.chip.stations.all();
    for (const l3lif::VirtualMacPlan &mac : known.macs()) {
        const bool is_in_chip = std::ranges::any_of(stations, [&](const auto &station) {
            return known.has(mac, station.second) &&
                   kept_entry(station.first, station.second) == nullptr;
        });
        if (is_in_chip && !names.contains({mac.owner, mac.mac})) {
            macs.push_back(mac);
        }
    }
    return macs;
}

std::vector<l3lif::PairPlan> pairs_of(const session::State &state)
{
    std::vector<l3lif::PairPlan> pairs;
    for (const l3lif::Pair &pair : state.layer.pairs()) {
        pairs.push_back(pair.plan);
    }
    if (!state.config) {
        return pairs;
    }
    for (const l3lif::PairPlan &pair : l3lif::pair_plans_of(*state.config)) {
        if (l3lif::ConfiguredMacs::has(state.hardware.chip, pair) &&
            std::ranges::find(pairs, pair) == pairs.end()) {
            pairs.push_back(pair);
        }
    }
    return pairs;
}

} // namespace lab::packet
