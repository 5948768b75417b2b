/*
 * check.cpp: see check.h.
 */
#include "check/check.h"

#include "check/check_parts.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace lab::check
{

namespace
{

namespace chip = simswitch::chip;

constexpr int GPORT_KIND_SHIFT = 26;
constexpr int GPORT_TRUNK_KIND = 3;
constexpr int GPORT_PORT_MASK = 0x7ff;
constexpr int GPORT_TRUNK_MASK = 0x3ffffff;

std::vector<int> held_back_in_store(simswitch::Switch &hardware)
{
    std::vector<int> numbers;
    const auto config = hardware.store.global_config();
    if (!config) {
        return numbers;
    }
    l3iif_bitmap_t image = {};
    std::memcpy(image.bits, config->data() + simswitch::services::GLOBAL_CONFIG_PRESERVE,
                sizeof image.bits);
    for (int iif = 0; iif <= chip::LAST_IIF; ++iif) {
        if (l3lif::is_set(image, iif)) {
            numbers.push_back(iif);
        }
    }
    return numbers;
}

void find_ties(Scene &scene)
{
    const chip::Chip &chip = scene.chip();
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        scene.tied.insert(chip.ports.control(port, chip::PORT_CONTROL_INGRESS));
    }
    for (const auto &[id, vlan] : chip.vlans.all()) {
        scene.tied.insert(static_cast<int>(vlan.controls.ingress_if));
    }
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        scene.tied.insert(action.ingress_if);
    }
}

/** The ports on which an interface runs, in its VLAN. */
void add_users(Scene &scene, const l3lif::LifPlan &plan)
{
    if (plan.kind == config::Kind::svi || plan.kind == config::Kind::tunnel) {
        return;
    }
    std::set<int> ports;
    if (plan.chip_port != 0) {
        ports.insert(plan.chip_port);
    }
    for (const int port : l3lif::ports_of_trunk(scene.chip(), plan.trunk)) {
        ports.insert(port);
    }
    // A port with subinterfaces is in the routed VLAN too.
    scene.vlan_users[RTIFHAL_VLAN_ROUTED].insert(ports.begin(), ports.end());
    if (plan.vlan != 0) {
        scene.vlan_users[plan.vlan].insert(ports.begin(), ports.end());
    }
}

/** A port-channel and its subinterfaces share the place of one record: the last that was stored. */
void find_displaced(Scene &scene, const l3lif::LifPlan &plan)
{
    if (plan.kind != config::Kind::subinterface || plan.trunk == 0) {
        return;
    }
    const chip::Chip &chip = scene.chip();
    const auto ports = l3lif::ports_of_trunk(chip, plan.trunk);
    scene.has_kept_channel = scene.has_kept_channel || ports.empty();
    for (const int port : ports) {
        const int iif = chip.ports.control(port, chip::PORT_CONTROL_INGRESS);
        if (iif != 0 && !scene.owners.contains(iif)) {
            scene.displaced[iif] = fmt::format("the port-channel of trunk {}", plan.trunk);
        }
    }
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        const auto of_key = ports_of_gport(chip, key.gport);
        const bool is_on_it = !of_key.empty() && std::ranges::all_of(of_key, [&ports](int port) {
            return std::ranges::find(ports, port) != ports.end();
        });
        if (is_on_it && action.ingress_if != 0 && !scene.owners.contains(action.ingress_if)) {
            scene.displaced[action.ingress_if] =
                fmt::format("the subinterface of VLAN {} of trunk {}", key.outer_vlan, plan.trunk);
            scene.vlan_users[key.outer_vlan].insert(ports.begin(), ports.end());
        }
    }
}

void note_design(const Scene &scene)
{
    if (!scene.held_back.empty()) {
        scene.note(fmt::format("numbers held back: {}", scene.held_back.size()));
    }
    for (const auto &[iif, name] : scene.displaced) {
        scene.note(fmt::format("number {} is that of {}; a record of the same port-channel has "
                               "replaced its own, so that a restore doesn't bring it back",
                               iif, name));
    }
}

} // namespace

bool Scene::is_held_back(int iif) const
{
    return std::ranges::binary_search(held_back, iif);
}

std::string gport_text(int gport)
{
    return gport >> GPORT_KIND_SHIFT == GPORT_TRUNK_KIND
               ? fmt::format("trunk {}", gport & GPORT_TRUNK_MASK)
               : fmt::format("port {}", gport & GPORT_PORT_MASK);
}

std::vector<int> ports_of_gport(const chip::Chip &chip, int gport)
{
    if (gport >> GPORT_KIND_SHIFT == GPORT_TRUNK_KIND) {
        return l3lif::ports_of_trunk(chip, gport & GPORT_TRUNK_MASK);
    }
    return {gport & GPORT_PORT_MASK};
}

void find_owners(Scene &scene)
{
    for (const auto &restored : scene.restored.interfaces) {
        if (restored.iif != 0) {
            scene.owners.emplace(restored.iif, restored.interface->lif->plan().name);
        }
    }
    for (const auto &restored : scene.restored.interfaces) {
        const l3lif::LifPlan &plan = restored.interface->lif->plan();
        add_users(scene, plan);
        find_displaced(scene, plan);
    }
    find_ties(scene);
    for (const auto &[iif, ingress] : scene.chip().l3_ingresses.all()) {
        const bool is_bare = scene.chip().l3_interfaces.find(iif) == nullptr;
        scene.has_parked = scene.has_parked || (is_bare && !scene.is_held_back(iif));
    }
}

CheckResult check(simswitch::Switch &hardware, const config::Description *config)
{
    CheckResult result;
    auto stored = hardware.store.stored_interfaces();
    auto held_back = held_back_in_store(hardware);
    result.stored = stored.size();
    result.l3_interfaces = hardware.chip.l3_interfaces.size();
    // A restore writes into the cached controls.
    check_vlan_caches(hardware, result);

    l3lif::Layer layer(hardware);
    const l3lif::RestartResult restored =
        l3lif::restart(hardware, layer, l3lif::RestartMode::restore, config);
    Scene scene{.hardware = hardware,
                .restored = restored,
                .stored = std::move(stored),
                .held_back = std::move(held_back),
                .owners = {},
                .displaced = {},
                .tied = {},
                .vlan_users = {},
                .result = result};
    find_owners(scene);
    check_stored(scene);
    check_numbers(scene);
    check_objects(scene);
    check_ties(scene);
    check_vlans(scene);
    check_stations(scene);
    note_design(scene);
    return result;
}

} // namespace lab::check
