/*
 * naive_stations.h: the stations as they have to be: router MACs, virtual MACs of interfaces, and
 * those that private-VLAN pairs mirror.
 */
#pragma once

#include "model/facts.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace model_test
{

/** Whose virtual MAC it is, and where its station matches. */
struct NaiveOwner {
    std::uint32_t ifindex = 0;
    bool is_svi = false;
    int key_vlan = 0;    ///< an SVI's VLAN, else 4094
    std::string place{}; ///< VLAN and port of its station, "4094/2", "any/any"
};

/** The stations. */
class NaiveStations
{
public:
    void add_router_mac(const std::string &mac);
    void remove_router_mac(const std::string &mac);
    bool has_router_mac(const std::string &mac) const { return router_macs_.contains(mac); }
    void add_virtual_mac(const NaiveOwner &owner, const std::string &mac);
    void remove_virtual_mac(const NaiveOwner &owner, const std::string &mac);
    void add_pair(int primary, int secondary);
    void remove_pair(int primary, int secondary);
    const std::set<std::pair<int, int>> &pairs() const { return pairs_; }
    /** The MACs of the virtual MACs in a VLAN. */
    std::set<std::string> macs_in(int vlan) const;

    /** Where the stations of a MAC match. */
    std::multiset<std::string> places(const std::string &mac) const
    {
        const auto found = places_.find(mac);
        return found == places_.end() ? std::multiset<std::string>() : found->second;
    }

    /** A restart that leaves the chip as it is: only router MACs stay known. */
    void forget_owners(const std::string &device_mac);
    /** After a fault: the stations of a MAC that are left over stay until the power goes. */
    void adopt(const std::string &mac, const std::multiset<std::string> &places);

    void add_to(Facts &facts) const;

private:
    using Key = std::tuple<std::uint32_t, int, std::string>; ///< ifindex, VLAN, MAC

    bool is_primary(int vlan) const;
    void put(const std::string &mac, const std::string &place) { places_[mac].insert(place); }
    void take(const std::string &mac, const std::string &place);

    std::map<std::string, std::multiset<std::string>> places_; ///< of the stations, by MAC
    std::map<Key, std::string> virtual_macs_;                  ///< with the place of each station
    std::set<std::string> router_macs_;
    std::set<std::pair<int, int>> pairs_;
    bool cpu_routes_ = false; ///< the CPU's port: on with each add of a router MAC, off with each
                              ///< delete
};

} // namespace model_test
