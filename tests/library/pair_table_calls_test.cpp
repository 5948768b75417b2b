/*
 * pair_table_calls_test.cpp: what the journal has of GLib's hash table, which
 * the tests of private-VLAN pairs rest on (support/pair_table.h).
 */
#include "support/library_test.h"
#include "support/pair_table.h"

#include "rtifhal_kelvo_trident/station/pvlan_svi.h"

#include <memory>

namespace rtifhal_test::pair_table_calls
{

namespace
{

using Calls = std::vector<std::string>;

struct TableEnd {
    void operator()(GHashTable *table) const { g_hash_table_destroy(table); }
};
using Table = std::unique_ptr<GHashTable, TableEnd>;

Table new_table()
{
    return Table(g_hash_table_new(g_direct_hash, g_direct_equal));
}

void count_visit(gpointer, gpointer, gpointer data)
{
    ++*static_cast<int *>(data);
}

class PairTableCalls : public LibraryTest
{
protected:
    PairTableCalls() { forget_pair_functions(); }

    pvlan_svi_pair pair{100, 0x80000065};
};

} // namespace

TEST_F(PairTableCalls, EachIsJournaledAndDone)
{
    const Table table = new_table();
    int visits = 0;
    EXPECT_EQ(g_hash_table_lookup(table.get(), &pair), nullptr);
    EXPECT_TRUE(g_hash_table_insert(table.get(), &pair, &pair));
    EXPECT_EQ(g_hash_table_lookup(table.get(), &pair), &pair);
    g_hash_table_foreach(table.get(), count_visit, &visits);
    EXPECT_EQ(visits, 1);
    EXPECT_TRUE(g_hash_table_remove(table.get(), &pair));
    EXPECT_FALSE(g_hash_table_remove(table.get(), &pair));
    expect_calls(
        {"g_hash_table_new() = record", "g_hash_table_lookup(record, {100,2147483749}) = null",
         "g_hash_table_insert(record, {100,2147483749}) = 1",
         "g_hash_table_lookup(record, {100,2147483749}) = record", "g_hash_table_foreach(record)",
         "g_hash_table_remove(record, {100,2147483749}) = 1",
         "g_hash_table_remove(record, {100,2147483749}) = 0"});
}

TEST_F(PairTableCalls, NullTableTroublesNobody)
{
    int visits = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(g_hash_table_lookup(nullptr, &pair), nullptr);
    EXPECT_FALSE(g_hash_table_insert(nullptr, &pair, &pair));
    EXPECT_FALSE(g_hash_table_remove(nullptr, &pair));
    g_hash_table_foreach(nullptr, count_visit, &visits);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(visits, 0);
    expect_calls({"g_hash_table_lookup(null, {100,2147483749}) = null",
                  "g_hash_table_insert(null, {100,2147483749}) = 0",
                  "g_hash_table_remove(null, {100,2147483749}) = 0", "g_hash_table_foreach(null)"});
}

TEST_F(PairTableCalls, FunctionsOfTheLastTableAreToldUntilForgotten)
{
    EXPECT_EQ(pair_hash(), nullptr);
    EXPECT_EQ(pair_equal(), nullptr);
    const Table first = new_table();
    const Table second(g_hash_table_new(g_int_hash, g_int_equal));
    EXPECT_EQ(pair_hash(), g_int_hash);
    EXPECT_EQ(pair_equal(), g_int_equal);
    forget_pair_functions();
    EXPECT_EQ(pair_hash(), nullptr);
    EXPECT_EQ(pair_equal(), nullptr);
}

TEST_F(PairTableCalls, FaultMakesNoTable)
{
    fail("g_hash_table_new", -1);
    EXPECT_EQ(new_table(), nullptr);
    EXPECT_NE(new_table(), nullptr);
    expect_calls({"g_hash_table_new() = null", "g_hash_table_new() = record"});
}

TEST_F(PairTableCalls, FaultLeavesTheTableAlone)
{
    const Table table = new_table();
    int visits = 0;
    fail("g_hash_table_insert", 0);
    EXPECT_FALSE(g_hash_table_insert(table.get(), &pair, &pair));
    EXPECT_EQ(g_hash_table_size(table.get()), 0U);
    g_hash_table_insert(table.get(), &pair, &pair);
    fail("g_hash_table_remove", 0);
    EXPECT_FALSE(g_hash_table_remove(table.get(), &pair));
    fail("g_hash_table_lookup", -1);
    EXPECT_EQ(g_hash_table_lookup(table.get(), &pair), nullptr);
    fail("g_hash_table_foreach", -1);
    g_hash_table_foreach(table.get(), count_visit, &visits);
    EXPECT_EQ(visits, 0);
    EXPECT_EQ(g_hash_table_size(table.get()), 1U);
}

} // namespace rtifhal_test::pair_table_calls
