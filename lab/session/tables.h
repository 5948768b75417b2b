/*
 * tables.h: the chip's tables as a session shows them, an interface's name
 * beside each number that is one's.
 *
 * l3_tables.cpp has interfaces, numbers, ingress objects, next hops and VXLAN ports;
 * routing_tables.cpp routes and neighbours;
 * l2_tables.cpp ports, trunks, VLANs, stations, translations; rule_tables.cpp
 * the field processor and the chip's controls; packet_table.cpp the last packet.
 */
#pragma once

#include "session/scene.h"
#include "session/table.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lab::session
{

/** A table that can be made. Several may be shown under one word. */
struct TableKind {
    std::string_view show;    ///< the word behind `show`
    std::string_view subject; ///< the word behind `expect`
    Table (*make)(const Scene &);
};

/** All kinds, in the order of help. */
std::span<const TableKind> table_kinds();

// The makers.
Table interface_table(const Scene &scene);
Table iif_table(const Scene &scene);
Table ingress_table(const Scene &scene);
Table egress_table(const Scene &scene);
Table route_table(const Scene &scene);
Table neighbor_table(const Scene &scene);
Table port_table(const Scene &scene);
Table trunk_table(const Scene &scene);
Table vlan_table(const Scene &scene);
Table station_table(const Scene &scene);
Table translation_table(const Scene &scene);
Table vxlan_table(const Scene &scene);
Table field_group_table(const Scene &scene);
Table field_entry_table(const Scene &scene);
Table switch_table(const Scene &scene);
Table packet_table(const Scene &scene);

// How cells are written.
std::string hex(std::uint32_t value);
/** A number, or nothing for 0. */
std::string unless_zero(int value);
/** "1,3,5-9"; nothing for none. */
std::string number_list(const std::vector<int> &numbers);
/** "1,3,5-9"; nothing for none. */
std::string port_list(const simswitch::chip::PortSet &ports);

} // namespace lab::session
