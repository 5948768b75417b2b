/*
 * fhrp_mac_order_test.cpp: the order in which virtual MACs are kept, and the
 * tree's own operations: whether one is there, find, save, remove.
 *
 * fhrp_mac_listing_test.cpp has the listing, which shows that order.
 */
#include "support/fhrp_roads.h"

#include "rtifhal_kelvo_trident/station/fhrp_mac.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace rtifhal_test::fhrp_mac_order
{

namespace
{

using namespace fhrp_road;

constexpr std::uint32_t IFINDEX = 0x30000064;

fhrp_mac_entry_t key(std::uint32_t ifindex, std::uint16_t vlan, const Address &mac,
                     std::uint32_t station_id = 0)
{
    fhrp_mac_entry_t made = {.ifindex = ifindex, .mac = {}, .vlan = vlan, .station_id = station_id};
    std::ranges::copy(mac.bytes, made.mac);
    return made;
}

int compare(const fhrp_mac_entry_t &a, const fhrp_mac_entry_t &b)
{
    return rtifhal_fhrp_mac_avl_compare_func(&a, &b);
}

int compare_indexes(std::uint32_t a, std::uint32_t b)
{
    return compare(key(a, 100, VMAC), key(b, 100, VMAC));
}

int compare_macs(const Address &a, const Address &b)
{
    return compare(key(IFINDEX, 100, a), key(IFINDEX, 100, b));
}

class FhrpMacOrder : public FhrpTest
{
};

class FhrpMacTree : public FhrpTest
{
protected:
    static int save(std::uint32_t ifindex, const Address &mac, std::uint16_t vlan, int station)
    {
        return rtifhal_fhrp_mac_save(ifindex, mac.bytes, vlan, station);
    }

    static int present(std::uint32_t ifindex, const Address &mac, std::uint16_t vlan)
    {
        return rtifhal_fhrp_mac_present(ifindex, mac.bytes, vlan);
    }

    /** One entry of IFINDEX, VMAC and VLAN 100, with station 7. */
    void one_kept()
    {
        ASSERT_EQ(save(IFINDEX, VMAC, 100, 7), 0);
        start();
    }
};

} // namespace

TEST_F(FhrpMacOrder, NullSortsFirstAndTwoNullsAreNotEqual)
{
    const fhrp_mac_entry_t some = key(0, 0, {});
    EXPECT_EQ(rtifhal_fhrp_mac_avl_compare_func(nullptr, &some), -1);
    EXPECT_EQ(rtifhal_fhrp_mac_avl_compare_func(&some, nullptr), 1);
    EXPECT_EQ(rtifhal_fhrp_mac_avl_compare_func(nullptr, nullptr), -1);
}

TEST_F(FhrpMacOrder, ComparisonMakesNoCallAndSaysNothing)
{
    EXPECT_EQ(compare_indexes(7, 7), 0);
    EXPECT_EQ(rtifhal_fhrp_mac_avl_compare_func(nullptr, nullptr), -1);
    expect_calls({});
    expect_messages({});
}

TEST_F(FhrpMacOrder, IndexesGiveTheirDifference)
{
    EXPECT_EQ(compare_indexes(10, 3), 7);
    EXPECT_EQ(compare_indexes(3, 10), -7);
    EXPECT_EQ(compare_indexes(0x7fffffff, 0), std::numeric_limits<int>::max());
    EXPECT_EQ(compare_indexes(0x30000000, 0x10000000), 0x20000000);
}

TEST_F(FhrpMacOrder, IndexesFurtherThanHalfTheRangeApartSortByTheWrappedSign)
{
    EXPECT_EQ(compare_indexes(0x80000001, 0), -0x7fffffff);
    EXPECT_EQ(compare_indexes(0, 0x80000001), 0x7fffffff);
    EXPECT_EQ(compare_indexes(0xffffffff, 0), -1);
    EXPECT_EQ(compare_indexes(0, 0xffffffff), 1);
    EXPECT_EQ(compare_indexes(0x10000000, 0xa0000000), 0x70000000);
}

TEST_F(FhrpMacOrder, IndexesHalfTheRangeApartSortFirstFromEitherSide)
{
    EXPECT_EQ(compare_indexes(0x80000000, 0), std::numeric_limits<int>::min());
    EXPECT_EQ(compare_indexes(0, 0x80000000), std::numeric_limits<int>::min());
}

TEST_F(FhrpMacOrder, IndexOutweighsVlanAndMac)
{
    EXPECT_LT(compare(key(1, 4094, {{9}}), key(2, 1, {{1}})), 0);
    EXPECT_GT(compare(key(2, 1, {{1}}), key(1, 4094, {{9}})), 0);
}

TEST_F(FhrpMacOrder, VlansOfOneIndexGiveTheirDifference)
{
    EXPECT_EQ(compare(key(IFINDEX, 4094, VMAC), key(IFINDEX, 100, VMAC)), 3994);
    EXPECT_EQ(compare(key(IFINDEX, 100, VMAC), key(IFINDEX, 4094, VMAC)), -3994);
    EXPECT_EQ(compare(key(IFINDEX, 0xffff, VMAC), key(IFINDEX, 0, VMAC)), 65535);
}

TEST_F(FhrpMacOrder, VlanOutweighsMac)
{
    EXPECT_EQ(compare(key(IFINDEX, 101, {{1}}), key(IFINDEX, 100, {{9}})), 1);
    EXPECT_EQ(compare(key(IFINDEX, 100, {{9}}), key(IFINDEX, 101, {{1}})), -1);
}

TEST_F(FhrpMacOrder, EachByteOfTheMacCounts)
{
    for (std::size_t i = 0; i < sizeof VMAC.bytes; ++i) {
        Address higher = VMAC;
        higher.bytes[i] = 0x80;
        EXPECT_EQ(compare_macs(higher, VMAC), 1) << "byte " << i;
        EXPECT_EQ(compare_macs(VMAC, higher), -1) << "byte " << i;
    }
}

TEST_F(FhrpMacOrder, BytesOfTheMacAreUnsignedAndTheFirstDifferenceDecides)
{
    EXPECT_EQ(compare_macs({{0xff, 0, 0, 0, 0, 0}}, {{0x01, 0, 0, 0, 0, 0}}), 1);
    EXPECT_EQ(compare_macs({{0x01, 0xff, 0xff, 0xff, 0xff, 0xff}}, {{0x02, 0, 0, 0, 0, 0}}), -1);
    EXPECT_EQ(compare_macs({{0, 0, 0, 0, 0, 0xff}}, {{0, 0, 0, 0, 0, 0}}), 1);
}

TEST_F(FhrpMacOrder, MacsThatDifferByOneGiveOneToo)
{
    EXPECT_EQ(compare_macs({{0, 0, 0, 0, 0, 2}}, {{0, 0, 0, 0, 0, 1}}), 1);
    EXPECT_EQ(compare_macs({{0, 0, 0, 0, 0, 1}}, {{0, 0, 0, 0, 0, 2}}), -1);
}

TEST_F(FhrpMacOrder, StationIsNoPartOfTheKey)
{
    EXPECT_EQ(compare(key(IFINDEX, 100, VMAC, 1), key(IFINDEX, 100, VMAC, 2)), 0);
}

TEST_F(FhrpMacTree, SortsByInterfaceThenVlanThenMac)
{
    const Address low = {{0x00, 0x00, 0x5e, 0x00, 0x01, 0x01}};
    const Address high = {{0x80, 0x00, 0x00, 0x00, 0x00, 0x00}};
    save(0x30000064, low, 100, 1);
    save(0x10400000, high, 4094, 2);
    save(0x30000064, high, 100, 3);
    save(0x30000064, low, 99, 4);
    save(0x10400000, low, 4094, 5);
    save(0x20007000, low, 4094, 6);
    EXPECT_EQ(
        kept(),
        (Calls{"0x10400000 4094 00:00:5e:00:01:01 @5", "0x10400000 4094 80:00:00:00:00:00 @2",
               "0x20007000 4094 00:00:5e:00:01:01 @6", "0x30000064 99 00:00:5e:00:01:01 @4",
               "0x30000064 100 00:00:5e:00:01:01 @1", "0x30000064 100 80:00:00:00:00:00 @3"}));
}

TEST_F(FhrpMacTree, IndexFurtherThanHalfTheRangeAboveSortsBefore)
{
    save(0x10000000, VMAC, 4094, 1);
    save(0xa0000000, VMAC, 4094, 2);
    EXPECT_EQ(kept(), (Calls{"0xa0000000 4094 02:11:5e:33:01:08 @2",
                             "0x10000000 4094 02:11:5e:33:01:08 @1"}));
    EXPECT_EQ(present(0x10000000, VMAC, 4094), 1);
    EXPECT_EQ(present(0xa0000000, VMAC, 4094), 1);
}

TEST_F(FhrpMacTree, FirstSaveMakesTheTree)
{
    EXPECT_EQ(fhrp_mac_hash, nullptr);
    EXPECT_EQ(save(IFINDEX, VMAC, 100, 7), 0);
    expect_calls(entry_saved(true));
    expect_messages({});
    ASSERT_NE(fhrp_mac_hash, nullptr);
    EXPECT_EQ(fhrp_mac_hash->compare, &rtifhal_fhrp_mac_avl_compare_func);
    EXPECT_EQ(kept(), Calls{"0x30000064 100 02:11:5e:33:01:08 @7"});
}

TEST_F(FhrpMacTree, LaterSaveUsesIt)
{
    one_kept();
    EXPECT_EQ(save(IFINDEX, OTHER, 100, 8), 0);
    expect_calls(entry_saved(false));
}

TEST_F(FhrpMacTree, SaveOfAKeyThatIsThereFailsAndKeepsTheFirst)
{
    one_kept();
    EXPECT_EQ(save(IFINDEX, VMAC, 100, 8), -1);
    expect_calls({"malloc(16) = record", "avl_insert(tree, record) = -8"});
    EXPECT_EQ(kept(), Calls{"0x30000064 100 02:11:5e:33:01:08 @7"});
}

TEST_F(FhrpMacTree, SaveWithoutMemoryFails)
{
    simswitch::services::Heap::fail_allocation(1);
    EXPECT_EQ(save(IFINDEX, VMAC, 100, 7), -1);
    expect_calls({"malloc(16) = null"});
    expect_messages({});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
}

TEST_F(FhrpMacTree, SaveWithoutATreeGivesItsRecordBack)
{
    fail("avl_create", -1);
    EXPECT_EQ(save(IFINDEX, VMAC, 100, 7), -1);
    expect_calls({"malloc(16) = record", "avl_create(compare, 0) = null", "free(record)"});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
}

TEST_F(FhrpMacTree, RefusedInsertLeavesTheRecordToNobody)
{
    fail("avl_insert", 1);
    EXPECT_EQ(save(IFINDEX, VMAC, 100, 7), -1);
    EXPECT_EQ(calls().back(), "avl_insert(tree, record) = 1");
    EXPECT_EQ(sw.heap.live_blocks(), 1U);
}

TEST_F(FhrpMacTree, FindGivesTheEntryOfTheWholeKey)
{
    one_kept();
    const fhrp_mac_entry_t *found = rtifhal_fhrp_mac_find(IFINDEX, VMAC.bytes, 100);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->station_id, 7U);
    expect_calls({looked_up(true)});
    EXPECT_EQ(rtifhal_fhrp_mac_find(IFINDEX + 1, VMAC.bytes, 100), nullptr);
    EXPECT_EQ(rtifhal_fhrp_mac_find(IFINDEX, OTHER.bytes, 100), nullptr);
    EXPECT_EQ(rtifhal_fhrp_mac_find(IFINDEX, VMAC.bytes, 101), nullptr);
}

