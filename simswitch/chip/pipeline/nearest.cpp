/*
 * nearest.cpp: the entry that a frame missed by least, in words.
 */
#include "chip/pipeline/nearest.h"

#include "chip/pipeline/route_index.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/ranges.h>

namespace simswitch::chip::pipeline
{

namespace
{

bool mac_matches(const Station &station, const Mac &mac)
{
    for (std::size_t i = 0; i < mac.size(); ++i) {
        if (((mac.at(i) ^ station.mac.at(i)) & station.mac_mask.at(i)) != 0) {
            return false;
        }
    }
    return true;
}

std::string differences(bool mac, bool vlan, bool port)
{
    std::vector<const char *> names;
    for (const auto &[same, name] : {std::pair(mac, "MAC"), {vlan, "VLAN"}, {port, "port"}}) {
        if (!same) {
            names.push_back(name);
        }
    }
    return fmt::format("{}", fmt::join(names, " and "));
}

} // namespace

std::string vlans_of_port(const Chip &chip, int port)
{
    const std::vector<int> vlans = chip.vlans.of_port(port);
    if (vlans.empty()) {
        return fmt::format("port {} is in no VLAN", port);
    }
    return fmt::format("port {} is in VLAN{} {}", port, vlans.size() == 1 ? "" : "s",
                       fmt::join(vlans, ", "));
}

std::string nearest_translation(const Chip &chip, int port, int trunk, int vlan)
{
    constexpr int OTHER_PORT = 2 * LAST_VLAN; // a wrong port is worse than any wrong VLAN
    const TranslationKey *best = nullptr;
    int best_distance = 2 * OTHER_PORT;
    for (const auto &[key, action] : chip.vlan_translations.all()) {
        const bool own =
            key.gport == module_port(0, port) || (trunk >= 0 && key.gport == trunk_gport(trunk));
        const int distance = std::abs(key.outer_vlan - vlan) + (own ? 0 : OTHER_PORT);
        if (distance < best_distance && (own || key.outer_vlan == vlan)) {
            best = &key;
            best_distance = distance;
        }
    }
    return best == nullptr ? "" : fmt::format("translation {}", text(*best));
}

std::string nearest_station(const Stations &stations, const Mac &mac, int vlan, int port)
{
    int best_score = 0;
    std::string best;
    for (const auto &[id, station] : stations.all()) {
        const bool same_mac = mac_matches(station, mac);
        const bool same_vlan = ((vlan ^ station.vlan) & station.vlan_mask) == 0;
        const bool same_port = ((port ^ station.src_port) & station.src_port_mask) == 0;
        const int score = (same_mac ? 4 : 0) + (same_vlan ? 2 : 0) + (same_port ? 1 : 0);
        if (score > best_score) {
            best_score = score;
            best = fmt::format("station {} ({}), another {}", id, text(station),
                               differences(same_mac, same_vlan, same_port));
        }
    }
    return best;
}

std::string nearest_route(const Routes &routes, int vrf, bool ip6, const Address &address)
{
    int best_score = -1;
    std::string best;
    for (const auto &[key, route] : routes.all()) {
        const int length = prefix_length(key);
        if (key.ip6 != ip6 || length < 0) {
            continue;
        }
        const int common = std::min(common_bits(ip6, key.net, address), length);
        // A match in another VRF comes nearer than a prefix that doesn't match.
        const bool matches = common == length;
        const int score = key.vrf == vrf ? common : matches ? 200 + length : -1;
        if (score > best_score) {
            best_score = score;
            best = fmt::format("route {} ({}){}", text(key), text(route),
                               key.vrf == vrf ? "" : ", in another VRF");
        }
    }
    return best;
}

std::string nearest_rule(const InPorts &in_ports, int id, int port)
{
    if (in_ports.data.has(port) && !in_ports.mask.has(port)) {
        return fmt::format("field entry {}: port {} is among its in-ports, but not in their mask",
                           id, port);
    }
    return "";
}

} // namespace simswitch::chip::pipeline
