/*
 * check_ties.cpp: what leads frames to interfaces: ports, VLANs, translations,
 * stations. See check_parts.h.
 */
#include "check/check_parts.h"

#include "fwm/vlan_records.h"
#include "rtifhal_types.h"

#include <fmt/format.h>

#include <cstdint>
#include <map>
#include <string>

namespace lab::check
{

namespace
{

namespace chip = simswitch::chip;

constexpr const char *NOBODY_STORED =
    "its store failed at its add, or the process was killed in its delete";
constexpr const char *KILLED = "the process was killed while it was set up or taken away";

/** The flag of a routed VLAN that goes to the chip alone: the cache never has it. */
constexpr std::uint32_t CHIP_ONLY = 0x800;

/** What is wrong with an ingress object that something names; empty when nothing is. */
std::string wrong_with(const Scene &scene, int iif)
{
    if (scene.chip().l3_ingresses.find(iif) == nullptr) {
        return fmt::format("ingress object {}, which isn't there", iif);
    }
    if (!scene.is_owned(iif)) {
        return fmt::format("ingress object {}, which nobody stored", iif);
    }
    return "";
}

void check_translations(const Scene &scene)
{
    const chip::Chip &chip = scene.chip();
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        const std::string name =
            fmt::format("translation of VLAN {} on {}", key.outer_vlan, gport_text(key.gport));
        if (const std::string wrong = wrong_with(scene, action.ingress_if); !wrong.empty()) {
            scene.differ(fmt::format("{}: leads to {}", name, wrong), NOBODY_STORED);
        }
        for (const int vlan : {key.outer_vlan, static_cast<int>(action.new_outer_vlan)}) {
            if (chip.vlans.find(vlan) == nullptr) {
                scene.differ(fmt::format("{}: there is no VLAN {}", name, vlan), KILLED);
            }
        }
        if (ports_of_gport(chip, key.gport).empty()) {
            scene.differ(fmt::format("{}: the trunk has no port", name), KILLED);
        }
    }
}

/** A station with the same key counts once, as only the first one is ever met. */
void check_twins(const Scene &scene)
{
    std::map<std::string, int> first;
    for (const auto &[id, station] : scene.chip().stations.all()) {
        chip::Station key = station;
        key.flags = 0;
        const auto [found, is_new] = first.emplace(chip::text(key), id);
        if (!is_new) {
            scene.differ(fmt::format("stations {} and {} are both MAC {} in VLAN {}", found->second,
                                     id, chip::text(station.mac), station.vlan),
                         "the MAC was added again after a restart: the table of virtual MACs isn't "
                         "restored, the first station has no owner any more");
        }
    }
}

/** Why nothing is routed where a station matches; empty when something is. */
std::string lost(const Scene &scene, const chip::Station &station)
{
    if (station.vlan_mask == 0) {
        return "";
    }
    const chip::Chip &chip = scene.chip();
    const chip::Vlan *vlan = chip.vlans.find(station.vlan);
    if (vlan == nullptr) {
        return fmt::format("there is no VLAN {}", station.vlan);
    }
    if (station.vlan != RTIFHAL_VLAN_ROUTED && vlan->controls.ingress_if == 0) {
        return fmt::format("VLAN {} isn't routed", station.vlan);
    }
    const auto users = scene.vlan_users.find(RTIFHAL_VLAN_ROUTED);
    const bool on_port = station.src_port_mask != 0;
    if (on_port && (users == scene.vlan_users.end() || !users->second.contains(station.src_port))) {
        return fmt::format("port {} isn't routed", station.src_port);
    }
    return "";
}

} // namespace

void check_ties(const Scene &scene)
{
    const chip::Chip &chip = scene.chip();
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        const int iif = chip.ports.control(port, chip::PORT_CONTROL_INGRESS);
        const std::string wrong = iif != 0 ? wrong_with(scene, iif) : "";
        if (!wrong.empty()) {
            scene.differ(fmt::format("port {}: its control 67 names {}", port, wrong),
                         NOBODY_STORED);
        }
    }
    for (const auto &[id, vlan] : chip.vlans.all()) {
        const int iif = static_cast<int>(vlan.controls.ingress_if);
        const std::string wrong = iif != 0 ? wrong_with(scene, iif) : "";
        if (!wrong.empty()) {
            scene.differ(fmt::format("VLAN {}: its controls name {}", id, wrong), NOBODY_STORED);
        }
    }
    check_translations(scene);
}

void check_vlans(const Scene &scene)
{
    for (const auto &[id, vlan] : scene.chip().vlans.all()) {
        if (id == chip::DEFAULT_VLAN || scene.hardware.host.vlans.has(id) ||
            (vlan.controls.ingress_if != 0 && id != RTIFHAL_VLAN_ROUTED)) {
            continue;
        }
        chip::PortSet unused = vlan.members;
        unused.remove(chip::CPU_PORT);
        if (const auto users = scene.vlan_users.find(id); users != scene.vlan_users.end()) {
            for (const int port : users->second) {
                unused.remove(port);
            }
        }
        if (!unused.empty()) {
            scene.differ(fmt::format("VLAN {}: neither an interface nor the L2 side uses it on "
                                     "ports {}",
                                     id, unused.text()),
                         KILLED);
        }
    }
    for (const auto &[id, role] : scene.hardware.host.vlans.all()) {
        if (scene.chip().vlans.find(id) == nullptr) {
            scene.differ(
                fmt::format("VLAN {}: the forwarding manager knows it, the chip doesn't", id),
                KILLED);
        }
    }
}

void check_vlan_caches(const simswitch::Switch &hardware, CheckResult &result)
{
    for (const auto &[id, vlan] : hardware.chip.vlans.all()) {
        const bcm_vlan_control_vlan_t *cached = hardware.wrappers.kept_vlan_controls(id);
        if (cached == nullptr) {
            continue;
        }
        const struct {
            const char *what;
            std::uint32_t in_chip;
            std::uint32_t in_cache;
        } fields[] = {{"VRF", vlan.controls.vrf, cached->vc_vrf},
                      {"ingress object", vlan.controls.ingress_if, cached->vc_ingress_if},
                      {"flags", vlan.controls.flags & ~CHIP_ONLY, cached->vc_flags & ~CHIP_ONLY},
                      {"reverse-path mode", vlan.controls.urpf_mode, cached->vc_urpf_mode}};
        for (const auto &field : fields) {
            if (field.in_chip != field.in_cache) {
                result.differences.push_back(
                    {fmt::format("VLAN {}: {} {:#x} in the chip, {:#x} in the wrappers' cache", id,
                                 field.what, field.in_chip, field.in_cache),
                     "the process was killed before the write queue was written out"});
            }
        }
    }
}

void check_stations(const Scene &scene)
{
    check_twins(scene);
    for (const auto &[id, station] : scene.chip().stations.all()) {
        const std::string why = lost(scene, station);
        if (why.empty()) {
            continue;
        }
        const std::string what =
            fmt::format("station {} (MAC {}): {}", id, chip::text(station.mac), why);
        if (scene.has_parked) {
            scene.note(what + "; its interface may be one that was deleted with its number kept");
        } else {
            scene.differ(what, "its interface went, and the virtual MAC stayed: it was not removed "
                               "first, or after a restart the library didn't know it any more");
        }
    }
}

} // namespace lab::check
