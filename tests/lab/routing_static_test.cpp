/*
 * routing_static_test.cpp: static routes over one way and several, black holes,
 * tunnels; what others have in the chip; full tables; who wrote what.
 */
#include "routing_switch.h"

#include "chip/multipath_groups.h"

#include <fmt/format.h>

using namespace lab_test;

namespace
{

namespace chip = simswitch::chip;

class StaticRoutes : public RoutingTest
{
protected:
    /** Makes the gateways of Ethernet0, Ethernet4 and PortChannel1 known. */
    void know_gateways()
    {
        know("Ethernet0", "10.0.0.9", 1);
        know("Ethernet4", "10.0.1.9", 2);
        know("PortChannel1", "10.0.2.9", 3);
    }
};

class TunnelRoutes : public RoutingTest
{
protected:
    /** "1 10.0.0.1 -> 10.9.0.1" of Tunnel1; empty when it has no initiator. */
    std::string initiator()
    {
        const chip::Tunnel *found = hardware.chip.tunnels.find(interface("Tunnel1").lif->iif());
        return found == nullptr ? "" : chip::text(*found);
    }
};

class SmallTables : public RoutingTest
{
protected:
    SmallTables() : RoutingTest({.limits = {.egresses = 19, .multipath_groups = 1, .routes = 19}})
    {
    }
};

class OthersRoutes : public RoutingTest
{
};

class Writers : public RoutingTest
{
};

} // namespace

TEST_F(StaticRoutes, OneWay)
{
    route("10.7.0.0/16", {"10.0.0.9"});
    EXPECT_EQ(to("10.7.0.0/16"), "CPU of Ethernet0");
    know_gateways();
    EXPECT_EQ(to("10.7.0.0/16"), "Ethernet0 02:00:00:00:00:01 port 1");
    routing.remove_neighbor("Ethernet0", ip("10.0.0.9"));
    EXPECT_EQ(to("10.7.0.0/16"), "CPU of Ethernet0");
    take_down("Ethernet0");
    EXPECT_EQ(to("10.7.0.0/16"), "");
}

TEST_F(StaticRoutes, SeveralWaysAreAGroupOfThoseThatAreKnown)
{
    know_gateways();
    route("0.0.0.0/0", {"10.0.0.9", "10.0.1.9", "10.0.2.9"});
    EXPECT_EQ(to("0.0.0.0/0"), "Ethernet0 02:00:00:00:00:01 port 1 and "
                               "Ethernet4 02:00:00:00:00:02 port 2 and "
                               "PortChannel1 02:00:00:00:00:03 trunk 1");
    routing.remove_neighbor("Ethernet4", ip("10.0.1.9"));
    EXPECT_EQ(to("0.0.0.0/0"), "Ethernet0 02:00:00:00:00:01 port 1 and "
                               "PortChannel1 02:00:00:00:00:03 trunk 1");
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 1U);
    take_down("Ethernet0");
    EXPECT_EQ(to("0.0.0.0/0"), "PortChannel1 02:00:00:00:00:03 trunk 1");
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 0U);
}

TEST_F(StaticRoutes, ThoseAtTheLowestDistanceThatCanBeTaken)
{
    know_gateways();
    routing.add_route(
        {1, {ip("10.7.0.0"), 16}, {{ip("10.0.0.9"), "", 1}, {ip("10.0.1.9"), "", 5}}});
    EXPECT_EQ(to("10.7.0.0/16"), "Ethernet0 02:00:00:00:00:01 port 1");
    take_down("Ethernet0");
    EXPECT_EQ(to("10.7.0.0/16"), "Ethernet4 02:00:00:00:00:02 port 2");
}

TEST_F(StaticRoutes, ANewOneReplacesThatOfItsPrefix)
{
    know_gateways();
    route("10.7.0.0/16", {"10.0.0.9"});
    route("10.7.1.2/16", {"10.0.1.9"});
    EXPECT_EQ(routing.routes().size(), 1U);
    EXPECT_EQ(to("10.7.0.0/16"), "Ethernet4 02:00:00:00:00:02 port 2");
    EXPECT_TRUE(routing.remove_route(1, {ip("10.7.0.0"), 16}));
    EXPECT_EQ(to("10.7.0.0/16"), "");
    EXPECT_FALSE(routing.remove_route(1, {ip("10.7.0.0"), 16}));
}

