/*
 * property_port_failure_test.cpp: what keeps a routed port from being brought
 * into line with its properties, and what is refused on the way without
 * stopping it.
 *
 * property_port_set_test.cpp has the whole road.
 */
#include "support/misread.h"
#include "support/property_port_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::property_port_failure
{

namespace
{

using namespace property_road;
using member_road::port_asked;
using member_road::port_opened;

class PropertyPortFailure : public PortTest
{
protected:
    using PortTest::PortTest;

    static int set_of(Lif &other) { return rtifhal_set_kelvo_l3_property_l3int(other.get()); }
    static Message entered() { return trace(SET_PORT, " Entry: - \n"); }
    Message no_port() const
    {
        return report(SET_PORT, "unable to get itf(" + lif->decimal() + ")\n");
    }
    /** The calls up to the second look-up of the port. */
    Calls to_second_look_up(const Calls &rewritten) const
    {
        return join({Calls{called::unit(), called::intf_init()}, port_asked(*lif, PORT),
                     Calls{called::intf_init(), called::flush(), called::flush(), object_read()},
                     rewritten});
    }
    /** The calls of the L3 interface that is refused. */
    static Calls refused_object(int code)
    {
        return {fmt::format("{}(0, {}) = {}", WRITE_INTERFACE, object("0x140"), code)};
    }
    /** The calls from the second look-up on. */
    Calls behind_object(Kind chip = Kind::trident) const
    {
        return join({port_asked(*lif, PORT), port_opened(PORT, {1, 0, 0, 0, 0}),
                     port_ingress_rewritten(*lif, ingress(chip), chip)});
    }
    Message refused_object_report() const
    {
        return report("rtifhal_l3_intf_create",
                      fmt::format("rtifhal_bcm_l3_intf_create({}) failed: {}\n", lif->index(),
                                  _shr_errmsg[6]));
    }
};

class PropertyPortFailureOnTrident2 : public PropertyPortFailure
{
protected:
    PropertyPortFailureOnTrident2() : PropertyPortFailure(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyPortFailure, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_l3int(nullptr), -1);
    expect_calls({});
    expect_messages({entered(), report(SET_PORT, " Got l3lif as null")});
}

TEST_F(PropertyPortFailure, MissingContextRecordOrPropertiesLookLikeSuccess)
{
    const auto no_context = port(9);
    const auto no_record = port(9);
    no_record->with_bare_context();
    const auto no_properties = port(9);
    no_properties->with_record(12).without_properties();
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init()});
        expect_messages({entered(), report(SET_PORT, " Got l3lif pd as null")});
    }
}

TEST_F(PropertyPortFailure, InterfaceWithoutALiveNumberLooksLikeSuccess)
{
    const auto no_number = port(PORT);
    no_number->with_record(0);
    const auto parked = port(PORT);
    parked->with_parked(12);
    for (Lif *other : {no_number.get(), parked.get()}) {
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls(join({Calls{called::unit(), called::intf_init()}, port_asked(*other, PORT),
                           Calls{called::intf_init()}}));
        expect_messages({entered(), report(SET_PORT, " Got l3lif intf as null")});
    }
}

TEST_F(PropertyPortFailure, LiveNumberIsTakenThoughTheRecordSaysTakenDown)
{
    lif->record()->brcm_prog_complete = 1;
    lif->record()->prev_l3_if_index = IIF;
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({READ_INTERFACE}), Calls{object_read()});
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
}

TEST_F(PropertyPortFailure, UnknownTypeEndsTheRoadBeforeTheNumberIsLookedAt)
{
    fail("if_index_get_type", -1);
    EXPECT_EQ(set(), -1);
    expect_calls({called::unit(), called::intf_init(), called::no_type(*lif)});
    expect_messages({entered(), no_port()});
}

TEST_F(PropertyPortFailure, UnknownPortEndsTheRoad)
{
    fail("if_index_get_port", -1);
    EXPECT_EQ(set(), -1);
    expect_calls({called::unit(), called::intf_init(), called::type(*lif, 26),
                  fmt::format("if_index_get_port({}) = -1", lif->index())});
    expect_messages({entered(), no_port()});
}

TEST_F(PropertyPortFailure, InterfaceOfAnotherKindHasNoPort)
{
    const auto other = svi(100);
    other->with_record(12);
    EXPECT_EQ(set_of(*other), -1);
    expect_calls({called::unit(), called::intf_init(), called::type(*other, 9)});
    expect_reports({report(SET_PORT, "unable to get itf(" + other->decimal() + ")\n")});
}

