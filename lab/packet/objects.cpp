/*
 * objects.cpp: see objects.h.
 */
#include "packet/objects.h"

#include "config/address.h"
#include "config/names.h"
#include "packet/owners.h"

#include "chip/pipeline/numbers.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <utility>

namespace lab::packet
{

namespace chip = simswitch::chip;

namespace
{

constexpr std::size_t MEMBERS_SHOWN = 4;

std::string ingress_text(const Names &names, int iif)
{
    const chip::L3Ingress *object = names.chip().l3_ingresses.find(iif);
    if (object == nullptr) {
        return "";
    }
    std::string text = fmt::format("{}, VRF {}", names.interface(iif), names.vrf(object->vrf));
    if (object->urpf_mode != chip::pipeline::REVERSE_PATH_OFF) {
        text += object->urpf_mode == chip::pipeline::REVERSE_PATH_LOOSE ? ", reverse path loose"
                                                                        : ", reverse path strict";
    }
    for (const auto &[flag, what] : {std::pair{chip::pipeline::INGRESS_IP4_OFF, ", IPv4 off"},
                                     {chip::pipeline::INGRESS_IP6_OFF, ", IPv6 off"}}) {
        text += (object->flags & flag) != 0 ? what : "";
    }
    return text;
}

std::string station_text(const Names &names, int id)
{
    const chip::Station *station = names.chip().stations.find(id);
    if (station == nullptr) {
        return "";
    }
    std::vector<const char *> families;
    for (const auto &[flag, name] : {std::pair{chip::pipeline::STATION_IP4, "IPv4"},
                                     {chip::pipeline::STATION_IP6, "IPv6"},
                                     {chip::pipeline::STATION_ARP, "ARP"}}) {
        if ((station->flags & flag) != 0) {
            families.push_back(name);
        }
    }
    std::string text = StationOwners(names.state()).of(id).text();
    text += (text.empty() ? "" : " ") + chip::text(station->mac);
    text += station->vlan_mask == 0 ? "" : fmt::format(" in VLAN {}", station->vlan);
    text += station->src_port_mask == 0
                ? ""
                : fmt::format(" from {}", names.port_and_number(station->src_port));
    return families.empty() ? text + ", takes neither IPv4 nor IPv6"
                            : fmt::format("{}, takes {}", text, fmt::join(families, " "));
}

std::string next_hop_of(const Names &names, const chip::Route &route)
{
    if (!route.multipath) {
        const std::string where = next_hop_text(names, route.next_hop);
        return fmt::format("egress {}{}", route.next_hop,
                           where.empty() ? "" : fmt::format(", {}", where));
    }
    const chip::MultipathGroup *group = names.chip().multipath_groups.find(route.next_hop);
    return group == nullptr
               ? fmt::format("group {}", route.next_hop)
               : fmt::format("group {} of {} paths", route.next_hop, group->members.size());
}

std::string group_text(const Names &names, int id)
{
    const chip::MultipathGroup *group = names.chip().multipath_groups.find(id);
    std::vector<std::string> members;
    for (const int egress : group != nullptr ? group->members : std::vector<int>{}) {
        const std::string where = next_hop_text(names, egress);
        members.push_back(where.empty() ? fmt::format("egress {}", egress) : where);
    }
    return first_of(members, MEMBERS_SHOWN);
}

std::string egress_text(const Names &names, int id)
{
    const chip::Egress *egress = names.chip().egresses.find(id);
    if (egress == nullptr) {
        return "";
    }
    std::string where = next_hop_text(names, id);
    if (leads_to_cpu(*egress) || where == BLACK_HOLE) {
        return where;
    }
    return fmt::format("{}, MAC {}, interface {} ({}){}", where, chip::text(egress->mac),
                       egress->interface, names.interface(egress->interface),
                       egress->vlan == 0 ? "" : fmt::format(", VLAN {}", egress->vlan));
}

std::string l3_interface_text(const Names &names, int id)
{
    const chip::L3Interface *object = names.chip().l3_interfaces.find(id);
    if (object == nullptr) {
        return "";
    }
    std::string text = fmt::format("{}: MAC {}, VLAN {}, MTU {}", names.interface(id),
                                   chip::text(object->mac), object->vlan, object->mtu);
    text += object->ttl == 0 ? "" : fmt::format(", lowest TTL {}", object->ttl);
    text += object->tunnel == 0 ? "" : fmt::format(", tunnel initiator {}", object->tunnel);
    return text;
}

std::string trunk_text(const Names &names, int id)
{
    const chip::Trunk *trunk = names.chip().trunks.find(id);
    if (trunk == nullptr) {
        return "";
    }
    std::vector<std::string> members;
    for (const chip::TrunkMember &member : trunk->members) {
        members.push_back(names.gport(member.gport));
    }
    return fmt::format("{}: {}", names.trunk(id),
                       members.empty() ? "no member" : first_of(members, MEMBERS_SHOWN));
}

} // namespace

int number_of(const std::string &id)
{
    return static_cast<int>(config::parse_number(id).value_or(0));
}

bool leads_to_cpu(const chip::Egress &egress)
{
    return egress.trunk == 0 &&
           (egress.port == chip::CPU_PORT || egress.port == chip::module_port(0, chip::CPU_PORT));
}

std::string way_out(const Names &names, const chip::Egress &egress)
{
    if (leads_to_cpu(egress)) {
        return names.port(chip::CPU_PORT);
    }
    if (egress.trunk != 0) {
        return names.trunk(egress.trunk);
    }
    return egress.port <= chip::LAST_PORT ? names.port(egress.port) : names.gport(egress.port);
}

std::string next_hop_text(const Names &names, int egress)
{
    const chip::Egress *object = names.chip().egresses.find(egress);
    if (object == nullptr) {
        return "";
    }
    const std::string out = way_out(names, *object);
    std::string host = names.state().routing.next_hop_text(egress);
    if (host == BLACK_HOLE) {
        return host;
    }
    return host.empty() || host == "CPU" ? out : fmt::format("{} on {}", host, out);
}

const chip::Route *find_route(const chip::Chip &chip, const std::string &id)
{
    const auto &all = chip.routes.all();
    const auto found = std::find_if(
        all.begin(), all.end(), [&id](const auto &known) { return chip::text(known.first) == id; });
    return found == all.end() ? nullptr : &found->second;
}

std::string object_text(const Names &names, std::string_view table, const std::string &id)
{
    using Describe = std::string (*)(const Names &, int);
    constexpr std::array<std::pair<std::string_view, Describe>, 6> TABLES = {{
        {"l3_ingress", ingress_text},
        {"station", station_text},
        {"multipath_group", group_text},
        {"egress", egress_text},
        {"l3_interface", l3_interface_text},
        {"trunk", trunk_text},
    }};
    for (const auto &[name, of_table] : TABLES) {
        if (name == table) {
            return of_table(names, number_of(id));
        }
    }
    if (table == "route") {
        const chip::Route *route = find_route(names.chip(), id);
        return route == nullptr ? "" : next_hop_of(names, *route);
    }
    return "";
}

const chip::TranslationKey *find_translation(const chip::Chip &chip, const std::string &id)
{
    const auto &all = chip.vlan_translations.all();
    const auto found = std::find_if(
        all.begin(), all.end(), [&id](const auto &known) { return chip::text(known.first) == id; });
    return found == all.end() ? nullptr : &found->first;
}

std::string key_text(const Names &names, const chip::TranslationKey &key)
{
    return fmt::format(
        "{} VLAN {}{}", names.gport(key.gport), key.outer_vlan,
        key.inner_vlan == chip::ANY_INNER_VLAN ? "" : fmt::format(" inner {}", key.inner_vlan));
}

} // namespace lab::packet