TEST_F(StaticRoutes, ABlackHoleLeadsNowhereAndGoesWithoutATrace)
{
    const std::size_t egresses = hardware.chip.egresses.size();
    route("10.7.0.0/16", {});
    EXPECT_EQ(to("10.7.0.0/16"), "nowhere");
    EXPECT_EQ(routing.next_hop_text(hardware.chip.egresses.all().rbegin()->first), "black hole");
    routing.remove_route(1, {ip("10.7.0.0"), 16});
    EXPECT_EQ(hardware.chip.egresses.size(), egresses);
}

TEST_F(StaticRoutes, AGatewayOnALinkAlone)
{
    route("2001:db8:7::/48", {"fe80::9%Ethernet0"});
    EXPECT_EQ(to("2001:db8:7::/48"), "CPU of Ethernet0");
    EXPECT_EQ(*routing.gateway_of(1, ip("2001:db8:7::1")), ip("fe80::9"));
    know("Ethernet0", "fe80::9", 9);
    EXPECT_EQ(to("2001:db8:7::/48"), "Ethernet0 02:00:00:00:00:09 port 1");
}

TEST_F(StaticRoutes, AConnectedNetworkComesFirst)
{
    route("10.0.0.0/24", {"10.0.1.9"});
    EXPECT_EQ(to("10.0.0.0/24"), "CPU of Ethernet0");
    EXPECT_EQ(routing.problems(),
              Lines{"route 10.0.0.0/24: vrf 1 10.0.0.0/24 is there already by 'connected "
                    "Ethernet0', which counts"});
}

TEST_F(StaticRoutes, ThatCantBe)
{
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", {"Ethernet44"}); }),
              "unknown: unknown interface 'Ethernet44': did you mean 'Ethernet4'?");
    EXPECT_EQ(
        problem([this] { route("10.7.0.0/16", {"Ethernet28"}); }),
        "Ethernet28 is in Vrf_red and the route in the default VRF; a route stays in its VRF");
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", {"10.44.0.1"}); }),
              "no interface of the default VRF has a network with the gateway 10.44.0.1; name its "
              "interface, or give one an address on that network");
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", {"10.0.0.1"}); }),
              "the gateway 10.0.0.1 is an address of this switch");
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", {"2001:db8::9"}); }),
              "the gateway 2001:db8::9 is of another family than 10.7.0.0/16");
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", {"224.0.0.1"}); }),
              "224.0.0.1 is not the address of one interface");
    EXPECT_EQ(problem([this] { route("10.7.0.0/16", Lines(65, "10.0.0.9")); }),
              "10.7.0.0/16 has 65 next hops; the chip's groups have room for 64");
    EXPECT_EQ(problem([this] {
                  routing.add_route({1, {ip("10.7.0.0"), 16}, {{}}});
              }),
              "a next hop is a gateway, an interface, or both; this one is neither");
    EXPECT_TRUE(routing.routes().empty());
}

TEST_F(TunnelRoutes, HaveAnInitiatorWhileTheyAreUp)
{
    EXPECT_EQ(initiator(), "index 1 10.0.0.1 -> 10.9.0.1");
    route("10.9.0.0/16", {"10.0.1.9"});
    EXPECT_EQ(initiator(), "index 1 10.0.1.1 -> 10.9.0.1");
    layer.bring_up(interface("Tunnel1"));
    routing.sync();
    EXPECT_EQ(initiator(), "index 1 10.0.1.1 -> 10.9.0.1");
    EXPECT_EQ(hardware.chip.l3_interfaces.find(interface("Tunnel1").lif->iif())->tunnel, 1);
    take_down("Tunnel1");
    EXPECT_EQ(hardware.chip.tunnels.size(), 0U);
}

