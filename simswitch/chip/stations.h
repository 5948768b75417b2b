/*
 * stations.h: the L2 stations: which destination MACs, in which VLAN, lift a
 * frame out of bridging into routing.
 *
 * The chip gives the ids, from 1. Several stations may match the same frames:
 * the chip doesn't compare them, and the one with the lowest id takes a frame.
 */
#pragma once

#include "chip/basics.h"
#include "chip/outcome.h"
#include "chip/table.h"

#include <optional>

namespace simswitch::chip
{

inline constexpr int FIRST_STATION = 1; ///< id of the first station

/** A station: a frame matches when each field, under its mask, is the frame's. */
struct Station {
    std::uint32_t flags = 0;     ///< traffic classes that the station terminates
    Mac mac{};                   ///< destination MAC
    Mac mac_mask{};              ///< bits of it that count
    std::uint16_t vlan = 0;      ///< VLAN id, 0..4095
    std::uint16_t vlan_mask = 0; ///< bits of it that count; 0: any VLAN
    int src_port = 0;            ///< port on which the frame came in
    int src_port_mask = 0;       ///< bits of it that count; 0: any port

    bool operator==(const Station &) const = default;
};

/** "flags 0x1c mac 00:…/ff:… vlan 0/0x0 port 0/0". */
std::string text(const Station &station);

/** The station table. */
class Stations
{
public:
    explicit Stations(std::size_t limit) : limit_(limit) {}

    /**
     * Adds a station.
     *
     * @param station  the station
     * @param id       receives its id; left alone on failure
     * @return 0; -4 for a VLAN or mask above 4095; -6 when the table is full
     */
    Outcome create(const Station &station, int &id);
    /** Removes a station. -7 when there is none of this id. */
    Outcome remove(int id);
    /** Replaces a station. -4 as create; -7 when there is none of this id. */
    Outcome set(int id, const Station &station);

    /**
     * Looks for the station that takes a frame.
     *
     * @param mac   destination MAC of the frame
     * @param vlan  its VLAN, 0..4095
     * @param port  the port on which it came in
     * @return the id of the first station, by id, that matches under its masks
     */
    std::optional<int> match(const Mac &mac, std::uint16_t vlan, int port) const;

    /** The station of an id, null when there is none. */
    const Station *find(int id) const { return table_.find(id); }
    std::size_t size() const { return table_.size(); }
    std::map<int, Station> all() const { return table_.all(); }

    // For who keeps a copy of the table across a restart.

    /** Empties the table, of what is there at boot too. */
    void clear()
    {
        table_.clear();
        ids_.clear();
    }
    /** Puts an entry of the copy in; a record that create or a setter would refuse is refused. */
    Outcome restore(int id, const Station &record);
    /** Which entries were written. */
    Changes<int> &changes() { return table_.changes(); }
    /** Grows with each write. */
    std::uint64_t generation() const { return table_.generation(); }

private:
    std::size_t limit_;
    IdPool ids_{FIRST_STATION};
    Table<Station> table_;
};

} // namespace simswitch::chip
