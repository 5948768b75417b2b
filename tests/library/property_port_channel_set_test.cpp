/*
 * property_port_channel_set_test.cpp: a routed port-channel is brought into
 * line with its changed properties: its objects first, then the controls of
 * each member.
 *
 * property_port_channel_failure_test.cpp has what goes wrong,
 * property_port_controls_test.cpp the controls of a port.
 */
#include "support/property_port_roads.h"

#include "services/ifindex.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>

#include <map>

namespace rtifhal_test::property_port_channel_set
{

namespace
{

using namespace property_road;
using member_road::FIRST;
using member_road::port_asked;
using member_road::port_opened;
using member_road::SECOND;

const Calls FIRST_MEMBER = {"avl_get_first(tree) = record"};
const Calls NEXT_MEMBER = {"avl_get_next(tree, node) = record"};
const Calls LAST_MEMBER = {"avl_get_next(tree, node) = null"};

class PropertyOfPortChannel : public ChannelTest
{
protected:
    using ChannelTest::ChannelTest;

    /** The calls up to the walk over the members. */
    Calls objects(Kind chip) const
    {
        return join({Calls{called::unit(), called::intf_init(), called::intf_init(), object_read()},
                     object_rewritten(*main),
                     channel_ingress_rewritten(*main, chip, {FIRST, SECOND})});
    }
    /** The walk over both members with those values of the controls. */
    Calls both_members(const std::vector<int> &values) const
    {
        return join({FIRST_MEMBER, NEXT_MEMBER, port_asked(*first, FIRST),
                     port_opened(FIRST, values), LAST_MEMBER, port_asked(*second, SECOND),
                     port_opened(SECOND, values)});
    }
    /** The five controls of both members that a set writes. */
    Calls set_controls()
    {
        start();
        EXPECT_EQ(set(), 0);
        return controls();
    }
    static Calls both(const std::vector<int> &values)
    {
        return join({port_opened(FIRST, values), port_opened(SECOND, values)});
    }
    /** The tree is forgotten. */
    void without_members()
    {
        members = simswitch::services::Tree();
        main->lif.pc_member_tree = nullptr;
    }
};

class PropertyOfPortChannelOnTrident2 : public PropertyOfPortChannel
{
protected:
    PropertyOfPortChannelOnTrident2() : PropertyOfPortChannel(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyOfPortChannel, ObjectsAreRewrittenThenTheControlsOfEachMember)
{
    EXPECT_EQ(set(), 0);
    expect_calls(join({objects(Kind::trident), both_members({1, 0, 0, 0, 0})}));
}

TEST_F(PropertyOfPortChannelOnTrident2, ObjectsAreRewrittenThenTheControlsOfEachMember)
{
    EXPECT_EQ(set(), 0);
    expect_calls(join({objects(Kind::trident2), both_members({1, 0, 0, 0, 0})}));
}

TEST_F(PropertyOfPortChannel, EveryMessageOfTheRoad)
{
    set();
    expect_messages(
        join({object_rewritten_messages(*main), channel_ingress_rewritten_messages(*main),
              Messages{trace(SET_CHANNEL, " L3PC member - 5\n"),
                       trace(SET_CHANNEL, " L3PC member - 6\n")}}));
}

TEST_F(PropertyOfPortChannel, RoadIsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    main->properties.mpls_en = 1;
    EXPECT_EQ(set(), 0);
    expect_calls(join({objects(Kind::trident), both_members({1, 0, 0, 0, 1})}));
}

TEST_F(PropertyOfPortChannel, ObjectIsReadWithoutWhatStillWaitsInTheQueue)
{
    // A field of the object that comes from no property.
    bcm_l3_intf_t waiting = {};
    waiting.l3a_flags = 0x140;
    waiting.l3a_intf_id = IIF;
    waiting.l3a_tunnel_idx = 9;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &waiting), 0);
    start();
    set();
    EXPECT_EQ(calls_of({READ_INTERFACE, WRITE_INTERFACE}),
              (Calls{object_read(), object_rewritten(*main).front()}));
}

TEST_F(PropertyOfPortChannel, QueueIsFlushedOnceBeforeTheTrunkIsReadAndNowhereElse)
{
    set();
    const auto seen = calls_of({READ_INTERFACE, "fwmpd_trident_batch_flush", "bcm_trunk_get"});
    EXPECT_EQ(seen, (Calls{object_read(), called::flush(),
                           member_road::trunk_read(Kind::trident, {FIRST, SECOND})}));
}

TEST_F(PropertyOfPortChannel, SubinterfacesAreWalkedBeforeTheMembers)
{
    subs.add(*main, 10);
    EXPECT_EQ(set(), 0);
    expect_calls(
        join({objects(Kind::trident), FIRST_MEMBER, LAST_MEMBER, both_members({1, 0, 0, 0, 0})}));
}

TEST_F(PropertyOfPortChannel, EachControlFollowsItsOwnPropertyOnEachMember)
{
    for (const auto &followed : FOLLOWED) {
        main->properties = {};
        main->properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), both(only(followed))) << followed.control;
    }
}

TEST_F(PropertyOfPortChannel, FamilyOfASubinterfaceIsOnForEachMember)
{
    subs.add(*main, 10);
    Lif &sub = subs.add(*main, 20);
    main->properties = {};
    for (const auto &followed : FOLLOWED) {
        sub.properties = {};
        sub.properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), both(only(followed))) << followed.control;
    }
}

