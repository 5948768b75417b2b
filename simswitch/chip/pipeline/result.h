/*
 * result.h: what became of a frame.
 *
 * A result has room for the longest frame and is meant to be used again and
 * again: nothing in it is allocated. It holds the frame as it leaves untagged;
 * write() gives the form that a port gets. What goes to the CPU is the frame as
 * it came in, with the port it came in on.
 */
#pragma once

#include "chip/pipeline/frame.h"

namespace simswitch::chip::pipeline
{

/** The end of a frame. */
enum class Verdict {
    sent,   ///< it left on at least one port; the CPU may have got a copy
    to_cpu, ///< the CPU alone got it
    dropped ///< nobody got it
};

/** Why a frame ended as it did. */
enum class Reason {
    none,
    // It left.
    routed,
    bridged,
    flooded,
    redirected,
    // It went to the CPU.
    bridge_protocol,
    arp,
    neighbour_discovery,
    link_local,
    broadcast,
    igmp,
    cpu_next_hop,
    cpu_address,
    cpu_member,
    ttl_expired,
    mtu,
    // It was dropped on its way in.
    bad_frame,
    too_long,
    no_port,
    discard_all,
    discard_untagged,
    discard_tagged,
    translation_miss,
    no_vlan,
    not_a_member,
    stp_in,
    // It isn't routable: bridged, or dropped where nothing is bridged.
    no_interface,
    not_ip,
    bad_header,
    group_address,
    no_station,
    station_class,
    family_off,
    bad_address,
    // It was dropped on its way out.
    no_label,
    reverse_path,
    field_drop,
    no_route,
    no_group,
    no_egress,
    black_hole,
    no_l3_interface,
    no_tunnel,
    ttl_low,
    no_trunk,
    no_trunk_port,
    no_out_vlan,
    out_not_a_member,
    stp_out,
    same_port,
    nobody,
};

/** "no route to the destination". */
const char *text(Reason reason);

/** What became of a frame. */
struct Result {
    Verdict verdict = Verdict::dropped;
    Reason reason = Reason::none;     ///< why
    bool cpu = false;                 ///< the CPU got the frame as it came in
    Reason cpu_reason = Reason::none; ///< why it did
    PortSet tagged{};                 ///< ports on which it left with a tag
    PortSet untagged{};               ///< ports on which it left without one
    int ingress = 0;                  ///< ingress object that it was given, 0 for none
    std::uint16_t ingress_vlan = 0;   ///< VLAN it was in, after translation; 0 for none
    int egress = 0;                   ///< L3 interface that it came to, 0 for none
    std::uint16_t vlan = 0;           ///< VLAN in which it left
    std::uint16_t priority = 0;       ///< upper four bits of its tag
    std::size_t size = 0;             ///< bytes of the untagged form
    std::size_t outer = 0; ///< bytes of the IP header that a tunnel put before the packet, or 0
    std::array<std::uint8_t, FRAME_MAX> bytes; ///< the untagged form; not set until a frame left

    // The bytes are left as they are: clearing them would cost more than a frame.
    Result() {} // NOLINT(modernize-use-equals-default)

    /** Begins anew. */
    void clear();
    /** Whether the frame left on a port. */
    bool left_on(int port) const { return tagged.has(port) || untagged.has(port); }
    /** The bytes that a port gets, 0 for a port on which the frame didn't leave. */
    std::size_t size_on(int port) const;
    /**
     * Writes the frame as it leaves on a port.
     *
     * @param port  the port
     * @param out   room for size_on(port) bytes
     * @return the number of bytes written; 0 when the frame didn't leave there or doesn't fit
     */
    std::size_t write(int port, std::span<std::uint8_t> out) const;
};

} // namespace simswitch::chip::pipeline
