/*
 * up_result.cpp: see up_result.h.
 */
#include "report/up_result.h"

#include <algorithm>

namespace lab::report
{

std::size_t UpResult::up_count() const
{
    return static_cast<std::size_t>(
        std::count_if(interfaces.begin(), interfaces.end(),
                      [](const InterfaceResult &interface) { return interface.up; }));
}

std::size_t UpResult::calls() const
{
    std::size_t count = layer->router_mac().call_count;
    for (const auto &interface : interfaces) {
        count += interface.interface->up.call_count;
    }
    for (const auto &vlan : layer->l2().vlans()) {
        count += vlan->up.call_count;
    }
    for (const auto &result : virtual_macs) {
        count += result.mac->up.call_count;
    }
    for (const auto &result : pairs) {
        count += result.pair->up.call_count;
    }
    return count;
}

std::vector<const l3lif::L2Vlan *> UpResult::failed_vlans() const
{
    std::vector<const l3lif::L2Vlan *> failed;
    for (const auto &vlan : layer->l2().vlans()) {
        if (!vlan->up.ok()) {
            failed.push_back(vlan.get());
        }
    }
    return failed;
}

std::size_t UpResult::failed_macs() const
{
    return static_cast<std::size_t>(
        std::count_if(virtual_macs.begin(), virtual_macs.end(),
                      [](const VirtualMacResult &result) { return !result.error.empty(); }));
}

std::size_t UpResult::failed_pairs() const
{
    return static_cast<std::size_t>(
        std::count_if(pairs.begin(), pairs.end(),
                      [](const PairResult &result) { return !result.error.empty(); }));
}

bool UpResult::has_router_mac() const
{
    return layer->router_mac().code != l3lif::Layer::NO_STATION;
}

bool UpResult::ok() const
{
    const bool gone = !teardown || (teardown->clean && teardown->left.empty());
    const bool all_up = up_count() == interfaces.size() && failed_vlans().empty() &&
                        failed_macs() == 0 && failed_pairs() == 0;
    return has_router_mac() && all_up && gone;
}

} // namespace lab::report
