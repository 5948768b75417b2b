/*
 * record_columns.h: the columns of each record that outlives the process, and
 * of its key: one list serves the table's making, its writing and its reading.
 * A column is added here and the version in chip_file.cpp goes up by one.
 */
#pragma once

#include "chip/chip.h"
#include "fwm/vlan_records.h"

#include <concepts>
#include <type_traits>

namespace simswitch::state
{

/** A field entry without the SDK's copy of its rule, which dies with the process. */
struct InstalledEntry {
    int group = 0;
    chip::FieldRule rule{};
};

/** The cached controls of a VLAN. */
struct CachedControls {
    bool known = true; ///< there is a record; its fields count only then
    chip::VlanControls controls{};
};

template <class T, class Record>
concept Of = std::same_as<std::remove_const_t<T>, Record>;

// each_key_column calls visit(name, value) for the columns of a key.

template <class Visit> void each_key_column(Of<int> auto &id, Visit &visit)
{
    visit("id", id);
}
template <class Visit> void each_key_column(Of<std::uint32_t> auto &id, Visit &visit)
{
    visit("id", id);
}
template <class Visit> void each_key_column(Of<chip::TranslationKey> auto &key, Visit &visit)
{
    visit("gport", key.gport);
    visit("key_type", key.key_type);
    visit("outer_vlan", key.outer_vlan);
    visit("inner_vlan", key.inner_vlan);
}
template <class Visit> void each_key_column(Of<chip::RouteKey> auto &key, Visit &visit)
{
    visit("vrf", key.vrf);
    visit("ip6", key.ip6);
    visit("net", key.net);
    visit("mask", key.mask);
}

// each_column does the same for a record.

template <class Visit> void each_column(Of<int> auto &value, Visit &visit)
{
    visit("value", value);
}
template <class Visit> void each_column(Of<std::uint32_t> auto &tid, Visit &visit)
{
    visit("tid", tid);
}
template <class Visit> void each_column(Of<fwm::PrivateVlan> auto &role, Visit &visit)
{
    visit("private_vlan", role);
}
template <class Visit> void each_column(Of<chip::Port> auto &port, Visit &visit)
{
    visit("controls", port.controls);
    visit("vlan_controls", port.vlan_controls);
    visit("untagged_vlan", port.untagged_vlan);
    visit("discard", port.discard);
}
template <class Visit> void each_column(Of<chip::Stg> auto &stg, Visit &visit)
{
    visit("states", stg.states);
}
template <class Visit> void each_column(Of<chip::VlanControls> auto &controls, Visit &visit)
{
    visit("vrf", controls.vrf);
    visit("ingress_if", controls.ingress_if);
    visit("flags", controls.flags);
    visit("intf_class", controls.intf_class);
    visit("urpf_mode", controls.urpf_mode);
    visit("rest", controls.rest);
}
template <class Visit> void each_column(Of<CachedControls> auto &cached, Visit &visit)
{
    visit("known", cached.known);
    each_column(cached.controls, visit);
}
template <class Visit> void each_column(Of<chip::Vlan> auto &vlan, Visit &visit)
{
    visit("stg", vlan.stg);
    visit("members", vlan.members);
    visit("untagged", vlan.untagged);
    each_column(vlan.controls, visit);
    visit("block_known_multicast", vlan.blocks.known_multicast);
    visit("block_unknown_multicast", vlan.blocks.unknown_multicast);
    visit("block_unknown_unicast", vlan.blocks.unknown_unicast);
    visit("block_broadcast", vlan.blocks.broadcast);
}
template <class Visit> void each_column(Of<chip::Station> auto &station, Visit &visit)
{
    visit("flags", station.flags);
    visit("mac", station.mac);
    visit("mac_mask", station.mac_mask);
    visit("vlan", station.vlan);
    visit("vlan_mask", station.vlan_mask);
    visit("src_port", station.src_port);
    visit("src_port_mask", station.src_port_mask);
}
template <class Visit> void each_column(Of<chip::L3Interface> auto &interface, Visit &visit)
{
    visit("flags", interface.flags);
    visit("vrf", interface.vrf);
    visit("mac", interface.mac);
    visit("vlan", interface.vlan);
    visit("ttl", interface.ttl);
    visit("mtu", interface.mtu);
    visit("tunnel", interface.tunnel);
}
template <class Visit> void each_column(Of<chip::L3Ingress> auto &ingress, Visit &visit)
{
    visit("flags", ingress.flags);
    visit("vrf", ingress.vrf);
    visit("urpf_mode", ingress.urpf_mode);
    visit("intf_class", ingress.intf_class);
    visit("ipmc_intf", ingress.ipmc_intf);
    visit("qos_map", ingress.qos_map);
    visit("reserved", ingress.reserved);
}
template <class Visit> void each_column(Of<chip::TranslationAction> auto &action, Visit &visit)
{
    visit("new_outer_vlan", action.new_outer_vlan);
    visit("ingress_if", action.ingress_if);
    visit("outer_tag_action", action.outer_tag_action);
    visit("double_tag_action", action.double_tag_action);
}
template <class Visit> void each_column(Of<chip::Trunk> auto &trunk, Visit &visit)
{
    visit("flags", trunk.flags);
    visit("psc", trunk.psc);
    visit("ipmc_psc", trunk.ipmc_psc);
    visit("dlf_index", trunk.dlf_index);
    visit("mc_index", trunk.mc_index);
    visit("ipmc_index", trunk.ipmc_index);
    visit("dynamic_size", trunk.dynamic_size);
    visit("members", trunk.members);
}
template <class Visit> void each_column(Of<chip::Egress> auto &egress, Visit &visit)
{
    visit("flags", egress.flags);
    visit("interface", egress.interface);
    visit("mac", egress.mac);
    visit("vlan", egress.vlan);
    visit("module", egress.module);
    visit("port", egress.port);
    visit("trunk", egress.trunk);
    visit("encap_id", egress.encap_id);
    visit("reserved", egress.reserved);
}
template <class Visit> void each_column(Of<chip::MultipathGroup> auto &group, Visit &visit)
{
    visit("members", group.members);
}
template <class Visit> void each_column(Of<chip::Route> auto &route, Visit &visit)
{
    visit("flags", route.flags);
    visit("next_hop", route.next_hop);
    visit("multipath", route.multipath);
}
template <class Visit> void each_column(Of<chip::FieldGroup> auto &group, Visit &visit)
{
    visit("priority", group.priority);
    visit("qualifiers", group.qualifiers);
    visit("enabled", group.enabled);
}
template <class Visit> void each_column(Of<InstalledEntry> auto &entry, Visit &visit)
{
    visit("field_group", entry.group);
    visit("port_actions", entry.rule.port_actions);
    visit("actions", entry.rule.actions);
    visit("in_ports", entry.rule.in_ports);
    visit("l3_routable", entry.rule.l3_routable);
}
template <class Visit> void each_column(Of<chip::Tunnel> auto &tunnel, Visit &visit)
{
    visit("number", tunnel.index);
    visit("source_ip", tunnel.source_ip);
    visit("dest_ip", tunnel.dest_ip);
}
template <class Visit> void each_column(Of<chip::VxlanPort> auto &port, Visit &visit)
{
    visit("if_index", port.if_index);
    visit("vpn", port.vpn);
    visit("vn_id", port.vn_id);
    visit("mc_index", port.mc_index);
    visit("egress_if", port.egress_if);
    visit("flags", port.flags);
    visit("criteria", port.criteria);
    visit("match_port", port.match_port);
    visit("match_vlan", port.match_vlan);
}

} // namespace simswitch::state
