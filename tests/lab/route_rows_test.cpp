/*
 * route_rows_test.cpp: what rows of STATIC_ROUTE, NEIGH and FDB give, the
 * addresses that virtual MACs answer for, and the exact message of each kind of
 * row that can't be taken.
 */
#include "config_text.h"

#include "config/networks.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

using namespace lab_test;
using lab::config::Description;

namespace
{

/** Routed ports of two VRFs, an SVI, a tunnel, and some tables more. */
Description read_with(const std::string &tables)
{
    return read(R"({"PORT": {"Ethernet0": {}, "Ethernet4": {}, "Ethernet8": {}, "Ethernet12": {}},
        "VRF": {"Vrf_red": {}},
        "INTERFACE": {"Ethernet0|10.0.0.1/24": {}, "Ethernet0|fc00::1/64": {},
                      "Ethernet4": {"vrf_name": "Vrf_red"}, "Ethernet4|10.4.0.1/24": {}},
        "VLAN": {"Vlan100": {}, "Vlan200": {}},
        "VLAN_MEMBER": {"Vlan100|Ethernet8": {}, "Vlan100|Ethernet12": {"tagging_mode": "tagged"}},
        "VLAN_INTERFACE": {"Vlan100|10.1.0.1/24": {}},
        "TUNNEL": {"Tunnel1": {"tunnel_type": "IPINIP", "dst_ip": "10.1.0.32"}}, )" +
                tables + "}");
}

/** "1 10.2.0.0/16 10.0.0.9%Ethernet0 1", … a way a line, "black hole" for none. */
Lines routes(const Description &config)
{
    Lines lines;
    for (const auto &route : config.static_routes) {
        const std::string prefix = fmt::format("{} {}", route.vrf, route.prefix.text());
        for (const auto &hop : route.next_hops) {
            lines.push_back(fmt::format("{} {}%{} {}", prefix,
                                        hop.gateway ? hop.gateway->text() : "", hop.interface,
                                        hop.distance));
        }
        if (route.next_hops.empty()) {
            lines.push_back(prefix + " black hole");
        }
    }
    return lines;
}

/** "row: reason" of the skipped rows. */
Lines reasons(const Description &config)
{
    Lines lines;
    for (const auto &row : config.skipped) {
        lines.push_back(row.row + ": " + row.reason);
    }
    return lines;
}

/** The reasons of rows of STATIC_ROUTE. */
Lines refused_routes(const std::string &rows)
{
    const auto config = read_with(R"("STATIC_ROUTE": {)" + rows + "}");
    EXPECT_EQ(routes(config), Lines{});
    return reasons(config);
}

} // namespace

