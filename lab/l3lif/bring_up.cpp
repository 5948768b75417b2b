/*
 * bring_up.cpp: see bring_up.h.
 */
#include "l3lif/bring_up.h"

#include "l3lif/plans.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace lab::l3lif
{

std::vector<std::string> forget_earlier_run(simswitch::Switch &hardware,
                                            const std::filesystem::path &state_dir)
{
    if (state_dir.empty()) {
        return {};
    }
    const std::size_t stored = hardware.store.stored_interfaces().size();
    hardware.power_cycle();
    check_state(hardware);
    if (stored == 0) {
        return {};
    }
    return {fmt::format("{}: {} interfaces of an earlier run are dropped from the store",
                        state_dir.string(), stored)};
}

void check_state(const simswitch::Switch &hardware)
{
    if (!hardware.state_error().empty()) {
        throw std::runtime_error(hardware.state_error());
    }
}

void bring_all_up(const config::Description &config, Layer &layer,
                  const std::function<void(const Interface &)> &after_each,
                  const Progress &progress)
{
    auto vlans = vlan_plans_of(config);
    const auto plans = plans_of(config);
    const auto pairs = pair_plans_of(config);
    auto macs = virtual_mac_plans_of(config, plans);
    Steps steps(progress, vlans.size() + plans.size() + pairs.size() + macs.size());
    layer.add_router_mac(config.device_mac);
    for (auto &plan : vlans) {
        layer.set_up_vlan(std::move(plan));
        steps.step();
    }
    for (const auto &plan : plans) {
        const Interface &interface = layer.bring_up(plan);
        if (after_each) {
            after_each(interface);
        }
        steps.step();
    }
    for (const auto &plan : pairs) {
        layer.add_pair(plan);
        steps.step();
    }
    for (auto &plan : macs) {
        layer.add_virtual_mac(std::move(plan));
        steps.step();
    }
}

std::vector<NamedRequest> requests_up(const Layer &layer)
{
    std::vector<NamedRequest> requests = {{"add the router MAC", &layer.router_mac(), true}};
    for (const auto &vlan : layer.l2().vlans()) {
        requests.push_back({fmt::format("set up {}", vlan->plan.name), &vlan->up});
    }
    for (const auto &interface : layer.interfaces()) {
        requests.push_back({fmt::format("add {}", interface->lif->plan().name), &interface->up});
    }
    for (const Pair &pair : layer.pairs()) {
        requests.push_back(
            {fmt::format("add pair {}, {}", pair.plan.primary, pair.plan.secondary), &pair.up});
    }
    for (const VirtualMac &mac : layer.virtual_macs()) {
        requests.push_back({fmt::format("add virtual MAC {} of {}", config::mac_text(mac.plan.mac),
                                        mac.plan.owner),
                            &mac.up});
    }
    return requests;
}

} // namespace lab::l3lif
