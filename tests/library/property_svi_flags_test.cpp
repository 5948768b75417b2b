/*
 * property_svi_flags_test.cpp: which bit of an SVI's VLAN each property drives,
 * and in which sense: most flags switch something off, one switches it on.
 *
 * property_svi_values_test.cpp has the properties with a value,
 * property_svi_set_test.cpp the whole road.
 */
#include "support/setter_roads.h"

#include <fmt/format.h>

namespace rtifhal_test::property_svi_flags
{

namespace
{

using namespace setter_road;
using svi_road::ROUTED_IP4;
using svi_road::VLAN;

constexpr std::uint32_t ALL_FLAGS = ~SNOOPING_OFF;

/** A property that drives one bit. */
struct Driven {
    std::string name;
    std::uint32_t property;
    std::uint32_t bit;
    bool set_when_on; ///< the bit is set by a nonzero value
};

class PropertySviBit : public SviSetterTest, public ::testing::WithParamInterface<Driven>
{
protected:
    using SviSetterTest::SviSetterTest;

    /** The flags that a set leaves in the cache. */
    std::uint32_t flags_after(std::uint32_t before, std::uint32_t value)
    {
        flags_were(before);
        EXPECT_EQ(set(GetParam().property, value), 0);
        return cached().vc_flags;
    }
};

class PropertySviBitOnTrident2 : public PropertySviBit
{
protected:
    PropertySviBitOnTrident2() : PropertySviBit(Kind::trident2) {}
};

class PropertySviFlags : public SviSetterTest
{
};

std::string name_of(const ::testing::TestParamInfo<Driven> &info)
{
    return info.param.name;
}

// The word of property 5 is the only one whose bit isn't in the disabling sense.
const auto EVERY_BIT =
    ::testing::Values(Driven{"Ipv4", 1, 0x8, false}, Driven{"Ipv4Multicast", 2, 0x20, false},
                      Driven{"IngressFlagWord", 5, 0x4000, true}, Driven{"Ipv6", 6, 0x10, false},
                      Driven{"Mpls", 18, 0x200, false});

} // namespace

TEST_P(PropertySviBit, FollowsTheValueAndTouchesNoOtherBit)
{
    const Driven &driven = GetParam();
    for (const std::uint32_t value : {1U, 5U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(flags_after(0, value), driven.set_when_on ? driven.bit : 0) << value;
        EXPECT_EQ(flags_after(ALL_FLAGS, value),
                  driven.set_when_on ? ALL_FLAGS : ALL_FLAGS & ~driven.bit)
            << value;
    }
    EXPECT_EQ(flags_after(0, 0), driven.set_when_on ? 0 : driven.bit);
    EXPECT_EQ(flags_after(ALL_FLAGS, 0), driven.set_when_on ? ALL_FLAGS & ~driven.bit : ALL_FLAGS);
}

TEST_P(PropertySviBit, IsInEveryRecordThatIsWritten)
{
    const Driven &driven = GetParam();
    for (const std::uint32_t value : {0U, 1U}) {
        const bool set_now = (value != 0) == driven.set_when_on;
        const VlanRecord record = {.flags = set_now ? driven.bit : 0};
        flags_were(set_now ? 0 : driven.bit);
        EXPECT_EQ(set(driven.property, value), 0);
        EXPECT_EQ(vlan_writes(), join({writes_of(record), writes_of(record)})) << value;
    }
}

TEST_P(PropertySviBit, IsInTheChipBesideTheSnoopingFlag)
{
    const Driven &driven = GetParam();
    for (const std::uint32_t value : {0U, 1U}) {
        const bool set_now = (value != 0) == driven.set_when_on;
        const std::uint32_t rest = ROUTED_IP4 & ~driven.bit;
        EXPECT_EQ(set(driven.property, value), 0);
        EXPECT_EQ(in_the_chip().flags, rest | (set_now ? driven.bit : 0) | SNOOPING_OFF) << value;
    }
}

TEST_P(PropertySviBit, SaysTheFlagsBeforeAndAfter)
{
    const Driven &driven = GetParam();
    const std::uint32_t value = driven.set_when_on ? 1 : 0;
    flags_were(0x400000);
    set(driven.property, value);
    expect_messages(svi_messages(*lif, driven.property, 0x400000, 0x400000 | driven.bit));
}

TEST_P(PropertySviBitOnTrident2, FollowsTheValueAndTouchesNoOtherBit)
{
    const Driven &driven = GetParam();
    EXPECT_EQ(flags_after(0, 1), driven.set_when_on ? driven.bit : 0);
    EXPECT_EQ(flags_after(0, 0), driven.set_when_on ? 0 : driven.bit);
    EXPECT_EQ(flags_after(ALL_FLAGS, 0), driven.set_when_on ? ALL_FLAGS & ~driven.bit : ALL_FLAGS);
}

INSTANTIATE_TEST_SUITE_P(Each, PropertySviBit, EVERY_BIT, name_of);
INSTANTIATE_TEST_SUITE_P(Each, PropertySviBitOnTrident2, EVERY_BIT, name_of);

TEST_F(PropertySviFlags, ValueTellsAndNotTheContext)
{
    lif->properties.ipv4_en = 1;
    lif->properties.ipv4_mc_en = 1;
    lif->properties.ipv6_en = 1;
    lif->properties.mpls_en = 1;
    lif->properties.ingress_flag_word = 1;
    flags_were(0x4000);
    for (const std::uint32_t property : {1U, 2U, 5U, 6U, 18U}) {
        EXPECT_EQ(set(property, 0), 0);
    }
    EXPECT_EQ(cached().vc_flags, 0x238U);
}

TEST_F(PropertySviFlags, MplsGoesOffUnderAnSdnAgentToo)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    flags_were(0);
    EXPECT_EQ(set(18, 0), 0);
    EXPECT_EQ(cached().vc_flags, 0x200U);
}

TEST_F(PropertySviFlags, MarkOfEverySviThatTheVlanHasLostStaysLost)
{
    // Only the add and the delete set it.
    flags_were(0x230);
    for (const std::uint32_t property : {1U, 7U, 18U}) {
        EXPECT_EQ(set(property, 1), 0);
    }
    EXPECT_EQ(in_the_chip().flags, 0x30U | SNOOPING_OFF);
}

TEST_F(PropertySviFlags, EveryPropertyLeavesTheSnoopingFlagInTheChipAndOutOfTheCache)
{
    for (std::uint32_t property = 0; property <= 20; ++property) {
        cached().vc_flags = ROUTED_IP4;
        EXPECT_EQ(set(property, 1), 0);
        EXPECT_EQ(cached().vc_flags & SNOOPING_OFF, 0U) << property;
        EXPECT_EQ(in_the_chip().flags, cached().vc_flags | SNOOPING_OFF) << property;
    }
}

TEST_F(PropertySviFlags, SnoopingFlagIsInNoRecordThatGoesThroughTheWrapper)
{
    set(1, 1);
    for (const std::string &call : calls_of({WRITE_VLAN})) {
        EXPECT_EQ(call, svi_road::written(VLAN, text({})));
    }
    EXPECT_EQ(calls_of({WRITE_VLAN}).size(), 2U);
}

TEST_F(PropertySviFlags, SettersOfSeveralPropertiesAddUp)
{
    flags_were(0x238);
    set(1, 1);
    set(5, 1);
    set(6, 1);
    set(1, 0);
    EXPECT_EQ(cached().vc_flags, 0x4228U);
}

TEST_F(PropertySviFlags, RestOfTheVlansRecordStaysAndGoesToTheChip)
{
    cached().reserved[0] = 0xAAAA;
    cached().reserved[32] = 0xBBBB;
    set(6, 1);
    EXPECT_EQ(in_the_chip().rest[0], 0xAAAAU);
    EXPECT_EQ(in_the_chip().rest[32], 0xBBBBU);
}

} // namespace rtifhal_test::property_svi_flags
