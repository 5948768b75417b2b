/*
 * programmed_chip.cpp: the writes that make the chip of the benchmarks.
 */
#include "programmed_chip.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>

namespace bench
{

namespace
{

using pipeline::BROADCAST;
using pipeline::HOST_MAC;
using pipeline::OTHER_MAC;
using pipeline::ROUTER_MAC;

constexpr int ROUTED_VLAN = 4094;
constexpr int FIRST_NUMBER = 3; // interface number of port 1
constexpr int TUNNEL_NUMBER = 60;
constexpr std::uint32_t ALL_CLASSES = 0x1c;

void need(const simswitch::Outcome &outcome)
{
    if (!outcome.ok()) {
        fmt::print(stderr, "the chip refuses: {}\n", outcome.reason);
        std::exit(1);
    }
}

int number_of(int port)
{
    return FIRST_NUMBER + port - 1;
}

} // namespace

chip::Mac station_mac(int port)
{
    chip::Mac mac = HOST_MAC;
    mac[4] = 1;
    mac[5] = static_cast<std::uint8_t>(port);
    return mac;
}

ProgrammedChip::ProgrammedChip()
{
    int station = 0;
    need(chip_.stations.create({.flags = ALL_CLASSES, .mac = ROUTER_MAC, .mac_mask = BROADCAST},
                               station));
    need(chip_.vlans.create(ROUTED_VLAN));
    next_hops_.resize(ROUTED_PORTS + 1);
    for (int port = 1; port <= ROUTED_PORTS; ++port) {
        add_routed_port(port);
    }
    add_bridged_vlan();
    add_routes();
}

void ProgrammedChip::add_routed_port(int port)
{
    const int number = number_of(port);
    need(chip_.l3_interfaces.create(
        number, {.vrf = 1, .mac = ROUTER_MAC, .vlan = ROUTED_VLAN, .mtu = 9100}));
    need(chip_.l3_ingresses.create(number, {.flags = 6, .vrf = 1, .intf_class = 64}));
    need(chip_.vlans.add_ports(ROUTED_VLAN, {0, port}, {port}));
    need(chip_.ports.set_control(port, chip::PORT_CONTROL_IP4, 1));
    need(chip_.ports.set_control(port, chip::PORT_CONTROL_IP6, 1));
    need(chip_.ports.set_untagged_vlan(port, ROUTED_VLAN));
    need(chip_.ports.set_control(port, chip::PORT_CONTROL_INGRESS, number));
    need(chip_.egresses.create({.interface = number, .mac = OTHER_MAC, .port = port},
                               next_hops_[static_cast<std::size_t>(port)]));
}

void ProgrammedChip::add_bridged_vlan()
{
    const chip::PortSet ports =
        chip::PortSet::range(FIRST_BRIDGED_PORT, FIRST_BRIDGED_PORT + BRIDGED_PORTS - 1);
    need(chip_.vlans.create(BRIDGED_VLAN));
    need(chip_.vlans.add_ports(BRIDGED_VLAN, ports, {}));
    for (int port = FIRST_BRIDGED_PORT; port < FIRST_BRIDGED_PORT + BRIDGED_PORTS; ++port) {
        need(
            pipeline_.l2().add_static(BRIDGED_VLAN, station_mac(port), chip::module_port(0, port)));
    }
}

int ProgrammedChip::add_tunnel()
{
    need(chip_.l3_interfaces.create(
        TUNNEL_NUMBER, {.vrf = 1, .mac = ROUTER_MAC, .vlan = ROUTED_VLAN, .mtu = 1500}));
    need(chip_.tunnels.create(TUNNEL_NUMBER,
                              {.index = 1, .source_ip = 0x0a010021, .dest_ip = 0x0a010020}));
    int egress = 0;
    need(chip_.egresses.create({.interface = TUNNEL_NUMBER, .mac = OTHER_MAC, .port = 2}, egress));
    return egress;
}

/** 10.x.y.0/24 in turn behind ports 2 and up; 11.0.0.0/8 over 8 paths; 12.0.0.0/8 by the tunnel;
 * 2001:db8::/32 behind port 2. */
void ProgrammedChip::add_routes()
{
    constexpr std::uint32_t EIGHT_BITS = 0xff000000;
    constexpr std::uint32_t TWENTY_FOUR_BITS = 0xffffff00;
    const auto behind = [this](int port) { return next_hops_[static_cast<std::size_t>(port)]; };
    for (int net = 0; net < NET_COUNT; ++net) {
        const auto address = 0x0a000000U | static_cast<std::uint32_t>(net) << 8;
        need(chip_.routes.create(chip::ip4_key(1, address, TWENTY_FOUR_BITS),
                                 {.next_hop = behind(2 + net % (ROUTED_PORTS - 1))}));
    }
    chip::MultipathGroup paths;
    for (int path = 0; path < PATHS; ++path) {
        paths.members.push_back(behind(2 + path));
    }
    int group = 0;
    need(chip_.multipath_groups.create(paths, group));
    need(chip_.routes.create(chip::ip4_key(1, 0x0b000000, EIGHT_BITS),
                             {.next_hop = group, .multipath = true}));
    need(chip_.routes.create(chip::ip4_key(1, 0x0c000000, EIGHT_BITS), {.next_hop = add_tunnel()}));
    const pipeline::Address net = pipeline::address("2001:db8::");
    const pipeline::Address mask = pipeline::address("ffff:ffff::");
    need(chip_.routes.create(chip::ip6_key(1, net, mask), {.next_hop = behind(2)}));
}

} // namespace bench
