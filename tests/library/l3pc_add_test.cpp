/*
 * l3pc_add_test.cpp: the steps of a port-channel member's add: who is turned
 * away, what each step that fails leaves behind, and that the entry point
 * never fails.
 *
 * l3pc_road_test.cpp has the road without failures, l3pc_trunk_test.cpp the
 * trunk, l3pc_subinterfaces_test.cpp the replay of subinterfaces.
 */
#include "support/default_routes.h"
#include "support/member_roads.h"
#include "support/misread.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::l3pc_add
{

namespace
{

using namespace member_road;

const std::string ENTRY = "rtifhal_trident_add_l3pc";
const std::string STEP = "rtifhal_trident_l3pc_add";
const std::string SWITCH_CONTROL = "fwmpd_bcm_switch_control_set";
const std::string STORE = "rtifhal_pss_l3port_store";

Message itf_failed(const Lif &member, int create)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to add itf: {}, {}\n", ENTRY,
                                     member.index(), create));
}

Message if_failed(const Lif &member, int create)
{
    return report(ENTRY, fmt::format("\n{}: L3LIF failed to add if: {}, 0, {}\n", ENTRY,
                                     member.index(), create));
}

/** The reports of the add without those of the trunk. */
Messages without_trunk(Messages reports)
{
    std::erase_if(reports,
                  [](const Message &seen) { return seen.function == "rtifhal_alloc_l3pc_add"; });
    return reports;
}

class MemberAdd : public MemberTest
{
protected:
    /** The interface step on the first member. */
    int add(int create) { return rtifhal_trident_l3pc_add(first->get(), create); }
    void expect_step_reports(const Messages &expected) const
    {
        EXPECT_EQ(without_trunk(reports()), expected);
    }
};

/** The port-channel has its number, and its trunk another member. */
class MemberAddAgain : public MemberAdd
{
protected:
    MemberAddAgain() { brought_up(*second, 1); }
};

} // namespace

TEST_F(MemberAdd, NoInterfaceIsASuccessWithoutACall)
{
    EXPECT_EQ(rtifhal_trident_add_l3pc(nullptr, 1), 0);
    expect_calls({});
}

