/*
 * l3pc_subinterfaces_test.cpp: the subinterfaces that a port-channel has when
 * a member comes up, replayed on the member's port, and taken off it when the
 * member goes.
 *
 * l3pc_add_test.cpp and l3pc_delete_test.cpp have the other steps.
 */
#include "support/member_roads.h"

#include "services/tree.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::l3pc_subinterfaces
{

namespace
{

using namespace member_road;
using namespace vlan_road;

const std::string ADD = "rtifhal_trident_l3pc_add";
const std::string DEL = "rtifhal_trident_l3pc_del";
const std::string TRANSLATE = "fwmpd_bcm_vlan_translate_action_add";
const std::string TRANSLATE_DELETE = "fwmpd_bcm_vlan_translate_action_delete";
const std::string LOOK_UP = "fwmpd_bcm_vlan_control_port_set";
const std::string VLAN_REMOVE = "fwmpd_bcm_vlan_port_remove";
const std::string FIRST_NODE = "avl_get_first(tree) = record";
const std::string NEXT_NODE = "avl_get_next(tree, node) = record";
const std::string LAST_NODE = "avl_get_next(tree, node) = null";
const std::string HAS_SUBINTERFACES = "rtifhal_if_has_si(0x20007000) = 1";
/** The last call of a port's way into VLAN 4094. */
const std::string IN_ROUTED_VLAN = "fwmpd_bcm_vlan_control_vlan_set(0, 4094, {vrf=0 iif=0 "
                                   "flags=0x0 class=0 urpf=0}) = 0";

std::string translated(int vlan, int iif, int code = 0)
{
    return fmt::format("{}(0, 0x8000005, 8, {}, 65535, {{vlan=4094 iif={} ot_outer=2 "
                       "dt_outer=0}}) = {}",
                       TRANSLATE, vlan, iif, code);
}

std::string untranslated(int vlan, int code = 0)
{
    return fmt::format("{}(0, 0x8000005, 8, {}, 0) = {}", TRANSLATE_DELETE, vlan, code);
}

std::string looked_up(int code = 0)
{
    return fmt::format("{}(0, 5, 14, 8) = {}", LOOK_UP, code);
}

/** Port 5 is the first in a subinterface's VLAN. */
Calls vlan_joined(int vlan)
{
    return join({creates(vlan), becomes_routed(vlan, "0x278"), adds_port(vlan, FIRST, "{}"),
                 first_use_calls(vlan, FIRST), refreshed_controls_calls(vlan, "0x278")});
}

/** A subinterface is replayed on port 5. */
Calls replayed(int vlan, int iif)
{
    return join({vlan_joined(vlan),
                 Calls{looked_up(), "bcm_vlan_action_set_t_init()", translated(vlan, iif)}});
}

/** Port-channel 7 with two subinterfaces: VLAN 100 under 11, VLAN 200 under 12. */
class MemberSubinterfaces : public MemberTest
{
protected:
    MemberSubinterfaces()
    {
        low->with_record(11);
        high->with_record(12);
        high->lif.si_encap_vlan = 200;
        has_subinterfaces();
    }

    /** The port-channel has these, in any order. */
    void tree_of(const std::vector<Lif *> &subinterfaces)
    {
        for (Lif *sub : subinterfaces) {
            ASSERT_TRUE(tree.insert(sub->get()));
        }
        main->lif.subint_tree = tree.get();
    }
    int add(int create) { return rtifhal_trident_l3pc_add(first->get(), create); }
    int del(int destroy) { return rtifhal_trident_l3pc_del(first->get(), destroy); }
    /** The first member is up with these subinterfaces. */
    void up_with(const std::vector<Lif *> &subinterfaces)
    {
        tree_of(subinterfaces);
        ASSERT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
        sw.end_request();
        start();
    }
    /** The calls of the add behind VLAN 4094. */
    Calls behind_routed_vlan() const { return calls_after(calls(), IN_ROUTED_VLAN); }
    /** The calls of the delete behind the port's discard mode. */
    Calls behind_discard(int code = 0) const
    {
        return calls_after(calls(), fmt::format("fwmpd_bcm_port_discard_set(0, 5, 0) = {}", code));
    }
    /** The reports of the member's own steps. */
    Messages step_reports() const
    {
        auto seen = reports();
        std::erase_if(seen, [](const Message &message) {
            return message.function != ADD && message.function != DEL;
        });
        return seen;
    }

    std::unique_ptr<Lif> low = subinterface(*main, 10);
    std::unique_ptr<Lif> high = subinterface(*main, 20);
    simswitch::services::Tree tree;
};

} // namespace

TEST_F(MemberSubinterfaces, EachIsReplayedOnTheModulePortInTheTreesOrder)
{
    tree_of({high.get(), low.get()});
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(behind_routed_vlan(), join({Calls{HAS_SUBINTERFACES}, untagged_vlan(FIRST),
                                          Calls{FIRST_NODE}, replayed(100, 11), Calls{NEXT_NODE},
                                          replayed(200, 12), Calls{LAST_NODE}, ordinary_start()}));
    EXPECT_EQ(calls_of({"bcm_vlan_create"}).size(), 3U);
    EXPECT_EQ(calls_of({UNTAGGED_VLAN}), join({untagged_vlan(FIRST), untagged_vlan(FIRST)}));
    expect_reports(
        {report("rtifhal_alloc_l3pc_add", "calling bcm_trunk_create_id(unit=0, tid=8)\n")});
}

TEST_F(MemberSubinterfaces, ReplayLeavesEveryMessage)
{
    tree_of({low.get()});
    add(1);
    const auto seen = messages();
    const auto begin = std::ranges::find(
        seen, trace(ADD, "Enable subinterface setting on " + first->hex() + "\n"));
    ASSERT_NE(begin, seen.end());
    const std::string vlan = "rtifhal_vlan_create";
    EXPECT_EQ(Messages(begin + 1, seen.end()),
              join({Messages{
                        trace(ADD, fmt::format("SI lif {} ifindex {} vlan 100 intf_id = 11\n",
                                               fmt::ptr(low->get()), low->hex())),
                        trace(vlan, "vlan 100 port 5\n"),
                        trace(vlan, "set the flags 0x278\n"),
                    },
                    first_use_messages(100, FIRST),
                    Messages{
                        trace(vlan, " Set vlan control for vid: 100, flags: 0x278\n"),
                        trace(vlan, "Created 100 vlan \n"),
                        trace("rtifhal_vlan_xlate_enable", "port 5\n"),
                        trace("rtifhal_vlan_xlate",
                              "gport 8000005, old_vid 100, new_vid 4094, l3_iif 11\n"),
                        trace("rtifhal_vlan_xlate",
                              "xlate enable ( gport 8000005) from-vlan 100 to-vlan 4094 if 11\n"),
                    }}));
}

TEST_F(MemberSubinterfaces, OnlyTheIp4ControlsAreSetAndAlwaysOn)
{
    main->properties = {};
    main->properties.ipv6_en = 1;
    main->properties.mpls_en = 1;
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(port_controls(), (Calls{"fwmpd_bcm_port_control_set(0, 5, 8, 1) = 0",
                                      "fwmpd_bcm_port_control_set(0, 5, 10, 1) = 0"}));
}

TEST_F(MemberSubinterfaces, SecondMemberGetsThemUnderItsOwnModulePort)
{
    up_with({low.get(), high.get()});
    EXPECT_EQ(rtifhal_trident_add_l3pc(second->get(), 0), 0);
    EXPECT_EQ(calls_of({"bcm_vlan_create", LOOK_UP, TRANSLATE}),
              (Calls{"bcm_vlan_create(0, 4094) = -8", "bcm_vlan_create(0, 100) = -8",
                     LOOK_UP + "(0, 6, 14, 8) = 0",
                     TRANSLATE + "(0, 0x8000006, 8, 100, 65535, {vlan=4094 iif=11 ot_outer=2 "
                                 "dt_outer=0}) = 0",
                     "bcm_vlan_create(0, 200) = -8", LOOK_UP + "(0, 6, 14, 8) = 0",
                     TRANSLATE + "(0, 0x8000006, 8, 200, 65535, {vlan=4094 iif=12 ot_outer=2 "
                                 "dt_outer=0}) = 0"}));
    expect_reports({});
}

TEST_F(MemberSubinterfaces, QuestionIsAskedAtEachOfBothSteps)
{
    tree_of({low.get()});
    sw.journal.disarm();
    fail("rtifhal_if_has_si", 1, 2);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(port_controls(), port_opened(FIRST, {1, 0, 0, 0, 0}));
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(100, 11)});
}

