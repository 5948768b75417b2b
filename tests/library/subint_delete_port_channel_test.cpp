/*
 * subint_delete_port_channel_test.cpp: a subinterface of a port-channel goes
 * down: the translation and the L3 interface with the first member, the VLAN on
 * each, and a walk that no failure stops.
 *
 * subint_delete_test.cpp has the port, subint_port_controls_test.cpp what the
 * last subinterface gives back.
 */
#include "support/subint_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::subint_delete_port_channel
{

namespace
{

using namespace subint_road;

const std::string ENTRY = "rtifhal_trident_del_subint";
const std::string STEP = "rtifhal_trident_subint_del";
const std::string ON_PORT = "rtifhal_trident_subint_del_int";
const std::string OBJECT = "rtifhal_bcm_l3_intf_delete";
const std::string LEAVE = "fwmpd_bcm_vlan_port_remove";

/** A member's controls as those of the port-channel, whose IPv4 is on. */
Calls controls_restored(int port)
{
    return {called::unit(), fmt::format("bcm_port_control_set(0, {}, 8, 1) = 0", port),
            fmt::format("bcm_port_control_set(0, {}, 10, 0) = 0", port),
            fmt::format("bcm_port_control_set(0, {}, 9, 0) = 0", port)};
}

/** What comes before a member's delete; only the last subinterface restores. */
Calls before_member(const Lif &sub, const Lif &main, int port, bool last)
{
    return join({main_asked(sub, main), last ? controls_restored(port) : Calls{}});
}

/** The interface step as a whole. */
Calls interface_step(const Lif &sub, const Lif &main, bool destroy, bool last)
{
    return join({Calls{called::unit()}, members_read(sub, {5, 6, 9}), object_read(),
                 before_member(sub, main, 5, last), Calls{called::unit()},
                 untranslated(TRUNK_GPORT), object_deleted(sub, destroy), vlan_left(5, {6, 9}),
                 before_member(sub, main, 6, last), Calls{called::unit()}, vlan_left(6, {9}),
                 before_member(sub, main, 9, last), Calls{called::unit()}, vlan_left(9, {})});
}

/** A member leaves the VLAN, which has that many ports, and others after it. */
Messages vlan_left_messages(int port, int ports)
{
    const std::string block = "rtifhal_subintf_block_set";
    return {
        trace("rtifhal_vlan_delete", fmt::format("vlan 100 port {}\n", port)),
        trace(block, fmt::format("\n\n UMCB Vlan = 100 type = 1 port = {} set = 0\n", port)),
        trace(block, fmt::format("{} RESET BCM_PBMP_MEMBER lvtc->subint_count:{}\n", block, ports)),
        trace(block, fmt::format("{} RESET lvtc->subint_count:{}\n", block, ports - 1)),
        trace(block, fmt::format(" UMCB Remove Port {} in all blk mask for:100\n", port)),
        trace(block, "UMCB Calling bcm_vlan_block_set 100\n"),
        trace(block, fmt::format("\n pbmp_count {}", ports - 1)),
    };
}

/** Port-channel 7 with its one subinterface up under the number 3. */
class SubintDeleteOnPortChannel : public SubintOnPortChannel
{
protected:
    SubintDeleteOnPortChannel() { brought_up(); }

    static Message searching() { return report(STEP, "Searching l3-intf on intf-id 3\n"); }
    static Message done() { return report(STEP, " ifindex 2000700a Done\n"); }
    Message vlan_kept(int port) const
    {
        return report("rtifhal_vlan_delete",
                      fmt::format("vlan_port(100, {}) failed: {}\n", port, _shr_errmsg[4]));
    }
    Message member_failed() const
    {
        return report(ON_PORT, fmt::format("itf vlan enable({}) failed: {}\n", sub->decimal(),
                                           _shr_errmsg[0]));
    }
    /** The trunk was read without a member, for whatever reason. */
    void expect_nothing_taken_out() const
    {
        EXPECT_EQ(calls_of({UNTRANSLATE, OBJECT, LEAVE, "if_index_get_mainintf_from_subintf"}),
                  Calls{});
        expect_reports({searching(), done()});
        EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 3);
    }
};

} // namespace