TEST_F(PropertyOfPortChannel, WordOtherThanOneIsOff)
{
    Lif &sub = subs.add(*main, 10);
    for (const auto &followed : FOLLOWED) {
        main->properties = {};
        sub.properties = {};
        main->properties.*followed.word = 2;
        sub.properties.*followed.word = 0xFFFFFFFF;
        EXPECT_EQ(set_controls(), both(ALL_OFF)) << followed.control;
    }
}

TEST_F(PropertyOfPortChannelOnTrident2, TwoIsOnInTheIngressObjectAllTheSame)
{
    main->properties =
        Properties{.ipv4_en = 2, .ipv4_mc_en = 2, .ipv6_en = 2, .vrf = 5, .mpls_en = 2};
    EXPECT_EQ(set_controls(), both(ALL_OFF));
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x406 vrf=5 urpf=0 class=64 ipmc=3 qos=0}", IIF)});
}

TEST_F(PropertyOfPortChannel, Control11StaysOffWhateverIsOn)
{
    Lif &sub = subs.add(*main, 10);
    for (Lif *on : {main.get(), &sub}) {
        on->properties = Properties{.ipv4_en = 1, .ipv4_mc_en = 1, .ipv6_en = 1, .mpls_en = 1};
    }
    EXPECT_EQ(set_controls(), both(ALL_ON));
}

TEST_F(PropertyOfPortChannel, SubinterfaceWithoutPropertiesCountsAsAllOff)
{
    subs.add(*main, 10).without_properties();
    subs.add(*main, 20).properties.ipv6_en = 1;
    EXPECT_EQ(set_controls(), both({1, 0, 1, 0, 0}));
}

TEST_F(PropertyOfPortChannel, PropertiesOfTheMembersDoNotCount)
{
    first->properties = Properties{.ipv4_en = 1, .ipv4_mc_en = 1, .ipv6_en = 1, .mpls_en = 1};
    main->properties = {};
    EXPECT_EQ(set_controls(), both(ALL_OFF));
}

TEST_F(PropertyOfPortChannel, NoMemberTreeWritesTheObjectsAlone)
{
    without_members();
    EXPECT_EQ(set(), 0);
    expect_calls(objects(Kind::trident));
    expect_messages(
        join({object_rewritten_messages(*main), channel_ingress_rewritten_messages(*main)}));
}

TEST_F(PropertyOfPortChannel, EmptyMemberTreeWritesTheObjectsAlone)
{
    without_members();
    main->lif.pc_member_tree = members.get();
    EXPECT_EQ(set(), 0);
    expect_calls(objects(Kind::trident));
    expect_reports({});
}

TEST_F(PropertyOfPortChannel, SubinterfacesAreWalkedThoughThereIsNoMember)
{
    subs.add(*main, 10);
    without_members();
    EXPECT_EQ(set(), 0);
    expect_calls(join({objects(Kind::trident), FIRST_MEMBER, LAST_MEMBER}));
}

TEST_F(PropertyOfPortChannel, MemberIsToldByTheFirstWordOfItsRecordAlone)
{
    without_members();
    std::uint32_t member = simswitch::if_index::port(8);
    ASSERT_TRUE(members.insert(&member));
    main->lif.pc_member_tree = members.get();
    EXPECT_EQ(set_controls(), port_opened(9, {1, 0, 0, 0, 0}));
    EXPECT_EQ(messages().back(), trace(SET_CHANNEL, " L3PC member - 9\n"));
}

TEST_F(PropertyOfPortChannel, ControlsGoToTheTreesMembersAndTheIngressTieToTheTrunks)
{
    without_members();
    const auto ninth = port(9);
    file_member(*ninth);
    set();
    EXPECT_EQ(calls_of({PORT_CONTROL}),
              join({Calls{called::port_control(FIRST, IIF), called::port_control(SECOND, IIF)},
                    port_opened(9, {1, 0, 0, 0, 0})}));
}

TEST_F(PropertyOfPortChannel, MembersAreTakenInTheTreesOrder)
{
    const auto third = port(3);
    file_member(*third);
    EXPECT_EQ(set_controls(), join({port_opened(3, {1, 0, 0, 0, 0}), both({1, 0, 0, 0, 0})}));
}

TEST_F(PropertyOfPortChannel, ChipFollowsTheWholeContext)
{
    main->properties = Properties{.ipv4_en = 1,
                                  .ipv4_mc_en = 1,
                                  .ipv6_en = 1,
                                  .urpf_mode = 2,
                                  .vrf = 5,
                                  .mtu = 9000,
                                  .mpls_en = 1};
    ASSERT_TRUE(sw.chip.ports.set_control(SECOND, 11, 1).ok());
    EXPECT_EQ(set(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    const auto *ingress = sw.chip.l3_ingresses.find(IIF);
    EXPECT_EQ(ingress->vrf, 5);
    EXPECT_EQ(ingress->urpf_mode, 1);
    EXPECT_EQ(ingress->ipmc_intf, IIF);
    for (const int member : {FIRST, SECOND}) {
        EXPECT_EQ(sw.chip.ports.get(member).controls,
                  (std::map<int, int>{{8, 1}, {9, 1}, {10, 1}, {14, 1}, {67, IIF}}));
    }
}

TEST_F(PropertyOfPortChannel, SecondSetRepeatsTheWholeRoad)
{
    set();
    sw.end_request();
    start();
    EXPECT_EQ(set(), 0);
    expect_calls(join({objects(Kind::trident), both_members({1, 0, 0, 0, 0})}));
}

} // namespace rtifhal_test::property_port_channel_set
