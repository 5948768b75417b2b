/*
 * svi_road_test.cpp: the whole road of an SVI: up, down, down with its record
 * kept, up again, and what kinds of start and the SDN agent do to it. Every
 * call and every message, and what the chip holds in the end.
 *
 * Beside it: svi_add_test.cpp, svi_delete_test.cpp and svi_entry_test.cpp have
 * the single steps, svi_private_vlan_test.cpp the primaries of private VLANs.
 */
#include "support/l3port_roads.h"
#include "support/svi_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <fwm/state.h>

#include <algorithm>

namespace rtifhal_test::svi_road
{

namespace
{

using namespace svi_road;

const std::string EGRESS_DEL = "rtifhal_trident_del_egress";
const std::string INGRESS_DEL = "rtifhal_trident_del_ingress";
const std::string INTERFACE_DEL = "rtifhal_l3_intf_delete";

/** The messages of an add with `create` 0 on an SVI that is up. */
Messages up_again_messages()
{
    const std::string object = "rtifhal_l3_intf_create";
    const std::string ingress = "rtifhal_l3_ing_create";
    Messages expected = up_messages();
    expected[0] = trace(ADD_SVI, ADD_SVI + ": L3LIF: 0x30000064, 0, 0\n");
    expected[2] = trace(SVI_ADD, "Get To Sup Flags(100) : 0x400230\n");
    expected[7] =
        trace(object, "inl3lif->ifindex = 30000064 l3lif->ifindex = 30000064 create = 0\n");
    // No number is looked for and no record allocated.
    expected[9] = trace(object, "Reusing l3a_intf_id from existind pd ctxt 3\n");
    expected.erase(expected.begin() + 10, expected.begin() + 13);
    const auto id = std::find(expected.begin(), expected.end(),
                              trace(ingress, "l3_if_index = 0x3 ipmc_intf_id = 0x3 iif = 0x3\n"));
    expected.insert(id + 1, {trace(ingress, "Get l3_iif for iif 3\n"),
                             trace(ingress, "ipmc_intf_id = 0 class 40 flags = 6\n")});
    for (const std::size_t back : {std::size_t{2}, std::size_t{1}}) {
        Message &dispatched = expected[expected.size() - back];
        dispatched =
            trace(dispatched.function, "\n" + dispatched.function + ": L3LIF: 0x30000064, 0, 0\n");
    }
    return expected;
}

class SviRoad : public SviTest
{
};

class SviRoadOnTrident2 : public SviTest
{
protected:
    SviRoadOnTrident2() : SviTest({.chip = Kind::trident2}) {}
};

} // namespace

TEST_F(SviRoad, UpMakesEveryCall)
{
    EXPECT_EQ(add(), 0);
    expect_calls(up(*lif));
    EXPECT_EQ(lif->lif.lif_state, 0U); // not kept for SVIs
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
}

TEST_F(SviRoad, UpLeavesEveryMessage)
{
    add();
    expect_messages(up_messages());
}

TEST_F(SviRoadOnTrident2, UpMakesEveryCall)
{
    EXPECT_EQ(add(), 0);
    expect_calls(up(*lif, Kind::trident2));
    expect_messages(up_messages());
}

TEST_F(SviRoad, UpIsInTheChipAfterTheRequest)
{
    add();
    const simswitch::chip::VlanControls controls = in_the_chip();
    EXPECT_EQ(controls.flags, 0x400A30U); // snooping off, which only the chip knows
    EXPECT_EQ(controls.vrf, 1U);
    EXPECT_EQ(controls.ingress_if, 3U);
    EXPECT_EQ(controls.intf_class, 6U);
    EXPECT_EQ(cached().vc_flags, ROUTED_IP4);
    ASSERT_NE(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vlan, VLAN);
    EXPECT_NE(sw.chip.l3_ingresses.find(IIF), nullptr);
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->blocks.unknown_multicast.text(), "{0}");
}

TEST_F(SviRoad, FlagsAreInTheChipBeforeTheInterfaceExists)
{
    simswitch::chip::VlanControls seen;
    const auto look = [&](std::string_view) {
        seen = sw.chip.vlans.find(VLAN)->controls;
        return false; // no fault, only a look
    };
    sw.journal.arm({.function = "rtifhal_bcm_l3_intf_create", .when = look});
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(seen.flags, ROUTED_IP4);
    EXPECT_EQ(seen.intf_class, 2U);
    EXPECT_EQ(seen.ingress_if, 0U); // the tie writes the record a second time
}

