/*
 * subint_delete_test.cpp: a subinterface of a port goes down: every call and
 * every message, one that was taken down before, and each step that can fail.
 *
 * subint_delete_port_channel_test.cpp has the port-channel,
 * subint_port_controls_test.cpp what the last subinterface gives back.
 */
#include "support/misread.h"
#include "support/subint_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <utility>

namespace rtifhal_test::subint_delete
{

namespace
{

using namespace subint_road;

const std::string ENTRY = "rtifhal_trident_del_subint";
const std::string STEP = "rtifhal_trident_subint_del";
const std::string ON_PORT = "rtifhal_trident_subint_del_int";
const std::string OBJECT = "rtifhal_bcm_l3_intf_delete";
const std::string LEAVE = "fwmpd_bcm_vlan_port_remove";

/** The port's controls as those of the main interface, whose IPv4 is on. */
const Calls CONTROLS_RESTORED = {
    "rtifhal_get_bcm_unit(0) = 0",
    "bcm_port_control_set(0, 5, 8, 1) = 0",
    "bcm_port_control_set(0, 5, 10, 0) = 0",
    "bcm_port_control_set(0, 5, 9, 0) = 0",
};

/** The interface step as a whole; `restored`: what is done to the port's controls. */
Calls interface_step(const Lif &sub, const Lif &main, bool destroy, const Calls &restored)
{
    return join({Calls{called::unit()}, port_asked(sub), object_read(), main_asked(sub, main),
                 restored, Calls{called::unit()}, untranslated(MODULE_PORT_5),
                 object_deleted(sub, destroy), vlan_left(PORT, {})});
}

/** A port that has a subinterface up under the number 3. */
template <Kind CHIP> class WithSubintUp : public SubintOnPort
{
protected:
    WithSubintUp() : SubintOnPort(CHIP) { brought_up(*sub); }

    Message failed_to(const std::string &verb) const
    {
        return report(ENTRY,
                      fmt::format("\n{}: L3LIF failed to {}: {}, 0\n", ENTRY, verb, sub->index()));
    }
    /** The two lines of progress, which have the level of errors. */
    static Message searching() { return report(STEP, "Searching l3-intf on intf-id 3\n"); }
    static Message done() { return report(STEP, " ifindex 1040000a Done\n"); }
    /** The record that the step hands to the work on the port. */
    bcm_l3_intf_t object_3() const
    {
        bcm_l3_intf_t intf = {};
        intf.l3a_intf_id = IIF;
        return intf;
    }
};

using SubintDelete = WithSubintUp<Kind::trident>;
using SubintDeleteOnTrident2 = WithSubintUp<Kind::trident2>;

} // namespace

TEST_F(SubintDelete, DownForGoodMakesEveryCall)
{
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    expect_calls(
        join({untied(*sub, *main, true), interface_step(*sub, *main, true, CONTROLS_RESTORED)}));
    EXPECT_EQ(sub->lif.lif_state, 4U);
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
}

TEST_F(SubintDeleteOnTrident2, DownForGoodMakesTheSameCalls)
{
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    expect_calls(
        join({untied(*sub, *main, true), interface_step(*sub, *main, true, CONTROLS_RESTORED)}));
    start();
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(SubintDelete, DownForGoodLeavesEveryMessage)
{
    rtifhal_trident_del_subint(sub->get(), 2, 1);
    const std::string object = "rtifhal_l3_intf_delete";
    expect_messages(join({
        Messages{
            trace(ENTRY, "\nrtifhal_trident_del_subint: L3LIF: 0x1040000a, 1\n"),
            trace("rtifhal_trident_del_egress",
                  "\nrtifhal_trident_del_egress: L3LIF: 0x1040000a, 2, 1\n"),
            trace("rtifhal_trident_del_ingress",
                  "\nrtifhal_trident_del_ingress: L3LIF: 0x1040000a, 2, 1\n"),
            trace("rtifhal_l3_ing_delete", "ifindex = 1040000a destroy = 1\n"),
            trace("rtifhal_l3_ing_delete", "iftype = 1a iif = 3 l3_if_index = 3\n"),
            trace(STEP, "ifindex = 1040000a\n"),
            trace(STEP, " bcm_port: 5 tid = -1\n"),
            searching(),
            trace("rtifhal_vlan_del_xlate", "old-vlan 100 gport 8000005\n"),
            trace(object, "l3lif->ifindex = 1040000a destroy = 1\n"),
            trace(object, "intf-delete for 1040000a\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_free_l3iif", " iif_index = 3 preserve = 1\n"),
            trace(object, "intf-pd-ctx deleted for 1040000a\n"),
            trace("rtifhal_vlan_delete", "vlan 100 port 5\n"),
        },
        last_use_messages(VLAN, PORT),
        Messages{done()},
    }));
}

TEST_F(SubintDelete, DownWithTheRecordKeptParksTheNumber)
{
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 0), 0);
    expect_calls(
        join({untied(*sub, *main, false), interface_step(*sub, *main, false, CONTROLS_RESTORED)}));
    EXPECT_EQ(sub->lif.lif_state, 4U);
    EXPECT_EQ(sub->record()->brcm_prog_complete, 1U);
    EXPECT_EQ(sub->record()->prev_l3_if_index, IIF);
    EXPECT_FALSE(held_back(IIF));
}

