/*
 * result.cpp: what became of a frame.
 */
#include "chip/pipeline/result.h"

#include <algorithm>

namespace simswitch::chip::pipeline
{

namespace
{

constexpr std::size_t MACS = 12; // the tag stands behind the two MACs

const char *sent_text(Reason reason)
{
    switch (reason) {
    case Reason::routed:
        return "routed";
    case Reason::bridged:
        return "bridged to a known address";
    case Reason::flooded:
        return "flooded in its VLAN";
    case Reason::redirected:
        return "redirected by a field entry";
    default:
        return nullptr;
    }
}

const char *cpu_text(Reason reason)
{
    switch (reason) {
    case Reason::bridge_protocol:
        return "a bridge protocol's frame";
    case Reason::arp:
        return "ARP on a routed interface";
    case Reason::neighbour_discovery:
        return "neighbour discovery on a routed interface";
    case Reason::link_local:
        return "a link-local packet on a routed interface";
    case Reason::broadcast:
        return "an IPv4 broadcast on a routed interface";
    case Reason::igmp:
        return "IGMP in a VLAN that snoops";
    case Reason::cpu_next_hop:
        return "its next hop is the CPU";
    case Reason::cpu_address:
        return "its destination is a station of the CPU";
    case Reason::cpu_member:
        return "the CPU is in its VLAN";
    case Reason::ttl_expired:
        return "its TTL ends here";
    case Reason::mtu:
        return "longer than the MTU of the L3 interface";
    default:
        return nullptr;
    }
}

const char *ingress_text(Reason reason)
{
    switch (reason) {
    case Reason::bad_frame:
        return "too short to be a frame";
    case Reason::too_long:
        return "longer than any frame";
    case Reason::no_port:
        return "no such port";
    case Reason::discard_all:
        return "the port discards all frames";
    case Reason::discard_untagged:
        return "the port discards untagged frames";
    case Reason::discard_tagged:
        return "the port discards tagged frames";
    case Reason::translation_miss:
        return "no VLAN translation, and the port drops what misses";
    case Reason::no_vlan:
        return "its VLAN doesn't exist";
    case Reason::not_a_member:
        return "the port isn't in its VLAN";
    case Reason::stp_in:
        return "the port's spanning tree state lets nothing in";
    case Reason::no_interface:
        return "not routable: no ingress interface";
    case Reason::not_ip:
        return "not routable: no IP packet";
    case Reason::bad_header:
        return "not routable: its IP header is bad";
    case Reason::group_address:
        return "not routable: sent to a group";
    case Reason::no_station:
        return "not routable: its destination MAC is no station's";
    case Reason::station_class:
        return "not routable: the station doesn't take its kind";
    case Reason::family_off:
        return "not routable: routing of its kind is off";
    case Reason::bad_address:
        return "not routable: its addresses aren't for routing";
    default:
        return nullptr;
    }
}

const char *egress_text(Reason reason)
{
    switch (reason) {
    case Reason::no_label:
        return "label-switched, and there are no labels";
    case Reason::reverse_path:
        return "the reverse path of its source doesn't lead here";
    case Reason::field_drop:
        return "a field entry drops it";
    case Reason::no_route:
        return "no route to its destination";
    case Reason::no_group:
        return "the route's multipath group doesn't exist";
    case Reason::no_egress:
        return "the egress object doesn't exist";
    case Reason::black_hole:
        return "its route is a black hole";
    case Reason::no_l3_interface:
        return "the L3 interface of the egress object doesn't exist";
    case Reason::no_tunnel:
        return "the tunnel initiator of the L3 interface doesn't exist";
    case Reason::ttl_low:
        return "its TTL is below the L3 interface's lowest";
    case Reason::no_trunk:
        return "the trunk of the next hop doesn't exist or is empty";
    case Reason::no_trunk_port:
        return "the trunk's member is no port";
    case Reason::no_out_vlan:
        return "the VLAN that it leaves in doesn't exist";
    case Reason::out_not_a_member:
        return "the port that it leaves on isn't in the VLAN";
    case Reason::stp_out:
        return "the spanning tree state of the port that it leaves on lets nothing out";
    case Reason::same_port:
        return "its destination is behind the port that it came in on";
    case Reason::nobody:
        return "nobody else in its VLAN gets it";
    default:
        return nullptr;
    }
}

} // namespace

const char *text(Reason reason)
{
    for (const auto of_kind : {sent_text, cpu_text, ingress_text, egress_text}) {
        if (const char *found = of_kind(reason)) {
            return found;
        }
    }
    return "no reason";
}

void Result::clear()
{
    verdict = Verdict::dropped;
    reason = Reason::none;
    cpu = false;
    cpu_reason = Reason::none;
    tagged = {};
    untagged = {};
    ingress = 0;
    ingress_vlan = 0;
    egress = 0;
    vlan = 0;
    priority = 0;
    size = 0;
    outer = 0;
}

std::size_t Result::size_on(int port) const
{
    return tagged.has(port) ? size + TAG_SIZE : untagged.has(port) ? size : 0;
}

std::size_t Result::write(int port, std::span<std::uint8_t> out) const
{
    const std::size_t wanted = size_on(port);
    if (wanted == 0 || wanted > out.size()) {
        return 0;
    }
    auto at = std::copy_n(bytes.begin(), MACS, out.begin());
    if (tagged.has(port)) {
        write16(out, MACS, TYPE_TAG);
        write16(out, MACS + 2, priority | vlan);
        at += TAG_SIZE;
    }
    std::copy(bytes.begin() + MACS, bytes.begin() + static_cast<std::ptrdiff_t>(size), at);
    return wanted;
}

} // namespace simswitch::chip::pipeline