TEST(StaticRouteRows, WaysAndVrfs)
{
    const auto config = read_with(R"("STATIC_ROUTE": {
        "10.2.0.0/16": {"nexthop": "10.0.0.9"},
        "default|0.0.0.0/0": {"nexthop": "10.0.0.9,10.1.0.9", "distance": "1,2",
                              "ifname": "Ethernet0,Vlan100", "nexthop-vrf": "default,"},
        "Vrf_red|10.2.0.5/16": {"nexthop": "10.4.0.9", "nexthop-vrf": "Vrf_red"},
        "fc01::/32": {"nexthop": "fe80::9", "ifname": "Ethernet0"},
        "10.5.0.0/16": {"ifname": "Tunnel1", "distance": 7},
        "10.6.0.0/16": {"nexthop": "0.0.0.0,10.0.0.9", "ifname": "Vlan100,"},
        "10.7.0.0/16": {"nexthop@": ["10.0.0.7", "10.0.0.8"], "distance": "3"},
        "10.8.0.0/16": {"blackhole": "true"},
        "10.9.0.1": {"nexthop": "10.0.0.9", "blackhole": "false"}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(
        routes(config),
        (Lines{"1 10.2.0.0/16 10.0.0.9% 0", "1 10.5.0.0/16 %Tunnel1 7", "1 10.6.0.0/16 %Vlan100 0",
               "1 10.6.0.0/16 10.0.0.9% 0", "1 10.7.0.0/16 10.0.0.7% 3",
               "1 10.7.0.0/16 10.0.0.8% 3", "1 10.8.0.0/16 black hole", "1 10.9.0.1/32 10.0.0.9% 0",
               "2 10.2.0.0/16 10.4.0.9% 0", "1 0.0.0.0/0 10.0.0.9%Ethernet0 1",
               "1 0.0.0.0/0 10.1.0.9%Vlan100 2", "1 fc01::/32 fe80::9%Ethernet0 0"}));
}

TEST(StaticRouteRows, BadKeysAndRows)
{
    EXPECT_EQ(refused_routes(R"("10.2.0/16": {"nexthop": "10.0.0.9"},
        "10.2.0.0/33": {"nexthop": "10.0.0.9"}, "Vrf_blue|10.2.0.0/16": {"nexthop": "10.0.0.9"},
        "224.0.0.0/8": {"nexthop": "10.0.0.9"}, "10.3.0.0/16": {}, "10.4.0.0/16": 7)"),
              (Lines{"10.2.0.0/33: the prefix length 33 is not in 0..32",
                     R"(10.2.0/16: "10.2.0/16" is no prefix like 10.2.0.0/16 or fc00::/64)",
                     "10.3.0.0/16: nexthop and ifname are missing, one of them was expected",
                     "10.4.0.0/16: an object of fields was expected, not a number",
                     R"(224.0.0.0/8: "224.0.0.0/8" is a group's: no route leads there)",
                     R"(Vrf_blue|10.2.0.0/16: its VRF "Vrf_blue" isn't in VRF)"}));
}

TEST(StaticRouteRows, BadGateways)
{
    EXPECT_EQ(refused_routes(R"("10.2.0.0/16": {"nexthop": "10.0.0"},
        "10.3.0.0/16": {"nexthop": "224.0.0.1"}, "10.4.0.0/16": {"nexthop": "fc00::9"},
        "10.5.0.0/16": {"nexthop": "10.0.0.1"}, "10.6.0.0/16": {"nexthop": "10.4.0.9"},
        "10.7.0.0/16": {"nexthop": "0.0.0.0"})"),
              (Lines{R"(10.2.0.0/16: nexthop "10.0.0" is no address like 10.0.0.1 or fc00::1)",
                     "10.3.0.0/16: nexthop 224.0.0.1 is not the address of one interface",
                     "10.4.0.0/16: nexthop fc00::9 is of another family than 10.4.0.0/16",
                     "10.5.0.0/16: nexthop 10.0.0.1 is an address of this switch",
                     "10.6.0.0/16: nexthop 10.4.0.9 is on no network of the VRF; ifname may name "
                     "its interface",
                     "10.7.0.0/16: next hop 1 has neither a gateway nor an interface"}));
}

TEST(StaticRouteRows, BadFieldsBesideTheGateway)
{
    EXPECT_EQ(
        refused_routes(R"("10.2.0.0/16": {"ifname": "Ethernet12"},
        "10.3.0.0/16": {"ifname": "Ethernet4"},
        "10.4.0.0/16": {"nexthop": "10.0.0.8,10.0.0.9", "ifname": "Ethernet0"},
        "10.5.0.0/16": {"nexthop": "10.0.0.9", "distance": "256"},
        "10.6.0.0/16": {"nexthop": "10.0.0.9", "nexthop-vrf": "Vrf_red"},
        "10.7.0.0/16": {"nexthop": "10.0.0.9", "blackhole": "yes"},
        "10.8.0.0/16": {"nexthop": "10.0.0.8,10.0.0.9", "blackhole": "true,false"})"),
        (Lines{
            R"(10.2.0.0/16: no row that is taken makes "Ethernet12" a routed interface)",
            "10.3.0.0/16: its interface Ethernet4 is in another VRF; a route stays in its own",
            "10.4.0.0/16: ifname has 1 items and there are 2 next hops",
            "10.5.0.0/16: distance 256 is not in 0..255",
            R"(10.6.0.0/16: nexthop-vrf "Vrf_red" isn't the route's VRF; a route stays in its own)",
            R"(10.7.0.0/16: blackhole is "yes", "true" or "false" was expected)",
            "10.8.0.0/16: blackhole is true for 1 of 2 ways; it must be so for all or none"}));
}

TEST(StaticRouteRows, MoreWaysThanAGroupHasRoomFor)
{
    std::string gateways = "10.0.0.2";
    for (int i = 3; i < 67; ++i) {
        gateways += fmt::format(",10.0.0.{}", i);
    }
    EXPECT_EQ(refused_routes(R"("10.2.0.0/16": {"nexthop": ")" + gateways + R"("})"),
              Lines{"10.2.0.0/16: it has 65 next hops; the chip's groups have room for 64"});
}

TEST(StaticRouteRows, AnotherRowOfTheSamePrefix)
{
    const auto config = read_with(R"("STATIC_ROUTE": {"10.2.0.0/16": {"nexthop": "10.0.0.9"},
        "default|10.2.0.0/16": {"nexthop": "10.0.0.8"}})");
    EXPECT_EQ(routes(config), Lines{"1 10.2.0.0/16 10.0.0.9% 0"});
    EXPECT_EQ(messages(config),
              Lines{R"(leaf.json: STATIC_ROUTE "default|10.2.0.0/16": another row routes )"
                    "10.2.0.0/16 in this VRF already; the row is skipped"});
}

