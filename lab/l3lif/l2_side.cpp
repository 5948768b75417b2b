/*
 * l2_side.cpp: see l2_side.h.
 */
#include "l3lif/l2_side.h"

#include "rtifhal_trident.h"
#include "sdk/convert.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;
namespace fwm = simswitch::fwm;

// A VLAN's flags while it isn't routed: no IPv4, IPv6, IPv4 multicast, MPLS.
constexpr std::uint32_t VLAN_NOT_ROUTED = 0x8 | 0x10 | 0x20 | 0x200;

// The use of a VLAN that the L2 side gives up.
constexpr int USE_L2 = 3;

/** The ports that a VLAN's frames reach: its members and the CPU. */
chip::PortSet with_cpu(chip::PortSet ports)
{
    ports.add(chip::CPU_PORT);
    return ports;
}

fwm::PrivateVlan role_of(config::VlanRole role)
{
    switch (role) {
    case config::VlanRole::primary:
        return fwm::PrivateVlan::primary;
    case config::VlanRole::secondary:
        return fwm::PrivateVlan::secondary;
    case config::VlanRole::none:
        break;
    }
    return fwm::PrivateVlan::none;
}

bool covers(const chip::PortSet &all, chip::PortSet some)
{
    some -= all;
    return some.empty();
}

/** Runs a request whose refusal has words. */
Request run(simswitch::Switch &hardware, const std::string &name,
            const std::function<simswitch::Outcome()> &work)
{
    simswitch::Outcome outcome;
    Request request = make_request(hardware, name, [&outcome, &work] {
        outcome = work();
        return outcome.code;
    });
    if (request.refused_writes.empty()) {
        request.refused_writes = outcome.reason;
    }
    return request;
}

} // namespace

L2Vlan &L2Side::keep(std::unique_ptr<L2Vlan> vlan)
{
    by_id_.try_emplace(vlan->plan.vlan, vlan.get());
    vlans_.push_back(std::move(vlan));
    return *vlans_.back();
}

const L2Vlan &L2Side::set_up(VlanPlan plan)
{
    auto vlan = std::make_unique<L2Vlan>();
    vlan->plan = std::move(plan);
    L2Vlan &made = keep(std::move(vlan));
    made.up = run(hardware_, fmt::format("set up {}", made.plan.name),
                  [this, &made] { return create(made); });
    return made;
}

bool L2Side::adopt(VlanPlan plan)
{
    const chip::Vlan *there = hardware_.chip.vlans.find(plan.vlan);
    const bool has_all = there != nullptr && hardware_.host.vlans.has(plan.vlan) &&
                         covers(there->members, plan.ports) &&
                         covers(there->untagged, plan.untagged);
    if (!has_all) {
        return false;
    }
    auto vlan = std::make_unique<L2Vlan>();
    vlan->plan = std::move(plan);
    // Nobody has kept what was there before; a port's frames were in the default VLAN.
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        if (vlan->plan.untagged.has(port)) {
            vlan->untagged_before[port] = chip::DEFAULT_VLAN;
        }
    }
    if (vlan->plan.vlan == chip::DEFAULT_VLAN) {
        vlan->before = *there;
    }
    rtifhal_set_l2_vlan(vlan->plan.vlan);
    keep(std::move(vlan));
    return true;
}

const L2Vlan *L2Side::find(std::uint16_t vlan) const
{
    const auto found = by_id_.find(vlan);
    return found == by_id_.end() ? nullptr : found->second;
}

void L2Side::set_role(std::uint16_t vlan, config::VlanRole role)
{
    hardware_.host.vlans.set_role(vlan, role_of(role));
}

simswitch::Outcome L2Side::create(L2Vlan &vlan)
{
    const VlanPlan &plan = vlan.plan;
    if (const chip::Vlan *there = hardware_.chip.vlans.find(plan.vlan)) {
        vlan.before = *there;
    } else if (simswitch::Outcome refused = hardware_.chip.vlans.create(plan.vlan); !refused.ok()) {
        return refused;
    }
    if (simswitch::Outcome refused = hardware_.host.vlans.add(plan.vlan, role_of(plan.role));
        !refused.ok()) {
        return refused;
    }
    fill(vlan);
    return {};
}

