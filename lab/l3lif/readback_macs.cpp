/*
 * readback_macs.cpp: see readback_macs.h.
 */
#include "l3lif/readback_macs.h"

#include "l3lif/readback.h"

#include "rtifhal_trident.h"
#include "services/tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;

/** The virtual MACs that the library keeps. */
std::vector<const fhrp_mac_entry_t *> kept_macs()
{
    std::vector<const fhrp_mac_entry_t *> entries;
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        entries.push_back(static_cast<const fhrp_mac_entry_t *>(record));
    }
    return entries;
}

bool is_of(const fhrp_mac_entry_t &entry, const VirtualMacPlan &plan)
{
    return entry.ifindex == plan.ifindex &&
           std::equal(plan.mac.begin(), plan.mac.end(), std::begin(entry.mac));
}

/** The VLAN under which the library keeps a virtual MAC of the interface itself. */
std::uint16_t own_vlan(const VirtualMacPlan &plan)
{
    return plan.vlan != 0 ? plan.vlan : std::uint16_t{RTIFHAL_VLAN_ROUTED};
}

/** What the chip lacks of a station in a VLAN; adds the station when it is there. */
std::string read_station(const simswitch::Switch &hardware, const VirtualMacPlan &plan,
                         std::uint16_t vlan, VirtualMacView &view)
{
    const auto entries = kept_macs();
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto *kept) {
        return is_of(*kept, plan) && kept->vlan == vlan;
    });
    if (entry == entries.end()) {
        return fmt::format("the library keeps no station of it for VLAN {}", vlan);
    }
    const int id = static_cast<int>((*entry)->station_id);
    const chip::Station *station = hardware.chip.stations.find(id);
    if (station == nullptr || station->mac != plan.mac) {
        return fmt::format("the chip's station {} is not of this MAC", id);
    }
    view.stations.push_back({id, station->vlan_mask != 0 ? station->vlan : 0,
                             station->src_port_mask != 0 ? station->src_port : 0,
                             vlan != own_vlan(plan)});
    return "";
}

} // namespace

VirtualMacView read_back(const simswitch::Switch &hardware, const VirtualMacPlan &plan,
                         const std::vector<std::uint16_t> &secondaries)
{
    std::vector<std::uint16_t> vlans = {own_vlan(plan)};
    vlans.insert(vlans.end(), secondaries.begin(), secondaries.end());
    VirtualMacView view;
    for (const std::uint16_t vlan : vlans) {
        const std::string missing = read_station(hardware, plan, vlan, view);
        if (view.missing.empty()) {
            view.missing = missing;
        }
    }
    return view;
}

PairView read_back(const simswitch::Switch &hardware, const PairPlan &plan, int svi)
{
    PairView view;
    const chip::Vlan *vlan = hardware.chip.vlans.find(plan.secondary);
    if (vlan == nullptr) {
        view.missing = fmt::format("the chip has no VLAN {}", plan.secondary);
        return view;
    }
    view.iif = static_cast<int>(vlan->controls.ingress_if);
    if (const chip::L3Ingress *ingress = hardware.chip.l3_ingresses.find(view.iif)) {
        HardwareView routed;
        read_ingress_families(*ingress, routed);
        narrow_to_vlan(vlan->controls, routed);
        view.families = routed.families();
    }
    const auto entries = kept_macs();
    view.macs =
        static_cast<int>(std::count_if(entries.begin(), entries.end(), [&plan](const auto *kept) {
            return kept->vlan == plan.secondary;
        }));
    if (view.iif != svi) {
        view.missing = fmt::format("the chip's VLAN {} names ingress object {}, not {}",
                                   plan.secondary, view.iif, svi);
    }
    return view;
}

} // namespace lab::l3lif
