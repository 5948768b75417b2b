/*
 * naive_vlans.h: the VLANs as they have to be: who uses one, which ports are in it, when it ends.
 */
#pragma once

#include "model/facts.h"

#include <map>
#include <set>

namespace model_test
{

/** Who uses a VLAN. */
struct NaiveUses {
    std::set<int> ports; ///< that hold a routed use
    bool svi = false;
    bool l2 = false;

    bool none() const { return ports.empty() && !svi && !l2; }
};

/** The VLANs. */
class NaiveVlans
{
public:
    static constexpr int ROUTED = 4094; ///< of all routed ports; never counted, never ended

    /** The L2 side sets a VLAN up. */
    void set_up(int vlan, const std::set<int> &ports)
    {
        members_[vlan].insert(ports.begin(), ports.end());
        members_[vlan].insert(CPU);
        uses_[vlan].l2 = true;
    }
    /** A port takes a routed use of a VLAN on, which comes to be when it isn't there. */
    void join(int vlan, int port)
    {
        members_[vlan].insert({CPU, port});
        held_[port].insert(vlan);
        if (vlan != ROUTED) {
            uses_[vlan].ports.insert(port);
        }
    }
    /** A port gives it up; nobody looks whether it had it, or the VLAN is there. */
    void leave(int vlan, int port)
    {
        if (const auto found = members_.find(vlan); found != members_.end()) {
            found->second.erase(port);
        }
        held_[port].erase(vlan);
        if (vlan != ROUTED) {
            uses_[vlan].ports.erase(port);
            end_if_unused(vlan);
        }
    }
    /** Whether the chip has the VLAN and the port in it. */
    bool has(int vlan, int port) const
    {
        const auto found = members_.find(vlan);
        return found != members_.end() && found->second.contains(port);
    }
    void set_svi(int vlan, bool svi)
    {
        uses_[vlan].svi = svi;
        if (!svi) {
            end_if_unused(vlan);
        }
    }
    /** A restart that leaves the chip as it is: no port is counted, nor holds a VLAN. */
    void forget_uses()
    {
        held_.clear();
        uses_.clear();
    }
    /** A restored port or subinterface: its port holds the VLAN, which doesn't count it. */
    void restore_port(int vlan, int port) { held_[port].insert(vlan); }

    void add_to(Facts &facts) const;

private:
    static constexpr int CPU = 0;

    void end_if_unused(int vlan)
    {
        if (uses_[vlan].none()) {
            members_.erase(vlan);
        }
    }

    std::map<int, std::set<int>> members_; ///< of the VLANs that are in the chip
    std::map<int, NaiveUses> uses_;
    std::map<int, std::set<int>> held_; ///< VLANs by port
};

} // namespace model_test
