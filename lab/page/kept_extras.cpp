/*
 * kept_extras.cpp: see kept_extras.h.
 */
#include "page/kept_extras.h"

#include "l3lif/plans.h"
#include "l3lif/readback_macs.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace lab::page
{

namespace
{

/** The number of a VLAN's SVI in the chip; 0 when it has none. */
int kept_svi_of(const report::UpResult &result, std::uint16_t vlan)
{
    for (const auto &interface : result.interfaces) {
        const auto &plan = interface.interface->lif->plan();
        if (plan.kind == config::Kind::svi && plan.vlan == vlan) {
            return interface.view.iif;
        }
    }
    return 0;
}

/** The VLANs in which the chip takes frames of the owner of a virtual MAC. */
std::vector<int> kept_vlans_of(const report::UpResult &result, const l3lif::VirtualMacPlan &plan,
                               const std::vector<l3lif::Pair> &pairs)
{
    std::vector<int> vlans = {plan.vlan};
    for (const auto &interface : result.interfaces) {
        if (interface.interface->lif->plan().name == plan.owner) {
            vlans.push_back(interface.view.vlan);
        }
    }
    for (const l3lif::Pair &pair : pairs) {
        if (pair.plan.primary == plan.vlan) {
            vlans.push_back(pair.plan.secondary);
        }
    }
    return vlans;
}

/** The stations of a virtual MAC, by the chip alone: the library has forgotten it. */
l3lif::VirtualMacView stations_of(const simswitch::Switch &hardware,
                                  const l3lif::VirtualMacPlan &plan, const std::vector<int> &vlans)
{
    l3lif::VirtualMacView view;
    for (const auto &[id, station] : hardware.chip.stations.all()) {
        const int vlan = station.vlan_mask == 0 ? 0 : station.vlan;
        if (station.mac == plan.mac &&
            (vlan == 0 || std::ranges::find(vlans, vlan) != vlans.end())) {
            view.stations.push_back({.station = id, .vlan = vlan});
        }
    }
    return view;
}

} // namespace

KeptExtras::KeptExtras(const simswitch::Switch &hardware, const config::Description &known,
                       report::UpResult &result)
{
    for (const auto &plan : l3lif::pair_plans_of(known)) {
        pairs_.push_back({plan, {}, {}});
    }
    for (auto &plan : l3lif::virtual_mac_plans_of(known, l3lif::plans_of(known))) {
        macs_.push_back({std::move(plan), {}, {}});
    }
    for (const l3lif::Pair &pair : pairs_) {
        auto view = l3lif::read_back(hardware, pair.plan, kept_svi_of(result, pair.plan.primary));
        const std::string missing = view.missing;
        result.pairs.push_back({&pair, std::move(view), missing});
    }
    for (const l3lif::VirtualMac &mac : macs_) {
        auto view = stations_of(hardware, mac.plan, kept_vlans_of(result, mac.plan, pairs_));
        const std::string missing = view.stations.empty() ? "the chip has no station of it" : "";
        result.virtual_macs.push_back({&mac, std::move(view), missing});
    }
}

} // namespace lab::page
