/*
 * routing_test.cpp: the routes that follow interfaces and hosts: connected
 * networks, own addresses, neighbours of each kind of interface, and what the
 * routing layer tells of them.
 */
#include "routing_switch.h"

#include <fmt/format.h>

using namespace lab_test;
using lab::routing::OwnAddress;

namespace
{

class Connected : public RoutingTest
{
};

class Neighbors : public RoutingTest
{
};

class Queries : public RoutingTest
{
};

/** A gateway's MAC on Vlan100, a group's addresses on two interfaces. */
class VirtualAddresses : public RoutingTest
{
protected:
    VirtualAddresses()
        : RoutingTest({}, R"(, "VRRP": {"Ethernet0|8": {"vip": ["10.0.0.254"]},
              "Vlan200|9": {"vip": ["10.3.0.1", "10.3.0.254"]}})")
    {
    }
    /** "10.0.0.1/24 of Ethernet0 by 02:…". */
    Lines addresses(std::string_view interface) const
    {
        Lines lines;
        for (const OwnAddress &own : routing.addresses()) {
            if (own.interface == interface) {
                lines.push_back(own.prefix.text() + " " + lab::config::mac_text(own.mac));
            }
        }
        return lines;
    }
};

/** Hosts of the file, one of whom a static entry places. */
class FileNeighbors : public RoutingTest
{
protected:
    FileNeighbors()
        : RoutingTest({}, R"(, "NEIGH": {"Ethernet0|10.0.0.9": {"neigh": "02:00:00:00:00:09"},
              "Vlan100|10.1.0.8": {"neigh": "02:00:00:00:00:08"},
              "Vlan100|10.1.0.7": {"neigh": "02:00:00:00:00:07"}},
              "FDB": {"Vlan101|02:00:00:00:00:08": {"port": "Ethernet24"}})")
    {
    }
};

} // namespace

TEST_F(Connected, NetworksAndOwnAddressesLeadToTheCpu)
{
    EXPECT_EQ(routing.problems(), Lines{});
    EXPECT_EQ(
        routes(),
        (Lines{"vrf 1 10.0.0.0/24: CPU of Ethernet0", "vrf 1 10.0.0.1/32: CPU of Ethernet0",
               "vrf 1 10.0.1.0/24: CPU of Ethernet4", "vrf 1 10.0.1.1/32: CPU of Ethernet4",
               "vrf 1 10.0.2.0/24: CPU of PortChannel1", "vrf 1 10.0.2.1/32: CPU of PortChannel1",
               "vrf 1 10.0.3.0/24: CPU of Ethernet4.10", "vrf 1 10.0.3.1/32: CPU of Ethernet4.10",
               "vrf 1 10.0.4.0/24: CPU of PortChannel1.20",
               "vrf 1 10.0.4.1/32: CPU of PortChannel1.20", "vrf 1 10.1.0.0/24: CPU of Vlan100",
               "vrf 1 10.1.0.1/32: CPU of Vlan100", "vrf 1 10.3.0.0/24: CPU of Vlan200",
               "vrf 1 10.3.0.1/32: CPU of Vlan200", "vrf 1 2001:db8::/64: CPU of Ethernet0",
               "vrf 1 2001:db8::1/128: CPU of Ethernet0", "vrf 2 10.0.0.0/24: CPU of Ethernet28",
               "vrf 2 10.0.0.1/32: CPU of Ethernet28"}));
}

TEST_F(Connected, ASecondSyncWritesNothing)
{
    know("Ethernet0", "10.0.0.9", 9);
    know("Ethernet4", "10.0.1.9", 9);
    route("0.0.0.0/0", {"10.0.0.9", "10.0.1.9"});
    route("10.8.0.0/16", {});
    route("10.7.0.0/16", {"Tunnel1"});
    const auto before = writes();
    routing.sync();
    EXPECT_EQ(writes(), before);
}

TEST_F(Connected, RoutesGoWithTheirInterfaceAndComeBackWithIt)
{
    know("Ethernet0", "10.0.0.9", 9);
    const Lines before = routes();
    take_down("Ethernet0");
    EXPECT_EQ(to("10.0.0.0/24"), "");
    EXPECT_EQ(to("10.0.0.1/32"), "");
    EXPECT_EQ(to("10.0.0.9/32"), "");
    EXPECT_EQ(to("10.0.1.0/24"), "CPU of Ethernet4");
    layer.bring_up(interface("Ethernet0"));
    routing.sync();
    EXPECT_EQ(routes(), before);
}

