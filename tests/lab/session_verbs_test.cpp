/*
 * session_verbs_test.cpp: the commands of a session that are on no interface or
 * address: the switch's IPv6, faults, showing, saving, help, the end; and how a
 * line finds its command.
 */
#include "session_run.h"

#include "session/verbs.h"
#include "up_run.h"

#include <gtest/gtest.h>

#include <string>

namespace lab_test
{

namespace
{

using SessionVerbs = SessionTest;

TEST_F(SessionVerbs, EmptyLinesAndCommentsDoNothing)
{
    for (const std::string line : {"", "   \t", "# a comment", "\r"}) {
        const auto outcome = run(line);
        EXPECT_EQ(outcome.summary + outcome.shown, "");
        EXPECT_FALSE(outcome.quit);
    }
}

TEST_F(SessionVerbs, AnUnknownCommandGetsTheNearest)
{
    EXPECT_EQ(problem("shwo ports"), "usage: unknown command 'shwo': did you mean 'show'?");
    EXPECT_EQ(problem("banana"), "usage: unknown command 'banana'");
}

TEST_F(SessionVerbs, ArgumentsAreCounted)
{
    EXPECT_EQ(problem("set Ethernet0 vrf"), "usage: missing arguments: set NAME PROPERTY VALUE");
    EXPECT_EQ(problem("save now"), "usage: too many arguments: save");
    EXPECT_EQ(problem("up"), "usage: missing arguments: up FILE [open]");
}

TEST_F(SessionVerbs, Ipv6OfTheSwitchIsSwitched)
{
    run_all({"ipv6 on"});
    expect_met({"switch control 89 = 1", "field-group 13 state = on"});
    run_all({"ipv6 off"});
    expect_met({"switch control 89 = 0", "field-group 13 state = off"});
    EXPECT_EQ(problem("ipv6 maybe"), "usage: unknown word 'maybe' (on or off)");
    run("fail bcm_switch_control_set -3");
    EXPECT_TRUE(run("ipv6 on").refused);
    expect_met({"code = -1", "message \"bcmSwitchNdPktToCpu) failed\""});
}

TEST_F(SessionVerbs, AFaultHitsTheNextCallOnly)
{
    up();
    EXPECT_EQ(run("fail rtifhal_bcm_l3_ingress_create -6").summary, "the next call gives -6");
    const auto outcome = run("set Ethernet0 vrf 9");
    EXPECT_TRUE(outcome.refused);
    EXPECT_EQ(outcome.summary, "refused: code 0, 29 calls");
    EXPECT_EQ(outcome.shown, "    bcm_l3_ing_create(10000000) failed: table full\n");
    run_all({"set Ethernet0 vrf 9"});
}

TEST_F(SessionVerbs, AFaultHitsTheNthCallOrEachOne)
{
    up();
    EXPECT_EQ(run("fail fwmpd_bcm_port_control_set 6 -4").summary, "call 6 from here gives -4");
    run("set Ethernet0 vrf 9");
    expect_met({"call \"fwmpd_bcm_port_control_set(0, 1, 67, 3) = -4\"",
                "call \"fwmpd_bcm_port_control_set(0, 1, 14, 0) = 0\""});
    EXPECT_EQ(run("fail rtifhal_bcm_l3_ingress_create always -6").summary, "each call gives -6");
    EXPECT_TRUE(run("set Ethernet0 vrf 8").refused);
    EXPECT_TRUE(run("set Ethernet0 vrf 8").refused);
    EXPECT_EQ(run("fail off").summary, "all faults are off");
    run_all({"set Ethernet0 vrf 8"});
}

TEST_F(SessionVerbs, AFaultNeedsAFunctionAndACode)
{
    EXPECT_EQ(problem("fail bcm_l3_ingres_create -1"),
              "usage: unknown function 'bcm_l3_ingres_create': did you mean "
              "'rtifhal_bcm_l3_ingress_create'?");
    EXPECT_EQ(problem("fail bcm_trunk_get"),
              "usage: the code is missing that the call fails with, such as -1");
    EXPECT_EQ(problem("fail of"), "usage: unknown function 'of': did you mean 'off'?");
    EXPECT_EQ(problem("fail bcm_trunk_gett"),
              "usage: unknown function 'bcm_trunk_gett': did you mean 'bcm_trunk_get'?");
    EXPECT_EQ(problem("fail bcm_trunk_get alway -1"),
              "usage: which call fails is a number from 1, or 'always', not 'alway': did you mean "
              "'always'?");
    EXPECT_EQ(problem("fail bcm_trunk_get x"), "usage: a code is a number such as -1, not 'x'");
    EXPECT_EQ(problem("fail bcm_trunk_get 99999999999"),
              "usage: a code is a number such as -1, not '99999999999'");
    EXPECT_EQ(problem("fail bcm_trunk_get 0 -1"),
              "usage: which call fails is a number from 1, or 'always', not '0'");
}

TEST_F(SessionVerbs, ShowCallsIsTheLastRequest)
{
    EXPECT_EQ(run("show calls").shown, "nothing was asked of the library yet\n");
    run_all({"ipv6 on"});
    EXPECT_EQ(run("show calls").shown, "ipv6 on: code 0, 4 calls, 0 messages\n"
                                       "    rtifhal_get_bcm_unit(0) = 0\n"
                                       "    bcm_switch_control_set(0, 89, 1) = 0\n"
                                       "    bcm_field_group_enable_get(0, 13) = 0 [enable=0]\n"
                                       "    bcm_field_group_enable_set(0, 13, 1) = 0\n");
    up();
    const std::string shown = run("show calls").shown;
    EXPECT_EQ(shown.substr(0, 52), "up kinds.json\n  add the router MAC: code 1, 6 calls,");
    EXPECT_NE(shown.find("\n  add Ethernet0: code 0, "), std::string::npos);
    EXPECT_NE(shown.find("\n    104 rtifhal_l3_ing_create: "), std::string::npos);
    // Looking is no request.
    EXPECT_EQ(run("show calls").shown, shown);
    EXPECT_EQ(problem("show calls 1"),
              "usage: show calls takes no key: it shows the last command's");
}

TEST_F(SessionVerbs, EachTableIsShown)
{
    up();
    for (const std::string &name : lab::session::show_names()) {
        EXPECT_NE(run("show " + name).shown, "") << name;
    }
    EXPECT_EQ(run("show trunks").shown,
              "TRUNK  NAME             CRITERION  SIZE  FLAGS  MEMBERS\n"
              "    1  PortChannel0001          9     0  0x0    Ethernet8,Ethernet12\n");
    EXPECT_EQ(run("show xlate").shown,
              "ON               VLAN  NEW-VLAN  IIF  INTERFACE\n"
              "Ethernet4          10      4094    7  Ethernet4.10\n"
              "PortChannel0001    20      4094    8  PortChannel0001.20\n");
    EXPECT_EQ(problem("show port"),
              "usage: unknown table 'port': did you mean 'ports'? (known: calls, interfaces, "
              "stations, vlans, ports, trunks, iif, xlate, ingress, egress, routes, neighbors, "
              "vxlan, field, switch, packet)");
}

TEST_F(SessionVerbs, AKeyPicksRows)
{
    up();
    EXPECT_EQ(run("show vlans Vlan100").shown,
              "VLAN  NAME     STG  PORTS  UNTAGGED  INTERFACE  VRF  URPF  FLAGS     CLASS\n"
              " 100  Vlan100    1  0,5    5         Vlan100      1     0  0x400a30  0x6\n");
    EXPECT_EQ(run("show field 13").shown, "GROUP  STATE  PRIORITY  QUALIFIERS  MEANING\n"
                                          "   13  off           0  -           -\n");
    EXPECT_EQ(run("show vlans 300").shown, "no vlans 300\n");
    EXPECT_EQ(problem("show vlans Vlan10"),
              "usage: unknown vlan 'Vlan10': did you mean 'Vlan100'?");
    run_all({"vmac add Vlan100 00:00:5e:00:01:08", "vmac add Ethernet0 00:00:5e:00:01:09"});
    EXPECT_EQ(run("show stations Vlan100").shown,
              "STATION  MAC                VLAN  PORT  FLAGS  OWNER    ROLE\n"
              "      2  00:00:5e:00:01:08   100  -     0x3c   Vlan100  virtual MAC\n");
    expect_met({"station Ethernet0 = 3", "station Vlan100 count = 1", "no station MuxTunnel0"});
    EXPECT_EQ(run("show stations MuxTunnel0").shown, "no stations MuxTunnel0\n");
    // A port that nothing has touched is shown when it is asked for.
    EXPECT_NE(run("show ports 90").shown.find("  90  -"), std::string::npos);
}

TEST_F(SessionVerbs, ANarrowTerminalGetsColumnsBelowTheRows)
{
    up();
    session.set_width(40);
    EXPECT_EQ(run("show trunks").shown, "TRUNK  NAME             CRITERION  SIZE\n"
                                        "    1  PortChannel0001          9     0\n"
                                        "    flags 0x0, members Ethernet8,Ethernet12\n");
    EXPECT_NE(run("help").shown.find("quit\n    ends the session\n"), std::string::npos);
}

TEST_F(SessionVerbs, SaveNeedsAFolder)
{
    EXPECT_EQ(problem("save"),
              "impossible: nothing can be saved: the store is in memory; start with --state DIR");
}

TEST(SessionSave, WritesOutWhatWaitsAndTellsWhatIsStored)
{
    rtifhal_test::reset_library();
    const Folder folder;
    simswitch::Switch hardware({.state_dir = folder.path});
    lab::session::Session session(hardware, folder.path, EXAMPLES);
    session.execute("up kinds.json");
    session.execute("del Ethernet0");
    hardware.wrappers.set_port_control(90, 8, 1);
    const auto outcome = session.execute("save");
    // A subinterface of a port-channel is stored under the port-channel's index.
    EXPECT_EQ(outcome.summary, "1 waiting write written out; " + folder.path.string() +
                                   " holds 5 interfaces and the global configuration");
    EXPECT_EQ(hardware.chip.ports.control(90, 8), 1);
    hardware.wrappers.add_vlan_ports(3000, {1}, {});
    const auto refused = session.execute("save");
    EXPECT_TRUE(refused.refused);
    EXPECT_NE(refused.shown.find("VLAN 3000 does not exist"), std::string::npos) << refused.shown;
}

TEST_F(SessionVerbs, HelpListsAllAndTellsOfOne)
{
    const std::string all = run("help").shown;
    for (const auto &known : lab::session::verbs()) {
        EXPECT_NE(all.find(known.usage), std::string::npos) << known.name;
    }
    EXPECT_EQ(run("help quit").shown, "quit\n    ends the session\n");
    EXPECT_EQ(problem("help sav"), "usage: unknown command 'sav': did you mean 'save'?");
}

TEST_F(SessionVerbs, QuitEndsTheSession)
{
    EXPECT_TRUE(run("quit").quit);
}

} // namespace

} // namespace lab_test
