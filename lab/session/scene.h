/*
 * scene.h: a switch with the names that its numbers have in a session: of
 * interfaces, ports, port-channels. Tables are made from it; session.h makes it.
 */
#pragma once

#include "config/address.h"
#include "l3lif/readback.h"

#include "switch.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lab::routing
{
class Routing;
}

namespace lab::packet
{
struct Explanation;
}

namespace lab::session
{

/** An interface of the configuration. */
struct SceneInterface {
    std::string name;
    std::string_view kind;  ///< "port", "svi"
    std::string_view state; ///< "up", "stopped", "failed", "kept", "down"
    l3lif::HardwareView view;
};

/** A switch and its names. */
struct Scene {
    simswitch::Switch &hardware;
    std::vector<SceneInterface> interfaces = {};         ///< in the order of bringing up
    std::map<int, std::string> iifs = {};                ///< interface by its number in the chip
    std::map<int, std::string> ports = {};               ///< port by its number in the chip
    std::map<int, std::string> trunks = {};              ///< port-channel by its trunk
    std::map<int, std::string> vlans = {};               ///< VLAN of the configuration by its id
    std::map<std::uint32_t, std::string> ifindexes = {}; ///< interface by its ifindex
    std::map<int, config::Mac> router_macs = {};         ///< by station
    const routing::Routing *routing = nullptr;           ///< the layers that own the routes
    const packet::Explanation *packet = nullptr;         ///< the last packet; null before the first

    /** The name of a number; empty when it has none. */
    static std::string name(const std::map<int, std::string> &names, int number);
    /** The interface of a number, "#7" for a number without one, nothing for 0. */
    std::string iif_text(int iif) const;
    /** The names of all interfaces. */
    std::vector<std::string> interface_names() const;
    /** The names of all ports. */
    std::vector<std::string> port_names() const;
    /** The name of a chip's port, or its number. */
    std::string port_text(int port) const;
    /** The name of what a generic port stands for, or its number in hex. */
    std::string gport_text(int gport) const;
};

} // namespace lab::session
