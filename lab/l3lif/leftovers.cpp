/*
 * leftovers.cpp: see leftovers.h.
 */
#include "l3lif/leftovers.h"

#include "l3lif/interface_numbers.h"
#include "rtifhal_trident.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace lab::l3lif
{

namespace
{

namespace chip = simswitch::chip;

/** Numbers that an interface has: neither free, nor held back, nor reserved at the top. */
std::set<int> iifs_in_use()
{
    std::set<int> used;
    if (l3lif_l3iif_table_inited == 0) {
        return used;
    }
    int last = chip::LAST_IIF;
    while (last >= FIRST_IIF && is_set(l3lif_l3iif_table, last)) {
        --last;
    }
    for (int iif = FIRST_IIF; iif < last; ++iif) {
        if (is_set(l3lif_l3iif_table, iif) && !is_set(l3lif_l3iif_table_preserve, iif)) {
            used.insert(iif);
        }
    }
    return used;
}

int count_held_back()
{
    int count = 0;
    for (int iif = FIRST_IIF; iif <= chip::LAST_IIF; ++iif) {
        count += is_set(l3lif_l3iif_table_preserve, iif) ? 1 : 0;
    }
    return count;
}

/** The objects of a snapshot without what they hold: "VLAN 4094". */
std::set<std::string_view> objects_of(const chip::Snapshot &snapshot)
{
    std::set<std::string_view> objects;
    for (const std::string_view line : snapshot) {
        objects.insert(line.substr(0, line.find(':')));
    }
    return objects;
}

/** Whether an object may be new, gone or other than before by design. */
class Designed
{
public:
    Designed(const chip::Chip &chip, const chip::Snapshot &before, const chip::Snapshot &now)
        : before_(objects_of(before)), now_(objects_of(now))
    {
        if (const chip::Vlan *routed = chip.vlans.find(RTIFHAL_VLAN_ROUTED)) {
            group_of_routed_ = fmt::format("STG {}", routed->stg);
        }
        for (const auto &[id, trunk] : chip.trunks.all()) {
            if (trunk.members.empty()) {
                empty_trunks_.insert(fmt::format("trunk {}", id));
            }
        }
    }

    bool operator()(std::string_view change) const
    {
        const std::string_view line = change.substr(2); // behind "+ " or "- "
        const std::string_view object = line.substr(0, line.find(':'));
        if (object == ROUTED || object == group_of_routed_ || object.starts_with("port ") ||
            object.starts_with("switch control ") || empty_trunks_.contains(object)) {
            return true;
        }
        const bool changes_in_place =
            object.starts_with("STG ") || object.starts_with("field entry ");
        return changes_in_place && before_.contains(object) && now_.contains(object);
    }

private:
    static constexpr std::string_view ROUTED = "VLAN 4094";

    std::set<std::string_view> before_;
    std::set<std::string_view> now_;
    std::string group_of_routed_;
    std::set<std::string, std::less<>> empty_trunks_;
};

/** What of a designed object must be back all the same: members and ties. */
void check_ports(const simswitch::Switch &hardware, std::vector<std::string> &left)
{
    const chip::Vlan *routed = hardware.chip.vlans.find(RTIFHAL_VLAN_ROUTED);
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        const int iif = hardware.chip.ports.control(port, chip::PORT_CONTROL_INGRESS);
        if (iif != 0) {
            left.push_back(fmt::format("port {}: tied to ingress object {}", port, iif));
        }
        if (routed != nullptr && routed->members.has(port)) {
            left.push_back(fmt::format("port {}: still in VLAN {}", port, RTIFHAL_VLAN_ROUTED));
        }
        const auto &vlans = rtifhal_port_vlan[port].vlan_bitmap;
        if (std::any_of(std::begin(vlans), std::end(vlans),
                        [](std::uint8_t b) { return b != 0; })) {
            left.push_back(fmt::format("port {}: the library counts it as routed", port));
        }
    }
}

/** Ports that hang on a VLAN which isn't there any more. */
void check_untagged(const chip::Chip &chip, std::vector<std::string> &left)
{
    for (int port = chip::FIRST_FRONT_PORT; port <= chip::LAST_FRONT_PORT; ++port) {
        const int untagged = chip.ports.get(port).untagged_vlan;
        if (chip.vlans.find(untagged) == nullptr) {
            left.push_back(fmt::format("port {}: untagged frames are in VLAN {}, which is gone",
                                       port, untagged));
        }
    }
}

/** What the library and the wrappers still hold of VLANs: uses, and ties to interfaces. */
void check_vlans(simswitch::Switch &hardware, std::vector<std::string> &left)
{
    for (int vlan = 1; vlan <= chip::LAST_VLAN; ++vlan) {
        const auto &uses = rtifhal_vlan_type_count[vlan];
        if (uses.subint_count != 0 || uses.svi != 0 || uses.l2_vlan != 0) {
            left.push_back(fmt::format("VLAN {}: the library counts uses of it: {} ports, {} SVI, "
                                       "{} L2",
                                       vlan, uses.subint_count, uses.svi, uses.l2_vlan));
        }
        const bcm_vlan_control_vlan_t *controls = hardware.wrappers.vlan_controls(vlan);
        if (controls != nullptr && controls->vc_ingress_if != 0) {
            left.push_back(fmt::format("VLAN {}: its cached controls name ingress object {}", vlan,
                                       controls->vc_ingress_if));
        }
    }
}

/** The virtual MACs that the library keeps, in words. */
std::set<std::string> virtual_macs()
{
    std::set<std::string> kept;
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto &entry = *static_cast<const fhrp_mac_entry_t *>(record);
        kept.insert(fmt::format("virtual MAC {:02x} of interface {:#x} in VLAN {}",
                                fmt::join(entry.mac, ":"), entry.ifindex, entry.vlan));
    }
    return kept;
}

