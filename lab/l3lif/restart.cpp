/*
 * restart.cpp: see restart.h.
 */
#include "l3lif/restart.h"

#include "l3lif/bring_up.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/plans.h"
#include "l3lif/restart_mode.h"
#include "l3lif/restart_plans.h"
#include "rtifhal_trident.h"

#include <fmt/format.h>
#include <fwmpd/platform.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;
using simswitch::services::StoredInterface;

bool counts_vlan(int port, int vlan)
{
    const auto v = static_cast<unsigned>(vlan);
    return (rtifhal_port_vlan[port].vlan_bitmap[v / 8] & (0x80U >> (v % 8))) != 0;
}

/** The ports of a VLAN as the library counts them, and as the wrappers cache them. */
struct PortsOfVlan {
    chip::PortSet counted;
    chip::PortSet cached;
};

PortsOfVlan ports_of(simswitch::Switch &hardware, int vlan)
{
    PortsOfVlan ports{{}, hardware.wrappers.cached_vlan_ports(vlan)};
    for (int port = 0; port <= chip::LAST_FRONT_PORT; ++port) {
        if (counts_vlan(port, vlan)) {
            ports.counted.add(port);
        }
    }
    return ports;
}

std::vector<PortInVlan> added(const chip::PortSet &before, chip::PortSet now, int vlan)
{
    now -= before;
    std::vector<PortInVlan> ports;
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (now.has(port)) {
            ports.push_back({port, vlan});
        }
    }
    return ports;
}

void load_global_config(simswitch::Switch &hardware)
{
    const auto config =
        hardware.store.global_config().value_or(simswitch::services::GlobalConfig{});
    std::ranges::copy(config, fwmpd_global_config);
}

std::vector<int> preserved_numbers()
{
    std::vector<int> numbers;
    for (int iif = 0; iif <= chip::LAST_IIF; ++iif) {
        if (is_set(l3lif_l3iif_table_preserve, iif)) {
            numbers.push_back(iif);
        }
    }
    return numbers;
}

/** What a restart in restore mode works with. */
struct Restore {
    simswitch::Switch &hardware;
    Layer &layer;
    const config::Description *config;
    PlanIndex plans;
    RestartResult &result;
};

void restore_interface(Restore &restore, const StoredInterface &stored)
{
    simswitch::Switch &hardware = restore.hardware;
    RestoredInterface restored;
    restored.ifindex = stored.ifindex;
    const LifPlan *known = restore.plans.find(stored);
    if (known != nullptr && restore.layer.routed().find(known->name) != nullptr) {
        // A label stores a subinterface of a port-channel under its own ifindex, too.
        return;
    }
    restored.in_config = known != nullptr;
    Interface &interface =
        restore.layer.routed().make(known != nullptr ? *known : plan_from_record(hardware, stored));
    ::l3lif *record = restore.layer.routed().take_over(interface, stored);
    restored.interface = &interface;
    restored.iif = stored.hardware ? stored.hardware->l3intf_id : 0;
    restored.was_preserved = is_set(l3lif_l3iif_table_preserve, restored.iif);

    const int vlan = stored.si_encap_vlan != 0 ? stored.si_encap_vlan : RTIFHAL_VLAN_ROUTED;
    const PortsOfVlan before = ports_of(hardware, vlan);
    restored.request = make_request(hardware, fmt::format("restore {}", interface.lif->plan().name),
                                    [record] { return rtifhal_trident_l3port_restore(record); });
    const PortsOfVlan now = ports_of(hardware, vlan);
    restored.ports = added(before.counted, now.counted, vlan);
    restored.cached = added(before.cached, now.cached, vlan);
    restored.iif_taken = is_set(l3lif_l3iif_table, restored.iif);
    restored.is_vlan_svi = interface.lif->plan().kind == config::Kind::svi &&
                           rtifhal_is_vlan_svi(stored.si_encap_vlan) != 0;
    restore.layer.routed().mark_up(interface);
    restore.result.interfaces.push_back(std::move(restored));
}

