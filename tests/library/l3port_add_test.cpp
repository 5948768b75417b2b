/*
 * l3port_add_test.cpp: the steps of a routed port's add: who is turned away,
 * what each step that fails leaves behind, what the messages name.
 *
 * l3port_road_test.cpp has the road without failures.
 */
#include "support/handed_over.h"
#include "support/l3_objects.h"
#include "support/library_test.h"
#include "support/lif.h"
#include "support/vlan_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <fwm/state.h>
#include <sdk/error.h>

#include <fmt/format.h>

#include <map>

namespace rtifhal_test::l3port_add
{

namespace
{

constexpr int PORT = 5;
constexpr std::uint32_t UNTOUCHED = 9;

const std::string ENTRY = "rtifhal_trident_add_l3port";
const std::string STEP = "rtifhal_trident_l3port_add";

/** The entry point's report of its interface step. */
Message itf_failed(const Lif &lif, int create = 1)
{
    return report(
        ENTRY, fmt::format("\n{}: L3LIF failed to add itf: {}, {}\n", ENTRY, lif.index(), create));
}

/** The entry point's report of its ingress or egress step. */
Message if_failed(const Lif &lif)
{
    return report(ENTRY,
                  fmt::format("\n{}: L3LIF failed to add if: {}, 0, 1\n", ENTRY, lif.index()));
}

class L3PortAdd : public LibraryTest
{
protected:
    L3PortAdd()
    {
        l3iif_table_init();
        lif->lif.lif_state = UNTOUCHED;
        start();
    }

    std::unique_ptr<Lif> lif = port(PORT);
};

} // namespace

TEST_F(L3PortAdd, NoInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_add_l3port(nullptr, 1), -1);
    expect_calls({});
}

TEST_F(L3PortAdd, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_trident_l3port_add(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: create - 1\n"), report(STEP, " Got l3lif as null")});
}

TEST_F(L3PortAdd, PortChannelIsLeftToItsOwnAdd)
{
    const auto channel = port_channel(7);
    channel->lif.lif_state = UNTOUCHED;
    EXPECT_EQ(rtifhal_trident_add_l3port(channel->get(), 1), 0);
    expect_calls({called::is_port_channel(*channel, 1)});
    EXPECT_EQ(channel->lif.lif_state, UNTOUCHED);
}

TEST_F(L3PortAdd, RestoreModeMarksAPortChannelToo)
{
    const auto channel = port_channel(7);
    g_fwm_pss_restore_mode = 2;
    EXPECT_EQ(rtifhal_trident_add_l3port(channel->get(), 0), 0);
    expect_calls({});
    EXPECT_EQ(channel->lif.lif_state, 3U);
}

TEST_F(L3PortAdd, InterfaceWithoutAPortIsRefused)
{
    const auto other = tunnel(1);
    EXPECT_EQ(rtifhal_trident_l3port_add(other->get(), 1), -1);
    expect_calls({called::unit(), called::type(*other, 24)});
    expect_reports({report(STEP, "unable to get intf(" + other->decimal() + ")\n")});
}

TEST_F(L3PortAdd, PortThatCantBeReadIsRefused)
{
    fail("if_index_get_port", 1);
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 1), -1);
    expect_reports({report(STEP, "unable to get intf(" + lif->decimal() + ")\n")});
    EXPECT_EQ(lif->lif.int_vlan, 0);
}

TEST_F(L3PortAdd, ProgrammingAgainNeedsAContext)
{
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 0), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({report(STEP, "unable to get itf(" + lif->decimal() + ") pd_ctxt NULL\n")});
}

TEST_F(L3PortAdd, ProgrammingAgainWithoutARecordIsRefusedInSilence)
{
    lif->with_bare_context();
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 0), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({});
}

TEST_F(L3PortAdd, InternalVlanIsAlwaysTheRoutedOne)
{
    lif->lif.int_vlan = 100;
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    EXPECT_EQ(lif->lif.int_vlan, 4094);
    EXPECT_EQ(calls_of({"bcm_vlan_create"}), Calls{"bcm_vlan_create(0, 4094) = 0"});
}