TEST_F(SubintDelete, FirstOfTwoLeavesThePortsControlsAlone)
{
    const auto other = another(11, 200);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    expect_calls(join({untied(*sub, *main, true), interface_step(*sub, *main, true, {})}));
}

TEST_F(SubintDelete, SecondNameMakesTheSameCallsUnderItsOwnNameInTheTraces)
{
    const auto renamed = [](Messages messages) {
        for (Message &message : messages) {
            if (message.function == STEP) {
                message.function = "rtifhal_subint_del";
            }
        }
        return messages;
    };
    ASSERT_EQ(rtifhal_trident_subint_del(sub->get(), 0), 0);
    const Calls step_calls = calls();
    const Messages step_messages = messages();
    ASSERT_EQ(rtifhal_trident_add_subint(sub->get(), 0, 0), 0);
    sw.end_request();
    start();
    EXPECT_EQ(rtifhal_subint_del(sub->get(), 0), 0);
    expect_calls(step_calls);
    expect_messages(renamed(step_messages));
    EXPECT_NE(step_messages, renamed(step_messages));
}

TEST_F(SubintDelete, AlreadyDownAndKeptIsASuccessWithoutACall)
{
    rtifhal_trident_del_subint(sub->get(), 0, 0);
    sub->lif.lif_state = 9;
    start();
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 2, 0), 0);
    expect_calls({});
    expect_messages({trace(ENTRY, "\nrtifhal_trident_del_subint: L3LIF: 0x1040000a, 0\n"),
                     trace(ENTRY, "Already deleted\n")});
    EXPECT_EQ(sub->lif.lif_state, 9U);
}

TEST_F(SubintDelete, AlreadyDownIsFinishedForGoodWithoutTheInterfaceStep)
{
    rtifhal_trident_del_subint(sub->get(), 0, 0);
    sub->lif.lif_state = 9;
    start();
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), 0);
    expect_calls({called::unit(), called::type(*sub, 26), called::destroy_ingress(IIF),
                  called::inband_init(), called::store_globals(), "mtrack_free(record)",
                  "mtrack_free(record)"});
    EXPECT_EQ(messages().at(1), trace(ENTRY, "Already deleted\n"));
    EXPECT_EQ(sub->lif.lif_state, 9U);
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
}

TEST_F(SubintDelete, AlreadyDownGivesTheValueOfTheIngressDestroy)
{
    rtifhal_trident_del_subint(sub->get(), 0, 0);
    fail("rtifhal_bcm_l3_ingress_destroy", -7);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), -7);
}

