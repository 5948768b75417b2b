/*
 * l2_table.h: which station is behind which port.
 *
 * The chip's tables have no L2 addresses, since routed interfaces need none:
 * this is the pipeline's own, and dies with it. Source addresses are learned
 * until the table is full, static entries are written by hand and never moved by
 * a frame. Nothing ages: there is no clock here. What a port's addresses mean
 * after it went down is for who takes it down to say, with flush().
 *
 * All places are there from the start, so that learning never allocates.
 */
#pragma once

#include "chip/outcome.h"
#include "chip/pipeline/station_index.h"

#include <map>
#include <vector>

namespace simswitch::chip::pipeline
{

/** Where a station is. */
struct L2Entry {
    std::uint64_t key = 0;  ///< VLAN above its MAC; 0 for a free place
    int gport = 0;          ///< module port or trunk as a generic port
    bool is_static = false; ///< written by hand

    std::uint16_t vlan() const { return static_cast<std::uint16_t>(key >> 48); }
    Mac mac() const;
};

/** The L2 addresses. */
class L2Table
{
public:
    static constexpr std::size_t DEFAULT_LIMIT = 4096; ///< unicast addresses

    explicit L2Table(std::size_t limit = DEFAULT_LIMIT);

    /**
     * Learns where a station is, new or moved. A static one stays where it is.
     *
     * @param vlan   1..4095
     * @param mac    a unicast address; another one isn't learned
     * @param gport  module port or trunk as a generic port
     * @return whether the table now has the address there
     */
    bool learn(int vlan, const Mac &mac, int gport);
    /** Writes a static unicast entry. -4 for a group address or a VLAN out of range; -6 full. */
    Outcome add_static(int vlan, const Mac &mac, int gport);
    /** Writes the ports of a group address. -4 for a unicast address or a VLAN out of range. */
    Outcome add_group(int vlan, const Mac &mac, const PortSet &ports);
    /** Takes an address out. -7 when there is none. */
    Outcome remove(int vlan, const Mac &mac);
    /** Takes all learned addresses of a generic port out, static ones stay. */
    void flush(int gport);
    /** Takes all learned addresses out. */
    void flush();

    /** Where a station is, null when that isn't known. */
    const L2Entry *find(int vlan, const Mac &mac) const;
    /** The ports of a group address, null when that isn't known. */
    const PortSet *find_group(int vlan, const Mac &mac) const;
    /** The number of unicast addresses. */
    std::size_t size() const { return size_; }
    std::size_t limit() const { return limit_; }
    /** The unicast entries in the order of VLAN and MAC. */
    std::vector<L2Entry> all() const;

private:
    L2Entry &place_of(std::uint64_t key);
    std::size_t home_of(std::uint64_t key) const;
    void take_out(std::size_t place);
    template <class Leaves> void take_out_if(Leaves leaves);

    std::size_t limit_;
    std::size_t size_ = 0;
    std::vector<L2Entry> places_;
    std::map<std::uint64_t, PortSet> groups_;
};

} // namespace simswitch::chip::pipeline