TEST_F(SubintDeleteOnPortChannel, DownForGoodMakesEveryCall)
{
    EXPECT_EQ(del(*sub, 1), 0);
    expect_calls(
        join({untied(*sub, *main, true), interface_step(*sub, *main, true, /*last=*/true)}));
    EXPECT_EQ(sub->lif.lif_state, 4U);
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
    EXPECT_TRUE(held_back(IIF));
}

TEST_F(SubintDeleteOnPortChannel, DownWithTheRecordKeptParksTheNumber)
{
    EXPECT_EQ(del(*sub, 0), 0);
    expect_calls(
        join({untied(*sub, *main, false), interface_step(*sub, *main, false, /*last=*/true)}));
    EXPECT_EQ(sub->record()->prev_l3_if_index, IIF);
}

TEST_F(SubintDeleteOnPortChannel, FirstOfTwoLeavesTheMembersControlsAlone)
{
    ChannelSub other(*main, 11, 200);
    subs.insert(other.get());
    EXPECT_EQ(del(*sub, 1), 0);
    expect_calls(
        join({untied(*sub, *main, true), interface_step(*sub, *main, true, /*last=*/false)}));
}

TEST_F(SubintDeleteOnPortChannel, StepLeavesEveryMessage)
{
    set_members({0x8000005, 0x8000006});
    del_step(*sub, 0);
    const std::string object = "rtifhal_l3_intf_delete";
    expect_messages(join({
        Messages{
            trace(STEP, "ifindex = 2000700a\n"),
            trace("fwmpd_ifindex_to_bcm_tid", "rc = 0 ifindex = 2000700a tid = 41 \n"),
            trace(STEP, " bcm_port: -1 tid = 41\n"),
            searching(),
            trace("rtifhal_vlan_del_xlate", "old-vlan 100 gport c000029\n"),
            trace(object, "l3lif->ifindex = 2000700a destroy = 0\n"),
            trace(object, "intf-delete for 2000700a\n"),
        },
        vlan_left_messages(5, 3),
        vlan_left_messages(6, 2),
        Messages{done()},
    }));
}

TEST_F(SubintDeleteOnPortChannel, SecondNameReadsTheTrunkToo)
{
    EXPECT_EQ(rtifhal_subint_del(sub->get(), 0), 0);
    expect_calls(interface_step(*sub, *main, false, /*last=*/true));
    EXPECT_EQ(messages().front(), trace("rtifhal_subint_del", "ifindex = 2000700a\n"));
    expect_reports({report("rtifhal_subint_del", "Searching l3-intf on intf-id 3\n"),
                    report("rtifhal_subint_del", " ifindex 2000700a Done\n")});
}

TEST_F(SubintDeleteOnPortChannel, UnknownTrunkIsRefused)
{
    // The second question is the look-up's own.
    fail("if_index_is_eth_port_channel_intf", 0, 2);
    EXPECT_EQ(del_step(*sub, 1), -1);
    expect_calls(
        {called::unit(), called::is_port_channel(*sub, 1), called::is_port_channel(*sub, 0)});
    expect_reports({report(STEP, " unable to get tid(0x2000700a)\n")});
}

TEST_F(SubintDeleteOnPortChannel, TrunkThatCantBeReadTakesNothingOutAndIsDone)
{
    fail("bcm_trunk_get", -7);
    EXPECT_EQ(del_step(*sub, 1), 0);
    EXPECT_EQ(calls().back(), object_read().back());
    expect_nothing_taken_out();
}

TEST_F(SubintDeleteOnPortChannel, WithoutMembersTheResultIsThatOfTheObjectsRead)
{
    set_members({});
    fail("bcm_l3_intf_get", -7);
    EXPECT_EQ(del_step(*sub, 1), -7);
    expect_nothing_taken_out();
}

