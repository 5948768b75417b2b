/*
 * l2_side.h: the L2 manager of the switch, as far as the lab plays it: it sets
 * VLANs up before routed interfaces use them, and ends them when nobody does.
 *
 * A VLAN has its members, the CPU, routing switched off until an SVI comes, its
 * record with the forwarding manager, and its mark with the library as an L2
 * VLAN. The default VLAN is in the chip from the start; it is left as it was.
 * layer.h has the routed interfaces.
 */
#pragma once

#include "l3lif/plans.h"
#include "l3lif/request.h"

#include "chip/vlans.h"
#include "switch.h"

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace lab::l3lif
{

/** A VLAN and the requests that it was the subject of. */
struct L2Vlan {
    VlanPlan plan;
    Request up;
    Request down;                                ///< empty until it is taken down
    std::optional<simswitch::chip::Vlan> before; ///< as it was, if it was there
    std::map<int, int> untagged_before;          ///< VLAN of a port's untagged frames, by port
};

/** The L2 side. */
class L2Side
{
public:
    /** @param hardware  must outlive this */
    explicit L2Side(simswitch::Switch &hardware) : hardware_(hardware) {}

    /** Sets a VLAN up. The reference stays good. */
    const L2Vlan &set_up(VlanPlan plan);
    /**
     * After a restart: takes over a VLAN that an earlier process has set up.
     *
     * @return whether it was; nothing is done unless the chip has all of it
     */
    bool adopt(VlanPlan plan);
    /** The same for one of which the chip or the forwarding manager has only a part. */
    const L2Vlan &repair(VlanPlan plan);
    /** The VLAN of an id, null when it wasn't set up here. */
    const L2Vlan *find(std::uint16_t vlan) const;
    /** Makes a VLAN that is set up a primary, a secondary, or neither. */
    void set_role(std::uint16_t vlan, config::VlanRole role);
    /**
     * Takes the VLANs down, the last one first. One that the library still
     * counts users of stays. False when one stays, or the chip refused.
     */
    bool take_down();

    /** The VLANs in the order in which they were set up. */
    const std::vector<std::unique_ptr<L2Vlan>> &vlans() const { return vlans_; }

private:
    simswitch::Outcome create(L2Vlan &vlan);
    void fill(L2Vlan &vlan);
    void join_ports(L2Vlan &vlan);
    void leave_ports(const L2Vlan &vlan);
    simswitch::Outcome end(const L2Vlan &vlan);

    simswitch::Switch &hardware_;
    L2Vlan &keep(std::unique_ptr<L2Vlan> vlan);

    std::vector<std::unique_ptr<L2Vlan>> vlans_;
    std::unordered_map<int, L2Vlan *> by_id_;
};

} // namespace lab::l3lif
