/*
 * property_svi_failure_test.cpp: what an SVI's property setter does when
 * something is missing or refused: what ends the road, what is only reported,
 * and what then reaches the chip all the same.
 *
 * property_svi_set_test.cpp has the road without failures.
 */
#include "support/misread.h"
#include "support/setter_roads.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>

namespace rtifhal_test::property_svi_failure
{

namespace
{

using namespace setter_road;
using svi_road::ROUTED_IP4;
using svi_road::VLAN;

constexpr std::uint16_t OTHER_VLAN = 200;

class PropertySviFailure : public SviSetterTest
{
protected:
    using SviSetterTest::SviSetterTest;

    static int set_of(Lif &other) { return rtifhal_set_kelvo_l3_property_svi(other.get(), 1, 1); }
    static Message no_vlan(const Lif &other)
    {
        return report(SET_SVI, " Got int-vlan as invalid for intf " + other.index());
    }
    static Message other_vlan(int expected)
    {
        return report(SET_SVI, fmt::format("bcm_l3_intf_get(3) failed: {}\n", expected));
    }
    static Message object_failed() { return report(SET_SVI, "int create(3) failed\n"); }
    static Message ingress_failed(int vlan = VLAN)
    {
        return report(SET_SVI, fmt::format("ing create({}) failed\n", vlan));
    }
    /** The calls up to the VLAN's direct write, nothing refused. */
    static Calls to_vlan() { return join({svi_object_read(), svi_vlan_written({})}); }
    static Calls refused_object(int code)
    {
        return {fmt::format("{}(0, {}) = {}", WRITE_INTERFACE, svi_road::object("0x140"), code)};
    }
    Calls ingress_rewritten() const
    {
        return svi_ingress_rewritten(*lif, Kind::trident, ip4_ingress(Kind::trident), {});
    }
    Calls whole_road() const { return whole_svi_road(*lif, Kind::trident, {}, {}); }
};

} // namespace

TEST_F(PropertySviFailure, NullInterfaceIsRefusedWithoutACall)
{
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_svi(nullptr, 1, 1), -1);
    expect_calls({});
    expect_messages({report(SET_SVI, " Got l3lif as null")});
}

TEST_F(PropertySviFailure, InterfaceWithoutInternalVlanIsRefused)
{
    lif->lif.int_vlan = 0;
    EXPECT_EQ(set(1, 0), -1);
    expect_calls({called::unit(), called::intf_init()});
    expect_messages({no_vlan(*lif)});
    EXPECT_EQ(cached().vc_flags, ROUTED_IP4);
}

TEST_F(PropertySviFailure, InternalVlanIsMissedBeforeTheContextTheRecordAndTheNumber)
{
    const auto no_context = svi(VLAN);
    const auto no_record = svi(VLAN);
    no_record->with_bare_context();
    const auto no_properties = svi(VLAN);
    no_properties->with_record(12).without_properties();
    const auto no_number = svi(VLAN);
    no_number->with_record(0);
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get(), no_number.get()}) {
        start();
        EXPECT_EQ(set_of(*other), -1);
        expect_calls({called::unit(), called::intf_init()});
        expect_messages({no_vlan(*other)});
    }
}

TEST_F(PropertySviFailure, MissingContextRecordOrPropertiesLookLikeSuccess)
{
    const auto no_context = svi(VLAN);
    const auto no_record = svi(VLAN);
    no_record->with_bare_context();
    const auto no_properties = svi(VLAN);
    no_properties->with_record(12).without_properties();
    for (Lif *other : {no_context.get(), no_record.get(), no_properties.get()}) {
        other->lif.int_vlan = VLAN;
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls({called::unit(), called::intf_init(), called::intf_init()});
        expect_messages({report(SET_SVI, " Got l3lif pd as null")});
    }
}

TEST_F(PropertySviFailure, ClassOfAnInterfaceWithoutARecordIsNotStored)
{
    const auto no_record = svi(VLAN);
    no_record->with_bare_context();
    no_record->lif.int_vlan = VLAN;
    EXPECT_EQ(rtifhal_set_kelvo_l3_property_svi(no_record->get(), 13, 1), 0);
    EXPECT_EQ(no_record->properties.class_high_bit, 0U);
}

TEST_F(PropertySviFailure, InterfaceWithoutALiveNumberLooksLikeSuccess)
{
    const auto no_number = svi(VLAN);
    no_number->with_record(0);
    const auto parked = svi(VLAN);
    parked->with_parked(12);
    for (Lif *other : {no_number.get(), parked.get()}) {
        other->lif.int_vlan = VLAN;
        start();
        EXPECT_EQ(set_of(*other), 0);
        expect_calls(
            {called::unit(), called::intf_init(), called::intf_init(), called::intf_init()});
        expect_messages({report(SET_SVI, " Got l3lif intf as null")});
    }
}

