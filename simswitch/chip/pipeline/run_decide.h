/*
 * run_decide.h: whether a frame is to be routed, goes to the CPU, or meets a
 * field entry.
 */
#pragma once

#include "chip/pipeline/run.h"

namespace simswitch::chip::pipeline
{

template <class Observer> void Run<Observer>::find_station()
{
    station_ =
        indexes_.stations.match(frame_.destination, static_cast<std::uint16_t>(vlan_), port_);
    tell([&] {
        if (station_ != nullptr) {
            return Line{Mark::hit,
                        Stage::station,
                        "station",
                        std::to_string(station_->id),
                        text(station_->station),
                        ""};
        }
        // Stations are hardly ever groups: that there is none is no news.
        return Line{frame_.is_group() ? Mark::none : Mark::miss,
                    Stage::station,
                    "station",
                    "",
                    fmt::format("none for {} in VLAN {} from port {}", text(frame_.destination),
                                vlan_, port_),
                    frame_.is_group()
                        ? ""
                        : nearest_station(chip_.stations, frame_.destination, vlan_, port_)};
    });
}

template <class Observer> bool Run<Observer>::port_controls_count() const
{
    // A VLAN's interface is switched by the VLAN's flags, whatever ports it has; the CPU's
    // port is switched by its own controls in every VLAN.
    return has_own_interface() || port_ == CPU_PORT;
}

template <class Observer> Reason Run<Observer>::why_family_is_off()
{
    const bool ip6 = frame_.is_ip6();
    const bool by_port = port_controls_count() && !(ip6 ? facts_->ip6 : facts_->ip4);
    const bool by_vlan = (vlan_record_->controls.flags & (ip6 ? VLAN_IP6_OFF : VLAN_IP4_OFF)) != 0;
    const bool by_interface = (ingress_->flags & (ip6 ? INGRESS_IP6_OFF : INGRESS_IP4_OFF)) != 0;
    const bool off = by_port || by_vlan || by_interface;
    tell([&] {
        const char *family = text(frame_.payload);
        Line line{off ? Mark::miss : Mark::hit, Stage::family, "", "", "", ""};
        if (by_port) {
            line.table = "port";
            line.id = std::to_string(port_);
            line.text = fmt::format("{} is off by port control {}", family,
                                    ip6 ? PORT_CONTROL_IP6 : PORT_CONTROL_IP4);
        } else if (by_vlan) {
            line.table = "vlan";
            line.id = std::to_string(vlan_);
            line.text = fmt::format("{} is off by flag {:#x} of the VLAN's controls", family,
                                    ip6 ? VLAN_IP6_OFF : VLAN_IP4_OFF);
        } else {
            line.table = "l3_ingress";
            line.id = std::to_string(iif_);
            line.text = off ? fmt::format("{} is off by flag {:#x}", family,
                                          ip6 ? INGRESS_IP6_OFF : INGRESS_IP4_OFF)
                            : fmt::format("{} is on", family);
        }
        return line;
    });
    return off ? Reason::family_off : Reason::none;
}

template <class Observer> Reason Run<Observer>::why_not_routable()
{
    if (ingress_ == nullptr) {
        return Reason::no_interface;
    }
    if (!frame_.is_ip()) {
        return Reason::not_ip;
    }
    if (frame_.fault != nullptr) {
        return Reason::bad_header;
    }
    if (frame_.is_group()) {
        return Reason::group_address;
    }
    if (station_ == nullptr) {
        return Reason::no_station;
    }
    const std::uint32_t wanted = frame_.is_ip6() ? STATION_IP6 : STATION_IP4;
    if ((station_->station.flags & wanted) == 0) {
        tell([&] {
            return Line{Mark::miss,
                        Stage::family,
                        "station",
                        std::to_string(station_->id),
                        fmt::format("its flags {:#x} don't take {}, {:#x}", station_->station.flags,
                                    text(frame_.payload), wanted),
                        ""};
        });
        return Reason::station_class;
    }
    if (const Reason reason = why_family_is_off(); reason != Reason::none) {
        return reason;
    }
    if (const char *why = not_unicast(frame_)) {
        tell([&] { return Line{Mark::miss, Stage::family, "", "", why, ""}; });
        return Reason::bad_address;
    }
    return Reason::none;
}

template <class Observer> bool Run<Observer>::is_label_switched() const
{
    return frame_.payload == Payload::mpls && ingress_ != nullptr && station_ != nullptr &&
           (!port_controls_count() || facts_->mpls) &&
           (vlan_record_->controls.flags & VLAN_MPLS_OFF) == 0;
}

template <class Observer> Reason Run<Observer>::trap_of() const
{
    const bool good = frame_.fault == nullptr;
    if (frame_.payload == Payload::ip4 && good && frame_.protocol == PROTOCOL_IGMP &&
        (vlan_record_->controls.flags & VLAN_IGMP_SNOOP_OFF) == 0) {
        return Reason::igmp;
    }
    if (ingress_ == nullptr) {
        return Reason::none;
    }
    const std::uint32_t classes = station_ != nullptr ? station_->station.flags : 0;
    if (frame_.payload == Payload::arp) {
        return frame_.is_group() || (classes & STATION_ARP) != 0 ? Reason::arp : Reason::none;
    }
    if (!frame_.is_ip() || !good) {
        return Reason::none;
    }
    if (frame_.is_ip6() && (frame_.is_group() || (classes & STATION_IP6) != 0)) {
        if (frame_.is_neighbour_discovery()) {
            return chip_.switch_controls.get(SWITCH_CONTROL_ND_TO_CPU) != 0
                       ? Reason::neighbour_discovery
                       : Reason::none;
        }
        const bool to_link_local = frame_.to[0] == 0xfe && (frame_.to[1] & 0xc0U) == 0x80;
        return to_link_local || frame_.is_link_local_multicast() ? Reason::link_local
                                                                 : Reason::none;
    }
    if (frame_.is_link_local_multicast()) {
        return Reason::link_local;
    }
    return frame_.is_broadcast() ? Reason::broadcast : Reason::none;
}

/** False when the frame ends at the CPU; a frame to a group may go on to the others of its VLAN. */
template <class Observer> bool Run<Observer>::trap()
{
    const Reason reason = trap_of();
    if (reason == Reason::none) {
        return true;
    }
    tell([&] { return Line{Mark::hit, Stage::trap, "", "", text(reason), ""}; });
    result_.cpu = true;
    result_.cpu_reason = reason;
    const bool goes_on = frame_.is_group() && reason != Reason::igmp;
    return goes_on || drop(reason);
}

template <class Observer> bool Run<Observer>::applies(const RuleGroup &group) const
{
    // What the platform's own entries look at beyond their qualifiers isn't in the table.
    switch (group.id) {
    case SUP_GROUP:
        return frame_.is_link_local_multicast();
    case ND_GROUP:
        return frame_.is_neighbour_discovery();
    default:
        return true;
    }
}

template <class Observer>
bool Run<Observer>::rule_matches(const InstalledRule &installed, bool routable)
{
    const FieldRule &rule = installed.rule;
    if (rule.l3_routable && *rule.l3_routable != routable) {
        return false;
    }
    if (rule.in_ports && !(rule.in_ports->data.has(port_) && rule.in_ports->mask.has(port_))) {
        if constexpr (Observer::traces) {
            if (std::string near = nearest_rule(*rule.in_ports, installed.id, port_);
                !near.empty()) {
                observer_.add(Line{Mark::miss, Stage::field, "field_entry",
                                   std::to_string(installed.id), "does not match", near});
            }
        }
        return false;
    }
    return true;
}

/** The first match of each group counts: one that drops beats those that redirect. */
template <class Observer> bool Run<Observer>::pass_field_entries(bool routable)
{
    bool drops = false;
    for (const RuleGroup &group : indexes_.rule_groups()) {
        if (!applies(group)) {
            continue;
        }
        for (const InstalledRule &installed : group.rules) {
            if (!rule_matches(installed, routable)) {
                continue;
            }
            tell([&] {
                return Line{Mark::hit,
                            Stage::field,
                            "field_entry",
                            std::to_string(installed.id),
                            fmt::format("group {}: {}", group.id, text(installed.rule)),
                            ""};
            });
            drops = drops || installed.rule.actions.contains(ACTION_DROP);
            const auto redirect = installed.rule.port_actions.find(ACTION_REDIRECT_PORTS);
            if (redirect_ == nullptr && redirect != installed.rule.port_actions.end()) {
                redirect_ = &redirect->second;
            }
            break;
        }
    }
    return !drops || drop(Reason::field_drop);
}

} // namespace simswitch::chip::pipeline
