/*
 * subint_add_port_channel_test.cpp: a subinterface of a port-channel comes up:
 * the L3 interface and the translation once, on the trunk, everything else on
 * each member.
 *
 * subint_add_test.cpp has the port, subint_delete_port_channel_test.cpp the way
 * down.
 */
#include "support/subint_roads.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::subint_add_port_channel
{

namespace
{

using namespace subint_road;

const std::string ENTRY = "rtifhal_trident_add_subint";
const std::string STEP = "rtifhal_trident_subint_add";
const std::string ON_PORT = "rtifhal_trident_subint_add_int";
const std::string CREATE = "rtifhal_l3_intf_create";
const std::string OBJECT = "rtifhal_bcm_l3_intf_create";
const Calls ORDINARY_START = {"sysmgr_is_fastboot_restart() = 0"};

/** The trunk is read and the switch opened. */
Calls begun(const Lif &sub, const std::vector<int> &members)
{
    return join({Calls{called::unit()}, members_read(sub, members),
                 Calls{called::intf_init(), "fwmpd_bcm_switch_control_set(0, 232, 1) = 0"}});
}

/** The three members one after the other. */
Calls on_members(const ChannelSub &sub, const Lif &main)
{
    return join({port_opened(5), Calls{called::is_port_channel(main, 1)},
                 object_created(sub.view_text()), vlan_made(5), keyed(5), translated(TRUNK_GPORT),
                 port_opened(6), vlan_joined(6, {5, 6}), keyed(6), port_opened(9),
                 vlan_joined(9, {5, 6, 9}), keyed(9)});
}

class SubintAddOnPortChannel : public SubintOnPortChannel
{
protected:
    using SubintOnPortChannel::SubintOnPortChannel;

    /** What the step reports when its work on a member has failed. */
    Message failed_on(int port) const
    {
        return report(STEP, fmt::format("subint_add_int ({}, 0) gport {} port {} failed: \n",
                                        sub->decimal(), 0x8000000 | port, port));
    }
};

class SubintAddOnPortChannelOfTrident2 : public SubintAddOnPortChannel
{
protected:
    SubintAddOnPortChannelOfTrident2() : SubintAddOnPortChannel({5, 6, 9}, Kind::trident2) {}
};

class SubintAddWithoutMembers : public SubintAddOnPortChannel
{
protected:
    SubintAddWithoutMembers() : SubintAddOnPortChannel(std::vector<int>{}) {}
};

} // namespace

TEST_F(SubintAddOnPortChannel, UpMakesEveryCall)
{
    EXPECT_EQ(add(*sub, 1), 0);
    expect_calls(join({begun(*sub, {5, 6, 9}), on_members(*sub, *main), ORDINARY_START,
                       ingress_and_egress(*sub, *main, Kind::trident)}));
    EXPECT_EQ(sub->lif.lif_state, 3U);
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
    EXPECT_EQ(sub->lif.tid, 41U);
    EXPECT_EQ(sub->lif.int_vlan, VLAN);
}

TEST_F(SubintAddOnPortChannelOfTrident2, UpMakesEveryCall)
{
    EXPECT_EQ(add(*sub, 1), 0);
    expect_calls(join({begun(*sub, {5, 6, 9}), on_members(*sub, *main), ORDINARY_START,
                       ingress_and_egress(*sub, *main, Kind::trident2)}));
}

TEST_F(SubintAddOnPortChannel, StepLeavesEveryMessage)
{
    set_members({0x8000005, 0x8000006});
    add_step(*sub, 1);
    expect_messages(join({
        Messages{
            trace(STEP, "ifindex = 2000700a create = 1\n"),
            trace("fwmpd_ifindex_to_bcm_tid", "rc = 0 ifindex = 2000700a tid = 41 \n"),
            trace(STEP, " bcm_port: -1 tid = 41\n"),
            trace(ON_PORT, " Entry: - \n"),
            trace(ON_PORT, "bcm_port = 5 intf-id = 0 intf_created = 0\n"),
            trace(CREATE, "context set in l3iif for intf 0x20007000\n"),
            trace(CREATE, "inl3lif->ifindex = 2000700a l3lif->ifindex = 20007000 create = 1\n"),
            trace(CREATE, "create internal_vlan = 100 si_encap_vlan = 100\n"),
            trace("l3iif_table_init", " l3iif_table_init called with :1 \n"),
            trace("rtifhal_alloc_l3iif", " iif_index = 0x3\n"),
            trace(CREATE, "Allocating l3lif_pd_ctxt\n"),
            trace(CREATE, "Allocating l3_pd\n"),
            trace(CREATE, " Calling bcm_l3_intf_create for 100 intf-id 3, mtu 1500, vrf 1\n"),
            trace(CREATE, "Created l3-intf with intf-id as 0x3\n"),
            trace("rtifhal_trident_l3port_add_pss",
                  "calling rtifhal_pss_l3port_store, lif (0x20007000)\n"),
        },
        vlan_made_messages(5),
        Messages{
            trace("rtifhal_vlan_xlate_enable", "port 5\n"),
            trace("rtifhal_vlan_xlate", "gport c000029, old_vid 100, new_vid 4094, l3_iif 3\n"),
            trace("rtifhal_vlan_xlate",
                  "xlate enable ( gport c000029) from-vlan 100 to-vlan 4094 if 3\n"),
            trace(ON_PORT, " Entry: - \n"),
            // The number of the interface doesn't reach the next member.
            trace(ON_PORT, "bcm_port = 6 intf-id = 0 intf_created = 1\n"),
        },
        vlan_joined_messages(6, {5, 6}),
        Messages{trace("rtifhal_vlan_xlate_enable", "port 6\n")},
        Messages{
            trace(STEP, "Created encap-vlan = 100 ifindex = 2000700a intf-id = 0 port = -1\n")},
    }));
}

TEST_F(SubintAddOnPortChannel, ObjectAndTranslationAreMadeOnceAndTheVlanThreeTimes)
{
    EXPECT_EQ(add_step(*sub, 1), 0);
    EXPECT_EQ(sw.journal.count(OBJECT), 1U);
    EXPECT_EQ(calls_of({TRANSLATE}), Calls{translated(TRUNK_GPORT).back()});
    EXPECT_EQ(sw.journal.count("bcm_vlan_create"), 3U);
    EXPECT_EQ(sw.journal.count("fwmpd_bcm_vlan_control_port_set"), 3U);
    EXPECT_EQ(sw.journal.count(PORT_CONTROL), 12U);
}

TEST_F(SubintAddOnPortChannel, ObjectHasWhatTheMainInterfacesRecordSays)
{
    l3lif_pi_ctxt properties = sub->properties;
    properties.vrf = 7;
    properties.mtu = 9000;
    sub->view.l3lif_pi_ctxt = &properties;
    sub->view.mac[5] = 0x66;
    add_step(*sub, 1);
    EXPECT_EQ(calls_of({OBJECT}),
              Calls{OBJECT + "(0, {flags=0x40 id=3 mac=00:11:22:33:44:66 vid=100 vrf=7 mtu=9000 "
                             "ttl=0 tunnel=0}) = 0"});
}

TEST_F(SubintAddOnPortChannel, UpAgainReadsTheIdFromTheSubinterfacesOwnRecord)
{
    brought_up();
    ASSERT_EQ(del(*sub, 0), 0);
    sw.end_request();
    start();
    EXPECT_EQ(add(*sub, 0), 0);
    expect_calls(
        join({begun(*sub, {5, 6, 9}), port_opened(5), Calls{called::is_port_channel(*main, 1)},
              object_written_again(sub->view_text()), vlan_made(5), keyed(5),
              translated(TRUNK_GPORT), port_opened(6), vlan_joined(6, {5, 6}), keyed(6),
              port_opened(9), vlan_joined(9, {5, 6, 9}), keyed(9), ORDINARY_START,
              ingress_and_egress(*sub, *main, Kind::trident, false)}));
    EXPECT_EQ(sub->lif.lif_state, 3U);
}

TEST_F(SubintAddOnPortChannel, UpAgainHandsTheIdToEachMember)
{
    sub->with_shared_record(IIF);
    take(IIF);
    add_step(*sub, 0);
    Messages entered;
    for (const Message &message : messages()) {
        if (message.text.starts_with("bcm_port = ")) {
            entered.push_back(message);
        }
    }
    EXPECT_EQ(entered, (Messages{trace(ON_PORT, "bcm_port = 5 intf-id = 3 intf_created = 0\n"),
                                 trace(ON_PORT, "bcm_port = 6 intf-id = 3 intf_created = 1\n"),
                                 trace(ON_PORT, "bcm_port = 9 intf-id = 3 intf_created = 1\n")}));
}

TEST_F(SubintAddOnPortChannel, WithoutCreateItsOwnContextMustBeThere)
{
    sub->with_shared_record(IIF);
    l3lif_pd_ctxt *own = sub->lif.l3lif_pd_ctxt;
    sub->lif.l3lif_pd_ctxt = nullptr;
    EXPECT_EQ(rtifhal_trident_subint_add(sub->get(), 0), -1);
    expect_reports({report(STEP, " Null l3lif_pd_ctxt(0x2000700a)\n")});
    sub->lif.l3lif_pd_ctxt = own;
}

TEST_F(SubintAddOnPortChannel, FastRestartPublishesTheSubinterface)
{
    sw.system.fast_restart = true;
    def_routes_loaded = 1; // no file is looked for
    EXPECT_EQ(add_step(*sub, 1), 0);
    expect_calls(
        join({begun(*sub, {5, 6, 9}), on_members(*sub, *main),
              Calls{"sysmgr_is_fastboot_restart() = 1",
                    "l3lif_update_sdb_for_intf(" + sub->text() + ") = 0",
                    "sysmgr_is_fastboot_restart() = 1",
                    "get_string_from_platform_inf(\"fwm\", \"skip_default_nh\", 15) = 0"}}));
}

TEST_F(SubintAddWithoutMembers, StepSucceedsWithNothingDone)
{
    EXPECT_EQ(add_step(*sub, 1), 0);
    expect_calls(join({begun(*sub, {}), ORDINARY_START}));
    EXPECT_EQ(messages().back(), trace(STEP, "Created encap-vlan = 100 ifindex = 2000700a intf-id "
                                             "= 0 port = -1\n"));
    EXPECT_EQ(sub->lif.int_vlan, VLAN);
}

TEST_F(SubintAddWithoutMembers, EntryFailsAtTheIngressStepForWantOfAnObject)
{
    EXPECT_EQ(add(*sub, 1, 2), -1);
    expect_reports({
        report("rtifhal_l3_ing_create", "Failed to get l3lif pd context for intf 0x20007000"),
        report(ENTRY, "\nrtifhal_trident_add_subint: L3LIF failed to add if: 0x2000700a, 2, 1\n"),
    });
    EXPECT_EQ(sub->lif.lif_state, 0U);
}

TEST_F(SubintAddOnPortChannel, UnknownTrunkIsRefused)
{
    // The second question is the look-up's own.
    fail("if_index_is_eth_port_channel_intf", 0, 2);
    EXPECT_EQ(add_step(*sub, 1), -1);
    EXPECT_EQ(calls().back(), called::is_port_channel(*sub, 0));
    expect_reports({report(STEP, " unable to get tid(0x2000700a)\n")});
    EXPECT_EQ(sub->lif.tid, 0U);
}

TEST_F(SubintAddOnPortChannel, TrunkThatCantBeReadIsRefused)
{
    fail("bcm_trunk_get", -7);
    EXPECT_EQ(add_step(*sub, 1), -1);
    EXPECT_EQ(calls().back(), "bcm_trunk_get(0, 41, 32) = -7");
    expect_reports(
        {report(STEP, fmt::format("unable to get member-ports(0x2000700a) {}\n", _shr_errmsg[7]))});
    EXPECT_EQ(sub->lif.tid, 0U);
}

TEST_F(SubintAddOnPortChannel, TrunkIsReadOnTheUnitThatThePlatformGives)
{
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(add_step(*sub, 1), -1); // this chip has no other unit
    ASSERT_EQ(calls_of({"bcm_trunk_get"}).size(), 1U);
    EXPECT_TRUE(calls_of({"bcm_trunk_get"})[0].starts_with("bcm_trunk_get(3, 41"));
}

TEST_F(SubintAddOnPortChannel, PositiveAnswerToTheTrunkReadIsNoRefusal)
{
    fail("bcm_trunk_get", 1);
    EXPECT_EQ(add_step(*sub, 1), 0);
    EXPECT_EQ(sub->lif.tid, 41U);
    EXPECT_EQ(calls_of({OBJECT}), Calls{});
}

TEST_F(SubintAddOnPortChannel, MemberThatIsNoModulePortIsPortMinusOne)
{
    set_members({0xc000008, 0x8000006});
    // The switch has no port -1; the library doesn't ask whether there is one.
    fail_when("fwmpd_bcm_port_stp_set", "0, -1, 4", 0);
    fail_when("fwmpd_bcm_vlan_control_port_set", "0, -1, 14, 8", 0);
    EXPECT_EQ(add_step(*sub, 1), 0);
    EXPECT_EQ(messages().at(4), trace(ON_PORT, "bcm_port = -1 intf-id = 0 intf_created = 0\n"));
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_port_set", TRANSLATE}),
              join({keyed(-1), Calls{translated(TRUNK_GPORT).back()}, keyed(6)}));
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_port_add"}).front(),
              "fwmpd_bcm_vlan_port_add(0, 100, {0}, {}) = 0");
}

