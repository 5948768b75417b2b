/*
 * session_addresses_test.cpp: router MACs, virtual MACs and private-VLAN pairs
 * of a session.
 */
#include "session_run.h"

#include <gtest/gtest.h>

namespace lab_test
{

namespace
{

using SessionAddresses = SessionTest;

TEST_F(SessionAddresses, ARouterMacComesAndGoes)
{
    const auto outcome = run("rmac add 02:00:00:00:0b:01");
    EXPECT_EQ(outcome.summary, "done, 6 calls, station 1");
    EXPECT_FALSE(outcome.refused);
    expect_met(
        {"station 02:00:00:00:0b:01 role = \"router MAC\"", "code = 1", "port 0 control 8 = 1"});
    EXPECT_EQ(problem("rmac add 02:00:00:00:0b:01"),
              "impossible: 02:00:00:00:0b:01 is a router MAC already, at station 1");
    run_all({"rmac del 02:00:00:00:0b:01"});
    expect_met({"station count = 0", "port 0 control 8 = 0"});
}

TEST_F(SessionAddresses, ARouterMacThatTheChipDoesntTakeIsRefused)
{
    run("fail bcm_l2_station_add -6");
    const auto outcome = run("rmac add 02:00:00:00:0b:01");
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.summary, "refused: code 65535, 6 calls");
    EXPECT_EQ(problem("rmac del 02:00:00:00:0b:01"),
              "impossible: 02:00:00:00:0b:01 is no router MAC; there is none");
}

TEST_F(SessionAddresses, OnlyRouterMacsCanBeRemoved)
{
    up();
    EXPECT_EQ(problem("rmac del 02:00:00:00:0b:01"),
              "impossible: 02:00:00:00:0b:01 is no router MAC; those are 02:00:00:00:0a:01");
}

TEST_F(SessionAddresses, AMacIsSixBytesAndNoGroup)
{
    up();
    EXPECT_EQ(problem("rmac add 02:00"),
              "usage: \"02:00\" is no MAC address like 00:11:22:33:44:55");
    EXPECT_EQ(problem("vmac add Vlan100 01:00:5e:00:00:01"),
              "usage: 01:00:5e:00:00:01 is a group address; an interface needs one of its own");
    EXPECT_EQ(problem("rmac ad 02:00:00:00:0b:01"),
              "usage: unknown word 'ad': did you mean 'add'? (add or del)");
}

TEST_F(SessionAddresses, AVirtualMacComesAndGoesOnEachKindOfInterface)
{
    up();
    run_all({"vmac add Vlan100 00:00:5e:00:01:08", "vmac add Ethernet0 00:00:5e:00:01:08",
             "vmac add Ethernet4.10 00:00:5e:00:01:08",
             "vmac add PortChannel0001 00:00:5e:00:01:08"});
    expect_met({"station 00:00:5e:00:01:08 count = 4", "station 2 owner = Vlan100",
                "station 2 vlan = 100", "station 2 role = \"virtual MAC\"",
                "station 3 port = Ethernet0", "station 3 vlan = 4094",
                "station 4 owner = Ethernet4.10"});
    run_all({"vmac del Ethernet0 00:00:5e:00:01:08", "vmac del Vlan100 00:00:5e:00:01:08"});
    expect_met({"station 00:00:5e:00:01:08 count = 2", "no station 2", "no station 3"});
    // One that isn't there is no failure of the library.
    run_all({"vmac del Vlan100 00:00:5e:00:01:08"});
}

TEST_F(SessionAddresses, APairMirrorsTheRouterIntoTheSecondary)
{
    up();
    run_all({"vmac add Vlan100 00:00:5e:00:01:08", "pvlan add Vlan100 101"});
    expect_met({"vlan 101 iif = 6", "vlan 101 interface = Vlan100", "station 3 role = mirrored",
                "station 3 vlan = 101", "station 3 owner = Vlan100"});
    run_all({"pvlan del 100 Vlan101"});
    expect_met({"vlan 101 iif = 0", "no station 3", "station 2"});
    // The VLANs are ordinary ones again.
    run_all({"del Vlan100", "pvlan add 101 100", "pvlan del 101 100"});
}

TEST_F(SessionAddresses, APairIsMadeOfVlansThatCanBeOne)
{
    run("up campus.json");
    const std::string taken = "impossible: ";
    EXPECT_EQ(problem("pvlan add 101 101"), taken + "VLAN 101 can't be its own secondary");
    EXPECT_EQ(problem("pvlan add 2800 2801"), taken + "VLANs 2800 and 2801 are a pair already");
    EXPECT_EQ(problem("pvlan add 2900 2801"),
              taken + "VLAN 2801 is a secondary of VLAN 2800 already");
    EXPECT_EQ(problem("pvlan add 2801 101"), taken + "VLAN 2801 is a secondary already");
    EXPECT_EQ(problem("pvlan add 101 2800"), taken + "VLAN 2800 is a primary already");
    EXPECT_EQ(problem("pvlan del 101 2801"), taken + "VLANs 101 and 2801 are no pair");
}

TEST_F(SessionAddresses, AVlanIsOneOfTheConfiguration)
{
    EXPECT_EQ(problem("pvlan add 100 101"),
              "impossible: no configuration is up: begin with 'up FILE'");
    up();
    const std::string file = (EXAMPLES / "kinds.json").string();
    EXPECT_EQ(problem("pvlan add 100 300"),
              "usage: unknown VLAN '300' (those of " + file + " can be used)");
    EXPECT_EQ(problem("pvlan add Vlan10 101"),
              "usage: unknown VLAN 'Vlan10': did you mean 'Vlan100'? (those of " + file +
                  " can be used)");
}

} // namespace

} // namespace lab_test
