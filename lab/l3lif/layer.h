/*
 * layer.h: the platform-independent layer above the library, as far as the lab
 * plays it: it owns the routed interfaces, private-VLAN pairs and virtual MACs,
 * brings them up and takes them down request by request, and keeps what each
 * request did.
 *
 * Beside it: plans.h what there is to bring up, l2_side.h the VLANs below,
 * lif.h the record of one interface, readback.h and readback_macs.h what the
 * chip then holds, leftovers.h what a teardown left.
 */
#pragma once

#include "config/description.h"
#include "l3lif/l2_side.h"
#include "l3lif/lif.h"
#include "l3lif/plans.h"
#include "l3lif/request.h"

#include "services/tree.h"
#include "switch.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lab::l3lif
{

/** An interface and the requests that it was the subject of. */
struct Interface {
    std::unique_ptr<Lif> lif;
    std::vector<std::unique_ptr<Lif>> members; ///< a port-channel's, in the order of joining
    Request up;
    Request down; ///< empty until it is taken down
};

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
    explicit Layer(simswitch::Switch &hardware) : hardware_(hardware), l2_(hardware) {}

    /** Installs the router MAC; the code is the station's number, NO_STATION when refused. */
    const Request &add_router_mac(const config::Mac &mac);
    /** Sets a VLAN up on the L2 side, before what is routed in it. */
    const L2Vlan &set_up_vlan(VlanPlan plan) { return l2_.set_up(std::move(plan)); }
    /**
     * Brings an interface up, a port-channel member by
     * member. The reference stays good. A subinterface whose main interface
     * isn't up gets a record of it that is only registered.
     */
    const Interface &bring_up(LifPlan plan);
    /** Tells the library of a private-VLAN pair. */
    void add_pair(PairPlan plan);
    /** Installs a virtual MAC of an interface. */
    void add_virtual_mac(VirtualMacPlan plan);
    /**
     * Takes everything down for good: virtual MACs, pairs, interfaces, VLANs,
     * the last one of each first, then the router MAC. False when the library
     * reported a failure.
     */
    bool take_down();

    /** The interfaces in the order in which they came up. */
    const std::vector<std::unique_ptr<Interface>> &interfaces() const { return interfaces_; }
    const std::vector<Pair> &pairs() const { return pairs_; }
    const std::vector<VirtualMac> &virtual_macs() const { return virtual_macs_; }
    const L2Side &l2() const { return l2_; }
    const Request &router_mac() const { return router_mac_; }
    const Request &router_mac_removal() const { return router_mac_removal_; }

private:
    Request run(const std::string &name, const std::function<int()> &work);
    Request add(Interface &interface);
    Request add_members(Interface &interface);
    Request add_subinterface(Lif &lif);
    Request remove(Interface &interface);
    Request remove_members(Interface &interface);
    Request remove_subinterface(Lif &lif);
    Request remove_svi(Lif &lif);
    void file_under_main(Lif &lif);
    void become_main(Lif &lif);
    bool take_interfaces_down();

    simswitch::Switch &hardware_;
    GlibMessages glib_messages_{hardware_};
    L2Side l2_;
    std::map<std::uint32_t, simswitch::services::Tree> subinterfaces_; ///< by main interface
    std::map<std::uint32_t, std::unique_ptr<Lif>> bare_mains_; ///< registered and not routed
    std::vector<std::unique_ptr<Interface>> interfaces_;
    std::vector<Pair> pairs_;
    std::vector<VirtualMac> virtual_macs_;
    Request router_mac_;
    Request router_mac_removal_;
    std::optional<int> station_;
};

} // namespace lab::l3lif
