/*
 * configured_macs.cpp: see configured_macs.h.
 */
#include "l3lif/configured_macs.h"

#include "rtifhal_trident.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;

/** The ingress object that a VLAN's controls name; 0 for none. */
int ingress_of(const chip::Chip &chip, int vlan)
{
    const chip::Vlan *found = chip.vlans.find(vlan);
    return found == nullptr ? 0 : static_cast<int>(found->controls.ingress_if);
}

bool is_in(const VirtualMacView &view, int vlan)
{
    return std::ranges::find(view.stations, vlan, &StationView::vlan) != view.stations.end();
}

} // namespace

ConfiguredMacs::ConfiguredMacs(const config::Description &config)
    : interfaces_(plans_of(config)), macs_(virtual_mac_plans_of(config, interfaces_)),
      pairs_(pair_plans_of(config))
{
    for (const LifPlan &plan : interfaces_) {
        by_name_.try_emplace(plan.name, &plan);
    }
}

const LifPlan *ConfiguredMacs::owner_of(const VirtualMacPlan &mac) const
{
    const auto owner = by_name_.find(mac.owner);
    return owner == by_name_.end() ? nullptr : owner->second;
}

bool ConfiguredMacs::is_secondary_of(int vlan, int primary) const
{
    return std::ranges::any_of(pairs_, [vlan, primary](const PairPlan &pair) {
        return pair.primary == primary && pair.secondary == vlan;
    });
}

bool ConfiguredMacs::has(const VirtualMacPlan &mac, const chip::Station &station) const
{
    const LifPlan *owner = mac.mac == station.mac ? owner_of(mac) : nullptr;
    if (owner == nullptr) {
        return false;
    }
    const bool any_vlan = station.vlan_mask == 0;
    const bool any_port = station.src_port_mask == 0;
    switch (owner->kind) {
    case config::Kind::svi:
        return !any_vlan && any_port &&
               (station.vlan == mac.vlan || is_secondary_of(station.vlan, mac.vlan));
    case config::Kind::port_channel:
        return any_vlan && any_port;
    case config::Kind::port:
    case config::Kind::subinterface:
    case config::Kind::tunnel:
        break;
    }
    const bool is_its_port =
        owner->trunk != 0 ? any_port : !any_port && station.src_port == owner->chip_port;
    return is_its_port && !any_vlan && station.vlan == RTIFHAL_VLAN_ROUTED;
}

VirtualMacView ConfiguredMacs::read_back(const simswitch::Switch &hardware,
                                         const VirtualMacPlan &mac) const
{
    VirtualMacView view;
    for (const auto &[id, station] : hardware.chip.stations.all()) {
        if (has(mac, station)) {
            view.stations.push_back({.station = id,
                                     .vlan = station.vlan_mask == 0 ? 0 : station.vlan,
                                     .port = station.src_port_mask == 0 ? 0 : station.src_port,
                                     .mirrored = mac.vlan != 0 && station.vlan != mac.vlan});
        }
    }
    std::ranges::stable_sort(view.stations, [](const StationView &left, const StationView &right) {
        return left.mirrored != right.mirrored ? right.mirrored : left.vlan < right.vlan;
    });
    if (view.stations.empty()) {
        view.missing = "the chip has no station of it";
    } else if (view.stations.front().mirrored) {
        view.missing = fmt::format("the chip has no station of it in VLAN {}", mac.vlan);
    }
    for (const PairPlan &pair : pairs_) {
        const bool is_wanted = pair.primary == mac.vlan && has(hardware.chip, pair);
        if (view.missing.empty() && is_wanted && !is_in(view, pair.secondary)) {
            view.missing = fmt::format("the chip has no station of it in VLAN {}", pair.secondary);
        }
    }
    return view;
}

bool ConfiguredMacs::has(const chip::Chip &chip, const PairPlan &pair)
{
    const int ingress = ingress_of(chip, pair.primary);
    return ingress != 0 && ingress_of(chip, pair.secondary) == ingress;
}

PairView ConfiguredMacs::read_back(const simswitch::Switch &hardware, const PairPlan &pair)
{
    return l3lif::read_back(hardware, pair, ingress_of(hardware.chip, pair.primary));
}

} // namespace lab::l3lif