TEST_F(Connected, NothingIsLeftWhenAllIsDown)
{
    know("Ethernet0", "10.0.0.9", 9);
    know("Ethernet4", "10.0.1.9", 9);
    route("10.7.0.0/16", {"10.0.0.9", "10.0.1.9"});
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 1U);
    EXPECT_EQ(hardware.chip.tunnels.size(), 1U);
    layer.take_down();
    routing.sync();
    EXPECT_EQ(routes(), Lines{});
    EXPECT_EQ(hardware.chip.egresses.size(), 0U);
    EXPECT_EQ(hardware.chip.multipath_groups.size(), 0U);
    EXPECT_EQ(hardware.chip.tunnels.size(), 0U);
    EXPECT_EQ(routing.addresses(), std::vector<OwnAddress>{});
}

TEST_F(Connected, TheVrfIsTheChips)
{
    know("Ethernet0", "10.0.0.9", 9);
    const int iif = interface("Ethernet0").lif->iif();
    auto object = *hardware.chip.l3_interfaces.find(iif);
    object.vrf = 7;
    hardware.chip.l3_interfaces.set(iif, object);
    routing.sync();
    EXPECT_EQ(to("10.0.0.9/32"), "");
    const Lines all = routes();
    EXPECT_EQ(Lines(all.end() - 5, all.end()),
              (Lines{"vrf 7 10.0.0.0/24: CPU of Ethernet0", "vrf 7 10.0.0.1/32: CPU of Ethernet0",
                     "vrf 7 10.0.0.9/32: Ethernet0 02:00:00:00:00:09 port 1",
                     "vrf 7 2001:db8::/64: CPU of Ethernet0",
                     "vrf 7 2001:db8::1/128: CPU of Ethernet0"}));
}

TEST_F(Connected, TheFirstOfTwoInterfacesWithANetworkHasIt)
{
    const int iif = interface("Ethernet28").lif->iif();
    auto object = *hardware.chip.l3_interfaces.find(iif);
    object.vrf = 1;
    hardware.chip.l3_interfaces.set(iif, object);
    routing.sync();
    EXPECT_EQ(to("10.0.0.0/24"), "CPU of Ethernet0");
    EXPECT_EQ(routing.problems(),
              (Lines{"address 10.0.0.1 of Ethernet28: vrf 1 10.0.0.1/32 is there already by "
                     "'address 10.0.0.1 of Ethernet0', which counts",
                     "connected Ethernet28: vrf 1 10.0.0.0/24 is there already by 'connected "
                     "Ethernet0', which counts"}));
}

TEST_F(VirtualAddresses, AreAnsweredForByTheirMac)
{
    EXPECT_EQ(addresses("Ethernet0"),
              (Lines{"10.0.0.1/24 02:00:00:00:0a:01", "2001:db8::1/64 02:00:00:00:0a:01",
                     "10.0.0.254/32 00:00:5e:00:01:08"}));
    EXPECT_EQ(addresses("Vlan200"),
              (Lines{"10.3.0.1/24 00:00:5e:00:01:09", "10.3.0.254/32 00:00:5e:00:01:09"}));
    EXPECT_EQ(to("10.0.0.254/32"), "CPU of Ethernet0");
}

TEST_F(VirtualAddresses, GoWithTheMac)
{
    const auto plan = layer.virtual_macs().front().plan;
    layer.remove_virtual_mac(plan);
    routing.sync();
    EXPECT_EQ(to("10.0.0.254/32"), "");
    EXPECT_EQ(addresses("Ethernet0"),
              (Lines{"10.0.0.1/24 02:00:00:00:0a:01", "2001:db8::1/64 02:00:00:00:0a:01"}));
}

TEST_F(Neighbors, OfEachKindOfInterface)
{
    know("Ethernet0", "10.0.0.9", 1);
    know("Ethernet0", "2001:db8::9", 1);
    know("PortChannel1", "10.0.2.9", 2);
    know("Ethernet4.10", "10.0.3.9", 3);
    know("PortChannel1.20", "10.0.4.9", 4);
    know("Vlan100", "10.1.0.9", 5, "Ethernet20");
    know("Vlan100", "10.1.0.8", 6, "Ethernet24");
    EXPECT_EQ(to("10.0.0.9/32"), "Ethernet0 02:00:00:00:00:01 port 1");
    EXPECT_EQ(to("2001:db8::9/128"), "Ethernet0 02:00:00:00:00:01 port 1");
    EXPECT_EQ(to("10.0.2.9/32"), "PortChannel1 02:00:00:00:00:02 trunk 1");
    EXPECT_EQ(to("10.0.3.9/32"), "Ethernet4.10 02:00:00:00:00:03 port 2");
    EXPECT_EQ(to("10.0.4.9/32"), "PortChannel1.20 02:00:00:00:00:04 trunk 1");
    EXPECT_EQ(to("10.1.0.9/32"), "Vlan100 02:00:00:00:00:05 port 6");
    EXPECT_EQ(to("10.1.0.8/32"), "Vlan100 02:00:00:00:00:06 port 7 vlan 101");
    EXPECT_EQ(routing.problems(), Lines{});
    EXPECT_EQ(routing.port_of(routing.neighbors().back()), "Ethernet24");
}

