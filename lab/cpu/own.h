/*
 * own.h: the switch's own addresses as a frame on an interface meets them, with
 * the link-local ones that nobody configures.
 */
#pragma once

#include "config/address.h"
#include "cpu/links.h"
#include "cpu/packets.h"
#include "routing/routing.h"

#include <cstdint>
#include <optional>

namespace lab::cpu
{

/**
 * What answers for an address on the interface that a frame came in on: an address
 * of the interface, a virtual one, or its link-local one where it has IPv6.
 *
 * @return nothing for another address, those of other interfaces included
 */
std::optional<Party> own_on_link(const routing::Routing &routing, const Arrival &arrival,
                                 const config::IpAddress &address);

/**
 * The same for a packet, which may go to an address of any interface in the VRF; the
 * MAC is what the switch has on the interface that the packet came in on.
 */
std::optional<Party> own_in_vrf(const routing::Routing &routing, const Arrival &arrival,
                                const config::IpAddress &address);

/**
 * The address from which an error about a packet is reported: of the interface that
 * the packet came in on, in its sender's network where there is one; else of another
 * interface in the VRF.
 *
 * @param sender  who gets the report
 * @return nothing when there is none of this family
 */
std::optional<Party> reporter_of(const routing::Routing &routing, const Arrival &arrival,
                                 const config::IpAddress &sender);

/** Whether the switch itself sends from a MAC: on an interface, or as a virtual one. */
bool is_own_mac(const routing::Routing &routing, const Arrival &arrival, const config::Mac &mac);

/** Whether an IPv4 address is the first or last one of a network, which no host has. */
bool is_network_end(const routing::OwnAddress &network, const config::IpAddress &address);

/** Whether a packet of this source comes from one host, to which one may answer. */
bool is_single_host(const routing::Routing &routing, std::uint16_t vrf,
                    const config::IpAddress &source);

} // namespace lab::cpu
