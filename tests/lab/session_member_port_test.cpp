/*
 * session_member_port_test.cpp: a port in VLAN 4094 without an interface, in a
 * session.
 */
#include "rtifhal_kelvo_trident/vlan/accounting.h"
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

class SessionMemberPort : public SessionTest, public ::testing::WithParamInterface<Kind>
{
protected:
    SessionMemberPort() : SessionTest({.chip = GetParam()}) { up(); }
};

TEST_P(SessionMemberPort, APortGoesInAndOut)
{
    expect_met({"port Ethernet16 untagged = 100", "vlan 4094 untagged = 1-4"});
    EXPECT_EQ(run("member-port Ethernet16").summary, "done, 13 calls");
    expect_met({"code = 0", "port Ethernet16 untagged = 4094", "vlan 4094 untagged = 1-5",
                "call \"fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = 0\"",
                "call \"fwmpd_bcm_port_stp_set(0, 5, 4) = 0\"", "no call fwmpd_allocate_stg",
                "port Ethernet16 interface = -"});
    EXPECT_EQ(run("member-port Ethernet16 clear").summary, "done, 14 calls");
    expect_met({"code = 0", "port Ethernet16 untagged = 4094", "vlan 4094 untagged = 1-4",
                "call \"fwmpd_bcm_vlan_port_remove(0, 4094, {5}) = 0\"",
                "call \"fwmpd_bcm_port_stp_set(0, 5, 0) = 0\"",
                "call \"fwmpd_bcm_stg_stp_set(0, 1, 5, 1) = 0\""});
    // Nothing was counted.
    EXPECT_EQ(rtifhal_port_vlan[5].vlan_bitmap[4094 / 8], 0);
}

TEST_P(SessionMemberPort, WhatIsNoPortReachesTheLibraryAsMinusOne)
{
    const auto svi = run("member-port Vlan100");
    EXPECT_TRUE(svi.refused);
    EXPECT_EQ(svi.shown,
              "    stp set(4094,-1) failed: value out of range\n"
              "    Vlan100 is no port: the library goes on all the same, with the number -1\n");
    EXPECT_THAT(run("member-port PortChannel0001").shown, HasSubstr("PortChannel0001 is no port"));
    EXPECT_THAT(run("member-port PortChannel0001.20").shown, HasSubstr(".20 is no port"));
    EXPECT_THAT(run("member-port MuxTunnel0").shown, HasSubstr("MuxTunnel0 is no port"));
    // A subinterface has the type and the port of its port.
    run_all({"member-port Ethernet4.10"});
    expect_met({"call \"fwmpd_bcm_port_stp_set(0, 2, 4) = 0\""});
}

TEST_P(SessionMemberPort, EachStepIsReported)
{
    const auto refused = [this](const std::string &fault, const std::string &line) {
        run_all({"fail " + fault + " -6"});
        const auto outcome = run(line);
        EXPECT_TRUE(outcome.refused) << fault;
        expect_met({"code = -1"});
        return outcome.shown;
    };
    EXPECT_EQ(refused("fwmpd_bcm_vlan_port_add", "member-port Ethernet16"),
              "    vlan_port(4094,5) failed: table full\n");
    EXPECT_EQ(refused("fwmpd_bcm_port_stp_set", "member-port Ethernet16"),
              "    stp set(4094,5) failed: table full\n");
    EXPECT_EQ(refused("fwmpd_bcm_port_untagged_vlan_set", "member-port Ethernet16"),
              "    pvid set(4094,5) failed: table full\n");
    EXPECT_EQ(refused("fwmpd_bcm_vlan_control_vlan_get_from_cache", "member-port Ethernet16"),
              "    fwmpd_bcm_vlan_control_vlan_get_from_cache(4094) returned NULL\n");
    EXPECT_EQ(refused("bcm_vlan_control_vlan_get", "member-port Ethernet16"),
              "    bcm_vlan_control_vlan_get failed for VLAN: 4094\n");
    EXPECT_EQ(refused("fwmpd_bcm_vlan_control_vlan_set", "member-port Ethernet16"),
              "    bcm_vlan_control_vlan_set failed for VLAN: 4094\n");
    EXPECT_EQ(refused("fwmpd_bcm_vlan_port_remove", "member-port Ethernet16 clear"),
              "    vlan_port(4094,5) failed: table full\n");
    EXPECT_EQ(refused("fwmpd_bcm_port_stp_set", "member-port Ethernet16 clear"),
              "    port stp set(4094,5) failed: table full\n");
    EXPECT_EQ(refused("fwmpd_bcm_stg_stp_set", "member-port Ethernet16 clear"),
              "    stp set(4094,5) failed: table full\n");
}

TEST_P(SessionMemberPort, GroupThatTheVlanDoesNotTakeIsToldByItsCall)
{
    // As it is before the first routed port: that failure is no error message of the library.
    l3_stg_allocated = 0;
    run_all({"fail bcm_stg_vlan_add -7"});
    const auto outcome = run("member-port Ethernet16");
    EXPECT_TRUE(outcome.refused);
    EXPECT_THAT(outcome.shown, HasSubstr("    bcm_stg_vlan_add(0, "));
    EXPECT_THAT(outcome.shown, HasSubstr(", 4094) = -7: injected\n"));
    expect_met({"code = -1", "message \"bcm_stg_vlan_add failed for vlan:4094 stg:\""});
}

TEST_P(SessionMemberPort, WhatMakesNoSenseIsRefused)
{
    EXPECT_EQ(problem("member-port"), "usage: missing arguments: member-port NAME [clear]");
    EXPECT_EQ(problem("member-port Ethernet16 claer"),
              "usage: unknown word 'claer': did you mean 'clear'? (clear, or nothing)");
    EXPECT_EQ(problem("member-port Ethernet17"),
              "usage: unknown port or interface 'Ethernet17': did you mean 'Ethernet12'?");
    EXPECT_EQ(problem("member-port Vlan10"),
              "usage: unknown port or interface 'Vlan10': did you mean 'Vlan100'?");
}

INSTANTIATE_TEST_SUITE_P(BothChips, SessionMemberPort,
                         ::testing::Values(Kind::trident, Kind::trident2));

TEST_F(SessionTest, MemberPortNeedsAConfiguration)
{
    EXPECT_EQ(problem("member-port Ethernet16"),
              "impossible: no configuration is up: begin with 'up FILE'");
}

} // namespace

} // namespace lab_test