TEST_F(MemberSubinterfaces, AnswerNoLeavesTheTreeAlone)
{
    tree_of({low.get()});
    sw.journal.disarm();
    fail("rtifhal_if_has_si", 1);
    fail("rtifhal_if_has_si", 0, 2);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({"avl_get_first", TRANSLATE}), Calls{});
    EXPECT_EQ(port_controls().size(), 2U);
}

TEST_F(MemberSubinterfaces, NoTreeReplaysNothing)
{
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(behind_routed_vlan(),
              join({Calls{HAS_SUBINTERFACES}, untagged_vlan(FIRST), ordinary_start()}));
}

TEST_F(MemberSubinterfaces, EmptyTreeReplaysNothing)
{
    tree_of({});
    EXPECT_EQ(add(1), 0);
    // Its count says that it is empty; there is no walk.
    EXPECT_EQ(behind_routed_vlan(),
              join({Calls{HAS_SUBINTERFACES}, untagged_vlan(FIRST), ordinary_start()}));
}

TEST_F(MemberSubinterfaces, SecondRefusedUntaggedVlanComesOutWhereThereIsNothingToReplay)
{
    fail(UNTAGGED_VLAN, -4, 2);
    EXPECT_EQ(add(1), -4);
    EXPECT_EQ(calls().back(), ordinary_start()[0]);
}