TEST_F(MemberAdd, StepWithoutAnInterfaceSaysSo)
{
    EXPECT_EQ(rtifhal_trident_l3pc_add(nullptr, 1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: - \n"), report(STEP, " Got l3lif as null")});
}

TEST_F(MemberAdd, StepWithoutAPortChannelSaysTheSame)
{
    first->lif.main_l3lif = nullptr;
    EXPECT_EQ(add(1), -1);
    expect_calls({called::unit()});
    expect_messages({trace(STEP, " Entry: - \n"), report(STEP, " Got l3lif as null")});
}

TEST_F(MemberAdd, MemberWithoutAPortIsRefused)
{
    const auto other = tunnel(1);
    other->lif.main_l3lif = main->get();
    EXPECT_EQ(rtifhal_trident_l3pc_add(other->get(), 1), -1);
    expect_calls({called::unit(), called::type(*other, 24)});
    expect_reports({report(STEP, "unable to get bcm itf(" + other->decimal() + ")\n")});
    EXPECT_EQ(main->lif.tid, 0U);
}

TEST_F(MemberAdd, MemberOfWhatIsNoPortChannelIsRefused)
{
    const auto other = port(9);
    first->lif.main_l3lif = other->get();
    EXPECT_EQ(add(1), -1);
    expect_calls(join({Calls{called::unit()}, port_asked(*first, FIRST),
                       Calls{called::is_port_channel(*other, 0)}}));
    expect_reports({report(
        STEP, fmt::format("unable to get tid itf({}) pc({})\n", first->hex(), other->hex()))});
}

TEST_F(MemberAdd, TrunkIdThatNobodyHasFiledIsTheChannelPlusOne)
{
    sw.host.forget_trunk_id(main->lif.ifindex);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(main->lif.tid, 8U);
    EXPECT_EQ(calls_of({"bcm_trunk_create"}), Calls{"bcm_trunk_create(0, 0x10, 8) = 0"});
}

TEST_F(MemberAdd, MissingTrunkWithoutCreateHandsItsCodeUp)
{
    main->with_record(IIF);
    EXPECT_EQ(add(0), -7);
    EXPECT_EQ(calls().back(), "bcm_trunk_get(0, 8, 32) = -7");
    expect_step_reports({report(STEP, "unable to get tid itf(" + first->decimal() + ")\n")});
    EXPECT_EQ(main->lif.tid, 8U);
}

TEST_F(MemberAdd, RefusedTrunkHandsItsCodeUp)
{
    fail("bcm_trunk_create", -6);
    EXPECT_EQ(add(1), -6);
    EXPECT_EQ(calls().back(), "bcm_trunk_create(0, 0x10, 8) = -6");
    expect_step_reports({report(STEP, "unable to get tid itf(" + first->decimal() + ")\n")});
    EXPECT_EQ(main->lif.int_vlan, 0);
}

TEST_F(MemberAdd, MemberThatTheTrunkRefusesGoesOn)
{
    fail("fwmpd_bcm_trunk_member_add", -4);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls().back(), ordinary_start()[0]);
    expect_step_reports({});
    EXPECT_EQ(main->record()->l3intf_id, IIF);
}

TEST_F(MemberAddAgain, TrunkThatExistsIsReportedOnCreateAndAnotherNumberIsTaken)
{
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_reports(
        {report("rtifhal_alloc_l3pc_add",
                fmt::format("bcm_trunk_get(unit=0, tid=8) failed: {}\n", _shr_errmsg[0]))});
    EXPECT_EQ(main->record()->l3intf_id, IIF + 1);
}

TEST_F(MemberAddAgain, ContextMustBeThere)
{
    const auto bare = port_channel(7);
    first->lif.main_l3lif = bare->get();
    EXPECT_EQ(add(0), -1);
    EXPECT_EQ(calls_after(calls(), "bcm_trunk_member_t_init()"),
              (Calls{"fwmpd_bcm_trunk_member_add(0, 8, " + member_of_trunk(FIRST) + ") = 0",
                     called::intf_init()}));
    expect_reports({report(
        STEP, fmt::format("unable to get itf({}) NULL: {}\n", first->decimal(), _shr_errmsg[0]))});
}

TEST_F(MemberAddAgain, RecordMustBeThere)
{
    const auto bare = port_channel(7);
    bare->with_bare_context();
    first->lif.main_l3lif = bare->get();
    EXPECT_EQ(add(0), -1);
    EXPECT_EQ(calls().back(), called::intf_init());
    expect_reports({report(
        STEP, fmt::format("unable to get pd({}) NULL: {}\n", first->decimal(), _shr_errmsg[0]))});
}

TEST_F(MemberAddAgain, ObjectOfAnotherNumberIsRefused)
{
    const MisreadInterface other(4);
    EXPECT_EQ(add(0), -1);
    EXPECT_EQ(calls_of({SWITCH_CONTROL, PORT_CONTROL}), Calls{});
    expect_reports({report(STEP, fmt::format("itf get (3) mismatch: {}\n", _shr_errmsg[0]))});
}

TEST_F(MemberAddAgain, ObjectThatCantBeReadGoesOnUnderItsNumber)
{
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(add(0), 0);
    EXPECT_EQ(calls().back(), ordinary_start()[0]);
    expect_reports({});
}

TEST_F(MemberAddAgain, InternalVlanStaysAsItIsWithoutCreate)
{
    main->lif.int_vlan = 100;
    EXPECT_EQ(add(0), 0);
    EXPECT_EQ(main->lif.int_vlan, 100);
    EXPECT_EQ(calls_of({"bcm_vlan_create"}), Calls{"bcm_vlan_create(0, 100) = 0"});
    EXPECT_EQ(calls_of({UNTAGGED_VLAN}), untagged_vlan(FIRST));
}

TEST_F(MemberAdd, InternalVlanBecomesTheRoutedOneOnCreate)
{
    main->lif.int_vlan = 100;
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(main->lif.int_vlan, 4094);
    EXPECT_EQ(calls_of({"bcm_vlan_create"}), Calls{"bcm_vlan_create(0, 4094) = 0"});
}

TEST_F(MemberAdd, ControlsAreOnWhereTheWordIsOne)
{
    main->properties.ipv4_en = 1;
    main->properties.ipv4_mc_en = 1;
    main->properties.ipv6_en = 1;
    main->properties.mpls_en = 1;
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(port_controls(), port_opened(FIRST, {1, 1, 1, 0, 1}));
}

TEST_F(MemberAdd, ControlsAreOffWhereTheWordIsAnythingElse)
{
    main->properties.ipv4_en = 2;
    main->properties.ipv4_mc_en = 0x80000001;
    main->properties.ipv6_en = 0xFFFFFFFF;
    main->properties.mpls_en = 3;
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(port_controls(), port_opened(FIRST, {0, 0, 0, 0, 0}));
}

TEST_F(MemberAdd, MembersOwnPropertiesDontCount)
{
    first->properties.ipv6_en = 1;
    first->properties.mpls_en = 1;
    main->properties.ipv4_en = 0;
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(port_controls(), port_opened(FIRST, {0, 0, 0, 0, 0}));
}

TEST_F(MemberAdd, PropertiesMissingLeaveTheControlsOffAndStopTheOtherSteps)
{
    main->without_properties();
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    EXPECT_EQ(port_controls(), port_opened(FIRST, {0, 0, 0, 0, 0}));
    const std::string no_context = "Failed to get l3lif pd context for intf " + main->index();
    expect_step_reports({
        report("rtifhal_l3_ing_create", no_context),
        if_failed(*first, 1),
        report("rtifhal_l3_egr_create", no_context),
        if_failed(*first, 1),
    });
    EXPECT_EQ(first->lif.lif_state, 3U);
}

/** A call of the add whose refusal nobody looks at. */
struct IgnoredCall {
    std::string name;
    std::string function;
    std::string arguments;
    std::size_t calls; ///< of that function, all made
};

class MemberAddIgnores : public MemberAdd, public ::testing::WithParamInterface<IgnoredCall>
{
};

TEST_P(MemberAddIgnores, Refusal)
{
    fail_when(GetParam().function, GetParam().arguments, -4);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({GetParam().function}).size(), GetParam().calls);
    EXPECT_EQ(calls().back(), ordinary_start()[0]);
    expect_step_reports({});
}

