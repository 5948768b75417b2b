/*
 * interface_steps.cpp: see interface_steps.h.
 */
#include "faults/interface_steps.h"

#include "l3lif/property_requests.h"
#include "session/properties.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace lab::faults
{

namespace
{

using l3lif::Interface;
using l3lif::Request;
using l3lif::Standing;

/** Of an interface that was deleted and keeps its number. */
constexpr const char *KEPT = "number kept";

/** A change of a property away from what an interface begins with, then back. */
struct Change {
    std::string_view property;
    std::string_view away;
    std::string_view back;
    bool back_differs; ///< the way back makes other calls than the way there
};

constexpr std::array<Change, 13> CHANGES = {{
    {"ipv4", "off", "on", true},
    {"ipv4-multicast", "on", "off", true},
    {"ipv6", "on", "off", true},
    {"vrf", "5", "1", false},
    {"ipv6-vrf", "6", "1", false},
    {"urpf", "strict", "off", true},
    {"mtu", "9000", "9100", false},
    {"mpls", "on", "off", true},
    {"class", "on", "off", false},
    {"acl-label", "9", "0", false},
    {"ingress-flag", "on", "off", false},
    {"word-7", "70", "0", false},
    {"word-8", "80", "0", false},
}};

Interface &need(World &world, const std::string &name)
{
    return *world.layer.routed().find(name);
}

Request change(World &world, const std::string &name, std::string_view property,
               std::string_view word)
{
    const session::Property &changed = session::property(property);
    const std::uint32_t value = session::parse_value(changed, word);
    const std::string asked = fmt::format("set {} {} {}", name, property, word);
    l3lif::Lif &lif = *need(world, name).lif;
    if (changed.store == nullptr) {
        return l3lif::set_label(world.hardware, lif, asked, static_cast<std::uint16_t>(value));
    }
    changed.store(*lif.record()->l3lif_pi_ctxt, value);
    return l3lif::set_property(world.hardware, lif, asked, changed.svi_id, value);
}

Step property_step(const l3lif::LifPlan &plan, std::string_view property, std::string_view word)
{
    const std::string name = plan.name;
    return {.kind = fmt::format("change {}", kind_words(plan)),
            .asked = fmt::format("set {} {} {}", name, property, word),
            .make = [name, property,
                     word](World &world) { return change(world, name, property, word); },
            .again = [name](World &world) { return rebuild(world, name); }};
}

/** What stands on an interface, in the order of coming up. */
struct Dependents {
    std::vector<Interface *> subinterfaces;
    std::vector<l3lif::PairPlan> pairs;
    std::vector<l3lif::VirtualMacPlan> virtual_macs;
};

Dependents dependents_of(const World &world, const Interface &interface)
{
    const l3lif::LifPlan &plan = interface.lif->plan();
    Dependents found;
    for (const auto &other : world.layer.interfaces()) {
        if (other->lif->plan().main == plan.ifindex && other->standing() != Standing::down) {
            found.subinterfaces.push_back(other.get());
        }
    }
    for (const l3lif::Pair &pair : world.layer.pairs()) {
        if (plan.kind == config::Kind::svi && pair.plan.primary == plan.vlan) {
            found.pairs.push_back(pair.plan);
        }
    }
    for (const l3lif::VirtualMac &mac : world.layer.virtual_macs()) {
        if (mac.plan.ifindex == plan.ifindex) {
            found.virtual_macs.push_back(mac.plan);
        }
    }
    return found;
}

void take_down(World &world, Interface &interface, std::vector<Again> &done)
{
    if (interface.standing() != Standing::down) {
        done.push_back({fmt::format("delete {}", interface.lif->plan().name),
                        world.layer.take_down(interface, false)});
    }
}

void bring_up(World &world, Interface &interface, std::vector<Again> &done)
{
    done.push_back({.asked = fmt::format("add {}", interface.lif->plan().name),
                    .request = world.layer.bring_up(interface),
                    .must_work = true});
}

} // namespace

std::string kind_words(const l3lif::LifPlan &plan)
{
    switch (plan.kind) {
    case config::Kind::port:
        return "a port";
    case config::Kind::port_channel:
        return "a port-channel";
    case config::Kind::svi:
        return "a VLAN interface";
    case config::Kind::tunnel:
        return "a tunnel";
    case config::Kind::subinterface:
        break;
    }
    return plan.trunk != 0 ? "a subinterface of a port-channel" : "a subinterface of a port";
}

std::vector<Again> rebuild(World &world, const std::string &name)
{
    Interface &interface = need(world, name);
    const Dependents on_it = dependents_of(world, interface);
    std::vector<Again> done;
    for (const auto &plan : on_it.virtual_macs) {
        done.push_back({fmt::format("delete a virtual MAC of {}", name),
                        world.layer.remove_virtual_mac(plan)});
    }
    for (const auto &plan : on_it.pairs) {
        done.push_back({fmt::format("delete pair {}, {}", plan.primary, plan.secondary),
                        world.layer.remove_pair(plan)});
    }
    for (Interface *subinterface : on_it.subinterfaces) {
        take_down(world, *subinterface, done);
    }
    take_down(world, interface, done);
    bring_up(world, interface, done);
    for (Interface *subinterface : on_it.subinterfaces) {
        bring_up(world, *subinterface, done);
    }
    for (const auto &plan : on_it.pairs) {
        done.push_back({.asked = fmt::format("add pair {}, {}", plan.primary, plan.secondary),
                        .request = world.layer.add_pair(plan),
                        .must_work = true});
    }
    for (const auto &plan : on_it.virtual_macs) {
        done.push_back({.asked = fmt::format("add a virtual MAC of {}", name),
                        .request = world.layer.add_virtual_mac(plan),
                        .must_work = true});
    }
    return done;
}

Step add_step(const l3lif::LifPlan &plan, const std::string &variant)
{
    return {.kind = fmt::format("add {}", kind_words(plan)),
            .variant = variant.empty() ? "new" : variant,
            .asked = fmt::format("add {}{}", plan.name, variant.empty() ? "" : ", " + variant),
            .make = [plan](World &world) { return world.layer.bring_up(plan).up; },
            .again = [name = plan.name](World &world) { return rebuild(world, name); }};
}

Step add_again_step(const l3lif::LifPlan &plan)
{
    return {.kind = fmt::format("add {}", kind_words(plan)),
            .variant = KEPT,
            .asked = fmt::format("add {}, {}", plan.name, KEPT),
            .make = [name = plan.name](
                        World &world) { return world.layer.bring_up(need(world, name)); },
            .again = [name = plan.name](World &world) { return rebuild(world, name); }};
}

Step delete_step(const l3lif::LifPlan &plan, bool keep)
{
    return {.kind = fmt::format("delete {}", kind_words(plan)),
            .variant = keep ? KEPT : "for good",
            .asked = fmt::format("delete {}{}", plan.name, keep ? ", number kept" : ""),
            .make = [name = plan.name,
                     keep](World &world) { return world.layer.take_down(need(world, name), keep); },
            .again = [name = plan.name](World &world) { return rebuild(world, name); }};
}

std::vector<Step> disable_steps(const l3lif::LifPlan &plan)
{
    const std::string name = plan.name;
    Step disable{.kind = "disable an interface",
                 .variant = kind_words(plan),
                 .asked = fmt::format("disable {}", name),
                 .make =
                     [name](World &world) {
                         return l3lif::disable(world.hardware, *need(world, name).lif,
                                               fmt::format("disable {}", name));
                     },
                 .again = [name](World &world) { return rebuild(world, name); }};
    Step back = property_step(plan, "vrf", "1");
    return {std::move(disable), std::move(back)};
}

std::vector<Step> property_steps(const l3lif::LifPlan &plan)
{
    std::vector<Step> steps;
    for (const Change &change : CHANGES) {
        steps.push_back(property_step(plan, change.property, change.away));
        steps.push_back(property_step(plan, change.property, change.back));
        steps.back().swept = change.back_differs;
    }
    return steps;
}

} // namespace lab::faults
