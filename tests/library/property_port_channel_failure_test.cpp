/*
 * property_port_channel_failure_test.cpp: what keeps a routed port-channel from
 * being brought into line with its properties, and what is refused on the way
 * without stopping it.
 *
 * property_port_channel_set_test.cpp has the whole road.
 */
#include "support/misread.h"
#include "support/property_port_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::property_port_channel_failure
{

namespace
{

using namespace property_road;
using member_road::FIRST;
using member_road::port_asked;
using member_road::port_opened;
using member_road::SECOND;

const std::vector<int> IP4_ON = {1, 0, 0, 0, 0};

class PropertyChannelFailure : public ChannelTest
{
protected:
    using ChannelTest::ChannelTest;

    static int set_of(Lif &other) { return rtifhal_set_kelvo_l3_property_l3pc(other.get()); }
    static Calls both_opened()
    {
        return join({port_opened(FIRST, IP4_ON), port_opened(SECOND, IP4_ON)});
    }
    Message refused_object_report() const
    {
        return report("rtifhal_l3_intf_create",
                      fmt::format("rtifhal_bcm_l3_intf_create({}) failed: {}\n", main->index(),
                                  _shr_errmsg[6]));
    }
    /** The calls up to the walk over the members. */
    Calls to_members(const std::string &read, const Calls &rewritten, const Calls &ingress) const
    {
        return join({Calls{called::unit(), called::intf_init(), called::intf_init(), read},
                     rewritten, ingress});
    }
    Calls ingress_rewritten() const
    {
        return channel_ingress_rewritten(*main, Kind::trident, {FIRST, SECOND});
    }
    /** The cache hasn't got the ingress object. */
    Calls ingress_missing() const
    {
        return {called::ingress_init(), called::unit(), called::type(*main, 22),
                called::from_cache(IIF, false)};
    }
    /** The first member is written, and the walk goes to the second. */
    Calls first_written() const
    {
        return join({Calls{"avl_get_first(tree) = record", "avl_get_next(tree, node) = record"},
                     port_asked(*first, FIRST), port_opened(FIRST, IP4_ON)});
    }
    Calls both_written() const
    {
        return join({first_written(), Calls{"avl_get_next(tree, node) = null"},
                     port_asked(*second, SECOND), port_opened(SECOND, IP4_ON)});
    }
    static Message cache_report()
    {
        return report("rtifhal_l3_ing_create",
                      "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for iif 3\n");
    }
    Message no_port() const
    {
        return report(SET_CHANNEL,
                      "unable to get itf(" + main->decimal() + ") in l3_property_l3pc set\n");
    }
    /** The traces of the members that were reached. */
    Messages members_reached() const
    {
        auto seen = messages();
        std::erase_if(seen, [](const Message &message) {
            return message.function != SET_CHANNEL || message.level != 104;
        });
        return seen;
    }
};

class PropertyChannelFailureOnTrident2 : public PropertyChannelFailure
{
protected:
    PropertyChannelFailureOnTrident2() : PropertyChannelFailure(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyChannelFailure, NullInterfaceIsRefusedWithoutACallOrAnEntryTrace)
{
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_l3pc(nullptr), -1);
    expect_calls({});
    expect_messages({report(SET_CHANNEL, " Got l3lif as null")});
}

TEST_F(PropertyChannelFailure, MissingContextRecordOrPropertiesLookLikeSuccess)
{
    const auto no_context = port_channel(9);
    const auto no_record = port_channel(9);
    no_record->with_bare_context();
    const auto no_properties = port_channel(9);
    no_properties->with_record(12).without_properties();
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get()}) {
        other->lif.pc_member_tree = members.get();
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init()});
        expect_messages({report(SET_CHANNEL, " Got l3lif pd as null")});
    }
}

TEST_F(PropertyChannelFailure, InterfaceWithoutALiveNumberLooksLikeSuccess)
{
    const auto no_number = port_channel(9);
    no_number->with_record(0);
    const auto parked = port_channel(9);
    parked->with_parked(12);
    for (Lif *other : {no_number.get(), parked.get()}) {
        other->lif.pc_member_tree = members.get();
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init(), called::intf_init()});
        expect_messages({report(SET_CHANNEL, " Got l3lif intf as null")});
    }
}

TEST_F(PropertyChannelFailure, RefusedReadIsNotLookedAt)
{
    fail(READ_INTERFACE, -7);
    EXPECT_EQ(set(), 0);
    expect_calls(join(
        {to_members("bcm_l3_intf_get(0, 3) = -7", object_rewritten(*main), ingress_rewritten()),
         both_written()}));
    expect_reports({});
}

TEST_F(PropertyChannelFailure, AnswerOfAnotherObjectIsNotLookedAt)
{
    const MisreadInterface answer(9, 4);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({WRITE_INTERFACE}), Calls{object_rewritten(*main, 4).front()});
    EXPECT_EQ(main->record()->l3intf_id, IIF);
    expect_reports({});
}