TEST_F(FhrpMacTree, FindWithoutATreeMakesNoCall)
{
    EXPECT_EQ(rtifhal_fhrp_mac_find(IFINDEX, VMAC.bytes, 100), nullptr);
    expect_calls({});
}

TEST_F(FhrpMacTree, PresentTellsOneOrZeroByTheWholeKey)
{
    one_kept();
    EXPECT_EQ(present(IFINDEX, VMAC, 100), 1);
    expect_calls({looked_up(true)});
    expect_messages({});
    EXPECT_EQ(present(IFINDEX + 1, VMAC, 100), 0);
    EXPECT_EQ(present(IFINDEX, OTHER, 100), 0);
    EXPECT_EQ(present(IFINDEX, VMAC, 101), 0);
}

TEST_F(FhrpMacTree, NothingIsPresentWithoutATree)
{
    EXPECT_EQ(present(IFINDEX, VMAC, 100), 0);
    expect_calls({});
    expect_messages({});
}

TEST_F(FhrpMacTree, NullMacIsNeverPresent)
{
    save(IFINDEX, {}, 100, 7);
    EXPECT_EQ(rtifhal_fhrp_mac_present(IFINDEX, nullptr, 100), 0);
}

TEST_F(FhrpMacTree, PresentLooksAtTheTreeAndNotAtTheChip)
{
    const Lif &lif = known_port();
    added(lif);
    lost(1);
    EXPECT_EQ(present(lif.lif.ifindex, VMAC, ROUTED), 1);
    EXPECT_EQ(calls_of({"bcm_l2_station_get"}), Calls{});
}

TEST_F(FhrpMacTree, RemoveTakesTheEntryOutAndFreesIt)
{
    one_kept();
    rtifhal_fhrp_mac_remove(IFINDEX, VMAC.bytes, 100);
    expect_calls(entry_removed());
    expect_messages({});
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(FhrpMacTree, RemoveByTheEntrysOwnMac)
{
    one_kept();
    const fhrp_mac_entry_t *found = rtifhal_fhrp_mac_find(IFINDEX, VMAC.bytes, 100);
    ASSERT_NE(found, nullptr);
    rtifhal_fhrp_mac_remove(found->ifindex, found->mac, found->vlan);
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacTree, RemoveOfAnUnknownKeyIsNoError)
{
    one_kept();
    rtifhal_fhrp_mac_remove(IFINDEX, VMAC.bytes, 101);
    expect_calls({looked_up(false)});
    expect_messages({});
    EXPECT_EQ(kept().size(), 1U);
}

TEST_F(FhrpMacTree, RemoveWithoutATreeMakesNoCall)
{
    rtifhal_fhrp_mac_remove(IFINDEX, VMAC.bytes, 100);
    expect_calls({});
    expect_messages({});
}

} // namespace rtifhal_test::fhrp_mac_order
