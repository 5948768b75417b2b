/*
 * session_interfaces_test.cpp: bringing a configuration up in a session, and
 * its interfaces down and up again.
 */
#include "session_run.h"

#include "l3lif/leftovers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lab_test
{

namespace
{

// In the order in which they can go: what stands on another first.
const std::vector<std::string> DOWN_ORDER = {"MuxTunnel0", "PortChannel0001.20", "Ethernet4.10",
                                             "Vlan100",    "PortChannel0001",    "Ethernet4",
                                             "Ethernet0"};

using SessionInterfaces = SessionTest;

TEST_F(SessionInterfaces, UpBringsAllOfAConfigurationUp)
{
    const auto outcome = run("up kinds.json");
    EXPECT_EQ(outcome.summary, "7 of 7 interfaces up, 594 calls");
    EXPECT_EQ(outcome.shown, "");
    EXPECT_FALSE(outcome.refused);
    expect_met({"interface count = 7", "interface Ethernet0 state = up", "station count = 1"});
}

TEST_F(SessionInterfaces, UpTellsRowsThatAreNotTaken)
{
    const auto outcome = run("up leaf.json");
    EXPECT_NE(outcome.summary.find("1 row not taken"), std::string::npos) << outcome.summary;
    EXPECT_NE(outcome.shown.find("LOOPBACK_INTERFACE \"Loopback0\""), std::string::npos);
}

TEST_F(SessionInterfaces, UpIsRefusedWhenAnInterfaceIs)
{
    run("fail rtifhal_bcm_l3_intf_create -6");
    const auto outcome = run("up kinds.json");
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.summary.substr(0, 38), "refused: code -1, 6 of 7 interfaces up");
    EXPECT_NE(outcome.shown.find("add Ethernet0: rtifhal_bcm_l3_intf_create(0x10000000) failed"),
              std::string::npos)
        << outcome.shown;
    expect_met({"interface Ethernet0 state = failed", "code = -1"});
}

TEST_F(SessionInterfaces, UpOfAFileThatCantBeUsedLeavesTheSessionAsItWas)
{
    EXPECT_EQ(problem("up nowhere.json"), "impossible: " + (EXAMPLES / "nowhere.json").string() +
                                              ": cannot be read: No such file or directory");
    EXPECT_EQ(problem("add Ethernet0"), "impossible: no configuration is up: begin with 'up FILE'");
    up();
}

TEST_F(SessionInterfaces, ASessionHasOneConfiguration)
{
    up();
    EXPECT_EQ(problem("up leaf.json"), "impossible: " + (EXAMPLES / "kinds.json").string() +
                                           " is up already: a session has one configuration");
}

TEST_F(SessionInterfaces, AllGoForGoodAndLeaveNothingBehind)
{
    const auto before = lab::l3lif::look(hardware);
    up();
    for (const std::string &name : DOWN_ORDER) {
        run_all({"del " + name});
        expect_met({"interface " + name + " state = down", "no ingress " + name});
    }
    run_all({"rmac del 02:00:00:00:0a:01"});
    // The VLANs are the L2 side's and stay.
    auto left = lab::l3lif::left_behind(before, hardware);
    std::erase_if(
        left, [](const std::string &line) { return line.find("VLAN 10") != std::string::npos; });
    EXPECT_EQ(left, std::vector<std::string>{});
}

TEST_F(SessionInterfaces, AllComeBackUnderNewNumbersAfterADelete)
{
    up();
    for (const std::string &name : DOWN_ORDER) {
        run_all({"del " + name});
    }
    for (auto name = DOWN_ORDER.rbegin(); name != DOWN_ORDER.rend(); ++name) {
        run_all({"add " + *name});
        expect_met({"interface " + *name + " state = up"});
    }
    expect_met({"iif Ethernet0 = 10", "iif 3 state = \"held back\"",
                "xlate PortChannel0001.20 iif != 8", "port Ethernet8 interface = PortChannel0001"});
}

TEST_F(SessionInterfaces, AllComeBackUnderTheirNumbersAfterADeleteThatKeeps)
{
    up();
    for (const std::string &name : DOWN_ORDER) {
        run_all({"del " + name + " keep"});
        expect_met({"interface " + name + " state = " + (name == "MuxTunnel0" ? "down" : "kept")});
    }
    for (auto name = DOWN_ORDER.rbegin(); name != DOWN_ORDER.rend(); ++name) {
        run_all({"add " + *name});
        expect_met({"interface " + *name + " state = up"});
    }
    expect_met({"iif Ethernet0 = 3", "iif Ethernet4 = 4", "iif PortChannel0001 = 5",
                "iif Vlan100 = 6", "iif Ethernet4.10 = 7", "iif PortChannel0001.20 = 8",
                "port Ethernet12 iif = 5", "xlate PortChannel0001.20 iif = 8", "vlan 100 iif = 6"});
}

TEST_F(SessionInterfaces, WhatIsKeptCanGoForGoodAfterAll)
{
    const auto before = lab::l3lif::look(hardware);
    up();
    for (const std::string &name : DOWN_ORDER) {
        run_all({"del " + name + " keep"});
    }
    for (const std::string &name : DOWN_ORDER) {
        if (name != "MuxTunnel0") {
            run_all({"del " + name});
        }
        expect_met({"interface " + name + " state = down"});
    }
    const auto left = lab::l3lif::left_behind(before, hardware);
    for (const std::string &line : left) {
        EXPECT_TRUE(line.find("VLAN 10") != std::string::npos ||
                    line.find("station") != std::string::npos)
            << line;
    }
    expect_met({"ingress count = 0", "iif Ethernet0 count = 0"});
}

TEST_F(SessionInterfaces, ATunnelGoesForGoodWhateverIsAskedFor)
{
    up();
    const auto outcome = run("del MuxTunnel0 keep");
    EXPECT_NE(outcome.summary.find("it is gone for good, as each tunnel is"), std::string::npos);
    expect_met({"interface MuxTunnel0 state = down"});
}

TEST_F(SessionInterfaces, AnAddOfOneThatIsUpProgramsItAgainInPlace)
{
    up();
    run_all({"add Ethernet0"});
    expect_met({"iif Ethernet0 = 3",
                "call \"rtifhal_bcm_l3_intf_create(0, {flags=0x140 id=3 \" count = 1"});
}

TEST_F(SessionInterfaces, WhatIsDownCantGoDown)
{
    up();
    run_all({"del Vlan100 keep"});
    EXPECT_EQ(problem("del Vlan100 keep"), "impossible: Vlan100 is kept already");
    run_all({"del Vlan100"});
    EXPECT_EQ(problem("del Vlan100"), "impossible: Vlan100 is down already");
    EXPECT_EQ(problem("del Vlan100 keep"), "impossible: Vlan100 is down already");
}

TEST_F(SessionInterfaces, SubinterfacesGoBeforeTheirMainInterface)
{
    up();
    EXPECT_EQ(problem("del Ethernet4"),
              "impossible: Ethernet4 has subinterfaces that are up: delete Ethernet4.10 first");
    run_all({"del Ethernet4.10 keep", "del Ethernet4"});
}

TEST_F(SessionInterfaces, AnUnknownNameGetsTheNearest)
{
    up();
    EXPECT_EQ(problem("add Ethernet1"),
              "usage: unknown interface 'Ethernet1': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("del vlan100"),
              "usage: unknown interface 'vlan100': did you mean 'Vlan100'?");
    EXPECT_EQ(problem("del Vlan100 kepe"),
              "usage: unknown word 'kepe': did you mean 'keep'? (keep, or nothing)");
}

TEST_F(SessionInterfaces, ARefusedAddIsToldWithCodeAndErrors)
{
    up();
    run_all({"del Ethernet0", "fail rtifhal_bcm_l3_intf_create -6"});
    const auto outcome = run("add Ethernet0");
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.summary.substr(0, 17), "refused: code -1,");
    EXPECT_NE(outcome.shown.find("itf create("), std::string::npos) << outcome.shown;
    // Nothing is in its way any more.
    run_all({"add Ethernet0"});
    expect_met({"interface Ethernet0 state = up"});
}