TEST_F(PropertySviFailure, LiveNumberIsTakenThoughTheRecordSaysTakenDown)
{
    lif->record()->brcm_prog_complete = 1;
    lif->record()->prev_l3_if_index = IIF;
    EXPECT_EQ(set(1, 1), 0);
    expect_calls(whole_road());
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
}

TEST_F(PropertySviFailure, ObjectOnAnotherVlanIsReportedAndThePropertyAppliedAllTheSame)
{
    auto object = *sw.chip.l3_interfaces.find(IIF);
    object.vlan = OTHER_VLAN;
    ASSERT_TRUE(sw.chip.l3_interfaces.set(IIF, object).ok());
    EXPECT_EQ(set(1, 0), 0);
    const VlanRecord closed = {.flags = ROUTED_IP4 | 0x8U};
    EXPECT_EQ(vlan_writes(), join({writes_of(closed), writes_of(closed)}));
    expect_reports({other_vlan(VLAN)});
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vlan, VLAN);
}

TEST_F(PropertySviFailure, InternalVlanOtherThanTheObjectsIsReportedWithTheInternalOne)
{
    switched_vlan(OTHER_VLAN, 0x238);
    lif->lif.int_vlan = OTHER_VLAN;
    EXPECT_EQ(set(1, 1), 0);
    expect_reports({other_vlan(OTHER_VLAN)});
    EXPECT_EQ(cached(OTHER_VLAN).vc_flags, 0x230U);
}

TEST_F(PropertySviFailure, RefusedReadCountsAsAnotherVlan)
{
    fail(READ_INTERFACE, -7);
    EXPECT_EQ(set(1, 1), 0);
    Calls road = whole_road();
    std::ranges::replace(road, object_answered(svi_road::object("0x0")),
                         std::string("bcm_l3_intf_get(0, 3) = -7"));
    expect_calls(road);
    expect_reports({other_vlan(VLAN)});
}

TEST_F(PropertySviFailure, NumberOfTheAnswerIsNotLookedAt)
{
    const MisreadInterface answer(9, 4);
    EXPECT_EQ(set(1, 1), 0);
    expect_reports({other_vlan(VLAN)});
    const std::string written = calls_of({WRITE_INTERFACE}).at(0);
    EXPECT_NE(written.find(" id=3 "), std::string::npos) << written;
    EXPECT_NE(written.find(" tunnel=4}"), std::string::npos) << written;
}

TEST_F(PropertySviFailure, VlanThatTheCacheLacksEndsTheRoad)
{
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(set(1, 0), -1);
    expect_calls(join({svi_object_read(), Calls{svi_road::cache_asked(VLAN, false)}}));
    expect_messages({report(SET_SVI, "fwmpd_bcm_vlan_control_vlan_get(100) returned NULLs\n")});
}

TEST_F(PropertySviFailure, ClassIsNotStoredWhereTheCacheLacksTheVlan)
{
    fail(VLAN_FROM_CACHE, -1);
    EXPECT_EQ(set(13, 1), -1);
    EXPECT_EQ(lif->properties.class_high_bit, 0U);
}

TEST_F(PropertySviFailure, RefusedWriteThroughTheWrapperIsNotLookedAt)
{
    fail(WRITE_VLAN, -5);
    EXPECT_EQ(set(1, 0), 0);
    const VlanRecord closed = {.flags = ROUTED_IP4 | 0x8U};
    expect_calls(
        join({svi_object_read(), svi_vlan_written(closed, -5), svi_road::object_written_again(*lif),
              svi_ingress_rewritten(*lif, Kind::trident, ip4_ingress(Kind::trident), closed)}));
    expect_reports({});
    EXPECT_EQ(cached().vc_flags, closed.flags);
}

