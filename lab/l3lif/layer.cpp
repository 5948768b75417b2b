/*
 * layer.cpp: see layer.h.
 */
#include "l3lif/layer.h"

#include "rtifhal_trident.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::l3lif
{

Request Layer::run(const std::string &name, const std::function<int()> &work)
{
    return make_request(hardware_, name, work);
}

const Request &Layer::add_router_mac(const config::Mac &mac)
{
    router_mac_ = run(fmt::format("add router MAC {}", config::mac_text(mac)),
                      [&mac] { return rtifhal_trident_rmac_add(mac.data()); });
    if (router_mac_.code != NO_STATION) {
        router_macs_[router_mac_.code] = mac;
    }
    return router_mac_;
}

void Layer::adopt_router_mac(const config::Mac &mac)
{
    router_mac_ = run(fmt::format("add router MAC {}", config::mac_text(mac)),
                      [&mac] { return rtifhal_trident_rmac_add(mac.data()); });
    for (const auto &[id, station] : hardware_.chip.stations.all()) {
        if (station.mac == mac && station.vlan_mask == 0 && station.src_port_mask == 0) {
            router_macs_.try_emplace(id, mac);
        }
    }
}

const Request &Layer::remove_router_mac(int station)
{
    router_mac_removal_ = run(fmt::format("delete router MAC at station {}", station),
                              [station] { return rtifhal_trident_rmac_del(station); });
    router_macs_.erase(station);
    return router_mac_removal_;
}

const Interface &Layer::bring_up(LifPlan plan)
{
    Interface &interface = routed_.make(std::move(plan));
    routed_.add(interface);
    return interface;
}

const Request &Layer::add_pair(PairPlan plan)
{
    Request up = run(fmt::format("add pair {}, {}", plan.primary, plan.secondary), [&plan] {
        rtifhal_kelvo_pvlan_svi_mapping_update(plan.primary, plan.secondary, 1);
        return 0;
    });
    pairs_.push_back({plan, std::move(up), {}});
    return pairs_.back().up;
}

Request Layer::end_pair(const PairPlan &plan)
{
    return run(fmt::format("delete pair {}, {}", plan.primary, plan.secondary), [&plan] {
        rtifhal_kelvo_pvlan_svi_mapping_update(plan.primary, plan.secondary, 0);
        return 0;
    });
}

Request Layer::remove_pair(const PairPlan &plan)
{
    Request down = end_pair(plan);
    std::erase_if(pairs_, [&plan](const Pair &pair) { return pair.plan == plan; });
    return down;
}

const Request &Layer::add_virtual_mac(VirtualMacPlan plan)
{
    Request up =
        run(fmt::format("add virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner),
            [&plan] { return rtifhal_trident_fhrp_mac_add(plan.mac.data(), plan.ifindex); });
    virtual_macs_.push_back({std::move(plan), std::move(up), {}});
    return virtual_macs_.back().up;
}

Request Layer::end_virtual_mac(const VirtualMacPlan &plan)
{
    return run(fmt::format("delete virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner),
               [&plan] { return rtifhal_trident_fhrp_mac_del(plan.mac.data(), plan.ifindex); });
}

Request Layer::remove_virtual_mac(const VirtualMacPlan &plan)
{
    Request down = end_virtual_mac(plan);
    std::erase_if(virtual_macs_, [&plan](const VirtualMac &known) {
        return known.plan.ifindex == plan.ifindex && known.plan.mac == plan.mac;
    });
    return down;
}

bool Layer::take_interfaces_down()
{
    bool clean = true;
    for (auto it = virtual_macs_.rbegin(); it != virtual_macs_.rend(); ++it) {
        it->down = end_virtual_mac(it->plan);
        clean = clean && it->down.ok();
    }
    for (auto it = pairs_.rbegin(); it != pairs_.rend(); ++it) {
        it->down = end_pair(it->plan);
        clean = clean && it->down.ok();
    }
    for (auto it = interfaces().rbegin(); it != interfaces().rend(); ++it) {
        clean = routed_.remove(**it).ok() && clean;
    }
    return clean;
}

bool Layer::take_down()
{
    bool clean = take_interfaces_down();
    clean = l2_.take_down() && clean;
    while (!router_macs_.empty()) {
        clean = remove_router_mac(router_macs_.rbegin()->first).code == 0 && clean;
    }
    return clean;
}

} // namespace lab::l3lif
