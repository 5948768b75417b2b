/*
 * routing_switch.cpp: see routing_switch.h.
 */
#include "routing_switch.h"

#include "config/networks.h"
#include "config/reader.h"
#include "support/library_test.h"

#include "chip/trunks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace lab_test
{

namespace
{

namespace chip = simswitch::chip;

constexpr std::string_view CONFIG = R"({
    "DEVICE_METADATA": {"localhost": {"mac": "02:00:00:00:0a:01"}},
    "PORT": {"Ethernet0": {}, "Ethernet4": {}, "Ethernet8": {}, "Ethernet12": {}, "Ethernet16": {},
             "Ethernet20": {}, "Ethernet24": {}, "Ethernet28": {}, "Ethernet32": {}},
    "VRF": {"Vrf_red": {}},
    "PORTCHANNEL_MEMBER": {"PortChannel1|Ethernet8": {}, "PortChannel1|Ethernet12": {}},
    "INTERFACE": {"Ethernet0|10.0.0.1/24": {}, "Ethernet0|2001:db8::1/64": {},
                  "Ethernet4|10.0.1.1/24": {},
                  "Ethernet28": {"vrf_name": "Vrf_red"}, "Ethernet28|10.0.0.1/24": {}},
    "PORTCHANNEL_INTERFACE": {"PortChannel1|10.0.2.1/24": {}},
    "VLAN_SUB_INTERFACE": {"Ethernet4.10|10.0.3.1/24": {}, "PortChannel1.20|10.0.4.1/24": {}},
    "VLAN": {"Vlan100": {}, "Vlan101": {}, "Vlan200": {}},
    "VLAN_MEMBER": {"Vlan100|Ethernet16": {}, "Vlan100|Ethernet20": {"tagging_mode": "tagged"},
                    "Vlan101|Ethernet24": {}, "Vlan200|Ethernet32": {}},
    "PVLAN": {"Vlan100|Vlan101": {}},
    "VLAN_INTERFACE": {"Vlan100|10.1.0.1/24": {}, "Vlan200|10.3.0.1/24": {}},
    "TUNNEL": {"Tunnel1": {"tunnel_type": "IPINIP", "dst_ip": "10.9.0.1"}})";

simswitch::Options after_reset(const simswitch::Options &options)
{
    rtifhal_test::reset_library();
    return options;
}

} // namespace

RoutingTest::RoutingTest(const simswitch::Options &options, std::string_view more)
    : hardware(after_reset(options)),
      config(lab::config::read_config_text(fmt::format("{}{}}}", CONFIG, more), "routing.json"))
{
    EXPECT_TRUE(config.skipped.empty());
    lab::l3lif::bring_all_up(config, layer);
    routing.configure(config);
    routing.sync();
}

lab::l3lif::Interface &RoutingTest::interface(std::string_view name)
{
    return *layer.routed().find(name);
}

void RoutingTest::take_down(std::string_view name)
{
    layer.take_down(interface(name), false);
    routing.sync();
}

void RoutingTest::know(const std::string &interface, std::string_view address, std::uint8_t mac,
                       const std::string &port)
{
    routing.set_neighbor({interface, ip(address), {2, 0, 0, 0, 0, mac}, port, 0});
}

void RoutingTest::route(std::string_view prefix, const Lines &ways)
{
    std::string reason;
    lab::routing::StaticRoute route{1, *lab::config::parse_destination(prefix, reason), {}};
    for (const std::string &way : ways) {
        const std::size_t percent = way.find('%');
        const auto gateway = lab::config::parse_ip(way.substr(0, percent));
        route.next_hops.push_back({gateway,
                                   !gateway                       ? way
                                   : percent == std::string::npos ? ""
                                                                  : way.substr(percent + 1),
                                   0});
    }
    routing.add_route(route);
}

std::string RoutingTest::text_of(int egress) const
{
    const chip::Egress *object = hardware.chip.egresses.find(egress);
    if (object == nullptr) {
        return "nothing";
    }
    std::string name = fmt::to_string(object->interface);
    for (const auto &known : layer.interfaces()) {
        if (known->lif->iif() == object->interface && object->interface != 0) {
            name = known->lif->plan().name;
        }
    }
    if (object->port == chip::CPU_PORT) {
        return "CPU of " + name;
    }
    if (object->port < 0) {
        return "nowhere";
    }
    const bool on_trunk = chip::gport_kind(object->port) == chip::GPORT_TRUNK;
    return fmt::format("{} {} {} {}{}", name, chip::text(object->mac), on_trunk ? "trunk" : "port",
                       object->port & 0x7ff,
                       object->vlan == 0 ? "" : fmt::format(" vlan {}", object->vlan));
}

Lines RoutingTest::routes() const
{
    Lines lines;
    for (const auto &[key, route] : hardware.chip.routes.all()) {
        const chip::MultipathGroup *group = hardware.chip.multipath_groups.find(route.next_hop);
        const std::vector<int> members =
            route.multipath ? group->members : std::vector<int>{route.next_hop};
        Lines ways;
        for (const int member : members) {
            ways.push_back(text_of(member));
        }
        lines.push_back(fmt::format("{}: {}", chip::text(key), fmt::join(ways, " and ")));
    }
    return lines;
}

std::string RoutingTest::to(std::string_view prefix) const
{
    const std::string start = fmt::format("vrf 1 {}: ", prefix);
    for (const std::string &line : routes()) {
        if (line.starts_with(start)) {
            return line.substr(start.size());
        }
    }
    return "";
}

std::vector<std::uint64_t> RoutingTest::writes()
{
    auto &chip = hardware.chip;
    return {chip.routes.generation(), chip.egresses.changes().generation(),
            chip.multipath_groups.changes().generation(), chip.tunnels.changes().generation(),
            chip.l3_interfaces.changes().generation()};
}

lab::config::IpAddress ip(std::string_view text)
{
    return lab::config::parse_ip(text).value();
}

} // namespace lab_test