TEST_F(SubintDelete, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_del_subint(nullptr, 0, 1), -1);
    EXPECT_EQ(rtifhal_trident_subint_del_int(nullptr, PORT, 0, object_3(), 1, 1), -1);
    expect_calls({});
}

TEST_F(SubintDelete, StepWithoutAnInterfaceOrContextSaysSoUnderBothNames)
{
    const std::string text = " Got l3lif or l3lif_pd_ctxt is null";
    const auto other = another(11, 200);
    EXPECT_EQ(rtifhal_trident_subint_del(nullptr, 1), -1);
    EXPECT_EQ(rtifhal_subint_del(nullptr, 1), -1);
    EXPECT_EQ(rtifhal_trident_subint_del(other->get(), 1), -1);
    expect_calls({called::unit(), called::unit(), called::unit()});
    expect_messages({report(STEP, text), report("rtifhal_subint_del", text), report(STEP, text)});
}

TEST_F(SubintDelete, StepWithoutARecordIsRefusedInSilenceAtTheRead)
{
    const auto other = another(11, 200);
    other->with_bare_context();
    EXPECT_EQ(rtifhal_trident_subint_del(other->get(), 1), -1);
    expect_calls(join(
        {Calls{called::unit()}, port_asked(*other), Calls{called::unit(), called::intf_init()}}));
    expect_reports({});
}

TEST_F(SubintDelete, InterfaceWithoutAPortGivesTheLookUpsValue)
{
    const auto other = tunnel(1);
    other->with_record(7);
    EXPECT_EQ(rtifhal_trident_subint_del(other->get(), 1), -1);
    expect_calls({called::unit(), called::is_port_channel(*other, 0), called::type(*other, 24)});
    expect_reports({report(STEP, "unable to get itf(" + other->decimal() + ")\n")});
}

TEST_F(SubintDelete, ObjectOfAnotherNumberStopsBeforeThePort)
{
    const MisreadInterface other(4);
    EXPECT_EQ(rtifhal_trident_subint_del(sub->get(), 1), -1);
    EXPECT_TRUE(calls().back().starts_with("bcm_l3_intf_get(0, 3)"));
    expect_reports(
        {searching(), report(STEP, fmt::format("itf get (3) mismatch: {}\n", _shr_errmsg[0]))});
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
}

TEST_F(SubintDelete, ObjectThatCantBeReadIsDeletedAllTheSame)
{
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(rtifhal_trident_subint_del(sub->get(), 1), 0);
    const Calls seen = calls_of({OBJECT, LEAVE});
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_TRUE(seen[0].starts_with(OBJECT + "(0, {flags=0x0 id=3 "));
    EXPECT_EQ(seen[1], LEAVE + "(0, 100, {5}) = 0");
    expect_reports({searching(), done()});
}

TEST_F(SubintDelete, RefusedTranslationStopsBeforeObjectAndVlan)
{
    fail(UNTRANSLATE, -7);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), -1);
    EXPECT_EQ(calls().back(), untranslated(MODULE_PORT_5, -7).back());
    expect_reports({
        searching(),
        report("rtifhal_vlan_del_xlate",
               fmt::format("bcm_vlan_translate_action_del(100) failed: {}\n", _shr_errmsg[7])),
        report(ON_PORT, "itf xlate enable(" + sub->decimal() + ") failed\n"),
        done(),
        failed_to("rm"),
    });
    EXPECT_EQ(sub->lif.lif_state, 3U);
    EXPECT_NE(sub->record(), nullptr);
}

