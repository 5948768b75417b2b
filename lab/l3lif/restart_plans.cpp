/*
 * restart_plans.cpp: see restart_plans.h.
 */
#include "l3lif/restart_plans.h"

#include "l3lif/readback.h"
#include "services/ifindex.h"

#include <algorithm>
#include <set>

namespace lab::l3lif
{

namespace
{

namespace if_index = simswitch::if_index;
using simswitch::services::StoredInterface;

config::Kind kind_of(const if_index::Parts &parts, const StoredInterface &stored)
{
    switch (parts.kind) {
    case if_index::Kind::svi:
        return config::Kind::svi;
    case if_index::Kind::tunnel:
        return config::Kind::tunnel;
    case if_index::Kind::port_channel:
        return is_channel_subinterface(stored) ? config::Kind::subinterface
                                               : config::Kind::port_channel;
    default:
        return parts.sub != 0 ? config::Kind::subinterface : config::Kind::port;
    }
}

/** Ports of the trunk, and what the stored tree has beside them. */
std::vector<PlannedMember> members_of(const simswitch::Switch &hardware, int trunk,
                                      const StoredInterface &stored)
{
    std::set<std::uint32_t> ifindexes;
    if (stored.members) {
        ifindexes.insert(stored.members->begin(), stored.members->end());
    }
    for (const int port : ports_of_trunk(hardware.chip, trunk)) {
        if (port >= simswitch::chip::FIRST_FRONT_PORT) {
            ifindexes.insert(if_index::port(static_cast<unsigned>(port - 1)));
        }
    }
    std::vector<PlannedMember> members;
    for (const std::uint32_t ifindex : ifindexes) {
        const auto parts = if_index::parts(ifindex);
        const int port = parts ? static_cast<int>(parts->number) + 1 : 0;
        members.push_back({if_index::name(ifindex), port, ifindex});
    }
    return members;
}

void fill_properties(LifPlan &plan, const StoredInterface &stored)
{
    std::copy(stored.mac.begin(), stored.mac.end(), plan.mac.begin());
    plan.vlan = stored.si_encap_vlan;
    if (stored.properties) {
        plan.vrf = stored.properties->vrf;
        plan.mtu = stored.properties->mtu;
        plan.ipv4 = stored.properties->ipv4_en != 0;
        plan.ipv6 = stored.properties->ipv6_en != 0;
        plan.mpls = stored.properties->mpls_en != 0;
    }
}

} // namespace

bool is_channel_subinterface(const StoredInterface &stored)
{
    const auto parts = if_index::parts(stored.ifindex);
    return parts && parts->kind == if_index::Kind::port_channel &&
           (parts->sub != 0 || stored.si_encap_vlan != 0);
}

PlanIndex::PlanIndex(const std::vector<LifPlan> &plans)
{
    for (const LifPlan &plan : plans) {
        by_ifindex_.try_emplace(plan.ifindex, &plan);
        if (plan.kind == config::Kind::subinterface) {
            subinterfaces_.try_emplace(plan.ifindex, &plan);
            by_vlan_.try_emplace({plan.main, plan.vlan}, &plan);
        }
    }
}

const LifPlan *PlanIndex::find(const StoredInterface &stored) const
{
    const auto in = [](const auto &index, const auto &key) {
        const auto found = index.find(key);
        return found == index.end() ? nullptr : found->second;
    };
    if (!is_channel_subinterface(stored)) {
        return in(by_ifindex_, stored.ifindex);
    }
    const LifPlan *own = in(subinterfaces_, stored.ifindex);
    const LifPlan *of_vlan = in(by_vlan_, std::pair(stored.ifindex, stored.si_encap_vlan));
    if (own == nullptr || of_vlan == nullptr) {
        return own != nullptr ? own : of_vlan;
    }
    // They lie in one list.
    return std::min(own, of_vlan);
}

LifPlan plan_from_record(const simswitch::Switch &hardware, const StoredInterface &stored)
{
    LifPlan plan;
    plan.ifindex = stored.ifindex;
    plan.name = if_index::name(stored.ifindex);
    plan.table = "the store";
    fill_properties(plan, stored);
    const auto parts = if_index::parts(stored.ifindex);
    if (!parts) {
        return plan;
    }
    plan.kind = kind_of(*parts, stored);
    if (parts->kind == if_index::Kind::port) {
        plan.chip_port = static_cast<int>(parts->number) + 1;
        plan.main = parts->sub != 0 ? if_index::main_interface(stored.ifindex) : 0;
    } else if (parts->kind == if_index::Kind::port_channel) {
        plan.trunk = static_cast<int>(hardware.host.trunk_id(stored.ifindex).value_or(0));
        if (plan.kind == config::Kind::port_channel) {
            plan.members = members_of(hardware, plan.trunk, stored);
        } else {
            // The number of the subinterface isn't stored; its VLAN is its own too.
            plan.main = if_index::main_interface(stored.ifindex);
            plan.ifindex = if_index::port_channel_sub(parts->number, stored.si_encap_vlan);
            plan.name = if_index::name(plan.ifindex);
        }
    }
    return plan;
}

} // namespace lab::l3lif
