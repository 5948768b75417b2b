/*
 * run_route.h: where a routable packet goes, and what it becomes on the way.
 */
#pragma once

#include "chip/pipeline/run.h"

namespace simswitch::chip::pipeline
{

/** Whether a route leads out of the interface that the frame came in on. */
template <class Observer> bool Run<Observer>::leads_back(const FoundRoute &found) const
{
    const auto is_back = [this](int egress_id) {
        const Egress *egress = chip_.egresses.find(egress_id);
        return egress != nullptr && egress->interface == iif_;
    };
    if (!found.route.multipath) {
        return is_back(found.route.next_hop);
    }
    const MultipathGroup *group = chip_.multipath_groups.find(found.route.next_hop);
    return group != nullptr && std::any_of(group->members.begin(), group->members.end(), is_back);
}

template <class Observer> bool Run<Observer>::pass_reverse_path()
{
    const int mode = ingress_->urpf_mode;
    if (mode == REVERSE_PATH_OFF) {
        return true;
    }
    const bool ip6 = frame_.is_ip6();
    const FoundRoute *found = indexes_.routes.find(ingress_->vrf, ip6, frame_.from);
    const bool passes = found != nullptr && (mode == REVERSE_PATH_LOOSE || leads_back(*found));
    tell([&] {
        const char *name = mode == REVERSE_PATH_LOOSE ? "loose" : "strict";
        if (found == nullptr) {
            return Line{Mark::miss,
                        Stage::reverse_path,
                        "route",
                        fmt::format("vrf {} {}", ingress_->vrf, address_text(ip6, frame_.from)),
                        fmt::format("{}: no route to the source", name),
                        nearest_route(chip_.routes, ingress_->vrf, ip6, frame_.from)};
        }
        return Line{passes ? Mark::hit : Mark::miss,
                    Stage::reverse_path,
                    "route",
                    text(found->key),
                    passes ? fmt::format("{}: {}", name, text(found->route))
                           : fmt::format("{}: {} doesn't leave by interface {}", name,
                                         text(found->route), iif_),
                    ""};
    });
    return passes || drop(Reason::reverse_path);
}

template <class Observer> void Run<Observer>::route()
{
    const bool ip6 = frame_.is_ip6();
    const FoundRoute *found = indexes_.routes.find(ingress_->vrf, ip6, frame_.to);
    tell([&] {
        if (found == nullptr) {
            return Line{Mark::miss,
                        Stage::route,
                        "route",
                        fmt::format("vrf {} {}", ingress_->vrf, address_text(ip6, frame_.to)),
                        "none matches",
                        nearest_route(chip_.routes, ingress_->vrf, ip6, frame_.to)};
        }
        return Line{Mark::hit, Stage::route, "route", text(found->key), text(found->route), ""};
    });
    if (found == nullptr) {
        drop(Reason::no_route);
        return;
    }
    if (!found->route.multipath) {
        send_to(found->route.next_hop);
        return;
    }
    const MultipathGroup *group = chip_.multipath_groups.find(found->route.next_hop);
    const std::size_t count = group == nullptr ? 0 : group->members.size();
    const std::size_t chosen = count == 0 ? 0 : path_of(flow_hash(frame_), count);
    tell([&] {
        const std::string id = std::to_string(found->route.next_hop);
        if (count == 0) {
            return Line{Mark::miss,
                        Stage::multipath,
                        "multipath_group",
                        id,
                        "does not exist",
                        nearest_id("group", chip_.multipath_groups, found->route.next_hop)};
        }
        return Line{
            Mark::hit,
            Stage::multipath,
            "multipath_group",
            id,
            fmt::format("path {} of {}: egress {}", chosen + 1, count, group->members[chosen]),
            ""};
    });
    if (count == 0) {
        drop(Reason::no_group);
    } else {
        send_to(group->members[chosen]);
    }
}

/** The port of a next hop, -1 when it has none; then the frame has been dropped. */
template <class Observer> int Run<Observer>::port_of(const Egress &egress)
{
    if (egress.trunk != 0) {
        return member_of_trunk(egress.trunk);
    }
    if (gport_kind(egress.port) == GPORT_TRUNK) {
        return member_of_trunk(egress.port & GPORT_TRUNK_BITS);
    }
    return gport_kind(egress.port) == GPORT_MODULE_PORT ? egress.port & GPORT_PORT_BITS
                                                        : egress.port;
}

/** False when the packet leaves through a tunnel and can't: then it is its end. */
template <class Observer> bool Run<Observer>::enter_tunnel(int id, const L3Interface &interface)
{
    if (interface.tunnel == 0) {
        return true;
    }
    tunnel_ = chip_.tunnels.find(id);
    const bool fits =
        tunnel_ == nullptr || ETHERNET_HEADER + IP4_HEADER + frame_.l3_length <= FRAME_MAX;
    tell([&] {
        if (tunnel_ == nullptr) {
            return Line{Mark::miss,       Stage::tunnel,
                        "tunnel",         std::to_string(id),
                        "does not exist", nearest_id("tunnel of L3 interface", chip_.tunnels, id)};
        }
        return Line{fits ? Mark::hit : Mark::miss,
                    Stage::tunnel,
                    "tunnel",
                    std::to_string(id),
                    fmt::format("{}, {} in IPv4{}", text(*tunnel_), text(frame_.payload),
                                fits ? "" : "; too long for a frame"),
                    ""};
    });
    if (tunnel_ == nullptr) {
        return drop(Reason::no_tunnel);
    }
    return fits || to_cpu(Reason::mtu);
}

/** The L3 interface of a next hop when the packet may pass it, else null and the frame's end. */
template <class Observer> const L3Interface *Run<Observer>::pass_l3_interface(const Egress &egress)
{
    const L3Interface *interface = chip_.l3_interfaces.find(egress.interface);
    if (interface == nullptr) {
        tell([&] {
            return Line{Mark::miss,
                        Stage::l3_interface,
                        "l3_interface",
                        std::to_string(egress.interface),
                        "does not exist",
                        nearest_id("L3 interface", chip_.l3_interfaces, egress.interface)};
        });
        drop(Reason::no_l3_interface);
        return nullptr;
    }
    result_.egress = egress.interface;
    Reason reason = Reason::none;
    if (frame_.ttl <= 1) {
        reason = Reason::ttl_expired;
    } else if (frame_.ttl < interface->ttl) {
        reason = Reason::ttl_low;
    } else if (interface->mtu != 0 && frame_.l3_length > static_cast<std::size_t>(interface->mtu)) {
        reason = Reason::mtu;
    }
    tell([&] {
        return Line{reason == Reason::none ? Mark::hit : Mark::miss,
                    Stage::l3_interface,
                    "l3_interface",
                    std::to_string(egress.interface),
                    fmt::format("{}{}{}", text(*interface), reason == Reason::none ? "" : "; ",
                                reason == Reason::none ? "" : text(reason)),
                    ""};
    });
    if (reason == Reason::none) {
        return interface;
    }
    if (reason == Reason::ttl_low) {
        drop(reason);
    } else {
        to_cpu(reason);
    }
    return nullptr;
}

template <class Observer> void Run<Observer>::send_to(int egress_id)
{
    const Egress *egress = chip_.egresses.find(egress_id);
    tell([&] {
        return Line{egress != nullptr ? Mark::hit : Mark::miss,
                    Stage::egress,
                    "egress",
                    std::to_string(egress_id),
                    egress != nullptr ? text(*egress) : "does not exist",
                    egress != nullptr ? "" : nearest_id("egress", chip_.egresses, egress_id)};
    });
    if (egress == nullptr) {
        drop(Reason::no_egress);
        return;
    }
    if (egress->interface == HOLE_INTERFACE && egress->port == HOLE_PORT && egress->trunk == 0) {
        drop(Reason::black_hole);
        return;
    }
    if (egress->trunk == 0 &&
        (egress->port == CPU_PORT || egress->port == module_port(0, CPU_PORT))) {
        to_cpu(Reason::cpu_next_hop);
        return;
    }
    const L3Interface *interface = pass_l3_interface(*egress);
    if (interface == nullptr || !enter_tunnel(egress->interface, *interface)) {
        return;
    }
    const int port = port_of(*egress);
    if (!is_port(port)) {
        if (result_.reason == Reason::none) {
            drop(Reason::no_port);
        }
        return;
    }
    const int vlan_id = egress->vlan != 0 ? egress->vlan : interface->vlan;
    const Vlan *vlan = chip_.vlans.find(vlan_id);
    if (vlan == nullptr) {
        tell([&] {
            return Line{Mark::miss,       Stage::leave,
                        "vlan",           std::to_string(vlan_id),
                        "does not exist", vlans_of_port(chip_, port)};
        });
        drop(Reason::no_out_vlan);
        return;
    }
    if (may_leave(port, vlan_id, *vlan, true)) {
        store_routed(egress->mac, interface->mac);
        leave(port, vlan_id, *vlan);
        result_.verdict = Verdict::sent;
        result_.reason = Reason::routed;
    }
}

template <class Observer> void Run<Observer>::store_routed(const Mac &to, const Mac &from)
{
    // What fills a short frame up stays outside a tunnel.
    const auto packet = tunnel_ != nullptr ? frame_.bytes.subspan(frame_.l3, frame_.l3_length)
                                           : frame_.bytes.subspan(frame_.l3);
    result_.outer = tunnel_ != nullptr ? IP4_HEADER : 0;
    auto at = std::copy(to.begin(), to.end(), result_.bytes.begin());
    std::copy(from.begin(), from.end(), at);
    write16(result_.bytes, ETHERNET_HEADER - 2, tunnel_ != nullptr ? TYPE_IP4 : frame_.type);
    const auto room = std::span(result_.bytes).subspan(ETHERNET_HEADER);
    const auto stored = room.subspan(result_.outer, packet.size());
    std::copy(packet.begin(), packet.end(), stored.begin());
    decrement_ttl(stored);
    if (tunnel_ != nullptr) {
        write_outer_ip4(room, stored, tunnel_->source_ip, tunnel_->dest_ip);
    }
    result_.size = ETHERNET_HEADER + result_.outer + packet.size();
}

} // namespace simswitch::chip::pipeline
