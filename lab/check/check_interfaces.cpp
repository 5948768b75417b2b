/*
 * check_interfaces.cpp: stored interfaces against the chip, and the chip's
 * objects against the store. See check_parts.h.
 */
#include "check/check_parts.h"

#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"
#include "l3lif/restart_plans.h"
#include "services/ifindex.h"

#include <fmt/format.h>

#include <algorithm>

namespace lab::check
{

namespace
{

namespace chip = simswitch::chip;
namespace if_index = simswitch::if_index;
using simswitch::services::StoredInterface;

constexpr int DEFAULT_VRF = 1;
constexpr int DEFAULT_MTU = 1500;

constexpr const char *KILLED_ADD =
    "the process was killed in its add, what waited in the write queue was lost";
constexpr const char *KILLED_DELETE =
    "the process was killed in its delete, what waited in the write queue was lost";
constexpr const char *KILLED_CHANGE = "the process was killed while a property was changed";

struct Stored {
    const StoredInterface &record;
    const l3lif::RestoredInterface &restored;
    const std::string &name;
};

/**
 * A delete takes the record of the interface's own ifindex away. A subinterface
 * of a port-channel is stored under the port-channel's: its record stays.
 */
bool is_left_by_delete(const Scene &scene, const Stored &stored)
{
    const int iif = stored.restored.iif;
    return l3lif::is_channel_subinterface(stored.record) &&
           scene.chip().l3_interfaces.find(iif) == nullptr &&
           (scene.is_held_back(iif) || scene.chip().l3_ingresses.find(iif) != nullptr);
}

/** A port-channel whose ports have all left with its number kept has its objects yet. */
bool is_kept_channel(const Scene &scene, const Stored &stored)
{
    const l3lif::LifPlan &plan = stored.restored.interface->lif->plan();
    return plan.kind == config::Kind::port_channel && plan.trunk != 0 &&
           l3lif::ports_of_trunk(scene.chip(), plan.trunk).empty() &&
           scene.chip().l3_interfaces.find(stored.restored.iif) != nullptr;
}

/** The L3 interface as it was stored. */
void check_interface(const Scene &scene, const Stored &stored)
{
    const chip::L3Interface *interface = scene.chip().l3_interfaces.find(stored.restored.iif);
    if (interface == nullptr) {
        scene.differ(fmt::format("{}: stored under number {}, and the chip has no such L3 "
                                 "interface",
                                 stored.name, stored.restored.iif),
                     KILLED_ADD);
        return;
    }
    const StoredInterface &record = stored.record;
    const int vlan = record.si_encap_vlan != 0 ? record.si_encap_vlan : record.int_vlan;
    const int vrf = record.properties ? record.properties->vrf : 0;
    const int mtu = record.properties ? record.properties->mtu : 0;
    const struct {
        const char *what;
        int in_chip;
        int in_store;
    } fields[] = {{"VLAN", interface->vlan, vlan},
                  {"VRF", interface->vrf, vrf != 0 ? vrf : DEFAULT_VRF},
                  {"MTU", interface->mtu, mtu != 0 ? mtu : DEFAULT_MTU}};
    for (const auto &field : fields) {
        if (field.in_chip != field.in_store) {
            scene.differ(fmt::format("{}: its L3 interface {} has {} {} in the chip, {} in the "
                                     "store",
                                     stored.name, stored.restored.iif, field.what, field.in_chip,
                                     field.in_store),
                         KILLED_CHANGE);
        }
    }
}

/** Whether all of it is there, and under its own number. */
void check_tie(const Scene &scene, const Stored &stored)
{
    const auto view = l3lif::read_back(scene.hardware, *stored.restored.interface->lif);
    if (view.iif != 0 && view.iif != stored.restored.iif) {
        scene.differ(fmt::format("{}: stored under number {}, and the chip counts its frames to "
                                 "ingress object {}",
                                 stored.name, stored.restored.iif, view.iif),
                     "it was added again after a restart that didn't bring it back, or its record "
                     "is an older one");
    } else if (!view.missing.empty()) {
        scene.differ(fmt::format("{}: {}", stored.name, view.missing), KILLED_ADD);
    } else if (scene.chip().l3_ingresses.find(stored.restored.iif) == nullptr) {
        scene.differ(fmt::format("{}: the chip has no L3 ingress object {}", stored.name,
                                 stored.restored.iif),
                     KILLED_ADD);
    }
}

void check_members(const Scene &scene, const Stored &stored)
{
    const l3lif::LifPlan &plan = stored.restored.interface->lif->plan();
    if (plan.trunk == 0 &&
        if_index::parts(stored.record.ifindex)->kind == if_index::Kind::port_channel) {
        scene.differ(fmt::format("{}: the trunk map doesn't know its port-channel", stored.name),
                     "the map of port-channels was lost, or written by another platform");
        return;
    }
    const auto ports = l3lif::ports_of_trunk(scene.chip(), plan.trunk);
    for (const std::uint32_t member :
         stored.record.members.value_or(std::vector<std::uint32_t>{})) {
        const auto parts = if_index::parts(member);
        const int port = parts ? static_cast<int>(parts->number) + 1 : 0;
        if (std::ranges::find(ports, port) == ports.end()) {
            scene.differ(fmt::format("{}: stored with port {}, which is not in trunk {}",
                                     stored.name, port, plan.trunk),
                         "the process was killed while the port joined or left; or the port left "
                         "since, and the record is that of the first member");
        }
    }
}

} // namespace

void check_stored(const Scene &scene)
{
    auto next = scene.restored.interfaces.begin();
    for (const auto &record : scene.stored) {
        // They come in the store's order; one that isn't there was restored from another record.
        if (next == scene.restored.interfaces.end() || next->ifindex != record.ifindex) {
            scene.note(fmt::format("{}: stored under its own ifindex too, by a label that it was "
                                   "given; a restore leaves that record alone",
                                   if_index::name(record.ifindex)));
            continue;
        }
        const l3lif::RestoredInterface &restored = *next++;
        const Stored stored{record, restored, restored.interface->lif->plan().name};
        if (!if_index::parts(stored.record.ifindex)) {
            scene.differ(
                fmt::format("a record under ifindex {:#x}, which is none", stored.record.ifindex),
                "the store was written by another platform");
        } else if (!stored.record.hardware) {
            scene.differ(fmt::format("{}: stored without a hardware record", stored.name),
                         "the process was out of memory in its add");
        } else if (restored.iif == 0) {
            scene.note(
                fmt::format("{}: stored while it was deleted with its number kept", stored.name));
        } else if (is_left_by_delete(scene, stored)) {
            scene.note(fmt::format("{}: deleted, and its record stays, as it stands under its "
                                   "port-channel's ifindex; a restore takes its number {}",
                                   stored.name, restored.iif));
        } else if (is_kept_channel(scene, stored)) {
            scene.note(
                fmt::format("{}: has no member, its objects wait for the first one", stored.name));
        } else {
            const std::size_t before = scene.result.differences.size();
            check_interface(scene, stored);
            if (scene.result.differences.size() == before) {
                check_tie(scene, stored);
            }
            check_members(scene, stored);
        }
    }
}

void check_numbers(const Scene &scene)
{
    for (const auto &restored : scene.restored.interfaces) {
        const std::string &name = restored.interface->lif->plan().name;
        if (restored.iif == 0) {
            continue;
        }
        const std::string &owner = scene.owners.at(restored.iif);
        if (owner != name) {
            scene.differ(
                fmt::format("{} and {} are both stored under number {}", owner, name, restored.iif),
                "the number was handed out twice: the process started without a restore, "
                "or the first one wasn't stored then");
        }
        if (!restored.iif_taken) {
            scene.differ(fmt::format("{}: a restore leaves its number {} free", name, restored.iif),
                         "the number is out of range: the record isn't this chip's");
        }
        if (scene.is_held_back(restored.iif) &&
            scene.chip().l3_interfaces.find(restored.iif) != nullptr) {
            scene.differ(fmt::format("{}: the stored configuration holds its number {} back", name,
                                     restored.iif),
                         "the process was killed in its delete, between the two writes to the "
                         "store; or a restore gave it back, and nothing was deleted since");
        }
    }
}

void check_objects(const Scene &scene)
{
    const chip::Chip &chip = scene.chip();
    for (const auto &[iif, interface] : chip.l3_interfaces.all()) {
        if (scene.is_owned(iif)) {
            continue;
        }
        const bool held_back = scene.is_held_back(iif);
        if (scene.has_kept_channel && !held_back && !scene.tied.contains(iif) &&
            interface.vlan == RTIFHAL_VLAN_ROUTED) {
            scene.note(fmt::format("L3 interface {} is tied to nothing; it may be that of a "
                                   "port-channel without members, whose record that of a "
                                   "subinterface has replaced",
                                   iif));
            continue;
        }
        scene.differ(
            fmt::format(
                "L3 interface {} (VLAN {}, VRF {}) is in the chip{}, and no record is stored", iif,
                interface.vlan, interface.vrf, held_back ? ", its number is held back" : ""),
            held_back ? KILLED_DELETE
                      : "its store failed at its add, or the process was killed between the two; "
                        "the number will be handed out again, and the chip refuse it");
    }
    std::vector<int> parked;
    for (const auto &[iif, ingress] : chip.l3_ingresses.all()) {
        if (chip.l3_interfaces.find(iif) != nullptr || scene.is_owned(iif)) {
            continue;
        }
        if (scene.tied.contains(iif)) {
            scene.differ(fmt::format("ingress object {} has frames, and no L3 interface", iif),
                         KILLED_DELETE);
        } else if (scene.is_held_back(iif)) {
            scene.differ(
                fmt::format("ingress object {} is in the chip, its number is held back", iif),
                KILLED_DELETE);
        } else {
            parked.push_back(iif);
        }
    }
    if (!parked.empty()) {
        scene.note(fmt::format("ingress objects without an L3 interface, as an interface leaves "
                               "them that was deleted with its number kept: {}",
                               parked.size()));
    }
}

} // namespace lab::check