TEST_F(Neighbors, ANewMacIsWrittenInPlace)
{
    know("Ethernet0", "10.0.0.9", 1);
    const int egress = routing.egress_of(routing.neighbors().front());
    const auto routes_before = hardware.chip.routes.generation();
    know("Ethernet0", "10.0.0.9", 2);
    EXPECT_EQ(to("10.0.0.9/32"), "Ethernet0 02:00:00:00:00:02 port 1");
    EXPECT_EQ(routing.neighbors().size(), 1U);
    EXPECT_EQ(routing.egress_of(routing.neighbors().front()), egress);
    EXPECT_EQ(hardware.chip.routes.generation(), routes_before);
}

TEST_F(Neighbors, AForgottenOneLeavesNothing)
{
    const std::size_t egresses = hardware.chip.egresses.size();
    know("Ethernet0", "10.0.0.9", 1);
    EXPECT_TRUE(routing.remove_neighbor("Ethernet0", ip("10.0.0.9")));
    EXPECT_EQ(to("10.0.0.9/32"), "");
    EXPECT_EQ(hardware.chip.egresses.size(), egresses);
    EXPECT_FALSE(routing.remove_neighbor("Ethernet0", ip("10.0.0.9")));
}

TEST_F(Neighbors, OfAVlanAreWhereTheTrafficSaysOrWhereTheyMustBe)
{
    know("Vlan200", "10.3.0.9", 3); // the VLAN has one port
    EXPECT_EQ(to("10.3.0.9/32"), "Vlan200 02:00:00:00:00:03 port 9");
    EXPECT_EQ(problem([this] { know("Vlan100", "10.1.0.9", 5); }),
              "nobody knows behind which port of Vlan100 02:00:00:00:00:05 is: name one of "
              "Ethernet16, Ethernet20, Ethernet24");
    pipeline.l2().learn(100, {2, 0, 0, 0, 0, 5}, simswitch::chip::module_port(0, 5));
    know("Vlan100", "10.1.0.9", 5);
    EXPECT_EQ(to("10.1.0.9/32"), "Vlan100 02:00:00:00:00:05 port 5");
    pipeline.l2().learn(100, {2, 0, 0, 0, 0, 5}, simswitch::chip::module_port(0, 6));
    routing.sync();
    EXPECT_EQ(to("10.1.0.9/32"), "Vlan100 02:00:00:00:00:05 port 6");
    pipeline.l2().flush();
    pipeline.l2().learn(101, {2, 0, 0, 0, 0, 5}, simswitch::chip::module_port(0, 7));
    routing.sync();
    EXPECT_EQ(to("10.1.0.9/32"), "Vlan100 02:00:00:00:00:05 port 7 vlan 101");
    pipeline.l2().flush();
    routing.sync();
    EXPECT_EQ(to("10.1.0.9/32"), "");
    EXPECT_EQ(routing.problems(),
              Lines{"neighbor 10.1.0.9 of Vlan100: nobody knows behind which port of Vlan100 "
                    "02:00:00:00:00:05 is: name one of Ethernet16, Ethernet20, Ethernet24"});
}

TEST_F(Neighbors, OnALinkAloneHaveNoRoute)
{
    const Lines before = routes();
    know("Ethernet0", "fe80::9", 9);
    EXPECT_EQ(routes(), before);
    EXPECT_NE(routing.egress_of(routing.neighbors().front()), 0);
}

TEST_F(Neighbors, ThatCantBe)
{
    EXPECT_EQ(problem([this] { know("Ethernet1", "10.0.0.9", 1); }),
              "unknown: unknown interface 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem([this] { know("Tunnel1", "10.0.0.9", 1); }),
              "Tunnel1 is a tunnel: it has no neighbours, a route leads into it");
    EXPECT_EQ(problem([this] { know("Ethernet0", "224.0.0.9", 1); }),
              "224.0.0.9 is not the address of one interface");
    EXPECT_EQ(problem([this] { know("Ethernet0", "10.0.0.1", 1); }),
              "10.0.0.1 is Ethernet0's own address; a neighbour has another");
    EXPECT_EQ(problem([this] { know("Ethernet0", "10.0.1.9", 1); }),
              "10.0.1.9 is on no network of Ethernet0, which has 10.0.0.0/24, 2001:db8::/64");
    EXPECT_EQ(problem([this] { know("Ethernet0", "10.0.0.9", 1, "Ethernet0"); }),
              "only a neighbour of a VLAN interface has a port: leave out Ethernet0");
    EXPECT_EQ(problem([this] { know("Vlan100", "10.1.0.9", 1, "Ethernet17"); }),
              "unknown: unknown port of a VLAN 'Ethernet17': did you mean 'Ethernet16'? (those of "
              "Vlan100 are Ethernet16, Ethernet20, Ethernet24)");
    EXPECT_EQ(problem([this] {
                  routing.set_neighbor({"Ethernet0", ip("10.0.0.9"), {1, 0, 0, 0, 0, 1}, "", 0});
              }),
              "01:00:00:00:00:01 is not the MAC of one host");
    EXPECT_TRUE(routing.neighbors().empty());
}