INSTANTIATE_TEST_SUITE_P(
    MemberAdd, MemberAddIgnores,
    ::testing::Values(IgnoredCall{"TrunkRouting", SWITCH_CONTROL, "0, 364, 1", 2},
                      IgnoredCall{"Routing", SWITCH_CONTROL, "0, 232, 1", 2},
                      IgnoredCall{"Ip4", PORT_CONTROL, "0, 5, 8, 1", 5},
                      IgnoredCall{"Ip4Multicast", PORT_CONTROL, "0, 5, 10, 0", 5},
                      IgnoredCall{"Ip6", PORT_CONTROL, "0, 5, 9, 0", 5},
                      IgnoredCall{"Ip6Multicast", PORT_CONTROL, "0, 5, 11, 0", 5},
                      IgnoredCall{"Mpls", PORT_CONTROL, "0, 5, 14, 0", 5},
                      IgnoredCall{"UntaggedVlanOnCreate", UNTAGGED_VLAN, "0, 5, 4094", 1}),
    [](const auto &row) { return row.param.name; });

TEST_F(MemberAdd, RefusedStoreIsReportedByTheStoreAlone)
{
    fail(STORE, -1);
    EXPECT_EQ(add(1), 0);
    const auto seen = without_trunk(reports());
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].function, "rtifhal_trident_l3port_add_pss");
}

TEST_F(MemberAddAgain, RefusedUntaggedVlanComesOutAtTheEnd)
{
    fail(UNTAGGED_VLAN, -4);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 0), 0);
    EXPECT_EQ(calls_of({"bcm_vlan_create", "sysmgr_is_fastboot_restart"}),
              (Calls{"bcm_vlan_create(0, 4094) = -8", ordinary_start()[0]}));
    expect_reports({itf_failed(*first, 0)});
    start();
    fail(UNTAGGED_VLAN, -4);
    EXPECT_EQ(add(0), -4);
}

TEST_F(MemberAdd, RefusedObjectGoesOnAndComesOutAtTheEnd)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls_of({"bcm_vlan_create"}), Calls{"bcm_vlan_create(0, 4094) = 0"});
    EXPECT_EQ(calls().back(), ordinary_start()[0]);
    expect_step_reports({
        report("rtifhal_l3_intf_create", fmt::format("rtifhal_bcm_l3_intf_create({}) failed: {}\n",
                                                     main->index(), _shr_errmsg[6])),
        report(STEP, "itf create(" + first->decimal() + ") failed\n"),
    });
}

TEST_F(MemberAdd, ObjectIsMadeFromThePortChannelAndOnlyTheMemberIsHandedOver)
{
    main->lif.mac[5] = 0x99;
    rtifhal_trident_add_l3pc(first->get(), 1);
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_intf_create", STORE}),
              (Calls{"rtifhal_bcm_l3_intf_create(0, {flags=0x40 id=3 mac=00:11:22:33:44:99 "
                     "vid=4094 vrf=1 mtu=1500 ttl=0 tunnel=0}) = 0",
                     called::store(*main)}));
}

TEST_F(MemberAdd, RefusedVlanStopsTheStep)
{
    sw.system.fast_restart = true;
    fail("fwmpd_bcm_vlan_port_add", -4);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_port_add(0, 4094, {0,5}, {5}) = -4");
    expect_step_reports({
        report("rtifhal_vlan_create",
               fmt::format("vlan_port(4094,5) failed: {}\n", _shr_errmsg[4])),
        report(STEP, "itf vlan enable(" + first->decimal() + ") failed\n"),
    });
    EXPECT_EQ(main->record()->l3intf_id, IIF);
}

TEST_F(MemberAdd, RefusedVlanLeavesTheMemberInTheTrunk)
{
    fail("fwmpd_bcm_vlan_port_add", -4);
    rtifhal_trident_add_l3pc(first->get(), 1);
    sw.end_request();
    EXPECT_EQ(sw.chip.trunks.find(TRUNK)->members.size(), 1U);
}

