/*
 * pvlan_svi_stations_test.cpp: the virtual MACs of a primary's SVI as stations
 * on a secondary: installed with the pair, removed with it, and what a refusal
 * leaves.
 *
 * pvlan_svi_pair_test.cpp has the pairs themselves; fhrp_mac_secondary_*_test.cpp
 * virtual MACs that come and go while the pair is there.
 */
#include "support/pvlan_roads.h"

#include "rtifhal_kelvo_trident/station/fhrp_mac.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::pvlan_svi_stations
{

namespace
{

using namespace pvlan_road;
using fhrp_road::Address;
using fhrp_road::entry;
using fhrp_road::entry_removed;
using fhrp_road::entry_saved;
using fhrp_road::in_chip;
using fhrp_road::kept;
using fhrp_road::now_at;
using fhrp_road::OTHER;
using fhrp_road::station_added;
using fhrp_road::station_deleted;
using fhrp_road::station_refused;
using fhrp_road::VMAC;
using svi_road::IIF;

constexpr std::uint32_t HIGH_WORD = 0x10000;
constexpr std::uint16_t BELOW = 99; // a secondary that sorts before the primary

const Message PRIMARY_MATCHES = trace(INSERT, "Prim VLAN 100 match in fhrp_mac_hash \n");
const Message SECONDARY_MATCHES = trace(REMOVE, "Sec VLAN 101 match in fhrp_mac_hash  \n");
const std::string INIT = "bcm_l2_station_t_init()";
const std::string FIRST = "avl_get_first(tree) = record";
const std::string NEXT = "avl_get_next(tree, node) = record";
const std::string LAST = "avl_get_next(tree, node) = null";

/** A secondary's station as the journal prints it. */
std::string on(unsigned vlan, const Address &mac = VMAC)
{
    return fhrp_road::station("0x1c", mac, fmt::format("{}/4095", vlan));
}

/** A station of the SVI itself. */
std::string on_primary(const Address &mac = VMAC)
{
    return fhrp_road::station("0x3c", mac, "100/4095");
}

/** A pair is recorded in a table that isn't there yet. */
Calls recorded(std::uint32_t primary, std::uint32_t secondary)
{
    return {called::unit(), fmt::format("malloc({}) = record", sizeof(pvlan_svi_pair)),
            "g_hash_table_new() = record",
            fmt::format("g_hash_table_insert(record, {{{},{}}}) = 1", primary, secondary)};
}

/** A pair leaves the table. */
Calls withdrawn(std::uint32_t primary, std::uint32_t secondary, int answer = 1)
{
    return {called::unit(),
            fmt::format("g_hash_table_remove(record, {{{},{}}}) = {}", primary, secondary, answer)};
}

/** A station for a new pair and its entry. */
Calls installed(unsigned vlan, int id, const Address &mac = VMAC)
{
    return join({Calls{INIT}, station_added(on(vlan, mac), id), entry_saved(false)});
}

/** A secondary's station goes, and its entry. */
Calls stripped(int id, int code = 0)
{
    return join({station_deleted(id, code), entry_removed()});
}

class PvlanSviStations : public PvlanTest
{
protected:
    using PvlanTest::PvlanTest;

    /** Two virtual MACs on the SVI, stations 1 and 2. */
    void two_virtual_macs() { virtual_macs({VMAC, OTHER}); }
    /** The same, both on the secondary too, stations 3 and 4. */
    void two_on_the_secondary()
    {
        two_virtual_macs();
        announced({{PRIMARY, SECONDARY}});
    }
    /** Messages behind the first two, the pair's and the table's. */
    Messages walk_messages() const
    {
        const Messages all = messages();
        return all.size() < 2 ? all : Messages(all.begin() + 2, all.end());
    }
};

class PvlanSviStationsOnTrident2 : public PvlanSviStations
{
protected:
    PvlanSviStationsOnTrident2() : PvlanSviStations({.chip = Kind::trident2}) {}
};

/** The calls of a new pair over two virtual MACs; the new entries sort behind. */
Calls two_installed()
{
    return join({recorded(PRIMARY, SECONDARY), Calls{FIRST}, installed(SECONDARY, 3), Calls{NEXT},
                 installed(SECONDARY, 4, OTHER), Calls{NEXT, NEXT, LAST}});
}

} // namespace

TEST_F(PvlanSviStations, EachVirtualMacOfThePrimaryGoesOntoTheSecondary)
{
    two_virtual_macs();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(two_installed());
    EXPECT_EQ(walk_messages(), (Messages{PRIMARY_MATCHES, now_at(INSERT, 3), PRIMARY_MATCHES,
                                         now_at(INSERT, 4, OTHER)}));
    EXPECT_EQ(stations(), (Calls{in_chip(1, on_primary()), in_chip(2, on_primary(OTHER)),
                                 in_chip(3, on(SECONDARY)), in_chip(4, on(SECONDARY, OTHER))}));
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, PRIMARY, 2, OTHER),
                             entry(*lif, SECONDARY, 3), entry(*lif, SECONDARY, 4, OTHER)}));
}