TEST_F(TunnelRoutes, LeaveByTheNextHopToTheirEnd)
{
    route("10.7.0.0/16", {"Tunnel1"});
    EXPECT_EQ(to("10.7.0.0/16"), "CPU of Tunnel1");
    EXPECT_FALSE(routing.gateway_of(1, ip("10.7.0.1")));
    route("10.9.0.0/16", {"10.0.1.9", "10.0.3.9"});
    EXPECT_EQ(*routing.gateway_of(1, ip("10.7.0.1")), ip("10.0.1.9"));
    know("Ethernet4", "10.0.1.9", 2);
    EXPECT_EQ(to("10.7.0.0/16"), "Tunnel1 02:00:00:00:00:02 port 2 vlan 4094");
    routing.remove_neighbor("Ethernet4", ip("10.0.1.9"));
    know("Ethernet4.10", "10.0.3.9", 3);
    EXPECT_EQ(to("10.7.0.0/16"), "Tunnel1 02:00:00:00:00:03 port 2 vlan 10");
}

TEST_F(TunnelRoutes, WhoseEndIsBehindThemselvesLeadNowhere)
{
    route("10.9.0.0/16", {"Tunnel1"});
    EXPECT_EQ(to("10.9.0.0/16"), "CPU of Tunnel1");
    EXPECT_FALSE(routing.gateway_of(1, ip("10.9.0.7")));
}

TEST_F(SmallTables, TakeWhatTheyCanAndTheRestIsTold)
{
    EXPECT_EQ(hardware.chip.routes.size(), 18U);
    know("Ethernet0", "10.0.0.9", 1);
    EXPECT_EQ(routing.problems(), Lines{});
    know("Ethernet4", "10.0.1.9", 2);
    know("PortChannel1", "10.0.2.9", 3);
    EXPECT_EQ(routing.problems(),
              (Lines{"neighbor 10.0.2.9 of PortChannel1: egress object table full: 19 of 19",
                     "neighbor 10.0.1.9 of Ethernet4: route table full: 19 of 19"}));
    routing.remove_neighbor("Ethernet0", ip("10.0.0.9"));
    EXPECT_EQ(to("10.0.1.9/32"), "Ethernet4 02:00:00:00:00:02 port 2");
}

TEST_F(OthersRoutes, AreReplacedInPlaceAndWhatTheyLedToStays)
{
    int egress = 0;
    hardware.chip.egresses.create({.interface = 3, .port = 9}, egress);
    const auto key = chip::ip4_key(1, 0x0a070000, 0xffff0000);
    hardware.chip.routes.create(key, {0x100, egress, false});
    routing.sync();
    EXPECT_EQ(hardware.chip.routes.find(key)->next_hop, egress);
    route("10.7.0.0/16", {"10.0.0.9"});
    EXPECT_EQ(to("10.7.0.0/16"), "CPU of Ethernet0");
    EXPECT_NE(hardware.chip.egresses.find(egress), nullptr);
    routing.remove_route(1, {ip("10.7.0.0"), 16});
    EXPECT_EQ(to("10.7.0.0/16"), "");
    EXPECT_NE(hardware.chip.egresses.find(egress), nullptr);
}

TEST_F(OthersRoutes, ThatTookThePlaceOfOursStay)
{
    route("10.7.0.0/16", {"10.0.0.9"});
    int egress = 0;
    hardware.chip.egresses.create({.interface = 3, .port = 9}, egress);
    hardware.chip.routes.set(chip::ip4_key(1, 0x0a070000, 0xffff0000), {0, egress, false});
    auto other = config;
    other.static_routes.clear();
    routing.configure(other);
    routing.sync();
    EXPECT_EQ(to("10.7.0.0/16"), "Ethernet0 00:00:00:00:00:00 port 9");
}

TEST_F(Writers, AreNamed)
{
    hardware.chip.track_authors();
    const auto authors = [this](std::string_view table, int id) {
        return hardware.chip.authors.of(table, fmt::to_string(id));
    };
    know("Ethernet0", "10.0.0.9", 1);
    EXPECT_EQ(authors("egress", routing.egress_of(routing.neighbors().front())),
              Lines{"neighbor 10.0.0.9 of Ethernet0"});
    know("Ethernet4", "10.0.1.9", 2);
    route("10.7.0.0/16", {"10.0.0.9", "10.0.1.9"});
    EXPECT_EQ(authors("multipath_group", chip::FIRST_MULTIPATH_GROUP), Lines{"route 10.7.0.0/16"});
    EXPECT_EQ(hardware.chip.authors.of("route", "vrf 1 10.7.0.0/16"), Lines{"route 10.7.0.0/16"});
}
