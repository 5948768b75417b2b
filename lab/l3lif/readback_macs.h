/*
 * readback_macs.h: what the chip holds of a virtual MAC and of a private-VLAN
 * pair.
 *
 * Which station is whose the library knows; the rest is read from the chip. A
 * virtual MAC of a primary's SVI has a station in each secondary too, and the
 * controls of a secondary name the ingress object of that SVI. readback.h
 * reads the interfaces.
 */
#pragma once

#include "l3lif/plans.h"

#include "switch.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lab::l3lif
{

/** A station of a virtual MAC. */
struct StationView {
    int station = 0;       ///< its number in the chip
    int vlan = 0;          ///< VLAN in which it matches; 0: in any
    int port = 0;          ///< port on which it matches; 0: on any
    bool mirrored = false; ///< in a secondary, for the primary's SVI
};

/** A virtual MAC in the chip. */
struct VirtualMacView {
    std::vector<StationView> stations; ///< the interface's own first, then by VLAN
    std::string missing;               ///< what it lacks, in words; empty when it is all there
};

/**
 * Reads a virtual MAC back.
 *
 * @param hardware     the switch
 * @param plan         the virtual MAC
 * @param secondaries  the secondaries of the VLAN of its interface
 */
VirtualMacView read_back(const simswitch::Switch &hardware, const VirtualMacPlan &plan,
                         const std::vector<std::uint16_t> &secondaries);

/** A private-VLAN pair in the chip. */
struct PairView {
    int iif = 0;         ///< the ingress object that the secondary names; 0: none
    int macs = 0;        ///< virtual MACs in the secondary
    std::string missing; ///< what it lacks, in words; empty when it is all there
    std::vector<std::string_view> families = {}; ///< "ipv4", "ipv6": what is routed there
};

/**
 * Reads a private-VLAN pair back.
 *
 * @param hardware  the switch
 * @param plan      the pair
 * @param svi       number of the primary's SVI in the chip; 0: it has none, and
 *                  there is nothing to mirror
 */
PairView read_back(const simswitch::Switch &hardware, const PairPlan &plan, int svi);

} // namespace lab::l3lif