TEST_F(SubintAddOnPortChannel, PortOfAMemberIsTheLowElevenBits)
{
    set_members({0x8000000 | (3 << 11) | 9});
    EXPECT_EQ(add_step(*sub, 1), 0);
    EXPECT_EQ(calls_of({"fwmpd_bcm_vlan_control_port_set"}), keyed(9));
}

TEST_F(SubintAddOnPortChannel, RefusedObjectStopsAtTheFirstMember)
{
    fail(OBJECT, -6);
    EXPECT_EQ(add(*sub, 1, 2), -1);
    EXPECT_EQ(calls_of({"bcm_vlan_create"}), Calls{});
    const Messages seen = reports();
    ASSERT_GE(seen.size(), 3U);
    EXPECT_EQ(
        Messages(seen.end() - 3, seen.end()),
        (Messages{report(ON_PORT, "itf create(" + sub->decimal() + ") failed\n"), failed_on(5),
                  report(ENTRY, "\nrtifhal_trident_add_subint: L3LIF failed to add itf: "
                                "0x2000700a, 2, 1\n")}));
}

TEST_F(SubintAddOnPortChannel, RefusedTranslationStopsAtTheFirstMember)
{
    fail(TRANSLATE, -6);
    EXPECT_EQ(add_step(*sub, 1), -1);
    EXPECT_EQ(calls().back(), translated(TRUNK_GPORT, IIF, -6).back());
    const Messages seen = reports();
    ASSERT_GE(seen.size(), 2U);
    EXPECT_EQ(Messages(seen.end() - 2, seen.end()),
              (Messages{report(ON_PORT, " itf xlate enable(" + sub->decimal() + ") failed\n"),
                        failed_on(5)}));
}