TEST_F(PvlanSviStationsOnTrident2, EachVirtualMacGoesOntoTheSecondaryWithTheSameCalls)
{
    two_virtual_macs();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(two_installed());
}

TEST_F(PvlanSviStations, StationsComeBeforeTheVlansRecord)
{
    two_virtual_macs();
    primary_has_an_svi();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(join({two_installed(), mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    expect_reports({});
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, PRIMARY, 2, OTHER),
                             entry(*lif, SECONDARY, 3), entry(*lif, SECONDARY, 4, OTHER)}));
    EXPECT_EQ(in_the_chip(SECONDARY).ingress_if, static_cast<std::uint32_t>(IIF));
}

TEST_F(PvlanSviStations, EntriesThatSortBehindTheWalkArentVisited)
{
    virtual_macs({VMAC});
    pair_appears(PRIMARY, BELOW);
    expect_calls(join({recorded(PRIMARY, BELOW), Calls{FIRST}, installed(BELOW, 2), Calls{LAST}}));
    EXPECT_EQ(kept(), (Calls{entry(*lif, BELOW, 2), entry(*lif, PRIMARY, 1)}));
}

TEST_F(PvlanSviStations, VirtualMacsOfOtherVlansStayWhereTheyAre)
{
    Lif &routed_port = known_port();
    Lif &other_svi = known_svi(OTHER_PRIMARY);
    saved(routed_port, VMAC, 4094, 11);
    saved(other_svi, VMAC, OTHER_PRIMARY, 12);
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(join({recorded(PRIMARY, SECONDARY), Calls{FIRST, NEXT, LAST}}));
    EXPECT_EQ(walk_messages(), Messages{});
}

TEST_F(PvlanSviStations, MatchIsByVlanWhateverTheInterface)
{
    Lif &routed_port = known_port();
    saved(routed_port, VMAC, PRIMARY, 11);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(kept(), (Calls{entry(routed_port, PRIMARY, 11), entry(routed_port, SECONDARY, 1)}));
}

TEST_F(PvlanSviStations, TreeThatHasBeenEmptiedIsNotWalked)
{
    saved(*lif, VMAC, PRIMARY, 1);
    rtifhal_fhrp_mac_remove(lif->lif.ifindex, VMAC.bytes, PRIMARY);
    ASSERT_NE(fhrp_mac_hash, nullptr);
    start();
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(recorded(PRIMARY, SECONDARY));
    start();
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(withdrawn(PRIMARY, SECONDARY));
}

TEST_F(PvlanSviStations, RefusedStationIsReportedAndTheNextOneTried)
{
    two_virtual_macs();
    primary_has_an_svi();
    fail("bcm_l2_station_add", -6);
    pair_appears(PRIMARY, SECONDARY);
    expect_calls(
        join({recorded(PRIMARY, SECONDARY), Calls{FIRST, INIT}, station_refused(on(SECONDARY), -6),
              Calls{NEXT}, installed(SECONDARY, 3, OTHER), Calls{NEXT, LAST},
              mirrored(PRIMARY, SECONDARY, IIF, 0x200)}));
    EXPECT_EQ(walk_messages(), (Messages{PRIMARY_MATCHES, fhrp_road::failed(INSERT, -6),
                                         PRIMARY_MATCHES, now_at(INSERT, 3, OTHER)}));
    EXPECT_EQ(fhrp_road::pairs_in_order().size(), 1U); // the pair stays
}

TEST_F(PvlanSviStations, PositiveAnswerToAStationIsNoFailure)
{
    virtual_macs({VMAC});
    fail("bcm_l2_station_add", 1);
    pair_appears(PRIMARY, SECONDARY);
    expect_reports({});
    EXPECT_EQ(kept().size(), 2U);
}

