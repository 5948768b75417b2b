/*
 * session_table_test.cpp: tables as a session prints them and looks into them.
 */
#include "session/table.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace lab_test
{

namespace
{

using lab::session::Table;

Table two_rows()
{
    return {"things",
            "thing",
            {{"NUMBER", true}, {"NAME"}, {"SECRET", false, false}, {"FLAGS"}},
            {{{"7", "seven"}, {"7", "seven", "x", "0x8"}},
             {{"12"}, {"12", "", "y", ""}},
             {{"99"}, {"99", "hidden", "", ""}, false}},
            {}};
}

std::string printed(const Table &table, std::size_t width)
{
    std::ostringstream out;
    lab::session::print(table, width, out);
    return out.str();
}

TEST(SessionTable, PrintsAlignedRowsAndNothingHidden)
{
    EXPECT_EQ(printed(two_rows(), 0), "NUMBER  NAME   FLAGS\n"
                                      "     7  seven  0x8\n"
                                      "    12  -      -\n");
}

TEST(SessionTable, PutsColumnsWithoutRoomBelowTheRow)
{
    EXPECT_EQ(printed(two_rows(), 15), "NUMBER  NAME\n"
                                       "     7  seven\n"
                                       "    flags 0x8\n"
                                       "    12  -\n");
    // A key and a value stay in the line.
    EXPECT_EQ(printed(two_rows(), 5), printed(two_rows(), 15));
    EXPECT_EQ(printed(two_rows(), 20), printed(two_rows(), 0));
}

TEST(SessionTable, TellsThatItIsEmpty)
{
    Table table = two_rows();
    table.rows.erase(table.rows.begin(), table.rows.begin() + 2);
    EXPECT_EQ(printed(table, 0), "no things\n");
}

TEST(SessionTable, FindsRowsByEachKeyAndColumnsByField)
{
    const Table table = two_rows();
    EXPECT_EQ(table.find("seven").size(), 1U);
    EXPECT_EQ(table.find("7").size(), 1U);
    EXPECT_EQ(table.find("99").size(), 1U);
    EXPECT_EQ(table.find("8").size(), 0U);
    EXPECT_EQ(table.column("secret"), 2U);
    EXPECT_FALSE(table.column("SECRET"));
    EXPECT_EQ(table.count(), 2U);
}

} // namespace

} // namespace lab_test
