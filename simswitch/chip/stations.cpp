/*
 * stations.cpp: the station table.
 */
#include "chip/stations.h"

#include "chip/refusal.h"

#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

Outcome check(const Station &station)
{
    if (station.vlan > LAST_VLAN) {
        return out_of_range("VLAN", station.vlan, 0, LAST_VLAN);
    }
    if (station.vlan_mask > LAST_VLAN) {
        return out_of_range("VLAN mask", station.vlan_mask, 0, LAST_VLAN);
    }
    return {};
}

bool matches(const Station &station, const Mac &mac, std::uint16_t vlan, int port)
{
    for (std::size_t i = 0; i < mac.size(); ++i) {
        if (((mac.at(i) ^ station.mac.at(i)) & station.mac_mask.at(i)) != 0) {
            return false;
        }
    }
    return ((vlan ^ station.vlan) & station.vlan_mask) == 0 &&
           ((port ^ station.src_port) & station.src_port_mask) == 0;
}

} // namespace

std::string text(const Station &station)
{
    return fmt::format("flags {:#x} mac {}/{} vlan {}/{:#x} port {}/{:#x}", station.flags,
                       text(station.mac), text(station.mac_mask), station.vlan, station.vlan_mask,
                       station.src_port, static_cast<unsigned>(station.src_port_mask));
}

Outcome Stations::create(const Station &station, int &id)
{
    if (Outcome refused = check(station); !refused.ok()) {
        return refused;
    }
    if (table_.size() >= limit_) {
        return table_full("station", limit_);
    }
    id = ids_.take();
    table_.put(id, station);
    return {};
}

Outcome Stations::remove(int id)
{
    if (!table_.erase(id)) {
        return unknown("station", id);
    }
    ids_.give_back(id);
    return {};
}

Outcome Stations::set(int id, const Station &station)
{
    if (Outcome refused = check(station); !refused.ok()) {
        return refused;
    }
    if (!table_.has(id)) {
        return unknown("station", id);
    }
    table_.put(id, station);
    return {};
}

std::optional<int> Stations::match(const Mac &mac, std::uint16_t vlan, int port) const
{
    std::optional<int> first;
    table_.for_each([&](int id, const Station &station) {
        if ((!first || id < *first) && matches(station, mac, vlan, port)) {
            first = id;
        }
    });
    return first;
}

Outcome Stations::restore(int id, const Station &record)
{
    const int last = FIRST_STATION + static_cast<int>(limit_) - 1;
    if (id < FIRST_STATION || id > last) {
        return out_of_range("station", id, FIRST_STATION, last);
    }
    if (Outcome refused = check(record); !refused.ok()) {
        return refused;
    }
    table_.put(id, record);
    ids_.take(id);
    return {};
}

} // namespace simswitch::chip
