/*
 * view.cpp: see view.h.
 */
#include "routing/view.h"

#include "config/networks.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <unordered_map>
#include <utility>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

/** What the file says of an interface. */
struct Rows {
    const config::RoutedInterface *row = nullptr;
    std::vector<const config::VirtualMac *> macs; ///< those that it has now
};

/** The same of all, by name: there may be thousands. */
std::unordered_map<std::string_view, Rows> rows_by_name(const config::Description &config,
                                                        const l3lif::Layer &layer)
{
    std::set<std::pair<std::string_view, config::Mac>> there;
    for (const l3lif::VirtualMac &mac : layer.virtual_macs()) {
        there.emplace(mac.plan.owner, mac.plan.mac);
    }
    std::unordered_map<std::string_view, Rows> rows;
    for (const config::RoutedInterface &interface : config.interfaces) {
        rows.try_emplace(interface.name, Rows{&interface, {}});
    }
    for (const config::VirtualMac &mac : config.virtual_macs) {
        const auto owner = rows.find(mac.owner);
        if (owner != rows.end() && there.contains({mac.owner, mac.mac})) {
            owner->second.macs.push_back(&mac);
        }
    }
    return rows;
}

void add_addresses(const InterfaceView &interface, const config::RoutedInterface &row,
                   const std::vector<const config::VirtualMac *> &macs,
                   std::vector<OwnAddress> &addresses)
{
    const std::size_t first = addresses.size();
    for (const config::Prefix &prefix : row.addresses) {
        addresses.push_back({row.name, prefix, interface.vrf, interface.mac});
    }
    for (const config::VirtualMac *mac : macs) {
        for (const config::IpAddress &address : mac->addresses) {
            const auto same = std::find_if(
                addresses.begin() + static_cast<std::ptrdiff_t>(first), addresses.end(),
                [&address](const OwnAddress &known) { return known.prefix.address == address; });
            if (same != addresses.end()) {
                same->mac = mac->mac;
            } else {
                addresses.push_back(
                    {row.name, config::host_prefix(address), interface.vrf, mac->mac});
            }
        }
    }
}

} // namespace

std::vector<InterfaceView> interfaces_up(const l3lif::Layer &layer, const chip::Chip &chip)
{
    std::vector<InterfaceView> views;
    for (const auto &interface : layer.interfaces()) {
        if (interface->standing() != l3lif::Standing::up) {
            continue;
        }
        const int iif = interface->lif->iif();
        const chip::L3Interface *object = chip.l3_interfaces.find(iif);
        if (iif != 0 && object != nullptr) {
            views.push_back({&interface->lif->plan(), iif, static_cast<std::uint16_t>(object->vrf),
                             object->vlan, object->mac});
        }
    }
    return views;
}

const InterfaceView *find(const std::vector<InterfaceView> &interfaces, std::string_view name)
{
    const auto found =
        std::find_if(interfaces.begin(), interfaces.end(),
                     [name](const InterfaceView &view) { return view.plan->name == name; });
    return found == interfaces.end() ? nullptr : &*found;
}

const config::RoutedInterface *row_of(const config::Description &config, std::string_view name)
{
    const auto found = std::find_if(
        config.interfaces.begin(), config.interfaces.end(),
        [name](const config::RoutedInterface &interface) { return interface.name == name; });
    return found == config.interfaces.end() ? nullptr : &*found;
}

std::vector<OwnAddress> addresses_on(const config::Description &config, const l3lif::Layer &layer,
                                     const std::vector<InterfaceView> &interfaces)
{
    const auto rows = rows_by_name(config, layer);
    std::vector<OwnAddress> addresses;
    for (const InterfaceView &interface : interfaces) {
        const auto found = rows.find(interface.plan->name);
        if (found != rows.end()) {
            add_addresses(interface, *found->second.row, found->second.macs, addresses);
        }
    }
    return addresses;
}

} // namespace lab::routing
