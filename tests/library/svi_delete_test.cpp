/*
 * svi_delete_test.cpp: the interface step of an SVI's delete: what it closes
 * and what it keeps, whom it turns away, and what each step that fails leaves
 * behind.
 *
 * svi_road_test.cpp has the road without failures.
 */
#include "support/misread.h"
#include "support/svi_roads.h"

namespace rtifhal_test::svi_delete
{

namespace
{

using namespace svi_road;

class SviDelete : public SviTest
{
protected:
    /** The interface step of a final delete whose block masks are answered with `code`. */
    Calls step(const Calls &closing) const
    {
        return join({object_read(), closing, not_mirrored(), object_deleted(), record_released(),
                     Calls{called::unstore(*lif), vlan_stored(VLAN)}});
    }
    /** The VLAN's record as an add leaves it: it is mapped still. */
    void expect_untouched() const
    {
        EXPECT_EQ(cached().vc_flags, ROUTED_IP4);
        EXPECT_EQ(cached().vc_class, 6U);
        EXPECT_EQ(cached().vc_ingress_if, 3U);
        EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
        EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_control_vlan_set"), 0U);
        EXPECT_EQ(sw.journal.count("rtifhal_bcm_l3_intf_delete"), 0U);
    }
};

} // namespace

TEST_F(SviDelete, RoutingAndMplsAreSwitchedOff)
{
    is_up();
    flags_were(0x8000);
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(cached().vc_flags, 0x408238U);
    EXPECT_EQ(in_the_chip().flags, 0x408238U);
}

TEST_F(SviDelete, UnderTheSdnAgentMplsStaysOn)
{
    is_up();
    flags_were(0);
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(cached().vc_flags, 0x400038U);
}

TEST_F(SviDelete, UnderTheSdnAgentMplsStaysOffToo)
{
    is_up();
    flags_were(0x200);
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(cached().vc_flags, 0x400238U);
}

TEST_F(SviDelete, AnyNonzeroWordOfTheSdnAgentIsOn)
{
    is_up();
    flags_were(0);
    fwmpd_asic_sdn_agent_enabled = 0x80000000;
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(cached().vc_flags, 0x400038U);
}

TEST_F(SviDelete, VrfAndReversePathModeStayInTheVlan)
{
    lif->properties.vrf = 12;
    lif->properties.urpf_mode = 3;
    lif->properties.mtu = 9216;
    is_up();
    EXPECT_EQ(del(), 0);
    const simswitch::chip::VlanControls controls = in_the_chip();
    EXPECT_EQ(controls.vrf, 12U);
    EXPECT_EQ(controls.urpf_mode, 2U);
    EXPECT_EQ(controls.ingress_if, 0U);
    // The object that is deleted is told with the defaults.
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_delete"}),
              Calls{"rtifhal_bcm_l3_intf_delete(0, " + object("0x0") + ") = 0"});
}

TEST_F(SviDelete, OnlyTheMarkOfTheSviLeavesTheClass)
{
    is_up();
    cached().vc_class = 0x17;
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(cached().vc_class, 0x15U);
}

