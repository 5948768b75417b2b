/*
 * description.h: what a configuration says about routed interfaces, in plain
 * records: checked, numbered, and free of the file's form. reader.h fills them.
 */
#pragma once

#include "config/address.h"
#include "config/natural_order.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::config
{

/** The number of the default VRF; named ones count on from it. */
inline constexpr std::uint16_t VRF_DEFAULT = 1;

/** The chip's front ports, numbered from 1. */
inline constexpr unsigned CHIP_PORTS = 104;

/** Members that a trunk of the chip takes. */
inline constexpr unsigned TRUNK_MEMBERS = 32;

/** The range of an L3 MTU in bytes. */
inline constexpr std::uint16_t MTU_MIN = 68;
inline constexpr std::uint16_t MTU_MAX = 9216;

/** The kinds of routed interface that the hardware knows. */
enum class Kind : std::uint8_t { port, port_channel, svi, subinterface, tunnel };

/** "port", "port-channel", "svi", "subinterface", "tunnel". */
std::string_view kind_name(Kind kind);

/** A port of the device. */
struct Port {
    unsigned chip_port = 0; ///< 1 to 104, or 0 past the last one
    std::uint16_t mtu = 0;  ///< L3 MTU in bytes; 0: the file says nothing
    std::string refused;    ///< why nothing can use it; empty for a port that is taken
};

/** A port-channel of the device. */
struct PortChannel {
    unsigned number = 0;              ///< that of its name, 0 to 9999
    unsigned trunk = 0;               ///< its trunk in the chip, from 1
    std::uint16_t mtu = 0;            ///< L3 MTU in bytes; 0: the file says nothing
    std::vector<std::string> members; ///< names of its ports, at most 32
    bool is_routed = false;           ///< rows make it or subinterfaces of it routed
    std::string refused;              ///< why nothing can use it; empty for one that is taken
};

/** What a VLAN is in a private VLAN. */
enum class VlanRole : std::uint8_t { none, primary, secondary };

/** A port or port-channel that a VLAN is bridged to. */
struct VlanMember {
    std::string name;
    bool tagged = false; ///< its frames carry the VLAN's tag
};

/** A VLAN of the device. */
struct Vlan {
    std::uint16_t id = 0;
    std::uint16_t mtu = 0;           ///< L3 MTU in bytes of its interface; 0: the file says nothing
    VlanRole role = VlanRole::none;  ///< what the pairs make of it
    std::vector<VlanMember> members; ///< in natural order of their names
    std::string refused;             ///< why nothing can use it; empty for one that is taken
};

/** A private-VLAN pair: hosts in the secondary, their router in the primary. */
struct PvlanPair {
    std::string primary;
    std::string secondary;
};

/** A MAC that an interface answers to beside its own. */
struct VirtualMac {
    std::string owner;                     ///< name of the interface
    Mac mac = {};                          ///< the MAC
    std::string source;                    ///< "SAG", "VRRP 8": what gives it
    std::vector<IpAddress> addresses = {}; ///< those that it answers for, each once
};

/** A routed interface other than a tunnel. */
struct RoutedInterface {
    Kind kind = Kind::port;
    std::string table; ///< the table whose rows made it
    std::string name;
    std::string main;       ///< a subinterface's port or port-channel
    unsigned number = 0;    ///< a subinterface's, what stands behind the dot of its name
    std::uint16_t vlan = 0; ///< VLAN of an SVI or subinterface, else 0
    std::uint16_t mtu = 0;  ///< own L3 MTU in bytes of a subinterface or SVI; 0: its main's, VLAN's
    std::uint16_t vrf = VRF_DEFAULT; ///< VRF number
    std::optional<Mac> mac;          ///< its own MAC; nothing: the device's
    std::vector<Prefix> addresses;   ///< its addresses, each once
    bool link_local_only = false;    ///< IPv6 without an address of the file
    bool mpls = false;               ///< MPLS forwarding
    bool anycast_gateway = false;    ///< an SVI that has the MAC of the anycast gateways

    /** Whether it routes IPv4 (false) or IPv6 (true). */
    bool routes(bool ipv6) const;
};

/** An IP-in-IP tunnel. */
struct Tunnel {
    std::string table; ///< the table whose row made it
    std::string name;
    IpAddress destination;
    std::optional<IpAddress> source;
};

/** Where a static route leads. */
struct NextHop {
    std::optional<IpAddress> gateway; ///< nothing: to an interface alone
    std::string interface;            ///< empty: the one whose network has the gateway
    unsigned distance = 0;            ///< of the ways that can be taken, those with the lowest are

    bool operator==(const NextHop &) const = default;
};

/** A static route. */
struct StaticRoute {
    std::uint16_t vrf = VRF_DEFAULT;
    Prefix prefix;                  ///< bits behind the length are 0
    std::vector<NextHop> next_hops; ///< several share its flows; none: a black hole

    bool operator==(const StaticRoute &) const = default;
};

/** A host on the network of an interface. */
struct Neighbor {
    std::string interface;
    IpAddress address;
    Mac mac = {};

    bool operator==(const Neighbor &) const = default;
};

/** A station that stays where it is. */
struct StaticMac {
    std::uint16_t vlan = 0;
    Mac mac = {};
    std::string port; ///< a port or port-channel of the VLAN

    bool operator==(const StaticMac &) const = default;
};

/** A row that isn't taken. */
struct SkippedRow {
    std::string table;
    std::string row;
    std::string reason; ///< part of a sentence

    bool operator==(const SkippedRow &) const = default;
};

/** All that a configuration says. */
struct Description {
    std::string file; ///< name of the file, as messages begin with it
    std::string hostname;
    Mac device_mac = {};
    std::map<std::string, Port, std::less<>> ports;                ///< by name
    std::map<std::string, PortChannel, NaturalLess> port_channels; ///< by name
    std::map<std::string, std::uint16_t, std::less<>> vrfs; ///< number by name, without the default
    std::map<std::string, Vlan, NaturalLess> vlans;         ///< by name
    std::vector<RoutedInterface> interfaces; ///< by kind, within it in natural order of the names
    std::vector<Tunnel> tunnels;             ///< in natural order of their names
    std::vector<PvlanPair> pvlan_pairs;      ///< in natural order of the primaries' names
    std::vector<VirtualMac> virtual_macs;    ///< in the order of their interfaces
    std::vector<StaticRoute> static_routes;  ///< in natural order of their rows
    std::vector<Neighbor> neighbors;         ///< in natural order of their rows
    std::vector<StaticMac> static_macs;      ///< in natural order of their rows
    std::vector<SkippedRow> skipped;         ///< by table and row
    std::vector<std::string> notes;          ///< lines worth telling, with the file's name

    /** "leaf.json: INTERFACE "Ethernet3": its port isn't …; the row is skipped". */
    std::string message(const SkippedRow &row) const;
    /** Brings the skipped rows into order. */
    void sort_skipped();
};

} // namespace lab::config
