/*
 * property_kinds.h: a routed interface of any kind on a switch of its own, with
 * the setter of its kind, and what the chip holds of it, field by field: so
 * that two interfaces that took different roads can be compared.
 */
#pragma once

#include "support/library_test.h"
#include "support/lif.h"

#include "services/tree.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace rtifhal_test::property_kinds
{

/** The kinds of routed interface. */
enum class IfKind : std::uint8_t { port, port_channel, svi, port_sub, channel_sub, tunnel };

/** "Port", "ChannelSub", …, for the names of tests. */
std::string name_of(IfKind kind);

/**
 * What the chip holds, by field: "port 5 control 8", "vlan 100 flags", "ingress
 * vrf", "interface mtu". "ingress multicast" is 1 where the ingress object names
 * the interface itself for multicast.
 */
using Held = std::map<std::string, std::uint32_t>;

/**
 * An interface that is up on a new switch and a library that knows nothing yet:
 * port 5; port-channel 7 on the ports 5 and 6; the SVI of VLAN 100, in which
 * routing and MPLS were off (flags 0x238); subinterface 10 of one of the first
 * two, on VLAN 100; tunnel 1.
 */
class Routed
{
public:
    /** Throws std::runtime_error when it doesn't come up. */
    Routed(IfKind kind, simswitch::chip::Kind chip, const l3lif_pi_ctxt &properties);

    /** Its properties, to be changed before a set. */
    l3lif_pi_ctxt &properties() { return subject_->properties; }
    /** Calls the setter of its kind and ends the request; the arguments are those of an SVI's. */
    int set(std::uint32_t property, std::uint32_t value);
    /** Gives it another class label and ends the request. */
    int relabel(std::uint16_t label);
    /** Stops it from routing and ends the request. */
    int disable();
    /** What the chip holds. */
    Held held() const;

private:
    /** Keeps an interface. */
    Lif &own(std::shared_ptr<Lif> lif);
    /** Keeps the interface that the setter is for, with the properties wanted. */
    Lif &subject(std::shared_ptr<Lif> lif);
    void up();
    void port_up(Lif &port);
    void port_channel_up(Lif &main);
    void svi_up();
    void port_sub_up();
    void channel_sub_up();
    void tunnel_up();
    /** The request of an add is done. */
    void done(int code);

    IfKind kind_;
    simswitch::Switch sw_;
    simswitch::services::Tree subs_;
    simswitch::services::Tree members_;
    std::vector<std::shared_ptr<Lif>> lifs_;
    Lif *subject_ = nullptr; ///< what the setter is called with
    l3lif_pi_ctxt wanted_;   ///< its properties at the add
};

} // namespace rtifhal_test::property_kinds