TEST_F(SubintDeleteOnPortChannel, EntryHandsTheResultOfTheObjectsReadUp)
{
    fail("bcm_trunk_get", -7);
    fail("bcm_l3_intf_get", -4);
    EXPECT_EQ(del(*sub, 0, 2), -4);
    EXPECT_EQ(reports().back(),
              report(ENTRY, "\nrtifhal_trident_del_subint: L3LIF failed to rm: 0x2000700a, 0\n"));
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintDeleteOnPortChannel, EntryHandsAPositiveResultUpAsAFailure)
{
    set_members({});
    fail("bcm_l3_intf_get", 1);
    EXPECT_EQ(del(*sub, 0, 2), 1);
    EXPECT_EQ(reports().back(),
              report(ENTRY, "\nrtifhal_trident_del_subint: L3LIF failed to rm: 0x2000700a, 0\n"));
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintDeleteOnPortChannel, RefusedTranslationOfTheFirstMemberDoesNotStopTheWalk)
{
    fail(UNTRANSLATE, -7);
    EXPECT_EQ(del_step(*sub, 1), 0);
    EXPECT_EQ(calls_of({UNTRANSLATE, OBJECT, LEAVE}),
              join({untranslated(TRUNK_GPORT, -7),
                    Calls{LEAVE + "(0, 100, {6}) = 0", LEAVE + "(0, 100, {9}) = 0"}}));
    expect_reports({
        searching(),
        report("rtifhal_vlan_del_xlate",
               fmt::format("bcm_vlan_translate_action_del(100) failed: {}\n", _shr_errmsg[7])),
        report(ON_PORT, "itf xlate enable(" + sub->decimal() + ") failed\n"),
        done(),
    });
}

TEST_F(SubintDeleteOnPortChannel, EarlierMembersFailureIsForgotten)
{
    fail(LEAVE, -4, 2);
    EXPECT_EQ(del_step(*sub, 1), 0);
    EXPECT_EQ(sw.journal.count(LEAVE), 3U);
    expect_reports({searching(), vlan_kept(6), member_failed(), done()});
}

TEST_F(SubintDeleteOnPortChannel, LastMembersFailureIsTheResult)
{
    fail(LEAVE, -4, 3);
    EXPECT_EQ(del_step(*sub, 1), -1);
    expect_reports({searching(), vlan_kept(9), member_failed(), done()});
}

TEST_F(SubintDeleteOnPortChannel, MemberThatIsNoModulePortIsPortMinusOne)
{
    set_members({0xc000008});
    EXPECT_EQ(del_step(*sub, 1), 0);
    EXPECT_EQ(calls_of({"bcm_port_control_set"}).size(), 3U);
    for (const std::string &call : calls_of({"bcm_port_control_set"})) {
        EXPECT_TRUE(call.starts_with("bcm_port_control_set(0, -1, ")) << call;
    }
    EXPECT_EQ(calls_of({UNTRANSLATE, LEAVE}),
              join({untranslated(TRUNK_GPORT), Calls{LEAVE + "(0, 100, {}) = 0"}}));
}

TEST_F(SubintDeleteOnPortChannel, LaterMembersDeleteIsTheVlanAlone)
{
    EXPECT_EQ(rtifhal_trident_subint_del_int(sub->get(), 6, 0xc000029, {}, 0, 1), 0);
    expect_calls(join({Calls{called::unit()}, vlan_left(6, {5, 9})}));
    EXPECT_EQ(messages().front(), trace("rtifhal_vlan_delete", "vlan 100 port 6\n"));
}

TEST_F(SubintDeleteOnPortChannel, AlreadyDownIsFinishedForGoodWithoutTheTrunk)
{
    del(*sub, 0);
    start();
    EXPECT_EQ(del(*sub, 1), 0);
    EXPECT_EQ(calls_of({"bcm_trunk_get", LEAVE}), Calls{});
    EXPECT_EQ(calls_of({"rtifhal_bcm_l3_ingress_destroy"}), Calls{called::destroy_ingress(IIF)});
    EXPECT_EQ(sub->lif.l3lif_pd_ctxt, nullptr);
}

} // namespace rtifhal_test::subint_delete_port_channel
