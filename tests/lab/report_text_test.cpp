/*
 * report_text_test.cpp: how values and tables are shown to people.
 */
#include "report/text.h"
#include "report/text_table.h"

#include <gtest/gtest.h>

using namespace lab::report;

TEST(PortList, ThreeAndMoreInARowAreARange)
{
    EXPECT_EQ(port_list({}), "-");
    EXPECT_EQ(port_list({7}), "7");
    EXPECT_EQ(port_list({1, 2}), "1,2");
    EXPECT_EQ(port_list({1, 2, 3}), "1-3");
    EXPECT_EQ(port_list({1, 3, 4, 5, 6, 8, 9, 104}), "1,3-6,8,9,104");
}

TEST(Counted, OneAndMany)
{
    EXPECT_EQ(counted(0, "row"), "0 rows");
    EXPECT_EQ(counted(1, "row"), "1 row");
    EXPECT_EQ(counted(2, "row"), "2 rows");
}

TEST(TextTable, WidthsAndSides)
{
    TextTable table({{"NAME"}, {"IIF", true}, {"RESULT"}}, 2);
    table.add({"Ethernet0", "3", "up"});
    table.add({"Vlan1", "1000", "failed"});
    EXPECT_EQ(table.titles(), "NAME        IIF  RESULT");
    EXPECT_EQ(table.line(0, ""), "Ethernet0     3  up");
    EXPECT_EQ(table.line(1, ""), "Vlan1      1000  failed");
}

TEST(TextTable, ColourDoesntCountForTheWidth)
{
    TextTable table({{"RESULT"}, {"CALLS", true}}, 0);
    table.add({"up", "7"});
    EXPECT_EQ(table.line(0, "\x1b[32m"), "\x1b[32mup\x1b[0m          7");
}