TEST(NeighRows, HostsOfEachFamily)
{
    const auto config = read_with(R"("NEIGH": {
        "Ethernet0|10.0.0.9": {"neigh": "02:00:00:00:00:09", "family": "IPv4"},
        "Ethernet0|fc00::9": {"neigh": "02:00:00:00:00:09", "family": "IPv6"},
        "Ethernet0|FE80::9": {"neigh": "02:00:00:00:00:0A"},
        "Vlan100|fc01::9": {"neigh": "02:00:00:00:00:0b"}})");
    EXPECT_EQ(messages(config), Lines{});
    Lines lines;
    for (const auto &host : config.neighbors) {
        lines.push_back(host.interface + " " + host.address.text() + " " +
                        lab::config::mac_text(host.mac));
    }
    EXPECT_EQ(lines,
              (Lines{"Ethernet0 10.0.0.9 02:00:00:00:00:09", "Ethernet0 fe80::9 02:00:00:00:00:0a",
                     "Ethernet0 fc00::9 02:00:00:00:00:09", "Vlan100 fc01::9 02:00:00:00:00:0b"}));
}

TEST(NeighRows, AHostBehindARouteToTheInterfaceAlone)
{
    const auto config = read_with(R"("STATIC_ROUTE": {"10.9.0.0/16": {"ifname": "Ethernet0"}},
        "NEIGH": {"Ethernet0|10.9.0.9": {"neigh": "02:00:00:00:00:09"}})");
    EXPECT_EQ(messages(config), Lines{});
    EXPECT_EQ(config.neighbors.size(), 1U);
}

TEST(NeighRows, BadRows)
{
    const auto config = read_with(R"("NEIGH": {"Ethernet0": {}, "Ethernet0|10.0.0": {},
        "Ethernet0|10.0.0.1": {"neigh": "02:00:00:00:00:09"}, "Ethernet0|10.0.0.2": {},
        "Ethernet0|10.0.0.3": {"neigh": "banana"}, "Ethernet0|10.0.0.4": {"family": "IPv6"},
        "Ethernet0|10.0.1.9": {"neigh": "02:00:00:00:00:09"},
        "Ethernet0|10.0.0.5": {"neigh": "01:00:00:00:00:09"},
        "Ethernet8|10.0.0.9": {"neigh": "02:00:00:00:00:09"},
        "Tunnel1|10.0.0.9": {"neigh": "02:00:00:00:00:09"}})");
    EXPECT_TRUE(config.neighbors.empty());
    EXPECT_EQ(
        reasons(config),
        (Lines{
            "Ethernet0: the key is no INTERFACE|ADDRESS",
            R"(Ethernet0|10.0.0: the address "10.0.0" is no address like 10.0.0.1 or fc00::1)",
            "Ethernet0|10.0.0.1: 10.0.0.1 is Ethernet0's own address; a neighbour has another",
            "Ethernet0|10.0.0.2: neigh, the MAC, is missing; the host is asked for when it is "
            "needed",
            R"(Ethernet0|10.0.0.3: neigh: "banana" is no MAC address like 00:11:22:33:44:55)",
            R"(Ethernet0|10.0.0.4: family is "IPv6", and the address is IPv4)",
            "Ethernet0|10.0.0.5: neigh: 01:00:00:00:00:09 is a group address; an interface needs "
            "one of its own",
            "Ethernet0|10.0.1.9: 10.0.1.9 is on no network of Ethernet0, which has 10.0.0.0/24, "
            "fc00::/64",
            R"(Ethernet8|10.0.0.9: no row that is taken makes "Ethernet8" a routed interface)",
            R"(Tunnel1|10.0.0.9: no row that is taken makes "Tunnel1" a routed interface)"}));
}

TEST(FdbRows, StaticStations)
{
    const auto config = read_with(R"("FDB": {
        "Vlan100|02:00:00:00:00:0A": {"port": "Ethernet8", "type": "static"},
        "Vlan100|02:00:00:00:00:0b": {"port": "Ethernet12"}})");
    EXPECT_EQ(messages(config), Lines{});
    ASSERT_EQ(config.static_macs.size(), 2U);
    EXPECT_EQ(config.static_macs[0],
              (lab::config::StaticMac{100, {2, 0, 0, 0, 0, 0x0a}, "Ethernet8"}));
    EXPECT_EQ(config.static_macs[1],
              (lab::config::StaticMac{100, {2, 0, 0, 0, 0, 0x0b}, "Ethernet12"}));
}

