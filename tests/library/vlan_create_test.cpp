/*
 * vlan_create_test.cpp: adding a port to a VLAN: VLAN 4094, new VLANs, VLANs
 * that exist, and ports that the tables have no room for.
 *
 * vlan_refusal_test.cpp has the steps that the chip may refuse, vlan_delete_test.cpp
 * the way out, vlan_mode_test.cpp what a port's first VLAN switches.
 */
#include "support/library_test.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_kelvo_trident/vlan/vlan.h"

#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <journal/format.h>
#include <sdk/error.h>
#include <sdk/vlan.h>

#include <fmt/format.h>

namespace rtifhal_test::vlan_create
{

using namespace vlan_road;

namespace
{

const std::string CREATE = "rtifhal_vlan_create";

Calls forwards_in_its_group(int vlan, int port)
{
    return {
        fmt::format("fwmpd_get_vlan_stg({}) = {}", vlan, GROUP),
        fmt::format("fwmpd_bcm_stg_stp_set(0, {}, {}, 4) = 0", GROUP, port),
    };
}

Messages created(int vlan, const std::string &flags)
{
    return {
        trace(CREATE, fmt::format(" Set vlan control for vid: {}, flags: {}\n", vlan, flags)),
        trace(CREATE, fmt::format("Created {} vlan \n", vlan)),
    };
}

class VlanCreate : public VlanTest
{
};

class VlanCreateOnTrident2 : public Trident2Test
{
};

} // namespace

TEST_F(VlanCreate, RoutedVlanGetsItsGroupAndTheFirstPortTurnsRouted)
{
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    expect_calls(join({
        creates(ROUTED),
        Calls{"fwmpd_allocate_stg(4094) = 0 [stg=2]", FLUSH, "bcm_stg_vlan_add(0, 2, 4094) = 0"},
        adds_port(ROUTED, PORT, "{5}"),
        mode_on_calls(Kind::trident, PORT),
        refreshed_controls_calls(ROUTED, "0x0"),
    }));
    expect_messages(join({
        Messages{
            trace(CREATE, "vlan 4094 port 5\n"),
            trace(CREATE, "fwmpd_allocate_stg allocated stg: 2 vlan 4094 port 5\n"),
            trace(CREATE, "bcm_stg_vlan_add Added stg: 2 to vlan 4094 port 5\n"),
        },
        mode_on_messages(Kind::trident, PORT),
        created(ROUTED, "0x0"),
    }));
    EXPECT_EQ(l3_stg, GROUP);
    EXPECT_EQ(l3_stg_allocated, 1U);
    EXPECT_TRUE(holds(PORT, ROUTED));
}

TEST_F(VlanCreateOnTrident2, FirstPortOpensForVxlanToo)
{
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    expect_calls(join({
        creates(ROUTED),
        Calls{"fwmpd_allocate_stg(4094) = 0 [stg=2]", FLUSH, "bcm_stg_vlan_add(0, 2, 4094) = 0"},
        adds_port(ROUTED, PORT, "{5}"),
        mode_on_calls(Kind::trident2, PORT),
        refreshed_controls_calls(ROUTED, "0x0"),
    }));
}

TEST_F(VlanCreate, RoutedVlanOnASecondPortTakesNoSecondGroup)
{
    routed_ports({PORT});
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, 6), 0);
    expect_calls(join({
        creates(ROUTED, -8),
        adds_port(ROUTED, 6, "{6}"),
        mode_on_calls(Kind::trident, 6, {PORT}),
        refreshed_controls_calls(ROUTED, "0x0"),
    }));
}

TEST_F(VlanCreate, RoutedVlanTakesNoGroupWhereOneIsInForce)
{
    l3_stg_allocated = 1; // as after a restart
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    EXPECT_EQ(calls_of({"fwmpd_allocate_stg", "bcm_stg_vlan_add"}), Calls{});
    EXPECT_EQ(l3_stg, 0);
}

TEST_F(VlanCreate, RoutedVlanThatExistsWithoutAGroupGetsOne)
{
    bcm_vlan_create(0, ROUTED);
    start();
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    EXPECT_EQ(calls_of({"bcm_vlan_create", "fwmpd_allocate_stg", "bcm_stg_vlan_add"}),
              (Calls{"bcm_vlan_create(0, 4094) = -8", "fwmpd_allocate_stg(4094) = 0 [stg=2]",
                     "bcm_stg_vlan_add(0, 2, 4094) = 0"}));
}

