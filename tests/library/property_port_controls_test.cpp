/*
 * property_port_controls_test.cpp: the five controls of a routed port that
 * follow its properties: which value each gets from the port's own properties
 * and from those of the subinterfaces that share the port.
 *
 * property_port_set_test.cpp has the whole road.
 */
#include "support/property_port_roads.h"

namespace rtifhal_test::property_port_controls
{

namespace
{

using namespace property_road;
using member_road::port_opened;

class PropertyPortControls : public PortTest
{
protected:
    explicit PropertyPortControls(Kind chip = Kind::trident) : PortTest(chip)
    {
        lif->properties = {};
    }

    /** The five controls that a set writes. */
    Calls set_controls()
    {
        start();
        EXPECT_EQ(set(), 0);
        return controls();
    }
};

class PropertyPortControlsOnTrident2 : public PropertyPortControls
{
protected:
    PropertyPortControlsOnTrident2() : PropertyPortControls(Kind::trident2) {}
};

} // namespace

TEST_F(PropertyPortControls, EachFollowsItsOwnProperty)
{
    for (const auto &followed : FOLLOWED) {
        lif->properties = {};
        lif->properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControlsOnTrident2, EachFollowsItsOwnProperty)
{
    for (const auto &followed : FOLLOWED) {
        lif->properties = {};
        lif->properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControls, AllAreOffWithoutProperties)
{
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF));
}

TEST_F(PropertyPortControls, Control11StaysOffWhateverIsOn)
{
    Lif &sub = subs.add(*lif, 10);
    for (Lif *on : {lif.get(), &sub}) {
        on->properties = Properties{.ipv4_en = 1,
                                    .ipv4_mc_en = 1,
                                    .ipv6_en = 1,
                                    .l3_prop_word_7 = 1,
                                    .ingress_flag_word = 1,
                                    .l3_prop_word_8 = 1,
                                    .class_high_bit = 1,
                                    .mpls_en = 1};
    }
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_ON));
}

TEST_F(PropertyPortControls, FamilyOfASubinterfaceIsOnForThePort)
{
    Lif &sub = subs.add(*lif, 10);
    for (const auto &followed : FOLLOWED) {
        sub.properties = {};
        sub.properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControlsOnTrident2, FamilyOfASubinterfaceIsOnForThePort)
{
    Lif &sub = subs.add(*lif, 10);
    for (const auto &followed : FOLLOWED) {
        sub.properties = {};
        sub.properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControls, FamilyOfThePortStaysOnWhereNoSubinterfaceHasIt)
{
    subs.add(*lif, 10);
    for (const auto &followed : FOLLOWED) {
        lif->properties = {};
        lif->properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControls, EachOfThreeSubinterfacesCounts)
{
    Lif *const all[] = {&subs.add(*lif, 10), &subs.add(*lif, 20), &subs.add(*lif, 30)};
    for (Lif *sub : all) {
        sub->properties.ipv6_en = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, {0, 0, 1, 0, 0})) << sub->index();
        sub->properties.ipv6_en = 0;
    }
}

TEST_F(PropertyPortControls, PropertiesOfSeveralSubinterfacesAndThePortAddUp)
{
    lif->properties.ipv4_mc_en = 1;
    subs.add(*lif, 10).properties.ipv4_en = 1;
    subs.add(*lif, 20);
    subs.add(*lif, 30).properties.mpls_en = 1;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 1, 0, 0, 1}));
}

TEST_F(PropertyPortControls, ControlGoesOffWithTheLastSubinterfaceThatHasTheFamily)
{
    Lif &low = subs.add(*lif, 10);
    Lif &high = subs.add(*lif, 20);
    low.properties.ipv4_en = 1;
    high.properties.ipv4_en = 1;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
    low.properties.ipv4_en = 0;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
    high.properties.ipv4_en = 0;
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF));
}

TEST_F(PropertyPortControls, WordOtherThanOneIsOff)
{
    Lif &sub = subs.add(*lif, 10);
    for (const std::uint32_t word : {2U, 3U, 0x101U, 0x80000001U, 0xFFFFFFFFU}) {
        for (const auto &followed : FOLLOWED) {
            lif->properties = {};
            sub.properties = {};
            lif->properties.*followed.word = word;
            sub.properties.*followed.word = word;
            EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF))
                << followed.control << ' ' << word;
        }
    }
}