TEST_F(PropertyPortFailure, PortIsMissedBeforeTheNumberIs)
{
    const auto other = svi(100);
    other->with_record(0);
    EXPECT_EQ(set_of(*other), -1);
    expect_reports({report(SET_PORT, "unable to get itf(" + other->decimal() + ")\n")});
}

TEST_F(PropertyPortFailure, UnknownTypeAtTheSecondLookUpLeavesControlsAndIngressObjectAlone)
{
    fail("if_index_get_type", -1, 2);
    EXPECT_EQ(set(), -1);
    expect_calls(join({to_second_look_up(object_rewritten(*lif)), Calls{called::no_type(*lif)}}));
    expect_messages(
        join({Messages{entered()}, object_rewritten_messages(*lif), Messages{no_port()}}));
}

TEST_F(PropertyPortFailure, UnknownPortAtTheSecondLookUpLeavesControlsAndIngressObjectAlone)
{
    fail("if_index_get_port", -1, 2);
    EXPECT_EQ(set(), -1);
    expect_calls(join(
        {to_second_look_up(object_rewritten(*lif)),
         Calls{called::type(*lif, 26), fmt::format("if_index_get_port({}) = -1", lif->index())}}));
    expect_messages(
        join({Messages{entered()}, object_rewritten_messages(*lif), Messages{no_port()}}));
}

TEST_F(PropertyPortFailure, RefusedReadIsNotLookedAt)
{
    fail(READ_INTERFACE, -7);
    EXPECT_EQ(set(), 0);
    Calls road = join({to_second_look_up(object_rewritten(*lif)), behind_object()});
    std::ranges::replace(road, object_read(), std::string("bcm_l3_intf_get(0, 3) = -7"));
    expect_calls(road);
    expect_reports({});
}

TEST_F(PropertyPortFailure, AnswerOfAnotherObjectIsNotLookedAt)
{
    const MisreadInterface answer(9, 4);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls_of({WRITE_INTERFACE}), Calls{object_rewritten(*lif, 4).front()});
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    expect_reports({});
}

TEST_F(PropertyPortFailure, RefusedInterfaceIsReportedAndTheRestIsWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(), 0);
    expect_calls(join({to_second_look_up(refused_object(-6)), behind_object()}));
    expect_reports({refused_object_report(), report(SET_PORT, "int create(3) failed\n")});
}

TEST_F(PropertyPortFailureOnTrident2, RefusedInterfaceIsReportedAndTheRestIsWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(), 0);
    expect_calls(join({to_second_look_up(refused_object(-6)), behind_object(Kind::trident2)}));
    expect_reports({refused_object_report(), report(SET_PORT, "int create(3) failed\n")});
}

TEST_F(PropertyPortFailure, IngressObjectThatTheCacheLacksIsReportedAtTheEndAndDoesNotShow)
{
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    expect_calls(join({to_second_look_up(object_rewritten(*lif)), port_asked(*lif, PORT),
                       port_opened(PORT, {1, 0, 0, 0, 0}),
                       Calls{called::ingress_init(), called::unit(), called::type(*lif, 26),
                             called::from_cache(IIF, false)}}));
    expect_reports({report("rtifhal_l3_ing_create",
                           "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for iif 3\n"),
                    report(SET_PORT, "ing create(3) failed\n")});
    EXPECT_EQ(messages().back(), report(SET_PORT, "ing create(3) failed\n"));
}

TEST_F(PropertyPortFailure, BothObjectsMayFailAndTheControlsAreWrittenBetween)
{
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
    expect_reports({refused_object_report(), report(SET_PORT, "int create(3) failed\n"),
                    report("rtifhal_l3_ing_create",
                           "rtifhal_bcm_l3_ingress_get_from_cache returned NULL for iif 3\n"),
                    report(SET_PORT, "ing create(3) failed\n")});
}

TEST_F(PropertyPortFailure, IngressObjectThatTheChipRefusesIsNoFailureOfItsCreate)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(calls().back(), called::port_control(PORT, IIF));
    expect_reports(
        {report("rtifhal_l3_ing_create",
                fmt::format("bcm_l3_ing_create({}) failed: {}\n", lif->hex(), _shr_errmsg[6]))});
}

TEST_F(PropertyPortFailure, RefusedStoreDoesNotShow)
{
    fail("rtifhal_pss_l3port_store", -1);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ(controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
    EXPECT_EQ(std::ranges::count(reports(), SET_PORT, &Message::function), 0);
}

TEST_F(PropertyPortFailure, NothingIsUndone)
{
    lif->properties.ipv6_en = 1;
    lif->properties.mtu = 9000;
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(sw.chip.ports.control(PORT, 9), 1);
    EXPECT_EQ(sw.chip.ports.control(PORT, 67), IIF);
}

} // namespace rtifhal_test::property_port_failure
