/*
 * vlan_refusal_test.cpp: adding a port to a VLAN, step by step where the chip
 * refuses: what stops it, what it leaves behind, what the report says.
 *
 * vlan_create_test.cpp has the roads without a refusal.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::vlan_refusal
{

using namespace vlan_road;

namespace
{

const std::string CREATE = "rtifhal_vlan_create";

class VlanRefusal : public VlanTest
{
protected:
    /** The create of VLAN 100 on port 5 fails with that report alone, after `last`. */
    void expect_stop(const std::string &last, const std::string &text)
    {
        EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), -1);
        EXPECT_EQ(calls().back(), last);
        expect_reports({report(CREATE, text)});
    }
};

} // namespace

TEST_F(VlanRefusal, RefusedVlanStopsAtOnce)
{
    routed_ports({PORT});
    fail("bcm_vlan_create", -6);
    expect_stop("bcm_vlan_create(0, 100) = -6",
                fmt::format("vlan_create(100) failed: {}\n", _shr_errmsg[6]));
    EXPECT_FALSE(holds(PORT, VLAN));
}

TEST_F(VlanRefusal, PositiveAnswerToTheVlanCreateIsARefusal)
{
    routed_ports({PORT});
    fail("bcm_vlan_create", 1);
    expect_stop("bcm_vlan_create(0, 100) = 1",
                fmt::format("vlan_create(100) failed: {}\n", _shr_errmsg[19]));
}

TEST_F(VlanRefusal, NoGroupLeftStopsTheRoutedVlan)
{
    fail("fwmpd_allocate_stg", 1);
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), -1);
    expect_calls(join({creates(ROUTED), Calls{"fwmpd_allocate_stg(4094) = 1"}}));
    expect_reports({report(CREATE, "fwmpd_allocate_stg failed for vlan:4094 port:5\n")});
    EXPECT_EQ(l3_stg_allocated, 0U);
}

TEST_F(VlanRefusal, GroupThatRefusesTheRoutedVlanStopsWithATraceAlone)
{
    fail("bcm_stg_vlan_add", -7);
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), -1);
    EXPECT_EQ(calls().back(), "bcm_stg_vlan_add(0, 2, 4094) = -7");
    expect_messages({
        trace(CREATE, "vlan 4094 port 5\n"),
        trace(CREATE, "fwmpd_allocate_stg allocated stg: 2 vlan 4094 port 5\n"),
        trace(CREATE, "bcm_stg_vlan_add failed for vlan:4094 stg:2   :-7\n"),
    });
    EXPECT_EQ(l3_stg_allocated, 0U);
}

TEST_F(VlanRefusal, PositiveAnswerOfTheRoutedVlansGroupIsARefusal)
{
    fail("bcm_stg_vlan_add", 1);
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), -1);
    EXPECT_EQ(messages().back(),
              trace(CREATE, "bcm_stg_vlan_add failed for vlan:4094 stg:2   :1\n"));
}

TEST_F(VlanRefusal, GroupIsAllocatedAgainAfterItRefused)
{
    fail("bcm_stg_vlan_add", -7);
    rtifhal_vlan_create(0, ROUTED, PORT);
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    EXPECT_EQ(l3_stg, 3);
}

TEST_F(VlanRefusal, RefusedFlagsStopANewVlan)
{
    routed_ports({PORT});
    fail("bcm_vlan_control_vlan_set", 1); // any nonzero answer is a refusal
    expect_stop("bcm_vlan_control_vlan_set(0, 100, {vrf=0 iif=0 flags=0x278 class=0 urpf=0}) = 1",
                "bcm_vlan_control_vlan_set failed for VLAN: 100\n");
}

TEST_F(VlanRefusal, GroupThatRefusesANewVlanStopsWithATraceAlone)
{
    routed_ports({PORT});
    fail("bcm_stg_vlan_add", 1); // any nonzero answer is a refusal
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), -1);
    EXPECT_EQ(calls().back(), "bcm_stg_vlan_add(0, 2, 100) = 1");
    expect_messages({
        trace(CREATE, "vlan 100 port 5\n"),
        trace(CREATE, "set the flags 0x278\n"),
        trace(CREATE, "bcm_stg_vlan_add failed for vlan:100 stg:2\n"),
    });
}

TEST_F(VlanRefusal, NewVlanThatTheCacheLacksGetsNoFlagsAndStopsAtTheEnd)
{
    routed_ports({PORT});
    sw.journal.arm({.function = "fwmpd_bcm_vlan_control_vlan_get_from_cache", .forever = true});
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), -1);
    const std::string missing = "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) = null";
    expect_calls(join({
        creates(VLAN),
        Calls{missing, FLUSH, "bcm_stg_vlan_add(0, 2, 100) = 0"},
        adds_port(VLAN, PORT, "{}"),
        first_use_calls(VLAN, PORT),
        Calls{missing},
    }));
    expect_reports(
        {report(CREATE, "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) returned NULL\n")});
}

TEST_F(VlanRefusal, RefusedPortLeavesTheTableAlone)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_vlan_port_add", -4);
    expect_stop("fwmpd_bcm_vlan_port_add(0, 100, {0,5}, {}) = -4",
                fmt::format("vlan_port(100,5) failed: {}\n", _shr_errmsg[4]));
    EXPECT_FALSE(holds(PORT, VLAN));
}

TEST_F(VlanRefusal, RefusedForwardingLeavesTheTableAlone)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_port_stp_set", -4);
    expect_stop("fwmpd_bcm_port_stp_set(0, 5, 4) = -4",
                fmt::format("stp set(100,5) failed: {}\n", _shr_errmsg[4]));
    EXPECT_FALSE(holds(PORT, VLAN));
}

TEST_F(VlanRefusal, RefusalLeavesVlanAndMemberInTheChip)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_port_stp_set", -4);
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), -1);
    sw.end_request();
    ASSERT_NE(sw.chip.vlans.find(VLAN), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->members.text(), "{0,5}");
}

TEST_F(VlanRefusal, RefusedForwardingInTheGroupStopsBeforeTheMasks)
{
    vlan_on_port_9();
    fail("fwmpd_bcm_stg_stp_set", -7);
    expect_stop("fwmpd_bcm_stg_stp_set(0, 2, 5, 4) = -7",
                fmt::format("vlan_port(100,5) failed: {}\n", _shr_errmsg[7]));
    EXPECT_TRUE(holds(PORT, VLAN));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(VlanRefusal, ControlsThatCantBeReadStopIt)
{
    routed_ports({PORT});
    fail("bcm_vlan_control_vlan_get", -7);
    expect_stop("bcm_vlan_control_vlan_get(0, 100) = -7",
                " bcm_vlan_control_vlan_get failed for VLAN: 100");
}

TEST_F(VlanRefusal, ControlsThatCantBeWrittenStopIt)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_vlan_control_vlan_set", 1); // any nonzero answer is a refusal
    expect_stop(
        "fwmpd_bcm_vlan_control_vlan_set(0, 100, {vrf=0 iif=0 flags=0x278 class=0 urpf=0}) = 1",
        "bcm_vlan_control_vlan_set failed for VLAN: 100\n");
}

TEST_F(VlanRefusal, PositiveAnswersOfThePortStepsAreNoRefusals)
{
    vlan_on_port_9();
    fail("fwmpd_bcm_vlan_port_add", 1);
    fail("fwmpd_bcm_port_stp_set", 1);
    fail("fwmpd_bcm_stg_stp_set", 1);
    fail("bcm_vlan_control_vlan_get", 1);
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    expect_reports({});
}

} // namespace rtifhal_test::vlan_refusal
