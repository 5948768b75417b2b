/*
 * session_routing_test.cpp: the commands on hosts and static routes, what their
 * tables show, and how a configuration is opened for its families.
 */
#include "session/complete.h"
#include "session/words.h"
#include "session_run.h"

using namespace lab_test;
using lab::session::Words;

namespace
{

class SessionRouting : public SessionTest
{
protected:
    SessionRouting() { up(); }
    /** What a line comes to, in its one line. */
    std::string summary(const std::string &line) { return run(line).summary; }
    std::string shown(const std::string &line) { return run(line).shown; }
    Words after(const std::string &line) const
    {
        return lab::session::complete(session.state(), line).words;
    }
};

class SessionWithoutConfig : public SessionTest
{
};

class OpenFamilies : public SessionTest, public ::testing::WithParamInterface<simswitch::chip::Kind>
{
protected:
    OpenFamilies() : SessionTest({.chip = GetParam()}) {}
};

} // namespace

TEST_F(SessionRouting, HostsAndRoutesAreTold)
{
    EXPECT_EQ(summary("neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09"),
              "10.0.0.1 is behind Ethernet0");
    EXPECT_EQ(summary("neighbor add Vlan100 10.1.0.5 02:00:00:00:00:05 Ethernet16"),
              "10.1.0.5 is behind Ethernet16");
    EXPECT_EQ(summary("neighbor add PortChannel0001.20 10.2.0.3 02:00:00:00:00:07"),
              "10.2.0.3 is behind PortChannel0001");
    EXPECT_EQ(summary("route add 0.0.0.0/0 via 10.0.0.1 10.2.0.3"), "0.0.0.0/0 is routed");
    EXPECT_EQ(summary("route add 10.9.0.0/16 blackhole"), "10.9.0.0/16 is a black hole");
    EXPECT_EQ(shown("show neighbors"),
              "ADDRESS   INTERFACE           MAC                PORT             VLAN  EGRESS\n"
              "10.0.0.1  Ethernet0           02:00:00:00:00:09  Ethernet0           -  100012\n"
              "10.1.0.5  Vlan100             02:00:00:00:00:05  Ethernet16          -  100013\n"
              "10.2.0.3  PortChannel0001.20  02:00:00:00:00:07  PortChannel0001     -  100014\n");
    EXPECT_EQ(shown("show routes 0.0.0.0/0"),
              "VRF  PREFIX     NEXT-HOP  INTERFACE                     TO                 FLAGS\n"
              "  1  0.0.0.0/0    200000  Ethernet0,PortChannel0001.20  10.0.0.1,10.2.0.3  0x0\n");
    EXPECT_EQ(shown("show routes 10.9.0.0/16"),
              "VRF  PREFIX       NEXT-HOP  INTERFACE  TO          FLAGS\n"
              "  1  10.9.0.0/16    100015  -          black hole  0x0\n");
    EXPECT_EQ(summary("neighbor del Ethernet0 10.0.0.1"), "10.0.0.1 of Ethernet0 is forgotten");
    EXPECT_EQ(summary("route del 10.9.0.0/16"), "no route 10.9.0.0/16 any more");
    expect_met({"neighbor count = 2", "neighbor 10.1.0.5 port = Ethernet16",
                "neighbor Vlan100 mac = 02:00:00:00:00:05", "no neighbor 10.0.0.1",
                "route 0.0.0.0/0 to = 10.2.0.3", "no route 10.9.0.0/16",
                "egress PortChannel0001.20 port = PortChannel0001"});
}

TEST_F(SessionRouting, RoutesFollowEachRequest)
{
    run_all({"neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09", "del Ethernet0 keep"});
    expect_met({"no route 10.0.0.0/31", "no route 10.0.0.1/32", "neighbor 10.0.0.1 egress = -"});
    run_all({"add Ethernet0"});
    expect_met({"route 10.0.0.0/31 to = CPU", "route 10.0.0.1/32 to = 10.0.0.1"});
    run_all({"set Ethernet0 vrf 5"});
    expect_met({"route 10.0.0.1/32 vrf = 5", "route 10.0.0.1/32 count = 1"});
    run_all({"route add 10.9.0.0/16 vrf 5 via 10.0.0.1", "route add 10.8.0.0/16 via Ethernet4"});
    expect_met({"route 10.9.0.0/16 interface = Ethernet0", "route 10.8.0.0/16 to = CPU"});
}

