/*
 * property_svi_set_test.cpp: a property is applied to an SVI: what is called
 * and said, in which order, also for properties that change nothing and for
 * those that nobody knows.
 *
 * property_svi_flags_test.cpp and property_svi_values_test.cpp have what each
 * property does, property_svi_failure_test.cpp what goes wrong.
 */
#include "support/setter_roads.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>

#include <fmt/format.h>

namespace rtifhal_test::property_svi_set
{

namespace
{

using namespace setter_road;
using svi_road::ROUTED_IP4;
using svi_road::VLAN;

class PropertyOfSvi : public SviSetterTest
{
protected:
    using SviSetterTest::SviSetterTest;

    /** The whole road of a property that leaves the VLAN as it is. */
    Calls same_road(Kind chip = Kind::trident) const { return whole_svi_road(*lif, chip, {}, {}); }
};

class PropertyOfSviOnTrident2 : public PropertyOfSvi
{
protected:
    PropertyOfSviOnTrident2() : PropertyOfSvi(Kind::trident2) {}
};

class UnknownPropertyOfSvi : public PropertyOfSvi,
                             public ::testing::WithParamInterface<std::uint32_t>
{
};

} // namespace

TEST_F(PropertyOfSvi, VlanIsWrittenThenTheObjectThenTheIngressObjectThatWritesTheVlanAgain)
{
    EXPECT_EQ(set(6, 1), 0);
    const VlanRecord with_ipv6 = {.flags = ROUTED_IP4 & ~0x10U};
    expect_calls(whole_svi_road(*lif, Kind::trident, with_ipv6, with_ipv6));
}

TEST_F(PropertyOfSvi, EveryMessageOfTheRoad)
{
    set(6, 1);
    expect_messages(svi_messages(*lif, 6, ROUTED_IP4, ROUTED_IP4 & ~0x10U));
}

TEST_F(PropertyOfSviOnTrident2, VlanIsWrittenThenTheObjectThenTheIngressObjectThatWritesItAgain)
{
    EXPECT_EQ(set(18, 1), 0);
    const VlanRecord with_mpls = {.flags = ROUTED_IP4 & ~0x200U};
    expect_calls(whole_svi_road(*lif, Kind::trident2, with_mpls, with_mpls));
}

TEST_F(PropertyOfSviOnTrident2, EveryMessageOfTheRoad)
{
    set(18, 1);
    expect_messages(svi_messages(*lif, 18, ROUTED_IP4, ROUTED_IP4 & ~0x200U));
}

TEST_F(PropertyOfSvi, WordsSevenAndEightRewriteTheSameAndAreKnown)
{
    for (const std::uint32_t property : {7U, 8U}) {
        for (const std::uint32_t value : {0U, 1U, 0xFFFFFFFFU}) {
            start();
            EXPECT_EQ(set(property, value), 0);
            expect_calls(same_road());
            expect_messages(svi_messages(*lif, property, ROUTED_IP4, ROUTED_IP4));
        }
    }
}

TEST_F(PropertyOfSvi, KnownOnesAreNotSaidToBeUnknown)
{
    for (const std::uint32_t property : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 13U, 18U}) {
        start();
        EXPECT_EQ(set(property, 1), 0);
        for (const Message &message : messages()) {
            EXPECT_EQ(message.text.find("unknown"), std::string::npos) << property;
        }
    }
}

TEST_P(UnknownPropertyOfSvi, IsSaidWithNumberAndValueAndWritesEverythingAllTheSame)
{
    EXPECT_EQ(set(GetParam(), 77), 0);
    expect_calls(same_road());
    expect_messages(svi_messages(*lif, GetParam(), ROUTED_IP4, ROUTED_IP4,
                                 {trace(SET_SVI, " intf_id 3 unknown 77\n")}));
}