template <class Number>
void list_new(std::string_view text, const std::set<Number> &before, const std::set<Number> &now,
              std::vector<std::string> &left)
{
    for (const Number &number : now) {
        if (!before.contains(number)) {
            left.push_back(fmt::format(fmt::runtime(text), number));
        }
    }
}

} // namespace

Moment look(simswitch::Switch &hardware)
{
    Moment moment{chip::snapshot(hardware.chip), iifs_in_use(), {}, virtual_macs(), {}};
    for (const auto &[vlan, role] : hardware.host.vlans.all()) {
        moment.vlan_records.insert(vlan);
    }
    for (const auto &interface : hardware.store.stored_interfaces()) {
        moment.stored.insert(interface.ifindex);
    }
    return moment;
}

std::vector<std::string> left_behind(const Moment &before, simswitch::Switch &hardware)
{
    const Moment now = look(hardware);
    std::vector<std::string> left = chip::changes(before.chip, now.chip);
    std::erase_if(left, Designed(hardware.chip, before.chip, now.chip));
    check_ports(hardware, left);
    check_untagged(hardware.chip, left);
    check_vlans(hardware, left);
    list_new("interface number {}: neither free nor held back", before.iifs, now.iifs, left);
    list_new("stored interface {:#x}", before.stored, now.stored, left);
    list_new("{}: the library keeps it", before.virtual_macs, now.virtual_macs, left);
    list_new("VLAN {}: the forwarding manager's record", before.vlan_records, now.vlan_records,
             left);
    return left;
}

std::string stays_by_design(const Moment &before, const simswitch::Switch &hardware)
{
    std::vector<std::string> parts;
    if (const int held_back = count_held_back(); held_back != 0) {
        parts.push_back(fmt::format("interface numbers held back: {}", held_back));
    }
    if (const chip::Vlan *routed = hardware.chip.vlans.find(RTIFHAL_VLAN_ROUTED)) {
        parts.push_back(
            fmt::format("VLAN {} and spanning tree group {}", RTIFHAL_VLAN_ROUTED, routed->stg));
    }
    const auto changes = chip::changes(before.chip, chip::snapshot(hardware.chip));
    const auto count = [&changes](std::string_view start) {
        return std::count_if(changes.begin(), changes.end(), [start](std::string_view change) {
            return change.starts_with("+ ") && change.substr(2).starts_with(start);
        });
    };
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 4> OBJECTS = {{
        {"trunk ", "trunks without members"},
        {"switch control ", "switch controls set"},
        {"port ", "ports with settings"},
        {"field entry ", "flood lists without the ports"},
    }};
    for (const auto &[start, words] : OBJECTS) {
        if (const auto number = count(start); number != 0) {
            parts.push_back(fmt::format("{}: {}", words, number));
        }
    }
    return parts.empty() ? "nothing" : fmt::format("{}", fmt::join(parts, "; "));
}

} // namespace lab::l3lif