TEST_F(MemberSubinterfaces, ReplayHidesARefusedUntaggedVlan)
{
    tree_of({low.get()});
    fail(UNTAGGED_VLAN, -4, 2);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(100, 11)});
}

TEST_F(MemberSubinterfaces, ReplayHidesARefusedObject)
{
    tree_of({low.get()});
    fail("rtifhal_bcm_l3_intf_create", -6);
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(100, 11)});
    EXPECT_EQ(step_reports(),
              (Messages{report(ADD, "itf create(" + first->decimal() + ") failed\n")}));
}

TEST_F(MemberSubinterfaces, NumberIsTheLiveOneAlsoOfAParkedRecord)
{
    const auto parked = subinterface(*main, 30);
    parked->with_parked(13);
    tree_of({parked.get()});
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(100, 0)});
}

TEST_F(MemberSubinterfaces, OnesWithoutAContextOrRecordAreReplayedUnderZero)
{
    const auto bare = subinterface(*main, 1);
    bare->with_bare_context();
    const auto none = subinterface(*main, 2);
    none->lif.si_encap_vlan = 300;
    tree_of({bare.get(), none.get(), high.get()});
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}),
              (Calls{translated(100, 0), translated(300, 0), translated(200, 12)}));
}

TEST_F(MemberSubinterfaces, TranslationOfTheRoutedVlanLeavesTheTagAsItIs)
{
    low->lif.si_encap_vlan = 4094;
    tree_of({low.get()});
    EXPECT_EQ(add(1), 0);
    EXPECT_EQ(calls_of({TRANSLATE}),
              Calls{TRANSLATE + "(0, 0x8000005, 8, 4094, 65535, {vlan=4094 iif=11 ot_outer=0 "
                                "dt_outer=0}) = 0"});
}