TEST_F(L3PortAdd, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 1);
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 1), -1);
    EXPECT_EQ(calls().back(), "bcm_switch_control_set(1, 232, 1) = -3");
}

TEST_F(L3PortAdd, MplsControlGetsTheWholeWord)
{
    lif->properties.mpls_en = 0x80000007;
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_control_set"}).back(),
              "fwmpd_bcm_port_control_set(0, 5, 14, -2147483641) = 0");
}

TEST_F(L3PortAdd, MplsControlIsOffWithoutProperties)
{
    lif->without_properties();
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_port_control_set"}).back(),
              "fwmpd_bcm_port_control_set(0, 5, 14, 0) = 0");
}

TEST_F(L3PortAdd, PropertiesMissingStopItAtTheIngressStep)
{
    lif->without_properties();
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), -1);
    expect_reports({
        report("rtifhal_l3_ing_create", "Failed to get l3lif pd context for intf " + lif->index()),
        if_failed(*lif),
    });
}

namespace
{

/** A step that the chip refuses with -4: the call, and its message around the id. */
struct RefusedStep {
    std::string name;
    std::string function;
    std::string arguments;
    std::string before_id;
    std::string after_id;
};

class L3PortAddRefused : public L3PortAdd, public ::testing::WithParamInterface<RefusedStep>
{
protected:
    /** The step fails, nothing comes after it, and the message names that id. */
    void expect_refusal(int create, int id)
    {
        const RefusedStep &step = GetParam();
        fail_when(step.function, step.arguments, -4);
        EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), create), -1);
        EXPECT_EQ(calls().back(), fmt::format("{}({}) = -4", step.function, step.arguments));
        expect_reports({report(STEP, fmt::format("{}{}{} failed: {}\n", step.before_id, id,
                                                 step.after_id, _shr_errmsg[4]))});
        EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
    }
};

} // namespace

TEST_P(L3PortAddRefused, StopsAFirstAddUnderTheNumberZero)
{
    lif->with_record(7);
    expect_refusal(1, 0);
}

TEST_P(L3PortAddRefused, StopsALaterAddUnderTheLiveNumber)
{
    lif->with_record(7);
    expect_refusal(0, 7);
}

TEST_P(L3PortAddRefused, StopsTheAddOfAParkedInterfaceUnderTheNumberZero)
{
    lif->with_parked(7);
    expect_refusal(0, 0);
}

TEST_P(L3PortAddRefused, PositiveAnswerIsNoRefusal)
{
    fail_when(GetParam().function, GetParam().arguments, 1);
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 1), 0);
    expect_reports({});
}

const std::string PORT_CONTROL = "fwmpd_bcm_port_control_set";

INSTANTIATE_TEST_SUITE_P(
    L3PortAdd, L3PortAddRefused,
    ::testing::Values(
        RefusedStep{"SwitchControl", "bcm_switch_control_set", "0, 232, 1", "itf set (", ")"},
        RefusedStep{"Ip4", PORT_CONTROL, "0, 5, 8, 1", "itf set [IP4] (", ")"},
        RefusedStep{"Ip4Multicast", PORT_CONTROL, "0, 5, 10, 1", "itf set [IP4] (", ")"},
        RefusedStep{"Mpls", PORT_CONTROL, "0, 5, 14, 0", "itf set [MPLS] (", ")"},
        RefusedStep{"UntaggedVlan", "fwmpd_bcm_port_untagged_vlan_set", "0, 5, 4094", "itf set (",
                    ")"}),
    [](const auto &row) { return row.param.name; });

TEST_F(L3PortAdd, RefusedObjectStopsBeforeTheVlan)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({"bcm_vlan_create", "rtifhal_bcm_l3_ingress_create"}), Calls{});
    expect_reports({
        report("rtifhal_l3_intf_create", fmt::format("rtifhal_bcm_l3_intf_create({}) failed: {}\n",
                                                     lif->index(), _shr_errmsg[6])),
        report(STEP, "itf create(" + lif->decimal() + ") failed\n"),
        itf_failed(*lif),
    });
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
}

