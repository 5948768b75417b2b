/*
 * vlan_rows.cpp: see vlan_rows.h.
 */
#include "config/vlan_rows.h"

#include "config/names.h"
#include "config/port_channel_rows.h"
#include "config/row_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace lab::config
{

namespace
{

using NameSet = std::set<std::string, NaturalLess>;

/** The two names of a key "name|name". */
std::pair<std::string, std::string> two_names(const std::string &key, std::string_view form)
{
    const std::size_t bar = key.find('|');
    if (bar == std::string::npos) {
        refuse("the key is no {}", form);
    }
    return {key.substr(0, bar), key.substr(bar + 1)};
}

/** Puts a VLAN in; the reason why nothing can use it is kept there too. */
const Vlan &add_vlan(const std::string &name, const Row &row, Description &description)
{
    Vlan vlan;
    try {
        vlan.id = need_vlan_name(name);
        need_object(row);
        const auto id = number(row, "vlanid", VLAN_MIN, VLAN_MAX);
        if (id && *id != vlan.id) {
            refuse("the name says VLAN {} and the field vlanid says {}", vlan.id, *id);
        }
        vlan.mtu = static_cast<std::uint16_t>(number(row, "mtu", MTU_MIN, MTU_MAX).value_or(0));
    } catch (const BadRow &bad) {
        vlan.refused = bad.what();
    }
    return description.vlans.insert_or_assign(name, std::move(vlan)).first->second;
}

/** The VLANs that rows name, for a file that has no VLAN table. */
NameSet vlans_of_other_rows(const Tables &tables)
{
    NameSet names;
    for (const char *table : {"VLAN_INTERFACE", "VLAN_MEMBER", "PVLAN"}) {
        for (const auto &[key, row] : tables.table(table)) {
            names.insert(key.substr(0, key.find('|')));
        }
    }
    for (const auto &[key, row] : tables.table("PVLAN")) {
        names.insert(key.substr(key.find('|') + 1));
    }
    return names;
}

void read_declared(const Tables &tables, Description &description)
{
    for_each_row(tables, "VLAN", description, [&](const std::string &key, const Row &row) {
        if (const Vlan &vlan = add_vlan(key, row, description); !vlan.refused.empty()) {
            throw BadRow(vlan.refused);
        }
    });
}

void take_undeclared(const Tables &tables, Description &description)
{
    std::size_t usable = 0;
    for (const auto &name : vlans_of_other_rows(tables)) {
        usable += add_vlan(name, {}, description).refused.empty() ? 1 : 0;
    }
    if (usable != 0) {
        description.notes.push_back(
            fmt::format("{}: there is no VLAN table; its {} that other rows name", description.file,
                        usable == 1 ? "VLAN is the one" : fmt::format("VLANs are the {}", usable)));
    }
}

/** What is routed, and so can't be bridged to a VLAN. */
struct Routed {
    NameSet ports;   ///< by rows of INTERFACE
    NameSet parents; ///< ports that have subinterfaces
};

Routed routed_ports(const Tables &tables)
{
    Routed routed;
    for (const auto &[key, row] : tables.table("INTERFACE")) {
        routed.ports.insert(key.substr(0, key.find('|')));
    }
    for (const auto &[key, row] : tables.table("VLAN_SUB_INTERFACE")) {
        const std::string_view name = std::string_view(key).substr(0, key.find('|'));
        if (const auto subinterface = parse_subinterface_name(name)) {
            routed.parents.insert(subinterface->parent);
        }
    }
    return routed;
}

void need_no_subinterfaces(const std::string &port, const Routed &routed)
{
    if (routed.parents.contains(port)) {
        refuse("its port {} has subinterfaces, by VLAN_SUB_INTERFACE", port);
    }
}

/** Refuses a port that can't be bridged to a VLAN. */
void need_bridged_port(const std::string &port, const Routed &routed,
                       const Description &description)
{
    need_port(port, description);
    if (routed.ports.contains(port)) {
        refuse("its port {} is routed, by INTERFACE", port);
    }
    need_no_subinterfaces(port, routed);
    if (const std::string channel = port_channel_of(port, description); !channel.empty()) {
        refuse("its port {} is a member of {}", port, channel);
    }
}

/** Refuses a port-channel that can't be bridged to a VLAN. */
void need_bridged_port_channel(const std::string &name, const Routed &routed,
                               const Description &description)
{
    need_port_channel(name, description);
    const PortChannel &channel = description.port_channels.find(name)->second;
    if (channel.is_routed) {
        refuse("its port-channel {} is routed, itself or by subinterfaces", name);
    }
    for (const auto &port : channel.members) {
        need_no_subinterfaces(port, routed);
    }
}

bool is_tagged(const Row &row)
{
    const std::string *mode = scalar(row, "tagging_mode");
    if (mode != nullptr && *mode != "tagged" && *mode != "untagged") {
        refuse("tagging_mode is {}, \"tagged\" or \"untagged\" was expected", in_quotes(*mode));
    }
    return mode != nullptr && *mode == "tagged";
}

void read_members(const Tables &tables, Description &description)
{
    const Routed routed = routed_ports(tables);
    std::map<std::string, std::string> untagged; // VLAN by port
    for_each_row(tables, "VLAN_MEMBER", description, [&](const std::string &key, const Row &row) {
        const auto [vlan_name, name] = two_names(key, "VLAN|PORT");
        need_object(row);
        need_known_vlan(vlan_name, description);
        if (is_port_name(name)) {
            need_bridged_port(name, routed, description);
        } else if (is_port_channel_name(name)) {
            need_bridged_port_channel(name, routed, description);
        } else {
            refuse("{} is no name of a port or port-channel like Ethernet4 or PortChannel0001",
                   in_quotes(name));
        }
        const bool tagged = is_tagged(row);
        if (!tagged) {
            if (const auto [other, is_new] = untagged.try_emplace(name, vlan_name); !is_new) {
                refuse("{} is untagged in {} already", name, other->second);
            }
        }
        description.vlans.find(vlan_name)->second.members.push_back({name, tagged});
    });
}

/** A role that a pair needs; a VLAN that has the other one is refused. */
void need_role(const std::string &name, VlanRole wanted, const Description &description)
{
    const VlanRole role = need_known_vlan(name, description).role;
    if (role == VlanRole::none || role == wanted) {
        return;
    }
    const auto &pairs = description.pvlan_pairs;
    const auto other = std::find_if(pairs.begin(), pairs.end(), [&name](const PvlanPair &pair) {
        return pair.primary == name || pair.secondary == name;
    });
    refuse("{} is the {} of {} already", name, role == VlanRole::primary ? "primary" : "secondary",
           role == VlanRole::primary ? other->secondary : other->primary);
}

/** Refuses a secondary that another primary has, or that is routed by an interface of its own. */
void need_free_secondary(const std::string &name, const Description &description)
{
    need_role(name, VlanRole::secondary, description);
    for (const PvlanPair &pair : description.pvlan_pairs) {
        if (pair.secondary == name) {
            refuse("{} is the secondary of {} already", name, pair.primary);
        }
    }
    for (const auto &interface : description.interfaces) {
        if (interface.name == name) {
            refuse("its secondary {} has an interface of its own, by VLAN_INTERFACE; the primary's "
                   "routes for it",
                   name);
        }
    }
}

} // namespace

void read_vlans(const Tables &tables, Description &description)
{
    if (tables.table("VLAN").empty()) {
        take_undeclared(tables, description);
    } else {
        read_declared(tables, description);
    }
    read_members(tables, description);
    for (auto &[name, vlan] : description.vlans) {
        std::stable_sort(vlan.members.begin(), vlan.members.end(),
                         [](const VlanMember &left, const VlanMember &right) {
                             return natural_compare(left.name, right.name) < 0;
                         });
    }
}

void read_pvlan_pairs(const Tables &tables, Description &description)
{
    for_each_row(tables, "PVLAN", description, [&](const std::string &key, const Row &row) {
        const auto [primary, secondary] = two_names(key, "PRIMARY|SECONDARY");
        need_object(row);
        need_known_vlan(primary, description);
        if (primary == secondary) {
            refuse("{} can't be its own secondary", primary);
        }
        need_role(primary, VlanRole::primary, description);
        need_free_secondary(secondary, description);
        description.vlans.find(primary)->second.role = VlanRole::primary;
        description.vlans.find(secondary)->second.role = VlanRole::secondary;
        description.pvlan_pairs.push_back({primary, secondary});
    });
}

} // namespace lab::config
