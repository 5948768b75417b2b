/*
 * station_index.cpp: the station that takes a frame.
 */
#include "chip/pipeline/station_index.h"

namespace simswitch::chip::pipeline
{

namespace
{

constexpr Mac WHOLE = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

/** The first of the stations, which are in the order of their ids, that wants VLAN, port, MAC. */
const FoundStation *first_match(const std::vector<FoundStation> &stations, std::uint64_t mac,
                                std::uint16_t vlan, int port)
{
    for (const FoundStation &found : stations) {
        const Station &station = found.station;
        if (((vlan ^ station.vlan) & station.vlan_mask) == 0 &&
            ((port ^ station.src_port) & station.src_port_mask) == 0 &&
            ((mac ^ number_of(station.mac)) & number_of(station.mac_mask)) == 0) {
            return &found;
        }
    }
    return nullptr;
}

} // namespace

void StationIndex::refresh(const Stations &stations)
{
    if (generation_ == stations.generation()) {
        return;
    }
    generation_ = stations.generation();
    by_mac_.clear();
    others_.clear();
    for (const auto &[id, station] : stations.all()) {
        (station.mac_mask == WHOLE ? by_mac_[number_of(station.mac)] : others_)
            .push_back({id, station});
    }
}

const FoundStation *StationIndex::match(const Mac &mac, std::uint16_t vlan, int port) const
{
    const std::uint64_t number = number_of(mac);
    const auto same_mac = by_mac_.find(number);
    const FoundStation *best =
        same_mac == by_mac_.end() ? nullptr : first_match(same_mac->second, number, vlan, port);
    const FoundStation *other = first_match(others_, number, vlan, port);
    return best == nullptr || (other != nullptr && other->id < best->id) ? other : best;
}

} // namespace simswitch::chip::pipeline
