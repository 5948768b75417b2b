/*
 * vlan_delete_test.cpp: taking a port out of a VLAN, what a port's last VLAN
 * does to the port, and each step that the chip may refuse.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <sdk/error.h>
#include <sdk/vlan.h>

#include <fmt/format.h>

namespace rtifhal_test::vlan_delete
{

using namespace vlan_road;

namespace
{

const std::string DELETE = "rtifhal_vlan_delete";
const Calls STOPS_FORWARDING = {"fwmpd_bcm_port_stp_set(0, 5, 0) = 0"};

Calls removes_port(int vlan, int port)
{
    return {fmt::format("fwmpd_bcm_vlan_port_remove(0, {}, {{{}}}) = 0", vlan, port)};
}

Messages entered(int vlan)
{
    return {trace(DELETE, fmt::format("vlan {} port 5\n", vlan))};
}

Messages last_vlan()
{
    return {trace(DELETE, "Reset STP state for port 5\n")};
}

/** Puts ports into VLANs through the library. */
void put_into(std::uint16_t vlan, int port)
{
    ASSERT_EQ(rtifhal_vlan_create(0, vlan, port), 0);
}

class VlanDelete : public LibraryTest
{
protected:
    /** Port 5 is in these VLANs, and the routed group is there. */
    void port_in(const std::vector<std::uint16_t> &vlans)
    {
        put_into(ROUTED, 9);
        for (const std::uint16_t vlan : vlans) {
            put_into(vlan, PORT);
        }
        sw.end_request();
        start();
    }
};

class VlanDeleteOnTrident2 : public Trident2Test
{
};

} // namespace

TEST_F(VlanDelete, RoutedVlanAsTheLastOneTakesThePortOutOfRoutedMode)
{
    port_in({ROUTED});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    expect_calls(join({
        removes_port(ROUTED, PORT),
        STOPS_FORWARDING,
        mode_off_calls(Kind::trident, PORT),
    }));
    expect_messages(join({entered(ROUTED), last_vlan(), mode_off_messages(PORT)}));
    EXPECT_FALSE(holds(PORT, ROUTED));
}

TEST_F(VlanDeleteOnTrident2, LastVlanLeavesThePortOpenForVxlan)
{
    put_into(ROUTED, PORT);
    start();
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    expect_calls(join({
        removes_port(ROUTED, PORT),
        STOPS_FORWARDING,
        mode_off_calls(Kind::trident2, PORT),
    }));
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.control(PORT, 187), 1);
}

TEST_F(VlanDelete, LastVlanLeavesTheFloodListsAlone)
{
    port_in({ROUTED});
    rtifhal_vlan_delete(0, PORT, ROUTED);
    const auto &ports = sw.chip.field_entries.find(125)->installed->port_actions.at(32);
    EXPECT_FALSE(ports.has(PORT));
}

TEST_F(VlanDelete, RoutedVlanBesideAnotherLeavesThePortRouted)
{
    port_in({ROUTED, VLAN});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    expect_calls(removes_port(ROUTED, PORT));
    expect_messages(entered(ROUTED));
    EXPECT_TRUE(holds(PORT, VLAN));
}

TEST_F(VlanDelete, RoutedVlanWithoutPortsStandsAndIsNotCounted)
{
    port_in({ROUTED});
    rtifhal_vlan_delete(0, PORT, ROUTED);
    rtifhal_vlan_delete(0, 9, ROUTED);
    sw.end_request();
    ASSERT_NE(sw.chip.vlans.find(ROUTED), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(ROUTED)->members.text(), "{0}");
    EXPECT_EQ(rtifhal_subint_count_vlan(ROUTED), 0);
}

TEST_F(VlanDelete, RoutedVlanGoesPastTheTableOfUsesWhateverItHolds)
{
    port_in({ROUTED});
    rtifhal_vlan_type_count_entry_t &uses = rtifhal_vlan_type_count[ROUTED];
    uses.subint_count = 1;
    uses.l3pbmp.pbits[0] = 1U << PORT;
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_block_set", "fwmpd_bcm_vlan_destroy"}), Calls{});
    EXPECT_EQ(uses.subint_count, 1);
    EXPECT_EQ(uses.l3pbmp.pbits[0], 1U << PORT);
    EXPECT_EQ(uses.svi + uses.l2_vlan, 0);
}

TEST_F(VlanDelete, VlanThatThePortDoesNotHoldAsTheLastUserEndsTheVlan)
{
    port_in({ROUTED});
    bcm_vlan_create(0, VLAN);
    start();
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_remove", "fwmpd_bcm_vlan_destroy"}),
              join({removes_port(VLAN, PORT), Calls{"fwmpd_bcm_vlan_destroy(0, 100) = 0"}}));
    EXPECT_TRUE(holds(PORT, ROUTED));
}

TEST_F(VlanDelete, LastPortOfAVlanEndsTheVlan)
{
    port_in({ROUTED, VLAN});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    expect_calls(join({removes_port(VLAN, PORT), last_use_calls(VLAN, PORT)}));
    expect_messages(join({entered(VLAN), last_use_messages(VLAN, PORT)}));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(VLAN), nullptr);
}

TEST_F(VlanDelete, LastVlanOfAPortThatEndsToo)
{
    port_in({VLAN});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    expect_calls(join({
        removes_port(VLAN, PORT),
        STOPS_FORWARDING,
        mode_off_calls(Kind::trident, PORT),
        last_use_calls(VLAN, PORT),
    }));
    expect_messages(
        join({entered(VLAN), last_vlan(), mode_off_messages(PORT), last_use_messages(VLAN, PORT)}));
}