TEST_F(PvlanSviStations, StationThatCantBeKeptStaysInTheChip)
{
    two_virtual_macs();
    simswitch::services::Heap::fail_allocation(2); // the first one is the pair's
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(walk_messages(),
              (Messages{PRIMARY_MATCHES, now_at(INSERT, 3),
                        trace(INSERT, "Failed to save Sec VLAN 101  addr info in avltree\n"),
                        PRIMARY_MATCHES, now_at(INSERT, 4, OTHER)}));
    EXPECT_EQ(stations().size(), 4U);
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, PRIMARY, 2, OTHER),
                             entry(*lif, SECONDARY, 4, OTHER)}));
}

TEST_F(PvlanSviStations, StationOfAKeyThatIsKeptAlreadyStaysInTheChip)
{
    virtual_macs({VMAC});
    saved(*lif, VMAC, SECONDARY, 77);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(walk_messages().back(),
              trace(INSERT, "Failed to save Sec VLAN 101  addr info in avltree\n"));
    EXPECT_EQ(stations(), (Calls{in_chip(1, on_primary()), in_chip(2, on(SECONDARY))}));
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, SECONDARY, 77)}));
}

TEST_F(PvlanSviStations, PrimaryAsItsOwnSecondaryGetsASecondStationThatIsntKept)
{
    virtual_macs({VMAC});
    pair_appears(PRIMARY, PRIMARY);
    expect_calls(
        join({recorded(PRIMARY, PRIMARY), Calls{FIRST, INIT}, station_added(on(PRIMARY), 2),
              Calls{fmt::format("malloc({}) = record", sizeof(fhrp_mac_entry_t)),
                    "avl_insert(tree, record) = -8", LAST}}));
    EXPECT_EQ(walk_messages(),
              (Messages{PRIMARY_MATCHES, now_at(INSERT, 2),
                        trace(INSERT, "Failed to save Sec VLAN 100  addr info in avltree\n")}));
    EXPECT_EQ(kept(), Calls{entry(*lif, PRIMARY, 1)});
}

TEST_F(PvlanSviStations, PrimaryAsItsOwnSecondaryLosesItsStationsWithThePair)
{
    two_virtual_macs();
    announced({{PRIMARY, PRIMARY}});
    pair_goes(PRIMARY, PRIMARY);
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(stations(), (Calls{in_chip(3, on(PRIMARY)), in_chip(4, on(PRIMARY, OTHER))}));
}

TEST_F(PvlanSviStations, WithoutMemoryForThePairNoStationIsInstalled)
{
    virtual_macs({VMAC});
    simswitch::services::Heap::fail_allocation(1);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(stations().size(), 1U);
    EXPECT_EQ(sw.journal.count("avl_get_first"), 0U);
}

TEST_F(PvlanSviStations, WithoutATableNoStationIsInstalled)
{
    virtual_macs({VMAC});
    fail("g_hash_table_new", -1);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(stations().size(), 1U);
    EXPECT_EQ(sw.journal.count("avl_get_first"), 0U);
}

TEST_F(PvlanSviStations, GoWithThePair)
{
    two_on_the_secondary();
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({withdrawn(PRIMARY, SECONDARY), Calls{FIRST, NEXT, NEXT, NEXT, LAST},
                       stripped(3), stripped(4)}));
    expect_messages({announced_pair(PRIMARY, SECONDARY), SECONDARY_MATCHES, SECONDARY_MATCHES});
    EXPECT_EQ(stations(), (Calls{in_chip(1, on_primary()), in_chip(2, on_primary(OTHER))}));
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, PRIMARY, 2, OTHER)}));
}

TEST_F(PvlanSviStationsOnTrident2, GoWithThePairWithTheSameCalls)
{
    two_on_the_secondary();
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({withdrawn(PRIMARY, SECONDARY), Calls{FIRST, NEXT, NEXT, NEXT, LAST},
                       stripped(3), stripped(4)}));
}

TEST_F(PvlanSviStations, GoBeforeTheVlansRecord)
{
    virtual_macs({VMAC});
    primary_has_an_svi();
    announced({{PRIMARY, SECONDARY}});
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({withdrawn(PRIMARY, SECONDARY), Calls{FIRST, NEXT, LAST}, stripped(2),
                       taken_back_in_two_writes(PRIMARY, SECONDARY, IIF, 0x278)}));
}

