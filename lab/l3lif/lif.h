/*
 * lif.h: one routed interface as the layer above owns it: the record that is
 * handed to the library at every call, and its properties. layer.h keeps them.
 */
#pragma once

#include "config/description.h"

#include "rtifhal_types.h"
#include "services/store.h"
#include "switch.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lab::l3lif
{

/** A member port of a port-channel. */
struct PlannedMember {
    std::string name = {};
    int chip_port = 0; ///< its number in the chip
    std::uint32_t ifindex = 0;
};

/** What an interface needs to know of its device. */
struct LifPlan {
    config::Kind kind = config::Kind::port;
    std::string name = {};
    std::string table = {}; ///< the table whose rows made it
    std::uint32_t ifindex = 0;
    int chip_port = 0;      ///< number in the chip of a port, or of a subinterface's port; else 0
    std::uint32_t main = 0; ///< a subinterface's port or port-channel, else 0
    std::uint16_t vlan = 0; ///< an SVI's VLAN, a subinterface's 802.1Q VLAN, else 0
    int trunk = 0;          ///< trunk of a port-channel or of its subinterface, from 1; else 0
    std::vector<PlannedMember> members = {}; ///< a port-channel's, in the order of joining
    config::Mac mac = {};
    std::uint16_t vrf = config::VRF_DEFAULT;
    std::uint16_t mtu = 0; ///< L3 MTU in bytes; 0: the library's own default
    bool ipv4 = false;
    bool ipv6 = false;
    bool mpls = false;
};

/** A routed interface; registered with the switch's directory as long as it lives. */
class Lif
{
public:
    Lif(simswitch::Switch &hardware, LifPlan plan);
    /** Forgets the registration, and frees a context that the library has left. */
    ~Lif();
    Lif(const Lif &) = delete;
    Lif &operator=(const Lif &) = delete;

    const LifPlan &plan() const { return plan_; }
    /** The record to hand to the library. */
    ::l3lif *record() { return &record_; }
    const ::l3lif *record() const { return &record_; }
    /** Puts it under its main interface. */
    void put_under(::l3lif *main) { record_.main_l3lif = main; }
    /**
     * Puts a subinterface under a view of its port-channel: a record with the
     * port-channel's ifindex and all else the subinterface's, on which the
     * library works while the subinterface's own record says what it is.
     */
    void put_under_view();
    /** After an add: what the library has put into the view is the subinterface's. */
    void take_context_from_view() { record_.l3lif_pd_ctxt = view_.l3lif_pd_ctxt; }
    /** After a delete: what is left of the context is the view's too. */
    void give_context_to_view() { view_.l3lif_pd_ctxt = record_.l3lif_pd_ctxt; }
    /**
     * After a restart: takes over what the store has of it, a context included.
     * A subinterface of a port-channel is under its view by then: the view is
     * what was stored.
     *
     * @return the record to restore: its own, or the view
     */
    ::l3lif *take_over(const simswitch::services::StoredInterface &stored);
    /** Its number in the chip as the library knows it; 0 while it has none. */
    int iif() const;

private:
    simswitch::Switch &hardware_;
    LifPlan plan_;
    ::l3lif record_ = {};
    ::l3lif view_ = {}; ///< of the port-channel under a subinterface, else unused
    l3lif_pi_ctxt properties_ = {};
};

} // namespace lab::l3lif