TEST_F(MemberSubinterfaces, RefusedVlanStopsTheReplay)
{
    tree_of({low.get(), high.get()});
    fail_when("fwmpd_bcm_vlan_port_add", "0, 100, {0,5}, {}", -4);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_port_add(0, 100, {0,5}, {}) = -4");
    EXPECT_EQ(step_reports(), (Messages{report(ADD, "vlan enable for vlan 100 port 5 failed\n")}));
}

TEST_F(MemberSubinterfaces, RefusedLookUpKeyStopsTheReplay)
{
    tree_of({low.get(), high.get()});
    fail(LOOK_UP, -4);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls().back(), looked_up(-4));
    EXPECT_EQ(step_reports(),
              (Messages{report(ADD, "xlate enable(ifindex " + first->decimal() + ") failed\n")}));
    EXPECT_EQ(reports().at(1),
              report("rtifhal_vlan_xlate_enable",
                     fmt::format("xlate enable (5) failed: {}\n", _shr_errmsg[4])));
}

TEST_F(MemberSubinterfaces, RefusedTranslationStopsTheReplayBeforeTheFastRestartPart)
{
    tree_of({low.get(), high.get()});
    sw.system.fast_restart = true;
    fail(TRANSLATE, -6, 2);
    EXPECT_EQ(add(1), -1);
    EXPECT_EQ(calls().back(), translated(200, 12, -6));
    EXPECT_EQ(step_reports(),
              (Messages{report(ADD, " itf xlate enable(" + first->decimal() + ") failed\n")}));
}

TEST_F(MemberSubinterfaces, FailedReplayIsReportedByTheEntryWhichGoesOn)
{
    tree_of({low.get()});
    fail(TRANSLATE, -6);
    EXPECT_EQ(rtifhal_trident_add_l3pc(first->get(), 1), 0);
    EXPECT_EQ(reports().back(), report("rtifhal_trident_add_l3pc",
                                       "\nrtifhal_trident_add_l3pc: L3LIF failed to add itf: " +
                                           first->index() + ", 1\n"));
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberSubinterfaces, LeavingMemberTakesEachOff)
{
    up_with({low.get(), high.get()});
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(calls_of({VLAN_REMOVE}).front(), VLAN_REMOVE + "(0, 4094, {5}) = 0");
    EXPECT_EQ(
        behind_discard(),
        join({Calls{HAS_SUBINTERFACES, FIRST_NODE, untranslated(100),
                    VLAN_REMOVE + "(0, 100, {5}) = 0"},
              last_use_calls(100, FIRST),
              Calls{NEXT_NODE, untranslated(200), VLAN_REMOVE + "(0, 200, {5}) = 0",
                    "fwmpd_bcm_port_stp_set(0, 5, 0) = 0"},
              mode_off_calls(Kind::trident, FIRST), last_use_calls(200, FIRST), Calls{LAST_NODE}}));
    expect_reports({});
}

TEST_F(MemberSubinterfaces, LeavingLeavesEveryMessage)
{
    up_with({low.get()});
    del(0);
    const auto seen = messages();
    const auto begin = std::ranges::find(
        seen, trace(DEL, "Disable subintercae setting on " + first->hex() + "\n"));
    ASSERT_NE(begin, seen.end());
    EXPECT_EQ(Messages(begin + 1, seen.end()),
              join({Messages{
                        trace(DEL, "SI vlan 100 intf-id = 11\n"),
                        trace("rtifhal_vlan_del_xlate", "old-vlan 100 gport 8000005\n"),
                        trace("rtifhal_vlan_delete", "vlan 100 port 5\n"),
                        trace("rtifhal_vlan_delete", "Reset STP state for port 5\n"),
                    },
                    mode_off_messages(FIRST), last_use_messages(100, FIRST)}));
}