TEST_F(PropertySviFailure, RefusedDirectWriteIsReportedAndTheRestIsWrittenAllTheSame)
{
    fail(WRITE_VLAN_DIRECTLY, -4);
    EXPECT_EQ(set(1, 1), 0);
    expect_calls(join({svi_object_read(), svi_vlan_written({}, 0, -4),
                       svi_road::object_written_again(*lif), ingress_rewritten()}));
    expect_reports({report(
        SET_SVI, fmt::format("bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[4]))});
}

TEST_F(PropertySviFailure, PositiveAnswerOfTheDirectWriteIsARefusalToo)
{
    fail(WRITE_VLAN_DIRECTLY, 1);
    EXPECT_EQ(set(1, 1), 0);
    expect_reports({report(
        SET_SVI, fmt::format("bcm_vlan_control_vlan_set(100) failed: {}\n", _shr_errmsg[19]))});
}

TEST_F(PropertySviFailure, RefusedInterfaceIsReportedAndTheIngressObjectWrittenAllTheSame)
{
    fail(WRITE_INTERFACE, -6);
    EXPECT_EQ(set(1, 1), 0);
    expect_calls(join({to_vlan(), refused_object(-6), ingress_rewritten()}));
    expect_reports({object_refused(lif->index(), -6), object_failed()});
}

TEST_F(PropertySviFailure, IngressObjectThatTheCacheLacksIsTheResult)
{
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(1, 1), -1);
    expect_calls(join({to_vlan(), svi_road::object_written_again(*lif),
                       Calls{called::ingress_init(), called::unit(), called::type(*lif, 9),
                             called::from_cache(IIF, false)}}));
    expect_reports({ingress_not_cached(), ingress_failed()});
    EXPECT_EQ(messages().back(), ingress_failed());
}

TEST_F(PropertySviFailure, TieThatIsRefusedIsTheResultWithItsOwnCode)
{
    fail(WRITE_VLAN, -5, 2);
    EXPECT_EQ(set(1, 0), -5);
    EXPECT_EQ(calls().back(), svi_road::written(VLAN, text({.flags = ROUTED_IP4 | 0x8U}), -5));
    expect_reports(
        {report(CREATE_INGRESS, fmt::format("{}(100) failed: {}\n", WRITE_VLAN, _shr_errmsg[5])),
         ingress_failed()});
}

TEST_F(PropertySviFailure, TieToAVlanThatTheCacheLacksIsReportedWithTheInternalVlan)
{
    switched_vlan(OTHER_VLAN);
    lif->lif.int_vlan = OTHER_VLAN;
    sw.wrappers.forget_vlan_control(VLAN);
    EXPECT_EQ(set(1, 1), -1);
    expect_reports({other_vlan(OTHER_VLAN),
                    report(CREATE_INGRESS, VLAN_FROM_CACHE + "(100) returned NULL\n"),
                    ingress_failed(OTHER_VLAN)});
}

TEST_F(PropertySviFailure, IngressObjectThatTheChipRefusesIsNoFailureOfItsCreate)
{
    fail(WRITE_INGRESS, -6);
    EXPECT_EQ(set(1, 1), 0);
    expect_reports({report(CREATE_INGRESS, fmt::format("bcm_l3_ing_create({}) failed: {}\n",
                                                       lif->hex(), _shr_errmsg[6]))});
    EXPECT_EQ(vlan_writes(), join({writes_of({}), writes_of({})}));
}

TEST_F(PropertySviFailure, SnoopingFlagOfTheTieThatIsRefusedIsNoFailureEither)
{
    fail(WRITE_VLAN_DIRECTLY, -4, 2);
    EXPECT_EQ(set(1, 1), 0);
    expect_reports(
        {report(CREATE_INGRESS, fmt::format("{}(100) BCM_VLAN_IGMP_SNOOP_DISABLE failed: {}\n",
                                            WRITE_VLAN, _shr_errmsg[4]))});
}

TEST_F(PropertySviFailure, AllThreeMayFailAndEachIsReportedInItsTurn)
{
    fail(WRITE_VLAN_DIRECTLY, -4);
    fail(WRITE_INTERFACE, -6);
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(1, 1), -1);
    expect_reports({report(SET_SVI, fmt::format("bcm_vlan_control_vlan_set(100) failed: {}\n",
                                                _shr_errmsg[4])),
                    object_refused(lif->index(), -6), object_failed(), ingress_not_cached(),
                    ingress_failed()});
}

TEST_F(PropertySviFailure, RefusedStoreDoesNotShow)
{
    fail("rtifhal_pss_l3port_store", -1);
    EXPECT_EQ(set(1, 1), 0);
    EXPECT_EQ(std::ranges::count(reports(), SET_SVI, &Message::function), 0);
    EXPECT_EQ(vlan_writes(), join({writes_of({}), writes_of({})}));
}

TEST_F(PropertySviFailure, NothingIsUndone)
{
    lif->properties.mtu = 9000;
    fail(FROM_CACHE, -1);
    EXPECT_EQ(set(3, 9), -1);
    EXPECT_EQ(in_the_chip().vrf, 9U);
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 1);
}

} // namespace rtifhal_test::property_svi_failure
