/*
 * holds.cpp: see holds.h.
 */
#include "faults/holds.h"

#include "l3lif/interface_numbers.h"
#include "rtifhal_trident.h"

#include "chip/basics.h"

#include <fmt/format.h>

#include <array>
#include <map>

namespace lab::faults
{

namespace
{

namespace chip = simswitch::chip;

/** The number that an interface has, or has kept for its next add; 0 for none. */
int number_of(const l3lif::Interface &interface)
{
    const ::l3lif *record = interface.lif->record();
    if (record->l3lif_pd_ctxt == nullptr || record->l3lif_pd_ctxt->l3_pd == nullptr) {
        return 0;
    }
    const l3_pd &hardware = *record->l3lif_pd_ctxt->l3_pd;
    return hardware.brcm_prog_complete != 0 ? hardware.prev_l3_if_index : hardware.l3intf_id;
}

Lines shared_numbers(const World &world)
{
    Lines broken;
    std::map<int, std::string> owners;
    for (const auto &interface : world.layer.interfaces()) {
        const int number = number_of(*interface);
        const std::string &name = interface->lif->plan().name;
        if (number == 0) {
            continue;
        }
        const auto [owner, is_first] = owners.emplace(number, name);
        if (!is_first) {
            broken.push_back(fmt::format("{} and {} have number {}", owner->second, name, number));
        }
    }
    return broken;
}

Lines free_numbers(const World &world)
{
    Lines broken;
    for (const auto &interface : world.layer.interfaces()) {
        const int number = number_of(*interface);
        if (number != 0 && !l3lif::is_set(l3lif_l3iif_table, number)) {
            broken.push_back(
                fmt::format("number {} of {} is free", number, interface->lif->plan().name));
        }
    }
    return broken;
}

bool holds_vlan(int port, int vlan)
{
    const auto v = static_cast<unsigned>(vlan);
    return (rtifhal_port_vlan[port].vlan_bitmap[v / 8] & (0x80U >> (v % 8))) != 0;
}

/** The ports that the L2 side has put into a VLAN, and the CPU. */
chip::PortSet bridged(const World &world, int vlan)
{
    chip::PortSet ports;
    ports.add(chip::CPU_PORT);
    if (vlan == chip::DEFAULT_VLAN) {
        for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
            ports.add(port);
        }
    }
    for (const auto &known : world.layer.l2().vlans()) {
        if (known->plan.vlan == vlan) {
            for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
                if (known->plan.ports.has(port)) {
                    ports.add(port);
                }
            }
        }
    }
    return ports;
}

Lines other_members(const World &world)
{
    Lines broken;
    for (const auto &[id, vlan] : world.hardware.chip.vlans.all()) {
        const chip::PortSet others = bridged(world, id);
        for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
            const bool counted = holds_vlan(port, id);
            if (others.has(port) || counted == vlan.members.has(port)) {
                continue;
            }
            broken.push_back(
                counted
                    ? fmt::format("port {} counts as a user of VLAN {} and isn't in it", port, id)
                    : fmt::format("port {} is in VLAN {} and doesn't count", port, id));
        }
    }
    return broken;
}

Lines other_counts(const World & /*world*/)
{
    Lines broken;
    for (int vlan = 0; vlan <= chip::LAST_VLAN; ++vlan) {
        const auto counted = rtifhal_vlan_type_count[vlan].subint_count;
        if (counted == 0) {
            continue;
        }
        int ports = 0;
        for (int port = 0; port <= chip::LAST_FRONT_PORT; ++port) {
            ports += holds_vlan(port, vlan) ? 1 : 0;
        }
        if (ports != counted) {
            broken.push_back(
                fmt::format("VLAN {} counts {} ports and {} hold it", vlan, counted, ports));
        }
    }
    return broken;
}

Lines vanished_vlans(const World &world)
{
    Lines broken;
    for (int vlan = 1; vlan < chip::LAST_VLAN; ++vlan) {
        const auto &uses = rtifhal_vlan_type_count[vlan];
        const bool used = uses.subint_count != 0 || uses.svi != 0;
        if (used && world.hardware.chip.vlans.find(vlan) == nullptr) {
            broken.push_back(fmt::format("VLAN {} counts as used and isn't in the chip", vlan));
        }
    }
    return broken;
}

constexpr std::array<Hold, 5> HOLDS = {{
    {"each number has one owner", true, shared_numbers},
    {"a number in use is taken", true, free_numbers},
    {"the ports that count are a VLAN's members", false, other_members},
    {"a VLAN counts the ports that hold it", false, other_counts},
    {"a VLAN that counts as used is there", false, vanished_vlans},
}};

} // namespace

std::span<const Hold> holds()
{
    return HOLDS;
}

Lines broken_holds(const World &world, bool at_once)
{
    Lines all;
    for (const Hold &hold : HOLDS) {
        if (hold.at_once != at_once) {
            continue;
        }
        for (const std::string &line : hold.broken(world)) {
            all.push_back(fmt::format("{}: {}", hold.name, line));
        }
    }
    return all;
}

} // namespace lab::faults
