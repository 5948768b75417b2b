/*
 * port_channel_rows.cpp: see port_channel_rows.h.
 */
#include "config/port_channel_rows.h"

#include "config/names.h"
#include "config/row_checks.h"

#include <algorithm>
#include <set>

namespace lab::config
{

namespace
{

using NameSet = std::set<std::string, NaturalLess>;

/** Refuses a number that another port-channel has: PortChannel1 and PortChannel0001. */
void need_own_number(const std::string &name, const PortChannel &channel,
                     const Description &description)
{
    for (const auto &[other, known] : description.port_channels) {
        if (other != name && known.number == channel.number && known.refused.empty()) {
            refuse("{} has its number {}", other, channel.number);
        }
    }
}

/** Puts a port-channel in; the reason why nothing can use it is kept there too. */
template <class Read>
void add_port_channel(const std::string &name, Description &description, Read read)
{
    PortChannel channel;
    channel.number = parse_number(name.substr(std::string_view("PortChannel").size())).value_or(0);
    try {
        need_own_number(name, channel, description);
        read(channel);
    } catch (const BadRow &bad) {
        channel.refused = bad.what();
    }
    description.port_channels[name] = std::move(channel);
}

void read_declared(const Tables &tables, Description &description)
{
    for_each_row(tables, "PORTCHANNEL", description, [&](const std::string &key, const Row &row) {
        if (!is_port_channel_name(key)) {
            refuse("{} is no port-channel name like PortChannel0001", in_quotes(key));
        }
        add_port_channel(key, description, [&row](PortChannel &channel) {
            need_object(row);
            const auto mtu = number(row, "mtu", MTU_MIN, MTU_MAX);
            channel.mtu = static_cast<std::uint16_t>(mtu.value_or(0));
        });
        if (const auto &reason = description.port_channels[key].refused; !reason.empty()) {
            throw BadRow(reason);
        }
    });
}

/** The port-channels that rows make routed, themselves or a subinterface. */
NameSet routed_names(const Tables &tables)
{
    NameSet names;
    for (const auto &[key, row] : tables.table("PORTCHANNEL_INTERFACE")) {
        names.insert(key.substr(0, key.find('|')));
    }
    for (const auto &[key, row] : tables.table("VLAN_SUB_INTERFACE")) {
        if (const auto name =
                parse_subinterface_name(std::string_view(key).substr(0, key.find('|')))) {
            names.insert(name->parent);
        }
    }
    std::erase_if(names, [](const std::string &name) { return !is_port_channel_name(name); });
    return names;
}

/** Takes the port-channels that rows use and no row declares. */
void take_undeclared(const Tables &tables, const NameSet &routed, Description &description)
{
    NameSet used = routed;
    for (const auto &[key, row] : tables.table("PORTCHANNEL_MEMBER")) {
        if (std::string name = key.substr(0, key.find('|')); is_port_channel_name(name)) {
            used.insert(std::move(name));
        }
    }
    for (const auto &[key, row] : tables.table("VLAN_MEMBER")) {
        if (std::string name = key.substr(key.find('|') + 1); is_port_channel_name(name)) {
            used.insert(std::move(name));
        }
    }
    std::erase_if(used, [&description](const std::string &name) {
        return description.port_channels.contains(name);
    });
    for (const auto &name : used) {
        add_port_channel(name, description, [](const PortChannel &) {});
    }
    if (!used.empty()) {
        description.notes.push_back(fmt::format(
            "{}: PORTCHANNEL has no row of {} that other rows use, {} the first; "
            "taken all the same",
            description.file,
            used.size() == 1 ? "a port-channel" : fmt::format("{} port-channels", used.size()),
            *used.begin()));
    }
}

/** The names that rows of INTERFACE make routed. */
NameSet routed_ports(const Tables &tables)
{
    NameSet names;
    for (const auto &[key, row] : tables.table("INTERFACE")) {
        names.insert(key.substr(0, key.find('|')));
    }
    return names;
}

/** Makes a port a member; one that is a member of this port-channel already stays. */
void add_member(const NameSet &routed, const std::string &name, const std::string &port,
                Description &description)
{
    if (!is_port_name(port)) {
        refuse("{} is no port name like Ethernet4 or Ethernet-BP0", in_quotes(port));
    }
    need_port(port, description);
    if (routed.contains(port)) {
        refuse("its port {} is routed itself, by INTERFACE", port);
    }
    const std::string other = port_channel_of(port, description);
    if (other == name) {
        return;
    }
    if (!other.empty()) {
        refuse("its port {} is a member of {} already", port, other);
    }
    auto &members = description.port_channels[name].members;
    if (members.size() == TRUNK_MEMBERS) {
        refuse("{} has {} members, and a trunk of the chip takes no more", name, TRUNK_MEMBERS);
    }
    members.push_back(port);
}

void read_member_rows(const Tables &tables, const NameSet &routed, Description &description)
{
    for_each_row(tables, "PORTCHANNEL_MEMBER", description,
                 [&](const std::string &key, const Row &row) {
                     const std::size_t bar = key.find('|');
                     const std::string name = key.substr(0, bar);
                     if (bar == std::string::npos) {
                         refuse("the key is no PORTCHANNEL|PORT");
                     }
                     if (!is_port_channel_name(name)) {
                         refuse("{} is no port-channel name like PortChannel0001", in_quotes(name));
                     }
                     need_object(row);
                     const PortChannel &channel = description.port_channels[name];
                     if (!channel.refused.empty()) {
                         refuse("its port-channel {} isn't taken: {}", name, channel.refused);
                     }
                     add_member(routed, name, key.substr(bar + 1), description);
                 });
}

/** Reads the lists of old files; what is wrong with one port doesn't cost the row. */
void read_member_lists(const Tables &tables, const NameSet &routed, Description &description)
{
    for (const auto &[name, row] : tables.table("PORTCHANNEL")) {
        const auto channel = description.port_channels.find(name);
        if (channel == description.port_channels.end() || !channel->second.refused.empty()) {
            continue;
        }
        for (const auto &port : listed_members(row)) {
            try {
                add_member(routed, name, port, description);
            } catch (const BadRow &bad) {
                description.notes.push_back(
                    fmt::format("{}: PORTCHANNEL {}: members: {}; this member is left out",
                                description.file, in_quotes(name), bad.what()));
            }
        }
    }
}

} // namespace

std::vector<std::string> listed_members(const Row &row)
{
    return listed(row, "members");
}

void need_port_channel(const std::string &name, const Description &description)
{
    const auto channel = description.port_channels.find(name);
    if (channel == description.port_channels.end()) {
        refuse("its port-channel {} isn't in PORTCHANNEL", name);
    }
    if (!channel->second.refused.empty()) {
        refuse("its port-channel {} isn't taken: {}", name, channel->second.refused);
    }
    if (channel->second.members.empty()) {
        refuse("{} has no members, and without them no trunk in the chip", name);
    }
}

std::string port_channel_of(const std::string &port, const Description &description)
{
    for (const auto &[name, channel] : description.port_channels) {
        const auto &members = channel.members;
        if (std::find(members.begin(), members.end(), port) != members.end()) {
            return name;
        }
    }
    return "";
}

std::string routed_port_channel_of(const std::string &port, const Description &description)
{
    const std::string name = port_channel_of(port, description);
    return !name.empty() && description.port_channels.find(name)->second.is_routed ? name : "";
}

void read_port_channels(const Tables &tables, Description &description)
{
    const NameSet routed = routed_names(tables);
    read_declared(tables, description);
    take_undeclared(tables, routed, description);
    unsigned trunk = 0;
    for (auto &[name, channel] : description.port_channels) {
        channel.is_routed = routed.contains(name);
        channel.trunk = ++trunk;
    }
    const NameSet ports = routed_ports(tables);
    read_member_rows(tables, ports, description);
    read_member_lists(tables, ports, description);
    for (auto &[name, channel] : description.port_channels) {
        std::sort(channel.members.begin(), channel.members.end(), NaturalLess{});
    }
}

} // namespace lab::config