/** The layer's adds during the restart: those of ports are the only ones that stop at restore mode.
 */
void replay_adds(Restore &restore)
{
    if (restore.config == nullptr) {
        return;
    }
    restore.layer.adopt_router_mac(restore.config->device_mac);
    for (RestoredInterface &restored : restore.result.interfaces) {
        const LifPlan &plan = restored.interface->lif->plan();
        if (plan.kind == config::Kind::port && restored.in_config) {
            Interface *interface = restore.layer.routed().find(plan.name);
            restored.replay = restore.layer.bring_up(*interface);
            restored.was_replayed = true;
        }
    }
    for (VlanPlan &plan : vlan_plans_of(*restore.config)) {
        const std::uint16_t vlan = plan.vlan;
        if (restore.layer.l2().adopt(std::move(plan))) {
            restore.result.l2_vlans.push_back(vlan);
        }
    }
}

void run_restore(simswitch::Switch &hardware, Layer &layer, const config::Description *config,
                 RestartResult &result, const Progress &progress)
{
    const RestoreMode mode;
    const auto plans = config != nullptr ? plans_of(*config) : std::vector<LifPlan>{};
    Restore restore{hardware, layer, config, PlanIndex(plans), result};
    load_global_config(hardware);
    result.globals = make_request(hardware, "restore the global context",
                                  [] { return rtifhal_trident_pss_restore_global_context(); });
    result.preserved = preserved_numbers();
    const auto stored = hardware.store.stored_interfaces();
    result.interfaces.reserve(stored.size());
    Steps steps(progress, stored.size());
    for (const StoredInterface &one : stored) {
        restore_interface(restore, one);
        steps.step();
    }
    replay_adds(restore);
}

/** Asks for the adjacencies of an interface that has come up. */
FastStep ask_for_adjacencies(simswitch::Switch &hardware, const Interface &interface)
{
    const LifPlan &plan = interface.lif->plan();
    const std::size_t asked = hardware.messages.requests().size();
    make_request(hardware, fmt::format("create the adjacencies of {}", plan.name), [&plan] {
        rtifhal_trident_create_v4_adjacency(plan.ifindex);
        return 0;
    });
    return {&interface, hardware.chip.routes.size(), hardware.chip.egresses.size(),
            hardware.messages.requests().size() > asked};
}

void bring_up_anew(simswitch::Switch &hardware, Layer &layer, const config::Description &config,
                   RestartResult &result, const Progress &progress)
{
    hardware.power_cycle();
    check_state(hardware);
    hardware.system.fast_restart = result.mode == RestartMode::fast;
    if (result.mode == RestartMode::cold) {
        bring_all_up(config, layer, {}, progress);
        return;
    }
    const auto ask = [&](const Interface &interface) {
        result.steps.push_back(ask_for_adjacencies(hardware, interface));
    };
    bring_all_up(config, layer, ask, progress);
    result.adjacencies = hardware.messages.requests();
}

} // namespace

std::string_view mode_name(RestartMode mode)
{
    switch (mode) {
    case RestartMode::restore:
        return "restore";
    case RestartMode::fast:
        return "fast";
    case RestartMode::cold:
        break;
    }
    return "cold";
}

RestartResult restart(simswitch::Switch &hardware, Layer &layer, RestartMode mode,
                      const config::Description *config, const Progress &progress)
{
    RestartResult result;
    result.mode = mode;
    const std::uint64_t before = hardware.chip.writes;
    if (mode == RestartMode::restore) {
        run_restore(hardware, layer, config, result, progress);
    } else if (config == nullptr) {
        throw std::invalid_argument(
            fmt::format("a {} restart needs a configuration", mode_name(mode)));
    } else {
        bring_up_anew(hardware, layer, *config, result, progress);
    }
    result.chip_writes = hardware.chip.writes - before;
    check_state(hardware);
    return result;
}

} // namespace lab::l3lif
