/*
 * svi_entry_test.cpp: the entry points of an SVI's add and delete: which step
 * stops them with which report, and the delete of one that went down before.
 *
 * svi_add_test.cpp and svi_delete_test.cpp have their interface steps.
 */
#include "support/svi_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::svi_entry
{

namespace
{

using namespace svi_road;

constexpr int AUX = 7;

class SviEntry : public SviTest
{
protected:
    int add_with_aux(int create = 1) { return rtifhal_trident_add_svi(lif->get(), AUX, create); }
    int del_with_aux(int destroy = 1) { return rtifhal_trident_del_svi(lif->get(), AUX, destroy); }
    /** The add's report of a step: "add itf" or "add if". */
    static Message add_failed(const std::string &what, int create = 1)
    {
        return report(ADD_SVI, fmt::format("\n{}: L3LIF failed to {}: 0x30000064, 7, {}\n", ADD_SVI,
                                           what, create));
    }
    /** The delete's report of a step: "del" or "rm". */
    static Message del_failed(const std::string &what)
    {
        return report(DEL_SVI,
                      fmt::format("\n{}: L3LIF failed to {}: 0x30000064, 7\n", DEL_SVI, what));
    }
};

} // namespace

TEST_F(SviEntry, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_add_svi(nullptr, 0, 1), -1);
    EXPECT_EQ(rtifhal_trident_del_svi(nullptr, 0, 1), -1);
    expect_calls({});
}

TEST_F(SviEntry, AddTellsItsArgumentsWithoutALeadingLineBreak)
{
    EXPECT_EQ(add_with_aux(), 0);
    EXPECT_EQ(messages().front(), trace(ADD_SVI, ADD_SVI + ": L3LIF: 0x30000064, 7, 1\n"));
    EXPECT_EQ(messages().back(), trace("rtifhal_trident_add_egress",
                                       "\nrtifhal_trident_add_egress: L3LIF: 0x30000064, 7, 1\n"));
}

TEST_F(SviEntry, AddStopsAtAFailedInterfaceStepWithItsCode)
{
    fail("fwmpd_bcm_vlan_control_vlan_set", -6, 2);
    EXPECT_EQ(add_with_aux(), -6);
    EXPECT_EQ(calls().back(), "sysmgr_is_fastboot_restart() = 0");
    EXPECT_EQ(reports().back(), add_failed("add itf"));
}

TEST_F(SviEntry, AddReportsAnUpdateWithoutAContextTwice)
{
    EXPECT_EQ(add_with_aux(0), -1);
    expect_reports({report(SVI_ADD, "l3lif_pd_ctxt(100) NULL\n"), add_failed("add itf", 0)});
}

TEST_F(SviEntry, AddStopsAtAFailedIngressStepWithItsCode)
{
    fail("if_index_get_type", 5, 2); // the interface step asked first
    EXPECT_EQ(add_with_aux(), 5);
    EXPECT_EQ(calls().back(), called::no_type(*lif, 5));
    expect_reports({add_failed("add if")});
}

TEST_F(SviEntry, AddStopsAtAFailedEgressStepWithItsCode)
{
    fail("fwmpd_bcm_switch_control_set", -4);
    EXPECT_EQ(add_with_aux(), -4);
    expect_reports({report("rtifhal_l3_egr_create",
                           fmt::format("itf set egr (3) failed: {}\n", _shr_errmsg[4])),
                    add_failed("add if")});
}

TEST_F(SviEntry, AddHandsAPositiveEgressAnswerUpAsAFailure)
{
    fail("fwmpd_bcm_switch_control_set", 1);
    EXPECT_EQ(add_with_aux(), 1);
    expect_reports({add_failed("add if")});
}

