/*
 * plans.cpp: see plans.h.
 */
#include "l3lif/plans.h"

#include "services/ifindex.h"

#include <string_view>
#include <unordered_map>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;
namespace if_index = simswitch::if_index;

const config::Port &port_of(const config::Description &description, const std::string &name)
{
    return description.ports.find(name)->second;
}

std::uint32_t ifindex_of(const config::Port &port)
{
    return if_index::port(port.chip_port - 1);
}

void plan_port(LifPlan &plan, const config::Port &port)
{
    plan.ifindex = ifindex_of(port);
    plan.chip_port = static_cast<int>(port.chip_port);
    plan.mtu = port.mtu;
}

void plan_port_channel(LifPlan &plan, const config::PortChannel &channel,
                       const config::Description &description)
{
    plan.ifindex = if_index::port_channel(channel.number);
    plan.trunk = static_cast<int>(channel.trunk);
    plan.mtu = channel.mtu;
    for (const auto &name : channel.members) {
        const config::Port &port = port_of(description, name);
        plan.members.push_back({name, static_cast<int>(port.chip_port), ifindex_of(port)});
    }
}

void plan_subinterface(LifPlan &plan, const config::RoutedInterface &interface,
                       const config::Description &description)
{
    plan.vlan = interface.vlan;
    const auto channel = description.port_channels.find(interface.main);
    if (channel == description.port_channels.end()) {
        const config::Port &port = port_of(description, interface.main);
        plan.main = ifindex_of(port);
        plan.ifindex = if_index::port_sub(port.chip_port - 1, interface.number);
        plan.chip_port = static_cast<int>(port.chip_port);
        plan.mtu = port.mtu;
    } else {
        plan.main = if_index::port_channel(channel->second.number);
        plan.ifindex = if_index::port_channel_sub(channel->second.number, interface.number);
        plan.trunk = static_cast<int>(channel->second.trunk);
        plan.mtu = channel->second.mtu;
    }
    if (interface.mtu != 0) {
        plan.mtu = interface.mtu;
    }
}

void plan_svi(LifPlan &plan, const config::RoutedInterface &interface,
              const config::Description &description)
{
    plan.vlan = interface.vlan;
    plan.ifindex = if_index::svi(interface.vlan);
    plan.mtu =
        interface.mtu != 0 ? interface.mtu : description.vlans.find(interface.name)->second.mtu;
}

LifPlan plan_of(const config::RoutedInterface &interface, const config::Description &description)
{
    LifPlan plan;
    plan.kind = interface.kind;
    plan.name = interface.name;
    plan.table = interface.table;
    plan.mac = interface.mac.value_or(description.device_mac);
    plan.vrf = interface.vrf;
    plan.ipv4 = interface.routes(false);
    plan.ipv6 = interface.routes(true);
    plan.mpls = interface.mpls;
    if (interface.kind == config::Kind::port) {
        plan_port(plan, port_of(description, interface.name));
    } else if (interface.kind == config::Kind::port_channel) {
        plan_port_channel(plan, description.port_channels.find(interface.name)->second,
                          description);
    } else if (interface.kind == config::Kind::svi) {
        plan_svi(plan, interface, description);
    } else {
        plan_subinterface(plan, interface, description);
    }
    return plan;
}

/** The chip's ports of a VLAN's member: a port-channel stands for its ports. */
chip::PortSet ports_of(const config::VlanMember &member, const config::Description &description)
{
    const auto channel = description.port_channels.find(member.name);
    const auto names = channel == description.port_channels.end()
                           ? std::vector<std::string>{member.name}
                           : channel->second.members;
    chip::PortSet ports;
    for (const auto &name : names) {
        ports.add(static_cast<int>(port_of(description, name).chip_port));
    }
    return ports;
}

std::uint16_t number_of(const config::Description &description, const std::string &vlan)
{
    return description.vlans.find(vlan)->second.id;
}

LifPlan plan_of(const config::Tunnel &tunnel, unsigned number,
                const config::Description &description)
{
    LifPlan plan;
    plan.kind = config::Kind::tunnel;
    plan.name = tunnel.name;
    plan.table = tunnel.table;
    plan.ifindex = if_index::tunnel(number);
    plan.mac = description.device_mac;
    plan.ipv4 = true;
    return plan;
}

} // namespace

std::vector<VlanPlan> vlan_plans_of(const config::Description &description)
{
    std::vector<VlanPlan> plans;
    for (const auto &[name, vlan] : description.vlans) {
        if (!vlan.refused.empty()) {
            continue;
        }
        VlanPlan plan{name, vlan.id, vlan.role, {}, {}};
        for (const auto &member : vlan.members) {
            const chip::PortSet ports = ports_of(member, description);
            plan.ports |= ports;
            if (!member.tagged) {
                plan.untagged |= ports;
            }
        }
        plans.push_back(std::move(plan));
    }
    return plans;
}

std::vector<LifPlan> plans_of(const config::Description &description)
{
    std::vector<LifPlan> plans;
    for (const auto &interface : description.interfaces) {
        plans.push_back(plan_of(interface, description));
    }
    for (const auto &tunnel : description.tunnels) {
        const auto number = static_cast<unsigned>(&tunnel - description.tunnels.data()) + 1;
        plans.push_back(plan_of(tunnel, number, description));
    }
    return plans;
}

std::vector<PairPlan> pair_plans_of(const config::Description &description)
{
    std::vector<PairPlan> plans;
    for (const auto &pair : description.pvlan_pairs) {
        plans.push_back(
            {number_of(description, pair.primary), number_of(description, pair.secondary)});
    }
    return plans;
}

std::vector<VirtualMacPlan> virtual_mac_plans_of(const config::Description &description,
                                                 const std::vector<LifPlan> &interfaces)
{
    std::unordered_map<std::string_view, const LifPlan *> owners;
    for (const LifPlan &plan : interfaces) {
        owners.try_emplace(plan.name, &plan);
    }
    std::vector<VirtualMacPlan> plans;
    for (const auto &given : description.virtual_macs) {
        const auto found = owners.find(given.owner);
        if (found == owners.end()) {
            continue;
        }
        const LifPlan &owner = *found->second;
        const std::uint16_t vlan = owner.kind == config::Kind::svi ? owner.vlan : std::uint16_t{0};
        plans.push_back({given.owner, owner.ifindex, vlan, given.mac, given.source});
    }
    return plans;
}

} // namespace lab::l3lif
