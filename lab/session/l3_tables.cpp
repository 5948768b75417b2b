/*
 * l3_tables.cpp: interfaces, their numbers, ingress objects, next hops, VXLAN ports.
 */
#include "session/tables.h"

#include "config/address.h"
#include "l3lif/interface_numbers.h"

#include "rtifhal_data.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstddef>

namespace lab::session
{

namespace
{

namespace chip = simswitch::chip;
using l3lif::FIRST_IIF;
using l3lif::is_set;

/** The highest number below those that are reserved at the top. */
int last_iif()
{
    int last = chip::LAST_IIF;
    while (last >= FIRST_IIF && is_set(l3lif_l3iif_table, last) &&
           !is_set(l3lif_l3iif_table_preserve, last)) {
        --last;
    }
    return last;
}

/** What becomes of a number: an object of the chip, parked, held back; empty for a free one. */
std::string_view iif_state(const chip::Chip &chip, int iif, int last)
{
    if (chip.l3_interfaces.find(iif) != nullptr) {
        return "programmed";
    }
    if (l3lif_l3iif_table_inited == 0 || iif < FIRST_IIF || iif > last) {
        return "";
    }
    if (is_set(l3lif_l3iif_table_preserve, iif)) {
        return "held back";
    }
    return is_set(l3lif_l3iif_table, iif) ? "kept" : "";
}

/** The port of an egress object; empty for one that has none. */
std::string port_of(const Scene &scene, int port)
{
    if (port < 0) {
        return "";
    }
    return port > chip::LAST_PORT ? scene.gport_text(port) : scene.port_text(port);
}

std::string joined(const std::vector<std::string_view> &words)
{
    return fmt::format("{}", fmt::join(words, " "));
}

} // namespace

Table interface_table(const Scene &scene)
{
    Table table{"interfaces",
                "interface",
                {{"INTERFACE"},
                 {"KIND"},
                 {"STATE"},
                 {"IIF", true},
                 {"VLAN", true},
                 {"VRF", true},
                 {"MTU", true},
                 {"FAMILIES"},
                 {"PORTS"}},
                {},
                scene.interface_names()};
    for (const SceneInterface &interface : scene.interfaces) {
        const l3lif::HardwareView &view = interface.view;
        const auto if_there = [&view](int value) {
            return view.has_interface ? fmt::to_string(value) : std::string();
        };
        table.rows.push_back(
            {{interface.name},
             {interface.name, std::string(interface.kind), std::string(interface.state),
              unless_zero(view.iif), if_there(view.vlan), if_there(view.vrf), if_there(view.mtu),
              joined(view.families()), number_list(view.ports)}});
    }
    return table;
}

Table iif_table(const Scene &scene)
{
    Table table{"numbers of interfaces",
                "iif",
                {{"IIF", true},
                 {"INTERFACE"},
                 {"STATE"},
                 {"MAC"},
                 {"VLAN", true},
                 {"VRF", true},
                 {"MTU", true},
                 {"TUNNEL", true}},
                {},
                scene.interface_names()};
    const chip::Chip &chip = scene.hardware.chip;
    const int last = last_iif();
    for (int iif = 0; iif <= chip::LAST_IIF; ++iif) {
        const std::string_view state = iif_state(chip, iif, last);
        if (state.empty()) {
            continue;
        }
        const std::string name = Scene::name(scene.iifs, iif);
        Row row{{fmt::to_string(iif)}, {fmt::to_string(iif), name, std::string(state)}};
        if (!name.empty()) {
            row.keys.push_back(name);
        }
        if (const chip::L3Interface *found = chip.l3_interfaces.find(iif)) {
            row.cells.insert(row.cells.end(),
                             {chip::text(found->mac), fmt::to_string(found->vlan),
                              fmt::to_string(found->vrf), fmt::to_string(found->mtu),
                              unless_zero(found->tunnel)});
        }
        row.cells.resize(table.columns.size());
        table.rows.push_back(std::move(row));
    }
    return table;
}

Table ingress_table(const Scene &scene)
{
    Table table{"ingress objects",
                "ingress",
                {{"IIF", true},
                 {"INTERFACE"},
                 {"FLAGS"},
                 {"VRF", true},
                 {"URPF", true},
                 {"CLASS", true},
                 {"IPMC", true},
                 {"QOS", true}},
                {},
                scene.interface_names()};
    for (const auto &[iif, object] : scene.hardware.chip.l3_ingresses.all()) {
        const std::string name = Scene::name(scene.iifs, iif);
        Row row{{fmt::to_string(iif)},
                {fmt::to_string(iif), name, hex(object.flags), fmt::to_string(object.vrf),
                 fmt::to_string(object.urpf_mode), fmt::to_string(object.intf_class),
                 fmt::to_string(object.ipmc_intf), fmt::to_string(object.qos_map)}};
        table.add(std::move(row), name);
    }
    return table;
}

Table egress_table(const Scene &scene)
{
    Table table{"egress objects",
                "egress",
                {{"EGRESS", true},
                 {"IIF", true},
                 {"INTERFACE"},
                 {"MAC"},
                 {"VLAN", true},
                 {"PORT"},
                 {"TRUNK"},
                 {"FLAGS"}},
                {},
                scene.interface_names()};
    for (const auto &[id, object] : scene.hardware.chip.egresses.all()) {
        const std::string name = Scene::name(scene.iifs, object.interface);
        Row row{{fmt::to_string(id)},
                {fmt::to_string(id), fmt::to_string(object.interface), name, chip::text(object.mac),
                 fmt::to_string(object.vlan), port_of(scene, object.port),
                 Scene::name(scene.trunks, object.trunk), hex(object.flags)}};
        table.add(std::move(row), name);
    }
    return table;
}

Table vxlan_table(const Scene &scene)
{
    Table table{"VXLAN ports",
                "vxlan",
                {{"ID", true},
                 {"VPN", true},
                 {"VNI", true},
                 {"PORT"},
                 {"VLAN", true},
                 {"INTERFACE"},
                 {"EGRESS"},
                 {"MC"},
                 {"CRITERIA", true},
                 {"FLAGS"},
                 {"IIF", true, false},
                 {"IFINDEX", false, false}},
                {},
                scene.interface_names()};
    for (const auto &[id, port] : scene.hardware.chip.vxlan_ports.all()) {
        const auto owner = scene.ifindexes.find(port.if_index);
        const int egress = static_cast<int>(port.egress_if);
        Row row{{fmt::to_string(id)},
                {fmt::to_string(id), fmt::to_string(port.vpn), fmt::to_string(port.vn_id),
                 scene.port_text(static_cast<int>(port.match_port)),
                 fmt::to_string(port.match_vlan),
                 owner == scene.ifindexes.end() ? "" : owner->second, scene.iif_text(egress),
                 hex(port.mc_index), fmt::to_string(port.criteria), hex(port.flags),
                 fmt::to_string(port.egress_if), hex(port.if_index)}};
        if (owner != scene.ifindexes.end()) {
            row.keys.push_back(owner->second);
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

} // namespace lab::session