TEST_F(FileNeighbors, AreWrittenAndPlacedByStaticEntries)
{
    EXPECT_EQ(to("10.0.0.9/32"), "Ethernet0 02:00:00:00:00:09 port 1");
    EXPECT_EQ(to("10.1.0.8/32"), "Vlan100 02:00:00:00:00:08 port 7 vlan 101");
    EXPECT_EQ(to("10.1.0.7/32"), "");
    EXPECT_EQ(routing.problems(),
              Lines{"neighbor 10.1.0.7 of Vlan100: nobody knows behind which port of Vlan100 "
                    "02:00:00:00:00:07 is: name one of Ethernet16, Ethernet20, Ethernet24"});
    ASSERT_NE(pipeline.l2().find(101, {2, 0, 0, 0, 0, 8}), nullptr);
    EXPECT_TRUE(pipeline.l2().find(101, {2, 0, 0, 0, 0, 8})->is_static);
}

TEST_F(FileNeighbors, AnotherConfigurationTakesTheirPlace)
{
    auto other = config;
    other.neighbors.clear();
    other.static_macs.clear();
    routing.configure(other);
    routing.sync();
    EXPECT_EQ(to("10.0.0.9/32"), "");
    EXPECT_EQ(routing.problems(), Lines{});
    EXPECT_EQ(pipeline.l2().size(), 0U);
}

TEST_F(Queries, OwnAddressesAndNetworks)
{
    EXPECT_EQ(routing.own(1, ip("10.0.0.1"))->interface, "Ethernet0");
    EXPECT_EQ(routing.own(2, ip("10.0.0.1"))->interface, "Ethernet28");
    EXPECT_FALSE(routing.own(1, ip("10.0.0.2")));
    EXPECT_EQ(routing.network_of(1, ip("10.0.3.77"))->interface, "Ethernet4.10");
    EXPECT_EQ(routing.network_of(2, ip("10.0.0.77"))->interface, "Ethernet28");
    EXPECT_FALSE(routing.network_of(1, ip("10.44.0.1")));
    EXPECT_EQ(*routing.gateway_of(1, ip("10.0.3.77")), ip("10.0.3.77"));
    EXPECT_FALSE(routing.gateway_of(1, ip("10.44.0.1")));
}

TEST_F(Queries, ThoseOfInterfacesThatAreDownDontCount)
{
    take_down("Ethernet0");
    EXPECT_FALSE(routing.own(1, ip("10.0.0.1")));
    EXPECT_FALSE(routing.network_of(1, ip("10.0.0.9")));
}

TEST_F(Queries, AGatewayThatIsntKnownComesFirst)
{
    route("10.7.0.0/16", {"10.0.0.9", "10.0.1.9"});
    EXPECT_EQ(*routing.gateway_of(1, ip("10.7.0.1")), ip("10.0.0.9"));
    know("Ethernet0", "10.0.0.9", 9);
    EXPECT_EQ(*routing.gateway_of(1, ip("10.7.0.1")), ip("10.0.1.9"));
    know("Ethernet4", "10.0.1.9", 9);
    EXPECT_EQ(*routing.gateway_of(1, ip("10.7.0.1")), ip("10.0.0.9"));
    route("10.7.1.0/24", {});
    EXPECT_FALSE(routing.gateway_of(1, ip("10.7.1.1")));
}

TEST_F(Queries, ARouteToAnInterfaceAloneReachesDirectly)
{
    route("10.7.0.0/16", {"Ethernet4"});
    EXPECT_EQ(routing.network_of(1, ip("10.7.0.1"))->prefix.address, ip("10.0.1.1"));
    EXPECT_EQ(*routing.gateway_of(1, ip("10.7.0.1")), ip("10.7.0.1"));
    know("Ethernet4", "10.7.0.1", 9);
    EXPECT_EQ(to("10.7.0.1/32"), "Ethernet4 02:00:00:00:00:09 port 2");
}
