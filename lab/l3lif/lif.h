/*
 * lif.h: one routed interface as the layer above owns it: the record that is
 * handed to the library at every call, and its properties. layer.h keeps them.
 */
#pragma once

#include "config/description.h"

#include "rtifhal_types.h"
#include "switch.h"

#include <cstdint>
#include <string>

namespace lab::l3lif
{

/** What an interface needs to know of its device. */
struct LifPlan {
    config::Kind kind = config::Kind::port;
    std::string name = {};
    std::string table = {}; ///< the table whose rows made it
    std::uint32_t ifindex = 0;
    int chip_port = 0; ///< a port's number in the chip, else 0
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
    /** Its number in the chip as the library knows it; 0 while it has none. */
    int iif() const;

private:
    simswitch::Switch &hardware_;
    LifPlan plan_;
    ::l3lif record_ = {};
    l3lif_pi_ctxt properties_ = {};
};

} // namespace lab::l3lif