TEST_F(VlanCreate, CpuIsAddedAsPortZeroWhereverThePlatformHasIt)
{
    routed_ports({PORT});
    fwmpd_asic_cpu_port = 70;
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_vlan_block_set"}),
              (Calls{"fwmpd_bcm_vlan_port_add(0, 100, {0,5}, {}) = 0",
                     "fwmpd_bcm_vlan_block_set(0, 100, " + masks("{5,70}") + ") = 0"}));
}

TEST_F(VlanCreate, RoutedVlanIsNotCountedAndNotBlocked)
{
    routed_ports({PORT, 6});
    EXPECT_EQ(rtifhal_subint_count_vlan(ROUTED), 0);
    const bcm_pbmp_t ports = rtifhal_l3pbmp_vlan(ROUTED);
    EXPECT_EQ(simswitch::format_value(ports), "{}");
}

TEST_F(VlanCreate, OnlyVlanOfAPortAddedAgainSetsTheModeAgain)
{
    routed_ports({PORT});
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, PORT), 0);
    expect_calls(join({
        creates(ROUTED, -8),
        adds_port(ROUTED, PORT, "{5}"),
        mode_on_calls(Kind::trident, PORT, {PORT}),
        refreshed_controls_calls(ROUTED, "0x0"),
    }));
}

TEST_F(VlanCreate, NewVlanJoinsTheRoutedGroupWithItsPortTagged)
{
    routed_ports({PORT});
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    expect_calls(join({
        creates(VLAN),
        becomes_routed(VLAN, "0x278"),
        adds_port(VLAN, PORT, "{}"),
        first_use_calls(VLAN, PORT),
        refreshed_controls_calls(VLAN, "0x278"),
    }));
    expect_messages(join({
        Messages{trace(CREATE, "vlan 100 port 5\n"), trace(CREATE, "set the flags 0x278\n")},
        first_use_messages(VLAN, PORT),
        created(VLAN, "0x278"),
    }));
    EXPECT_TRUE(holds(PORT, VLAN));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(VlanCreate, NewVlanUnderTheSdnAgentKeepsOneFlagLess)
{
    routed_ports({PORT});
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    expect_calls(join({
        creates(VLAN),
        becomes_routed(VLAN, "0x78"),
        adds_port(VLAN, PORT, "{}"),
        first_use_calls(VLAN, PORT),
        refreshed_controls_calls(VLAN, "0x78"),
    }));
}

TEST_F(VlanCreate, AnyNonzeroWordOfTheSdnAgentIsOn)
{
    routed_ports({PORT});
    fwmpd_asic_sdn_agent_enabled = 2;
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_flags, 0x78U);
}

TEST_F(VlanCreate, NewVlanKeepsTheFlagsThatTheCacheHas)
{
    routed_ports({PORT});
    fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_flags = 0x8001;
    start();
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    EXPECT_EQ(calls_of({"bcm_vlan_control_vlan_set"}),
              Calls{"bcm_vlan_control_vlan_set(0, 100, "
                    "{vrf=0 iif=0 flags=0x8279 class=0 urpf=0}) = 0"});
    EXPECT_EQ(fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN)->vc_flags, 0x8279U);
}

TEST_F(VlanCreate, NewVlanAsAPortsFirstTurnsThePortRouted)
{
    routed_ports({PORT});
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, 6), 0);
    expect_calls(join({
        creates(VLAN),
        becomes_routed(VLAN, "0x278"),
        adds_port(VLAN, 6, "{}"),
        mode_on_calls(Kind::trident, 6, {PORT}),
        first_use_calls(VLAN, 6),
        refreshed_controls_calls(VLAN, "0x278"),
    }));
}

TEST_F(VlanCreate, ExistingVlanKeepsItsFlagsAndGroupAndForwardsThere)
{
    vlan_on_port_9();
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    expect_calls(join({
        creates(VLAN, -8),
        adds_port(VLAN, PORT, "{}"),
        forwards_in_its_group(VLAN, PORT),
        Calls{
            "rtifhal_get_bcm_unit(0) = 0",
            FLUSH,
            "fwmpd_trident_get_bvbt(100) = record",
            "fwmpd_bcm_vlan_block_set(0, 100, " + masks("{0,5,9}") + ") = 0",
        },
        popcounts({5, 9}),
        refreshed_controls_calls(VLAN, "0x278"),
    }));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 2);
}

TEST_F(VlanCreate, LowHalfOfTheGroupsWordCounts)
{
    vlan_on_port_9();
    for (const int group : {GROUP, 1}) {
        start();
        fail("fwmpd_get_vlan_stg", 0x7FFF0000 | group);
        EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
        EXPECT_EQ(calls_of({"fwmpd_bcm_stg_stp_set"}),
                  Calls{fmt::format("fwmpd_bcm_stg_stp_set(0, {}, 5, 4) = 0", group)});
    }
}