TEST_F(SessionRouting, AProblemIsToldOnce)
{
    run_all({"neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09"});
    EXPECT_EQ(shown("route add 10.0.0.1/32 via Ethernet4"),
              "    route 10.0.0.1/32: vrf 1 10.0.0.1/32 is there already by 'neighbor 10.0.0.1 of "
              "Ethernet0', which counts\n");
    EXPECT_EQ(shown("set Ethernet4 mtu 9000"), "");
}

TEST_F(SessionRouting, BadNeighbors)
{
    EXPECT_EQ(problem("neighbor add Ethernet1 10.0.0.1 02:00:00:00:00:09"),
              "usage: unknown interface 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("neighbor add Ethernet0 10.0.0 02:00:00:00:00:09"),
              "usage: '10.0.0' is no address like 10.0.0.1 or fc00::1");
    EXPECT_EQ(problem("neighbor add Ethernet0 10.0.0.1"),
              "usage: the neighbour's MAC is missing (neighbor add INTERFACE ADDRESS MAC [PORT])");
    EXPECT_EQ(problem("neighbor add Ethernet0 10.0.0.1 banana"),
              "usage: \"banana\" is no MAC address like 00:11:22:33:44:55");
    EXPECT_EQ(problem("neighbor add Ethernet0 10.0.0.7 02:00:00:00:00:09"),
              "impossible: 10.0.0.7 is on no network of Ethernet0, which has 10.0.0.0/31");
    EXPECT_EQ(problem("neighbor add Vlan100 10.1.0.5 02:00:00:00:00:05 Ethernet12"),
              "usage: unknown port of a VLAN 'Ethernet12': did you mean 'Ethernet16'? (those of "
              "Vlan100 are Ethernet16)");
    EXPECT_EQ(problem("neighbor del Ethernet0 10.0.0.1"),
              "impossible: 10.0.0.1 is no neighbour of Ethernet0; 'show neighbors' has those that "
              "are known");
    EXPECT_EQ(problem("neighbor del Ethernet0 10.0.0.1 02:00:00:00:00:09"),
              "usage: neighbor del takes no 02:00:00:00:00:09: the interface and the address tell "
              "the host");
    EXPECT_EQ(problem("neighbor ad Ethernet0 10.0.0.1"),
              "usage: unknown word 'ad': did you mean 'add'? (add or del)");
}

TEST_F(SessionRouting, BadRoutes)
{
    EXPECT_EQ(problem("route add 10.9/16 via 10.0.0.1"),
              "usage: \"10.9/16\" is no prefix like 10.2.0.0/16 or fc00::/64");
    EXPECT_EQ(problem("route add 10.9.0.0/16"),
              "usage: where the route leads is missing (route add PREFIX [vrf VRF] via NEXT-HOP … "
              "| blackhole)");
    EXPECT_EQ(problem("route add 10.9.0.0/16 vai 10.0.0.1"),
              "usage: unknown word 'vai': did you mean 'via'? (route add PREFIX [vrf VRF] via "
              "NEXT-HOP … | blackhole)");
    EXPECT_EQ(problem("route add 10.9.0.0/16 via"),
              "usage: behind 'via' the next hops are missing: addresses or interfaces");
    EXPECT_EQ(problem("route add 10.9.0.0/16 vrf"), "usage: behind 'vrf' a VRF is missing");
    EXPECT_EQ(problem("route add 10.9.0.0/16 vrf Vrf_rde via 10.0.0.1"),
              "usage: unknown VRF 'Vrf_rde': did you mean 'Vrf_red'?");
    EXPECT_EQ(problem("route add 10.9.0.0/16 vrf 0 via 10.0.0.1"), "usage: unknown VRF '0'");
    EXPECT_EQ(problem("route add 10.9.0.0/16 via 10.0.0.300"),
              "usage: '10.0.0.300' is no next hop: an address, an interface, or "
              "ADDRESS%INTERFACE");
    EXPECT_EQ(problem("route add 10.9.0.0/16 via Ethernet1"),
              "usage: unknown interface 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("route add ::/0 via fe80::1%Ethernet1"),
              "usage: unknown interface 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("route add 10.9.0.0/16 via \"\""), "usage: unknown interface ''");
    EXPECT_EQ(problem("route add 10.9.0.0/16 via 10.44.0.1"),
              "impossible: no interface of the default VRF has a network with the gateway "
              "10.44.0.1; name its interface, or give one an address on that network");
    EXPECT_EQ(problem("route del 10.9.0.0/16"),
              "impossible: there is no static route 10.9.0.0/16 in VRF 1; 'show routes' has what "
              "the chip routes");
    EXPECT_EQ(problem("route del 10.9.0.0/16 via 10.0.0.1"),
              "usage: unknown word 'via' (route del PREFIX [vrf VRF])");
}

