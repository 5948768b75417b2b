/*
 * chip_basics_test.cpp: sets of ports, ids that the chip chooses, table sizes.
 */
#include "chip/chip.h"

#include <gtest/gtest.h>

namespace simswitch::chip
{

TEST(PortSet, PortIsBitOfItsWord)
{
    const PortSet ports{0, 33, 255};
    EXPECT_EQ(ports.words(), (PortSet::Words{1, 2, 0, 0, 0, 0, 0, 0x80000000}));
    EXPECT_EQ(ports.count(), 3);
}

TEST(PortSet, PortOutsideHasNoPlace)
{
    const PortSet ports{-1, 256, 1000};
    EXPECT_TRUE(ports.empty());
    EXPECT_FALSE(ports.has(-1));
    EXPECT_FALSE(ports.has(256));
}

TEST(PortSet, TextShowsRunsOfThreeAsRanges)
{
    EXPECT_EQ(PortSet{}.text(), "{}");
    EXPECT_EQ((PortSet{0, 5, 9, 10, 11, 12}).text(), "{0,5,9-12}");
    EXPECT_EQ((PortSet{1, 2, 255}).text(), "{1,2,255}");
    EXPECT_EQ(PortSet::front().text(), "{1-104}");
}

TEST(PortSet, UnionIntersectionDifference)
{
    PortSet ports{1, 2, 3};
    ports |= PortSet{4};
    ports -= PortSet{1};
    ports &= PortSet{3, 4, 5};
    EXPECT_EQ(ports, (PortSet{3, 4}));
}

TEST(IdPool, GivenBackIdsComeFirstLowestFirst)
{
    IdPool ids(1);
    EXPECT_EQ(ids.take(), 1);
    EXPECT_EQ(ids.take(), 2);
    EXPECT_EQ(ids.take(), 3);
    ids.give_back(2);
    ids.give_back(1);
    EXPECT_EQ(ids.take(), 1);
    EXPECT_EQ(ids.take(), 2);
    EXPECT_EQ(ids.take(), 4);
}

TEST(Limits, ZeroIsTheKindsOwnSize)
{
    EXPECT_EQ(Chip(Kind::trident).limits().l3_interfaces, 4096U);
    EXPECT_EQ(Chip(Kind::trident2).limits().l3_interfaces, 8192U);
    const Chip small(Kind::trident2, {.stations = 2});
    EXPECT_EQ(small.limits().stations, 2U);
    EXPECT_EQ(small.limits().rule_region, 256U);
}

TEST(Limits, NoSizeIsLeftAtZero)
{
    const Limits none;
    const Limits sizes = Chip().limits();
    EXPECT_NE(sizes, none);
    EXPECT_EQ(sizes_of(Kind::trident, sizes), sizes);
    EXPECT_NE(sizes_of(Kind::trident2, none), sizes);
}

} // namespace simswitch::chip