TEST_F(PvlanSviStations, RefusedDeleteIsReportedAndTheEntryGoesAllTheSame)
{
    two_on_the_secondary();
    fail("bcm_l2_station_delete", -7);
    pair_goes(PRIMARY, SECONDARY);
    expect_calls(join({withdrawn(PRIMARY, SECONDARY), Calls{FIRST, NEXT, NEXT, NEXT, LAST},
                       stripped(3, -7), stripped(4)}));
    expect_reports({report(
        REMOVE, fmt::format("SecVLAN l2_station_delete failed({}) for idx:3\n", _shr_errmsg[7]))});
    EXPECT_EQ(kept().size(), 2U);
}

TEST_F(PvlanSviStations, PositiveAnswerToADeleteIsNoFailure)
{
    two_on_the_secondary();
    fail("bcm_l2_station_delete", 1);
    pair_goes(PRIMARY, SECONDARY);
    expect_reports({});
}

TEST_F(PvlanSviStations, GoWithAPairThatWasNeverAnnouncedToo)
{
    two_on_the_secondary();
    pair_goes(OTHER_PRIMARY, SECONDARY);
    expect_calls(join({withdrawn(OTHER_PRIMARY, SECONDARY, 0), Calls{FIRST, NEXT, NEXT, NEXT, LAST},
                       stripped(3), stripped(4)}));
    EXPECT_EQ(kept().size(), 2U);
    EXPECT_EQ(fhrp_road::pairs_in_order().size(), 1U); // the right one is there still
}

TEST_F(PvlanSviStations, GoWhicheverPrimaryTheyAreOf)
{
    two_on_the_secondary();
    Lif &other_svi = known_svi(OTHER_PRIMARY);
    Lif &own_svi = known_svi(SECONDARY);
    saved(other_svi, VMAC, SECONDARY, 1);
    saved(own_svi, OTHER, SECONDARY, 2);
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, PRIMARY, 2, OTHER)}));
    EXPECT_EQ(stations(), Calls{});
}

TEST_F(PvlanSviStations, OtherSecondarysStay)
{
    virtual_macs({VMAC});
    announced({{PRIMARY, SECONDARY}, {PRIMARY, SECOND}});
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, SECOND, 3)}));
    EXPECT_EQ(stations(), (Calls{in_chip(1, on_primary()), in_chip(3, on(SECOND))}));
}

TEST_F(PvlanSviStations, StayWhenThereIsNoTable)
{
    saved(*lif, VMAC, SECONDARY, 1);
    pair_goes(PRIMARY, SECONDARY);
    expect_calls({called::unit()});
    EXPECT_EQ(kept(), Calls{entry(*lif, SECONDARY, 1)});
}

TEST_F(PvlanSviStations, EntriesAreFreedOnceGone)
{
    two_on_the_secondary();
    const std::size_t blocks = sw.heap.live_blocks();
    pair_goes(PRIMARY, SECONDARY);
    EXPECT_EQ(sw.heap.live_blocks(), blocks - 2);
}

TEST_F(PvlanSviStations, PrimariesAreComparedIn32Bits)
{
    virtual_macs({VMAC});
    pair_appears(HIGH_WORD + PRIMARY, SECONDARY);
    expect_calls(join({recorded(HIGH_WORD + PRIMARY, SECONDARY), Calls{FIRST, LAST}}));
}

TEST_F(PvlanSviStations, SecondariesAreComparedIn32BitsAndCutInTheStation)
{
    virtual_macs({VMAC});
    pair_appears(PRIMARY, HIGH_WORD + SECONDARY);
    EXPECT_EQ(kept(), (Calls{entry(*lif, PRIMARY, 1), entry(*lif, SECONDARY, 2)}));
    EXPECT_EQ(stations().back(), in_chip(2, on(SECONDARY)));
    start();
    pair_goes(PRIMARY, HIGH_WORD + SECONDARY);
    expect_calls(join({withdrawn(PRIMARY, HIGH_WORD + SECONDARY), Calls{FIRST, NEXT, LAST}}));
    EXPECT_EQ(kept().size(), 2U);
}

TEST_F(PvlanSviStations, UnitIsThePlatforms)
{
    virtual_macs({VMAC});
    fail("rtifhal_get_bcm_unit", 1);
    pair_appears(PRIMARY, SECONDARY);
    EXPECT_EQ(calls_of({"bcm_l2_station_add"}),
              Calls{"bcm_l2_station_add(1, " + on(SECONDARY) + ") = -3"});
}

} // namespace rtifhal_test::pvlan_svi_stations
