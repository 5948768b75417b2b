/*
 * layer.h: the platform-independent layer above the library, as far as the lab
 * plays it: it owns the routed interfaces, private-VLAN pairs, virtual and
 * router MACs, brings them up and takes them down request by request, and keeps
 * what each request did.
 *
 * Beside it: plans.h what there is to bring up, l2_side.h the VLANs below,
 * routed_interfaces.h the interfaces, property_requests.h changes of them,
 * readback.h and readback_macs.h what the chip then holds, leftovers.h what a
 * teardown left.
 */
#pragma once

#include "config/description.h"
#include "l3lif/l2_side.h"
#include "l3lif/plans.h"
#include "l3lif/request.h"
#include "l3lif/routed_interfaces.h"

#include "switch.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::l3lif
{

/** A private-VLAN pair and its requests. */
struct Pair {
    PairPlan plan;
    Request up;
    Request down; ///< empty until it is taken back
};

/** A virtual MAC and its requests. */
struct VirtualMac {
    VirtualMacPlan plan;
    Request up;
    Request down; ///< empty until it is removed
};

/** The layer above. */
class Layer
{
public:
    /** The number of a router MAC that the chip didn't take. */
    static constexpr int NO_STATION = 0xFFFF;

    /** @param hardware  the switch that stands in for the platform; must outlive this */
    explicit Layer(simswitch::Switch &hardware) : hardware_(hardware) {}

    /** Installs a router MAC; the code is the station's number, NO_STATION when refused. */
    const Request &add_router_mac(const config::Mac &mac);
    /**
     * After a restart, in restore mode: tells the library of a router MAC, and
     * takes over its station where the chip has one.
     */
    void adopt_router_mac(const config::Mac &mac);
    /** Removes a router MAC. @param station  its number */
    const Request &remove_router_mac(int station);
    /** Sets a VLAN up on the L2 side, before what is routed in it. */
    const L2Vlan &set_up_vlan(VlanPlan plan) { return l2_.set_up(std::move(plan)); }
    /** Makes a VLAN that is set up a primary, a secondary, or neither. */
    void set_role(std::uint16_t vlan, config::VlanRole role) { l2_.set_role(vlan, role); }
    /** The L2 side, which takes over VLANs after a restart. */
    L2Side &l2() { return l2_; }
    /** The routed interfaces, which are taken over after a restart. */
    RoutedInterfaces &routed() { return routed_; }
    /** Brings an interface up for the first time. The reference stays good. */
    const Interface &bring_up(LifPlan plan);
    /** Brings an interface up again; see RoutedInterfaces::add. */
    const Request &bring_up(Interface &interface) { return routed_.add(interface); }
    /** Takes an interface down; see RoutedInterfaces::remove. */
    const Request &take_down(Interface &interface, bool keep)
    {
        return routed_.remove(interface, keep);
    }
    /** Tells the library of a private-VLAN pair, whose VLANs have their roles. */
    const Request &add_pair(PairPlan plan);
    /** Takes a pair back. @return the request; it is as if the pair had never been told */
    Request remove_pair(const PairPlan &plan);
    /** Installs a virtual MAC of an interface. */
    const Request &add_virtual_mac(VirtualMacPlan plan);
    /** Removes a virtual MAC of an interface, be it known or not. */
    Request remove_virtual_mac(const VirtualMacPlan &plan);
    /**
     * Takes everything down for good: virtual MACs, pairs, interfaces, VLANs,
     * the last one of each first, then the router MACs. False when the library
     * reported a failure.
     */
    bool take_down();

    /** The interfaces in the order in which they first came up. */
    const std::vector<std::unique_ptr<Interface>> &interfaces() const { return routed_.all(); }
    const RoutedInterfaces &routed() const { return routed_; }
    const std::vector<Pair> &pairs() const { return pairs_; }
    const std::vector<VirtualMac> &virtual_macs() const { return virtual_macs_; }
    /** The router MACs that the chip has taken, by station. */
    const std::map<int, config::Mac> &router_macs() const { return router_macs_; }
    const L2Side &l2() const { return l2_; }
    const Request &router_mac() const { return router_mac_; }
    const Request &router_mac_removal() const { return router_mac_removal_; }

private:
    Request run(const std::string &name, const std::function<int()> &work);
    Request end_pair(const PairPlan &plan);
    Request end_virtual_mac(const VirtualMacPlan &plan);
    bool take_interfaces_down();

    simswitch::Switch &hardware_;
    GlibMessages glib_messages_{hardware_};
    L2Side l2_{hardware_};
    RoutedInterfaces routed_{hardware_};
    std::vector<Pair> pairs_;
    std::vector<VirtualMac> virtual_macs_;
    std::map<int, config::Mac> router_macs_;
    Request router_mac_;         ///< the last one that was installed
    Request router_mac_removal_; ///< the last one that was removed
};

} // namespace lab::l3lif