TEST_F(SviEntry, FailedAddLeavesItsStepsInPlace)
{
    fail("fwmpd_bcm_switch_control_set", -4);
    add_with_aux();
    EXPECT_EQ(in_the_chip().ingress_if, 3U);
    EXPECT_NE(sw.chip.l3_interfaces.find(IIF), nullptr);
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 1);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(SviEntry, DeleteTellsItsArguments)
{
    is_up();
    EXPECT_EQ(del_with_aux(), 0);
    EXPECT_EQ(messages().front(), trace(DEL_SVI, "\n" + DEL_SVI + ": L3LIF: 0x30000064, 7\n"));
}

TEST_F(SviEntry, DeleteStopsAtAFailedEgressStepWithItsCode)
{
    is_up();
    fail("if_index_get_type", 5);
    EXPECT_EQ(del_with_aux(), 5);
    expect_calls({called::no_type(*lif, 5)});
    expect_reports({del_failed("del")});
}

TEST_F(SviEntry, DeleteStopsAtAFailedIngressStepWithItsCode)
{
    is_up();
    fail("if_index_get_type", 5, 2);
    EXPECT_EQ(del_with_aux(), 5);
    expect_calls(join({kind_asked(*lif), Calls{called::no_type(*lif, 5)}}));
    expect_reports({del_failed("del")});
}

TEST_F(SviEntry, DeleteStopsWhenTheVlansMarkCantBeCleared)
{
    is_up();
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(del_with_aux(), -1);
    EXPECT_EQ(calls().back(), cache_asked(VLAN, false));
    expect_reports({
        report("rtifhal_l3_ing_update_vlan_label",
               "fwmpd_bcm_vlan_control_vlan_get_from_cache(100) returned NULL\n"),
        del_failed("del"),
    });
    EXPECT_NE(lif->record(), nullptr);
}

TEST_F(SviEntry, DeleteReturnsAFailedInterfaceStep)
{
    is_up();
    ASSERT_TRUE(sw.chip.l3_interfaces.remove(IIF).ok());
    EXPECT_EQ(del_with_aux(), -1);
    expect_reports({report(SVI_DEL, "bcm_l3_intf_get() mismatch 100 3\n"), del_failed("rm")});
    EXPECT_EQ(cached().vc_class, 2U); // the ingress step has run
}

TEST_F(SviEntry, DeleteOfOneWithoutAContextGoesThroughTheSteps)
{
    EXPECT_EQ(del_with_aux(), -1);
    expect_reports({report(SVI_DEL, "l3lif_pd_ctxt(100) NULL\n"), del_failed("rm")});
}

TEST_F(SviEntry, DeleteOfOneThatIsDownDoesNothing)
{
    is_parked();
    EXPECT_EQ(del_with_aux(0), 0);
    expect_calls({});
    expect_messages({trace(DEL_SVI, "\n" + DEL_SVI + ": L3LIF: 0x30000064, 7\n"),
                     trace(DEL_SVI, "Already deleted.")});
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(SviEntry, FinalDeleteOfOneThatIsDownReleasesWhatIsLeft)
{
    is_parked();
    EXPECT_EQ(del_with_aux(1), 0);
    expect_calls(join({Calls{called::unit(), called::type(*lif, 9), called::destroy_ingress(IIF)},
                       record_released()}));
    expect_messages({
        trace(DEL_SVI, "\n" + DEL_SVI + ": L3LIF: 0x30000064, 7\n"),
        trace(DEL_SVI, "Already deleted."),
        trace("rtifhal_l3_destroy", "Entering rtifhal_l3_destroy, lif 0x30000064\n"),
        trace("rtifhal_l3_destroy", "iftype = 9 iif = 3 prev_l3_if_index = 3\n"),
        trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
        trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
    });
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF), nullptr);
}

TEST_F(SviEntry, FinalDeleteOfOneThatIsDownReturnsTheIngressObjectsCode)
{
    is_parked();
    fail("rtifhal_bcm_l3_ingress_destroy", -7);
    EXPECT_EQ(del_with_aux(1), -7);
    expect_reports({});
    EXPECT_EQ(lif->lif.l3lif_pd_ctxt, nullptr);
}

} // namespace rtifhal_test::svi_entry
