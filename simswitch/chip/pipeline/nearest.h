/*
 * nearest.h: of the entries that a frame missed, the one that it missed by
 * least, in words. Only traces ask: each of these walks a whole table.
 */
#pragma once

#include "chip/chip.h"
#include "chip/pipeline/frame.h"

#include <fmt/format.h>

namespace simswitch::chip::pipeline
{

/** The VLANs that a port is in: "port 5 is in VLANs 1, 100". */
std::string vlans_of_port(const Chip &chip, int port);

/**
 * The translation of the port or its trunk with the nearest VLAN, else the one
 * of another generic port with this VLAN.
 *
 * @param trunk  the port's trunk, -1 for none
 */
std::string nearest_translation(const Chip &chip, int port, int trunk, int vlan);

/** The station that most of MAC, VLAN and port match, the MAC counting most. */
std::string nearest_station(const Stations &stations, const Mac &mac, int vlan, int port);

/** The route of the VRF whose prefix has most in common with the address, else one that would
 * match in another VRF. */
std::string nearest_route(const Routes &routes, int vrf, bool ip6, const Address &address);

/** The rule that a frame misses by its in-port or by being routable alone. */
std::string nearest_rule(const InPorts &in_ports, int id, int port);

/** The entry of a table with the nearest id, with its text: "egress 100001 (interface 3 …)". */
template <class Table> std::string nearest_id(const char *kind, const Table &table, int id)
{
    const auto all = table.all();
    if (all.empty()) {
        return fmt::format("there is no {} at all", kind);
    }
    auto above = all.lower_bound(id);
    if (above == all.end() ||
        (above != all.begin() && id - std::prev(above)->first <= above->first - id)) {
        --above;
    }
    return fmt::format("{} {} ({})", kind, above->first, text(above->second));
}

} // namespace simswitch::chip::pipeline