TEST_F(SessionInterfaces, DisableStopsRoutingUntilTheNextSet)
{
    up();
    run_all({"disable Ethernet0"});
    expect_met({"ingress Ethernet0 flags = 0x5e2"});
    run_all({"set Ethernet0 vrf 1"});
    expect_met({"ingress Ethernet0 flags = 6"});
}

TEST_F(SessionInterfaces, DisableWithMplsTakesItOffTheVlanForGood)
{
    up();
    run_all({"set Vlan100 mpls on"});
    expect_met({"vlan 100 flags = 0x400830"});
    run_all({"disable Vlan100"});
    expect_met(
        {"vlan 100 flags = 0x400a30", "ingress Vlan100 flags = 0x5e2", "no message \"failure\""});
    run_all({"set Vlan100 vrf 1"});
    expect_met({"vlan 100 flags = 0x400a30", "ingress Vlan100 flags = 6"});
    // That of a routed port is the VLAN of all of them.
    run_all({"set Ethernet0 mpls on"});
    expect_met({"vlan 4094 flags = 0"});
    run_all({"disable Ethernet0", "set Ethernet0 vrf 1"});
    expect_met({"vlan 4094 flags = 0xa00", "port Ethernet0 mpls = 1"});
}

} // namespace

} // namespace lab_test
