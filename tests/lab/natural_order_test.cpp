/*
 * natural_order_test.cpp: the order in which people count names.
 */
#include "config/natural_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using lab::config::natural_compare;
using lab::config::NaturalLess;

TEST(NaturalOrder, DigitsCountByTheirValue)
{
    EXPECT_LT(natural_compare("Ethernet8", "Ethernet64"), 0);
    EXPECT_GT(natural_compare("Ethernet100", "Ethernet20"), 0);
    EXPECT_EQ(natural_compare("Ethernet8", "Ethernet8"), 0);
}

TEST(NaturalOrder, ShorterNameComesFirst)
{
    EXPECT_LT(natural_compare("Ethernet", "Ethernet0"), 0);
    EXPECT_LT(natural_compare("", "E"), 0);
    EXPECT_LT(natural_compare("Ethernet4", "Ethernet4.10"), 0);
}

TEST(NaturalOrder, PortsOfTheBackplaneComeBehindThoseOfTheFront)
{
    std::vector<std::string> ports = {"Ethernet-BP4", "Ethernet112", "Ethernet-BP0", "Ethernet4"};
    std::sort(ports.begin(), ports.end(), NaturalLess{});
    EXPECT_EQ(ports, (std::vector<std::string>{"Ethernet4", "Ethernet112", "Ethernet-BP0",
                                               "Ethernet-BP4"}));
}

TEST(NaturalOrder, NamesThatDifferByZerosAreNotEqual)
{
    EXPECT_LT(natural_compare("Po0003", "Po3"), 0);
    EXPECT_GT(natural_compare("Po3", "Po0003"), 0);
}

TEST(NaturalOrder, RunsOfDigitsMayBeLongerThanAnyNumber)
{
    const std::string low = "E" + std::string(40, '1');
    const std::string high = "E2" + std::string(40, '0');
    EXPECT_LT(natural_compare(low, high), 0);
}
