/*
 * graph.h: how the objects of one interface hang together in the chip: its
 * ports, what ties them to its ingress object, the L3 interface of the same
 * number, the stations whose frames it routes, the next hops behind it.
 * object_book.h has the objects themselves.
 */
#pragma once

#include "l3lif/lif.h"
#include "l3lif/readback.h"
#include "page/object_book.h"
#include "page/records.h"

#include <map>
#include <vector>

namespace lab::page
{

/** The stations and next hops of a chip, ready to be looked up for many interfaces. */
class Surroundings
{
public:
    /** @param chip  as it is; must outlive this */
    explicit Surroundings(const simswitch::chip::Chip &chip);

    /** The stations that take frames of a VLAN that come in on one of those ports. */
    std::vector<int> stations(int vlan, const std::vector<int> &ports) const;
    /** The VLANs whose frames come in by an ingress object: an SVI's own, and its secondaries. */
    std::vector<int> vlans(int iif) const;
    /** The egress objects of an L3 interface. */
    std::vector<int> next_hops(int iif) const;

private:
    std::map<int, simswitch::chip::Station> stations_;
    std::map<int, std::vector<int>> next_hops_; ///< by L3 interface
    std::map<int, std::vector<int>> vlans_;     ///< by ingress object
};

/**
 * The graph of an interface.
 *
 * @param book         receives the objects
 * @param surroundings of the same chip
 * @param plan         the interface
 * @param view         what the chip has of it
 */
Graph graph_of(ObjectBook &book, const Surroundings &surroundings, const l3lif::LifPlan &plan,
               const l3lif::HardwareView &view);

} // namespace lab::page