TEST_F(SviDelete, NoInterfaceIsRefusedAfterTheUnit)
{
    EXPECT_EQ(rtifhal_trident_svi_del(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({report(SVI_DEL, " Got l3lif as null")});
}

TEST_F(SviDelete, NoContextIsRefused)
{
    EXPECT_EQ(step_del(), -1);
    expect_calls({called::unit(), called::unit(), called::intf_init()});
    expect_messages({report(SVI_DEL, "l3lif_pd_ctxt(100) NULL\n")});
}

TEST_F(SviDelete, NoRecordIsRefusedInSilence)
{
    lif->with_bare_context();
    EXPECT_EQ(step_del(), -1);
    expect_calls({called::unit(), called::unit(), called::intf_init()});
    expect_messages({});
}

TEST_F(SviDelete, NumberOnAnotherVlanChangesNothing)
{
    is_up();
    lif->lif.si_encap_vlan = 200;
    EXPECT_EQ(step_del(), -1);
    expect_calls(object_read());
    expect_messages({report(SVI_DEL, "bcm_l3_intf_get() mismatch 200 3\n")});
    expect_untouched();
}

TEST_F(SviDelete, VlanOfTheUpperLayersOtherFieldsDoesntCount)
{
    is_up();
    lif->lif.int_vlan = 300;
    EXPECT_EQ(step_del(), 0);
    expect_reports({});
}

TEST_F(SviDelete, ObjectThatHasGoneChangesNothing)
{
    is_up();
    ASSERT_TRUE(sw.chip.l3_interfaces.remove(IIF).ok());
    EXPECT_EQ(step_del(), -1);
    EXPECT_EQ(calls().back(), "bcm_l3_intf_get(0, 3) = -7");
    expect_reports({report(SVI_DEL, "bcm_l3_intf_get() mismatch 100 3\n")});
    expect_untouched();
}

TEST_F(SviDelete, ParkedNumberIsNotAskedFor)
{
    is_parked();
    EXPECT_EQ(step_del(), -1);
    EXPECT_EQ(calls_of({"bcm_l3_intf_get"}), Calls{"bcm_l3_intf_get(0, 0) = -7"});
}

TEST_F(SviDelete, GoodCodeWithAnotherVlanChangesNothing)
{
    is_up();
    const MisreadInterface misread(IIF); // of VLAN 0
    EXPECT_EQ(step_del(), -1);
    expect_reports({report(SVI_DEL, "bcm_l3_intf_get() mismatch 100 3\n")});
    expect_untouched();
}

TEST_F(SviDelete, RefusedReadIsOnlyToldByTheVlan)
{
    is_up();
    lif->lif.si_encap_vlan = 0; // what a refused read leaves in the record
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(step_del(), -1);
    EXPECT_EQ(calls().back(), cache_asked(0, false));
    expect_reports({report(SVI_DEL, "fwmpd_bcm_vlan_control_vlan_get(0) returned NULL\n")});
}

TEST_F(SviDelete, VlanThatTheCacheDoesntHaveChangesNothing)
{
    is_up();
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(step_del(), -1);
    expect_calls(join({object_read(), Calls{cache_asked(VLAN, false)}}));
    expect_messages({report(SVI_DEL, "fwmpd_bcm_vlan_control_vlan_get(100) returned NULL\n")});
    EXPECT_NE(lif->record(), nullptr);
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
}

TEST_F(SviDelete, RefusedVlanRecordIsNotLookedAt)
{
    is_up();
    fail("fwmpd_bcm_vlan_control_vlan_set", -4);
    EXPECT_EQ(step_del(), 0);
    // The ingress step hasn't run here: the class is 4 still.
    expect_calls(
        step(join({Calls{cache_asked(VLAN), written(VLAN, controls(1, 0, 0x400238, 4), -4)},
                   use_given_up()})));
    expect_reports({});
}

TEST_F(SviDelete, RefusedFloodBlockIsReportedAndTheRestRuns)
{
    is_up();
    fail("fwmpd_bcm_vlan_block_set", -4);
    EXPECT_EQ(step_del(), 0);
    expect_calls(step(join(
        {Calls{cache_asked(VLAN), written(VLAN, controls(1, 0, 0x400238, 4))}, use_given_up(-4)})));
    expect_reports(use_refused(SVI_DEL));
}

TEST_F(SviDelete, RefusedObjectDeleteIsNotLookedAt)
{
    is_up();
    fail("rtifhal_bcm_l3_intf_delete", -7);
    EXPECT_EQ(step_del(), 0);
    expect_reports({});
    EXPECT_EQ(calls().back(), vlan_stored(VLAN));
}

TEST_F(SviDelete, IngressObjectIsLeftAlone)
{
    is_up();
    EXPECT_EQ(step_del(1), 0);
    EXPECT_EQ(sw.journal.count("rtifhal_bcm_l3_ingress_destroy"), 0U);
    EXPECT_EQ(sw.journal.count("bcm_vlan_control_vlan_set"), 0U);
}

TEST_F(SviDelete, RoutedUseOfTheVlanStays)
{
    is_up();
    rtifhal_subintf_block_set(VLAN, 1, 5, 1, nullptr);
    start();
    EXPECT_EQ(step_del(), 0);
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_destroy"), 0U);
}

} // namespace rtifhal_test::svi_delete