TEST_F(L3PortAdd, RefusedVlanLeavesTheObjectInPlace)
{
    fail("fwmpd_bcm_vlan_port_add", -4);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = -4");
    expect_reports({
        report("rtifhal_vlan_create",
               fmt::format("vlan_port(4094,5) failed: {}\n", _shr_errmsg[4])),
        report(STEP, "itf vlan enable(" + lif->decimal() + ") failed\n"),
        itf_failed(*lif),
    });
    EXPECT_EQ(lif->record()->l3intf_id, 3);
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
    sw.end_request();
    EXPECT_NE(sw.chip.l3_interfaces.find(3), nullptr);
    EXPECT_EQ(sw.chip.ports.get(PORT).controls, (std::map<int, int>{{8, 1}, {10, 1}}));
}

TEST_F(L3PortAdd, ObjectThatIsHandedOverHasTheLiveNumberOrNone)
{
    const HandedOver watch;
    rtifhal_trident_l3port_add(lif->get(), 1);
    ASSERT_TRUE(HandedOver::record().has_value());
    EXPECT_EQ(HandedOver::record()->l3a_intf_id, 0);
    EXPECT_EQ(rtifhal_trident_l3port_add(lif->get(), 0), 0);
    EXPECT_EQ(HandedOver::record()->l3a_intf_id, 3);
}

TEST_F(L3PortAdd, EntryReportsWithTheCreateThatItWasGiven)
{
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 0), -1);
    expect_reports({
        report(STEP, "unable to get itf(" + lif->decimal() + ") pd_ctxt NULL\n"),
        itf_failed(*lif, 0),
    });
}

TEST_F(L3PortAdd, FailedIngressStepHandsItsValueUp)
{
    fail("if_index_get_type", 5, 2);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 5);
    EXPECT_EQ(calls().back(), called::no_type(*lif, 5));
    expect_reports({if_failed(*lif)});
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
}

TEST_F(L3PortAdd, FailedEgressStepHandsItsValueUp)
{
    fail("fwmpd_bcm_switch_control_set", -16);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), -16);
    expect_reports({
        report("rtifhal_l3_egr_create",
               fmt::format("itf set egr (3) failed: {}\n", _shr_errmsg[16])),
        if_failed(*lif),
    });
    EXPECT_EQ(lif->lif.lif_state, UNTOUCHED);
}

TEST_F(L3PortAdd, RefusedIngressObjectIsSeenInTheMessagesOnly)
{
    fail("rtifhal_bcm_l3_ingress_create", -6);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    EXPECT_EQ(lif->lif.lif_state, 3U);
    EXPECT_EQ(calls_of({PORT_CONTROL}).back(), called::port_control(PORT, 3));
}

TEST_F(L3PortAdd, FastRestartIgnoresARefusedPublication)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    fail("l3lif_update_sdb_for_intf", -1);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), 0);
    EXPECT_EQ(calls_of({"get_string_from_platform_inf"}).size(), 1U);
    expect_reports({});
}

TEST_F(L3PortAdd, FastRestartDoesNothingMoreForAnAddThatFailed)
{
    sw.system.fast_restart = true;
    fail("fwmpd_bcm_port_untagged_vlan_set", -4);
    EXPECT_EQ(rtifhal_trident_add_l3port(lif->get(), 1), -1);
    EXPECT_EQ(calls_of({"sysmgr_is_fastboot_restart", "l3lif_update_sdb_for_intf"}), Calls{});
}

TEST_F(L3PortAdd, PortBeyondTheTableComesUpWithoutItsMode)
{
    const auto far = port(105);
    EXPECT_EQ(rtifhal_trident_add_l3port(far->get(), 1), 0);
    EXPECT_EQ(calls_of({"bcm_vlan_control_port_set", "bcm_field_entry_reinstall"}), Calls{});
    EXPECT_EQ(far->lif.lif_state, 3U);
}

TEST_F(L3PortAdd, HighestPortOfAnIfindexIsHandedOnWithoutWrap)
{
    const auto last = port(256);
    EXPECT_EQ(rtifhal_trident_add_l3port(last->get(), 1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_port_control_set(0, 256, 8, 1) = -4");
    expect_reports({
        report(STEP, fmt::format("itf set [IP4] (0) failed: {}\n", _shr_errmsg[4])),
        itf_failed(*last),
    });
}

} // namespace rtifhal_test::l3port_add