TEST_F(VlanCreate, RefusedMasksAreNotLookedAt)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_vlan_block_set", -4);
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    expect_reports(
        {report("rtifhal_subintf_block_set", "bcm_vlan_block_set failed for vid 100\n")});
}

TEST_F(VlanCreate, ControlsComeFromTheChipAndNotFromTheCache)
{
    vlan_on_port_9();
    bcm_vlan_control_vlan_t &cached = *fwmpd_bcm_vlan_control_vlan_get_from_cache(VLAN);
    cached.vc_vrf = 17;
    cached.vc_flags = 0x5;
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, PORT), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_vlan_set"}),
              Calls{"fwmpd_bcm_vlan_control_vlan_set(0, 100, "
                    "{vrf=0 iif=0 flags=0x278 class=0 urpf=0}) = 0"});
    EXPECT_EQ(cached.vc_vrf, 0U);
}

TEST_F(VlanCreate, PortBeyondTheTableHasNoBitAndNoMode)
{
    routed_ports({PORT});
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, 105), 0);
    expect_calls(join({
        creates(VLAN),
        becomes_routed(VLAN, "0x278"),
        adds_port(VLAN, 105, "{}"),
        first_use_calls(VLAN, 105),
        refreshed_controls_calls(VLAN, "0x278"),
    }));
}

TEST_F(VlanCreate, LastPortOfTheTableTurnsRouted)
{
    routed_ports({104});
    EXPECT_TRUE(holds(104, ROUTED));
    EXPECT_EQ(sw.chip.ports.vlan_control(104, 2), 1);
}

TEST_F(VlanCreate, PortThatNoSetHasRoomForStillGoesToThePlatform)
{
    routed_ports({PORT});
    fail("fwmpd_bcm_port_stp_set", 0);
    EXPECT_EQ(rtifhal_vlan_create(0, VLAN, 300), 0);
    EXPECT_EQ(
        calls_of({"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_port_stp_set", "fwmpd_bcm_vlan_block_set"}),
        (Calls{
            "fwmpd_bcm_vlan_port_add(0, 100, {0}, {}) = 0",
            "fwmpd_bcm_port_stp_set(0, 300, 4) = 0",
            "fwmpd_bcm_vlan_block_set(0, 100, " + masks("{0}") + ") = 0",
        }));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
}

TEST_F(VlanCreate, NoPortAtAllIsHandedOnAsMinusOne)
{
    EXPECT_EQ(rtifhal_vlan_create(0, ROUTED, -1), -1);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_add", "fwmpd_bcm_port_stp_set"}),
              (Calls{
                  "fwmpd_bcm_vlan_port_add(0, 4094, {0}, {}) = 0",
                  "fwmpd_bcm_port_stp_set(0, -1, 4) = -4",
              }));
    expect_reports({report(CREATE, fmt::format("stp set(4094,-1) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(VlanCreate, VlanBeyondTheTableHasNoBitAndNoUse)
{
    // A platform that takes the id all the same.
    fail("bcm_vlan_create", -8);
    fail("fwmpd_bcm_vlan_port_add", 0);
    fail("fwmpd_bcm_stg_stp_set", 0);
    EXPECT_EQ(rtifhal_vlan_create(0, 5000, PORT), -1);
    EXPECT_EQ(calls_of({"bcm_vlan_control_port_set"}), Calls{}); // not the port's first VLAN
    expect_reports({
        report("rtifhal_subintf_block_set", "bcm_vlan_block_set failed for vid 5000\n"),
        report(CREATE, "fwmpd_bcm_vlan_control_vlan_get_from_cache(5000) returned NULL\n"),
    });
}

TEST_F(VlanCreate, ChipHoldsTheVlanAfterTheRequest)
{
    routed_ports({PORT});
    rtifhal_vlan_create(0, VLAN, PORT);
    sw.end_request();
    const simswitch::chip::Vlan *vlan = sw.chip.vlans.find(VLAN);
    ASSERT_NE(vlan, nullptr);
    EXPECT_EQ(vlan->members.text(), "{0,5}");
    EXPECT_EQ(vlan->untagged.text(), "{}");
    EXPECT_EQ(vlan->controls.flags, 0x278U);
    EXPECT_EQ(vlan->stg, GROUP);
    EXPECT_EQ(vlan->blocks.broadcast.text(), "{0,5}");
    EXPECT_EQ(sw.chip.vlans.find(ROUTED)->untagged.text(), "{5}");
}

} // namespace rtifhal_test::vlan_create
