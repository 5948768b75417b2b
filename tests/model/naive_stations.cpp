/*
 * naive_stations.cpp: see naive_stations.h.
 */
#include "model/naive_stations.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace model_test
{

namespace
{

const std::string EVERYWHERE = "any/any";

std::string anywhere_in(int vlan)
{
    return fmt::format("{}/any", vlan);
}

} // namespace

void NaiveStations::take(const std::string &mac, const std::string &place)
{
    auto &of_it = places_[mac];
    if (const auto found = of_it.find(place); found != of_it.end()) {
        of_it.erase(found);
    }
}

bool NaiveStations::is_primary(int vlan) const
{
    return std::ranges::any_of(pairs_, [vlan](const auto &pair) { return pair.first == vlan; });
}

void NaiveStations::add_router_mac(const std::string &mac)
{
    put(mac, EVERYWHERE);
    router_macs_.insert(mac);
    cpu_routes_ = true;
}

void NaiveStations::remove_router_mac(const std::string &mac)
{
    take(mac, EVERYWHERE);
    router_macs_.erase(mac);
    cpu_routes_ = false;
}

void NaiveStations::add_virtual_mac(const NaiveOwner &owner, const std::string &mac)
{
    if (virtual_macs_.contains({owner.ifindex, owner.key_vlan, mac})) {
        return;
    }
    if (owner.is_svi && is_primary(owner.key_vlan)) {
        for (const auto &[primary, secondary] : pairs_) {
            if (primary == owner.key_vlan) {
                put(mac, anywhere_in(secondary));
                virtual_macs_.try_emplace({owner.ifindex, secondary, mac}, anywhere_in(secondary));
            }
        }
    }
    put(mac, owner.place);
    virtual_macs_[{owner.ifindex, owner.key_vlan, mac}] = owner.place;
}

void NaiveStations::remove_virtual_mac(const NaiveOwner &owner, const std::string &mac)
{
    const auto own = virtual_macs_.find({owner.ifindex, owner.key_vlan, mac});
    if (own == virtual_macs_.end()) {
        return;
    }
    if (owner.is_svi && is_primary(owner.key_vlan)) {
        for (const auto &[primary, secondary] : pairs_) {
            if (primary == owner.key_vlan &&
                virtual_macs_.erase({owner.ifindex, secondary, mac}) != 0) {
                take(mac, anywhere_in(secondary));
            }
        }
    }
    take(mac, own->second);
    virtual_macs_.erase(own);
}

void NaiveStations::add_pair(int primary, int secondary)
{
    if (!pairs_.insert({primary, secondary}).second) {
        return;
    }
    std::vector<Key> mirrored;
    for (const auto &[key, place] : virtual_macs_) {
        if (std::get<1>(key) == primary) {
            mirrored.emplace_back(std::get<0>(key), secondary, std::get<2>(key));
        }
    }
    for (const Key &key : mirrored) {
        put(std::get<2>(key), anywhere_in(secondary));
        virtual_macs_.try_emplace(key, anywhere_in(secondary));
    }
}

void NaiveStations::remove_pair(int primary, int secondary)
{
    pairs_.erase({primary, secondary});
    std::erase_if(virtual_macs_, [&](const auto &entry) {
        if (std::get<1>(entry.first) != secondary) {
            return false;
        }
        take(std::get<2>(entry.first), entry.second);
        return true;
    });
}

std::set<std::string> NaiveStations::macs_in(int vlan) const
{
    std::set<std::string> macs;
    for (const auto &[key, place] : virtual_macs_) {
        if (std::get<1>(key) == vlan) {
            macs.insert(std::get<2>(key));
        }
    }
    return macs;
}

void NaiveStations::forget_owners(const std::string &device_mac)
{
    virtual_macs_.clear();
    pairs_.clear();
    router_macs_.clear();
    const auto left = places_[device_mac];
    if (left.contains(EVERYWHERE) && cpu_routes_) {
        router_macs_.insert(device_mac);
        return;
    }
    // The layer above takes a station that doesn't route for half added, and makes it anew.
    while (places_[device_mac].contains(EVERYWHERE)) {
        take(device_mac, EVERYWHERE);
    }
    add_router_mac(device_mac);
}

void NaiveStations::adopt(const std::string &mac, const std::multiset<std::string> &places)
{
    places_[mac] = places;
}

void NaiveStations::add_to(Facts &facts) const
{
    for (const auto &[mac, of_it] : places_) {
        if (!of_it.empty()) {
            facts[fmt::format("station {} count", mac)] = fmt::to_string(of_it.size());
            facts[fmt::format("# VLAN and port of the stations of {}", mac)] =
                fmt::format("{}", fmt::join(of_it, " "));
        }
    }
}

} // namespace model_test