INSTANTIATE_TEST_SUITE_P(Each, UnknownPropertyOfSvi,
                         ::testing::Values(0U, 10U, 11U, 12U, 14U, 15U, 16U, 17U, 19U, 20U, 0x101U,
                                           0x10001U, 0x7FFFFFFFU, 0x80000001U, 0xFFFFFFFFU));

TEST_F(PropertyOfSvi, UnknownOneTakesTheContextAlong)
{
    lif->properties.vrf = 5;
    lif->properties.mtu = 9000;
    lif->properties.class_high_bit = 1;
    EXPECT_EQ(set(19, 0), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->mtu, 9000);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->intf_class, 192);
    EXPECT_EQ(in_the_chip().vrf, 5U);
}

TEST_F(PropertyOfSvi, VlanIsTheInternalOneAndNotThatOfTheTie)
{
    switched_vlan(200, 0x38);
    lif->lif.int_vlan = 200;
    EXPECT_EQ(set(18, 0), 0);
    EXPECT_EQ(calls_of({WRITE_VLAN}),
              (Calls{svi_road::written(200, svi_road::controls(0, 0, 0x238, 0)),
                     svi_road::written(VLAN, text({}))}));
    EXPECT_EQ(in_the_chip(200).flags, 0x238U | SNOOPING_OFF);
    EXPECT_EQ(in_the_chip(200).ingress_if, 0U);
    EXPECT_EQ(in_the_chip(VLAN).flags, ROUTED_IP4 | SNOOPING_OFF);
}

TEST_F(PropertyOfSvi, ObjectIsReadWithWhatStillWaitsInTheQueue)
{
    // A field of the object that comes from no property: it has to last.
    bcm_l3_intf_t waiting = {};
    waiting.l3a_flags = 0x140;
    waiting.l3a_intf_id = IIF;
    waiting.l3a_vid = VLAN;
    waiting.l3a_tunnel_idx = 9;
    ASSERT_EQ(rtifhal_bcm_l3_intf_create(0, &waiting), 0);
    EXPECT_EQ(set(7, 0), 0);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->tunnel, 9);
    expect_reports({});
}

TEST_F(PropertyOfSvi, DirectWriteComesBehindWhatWaits)
{
    // Else the record without the snooping flag would be the last one in the chip.
    set(1, 1);
    const Calls writes = calls_of({"fwmpd_trident_batch_flush", WRITE_VLAN, WRITE_VLAN_DIRECTLY});
    const VlanRecord same;
    EXPECT_EQ(writes,
              (Calls{called::flush(), writes_of(same)[0], called::flush(), writes_of(same)[1],
                     writes_of(same)[0], called::flush(), writes_of(same)[1]}));
}

TEST_F(PropertyOfSvi, SecondSetRepeatsTheWholeRoad)
{
    set(1, 1);
    sw.end_request();
    start();
    EXPECT_EQ(set(1, 1), 0);
    expect_calls(same_road());
}

TEST_F(PropertyOfSvi, RoadIsTheSameInRestoreModeOnAFastRestartAndUnderAnSdnAgent)
{
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(set(1, 1), 0);
    expect_calls(same_road());
}

TEST_F(PropertyOfSviOnTrident2, IngressObjectIsToldOfTheFamiliesAndTheFlagWord)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.ipv6_vrf = 7;
    lif->properties.ingress_flag_word = 1;
    set(5, 1);
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x8426 vrf=7 urpf=0 class=64 ipmc=0 qos=0}", IIF)});
    EXPECT_EQ(cached().vc_flags, ROUTED_IP4 | 0x4000U);
}

TEST_F(PropertyOfSvi, NumberRecordAndStateStayAsTheyAre)
{
    lif->lif.lif_state = 9;
    set(1, 0);
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
    EXPECT_EQ(lif->record()->brcm_prog_complete, 0U);
    EXPECT_EQ(lif->record()->prev_l3_if_index, 0);
    EXPECT_EQ(lif->lif.lif_state, 9U);
    EXPECT_EQ(cached().vc_class, 6U);
}

} // namespace rtifhal_test::property_svi_set
