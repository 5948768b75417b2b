/*
 * session_expect_test.cpp: each form of an expectation: met, not met, and one
 * that makes no sense.
 */
#include "session_run.h"

#include <gtest/gtest.h>

#include <string>

namespace lab_test
{

namespace
{

class SessionExpect : public SessionTest
{
protected:
    SessionExpect() { up(); }
};

TEST_F(SessionExpect, ACellIsComparedByText)
{
    expect_met({"port Ethernet0 interface = Ethernet0", "interface Vlan100 kind = svi",
                "interface Vlan100 kind != port", "trunk 1 members = Ethernet8,Ethernet12"});
    EXPECT_EQ(problem("expect interface Vlan100 kind = port"),
              "unmet: expected interface Vlan100 kind = port seen svi");
    EXPECT_EQ(problem("expect interface Vlan100 kind != svi"),
              "unmet: expected interface Vlan100 kind != svi seen svi");
}

TEST_F(SessionExpect, NumbersAreComparedAsNumbers)
{
    expect_met({"vlan 100 flags = 0x400a30", "vlan 100 flags = 4196912", "vlan 100 stg = 0x1",
                "vlan 100 flags != 0x400a31", "ingress Vlan100 class = 64"});
    EXPECT_EQ(problem("expect vlan 100 flags = 0x8"),
              "unmet: expected vlan 100 flags = 0x8 seen 0x400a30");
}

TEST_F(SessionExpect, AnEmptyCellIsADash)
{
    expect_met({"interface MuxTunnel0 ports = -", "interface MuxTunnel0 ports = \"\"",
                "vlan 101 interface = -"});
    EXPECT_NE(problem("expect vlan 100 interface = -"), "");
}

TEST_F(SessionExpect, WithoutAFieldTheRowsNumberIsCompared)
{
    expect_met({"iif Ethernet0 = 3", "port Ethernet0 = 1", "trunk PortChannel0001 = 1",
                "vlan Vlan100 = 100", "ingress MuxTunnel0 = 9"});
    EXPECT_EQ(problem("expect iif Ethernet0 = 5"), "unmet: expected iif Ethernet0 = 5 seen 3");
}

TEST_F(SessionExpect, AControlIsFoundByItsNumber)
{
    expect_met({"port Ethernet0 control 8 = 1", "port 1 control 67 = 3",
                "port Ethernet4 vlan-control 2 = 1", "port Ethernet0 control 200 = 0",
                "switch control 232 = 1", "switch control 89 = 0"});
    EXPECT_EQ(problem("expect port Ethernet0 control 8 = 0"),
              "unmet: expected port Ethernet0 control 8 = 0 seen 1");
    EXPECT_EQ(problem("expect switch control 232 = 0"),
              "unmet: expected switch control 232 = 0 seen 1");
    EXPECT_EQ(problem("expect port Ethernet0 control = 0"),
              "usage: control needs a number from 0 to 255");
    EXPECT_EQ(problem("expect switch control x = 0"),
              "usage: control needs a number from 0 to 1023");
}

TEST_F(SessionExpect, ARowIsThereOrNot)
{
    expect_met({"vlan 100", "no vlan 300", "no station 02:00:00:00:0b:01", "port CPU"});
    EXPECT_EQ(problem("expect vlan 300"), "unmet: expected vlan 300 seen no vlan 300");
    EXPECT_EQ(problem("expect no vlan 100"), "unmet: expected no vlan 100 seen it is there");
    EXPECT_EQ(problem("expect vlan 300 flags = 0"),
              "unmet: expected vlan 300 flags = 0 seen no vlan 300");
}

TEST_F(SessionExpect, RowsAreCounted)
{
    expect_met({"interface count = 7", "xlate count = 2", "vxlan count = 0",
                "xlate PortChannel0001.20 count = 1", "station 02:00:00:00:0a:01 count = 1",
                "station 02:00:00:00:0b:01 count = 0", "station count != 2"});
    EXPECT_EQ(problem("expect station count = 2"), "unmet: expected station count = 2 seen 1");
}

TEST_F(SessionExpect, OneOfSeveralRowsOfAKeyIsEnough)
{
    run_all({"vmac add Vlan100 00:00:5e:00:01:08", "vmac add Ethernet0 00:00:5e:00:01:08"});
    expect_met({"station 00:00:5e:00:01:08 vlan = 100", "station 00:00:5e:00:01:08 vlan = 4094",
                "station 00:00:5e:00:01:08 vlan != 101"});
    EXPECT_EQ(problem("expect station 00:00:5e:00:01:08 vlan = 101"),
              "unmet: expected station 00:00:5e:00:01:08 vlan = 101 seen 100 and 4094");
}

TEST_F(SessionExpect, TheCodeIsTheLastRequests)
{
    run_all({"set Ethernet0 vrf 5"});
    expect_met({"code = 0", "code != -1"});
    EXPECT_EQ(problem("expect code = -1"), "unmet: expected code = -1 seen code 0");
    EXPECT_EQ(problem("expect no code = 0"),
              "usage: expect no code makes no sense: use != in place of =");
    run("fail rtifhal_bcm_l3_ingress_get_from_cache -1");
    EXPECT_TRUE(run("set Vlan100 vrf 5").refused);
    expect_met({"code = -1", "code != 0"});
}

TEST_F(SessionExpect, ACallIsFoundByFunctionOrBeginning)
{
    run_all({"set Ethernet0 vrf 5"});
    expect_met(
        {"call fwmpd_bcm_port_control_set", "call \"fwmpd_bcm_port_control_set(0, 1, 8, 1) = 0\"",
         "call \"fwmpd_bcm_port_control_set(0, 1\"", "no call bcm_vlan_create",
         "no call \"fwmpd_bcm_port_control_set(0, 2\"", "call fwmpd_bcm_port_control_set count = 6",
         "call \"fwmpd_bcm_port_control_set(0, 1, 67\" count = 1"});
    EXPECT_EQ(problem("expect call bcm_vlan_create"),
              "unmet: expected call bcm_vlan_create seen 29 calls, none of bcm_vlan_create");
    EXPECT_EQ(problem("expect call \"rtifhal_bcm_l3_ingress_create(1\""),
              "unmet: expected call rtifhal_bcm_l3_ingress_create(1 seen \n"
              "      rtifhal_bcm_l3_ingress_create(0, {flags=0x6 vrf=5 urpf=0 class=64 ipmc=0 "
              "qos=0}, 3) = 0");
    EXPECT_NE(problem("expect no call fwmpd_bcm_port_control_set"), "");
    EXPECT_NE(problem("expect call fwmpd_bcm_port_control_set count = 5"), "");
}

TEST_F(SessionExpect, AMisspeltFunctionIsNoAbsentCall)
{
    EXPECT_EQ(problem("expect no call bcm_vlan_craete"),
              "usage: unknown function 'bcm_vlan_craete': did you mean 'bcm_vlan_create'?");
    EXPECT_EQ(problem("expect call"),
              "usage: expect call needs a function's name, or the beginning of a call");
    EXPECT_EQ(problem("expect call bcm_vlan_create often"),
              "usage: behind a call stands nothing, or count = N");
}

TEST_F(SessionExpect, AMessageHoldsAText)
{
    run_all({"set Ethernet0 vrf 5"});
    expect_met({"message \"Reusing l3a_intf_id\"", "no message \"failed\""});
    EXPECT_EQ(problem("expect message \"a b\""),
              "unmet: expected message \"a b\" seen 18 messages, none with that text; no error");
    EXPECT_NE(problem("expect no message \"Reusing\""), "");
    EXPECT_EQ(problem("expect message"), "usage: expect message needs one text, in quotes");
    EXPECT_EQ(problem("expect message \"\""), "usage: expect message needs one text, in quotes");
}

TEST_F(SessionExpect, ANumberStandsForSomethingOrForNothing)
{
    expect_met({"explain iif 3", "explain vlan 100", "explain station 1", "explain port 1",
                "explain egress 100000", "no explain iif 12", "no explain vlan 300",
                "no explain egress 5"});
    EXPECT_EQ(problem("expect explain iif 12"),
              "unmet: expected explain iif 12 seen interface number 12 stands for nothing: the "
              "nearest is 9 (MuxTunnel0)");
    EXPECT_EQ(problem("expect no explain iif 9").substr(0, 62),
              "unmet: expected no explain iif 9 seen iif 9: MuxTunnel0, tunne");
}

TEST_F(SessionExpect, AnExplanationHasATextInALine)
{
    expect_met({"explain iif 7 \"iif 7: Ethernet4.10, subinterface, up\"",
                "explain iif 7 \"translation Ethernet4 VLAN 10\"",
                "explain iif 7 \"  ingress object   7 VRF default\"",
                "explain iif 7 \"add Ethernet4.10\"", "explain vlan 100 \"what it is\"",
                "no explain iif 7 Ethernet0", "no explain iif 12 Ethernet0"});
    // Titles of columns and the note at the end are no lines of it.
    expect_met({"no explain iif 7 OBJECT", "no explain vlan 1 \"written before a restart\""});
    EXPECT_EQ(problem("expect explain station 1 banana"),
              "unmet: expected explain station 1 banana seen \n"
              "      station 1: router MAC 02:00:00:00:0a:01\n"
              "      what it is\n"
              "      station 1 flags 0x1c mac 02:00:00:00:0a:01/ff:ff:ff:ff:ff:ff vlan 0/0x0 port "
              "0/0x0 add router MAC 02:00:00:00:0a:01\n"
              "      what depends on it\n"
              "      L3 interface 3 Ethernet0 has its MAC add Ethernet0\n"
              "      L3 interface 4 Ethernet4 has its MAC add Ethernet4\n"
              "      L3 interface 5 PortChannel0001 has its MAC add Ethernet8 to PortChannel0001\n"
              "      L3 interface 6 Vlan100 has its MAC add Vlan100\n"
              "      L3 interface 7 Ethernet4.10 has its MAC add Ethernet4.10\n"
              "      L3 interface 8 PortChannel0001.20 has its MAC add PortChannel0001.20\n"
              "      L3 interface 9 MuxTunnel0 has its MAC add MuxTunnel0, tunnel MuxTunnel0");
    EXPECT_NE(problem("expect no explain iif 7 \"add Ethernet4.10\""), "");
    // It follows the switch.
    run_all({"del Ethernet4.10"});
    expect_met({"no explain iif 7 \"translation Ethernet4 VLAN 10\""});
}

TEST_F(SessionExpect, AnExplanationNeedsAKindAndANumber)
{
    const std::string usage = "usage: expect explain needs a kind and a number, and perhaps a text "
                              "of one of the lines, in quotes, as in: expect explain iif 3 "
                              "\"Ethernet0\"";
    for (const std::string line : {"expect explain", "expect no explain", "expect explain iif",
                                   "expect explain iif 3 \"\"", "expect explain iif 3 two words"}) {
        EXPECT_EQ(problem(line), usage) << line;
    }
    EXPECT_EQ(problem("expect explain bird 3").substr(0, 6), "usage:");
    EXPECT_EQ(problem("expect explain iif x").substr(0, 6), "usage:");
    EXPECT_EQ(problem("expect explian iif 3"),
              "usage: unknown subject 'explian': did you mean 'explain'?");
}

TEST_F(SessionExpect, WhatMakesNoSenseIsToldAndWhatToDo)
{
    EXPECT_EQ(problem("expect no"),
              "usage: expect needs what is expected, such as: expect code = 0");
    EXPECT_EQ(problem("expect vlans 100"), "usage: unknown subject 'vlans': did you mean 'vlan'?");
    EXPECT_EQ(problem("expect vlan"), "usage: expect vlan needs a key, or count");
    EXPECT_EQ(problem("expect vlan = 1"), "usage: expect vlan needs a key, or count");
    EXPECT_EQ(problem("expect vlan count"), "usage: put '=' and a number behind count");
    EXPECT_EQ(problem("expect vlan 100 flags 8"),
              "usage: put '=' and a value behind it, as in: expect vlan 100 flags = …");
    EXPECT_EQ(problem("expect iif Ethernet0 == 3"),
              "usage: a value is compared by = or !=, not by '=='");
    EXPECT_EQ(problem("expect vlan 100 flags > 8"),
              "usage: a value is compared by = or !=, not by '>'");
    EXPECT_EQ(problem("expect vlan 100 flags ="), "usage: a value is missing behind '='");
    EXPECT_EQ(problem("expect vlan 100 flags = 8 9"),
              "usage: one value stands behind '=': put one with blanks in quotes");
    EXPECT_EQ(problem("expect no vlan 100 flags = 8"),
              "usage: 'no' goes with a key alone: use != in place of =");
    EXPECT_EQ(problem("expect vlan Vlan300 flags = 8"),
              "usage: unknown vlan 'Vlan300': did you mean 'Vlan100'?");
    EXPECT_EQ(problem("expect no interface Ethernet44"),
              "usage: unknown interface 'Ethernet44': did you mean 'Ethernet4'?");
    EXPECT_EQ(problem("expect ingress Ethernet0 fags = 8"),
              "usage: unknown field 'fags': did you mean 'flags'? (fields of ingress: iif, "
              "interface, flags, vrf, urpf, class, ipmc, qos)");
    // Also where there is no such row.
    EXPECT_NE(problem("expect vlan 300 fags = 8").find("unknown field"), std::string::npos);
    EXPECT_NE(problem("expect vlan 100 flags 3 = 8").find("'3' is too much"), std::string::npos);
}

TEST(SessionExpectFirst, NothingWasAskedYet)
{
    rtifhal_test::reset_library();
    simswitch::Switch hardware;
    lab::session::Session session(hardware);
    EXPECT_THROW(session.execute("expect code = 0"), lab::session::UsageError);
    EXPECT_THROW(session.execute("expect no message x"), lab::session::UsageError);
}

} // namespace

} // namespace lab_test