TEST_F(MemberAdd, FastRestartGoesOnAfterARefusedObject)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls_of({"l3lif_update_sdb_for_intf"}),
              Calls{"l3lif_update_sdb_for_intf(" + first->text() + ") = 0"});
}

TEST_F(MemberAdd, FastRestartIgnoresARefusedPublication)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    fail("l3lif_update_sdb_for_intf", -1);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({"get_string_from_platform_inf"}).size(), 1U);
}

TEST_F(MemberAdd, EntryGoesOnAfterEachFailedStep)
{
    fail("bcm_trunk_create", -6);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    const std::string no_context = "Failed to get l3lif pd context for intf " + main->index();
    expect_step_reports({
        report(STEP, "unable to get tid itf(" + first->decimal() + ")\n"),
        itf_failed(*first, 1),
        report("rtifhal_l3_ing_create", no_context),
        if_failed(*first, 1),
        report("rtifhal_l3_egr_create", no_context),
        if_failed(*first, 1),
    });
    EXPECT_EQ(first->lif.lif_state, 3U);
    EXPECT_EQ(main->lif.lif_state, 3U);
}

TEST_F(MemberAdd, EntryWithoutAPortChannelEndsAtStateThreeToo)
{
    first->lif.main_l3lif = nullptr;
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 0), 0);
    const std::string no_context = "Failed to get l3lif pd context for intf " + first->index();
    expect_reports({
        report(STEP, " Got l3lif as null"),
        itf_failed(*first, 0),
        report("rtifhal_l3_ing_create", no_context),
        if_failed(*first, 0),
        report("rtifhal_l3_egr_create", no_context),
        if_failed(*first, 0),
    });
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberAdd, EntryReportsRefusedObjectInEachStepThatMissesIt)
{
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_step_reports({
        report("rtifhal_l3_intf_create", fmt::format("rtifhal_bcm_l3_intf_create({}) failed: {}\n",
                                                     main->index(), _shr_errmsg[6])),
        report(STEP, "itf create(" + first->decimal() + ") failed\n"),
        itf_failed(*first, 1),
        if_failed(*first, 1),
    });
    EXPECT_EQ(calls().back(), SWITCH_CONTROL + "(0, 230, 1) = 0");
    EXPECT_EQ(main->lif.lif_state, 3U);
}

TEST_F(MemberAdd, EntryReportsTheEgressStepLikeTheIngressStep)
{
    fail_when(SWITCH_CONTROL, "0, 230, 1", -16);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_step_reports({
        report("rtifhal_l3_egr_create",
               fmt::format("itf set egr (3) failed: {}\n", _shr_errmsg[16])),
        if_failed(*first, 1),
    });
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberAdd, EntryReportsAPositiveAnswerOfTheEgressStepToo)
{
    fail_when(SWITCH_CONTROL, "0, 230, 1", 1);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_step_reports({if_failed(*first, 1)});
}

TEST_F(MemberAdd, EntryReportsAPositiveAnswerOfTheIngressStepToo)
{
    fail("if_index_get_type", 5, 2); // the interface step asked first
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    expect_step_reports({if_failed(*first, 1)});
}

TEST_F(MemberAddAgain, PositiveAnswerOfTheUntaggedVlanComesOutTooAndIsReported)
{
    fail(UNTAGGED_VLAN, 1);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 0), 0);
    expect_reports({itf_failed(*first, 0)});
    start();
    fail(UNTAGGED_VLAN, 1);
    EXPECT_EQ(add(0), 1);
}

TEST_F(MemberAdd, UnitIsThePlatforms)
{
    fail("rtifhal_get_bcm_unit", 1);
    EXPECT_EQ(add(1), -3);
    EXPECT_EQ(calls().back(), "bcm_trunk_get(1, 8, 32) = -3");
}

namespace
{

/** A default route over the first member. */
class MemberOnFastRestart : public DefaultRoutesTest
{
};

} // namespace

TEST_F(MemberOnFastRestart, DefaultRoutesAreThoseOfTheMember)
{
    const auto main = port_channel(7);
    const auto first = port(FIRST);
    first->lif.main_l3lif = main->get();
    sw.host.set_trunk_id(main->lif.ifindex, TRUNK);
    loaded(
        {route_over({path_over(main->lif.ifindex)}), route_over({path_over(first->lif.ifindex)})});
    rtifhal_trident_l3pc_add(first->get(), 1);
    const Calls looked_up = calls_of({"l3lif_get_iif_for_ifindex_new"});
    ASSERT_EQ(looked_up.size(), 1U);
    EXPECT_TRUE(looked_up[0].starts_with("l3lif_get_iif_for_ifindex_new(" + first->index()));
}

} // namespace rtifhal_test::l3pc_add
