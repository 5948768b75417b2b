/*
 * address_steps.cpp: see address_steps.h.
 */
#include "faults/address_steps.h"

#include "config/address.h"
#include "l3lif/plans.h"
#include "l3lif/port_requests.h"
#include "rtifhal_trident.h"

#include "services/ifindex.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace lab::faults
{

namespace
{

using l3lif::LifPlan;
using l3lif::PairPlan;
using l3lif::Request;
using l3lif::VirtualMacPlan;

constexpr std::uint32_t VPN = 28673;
constexpr std::uint32_t VNI = 5000;

std::vector<Again> router_mac_again(World &world)
{
    std::vector<Again> done;
    while (!world.layer.router_macs().empty()) {
        const int station = world.layer.router_macs().begin()->first;
        done.push_back({"delete the router MAC", world.layer.remove_router_mac(station)});
    }
    done.push_back({.asked = "add the router MAC",
                    .request = world.layer.add_router_mac(world.config.device_mac),
                    .gives_station = true,
                    .must_work = true});
    return done;
}

Request end_vlans(World &world)
{
    world.layer.l2().take_down();
    Request request;
    const auto &vlans = world.layer.l2().vlans();
    for (auto vlan = vlans.rbegin(); vlan != vlans.rend(); ++vlan) {
        request.append((*vlan)->down);
    }
    return request;
}

std::vector<Again> vlans_again(World &world)
{
    std::vector<Again> done = {{"take the VLANs down", end_vlans(world)}};
    for (auto &plan : l3lif::vlan_plans_of(world.config)) {
        const std::string asked = fmt::format("set up {}", plan.name);
        done.push_back({.asked = asked,
                        .request = world.layer.set_up_vlan(std::move(plan)).up,
                        .must_work = true});
    }
    return done;
}

std::vector<Again> pair_again(World &world, const PairPlan &plan)
{
    std::vector<Again> done = {{"delete the pair", world.layer.remove_pair(plan)}};
    done.push_back(
        {.asked = "add the pair", .request = world.layer.add_pair(plan), .must_work = true});
    return done;
}

std::vector<Again> virtual_mac_again(World &world, const VirtualMacPlan &plan)
{
    std::vector<Again> done = {{"delete the virtual MAC", world.layer.remove_virtual_mac(plan)}};
    done.push_back({.asked = "add the virtual MAC",
                    .request = world.layer.add_virtual_mac(plan),
                    .must_work = true});
    return done;
}

std::string mac_words(const VirtualMacPlan &plan)
{
    return plan.vlan != 0 ? "of a VLAN interface" : "of another interface";
}

Request ipv6(World &world, int value)
{
    return l3lif::make_request(world.hardware, fmt::format("ipv6 {}", value),
                               [value] { return rtifhal_set_kelvo_l3_ipv6_config(value); });
}

Step ipv6_step(int value)
{
    return {.kind = "switch IPv6 on or off",
            .asked = fmt::format("ipv6 {}", value != 0 ? "on" : "off"),
            .make = [value](World &world) { return ipv6(world, value); },
            .again =
                [value](World &world) {
                    std::vector<Again> done = {{"the other way", ipv6(world, 1 - value)}};
                    done.push_back({.asked = "ipv6 once more",
                                    .request = ipv6(world, value),
                                    .must_work = true});
                    return done;
                }};
}

Step drop_step(int port)
{
    const auto add = [port](World &world) {
        return l3lif::add_drop_port(world.hardware, fmt::format("drop add port {}", port), port);
    };
    return {.kind = "put a port into the drop rule",
            .asked = fmt::format("drop add port {}", port),
            .make = add,
            .again = [add](World &world) {
                std::vector<Again> done;
                done.push_back({.asked = "drop add", .request = add(world), .must_work = true});
                return done;
            }};
}

Request member(World &world, int port, bool clear)
{
    const auto ifindex = simswitch::if_index::port(static_cast<unsigned>(port) - 1);
    return l3lif::set_member_port(world.hardware, fmt::format("member port {}", port), ifindex,
                                  clear);
}

Step member_step(int port, bool clear)
{
    return {.kind =
                clear ? "take a member port out of VLAN 4094" : "put a member port into VLAN 4094",
            .asked = fmt::format("member-port {}{}", port, clear ? " clear" : ""),
            .make = [port, clear](World &world) { return member(world, port, clear); },
            .again =
                [port, clear](World &world) {
                    std::vector<Again> done = {{"the other way", member(world, port, !clear)}};
                    done.push_back({.asked = "member-port once more",
                                    .request = member(world, port, clear),
                                    .must_work = true});
                    return done;
                }};
}

Request add_vxlan(World &world, const std::string &name, int port)
{
    const l3lif::Lif &lif = *world.layer.routed().find(name)->lif;
    const l3lif::VxlanPlan plan{.ifindex = lif.plan().ifindex,
                                .vpn = VPN,
                                .vni = VNI,
                                .port = static_cast<std::uint32_t>(port),
                                .vlan = lif.plan().vlan,
                                .egress = static_cast<std::uint32_t>(lif.iif())};
    int id = 0;
    Request request =
        l3lif::add_vxlan_port(world.hardware, fmt::format("vxlan add {}", name), plan, id);
    if (request.code == 0) {
        world.vxlan_ports[name] = id;
    }
    return request;
}

Request remove_vxlan(World &world, const std::string &name)
{
    const auto id = static_cast<std::uint32_t>(world.vxlan_ports[name]);
    return l3lif::remove_vxlan_port(world.hardware, fmt::format("vxlan del {}", name), VPN, id);
}

Step vxlan_step(const std::string &name, int port, bool add)
{
    return {.kind = add ? "add a VXLAN port" : "delete a VXLAN port",
            .asked = fmt::format("vxlan {} {}", add ? "add" : "del", name),
            .make =
                [name, port, add](World &world) {
                    return add ? add_vxlan(world, name, port) : remove_vxlan(world, name);
                },
            .again =
                [name, port](World &world) {
                    std::vector<Again> done = {{"vxlan del", remove_vxlan(world, name)}};
                    done.push_back({.asked = "vxlan add",
                                    .request = add_vxlan(world, name, port),
                                    .must_work = true});
                    return done;
                }};
}

} // namespace

Step router_mac_step(const config::Description & /*config*/)
{
    return {
        .kind = "add a router MAC",
        .asked = "add the router MAC",
        .make = [](World &world) { return world.layer.add_router_mac(world.config.device_mac); },
        .again = router_mac_again,
        .gives_station = true};
}

Step router_mac_removal()
{
    return {.kind = "delete a router MAC",
            .asked = "delete the router MAC",
            .make =
                [](World &world) {
                    return world.layer.remove_router_mac(world.layer.router_macs().begin()->first);
                },
            .again = router_mac_again};
}

std::vector<Step> vlan_steps(const config::Description &config)
{
    std::vector<Step> steps;
    for (const auto &plan : l3lif::vlan_plans_of(config)) {
        steps.push_back({.kind = "set up a VLAN",
                         .asked = fmt::format("set up {}", plan.name),
                         .make = [plan](World &world) { return world.layer.set_up_vlan(plan).up; },
                         .swept = false});
    }
    return steps;
}

Step vlans_end_step()
{
    return {.kind = "end the VLANs of the L2 side",
            .asked = "take the VLANs down",
            .make = end_vlans,
            .again = vlans_again};
}

std::vector<Step> pair_steps(const config::Description &config)
{
    std::vector<Step> steps;
    for (const PairPlan &plan : l3lif::pair_plans_of(config)) {
        steps.push_back({.kind = "add a private-VLAN pair",
                         .asked = fmt::format("add pair {}, {}", plan.primary, plan.secondary),
                         .make = [plan](World &world) { return world.layer.add_pair(plan); },
                         .again = [plan](World &world) { return pair_again(world, plan); }});
    }
    return steps;
}

std::vector<Step> pair_removals(const config::Description &config)
{
    std::vector<Step> steps;
    for (const PairPlan &plan : l3lif::pair_plans_of(config)) {
        steps.push_back({.kind = "delete a private-VLAN pair",
                         .asked = fmt::format("delete pair {}, {}", plan.primary, plan.secondary),
                         .make = [plan](World &world) { return world.layer.remove_pair(plan); },
                         .again = [plan](World &world) { return pair_again(world, plan); }});
    }
    std::ranges::reverse(steps);
    return steps;
}

std::vector<Step> virtual_mac_steps(const config::Description &config,
                                    const std::vector<LifPlan> &plans)
{
    std::vector<Step> steps;
    for (const VirtualMacPlan &plan : l3lif::virtual_mac_plans_of(config, plans)) {
        steps.push_back({.kind = "add a virtual MAC",
                         .variant = mac_words(plan),
                         .asked = fmt::format("add virtual MAC {} of {}",
                                              config::mac_text(plan.mac), plan.owner),
                         .make = [plan](World &world) { return world.layer.add_virtual_mac(plan); },
                         .again = [plan](World &world) { return virtual_mac_again(world, plan); }});
    }
    return steps;
}

std::vector<Step> virtual_mac_removals(const config::Description &config,
                                       const std::vector<LifPlan> &plans)
{
    std::vector<Step> steps;
    for (const VirtualMacPlan &plan : l3lif::virtual_mac_plans_of(config, plans)) {
        steps.push_back(
            {.kind = "delete a virtual MAC",
             .variant = mac_words(plan),
             .asked =
                 fmt::format("delete virtual MAC {} of {}", config::mac_text(plan.mac), plan.owner),
             .make = [plan](World &world) { return world.layer.remove_virtual_mac(plan); },
             .again = [plan](World &world) { return virtual_mac_again(world, plan); }});
    }
    std::ranges::reverse(steps);
    return steps;
}

std::vector<Step> ipv6_steps()
{
    return {ipv6_step(1), ipv6_step(0)};
}

std::vector<Step> port_steps(const config::Description &config, const std::vector<LifPlan> &plans)
{
    std::vector<Step> steps;
    std::vector<int> routed;
    std::string svi;
    for (const LifPlan &plan : plans) {
        if (plan.kind == config::Kind::port && routed.size() < 2) {
            routed.push_back(plan.chip_port);
            steps.push_back(drop_step(plan.chip_port));
        }
        if (plan.kind == config::Kind::svi && svi.empty()) {
            svi = plan.name;
        }
    }
    // A port of a VLAN, which no interface uses.
    for (const auto &plan : l3lif::vlan_plans_of(config)) {
        for (int port = simswitch::chip::FIRST_FRONT_PORT; port <= simswitch::chip::LAST_FRONT_PORT;
             ++port) {
            if (!svi.empty() && plan.untagged.has(port)) {
                steps.push_back(member_step(port, false));
                steps.push_back(member_step(port, true));
                steps.push_back(vxlan_step(svi, port, true));
                steps.push_back(vxlan_step(svi, port, false));
                return steps;
            }
        }
    }
    return steps;
}

} // namespace lab::faults