TEST_F(SessionWithoutConfig, ThereAreNoHostsAndRoutes)
{
    EXPECT_EQ(problem("neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09"),
              "impossible: no configuration is up: begin with 'up FILE'");
    EXPECT_EQ(problem("route del 10.9.0.0/16"),
              "impossible: no configuration is up: begin with 'up FILE'");
    EXPECT_EQ(run("show neighbors").shown, "no neighbors\n");
    EXPECT_EQ(problem("up kinds.json opne"),
              "usage: unknown word 'opne': did you mean 'open'? (open, or nothing)");
}

TEST_F(SessionRouting, WordsFollow)
{
    run_all({"neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09",
             "route add 10.9.0.0/16 via 10.0.0.1"});
    EXPECT_EQ(after("neighbor "), (Words{"add", "del"}));
    EXPECT_EQ(after("neighbor add V"), Words{"Vlan100"});
    EXPECT_EQ(after("neighbor del Ethernet0 "), Words{"10.0.0.1"});
    EXPECT_EQ(after("neighbor del Vlan100 "), Words{});
    EXPECT_EQ(after("neighbor add Ethernet0 10.0.0.1 "), Words{"02:00:00:00:00:09"});
    EXPECT_EQ(after("neighbor add Vlan100 10.1.0.5 02:00:00:00:00:05 "), Words{"Ethernet16"});
    EXPECT_EQ(after("neighbor add Ethernet0 10.0.0.1 02:00:00:00:00:09 "), Words{});
    EXPECT_EQ(after("route "), (Words{"add", "del"}));
    EXPECT_EQ(after("route del "), Words{"10.9.0.0/16"});
    EXPECT_EQ(after("route del 10.9.0.0/16 "), Words{"vrf"});
    EXPECT_EQ(after("route add 10.8.0.0/16 "), (Words{"blackhole", "via", "vrf"}));
    EXPECT_EQ(after("route add 10.8.0.0/16 vrf "), (Words{"Vrf_red", "default"}));
    EXPECT_EQ(after("route add 10.8.0.0/16 vrf Vrf_red "), (Words{"blackhole", "via"}));
    EXPECT_EQ(after("route add 10.8.0.0/16 via 10.0.0.1 M"), Words{"MuxTunnel0"});
    EXPECT_EQ(after("route add 10.8.0.0/16 blackhole "), Words{});
    EXPECT_EQ(after("up kinds.json "), Words{"open"});
}

TEST_P(OpenFamilies, AddingAPortOpensItForOneFamily)
{
    run_all({"up leaf.json"});
    expect_met({"port Ethernet48 control 8 = 1", "port Ethernet48 control 9 = 0"});
}

TEST_P(OpenFamilies, WithOpenTheFamiliesOfTheAddressesAre)
{
    run_all({"up leaf.json open"});
    expect_met({"port Ethernet48 control 8 = 1", "port Ethernet48 control 9 = 1",
                "port Ethernet9 control 8 = 1", "port Ethernet9 control 9 = 0",
                "call \"fwmpd_bcm_port_control_set(0, 41, 9, 1) = 0\"",
                "interface PortChannel0001 families = \"ipv4 ipv6\""});
}

INSTANTIATE_TEST_SUITE_P(BothChips, OpenFamilies,
                         ::testing::Values(simswitch::chip::Kind::trident,
                                           simswitch::chip::Kind::trident2));
