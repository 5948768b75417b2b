/*
 * view.cpp: see view.h.
 */
#include "routing/view.h"

#include "config/networks.h"

#include <algorithm>
#include <cstddef>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

/** Whether an interface has a virtual MAC now. */
bool has_mac(const l3lif::Layer &layer, std::string_view owner, const config::Mac &mac)
{
    return std::any_of(layer.virtual_macs().begin(), layer.virtual_macs().end(),
                       [&](const l3lif::VirtualMac &known) {
                           return known.plan.owner == owner && known.plan.mac == mac;
                       });
}

/** The virtual MACs of the file that an interface has now. */
std::vector<const config::VirtualMac *> virtual_macs_of(const config::Description &config,
                                                        const l3lif::Layer &layer,
                                                        std::string_view owner)
{
    std::vector<const config::VirtualMac *> macs;
    for (const config::VirtualMac &mac : config.virtual_macs) {
        if (mac.owner == owner && has_mac(layer, owner, mac.mac)) {
            macs.push_back(&mac);
        }
    }
    return macs;
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
    std::vector<OwnAddress> addresses;
    for (const InterfaceView &interface : interfaces) {
        if (const auto *row = row_of(config, interface.plan->name)) {
            add_addresses(interface, *row, virtual_macs_of(config, layer, row->name), addresses);
        }
    }
    return addresses;
}

} // namespace lab::routing