TEST_F(SviRoad, UpOnAFastRestartPublishesBeforeItServesDefaultRoutes)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(add(), 0);
    expect_calls(join({flags_opened(), use_taken(), object_created(*lif), ingress_tied(*lif),
                       not_mirrored(), Calls{vlan_stored(VLAN)}, l3port_road::fast_restart(*lif),
                       ingress_and_egress_added(*lif)}));
    EXPECT_EQ(sw.directory.updates(), std::vector<std::uint32_t>{lif->lif.ifindex});
}

TEST_F(SviRoad, UpInRestoreModeProgramsAllButTheInBandPath)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(add(), 0);
    Calls expected = up(*lif);
    std::erase(expected, called::inband_init());
    expect_calls(expected);
}

TEST_F(SviRoad, UpUnderTheSdnAgentMakesTheSameCalls)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(add(), 0);
    expect_calls(up(*lif));
}

TEST_F(SviRoad, ProgrammingALiveSviAgainKeepsItsNumber)
{
    is_up();
    EXPECT_EQ(add(0), 0);
    Calls expected = up_again(*lif);
    expected[3] = written(VLAN, controls(1, IIF, ROUTED_IP4, 6));
    expect_calls(expected);
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(in_the_chip().flags, 0x400A30U);
}

TEST_F(SviRoad, ProgrammingALiveSviAgainLeavesEveryMessage)
{
    is_up();
    add(0);
    expect_messages(up_again_messages());
}

TEST_F(SviRoad, DownForGoodMakesEveryCall)
{
    is_up();
    EXPECT_EQ(del(1), 0);
    expect_calls(down(*lif, true));
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_EQ(lif->lif.lif_state, 0U);
    EXPECT_TRUE(held_back(IIF));
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(SviRoad, DownForGoodLeavesEveryMessage)
{
    is_up();
    del(1);
    expect_messages(down_messages());
}

TEST_F(SviRoadOnTrident2, DownForGoodMakesTheSameCalls)
{
    is_up();
    EXPECT_EQ(del(1), 0);
    expect_calls(down(*lif, true));
}

TEST_F(SviRoad, DownWithItsRecordKeptMakesEveryCall)
{
    is_up();
    EXPECT_EQ(del(0), 0);
    expect_calls(down(*lif, false));
    ASSERT_NE(lif->record(), nullptr);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, IIF);
}

TEST_F(SviRoad, DownWithItsRecordKeptLeavesEveryMessage)
{
    is_up();
    del(0);
    Messages expected = down_messages();
    expected.resize(expected.size() - 3); // number and records stay
    expected[1] = trace(EGRESS_DEL, "\n" + EGRESS_DEL + ": L3LIF: 0x30000064, 0, 0\n");
    expected[2] = trace(INGRESS_DEL, "\n" + INGRESS_DEL + ": L3LIF: 0x30000064, 0, 0\n");
    expected[13] = trace(INTERFACE_DEL, "l3lif->ifindex = 30000064 destroy = 0\n");
    expect_messages(expected);
}

TEST_F(SviRoad, DownIsInTheChipAfterTheRequest)
{
    is_up();
    del(1);
    const simswitch::chip::VlanControls controls = in_the_chip();
    EXPECT_EQ(controls.flags, 0x400238U); // written by the wrapper: snooping is on again
    EXPECT_EQ(controls.vrf, 1U);
    EXPECT_EQ(controls.ingress_if, 0U);
    EXPECT_EQ(controls.intf_class, 0U);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_NE(sw.chip.l3_ingresses.find(IIF), nullptr); // not the delete's affair
}

TEST_F(SviRoad, UpAgainTakesTheParkedNumber)
{
    is_parked();
    EXPECT_EQ(add(0), 0);
    expect_calls(up_again(*lif));
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(in_the_chip().ingress_if, 3U);
}

TEST_F(SviRoad, SdnAgentKeepsItsMplsBitOnTheWayDown)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    flags_were(0x38); // MPLS on
    is_up();
    EXPECT_EQ(del(1), 0);
    EXPECT_EQ(in_the_chip().flags, 0x400038U);
}

TEST_F(SviRoad, VlanThatNobodyElseUsesIsResetByTheAddAndGoesWithTheDelete)
{
    rtifhal_vlan_type_count[VLAN].l2_vlan = 0;
    is_up();
    EXPECT_EQ(sw.chip.vlans.find(VLAN)->blocks.broadcast.text(), "{0}");
    EXPECT_EQ(del(1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_destroy"}), Calls{"fwmpd_bcm_vlan_destroy(0, 100) = 0"});
    sw.end_request();
    EXPECT_EQ(sw.chip.vlans.find(VLAN), nullptr);
}

} // namespace rtifhal_test::svi_road