void L2Side::fill(L2Vlan &vlan)
{
    const std::uint16_t id = vlan.plan.vlan;
    bcm_vlan_control_vlan_t *controls = hardware_.wrappers.vlan_controls(id);
    if (controls != nullptr && rtifhal_is_vlan_svi(id) == 0) {
        controls->vc_flags |= VLAN_NOT_ROUTED;
        hardware_.wrappers.set_vlan_controls(id, *controls);
    }
    join_ports(vlan);
    rtifhal_set_l2_vlan(id);
}

const L2Vlan &L2Side::repair(VlanPlan plan)
{
    auto made = std::make_unique<L2Vlan>();
    made->plan = std::move(plan);
    L2Vlan &vlan = keep(std::move(made));
    vlan.up = run(hardware_, fmt::format("set up {}", vlan.plan.name), [this, &vlan] {
        const int id = vlan.plan.vlan;
        simswitch::Outcome outcome;
        if (hardware_.chip.vlans.find(id) == nullptr) {
            outcome = hardware_.chip.vlans.create(id);
        }
        if (outcome.ok() && !hardware_.host.vlans.has(id)) {
            outcome = hardware_.host.vlans.add(id, role_of(vlan.plan.role));
        }
        if (outcome.ok()) {
            fill(vlan);
        }
        return outcome;
    });
    return vlan;
}

void L2Side::join_ports(L2Vlan &vlan)
{
    const VlanPlan &plan = vlan.plan;
    hardware_.wrappers.add_vlan_ports(plan.vlan, with_cpu(plan.ports), plan.untagged);
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        if (plan.untagged.has(port)) {
            vlan.untagged_before[port] = hardware_.chip.ports.get(port).untagged_vlan;
            hardware_.wrappers.set_untagged_vlan(port, plan.vlan);
        }
        if (plan.ports.has(port)) {
            hardware_.wrappers.set_stg_state(chip::DEFAULT_STG, port, chip::STP_FORWARDING);
        }
    }
}

void L2Side::leave_ports(const L2Vlan &vlan)
{
    hardware_.wrappers.remove_vlan_ports(vlan.plan.vlan, with_cpu(vlan.plan.ports));
    for (const auto &[port, untagged] : vlan.untagged_before) {
        hardware_.wrappers.set_untagged_vlan(port, untagged);
    }
}

simswitch::Outcome L2Side::end(const L2Vlan &vlan)
{
    const int id = vlan.plan.vlan;
    leave_ports(vlan);
    std::uint32_t no_users = 0;
    const int code = rtifhal_subintf_block_set(vlan.plan.vlan, USE_L2, 0, 0, &no_users);
    if (code != 0 || no_users == 0) {
        return {code != 0 ? code : -1,
                fmt::format("VLAN {} has users yet, and stays in the chip", id)};
    }
    hardware_.host.vlans.remove(id);
    if (!vlan.before) {
        return hardware_.wrappers.destroy_vlan(id);
    }
    hardware_.wrappers.add_vlan_ports(id, vlan.before->members, vlan.before->untagged);
    hardware_.wrappers.set_vlan_controls(id, simswitch::sdk::to_sdk(vlan.before->controls));
    hardware_.wrappers.vlan_blocks(id) = simswitch::sdk::to_sdk(vlan.before->blocks);
    return hardware_.wrappers.set_vlan_blocks(id, hardware_.wrappers.vlan_blocks(id));
}

bool L2Side::take_down()
{
    bool clean = true;
    for (auto it = vlans_.rbegin(); it != vlans_.rend(); ++it) {
        L2Vlan &vlan = **it;
        // One that the chip didn't take has nothing to take down.
        if (hardware_.host.vlans.has(vlan.plan.vlan)) {
            vlan.down = run(hardware_, fmt::format("take {} down", vlan.plan.name),
                            [this, &vlan] { return end(vlan); });
            clean = clean && vlan.down.ok();
        }
    }
    return clean;
}

} // namespace lab::l3lif