TEST_F(SubintDelete, RefusedVlanAfterAGoodObjectPrintsTheTextOfNoError)
{
    fail(LEAVE, -4);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 0, 1), -1);
    EXPECT_EQ(calls().back(), LEAVE + "(0, 100, {5}) = -4");
    expect_reports({
        searching(),
        report("rtifhal_vlan_delete",
               fmt::format("vlan_port(100, 5) failed: {}\n", _shr_errmsg[4])),
        report(ON_PORT,
               fmt::format("itf vlan enable({}) failed: {}\n", sub->decimal(), _shr_errmsg[0])),
        done(),
        failed_to("rm"),
    });
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintDelete, FailedObjectAndGoodVlanIsASuccess)
{
    const auto other = another(11, VLAN);
    other->with_bare_context();
    EXPECT_EQ(rtifhal_trident_subint_del_int(other->get(), PORT, 0, object_3(), 1, 1), 0);
    EXPECT_EQ(calls_of({UNTRANSLATE, OBJECT, LEAVE}),
              join({untranslated(MODULE_PORT_5), Calls{LEAVE + "(0, 100, {5}) = 0"}}));
    expect_reports({});
}

TEST_F(SubintDelete, RecordThatGoesUnderWayIsSeenByNobody)
{
    l3_pd *taken = nullptr;
    sw.journal.arm({.function = UNTRANSLATE, .when = [&](std::string_view) {
                        taken = std::exchange(sub->lif.l3lif_pd_ctxt->l3_pd, nullptr);
                        return false;
                    }});
    EXPECT_EQ(rtifhal_trident_subint_del(sub->get(), 1), 0);
    EXPECT_EQ(calls_of({OBJECT, LEAVE}), Calls{LEAVE + "(0, 100, {5}) = 0"});
    expect_reports({searching(), done()});
    sub->lif.l3lif_pd_ctxt->l3_pd = taken;
}

TEST_F(SubintDelete, FailedObjectAndRefusedVlanPrintTheTextOfTheObject)
{
    const auto other = another(11, VLAN);
    fail(LEAVE, -4);
    EXPECT_EQ(rtifhal_trident_subint_del_int(other->get(), PORT, 0, object_3(), 1, 1), -1);
    expect_reports({
        report("rtifhal_l3_intf_delete",
               "Failed to create l3lif pd context for intf " + other->index()),
        report("rtifhal_vlan_delete",
               fmt::format("vlan_port(100, 5) failed: {}\n", _shr_errmsg[4])),
        report(ON_PORT,
               fmt::format("itf vlan enable({}) failed: {}\n", other->decimal(), _shr_errmsg[1])),
    });
}

TEST_F(SubintDelete, PortWithoutTheObjectsDeleteStillTakesTheTranslation)
{
    EXPECT_EQ(rtifhal_trident_subint_del_int(sub->get(), PORT, 0, object_3(), 0, 1), 0);
    expect_calls(join({Calls{called::unit()}, untranslated(MODULE_PORT_5), vlan_left(PORT, {})}));
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
}

TEST_F(SubintDelete, FailedEgressStepGivesItsOwnValue)
{
    fail("if_index_get_type", 9);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 2, 1), 9);
    expect_calls({called::no_type(*sub, 9)});
    expect_reports({failed_to("del")});
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintDelete, FailedIngressStepGivesItsOwnValue)
{
    fail("if_index_get_type", 9, 2);
    EXPECT_EQ(rtifhal_trident_del_subint(sub->get(), 2, 1), 9);
    EXPECT_EQ(calls().back(), called::no_type(*sub, 9));
    expect_reports({failed_to("del")});
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintDelete, SubinterfaceWithoutAContextFailsInTheInterfaceStep)
{
    const auto other = another(11, 200);
    EXPECT_EQ(rtifhal_trident_del_subint(other->get(), 0, 1), -1);
    expect_reports({
        report("rtifhal_l3_egr_delete",
               "Failed to delete l3lif pd context for intf " + other->index()),
        report("rtifhal_l3_ing_delete",
               "Failed to create l3lif pd context for intf " + other->index()),
        report(STEP, " Got l3lif or l3lif_pd_ctxt is null"),
        report(ENTRY, fmt::format("\n{}: L3LIF failed to rm: {}, 0\n", ENTRY, other->index())),
    });
    EXPECT_EQ(other->lif.lif_state, 0U);
}

} // namespace rtifhal_test::subint_delete
