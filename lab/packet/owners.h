/*
 * owners.h: whose a station is. The library has the station of each virtual MAC;
 * after a restart it has none of them, and the configuration says whose they are
 * where the chip agrees with it. objects.h tells of stations with this.
 */
#pragma once

#include "l3lif/configured_macs.h"
#include "l3lif/plans.h"
#include "session/state.h"

#include <optional>
#include <string>
#include <vector>

namespace lab::packet
{

/** Whose MAC a station has. */
struct StationOwner {
    bool is_router = false;     ///< it is a router MAC
    bool is_virtual = false;    ///< it is a virtual MAC
    bool is_mirrored = false;   ///< of a primary's interface, in one of its secondaries
    std::string interface = {}; ///< whose virtual MAC it is; empty when that isn't certain

    /** "router MAC", "virtual MAC of Vlan100"; empty for nobody's. */
    std::string text() const;
};

/** Whose the stations of a switch are, as it is now. */
class StationOwners
{
public:
    /** @param state  must outlive this */
    explicit StationOwners(const session::State &state) : state_(state) {}

    /** The owner of a station of the chip; nobody for one that there isn't. */
    StationOwner of(int station) const;

private:
    const session::State &state_;
    mutable std::optional<l3lif::ConfiguredMacs> configured_; ///< made when it is first needed
};

/** The virtual MACs of the layer above, and those of the configuration that the chip has. */
std::vector<l3lif::VirtualMacPlan> virtual_macs_of(const session::State &state);

/** The private-VLAN pairs of the layer above, and those of the configuration that the chip has. */
std::vector<l3lif::PairPlan> pairs_of(const session::State &state);

} // namespace lab::packet
