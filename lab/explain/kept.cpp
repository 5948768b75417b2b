/*
 * kept.cpp: see kept.h.
 */
#include "explain/kept.h"

#include "config/networks.h"
#include "packet/owners.h"
#include "session/state.h"

#include <algorithm>

namespace lab::explain
{

namespace
{

bool is_interface_up(const session::State &state, const std::string &name)
{
    const auto interfaces = state.scene().interfaces;
    const auto found = std::ranges::find(interfaces, name, &session::SceneInterface::name);
    return found != interfaces.end() && (found->state == "up" || found->state == "stopped");
}

void add_address(std::vector<routing::OwnAddress> &addresses, routing::OwnAddress own)
{
    const auto same = std::ranges::find_if(addresses, [&own](const routing::OwnAddress &known) {
        return known.prefix.address == own.prefix.address;
    });
    if (same == addresses.end()) {
        addresses.push_back(std::move(own));
    } else {
        same->mac = own.mac;
    }
}

} // namespace

std::vector<routing::OwnAddress> addresses_of(const session::State &state,
                                              const std::string &interface)
{
    std::vector<routing::OwnAddress> addresses;
    for (const routing::OwnAddress &own : state.routing.addresses()) {
        if (own.interface == interface) {
            addresses.push_back(own);
        }
    }
    if (!addresses.empty() || !state.config || !is_interface_up(state, interface)) {
        return addresses;
    }
    const auto &rows = state.config->interfaces;
    const auto row = std::ranges::find(rows, interface, &config::RoutedInterface::name);
    if (row == rows.end()) {
        return addresses;
    }
    const config::Mac own_mac = row->mac.value_or(state.config->device_mac);
    for (const config::Prefix &prefix : row->addresses) {
        add_address(addresses, {interface, prefix, row->vrf, own_mac});
    }
    const auto known = packet::virtual_macs_of(state);
    for (const config::VirtualMac &mac : state.config->virtual_macs) {
        const bool is_there = std::ranges::any_of(known, [&](const auto &plan) {
            return plan.owner == interface && mac.owner == interface && plan.mac == mac.mac;
        });
        for (const config::IpAddress &address :
             is_there ? mac.addresses : std::vector<config::IpAddress>{}) {
            add_address(addresses, {interface, config::host_prefix(address), row->vrf, mac.mac});
        }
    }
    return addresses;
}

} // namespace lab::explain
