/*
 * property_svi_values_test.cpp: the properties of an SVI with a value: VRF,
 * reverse-path mode, class. The setter writes the VLAN with the value that it
 * was handed, and then the ingress object's tie writes it again with what it
 * makes of the context; only that lasts.
 *
 * property_svi_flags_test.cpp has the properties with a bit.
 */
#include "support/setter_roads.h"

#include <array>

namespace rtifhal_test::property_svi_values
{

namespace
{

using namespace setter_road;

constexpr std::uint32_t VRF = 3;
constexpr std::uint32_t URPF = 4;
constexpr std::uint32_t IPV6_VRF = 9;
constexpr std::uint32_t CLASS_HIGH = 13;

class PropertySviValue : public SviSetterTest
{
protected:
    using SviSetterTest::SviSetterTest;

    /** What the setter itself writes of the VLAN, and what the tie writes after it. */
    void expect_vlan(const VlanRecord &interim, const VlanRecord &lasting)
    {
        EXPECT_EQ(vlan_writes(), join({writes_of(interim), writes_of(lasting)}));
        EXPECT_EQ(cached().vc_vrf, lasting.vrf);
        EXPECT_EQ(cached().vc_urpf_mode, lasting.urpf);
        EXPECT_EQ(in_the_chip().vrf, lasting.vrf);
        EXPECT_EQ(in_the_chip().urpf_mode, lasting.urpf);
        start();
    }
    /** The class that the chip has for the interface. */
    int class_in_the_chip()
    {
        sw.end_request();
        return sw.chip.l3_ingresses.find(IIF)->intf_class;
    }
};

class PropertySviValueOnTrident2 : public PropertySviValue
{
protected:
    PropertySviValueOnTrident2() : PropertySviValue(Kind::trident2) {}
};

/** A reverse-path mode as the layer above and as the chip has it. */
struct Mode {
    std::uint32_t property;
    unsigned chip;
};

class PropertySviReversePath : public PropertySviValue, public ::testing::WithParamInterface<Mode>
{
};

} // namespace

TEST_F(PropertySviValue, VrfIsWrittenAsHandedInAndThenFromTheContext)
{
    for (const std::uint32_t property : {VRF, IPV6_VRF}) {
        lif->properties.vrf = 5;
        EXPECT_EQ(set(property, 9), 0);
        expect_vlan({.vrf = 9}, {.vrf = 5});
    }
}

TEST_F(PropertySviValueOnTrident2, VrfIsWrittenAsHandedInAndThenFromTheContext)
{
    lif->properties.vrf = 5;
    EXPECT_EQ(set(VRF, 9), 0);
    expect_vlan({.vrf = 9}, {.vrf = 5});
}

TEST_F(PropertySviValue, VrfZeroIsOnlyInTheContextAnotherWordForOne)
{
    lif->properties.vrf = 0;
    set(VRF, 0);
    expect_vlan({.vrf = 0}, {.vrf = 1});
}

TEST_F(PropertySviValue, VrfIsWrittenInItsWholeWidth)
{
    set(VRF, 0x12345);
    expect_vlan({.vrf = 0x12345}, {.vrf = 1});
    set(IPV6_VRF, 0xFFFFFFFF);
    expect_vlan({.vrf = 0xFFFFFFFF}, {.vrf = 1});
}

TEST_F(PropertySviValue, VrfOfIpv6LastsWhereIpv6IsAlone)
{
    lif->properties.ipv4_en = 0;
    lif->properties.ipv6_en = 1;
    lif->properties.vrf = 5;
    lif->properties.ipv6_vrf = 7;
    set(VRF, 5);
    expect_vlan({.vrf = 5}, {.vrf = 7});
    set(IPV6_VRF, 7);
    expect_vlan({.vrf = 7}, {.vrf = 7});
}

TEST_F(PropertySviValue, VrfOfIpv6DoesNotLastBesideIpv4)
{
    lif->properties.ipv6_en = 1;
    lif->properties.vrf = 5;
    lif->properties.ipv6_vrf = 7;
    set(IPV6_VRF, 7);
    expect_vlan({.vrf = 7}, {.vrf = 5});
}

TEST_F(PropertySviValue, VrfZeroLastsWhereNoFamilyIsOn)
{
    lif->properties.ipv4_en = 0;
    lif->properties.vrf = 5;
    set(VRF, 5);
    expect_vlan({.vrf = 5}, {.vrf = 0});
}

TEST_F(PropertySviValue, VrfOfTheObjectsIsTheContexts)
{
    lif->properties.vrf = 5;
    set(VRF, 9);
    sw.end_request();
    EXPECT_EQ(sw.chip.l3_interfaces.find(IIF)->vrf, 5);
    EXPECT_EQ(sw.chip.l3_ingresses.find(IIF)->vrf, 5);
}

TEST_P(PropertySviReversePath, IsWrittenFromTheValueAndThenFromTheContext)
{
    const auto &[property, chip] = GetParam();
    set(URPF, property);
    expect_vlan({.urpf = chip}, {.urpf = 0});
    // The value loses against the context, which has the loose mode now.
    lif->properties.urpf_mode = 2;
    set(URPF, property);
    expect_vlan({.urpf = chip}, {.urpf = 1});
}

// 0x102 and 0x103 would be modes in the eight bits that the context has.
INSTANTIATE_TEST_SUITE_P(Each, PropertySviReversePath,
                         ::testing::Values(Mode{3, 2}, Mode{2, 1}, Mode{1, 0}, Mode{0, 0},
                                           Mode{4, 0}, Mode{0x102, 0}, Mode{0x103, 0},
                                           Mode{0xFFFFFFFF, 0}));

TEST_F(PropertySviValue, ReversePathModeOfTheContextLasts)
{
    for (const auto &[property, chip] : {Mode{3, 2}, Mode{2, 1}, Mode{1, 0}, Mode{4, 0}}) {
        lif->properties.urpf_mode = static_cast<std::uint8_t>(property);
        set(URPF, 0);
        expect_vlan({.urpf = 0}, {.urpf = chip});
    }
}

TEST_F(PropertySviValue, OtherPropertyCarriesVrfAndReversePathModeOfTheVlanAlong)
{
    cached().vc_vrf = 77;
    cached().vc_urpf_mode = 2;
    set(1, 1);
    expect_vlan({.vrf = 77, .urpf = 2}, {});
}

TEST_F(PropertySviValue, ClassIsStoredInTheContextAndReachesTheChip)
{
    EXPECT_EQ(set(CLASS_HIGH, 1), 0);
    EXPECT_EQ(lif->properties.class_high_bit, 1U);
    EXPECT_EQ(calls_of({WRITE_INGRESS}),
              Calls{called::write_ingress("{flags=0x6 vrf=1 urpf=0 class=192 ipmc=0 qos=0}", IIF)});
    EXPECT_EQ(class_in_the_chip(), 192);
}

TEST_F(PropertySviValueOnTrident2, ClassIsStoredInTheContextAndReachesTheChip)
{
    EXPECT_EQ(set(CLASS_HIGH, 1), 0);
    EXPECT_EQ(lif->properties.class_high_bit, 1U);
    EXPECT_EQ(class_in_the_chip(), 192);
}

TEST_F(PropertySviValue, ClassIsStoredAsItIs)
{
    for (const std::uint32_t value : {5U, 0x80000000U, 0xFFFFFFFFU}) {
        set(CLASS_HIGH, value);
        EXPECT_EQ(lif->properties.class_high_bit, value);
        EXPECT_EQ(class_in_the_chip(), 192);
    }
    set(CLASS_HIGH, 0);
    EXPECT_EQ(lif->properties.class_high_bit, 0U);
    EXPECT_EQ(class_in_the_chip(), 64);
}

TEST_F(PropertySviValue, ClassLeavesTheVlanAsItIs)
{
    set(CLASS_HIGH, 1);
    expect_vlan({}, {});
}

/** All properties in a form that can be compared. */
static auto words_of(const l3lif_pi_ctxt &properties)
{
    const l3lif_pi_ctxt &p = properties;
    return std::array<std::uint32_t, 13>{p.ipv4_en,
                                         p.ipv4_mc_en,
                                         p.ipv6_en,
                                         p.l3_prop_word_7,
                                         p.urpf_mode,
                                         p.vrf,
                                         p.ipv6_vrf,
                                         p.mtu,
                                         p.ingress_flag_word,
                                         p.l3_prop_word_8,
                                         p.acl_qos_label_pending,
                                         p.class_high_bit,
                                         p.mpls_en};
}

TEST_F(PropertySviValue, ClassIsTheOnlyPropertyThatTheSetterStores)
{
    lif->properties = {.ipv4_en = 0x11,
                       .ipv4_mc_en = 0x12,
                       .ipv6_en = 0x13,
                       .l3_prop_word_7 = 0x14,
                       .urpf_mode = 0x15,
                       .vrf = 0x16,
                       .ipv6_vrf = 0x17,
                       .mtu = 0x1800,
                       .ingress_flag_word = 0x19,
                       .l3_prop_word_8 = 0x1A,
                       .acl_qos_label_pending = 0,
                       .class_high_bit = 0x1C,
                       .mpls_en = 0x1D};
    for (std::uint32_t property = 0; property <= 20; ++property) {
        const l3lif_pi_ctxt before = lif->properties;
        set(property, 0x55);
        const bool stored = property == CLASS_HIGH;
        EXPECT_EQ(lif->properties.class_high_bit, stored ? 0x55U : before.class_high_bit)
            << property;
        lif->properties.class_high_bit = before.class_high_bit;
        EXPECT_EQ(words_of(lif->properties), words_of(before)) << property;
    }
}

TEST_F(PropertySviValue, WaitingLabelIsTakenUpWhicheverPropertyIsSet)
{
    lif->properties.acl_qos_label_pending = 0x21;
    set(7, 0);
    EXPECT_EQ(lif->properties.acl_qos_label_pending, 0U);
    EXPECT_EQ(lif->record()->acl_qos_label_ingress, 0x21U);
    EXPECT_EQ(class_in_the_chip(), 0x61);
}

} // namespace rtifhal_test::property_svi_values