TEST_F(VlanDelete, VlanOfAnotherPortTooStays)
{
    port_in({ROUTED, VLAN});
    put_into(VLAN, 9);
    start();
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    expect_calls(join({
        removes_port(VLAN, PORT),
        Calls{
            "rtifhal_get_bcm_unit(0) = 0",
            "fwmpd_trident_batch_flush() = 0",
            "fwmpd_trident_get_bvbt(100) = record",
            "fwmpd_bcm_vlan_block_set(0, 100, " + masks("{0,9}") + ") = 0",
        },
        popcounts({9}),
    }));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(VlanDelete, VlanThatThePortDoesNotHoldGoesTheSameWay)
{
    port_in({ROUTED});
    put_into(VLAN, 9);
    start();
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    expect_calls(join({
        removes_port(VLAN, PORT),
        Calls{
            "rtifhal_get_bcm_unit(0) = 0",
            "fwmpd_trident_batch_flush() = 0",
            "fwmpd_trident_get_bvbt(100) = record",
            "fwmpd_bcm_vlan_block_set(0, 100, " + masks("{0,9}") + ") = 0",
        },
        popcounts({9}),
    }));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(VlanDelete, PortWithoutAnyVlanIsTakenOutOfRoutedModeAgain)
{
    port_in({});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    expect_calls(join({
        removes_port(ROUTED, PORT),
        STOPS_FORWARDING,
        mode_off_calls(Kind::trident, PORT),
    }));
}

TEST_F(VlanDelete, RefusedRemovalLeavesTheTableAlone)
{
    port_in({ROUTED});
    fail("fwmpd_bcm_vlan_port_remove", -4);
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), -1);
    expect_calls({"fwmpd_bcm_vlan_port_remove(0, 4094, {5}) = -4"});
    expect_reports(
        {report(DELETE, fmt::format("vlan_port(4094, 5) failed: {}\n", _shr_errmsg[4]))});
    EXPECT_TRUE(holds(PORT, ROUTED));
}

TEST_F(VlanDelete, RefusedStateStopsWithTheBitGone)
{
    port_in({VLAN});
    fail("fwmpd_bcm_port_stp_set", -4);
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), -1);
    expect_calls(join({removes_port(VLAN, PORT), Calls{"fwmpd_bcm_port_stp_set(0, 5, 0) = -4"}}));
    expect_reports({report(DELETE, fmt::format("stp set(100,5) failed: {}\n", _shr_errmsg[4]))});
    EXPECT_FALSE(holds(PORT, VLAN));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(VlanDelete, PositiveAnswersAreNoRefusals)
{
    port_in({ROUTED});
    fail("fwmpd_bcm_vlan_port_remove", 1);
    fail("fwmpd_bcm_port_stp_set", 1);
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, ROUTED), 0);
    EXPECT_EQ(calls().back(), "bcm_vlan_control_port_set(0, 5, 4, 0) = 0");
    expect_reports({});
}

TEST_F(VlanDelete, EndThatTheChipRefusesIsNotLookedAt)
{
    port_in({ROUTED, VLAN});
    fail("fwmpd_bcm_vlan_destroy", -7);
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, VLAN), 0);
    expect_reports(
        {report("rtifhal_subintf_block_set",
                fmt::format(" bcm_vlan_destroy failing for vid 100: {}\n", _shr_errmsg[7]))});
}

namespace
{

class PortBeyondTheTable : public VlanDelete, public ::testing::WithParamInterface<int>
{
};

} // namespace

TEST_P(PortBeyondTheTable, HasNoLastVlan)
{
    port_in({});
    const std::string set = GetParam() == 105 ? "{105}" : "{}";
    EXPECT_EQ(rtifhal_vlan_delete(0, GetParam(), ROUTED), 0);
    expect_calls({"fwmpd_bcm_vlan_port_remove(0, 4094, " + set + ") = 0"});
}

TEST_P(PortBeyondTheTable, StillGivesUpItsUse)
{
    port_in({});
    put_into(VLAN, PORT);
    start();
    EXPECT_EQ(rtifhal_vlan_delete(0, GetParam(), VLAN), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_block_set", "fwmpd_bcm_vlan_destroy"}),
              Calls{"fwmpd_bcm_vlan_block_set(0, 100, " + masks("{0,5}") + ") = 0"});
}

INSTANTIATE_TEST_SUITE_P(VlanDelete, PortBeyondTheTable, ::testing::Values(-1, 105, 256, 300));

TEST_F(VlanDelete, VlanBeyondTheTableIsRefusedByThePlatform)
{
    port_in({ROUTED});
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, 4096), -1);
    expect_calls({"fwmpd_bcm_vlan_port_remove(0, 4096, {5}) = -4"});
    EXPECT_TRUE(holds(PORT, ROUTED));
}

TEST_F(VlanDelete, VlanBeyondTheTableThatThePlatformTakesClearsNoBit)
{
    port_in({ROUTED});
    fail("fwmpd_bcm_vlan_port_remove", 0);
    EXPECT_EQ(rtifhal_vlan_delete(0, PORT, 5000), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_stp_set"}), Calls{});
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_block_set"}).size(), 1U);
    EXPECT_TRUE(holds(PORT, ROUTED));
}

} // namespace rtifhal_test::vlan_delete
