/*
 * links.h: where the CPU's frames come from and go to: the interface that a
 * frame came in on, and the ports on which hosts of an interface are asked for.
 */
#pragma once

#include "config/address.h"
#include "l3lif/layer.h"

#include "chip/pipeline/frame.h"
#include "chip/pipeline/result.h"
#include "switch.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::cpu
{

/** A port, and how frames are tagged there. */
struct Link {
    int port = 0;                         ///< the chip's port
    std::vector<std::uint16_t> tags = {}; ///< 16 bits each, the outer one first

    bool operator==(const Link &) const = default;
};

/** How a frame came in. */
struct Arrival {
    Link link;
    std::uint16_t vlan = 0; ///< the VLAN that it is in: 4094 on routed ports
    std::uint16_t vrf = 0;  ///< VRF of the lookup
    std::string interface;  ///< name of its interface
    config::Kind kind = config::Kind::port;
    config::Mac mac = {};        ///< the interface's own
    bool in_secondary = false;   ///< it came in on a secondary of the SVI's VLAN
    bool is_ip6_planned = false; ///< the configuration has IPv6 on the interface
};

/** A frame that the CPU got; the bytes aren't owned. */
struct Received {
    Arrival arrival;
    simswitch::chip::pipeline::Frame frame;

    /** The IP packet, or what is behind the tags of another frame. */
    std::span<const std::uint8_t> packet() const
    {
        const auto rest = frame.bytes.subspan(frame.l3);
        return frame.is_ip() && frame.fault == nullptr ? rest.first(frame.l3_length) : rest;
    }
    config::IpAddress from() const { return {frame.is_ip6(), frame.from}; }
    config::IpAddress to() const { return {frame.is_ip6(), frame.to}; }
};

/**
 * How a frame came in, which the chip has taken.
 *
 * @param port    port on which it came in
 * @param frame   the frame, read
 * @param result  what the chip did with it
 * @return nothing when it has no interface that is up
 */
std::optional<Arrival> arrival_of(const simswitch::Switch &hardware, const l3lif::Layer &layer,
                                  int port, const simswitch::chip::pipeline::Frame &frame,
                                  const simswitch::chip::pipeline::Result &result);

/**
 * The links on which a host of an interface is asked for: a routed port, one
 * member of a port-channel, for an SVI the ports of its VLAN and of its secondaries,
 * without those that aren't forwarding or that flooding is kept from.
 *
 * @param interface  its name
 * @param multicast  the question goes to a multicast group, else to all
 * @param attempt    from 0; each takes another member of a port-channel
 * @return none for an interface that isn't up, or a tunnel
 */
std::vector<Link> links_of(const simswitch::Switch &hardware, const l3lif::Layer &layer,
                           std::string_view interface, bool multicast, unsigned attempt);

} // namespace lab::cpu
