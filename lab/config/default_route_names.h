/*
 * default_route_names.h: the names that interfaces and ports have in the JSON
 * form of default routes: the switch's own, as Ethernet1/9 or Vlan100, and
 * those of a configuration, as Ethernet8 or PortChannel0001.
 */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lab::config
{

/** The names of a configuration; without one only the switch's own are known. */
struct RouteNames {
    std::string config = {};                                           ///< its file; empty for none
    std::map<std::string, std::uint32_t, std::less<>> interfaces = {}; ///< ifindex by name
    std::map<std::uint32_t, std::string> names = {};                   ///< name by ifindex
    std::map<std::string, int, std::less<>> ports = {};  ///< number in the chip by name
    std::map<std::string, int, std::less<>> trunks = {}; ///< trunk in the chip of a port-channel
    std::map<std::string, std::uint32_t, std::less<>> vrfs = {}; ///< VRF number by name
};

/** The ifindex of a name; nothing when it is none. */
std::optional<std::uint32_t> ifindex_of(const RouteNames &names, std::string_view name);

/** The name of an ifindex, such that ifindex_of gives the same again; empty when it has none. */
std::string interface_name(const RouteNames &names, std::uint32_t ifindex);

/** The number in the chip of a port's name; nothing when it is none. */
std::optional<int> port_of(const RouteNames &names, std::string_view name);

/** The number in the chip of the port of an Ethernet port or its subinterface, else nothing. */
std::optional<int> port_under(std::uint32_t ifindex);

} // namespace lab::config