TEST_F(PropertyPortControls, OneOfASubinterfaceCountsBesideATwoOfThePort)
{
    Lif &sub = subs.add(*lif, 10);
    for (const auto &followed : FOLLOWED) {
        lif->properties = {};
        sub.properties = {};
        lif->properties.*followed.word = 2;
        sub.properties.*followed.word = 1;
        EXPECT_EQ(set_controls(), port_opened(PORT, only(followed))) << followed.control;
    }
}

TEST_F(PropertyPortControls, TwoOfALaterSubinterfaceTakesNothingAway)
{
    subs.add(*lif, 10).properties.ipv4_en = 1;
    subs.add(*lif, 20).properties.ipv4_en = 2;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
}

TEST_F(PropertyPortControls, TwoIsOnInTheIngressObjectAllTheSame)
{
    lif->properties = Properties{.ipv4_en = 2, .ipv4_mc_en = 2, .vrf = 5};
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF));
    EXPECT_EQ(calls_of({WRITE_INGRESS}),
              Calls{called::write_ingress("{flags=0x6 vrf=5 urpf=0 class=64 ipmc=3 qos=0}", IIF)});
}

TEST_F(PropertyPortControlsOnTrident2, TwoIsOnInTheIngressObjectAllTheSame)
{
    lif->properties =
        Properties{.ipv4_en = 2, .ipv4_mc_en = 2, .ipv6_en = 2, .vrf = 5, .mpls_en = 2};
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF));
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x406 vrf=5 urpf=0 class=64 ipmc=3 qos=0}", IIF)});
}

TEST_F(PropertyPortControlsOnTrident2, FamilyOfASubinterfaceIsNotThePortsOwnInTheIngressObject)
{
    subs.add(*lif, 10).properties =
        Properties{.ipv4_en = 1, .ipv4_mc_en = 1, .ipv6_en = 1, .vrf = 9};
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 1, 1, 0, 0}));
    EXPECT_EQ(
        calls_of({WRITE_INGRESS}),
        Calls{called::write_ingress("{flags=0x4a6 vrf=0 urpf=0 class=64 ipmc=0 qos=0}", IIF)});
}

TEST_F(PropertyPortControls, SubinterfaceNeedsNoContextToCount)
{
    Lif &parked = subs.add(*lif, 10);
    parked.with_parked(20);
    parked.properties.ipv6_en = 1;
    Lif &bare = subs.add(*lif, 20);
    bare.with_bare_context();
    bare.properties.mpls_en = 1;
    EXPECT_EQ(set_controls(), port_opened(PORT, {0, 0, 1, 0, 1}));
}

TEST_F(PropertyPortControls, SubinterfaceWithoutPropertiesCountsAsAllOff)
{
    subs.add(*lif, 10).without_properties();
    EXPECT_EQ(set_controls(), port_opened(PORT, ALL_OFF));
    subs.add(*lif, 20).properties.ipv4_en = 1;
    lif->properties.mpls_en = 1;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 0, 0, 0, 1}));
    expect_reports({});
}

TEST_F(PropertyPortControls, EmptyTreeAddsNothing)
{
    subs.file(*lif);
    lif->properties.ipv4_en = 1;
    EXPECT_EQ(set_controls(), port_opened(PORT, {1, 0, 0, 0, 0}));
}

TEST_F(PropertyPortControls, RefusedOnesAreNotLookedAt)
{
    lif->properties = Properties{.ipv4_en = 1, .ipv4_mc_en = 1, .ipv6_en = 1, .mpls_en = 1};
    for (const char *control : {"8, 1", "10, 1", "9, 1", "11, 0", "14, 1"}) {
        fail_when(PORT_CONTROL, std::string("0, 5, ") + control, -4);
    }
    EXPECT_EQ(set(), 0);
    Calls refused = port_opened(PORT, ALL_ON);
    for (auto &call : refused) {
        call.replace(call.size() - 1, 1, "-4");
    }
    EXPECT_EQ(controls(), refused);
    EXPECT_EQ(calls().back(), called::port_control(PORT, IIF));
    expect_reports({});
}

} // namespace rtifhal_test::property_port_controls
