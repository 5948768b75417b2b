/*
 * run_bridge.h: frames that stay in their VLAN, and the way out of a port.
 */
#pragma once

#include "chip/pipeline/run.h"

namespace simswitch::chip::pipeline
{

template <class Observer>
bool Run<Observer>::may_leave(int port, int vlan_id, const Vlan &vlan, bool tells)
{
    const bool member = vlan.members.has(port);
    const bool forwards = stp_state(vlan, port) == STP_FORWARDING;
    if (tells) {
        tell([&] {
            return Line{member && forwards ? Mark::hit : Mark::miss,
                        Stage::leave,
                        "vlan",
                        std::to_string(vlan_id),
                        !member ? fmt::format("port {} is not a member", port)
                        : !forwards
                            ? fmt::format("port {} isn't forwarding in group {}", port, vlan.stg)
                            : fmt::format("port {}, {}", port,
                                          vlan.untagged.has(port) ? "untagged" : "tagged"),
                        member ? "" : vlans_of_port(chip_, port)};
        });
    }
    if (!member) {
        return drop(Reason::out_not_a_member);
    }
    return forwards || drop(Reason::stp_out);
}

template <class Observer> void Run<Observer>::leave(int port, int vlan_id, const Vlan &vlan)
{
    constexpr unsigned PRIORITY = 0xf000;
    (vlan.untagged.has(port) ? result_.untagged : result_.tagged).add(port);
    result_.vlan = static_cast<std::uint16_t>(vlan_id);
    result_.priority = static_cast<std::uint16_t>(frame_.tags != 0 ? frame_.outer & PRIORITY : 0);
}

template <class Observer> void Run<Observer>::store_bridged()
{
    constexpr std::ptrdiff_t MACS = 12;
    const auto bytes = frame_.bytes;
    const std::ptrdiff_t rest = MACS + (frame_.tags != 0 ? std::ptrdiff_t{TAG_SIZE} : 0);
    auto at = std::copy_n(bytes.begin(), MACS, result_.bytes.begin());
    at = std::copy(bytes.begin() + rest, bytes.end(), at);
    result_.size = static_cast<std::size_t>(at - result_.bytes.begin());
}

/** The port of a trunk that the frame's flow takes, -1 when there is none; then it was dropped. */
template <class Observer> int Run<Observer>::member_of_trunk(int trunk)
{
    const std::vector<int> *ports = indexes_.trunk_ports(trunk);
    const bool there = ports != nullptr && !ports->empty();
    const std::size_t chosen = there ? member_of(flow_hash(frame_), ports->size()) : 0;
    const int port = there ? (*ports)[chosen] : -1;
    tell([&] {
        const std::string id = std::to_string(trunk);
        if (ports == nullptr) {
            return Line{Mark::miss, Stage::trunk,     "trunk",
                        id,         "does not exist", nearest_id("trunk", chip_.trunks, trunk)};
        }
        if (!there) {
            return Line{Mark::miss, Stage::trunk, "trunk", id, "has no member", ""};
        }
        return Line{port >= 0 ? Mark::hit : Mark::miss,
                    Stage::trunk,
                    "trunk",
                    id,
                    fmt::format("member {} of {}: port {}", chosen + 1, ports->size(), port),
                    ""};
    });
    if (port < 0) {
        drop(there ? Reason::no_trunk_port : Reason::no_trunk);
    }
    return port;
}

/** Whether a port is the one of its trunk that gets a flooded frame; true outside trunks. */
template <class Observer> bool Run<Observer>::is_chosen(int port, const PortSet &candidates)
{
    const int trunk = indexes_.port(port).trunk;
    if (trunk < 0) {
        return true;
    }
    std::array<int, TRUNK_MEMBER_MAX> ports{};
    std::size_t count = 0;
    for (const int member : *indexes_.trunk_ports(trunk)) {
        if (member >= 0 && candidates.has(member)) {
            ports[count++] = member;
        }
    }
    return trunk != facts_->trunk && ports[member_of(flow_hash(frame_), count)] == port;
}

template <class Observer> void Run<Observer>::flood(PortSet ports, Reason reason)
{
    ports &= vlan_record_->members;
    ports.remove(port_);
    const PortSet candidates = ports;
    const Stg *stg = chip_.stgs.find(vlan_record_->stg);
    for_each_port(candidates, [&](int port) {
        const bool forwards =
            stg != nullptr && stg->states[static_cast<std::size_t>(port)] == STP_FORWARDING;
        if (forwards && port != CPU_PORT && is_chosen(port, candidates)) {
            leave(port, vlan_, *vlan_record_);
        }
    });
    if (candidates.has(CPU_PORT) && !result_.cpu) {
        result_.cpu = true;
        result_.cpu_reason = Reason::cpu_member;
    }
    if (result_.tagged.empty() && result_.untagged.empty()) {
        drop(Reason::nobody);
        return;
    }
    store_bridged();
    result_.verdict = Verdict::sent;
    result_.reason = reason;
}

template <class Observer> void Run<Observer>::send_to_known(const L2Entry &entry)
{
    const bool to_trunk = gport_kind(entry.gport) == GPORT_TRUNK;
    const int trunk = to_trunk ? entry.gport & GPORT_TRUNK_BITS : -1;
    if (to_trunk ? trunk == facts_->trunk : (entry.gport & GPORT_PORT_BITS) == port_) {
        drop(Reason::same_port);
        return;
    }
    const int port = to_trunk ? member_of_trunk(trunk) : entry.gport & GPORT_PORT_BITS;
    if (port == CPU_PORT) {
        to_cpu(Reason::cpu_address);
        return;
    }
    if (!is_port(port)) {
        if (result_.reason == Reason::none) {
            drop(Reason::no_port);
        }
        return;
    }
    if (may_leave(port, vlan_, *vlan_record_, true)) {
        leave(port, vlan_, *vlan_record_);
        store_bridged();
        result_.verdict = Verdict::sent;
        result_.reason = Reason::bridged;
    }
}

template <class Observer> void Run<Observer>::bridge(Reason why_not_routed)
{
    const VlanBlocks &blocks = vlan_record_->blocks;
    // All routed ports share one VLAN: what they don't route must not reach each other.
    if (has_own_interface()) {
        drop(why_not_routed);
        return;
    }
    const L2Entry *known = frame_.is_group() ? nullptr : l2_.find(vlan_, frame_.destination);
    const PortSet *group = frame_.is_group() ? l2_.find_group(vlan_, frame_.destination) : nullptr;
    const char *kind = frame_.is_broadcast() ? "broadcast"
                       : group != nullptr    ? "known multicast"
                       : frame_.is_group()   ? "unknown multicast"
                                             : "unknown unicast";
    const PortSet &blocked = frame_.is_broadcast() ? blocks.broadcast
                             : group != nullptr    ? blocks.known_multicast
                             : frame_.is_group()   ? blocks.unknown_multicast
                                                   : blocks.unknown_unicast;
    tell([&] {
        const std::string id = fmt::format("{}/{}", vlan_, text(frame_.destination));
        if (known != nullptr) {
            return Line{Mark::hit,
                        Stage::bridge,
                        "l2",
                        id,
                        fmt::format("generic port {:#x}{}", static_cast<unsigned>(known->gport),
                                    known->is_static ? ", static" : ""),
                        ""};
        }
        return Line{group != nullptr ? Mark::hit : Mark::miss,
                    Stage::bridge,
                    "l2",
                    id,
                    fmt::format("{}, members {} without {}", kind, vlan_record_->members.text(),
                                blocked.text()),
                    ""};
    });
    if (known != nullptr) {
        send_to_known(*known);
        return;
    }
    PortSet ports = group != nullptr ? *group : vlan_record_->members;
    ports -= blocked;
    flood(ports, group != nullptr ? Reason::bridged : Reason::flooded);
}

} // namespace simswitch::chip::pipeline