TEST_F(MemberSubinterfaces, LeavingTakesThemOffAlsoWhenThePortChannelsRecordGoes)
{
    up_with({low.get()});
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 1), 0);
    EXPECT_EQ(calls_of({TRANSLATE_DELETE}), Calls{untranslated(100)});
    sw.end_request();
    EXPECT_EQ(sw.chip.vlan_translations.size(), 0U);
    EXPECT_EQ(sw.chip.vlans.find(100), nullptr);
}

TEST_F(MemberSubinterfaces, AllFiveControlsAreOnOnTheWayOutAllTheSame)
{
    up_with({low.get()});
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(port_controls(), port_closed(FIRST));
}

TEST_F(MemberSubinterfaces, LeavingWithoutATreeEndsThere)
{
    up_with({low.get()});
    main->lif.subint_tree = nullptr;
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(behind_discard(), Calls{HAS_SUBINTERFACES});
    EXPECT_EQ(messages().back(),
              trace(DEL, "Disable subintercae setting on " + first->hex() + "\n"));
}

TEST_F(MemberSubinterfaces, LeavingWithAnEmptyTreeTakesNothingOff)
{
    up_with({});
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(behind_discard(), Calls{HAS_SUBINTERFACES});
    EXPECT_EQ(messages().back(),
              trace(DEL, "Disable subintercae setting on " + first->hex() + "\n"));
}

TEST_F(MemberSubinterfaces, LeavingNamesZeroForOnesWithoutAContextOrRecord)
{
    const auto bare = subinterface(*main, 1);
    bare->with_bare_context();
    const auto none = subinterface(*main, 2);
    none->lif.si_encap_vlan = 300;
    up_with({bare.get(), none.get()});
    EXPECT_EQ(del(0), 0);
    EXPECT_EQ(calls_of({TRANSLATE_DELETE}), (Calls{untranslated(100), untranslated(300)}));
    const auto seen = messages();
    EXPECT_NE(std::ranges::find(seen, trace(DEL, "SI vlan 300 intf-id = 0\n")), seen.end());
}

TEST_F(MemberSubinterfaces, RefusedTranslationStopsTheTakingOff)
{
    up_with({low.get(), high.get()});
    fail(TRANSLATE_DELETE, -7);
    EXPECT_EQ(rtifhal_trident_del_l3pc(first->get(), 0), -1);
    EXPECT_EQ(calls().back(), untranslated(100, -7));
    EXPECT_EQ(step_reports(),
              (Messages{report(DEL, "itf xlate disable(" + first->decimal() + ") failed\n")}));
    EXPECT_EQ(first->lif.lif_state, 3U);
}

TEST_F(MemberSubinterfaces, RefusedVlanStopsTheTakingOffWithTheTextOfTheDiscard)
{
    up_with({low.get(), high.get()});
    fail_when(VLAN_REMOVE, "0, 100, {5}", -4);
    EXPECT_EQ(del(0), -1);
    EXPECT_EQ(calls().back(), VLAN_REMOVE + "(0, 100, {5}) = -4");
    EXPECT_EQ(step_reports(),
              (Messages{report(DEL, fmt::format("vlan disable({}) failed: {}\n", first->decimal(),
                                                _shr_errmsg[0]))}));
}

TEST_F(MemberSubinterfaces, RefusedVlanAfterARefusedDiscardPrintsThatText)
{
    up_with({low.get()});
    fail("fwmpd_bcm_port_discard_set", -16);
    fail_when(VLAN_REMOVE, "0, 100, {5}", -4);
    EXPECT_EQ(del(0), -1);
    EXPECT_EQ(step_reports(),
              (Messages{report(DEL, fmt::format("port_discard({}) failed: {}\n", first->decimal(),
                                                _shr_errmsg[16])),
                        report(DEL, fmt::format("vlan disable({}) failed: {}\n", first->decimal(),
                                                _shr_errmsg[16]))}));
}

} // namespace rtifhal_test::l3pc_subinterfaces
