/*
 * session_vxlan_test.cpp: VXLAN ports in a session.
 */
#include "session_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace lab_test
{

namespace
{

using simswitch::chip::Kind;
using testing::HasSubstr;

class SessionVxlan : public SessionTest, public ::testing::WithParamInterface<Kind>
{
protected:
    SessionVxlan() : SessionTest({.chip = GetParam()}) { up(); }

    const std::string add_one = "vxlan add Vlan100 vpn 28673 vni 5000 port Ethernet16 vlan 100";
};

TEST_P(SessionVxlan, APortIsMadeShownAndRemoved)
{
    EXPECT_EQ(run(add_one).summary, "done, 1 call, VXLAN port 1 of VPN 28673");
    expect_met({"code = 0", "vxlan count = 1", "vxlan 1 vpn = 28673", "vxlan 1 vni = 5000",
                "vxlan 1 port = Ethernet16", "vxlan 1 vlan = 100", "vxlan 1 interface = Vlan100",
                "vxlan 1 egress = Vlan100", "vxlan 1 iif = 6", "vxlan 1 ifindex = 0x30000064",
                "vxlan 1 mc = 0", "vxlan 1 criteria = 0", "vxlan 1 flags = 0",
                "vxlan Vlan100 vni = 5000"});
    EXPECT_EQ(run("show vxlan").shown,
              "ID    VPN   VNI  PORT        VLAN  INTERFACE  EGRESS   MC   CRITERIA  FLAGS\n"
              " 1  28673  5000  Ethernet16   100  Vlan100    Vlan100  0x0         0  0x0\n");
    EXPECT_EQ(run("vxlan del 28673 1").summary, "done, 1 call");
    expect_met({"no vxlan 1", "vxlan count = 0"});
    EXPECT_EQ(run("show vxlan").shown, "no VXLAN ports\n");
    // Its id is free again.
    EXPECT_EQ(run(add_one).summary, "done, 1 call, VXLAN port 1 of VPN 28673");
}

TEST_P(SessionVxlan, AllThatCanBeGivenArrives)
{
    run_all({"vxlan add Ethernet0 flags 0x20 vlan 0 criteria 3 mc 0xc000001 egress PortChannel0001 "
             "port Ethernet20 vni 0xFFFFFF vpn 4294967295"});
    expect_met(
        {"vxlan 1 vpn = 4294967295", "vxlan 1 vni = 16777215", "vxlan 1 port = Ethernet20",
         "vxlan 1 vlan = 0", "vxlan 1 interface = Ethernet0", "vxlan 1 egress = PortChannel0001",
         "vxlan 1 iif = 5", "vxlan 1 mc = 0xc000001", "vxlan 1 criteria = 3",
         "vxlan 1 flags = 0x20",
         "message \"match_port 0x6match_vlan 0 vpn id 0xFFFFFFFF vn_id 16777215 "
         "bcm_mc_index 0xC000001criteria 3 flags 0x20 if_index 0x10000000 egr_obj intf 5\""});
}

TEST_P(SessionVxlan, CallsAndMessagesAreTheRequests)
{
    run_all({add_one});
    EXPECT_EQ(run("show calls").shown,
              add_one +
                  ": code 0, 1 call, 1 message\n"
                  "    rtifhal_bcm_vxlan_port_create(0, 0x30000064, vpn 28673 vn 5000 port 5 vlan "
                  "100 criteria 0 flags 0x0 egress 6 multicast 0x0 of 0x30000064, 0) = 0 [id=1]\n"
                  "    104 rtifhal_trident_vxlan_port_create: rtifhal_trident_vxlan_port_create: "
                  "Creating vxlan virtual port match_port 0x5match_vlan 100 vpn id 0x7001 vn_id "
                  "5000 bcm_mc_index 0x0criteria 0 flags 0x0 if_index 0x30000064 egr_obj intf 6\n");
    run_all({"vxlan del 28673 1"});
    EXPECT_EQ(run("show calls").shown, "vxlan del 28673 1: code 0, 1 call, 0 messages\n"
                                       "    rtifhal_bcm_vxlan_port_delete(0, 28673, 1, 0) = 0\n");
}

TEST_P(SessionVxlan, WhatTheChipRefusesIsTold)
{
    run_all({add_one});
    const auto same = run("vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 100");
    EXPECT_TRUE(same.refused);
    EXPECT_EQ(same.summary, "refused: code -8, 1 call");
    EXPECT_THAT(same.shown, HasSubstr(") = -8: VXLAN port 1 matches the same\n"));
    EXPECT_THAT(run("vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 4096").shown,
                HasSubstr(") = -4: VLAN 4096 is not in 0..4095\n"));
    EXPECT_EQ(run("vxlan del 28673 2").shown, "    rtifhal_bcm_vxlan_port_delete(0, 28673, 2, 0) "
                                              "= -7: VXLAN port 2 does not exist\n");
    EXPECT_THAT(run("vxlan del 7 1").shown,
                HasSubstr(" = -7: VXLAN port 1 is in VPN 28673, not in 7\n"));
    expect_met({"code = -7", "vxlan count = 1"});
    // Other criteria: it matches something else.
    run_all({"vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 100 criteria 1"});
}

TEST_P(SessionVxlan, FaultsHitIt)
{
    run_all({"fail rtifhal_bcm_vxlan_port_create -6"});
    const auto full = run(add_one);
    EXPECT_EQ(full.summary, "refused: code -6, 1 call");
    EXPECT_THAT(full.shown, HasSubstr(") = -6: injected\n"));
    expect_met({"vxlan count = 0"});
    run_all({add_one, "fail rtifhal_bcm_vxlan_port_delete -1"});
    EXPECT_EQ(run("vxlan del 28673 1").summary, "refused: code -1, 1 call");
    expect_met({"vxlan 1"});
}

TEST_P(SessionVxlan, AnInterfaceThatWentIsANumber)
{
    run_all({"vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 1", "del Ethernet0"});
    expect_met({"vxlan 1 interface = Ethernet0", "vxlan 1 egress = \"#3\""});
    EXPECT_EQ(
        problem("vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 2"),
        "impossible: Ethernet0 has no number in the chip, by which frames could leave: add it "
        "first");
    run_all({"vxlan add Ethernet0 vpn 1 vni 1 port Ethernet16 vlan 2 egress Ethernet4"});
}

TEST_P(SessionVxlan, WhatMakesNoSenseIsRefused)
{
    const std::string form = "and its value are missing: vxlan add NAME vpn N vni N port PORT vlan "
                             "N [egress NAME] [mc N] [criteria N] [flags N]";
    EXPECT_EQ(problem("vxlan add"),
              "usage: missing arguments: vxlan add NAME KEY VALUE … | del VPN ID");
    EXPECT_EQ(problem("vxlan ad Vlan100 vpn"),
              "usage: unknown word 'ad': did you mean 'add'? (add or del)");
    EXPECT_EQ(problem("vxlan add Vlan100 vpm 1"),
              "usage: unknown key 'vpm': did you mean 'vpn'? (keys: vpn, vni, port, vlan, egress, "
              "mc, criteria, flags)");
    EXPECT_EQ(problem("vxlan add Vlan100 vpn"), "usage: a value is missing behind 'vpn'");
    EXPECT_EQ(problem("vxlan add Vlan100 vpn 1 vpn 2"), "usage: 'vpn' stands there twice");
    EXPECT_EQ(problem("vxlan add Vlan100 vpn 1"), "usage: 'vni' " + form);
    EXPECT_EQ(problem("vxlan add Vlan100 vpn 1 vni 2 vlan 3"), "usage: 'port' " + form);
    EXPECT_EQ(problem("vxlan add Vlan10 vpn 1 vni 2 port Ethernet0 vlan 3"),
              "usage: unknown interface 'Vlan10': did you mean 'Vlan100'?");
    EXPECT_EQ(problem("vxlan add Vlan100 vpn 1 vni 2 port Ethernet17 vlan 3"),
              "usage: unknown port 'Ethernet17': did you mean 'Ethernet12'?");
    EXPECT_EQ(problem(add_one + " egress Etherne0"),
              "usage: unknown interface 'Etherne0': did you mean 'Ethernet0'?");
    EXPECT_EQ(problem("vxlan del 1 2 3"), "usage: too many arguments: vxlan del VPN ID");
    EXPECT_EQ(problem("vxlan del 1 x"), "usage: the port's id is a number from 0 to 4294967295, "
                                        "decimal or 0x hex, not 'x'");
    expect_met({"vxlan count = 0"});
}

TEST_P(SessionVxlan, NumbersHaveTheirRange)
{
    const auto with = [this](const std::string &vni, const std::string &vlan) {
        return problem("vxlan add Vlan100 vpn 1 vni " + vni + " port Ethernet0 vlan " + vlan);
    };
    const std::string tail = ", decimal or 0x hex, not '";
    EXPECT_EQ(with("16777216", "1"),
              "usage: vni is a number from 0 to 16777215" + tail + "16777216'");
    EXPECT_EQ(with("-1", "1"), "usage: vni is a number from 0 to 16777215" + tail + "-1'");
    EXPECT_EQ(with("0x", "1"), "usage: vni is a number from 0 to 16777215" + tail + "0x'");
    EXPECT_EQ(with("0x1g", "1"), "usage: vni is a number from 0 to 16777215" + tail + "0x1g'");
    EXPECT_EQ(with("0x100000001", "1"),
              "usage: vni is a number from 0 to 16777215" + tail + "0x100000001'");
    EXPECT_EQ(with("1", "65536"), "usage: vlan is a number from 0 to 65535" + tail + "65536'");
    EXPECT_EQ(problem("expect vxlan Vlan10 vni = 1"),
              "usage: unknown vxlan 'Vlan10': did you mean 'Vlan100'?");
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionVxlan, ::testing::Values(Kind::trident, Kind::trident2));

} // namespace

} // namespace lab_test