TEST(FdbRows, BadRows)
{
    const auto config = read_with(R"("FDB": {"Vlan100": {}, "Vlan300|02:00:00:00:00:01": {},
        "Vlan100|02:00:00:00:00": {}, "Vlan100|02:00:00:00:00:01": {"type": "dynamic"},
        "Vlan100|02:00:00:00:00:02": {}, "Vlan100|02:00:00:00:00:03": {"port": "Ethernet0"},
        "Vlan200|02:00:00:00:00:04": {"port": "Ethernet8"},
        "Vlan100|02:00:00:00:00:0a": {"port": "Ethernet8"},
        "Vlan100|02:00:00:00:00:0A": {"port": "Ethernet12"}})");
    EXPECT_EQ(config.static_macs.size(), 1U);
    EXPECT_EQ(
        reasons(config),
        (Lines{
            "Vlan100: the key is no VLAN|MAC",
            R"(Vlan100|02:00:00:00:00: "02:00:00:00:00" is no MAC address like 00:11:22:33:44:55)",
            "Vlan100|02:00:00:00:00:0a: another row has 02:00:00:00:00:0a in Vlan100 already",
            R"(Vlan100|02:00:00:00:00:01: type is "dynamic", and only static stations are taken: )"
            "others are learned",
            "Vlan100|02:00:00:00:00:02: port is missing, the port or port-channel that the "
            "station is behind",
            R"(Vlan100|02:00:00:00:00:03: its port "Ethernet0" is no member of Vlan100; those are )"
            "Ethernet8, Ethernet12",
            R"(Vlan200|02:00:00:00:00:04: its port "Ethernet8" is no member of Vlan200, which )"
            "has none",
            "Vlan300|02:00:00:00:00:01: its VLAN Vlan300 isn't in VLAN"}));
}

TEST(VirtualMacAddresses, AreTheGroupsAndTheGatewaysOwn)
{
    const auto config = read(R"({"PORT": {"Ethernet0": {}}, "VLAN": {"Vlan10": {}, "Vlan20": {}},
        "VLAN_INTERFACE": {"Vlan10": {}, "Vlan10|10.0.0.2/24": {}, "Vlan10|fc00::2/64": {},
                           "Vlan20": {"static_anycast_gateway": "true"},
                           "Vlan20|10.0.1.1/24": {}, "Vlan20|fc01::1/64": {}},
        "SAG": {"GLOBAL": {"gateway_mac": "02:5a:00:00:00:01"}},
        "VRRP": {"Vlan10|8": {"vip": ["10.0.0.1", "fc00::1/64", "10.0.0.1/24"]}, "Vlan10|9": {}},
        "VRRP6": {"Vlan10|9": {"vip": "fc00::9,fc00::8"}}})");
    Lines lines;
    for (const auto &mac : config.virtual_macs) {
        lines.push_back(mac.source + (mac.mac[4] == 2 ? " IPv6:" : ":"));
        for (const auto &address : mac.addresses) {
            lines.back() += " " + address.text();
        }
    }
    EXPECT_EQ(lines, (Lines{"VRRP 8: 10.0.0.1", "VRRP 8 IPv6: fc00::1",
                            "VRRP 9:", "VRRP6 9 IPv6: fc00::9 fc00::8", "SAG: 10.0.1.1 fc01::1"}));
}

TEST(Networks, MaskAndContain)
{
    using namespace lab::config;
    const Prefix prefix{*parse_ip("10.1.2.3"), 21};
    EXPECT_EQ(masked(prefix).text(), "10.1.0.0/21");
    EXPECT_EQ(masked({*parse_ip("fc00:1:2::3"), 33}).text(), "fc00:1::/33");
    EXPECT_EQ(masked({*parse_ip("10.1.2.3"), 0}).text(), "0.0.0.0/0");
    EXPECT_TRUE(contains(prefix, *parse_ip("10.1.7.255")));
    EXPECT_FALSE(contains(prefix, *parse_ip("10.1.8.0")));
    EXPECT_FALSE(contains({*parse_ip("0.0.0.0"), 0}, *parse_ip("::1")));
    EXPECT_TRUE(is_link_local(*parse_ip("febf::1")));
    EXPECT_FALSE(is_link_local(*parse_ip("fec0::1")));
    EXPECT_FALSE(is_link_local(*parse_ip("254.128.0.1")));
}