TEST_F(PropertyChannelFailure, RefusedInterfaceIsReportedAndTheRestIsWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(), 0);
    expect_calls(
        join({to_members(object_read(),
                         Calls{fmt::format("{}(0, {}) = -6", WRITE_INTERFACE, object("0x140"))},
                         ingress_rewritten()),
              both_written()}));
    expect_reports({refused_object_report(), report(SET_CHANNEL, "int create(3) failed\n")});
}

TEST_F(PropertyChannelFailure, IngressObjectThatTheCacheLacksIsReportedAndThePortsAreWritten)
{
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_calls(join(
        {to_members(object_read(), object_rewritten(*main), ingress_missing()), both_written()}));
    expect_reports({cache_report(), report(SET_CHANNEL, "ing create(3) failed\n")});
}

TEST_F(PropertyChannelFailureOnTrident2, BothObjectsMayFailAndThePortsAreWritten)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(controls(), both_opened());
    expect_reports({refused_object_report(), report(SET_CHANNEL, "int create(3) failed\n"),
                    cache_report(), report(SET_CHANNEL, "ing create(3) failed\n")});
}

TEST_F(PropertyChannelFailure, IngressObjectThatTheChipRefusesIsNoFailureOfItsCreate)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(controls(), both_opened());
    expect_reports(
        {report("rtifhal_l3_ing_create",
                fmt::format("bcm_l3_ing_create({}) failed: {}\n", main->hex(), _shr_errmsg[6]))});
}

TEST_F(PropertyChannelFailure, UnreadableTrunkTiesNothingAndTheTreesMembersAreWritten)
{
    fail("bcm_trunk_get", -7);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({PORT_CONTROL}), both_opened());
    expect_reports({report("rtifhal_l3_ing_create", "bcm_trunk_get(8) failed\n")});
}

TEST_F(PropertyChannelFailure, SecondMemberWithoutAPortEndsTheWalkAndTheFirstKeepsItsControls)
{
    const auto third = port(7);
    file_member(*third);
    main->properties.ipv6_en = 1;
    fail_when("if_index_get_port", second->index(), -1);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(controls(), port_opened(FIRST, {1, 0, 1, 0, 0}));
    EXPECT_EQ(members_reached(), Messages{trace(SET_CHANNEL, " L3PC member - 5\n")});
    expect_reports({no_port()});
    sw.end_request();
    EXPECT_EQ(sw.chip.ports.control(FIRST, 9), 1);
    EXPECT_EQ(sw.chip.ports.control(SECOND, 9), 0);
}

TEST_F(PropertyChannelFailure, WalkEndsRightBehindTheFailedLookUp)
{
    const auto third = port(7);
    file_member(*third);
    fail_when("if_index_get_type", second->index(), -1);
    EXPECT_EQ(set(), -1);
    expect_calls(join({to_members(object_read(), object_rewritten(*main), ingress_rewritten()),
                       first_written(),
                       Calls{"avl_get_next(tree, node) = record", called::no_type(*second)}}));
    expect_messages(
        join({object_rewritten_messages(*main), channel_ingress_rewritten_messages(*main),
              Messages{trace(SET_CHANNEL, " L3PC member - 5\n"), no_port()}}));
}

TEST_F(PropertyChannelFailure, FirstMemberWithoutAPortLeavesAllControlsAsTheyWere)
{
    fail_when("if_index_get_type", first->index(), -1);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(calls_of({PORT_CONTROL}),
              (Calls{called::port_control(FIRST, IIF), called::port_control(SECOND, IIF)}));
    EXPECT_EQ(members_reached(), Messages{});
    expect_reports({no_port()});
}

TEST_F(PropertyChannelFailure, MemberOfAnotherKindHasNoPort)
{
    const auto tunnel_member = tunnel(3);
    file_member(*tunnel_member);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(controls(), both_opened());
    EXPECT_EQ(calls().back(), called::type(*tunnel_member, 24));
    expect_reports({no_port()});
}

TEST_F(PropertyChannelFailure, RefusedObjectsDoNotChangeTheResultOfAMissingPort)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    fail_when("if_index_get_port", second->index(), -1);
    EXPECT_EQ(set(), -1);
    EXPECT_EQ(controls(), port_opened(FIRST, IP4_ON));
    EXPECT_EQ(reports().back(), no_port());
}

TEST_F(PropertyChannelFailure, RefusedControlsAreNotLookedAt)
{
    for (const char *control : {"8, 1", "10, 0", "9, 0", "11, 0", "14, 0"}) {
        fail_when(PORT_CONTROL, std::string("0, 5, ") + control, -4);
    }
    EXPECT_EQ(set(), 0);
    Calls refused = port_opened(FIRST, IP4_ON);
    for (auto &call : refused) {
        call.replace(call.size() - 1, 1, "-4");
    }
    EXPECT_EQ(controls(), join({refused, port_opened(SECOND, IP4_ON)}));
    expect_reports({});
}

TEST_F(PropertyChannelFailure, NothingIsUndone)
{
    main->properties.mtu = 9000;
    fail_when("if_index_get_type", first->index(), -1);
    EXPECT_EQ(set(), -1);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(main->record()->l3intf_id, IIF);
}

} // namespace rtifhal_test::property_port_channel_failure
