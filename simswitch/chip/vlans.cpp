/*
 * vlans.cpp: the table of VLANs.
 */
#include "chip/vlans.h"

#include "chip/refusal.h"

#include <algorithm>
#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

constexpr const char *KIND = "VLAN";

Outcome check_id(int vlan)
{
    if (!is_vlan(vlan)) {
        return out_of_range(KIND, vlan, 1, LAST_VLAN);
    }
    return {};
}

} // namespace

std::string text(const VlanControls &controls)
{
    return fmt::format("vrf {} iif {} flags {:#x} class {} urpf {}", controls.vrf,
                       controls.ingress_if, controls.flags, controls.intf_class,
                       controls.urpf_mode);
}

std::string text(const VlanBlocks &blocks)
{
    return fmt::format("kmc {} umc {} uuc {} bc {}", blocks.known_multicast.text(),
                       blocks.unknown_multicast.text(), blocks.unknown_unicast.text(),
                       blocks.broadcast.text());
}

std::string text(const Vlan &vlan)
{
    return fmt::format("stg {} members {} untagged {} controls {} blocks {}", vlan.stg,
                       vlan.members.text(), vlan.untagged.text(), text(vlan.controls),
                       text(vlan.blocks));
}

Vlans::Vlans(std::size_t limit) : limit_(limit)
{
    Vlan first;
    first.members = PortSet::front();
    first.members.add(CPU_PORT);
    first.untagged = PortSet::front();
    table_.put(DEFAULT_VLAN, first);
    count(first.members, first.stg, 1);
}

Outcome Vlans::create(int vlan)
{
    if (Outcome refused = check_id(vlan); !refused.ok()) {
        return refused;
    }
    if (table_.has(vlan)) {
        return existing(KIND, vlan);
    }
    if (table_.size() >= limit_) {
        return table_full(KIND, limit_);
    }
    table_.put(vlan, {});
    return {};
}

Outcome Vlans::remove(int vlan)
{
    Outcome outcome;
    if (const Vlan *found = need(vlan, outcome)) {
        count(found->members, found->stg, -1);
        table_.erase(vlan);
    }
    return outcome;
}

Outcome Vlans::add_ports(int vlan, const PortSet &ports, const PortSet &untagged)
{
    Outcome outcome;
    if (Vlan *found = need(vlan, outcome)) {
        PortSet leave_untagged = untagged;
        leave_untagged &= ports;
        PortSet joining = ports;
        joining -= found->members;
        count(joining, found->stg, 1);
        found->members |= ports;
        found->untagged -= ports;
        found->untagged |= leave_untagged;
    }
    return outcome;
}

Outcome Vlans::remove_ports(int vlan, const PortSet &ports)
{
    Outcome outcome;
    if (Vlan *found = need(vlan, outcome)) {
        PortSet leaving = ports;
        leaving &= found->members;
        count(leaving, found->stg, -1);
        found->members -= ports;
        found->untagged -= ports;
    }
    return outcome;
}

Outcome Vlans::set_controls(int vlan, const VlanControls &controls)
{
    Outcome outcome;
    if (Vlan *found = need(vlan, outcome)) {
        found->controls = controls;
    }
    return outcome;
}

Outcome Vlans::set_blocks(int vlan, const VlanBlocks &blocks)
{
    Outcome outcome;
    if (Vlan *found = need(vlan, outcome)) {
        found->blocks = blocks;
    }
    return outcome;
}

Outcome Vlans::set_stg(int vlan, int stg)
{
    Outcome outcome;
    if (Vlan *found = need(vlan, outcome)) {
        count(found->members, found->stg, -1);
        count(found->members, stg, 1);
        found->stg = stg;
    }
    return outcome;
}

Outcome Vlans::get_controls(int vlan, VlanControls &controls) const
{
    if (Outcome refused = check_id(vlan); !refused.ok()) {
        return refused;
    }
    const Vlan *found = table_.find(vlan);
    if (found == nullptr) {
        return unknown(KIND, vlan);
    }
    controls = found->controls;
    return {};
}

std::vector<int> Vlans::of_port(int port) const
{
    std::vector<int> ids;
    table_.for_each([&](int id, const Vlan &vlan) {
        if (vlan.members.has(port)) {
            ids.push_back(id);
        }
    });
    std::sort(ids.begin(), ids.end());
    return ids;
}

void Vlans::count(const PortSet &ports, int stg, int by)
{
    if (ports.empty()) {
        return;
    }
    for (int port = 0; port <= LAST_PORT; ++port) {
        if (!ports.has(port)) {
            continue;
        }
        auto &groups = groups_.at(static_cast<std::size_t>(port));
        const auto place = groups.try_emplace(stg).first;
        place->second += by;
        if (place->second == 0) {
            groups.erase(place);
        }
    }
}

Vlan *Vlans::need(int vlan, Outcome &refused)
{
    refused = check_id(vlan);
    if (!refused.ok()) {
        return nullptr;
    }
    Vlan *found = table_.edit(vlan);
    if (found == nullptr) {
        refused = unknown(KIND, vlan);
    }
    return found;
}

Outcome Vlans::restore(int id, const Vlan &record)
{
    Outcome outcome = create(id);
    if (outcome.ok()) {
        table_.put(id, record);
        count(record.members, record.stg, 1);
    }
    return outcome;
}

} // namespace simswitch::chip
