/*
 * routing_tables.cpp: the chip's routes, and the hosts that are known.
 */
#include "session/tables.h"

#include "config/address.h"
#include "routing/routing.h"

#include "chip/chip.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstddef>
#include <string>
#include <vector>

namespace lab::session
{

namespace
{

namespace chip = simswitch::chip;

/** What an egress object is for; one that others wrote goes by its MAC. */
std::string next_hop_text(const Scene &scene, int id)
{
    const std::string text =
        scene.routing == nullptr ? std::string() : scene.routing->next_hop_text(id);
    const chip::Egress *egress = scene.hardware.chip.egresses.find(id);
    return text.empty() && egress != nullptr ? chip::text(egress->mac) : text;
}

/** The egress objects that a route leads to. */
std::vector<int> egresses_of(const chip::Chip &chip, const chip::Route &route)
{
    if (!route.multipath) {
        return {route.next_hop};
    }
    const chip::MultipathGroup *group = chip.multipath_groups.find(route.next_hop);
    return group == nullptr ? std::vector<int>() : group->members;
}

void add_unless_there(std::vector<std::string> &words, std::string word)
{
    if (!word.empty() && (words.empty() || words.back() != word)) {
        words.push_back(std::move(word));
    }
}

} // namespace

Table route_table(const Scene &scene)
{
    Table table{"routes",
                "route",
                {{"VRF", true}, {"PREFIX"}, {"NEXT-HOP", true}, {"INTERFACE"}, {"TO"}, {"FLAGS"}},
                {},
                {}};
    const chip::Chip &chip = scene.hardware.chip;
    for (const auto &[key, route] : chip.routes.all()) {
        // "vrf 1 0.0.0.0/0"
        const std::string text = chip::text(key);
        const std::string prefix = text.substr(text.rfind(' ') + 1);
        std::vector<std::string> interfaces;
        std::vector<std::string> hosts;
        for (const int id : egresses_of(chip, route)) {
            const chip::Egress *egress = chip.egresses.find(id);
            add_unless_there(interfaces,
                             egress == nullptr ? "" : Scene::name(scene.iifs, egress->interface));
            add_unless_there(hosts, next_hop_text(scene, id));
        }
        table.rows.push_back({{prefix},
                              {fmt::to_string(key.vrf), prefix, fmt::to_string(route.next_hop),
                               fmt::format("{}", fmt::join(interfaces, ",")),
                               fmt::format("{}", fmt::join(hosts, ",")), hex(route.flags)}});
    }
    return table;
}

Table neighbor_table(const Scene &scene)
{
    Table table{"neighbors",
                "neighbor",
                {{"ADDRESS"}, {"INTERFACE"}, {"MAC"}, {"PORT"}, {"VLAN", true}, {"EGRESS", true}},
                {},
                scene.interface_names()};
    if (scene.routing == nullptr) {
        return table;
    }
    for (const routing::Neighbor &neighbor : scene.routing->neighbors()) {
        const int egress = scene.routing->egress_of(neighbor);
        const chip::Egress *object = scene.hardware.chip.egresses.find(egress);
        Row row{{neighbor.address.text()},
                {neighbor.address.text(), neighbor.interface, config::mac_text(neighbor.mac),
                 scene.routing->port_of(neighbor),
                 unless_zero(object == nullptr ? 0 : object->vlan), unless_zero(egress)}};
        table.add(std::move(row), neighbor.interface);
    }
    return table;
}

} // namespace lab::session