TEST_F(SubintAddOnPortChannel, RefusedVlanOfALaterMemberLeavesTheEarlierOnes)
{
    fail("bcm_vlan_create", -6, 2);
    EXPECT_EQ(add_step(*sub, 1), -1);
    EXPECT_EQ(calls().back(), "bcm_vlan_create(0, 100) = -6");
    expect_reports({
        report("rtifhal_vlan_create", fmt::format("vlan_create(100) failed: {}\n", _shr_errmsg[6])),
        report(ON_PORT, "itf vlan enable(" + sub->decimal() + ") failed\n"),
        failed_on(6),
    });
    EXPECT_EQ(sub->record()->l3intf_id, IIF);
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 1);
}

TEST_F(SubintAddOnPortChannel, RefusedKeyOfTheLastMemberStopsTheAdd)
{
    fail("fwmpd_bcm_vlan_control_port_set", -4, 3);
    EXPECT_EQ(add_step(*sub, 1), -1);
    EXPECT_EQ(calls().back(), "fwmpd_bcm_vlan_control_port_set(0, 9, 14, 8) = -4");
    EXPECT_EQ(reports().at(1),
              report(ON_PORT, "itf xlate enable(" + sub->decimal() + ") failed\n"));
    EXPECT_EQ(reports().back(), failed_on(9));
}

} // namespace rtifhal_test::subint_add_port_channel
