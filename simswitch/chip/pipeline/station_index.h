/*
 * station_index.h: the station that takes a frame, found without asking each.
 *
 * Nearly every station wants one whole MAC: those are found by their MAC. The
 * others are asked one by one. As in the table (stations.h), of all that match
 * the one with the lowest id takes the frame.
 */
#pragma once

#include "chip/stations.h"

#include <unordered_map>
#include <vector>

namespace simswitch::chip::pipeline
{

/** A station with its id. */
struct FoundStation {
    int id = 0;
    Station station{};
};

/** A MAC as a number, for keys. */
constexpr std::uint64_t number_of(const Mac &mac)
{
    std::uint64_t number = 0;
    for (const std::uint8_t byte : mac) {
        number = number << 8 | byte;
    }
    return number;
}

/** The stations by MAC. */
class StationIndex
{
public:
    /** Gathers the stations anew when the table was written to since the last time. */
    void refresh(const Stations &stations);

    /** The station that takes a frame, as Stations::match; null when none does. */
    const FoundStation *match(const Mac &mac, std::uint16_t vlan, int port) const;

private:
    std::uint64_t generation_ = 0;
    std::unordered_map<std::uint64_t, std::vector<FoundStation>> by_mac_;
    std::vector<FoundStation> others_;
};

} // namespace simswitch::chip::pipeline
