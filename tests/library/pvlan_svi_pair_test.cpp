/*
 * pvlan_svi_pair_test.cpp: private-VLAN pairs as they are announced and
 * withdrawn: the table that keeps them, and the secondary's VLAN record, which
 * follows whatever became of the table.
 *
 * pvlan_svi_stations_test.cpp has the virtual MACs, pvlan_svi_secondary_test.cpp
 * what is done to the record.
 */
#include "support/pair_table.h"
#include "support/pvlan_roads.h"

#include "rtifhal_trident.h"

#include <fmt/format.h>

namespace rtifhal_test::pvlan_pair
{

namespace
{

using namespace pvlan_road;
using fhrp_road::pairs_in_order;
using svi_road::IIF;

using Pairs = std::vector<fhrp_road::Pair>;

constexpr std::uint32_t HIGH_WORD = 0x10000;
const std::string ALLOCATES = fmt::format("malloc({}) = ", sizeof(pvlan_svi_pair));
const Message NEW_TABLE = trace(INSERT, "hash_table new \n");
const Message NO_TABLE = trace(REMOVE, "pvlan_svi_mapping_remove - hash_table doesnt exist \n");

/** The table is asked for a pair. */
std::string looked_up(std::uint32_t primary, std::uint32_t secondary, bool found)
{
    return fmt::format("g_hash_table_lookup(record, {{{},{}}}) = {}", primary, secondary,
                       found ? "record" : "null");
}

std::string inserted(std::uint32_t primary, std::uint32_t secondary)
{
    return fmt::format("g_hash_table_insert(record, {{{},{}}}) = 1", primary, secondary);
}

std::string removed(std::uint32_t primary, std::uint32_t secondary, int answer = 1)
{
    return fmt::format("g_hash_table_remove(record, {{{},{}}}) = {}", primary, secondary, answer);
}

/** The first pair of all is recorded. */
Calls first_recorded(std::uint32_t primary, std::uint32_t secondary)
{
    return {called::unit(), ALLOCATES + "record", "g_hash_table_new() = record",
            inserted(primary, secondary)};
}

/** A further one is. */
Calls recorded(std::uint32_t primary, std::uint32_t secondary)
{
    return {looked_up(primary, secondary, false), called::unit(), ALLOCATES + "record",
            inserted(primary, secondary)};
}

class PvlanSviPair : public PvlanTest
{
protected:
    using PvlanTest::PvlanTest;
};

class PvlanSviPairOnTrident2 : public PvlanSviPair
{
protected:
    PvlanSviPairOnTrident2() : PvlanSviPair({.chip = Kind::trident2}) {}
};

} // namespace

TEST_F(PvlanSviPair, FirstOneMakesTheTableAndTouchesNothingElse)
{
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(first_recorded(PRIMARY, SECONDARY));
    expect_messages({announced_pair(PRIMARY, SECONDARY), NEW_TABLE});
    EXPECT_EQ(pairs_in_order(), (Pairs{{PRIMARY, SECONDARY}}));
    EXPECT_EQ(in_the_chip(SECONDARY).flags, svi_road::SWITCHED);
}

TEST_F(PvlanSviPair, FurtherOneJoinsTheTable)
{
    announced({{PRIMARY, SECONDARY}});
    pair_appears(PRIMARY, SECOND);
    expect_calls(recorded(PRIMARY, SECOND));
    expect_messages({announced_pair(PRIMARY, SECOND)});
    EXPECT_EQ(pairs_in_order().size(), 2U);
}

TEST_F(PvlanSviPair, RepeatedOneReturnsBeforeEverything)
{
    virtual_macs({fhrp_road::VMAC});
    primary_has_an_svi();
    announced({{PRIMARY, SECONDARY}});
    pair_appears(PRIMARY, SECONDARY);
    expect_calls({looked_up(PRIMARY, SECONDARY, true)});
    expect_messages({announced_pair(PRIMARY, SECONDARY)});
    EXPECT_EQ(pairs_in_order().size(), 1U);
}

TEST_F(PvlanSviPair, AnyNonzeroFlagAnnounces)
{
    rtifhal_kelvo_pvlan_svi_mapping_update(PRIMARY, SECONDARY, 0x80000000);
    expect_calls(first_recorded(PRIMARY, SECONDARY));
}

TEST_F(PvlanSviPair, OnAPrimaryWithAnSviIsMirroredAtOnce)
{
    primary_has_an_svi();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(
        join({first_recorded(PRIMARY, SECONDARY), mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 3U);
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA00U);
}

TEST_F(PvlanSviPairOnTrident2, OnAPrimaryWithAnSviIsMirroredWithTheSameCalls)
{
    primary_has_an_svi();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(
        join({first_recorded(PRIMARY, SECONDARY), mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
}

TEST_F(PvlanSviPair, FollowsAnSviThatReallyCameUp)
{
    is_up();
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 3U);
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 0U);
    EXPECT_EQ(in_the_chip(PRIMARY).ingress_if, 3U);
}

TEST_F(PvlanSviPair, RefusedMirroringIsNotReportedFurther)
{
    primary_has_an_svi();
    sw.wrappers.forget_vlan_control(SECONDARY);
    pair_appears(PRIMARY, SECONDARY);
    expect_reports({report(SECONDARY_UPDATE, not_in_cache(SECONDARY))});
    EXPECT_EQ(pairs_in_order().size(), 1U);
}

TEST_F(PvlanSviPair, WithoutMemoryIsTracedAndMirroredAllTheSame)
{
    primary_has_an_svi();
    simswitch::services::Heap::fail_allocation(1);
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(join(
        {Calls{called::unit(), ALLOCATES + "null"}, mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    expect_messages({announced_pair(PRIMARY, SECONDARY), trace(INSERT, "malloc failed \n")});
    EXPECT_EQ(pvlan_svi_map, nullptr);
}

TEST_F(PvlanSviPair, WithoutMemoryBesideOthersLeavesThem)
{
    announced({{PRIMARY, SECONDARY}});
    simswitch::services::Heap::fail_allocation(1);
    pair_appears(PRIMARY, SECOND);
    expect_calls({looked_up(PRIMARY, SECOND, false), called::unit(), ALLOCATES + "null"});
    EXPECT_EQ(pairs_in_order(), (Pairs{{PRIMARY, SECONDARY}}));
}

TEST_F(PvlanSviPair, WithoutATableIsTracedAndMirroredAllTheSame)
{
    primary_has_an_svi();
    fail("g_hash_table_new", -1);
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(join(
        {Calls{called::unit(), ALLOCATES + "record", "g_hash_table_new() = null", "free(record)"},
         mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    expect_messages({announced_pair(PRIMARY, SECONDARY), NEW_TABLE,
                     trace(INSERT, "hash_table doesnt exist \n")});
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(PvlanSviPair, WithoutATableIsRecordedByTheNextAttempt)
{
    fail("g_hash_table_new", -1);
    pair_appears(PRIMARY, SECONDARY);
    start();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(first_recorded(PRIMARY, SECONDARY));
}

TEST_F(PvlanSviPair, GoneOneLeavesTheTableAndItsRecordStays)
{
    announced({{PRIMARY, SECONDARY}, {PRIMARY, SECOND}});
    const std::size_t blocks = sw.heap.live_blocks();
    pair_goes(PRIMARY, SECONDARY);
    expect_calls({called::unit(), removed(PRIMARY, SECONDARY)});
    expect_messages({announced_pair(PRIMARY, SECONDARY)});
    EXPECT_EQ(pairs_in_order(), (Pairs{{PRIMARY, SECOND}}));
    EXPECT_EQ(sw.heap.live_blocks(), blocks); // not freed
}

TEST_F(PvlanSviPair, GoneOneCanComeBack)
{
    announced({{PRIMARY, SECONDARY}});
    pair_goes(PRIMARY, SECONDARY);
    start();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(recorded(PRIMARY, SECONDARY));
    EXPECT_EQ(pairs_in_order().size(), 1U);
}

TEST_F(PvlanSviPair, GoneOneOnAPrimaryWithAnSviIsTakenBack)
{
    primary_has_an_svi();
    announced({{PRIMARY, SECONDARY}});
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({Calls{called::unit(), removed(PRIMARY, SECONDARY)},
                       taken_back_in_two_writes(PRIMARY, SECONDARY, IIF, 0x278)}));
    expect_messages(join({Messages{announced_pair(PRIMARY, SECONDARY)}, uses_told(SECONDARY),
                          Messages{trace(ROUTING, "Disabling v4/v6 routing on vlan 101\n")}}));
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, 0U);
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA78U);
}

TEST_F(PvlanSviPair, GoneOneLeavesRoutingOnWhereASubinterfaceUsesTheSecondary)
{
    primary_has_an_svi();
    announced({{PRIMARY, SECONDARY}});
    rtifhal_vlan_type_count[SECONDARY].subint_count = 1;
    cached(SECONDARY).vc_flags = svi_road::SWITCHED;
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({Calls{called::unit(), removed(PRIMARY, SECONDARY)},
                       taken_back_in_two_writes(PRIMARY, SECONDARY, IIF, 0x240)}));
    expect_messages(join({Messages{announced_pair(PRIMARY, SECONDARY)}, uses_told(SECONDARY, 1),
                          Messages{trace(ROUTING, "Enabling v4/v6 routing on vlan 101\n")}}));
    EXPECT_EQ(in_the_chip(SECONDARY).flags, 0xA40U);
}

TEST_F(PvlanSviPair, UnknownOneMakesNoDifference)
{
    primary_has_an_svi();
    announced({{PRIMARY, SECOND}});
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({Calls{called::unit(), removed(PRIMARY, SECONDARY, 0)},
                       taken_back(PRIMARY, SECONDARY, 0x278)}));
    EXPECT_EQ(pairs_in_order(), (Pairs{{PRIMARY, SECOND}}));
}

TEST_F(PvlanSviPair, GoingWithoutATableIsTracedAndTakenBackAllTheSame)
{
    primary_has_an_svi();
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({Calls{called::unit()}, taken_back(PRIMARY, SECONDARY, 0x278)}));
    expect_messages(
        join({Messages{announced_pair(PRIMARY, SECONDARY), NO_TABLE}, uses_told(SECONDARY)}));
}

TEST_F(PvlanSviPair, GoingWithoutATableAndAnSviDoesNothing)
{
    pair_goes(PRIMARY, SECONDARY);
    expect_calls({called::unit()});
    expect_messages({announced_pair(PRIMARY, SECONDARY), NO_TABLE});
    EXPECT_EQ(pvlan_svi_map, nullptr);
}

TEST_F(PvlanSviPair, SviIsThatOfThePrimaryAndNotOfTheSecondary)
{
    rtifhal_set_svi(SECONDARY);
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(first_recorded(PRIMARY, SECONDARY));
}

TEST_F(PvlanSviPair, LowHalfOfThePrimaryTellsItsSvi)
{
    primary_has_an_svi();
    pair_appears(HIGH_WORD + PRIMARY, SECONDARY);
    expect_calls(join({first_recorded(HIGH_WORD + PRIMARY, SECONDARY),
                       mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    expect_messages({announced_pair(HIGH_WORD + PRIMARY, SECONDARY), NEW_TABLE});
}

TEST_F(PvlanSviPair, PrimaryAsItsOwnSecondaryIsAPairToo)
{
    primary_has_an_svi();
    pair_appears(PRIMARY, PRIMARY);
    EXPECT_EQ(pairs_in_order(), (Pairs{{PRIMARY, PRIMARY}}));
    EXPECT_EQ(in_the_chip(PRIMARY).ingress_if, 3U);
    pair_goes(PRIMARY, PRIMARY);
    EXPECT_EQ(pairs_in_order(), Pairs{});
    EXPECT_EQ(in_the_chip(PRIMARY).ingress_if, 0U);
    EXPECT_EQ(rtifhal_is_vlan_svi(PRIMARY), 1);
}

TEST_F(PvlanSviPair, WordsOf32BitsAreToldApart)
{
    announced({{PRIMARY, SECONDARY}});
    pair_appears(HIGH_WORD + PRIMARY, SECONDARY);
    pair_appears(PRIMARY, HIGH_WORD + SECONDARY);
    EXPECT_EQ(pairs_in_order().size(), 3U);
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(pairs_in_order().size(), 2U);
}

TEST_F(PvlanSviPair, HashIsThePrimaryAlone)
{
    announced({{PRIMARY, SECONDARY}});
    ASSERT_NE(pair_hash(), nullptr);
    const pvlan_svi_pair one = {PRIMARY, SECONDARY};
    const pvlan_svi_pair same_bucket = {PRIMARY, SECOND};
    const pvlan_svi_pair wide = {0xFFFFFFFF, SECONDARY};
    EXPECT_EQ(pair_hash()(&one), 100U);
    EXPECT_EQ(pair_hash()(&same_bucket), 100U);
    EXPECT_EQ(pair_hash()(&wide), 0xFFFFFFFFU);
}

TEST_F(PvlanSviPair, EqualityNeedsBothWords)
{
    announced({{PRIMARY, SECONDARY}});
    ASSERT_NE(pair_equal(), nullptr);
    const pvlan_svi_pair one = {PRIMARY, SECONDARY};
    const pvlan_svi_pair copy = one;
    for (const pvlan_svi_pair &other :
         {pvlan_svi_pair{PRIMARY, SECOND}, pvlan_svi_pair{OTHER_PRIMARY, SECONDARY},
          pvlan_svi_pair{HIGH_WORD + PRIMARY, SECONDARY},
          pvlan_svi_pair{PRIMARY, HIGH_WORD + SECONDARY}}) {
        EXPECT_EQ(pair_equal()(&one, &other), 0);
    }
    EXPECT_NE(pair_equal()(&one, &copy), 0);
}

TEST_F(PvlanSviPair, ManySecondariesOfOnePrimaryAreAllKept)
{
    constexpr std::uint32_t last = 300;
    for (std::uint32_t secondary = SECONDARY; secondary <= last; ++secondary) {
        pair_appears(PRIMARY, secondary);
    }
    EXPECT_EQ(pairs_in_order().size(), 200U);
    start();
    pair_appears(PRIMARY, last);
    expect_calls({looked_up(PRIMARY, last, true)});
}

TEST_F(PvlanSviPair, KeyAndValueAreTheSameRecord)
{
    announced({{PRIMARY, SECONDARY}});
    GHashTableIter walk;
    gpointer key = nullptr;
    gpointer value = nullptr;
    g_hash_table_iter_init(&walk, pvlan_svi_map);
    ASSERT_NE(g_hash_table_iter_next(&walk, &key, &value), 0);
    EXPECT_EQ(key, value);
    EXPECT_TRUE(sw.heap.is_live(value));
}

} // namespace rtifhal_test::pvlan_pair
