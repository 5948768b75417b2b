/*
 * leftovers.h: whether a teardown left anything behind, in the chip, in the
 * library's tables or in the store.
 *
 * Some things stay by design: the numbers that the library holds back, VLAN
 * 4094 with its spanning tree group, the switch's controls, what a port was
 * set to, the trunks without their members, and the flood lists that a routed port is taken off.
 */
#pragma once

#include "chip/snapshot.h"
#include "switch.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace lab::l3lif
{

/** A moment to compare with. */
struct Moment {
    simswitch::chip::Snapshot chip;     ///< what the chip holds
    std::set<int> iifs;                 ///< interface numbers in use
    std::set<std::uint32_t> stored;     ///< interfaces in the store
    std::set<std::string> virtual_macs; ///< virtual MACs that the library keeps
    std::set<int> vlan_records;         ///< VLANs that the forwarding manager knows
};

/** Looks at the switch and the library as they are now. */
Moment look(simswitch::Switch &hardware);

/** What there is now and wasn't before, one line each; empty when nothing was left behind. */
std::vector<std::string> left_behind(const Moment &before, simswitch::Switch &hardware);

/** What stays by design, in words; "nothing" when nothing does. */
std::string stays_by_design(const Moment &before, const simswitch::Switch &hardware);

} // namespace lab::l3lif
