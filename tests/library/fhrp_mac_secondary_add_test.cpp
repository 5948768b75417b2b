/*
 * fhrp_mac_secondary_add_test.cpp: a virtual MAC on the SVI of a private-VLAN
 * primary goes onto each secondary first, with one traffic class less, and
 * nothing takes it back from there.
 *
 * The pairs stand in a hash table: tests with several ask for its order.
 */
#include "support/fhrp_roads.h"

#include "services/ifindex.h"

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_secondary_add
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

const std::string IN_PRIMARY = station("0x3c", VMAC, "100/4095");
const Message SVI_VLAN = trace(ADD, "SVI vlan 100\n");
const Message NOT_SAVED = trace(SECONDARY_ADD, "Failed to save SecVLAN macaddr info in avl tree\n");

std::string in_secondary(std::uint32_t vlan)
{
    return station("0x1c", VMAC, fmt::format("{}/4095", vlan));
}

class FhrpMacSecondaryAdd : public FhrpTest
{
protected:
    using FhrpTest::FhrpTest;

    /** How an add on the SVI begins, while nothing is kept, up to the walk. */
    static Calls begins(const Lif &lif, Role role)
    {
        return join({add_begins(lif, if_index::TYPE_SVI), Calls{sub_asked(lif)},
                     role_asked(PRIMARY, role)});
    }

    /** The add of a MAC that is kept nowhere, with no walk. */
    static Calls without_walk(const Lif &lif, Role role)
    {
        return join({begins(lif, role), station_added(IN_PRIMARY, 1), entry_saved(true)});
    }
};

class FhrpMacSecondaryAddOnTrident2 : public FhrpMacSecondaryAdd
{
protected:
    FhrpMacSecondaryAddOnTrident2() : FhrpMacSecondaryAdd({.chip = Kind::trident2}) {}
};

/** A pair of the primary is visited, up to the station. */
const Calls VISIT = {called::unit(), "bcm_l2_station_t_init()"};

Message visited(std::uint32_t primary)
{
    return trace(SECONDARY_ADD,
                 fmt::format("pvlan_svi_map primVLAN {}\n", static_cast<int>(primary)));
}

Message matched(std::uint32_t secondary)
{
    return trace(SECONDARY_ADD,
                 fmt::format(" pvlan_svi_map SecVLAN {}\n", static_cast<int>(secondary)));
}

} // namespace

TEST_F(FhrpMacSecondaryAdd, OneSecondaryIsInstalledBeforeThePrimary)
{
    const Lif &lif = primary_svi({101});
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({begins(lif, Role::primary), Calls{WALK}, VISIT, station_added(in_secondary(101), 1),
              entry_saved(true), station_added(IN_PRIMARY, 2), entry_saved(false)}));
    expect_messages(
        {SVI_VLAN, visited(100), matched(101), now_at(SECONDARY_ADD, 1), now_at(ADD, 2)});
    EXPECT_EQ(stations(), (Calls{in_chip(1, in_secondary(101)), in_chip(2, IN_PRIMARY)}));
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, 101, 1)}));
}

TEST_F(FhrpMacSecondaryAddOnTrident2, OneSecondaryIsInstalledWithTheSameCalls)
{
    const Lif &lif = primary_svi({101});
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({begins(lif, Role::primary), Calls{WALK}, VISIT, station_added(in_secondary(101), 1),
              entry_saved(true), station_added(IN_PRIMARY, 2), entry_saved(false)}));
}

TEST_F(FhrpMacSecondaryAdd, EachSecondaryIsInstalledInTheTablesOrder)
{
    const Lif &lif = primary_svi({101, 102, 103});
    EXPECT_EQ(add(lif), 0);
    Calls walk = {WALK};
    Messages said = {SVI_VLAN};
    int id = 0;
    for (const std::uint32_t secondary : secondaries_in_order()) {
        ++id;
        walk =
            join({walk, VISIT, station_added(in_secondary(secondary), id), entry_saved(id == 1)});
        said = join({said, Messages{visited(100), matched(secondary), now_at(SECONDARY_ADD, id)}});
    }
    EXPECT_EQ(id, 3);
    expect_calls(
        join({begins(lif, Role::primary), walk, station_added(IN_PRIMARY, 4), entry_saved(false)}));
    expect_messages(join({said, Messages{now_at(ADD, 4)}}));
}

TEST_F(FhrpMacSecondaryAdd, SecondMacIsKeptOnTheSecondaryBesideTheFirst)
{
    const Lif &lif = primary_svi({101});
    added(lif);
    EXPECT_EQ(add(lif, OTHER), 0);
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, 100, 4, OTHER), entry(lif, 101, 1),
                             entry(lif, 101, 3, OTHER)}));
}

TEST_F(FhrpMacSecondaryAdd, PairsOfOtherPrimariesAreVisitedAndPassedOver)
{
    const Lif &lif = primary_svi({});
    announced({{200, 201}});
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK, called::unit()},
                       station_added(IN_PRIMARY, 1), entry_saved(true)}));
    expect_messages({SVI_VLAN, visited(200), now_at(ADD, 1)});
    EXPECT_EQ(kept(), Calls{entry(lif, 100, 1)});
}

TEST_F(FhrpMacSecondaryAdd, WalkOverPairsOfSeveralPrimariesTakesItsOwn)
{
    announced({{200, 201}, {300, 301}, {200, 202}});
    const Lif &lif = primary_svi({101});
    EXPECT_EQ(add(lif), 0);
    Messages said = {SVI_VLAN};
    for (const Pair &pair : pairs_in_order()) {
        said.push_back(visited(pair.primary));
        if (pair.primary == 100) {
            said = join({said, Messages{matched(101), now_at(SECONDARY_ADD, 1)}});
        }
    }
    expect_messages(join({said, Messages{now_at(ADD, 2)}}));
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, 101, 1)}));
}

TEST_F(FhrpMacSecondaryAdd, PrimariesAreComparedInAll32Bits)
{
    const Lif &lif = primary_svi({});
    announced({{0x10000U + 100, 101}});
    EXPECT_EQ(add(lif), 0);
    expect_messages({SVI_VLAN, visited(0x10000U + 100), now_at(ADD, 1)});
    EXPECT_EQ(kept(), Calls{entry(lif, 100, 1)});
}

TEST_F(FhrpMacSecondaryAdd, SecondaryAbove16BitsIsCutForTheStation)
{
    const Lif &lif = primary_svi({0x10000U + 101});
    EXPECT_EQ(add(lif), 0);
    expect_messages({SVI_VLAN, visited(100), matched(0x10000U + 101), now_at(SECONDARY_ADD, 1),
                     now_at(ADD, 2)});
    EXPECT_EQ(stations(), (Calls{in_chip(1, in_secondary(101)), in_chip(2, IN_PRIMARY)}));
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, 101, 1)}));
}

TEST_F(FhrpMacSecondaryAdd, WithoutATableOfPairsThereIsNoWalk)
{
    const Lif &lif = primary_svi({});
    EXPECT_EQ(add(lif), 0);
    expect_calls(without_walk(lif, Role::primary));
    expect_messages({SVI_VLAN, now_at(ADD, 1)});
}

TEST_F(FhrpMacSecondaryAdd, VlanThatNobodyKnowsMakesNoWalk)
{
    const Lif &lif = primary_svi({101});
    vlan_is(PRIMARY, Role::unknown);
    EXPECT_EQ(add(lif), 0);
    expect_calls(without_walk(lif, Role::unknown));
}

TEST_F(FhrpMacSecondaryAdd, VlanInNoPrivateVlanMakesNoWalk)
{
    const Lif &lif = primary_svi({101});
    vlan_is(PRIMARY, Role::plain);
    EXPECT_EQ(add(lif), 0);
    expect_calls(without_walk(lif, Role::plain));
    expect_messages({SVI_VLAN, now_at(ADD, 1)});
}

TEST_F(FhrpMacSecondaryAdd, SecondaryVlanMakesNoWalk)
{
    const Lif &lif = primary_svi({101});
    vlan_is(PRIMARY, Role::secondary);
    EXPECT_EQ(add(lif), 0);
    expect_calls(without_walk(lif, Role::secondary));
}

TEST_F(FhrpMacSecondaryAdd, AnyNonzeroAnswerMakesAPrimary)
{
    const Lif &lif = primary_svi({101});
    vlan_is(PRIMARY, Role::secondary);
    fail("FWM_FWIM_PVLAN_IS_PRIMARY", 4);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, 101, 1)}));
}

TEST_F(FhrpMacSecondaryAdd, OtherKindsNeverAskForThePrivateVlan)
{
    primary_svi({101});
    Lif &lif = known_port();
    lif.lif.vlan = PRIMARY;
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"FWM_FWIM_FIND_VLAN", "g_hash_table_foreach"}), Calls{});
}

TEST_F(FhrpMacSecondaryAdd, RefusedSecondaryIsReportedAndTheOthersAndThePrimaryFollow)
{
    const Lif &lif = primary_svi({101, 102});
    const auto secondaries = secondaries_in_order();
    fail("bcm_l2_station_add", -6);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK}, VISIT,
                       station_refused(in_secondary(secondaries.at(0)), -6), VISIT,
                       station_added(in_secondary(secondaries.at(1)), 1), entry_saved(true),
                       station_added(IN_PRIMARY, 2), entry_saved(false)}));
    expect_reports({failed(SECONDARY_ADD, -6)});
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 2), entry(lif, secondaries.at(1), 1)}));
}

TEST_F(FhrpMacSecondaryAdd, PositiveResultOnASecondaryIsASuccess)
{
    const Lif &lif = primary_svi({101});
    fail("bcm_l2_station_add", 1);
    EXPECT_EQ(add(lif), 0);
    expect_reports({});
    EXPECT_EQ(kept().size(), 2U);
}

TEST_F(FhrpMacSecondaryAdd, SecondaryWithoutMemoryKeepsItsStationAndThePrimaryFollows)
{
    const Lif &lif = primary_svi({101});
    simswitch::services::Heap::fail_allocation(1);
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({begins(lif, Role::primary), Calls{WALK}, VISIT, station_added(in_secondary(101), 1),
              Calls{"malloc(16) = null"}, station_added(IN_PRIMARY, 2), entry_saved(true)}));
    expect_messages({SVI_VLAN, visited(100), matched(101), now_at(SECONDARY_ADD, 1), NOT_SAVED,
                     now_at(ADD, 2)});
    EXPECT_EQ(stations(), (Calls{in_chip(1, in_secondary(101)), in_chip(2, IN_PRIMARY)}));
    EXPECT_EQ(kept(), Calls{entry(lif, 100, 2)});
}

TEST_F(FhrpMacSecondaryAdd, RefusedInsertOfASecondaryIsATrace)
{
    const Lif &lif = primary_svi({101});
    fail("avl_insert", -6);
    EXPECT_EQ(add(lif), 0);
    expect_messages({SVI_VLAN, visited(100), matched(101), now_at(SECONDARY_ADD, 1), NOT_SAVED,
                     now_at(ADD, 2)});
    EXPECT_EQ(kept(), Calls{entry(lif, 100, 2)});
}

TEST_F(FhrpMacSecondaryAdd, RefusedPrimaryLeavesItsSecondariesAndReturnsZero)
{
    const Lif &lif = primary_svi({101, 102});
    fail("bcm_l2_station_add", -6, 3);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls().back(), "bcm_l2_station_add(0, " + IN_PRIMARY + ") = -6");
    expect_reports({failed(ADD, -6)});
    EXPECT_EQ(stations().size(), 2U);
    EXPECT_EQ(kept().size(), 2U);
    EXPECT_EQ(rtifhal_fhrp_mac_present(lif.lif.ifindex, VMAC.bytes, 101), 1);
    EXPECT_EQ(rtifhal_fhrp_mac_present(lif.lif.ifindex, VMAC.bytes, 102), 1);
    EXPECT_EQ(rtifhal_fhrp_mac_present(lif.lif.ifindex, VMAC.bytes, 100), 0);
}

TEST_F(FhrpMacSecondaryAdd, RepeatAfterARefusedPrimaryDoublesTheSecondarysStation)
{
    const Lif &lif = primary_svi({101});
    fail("bcm_l2_station_add", -6, 2);
    add(lif);
    start();
    EXPECT_EQ(add(lif), 0);
    expect_messages({SVI_VLAN, visited(100), matched(101), now_at(SECONDARY_ADD, 2), NOT_SAVED,
                     now_at(ADD, 3)});
    EXPECT_EQ(stations(), (Calls{in_chip(1, in_secondary(101)), in_chip(2, in_secondary(101)),
                                 in_chip(3, IN_PRIMARY)}));
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 3), entry(lif, 101, 1)}));
}

TEST_F(FhrpMacSecondaryAdd, RepeatWithThePrimaryInTheChipDoesntMendASecondary)
{
    const Lif &lif = primary_svi({101});
    added(lif);
    lost(1);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"bcm_l2_station_add", "g_hash_table_foreach"}), Calls{});
    EXPECT_EQ(stations(), Calls{in_chip(2, IN_PRIMARY)});
}

TEST_F(FhrpMacSecondaryAdd, PrimaryAsItsOwnSecondaryGetsTwoStationsAndKeepsTheFirst)
{
    const Lif &lif = primary_svi({PRIMARY});
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK}, VISIT,
                       station_added(in_secondary(PRIMARY), 1), entry_saved(true),
                       station_added(IN_PRIMARY, 2),
                       Calls{"malloc(16) = record", "avl_insert(tree, record) = -8"}}));
    expect_messages({SVI_VLAN, visited(PRIMARY), matched(PRIMARY), now_at(SECONDARY_ADD, 1),
                     now_at(ADD, 2), trace(ADD, "Failed to save addr info in hash table\n")});
    EXPECT_EQ(stations(), (Calls{in_chip(1, in_secondary(PRIMARY)), in_chip(2, IN_PRIMARY)}));
    EXPECT_EQ(kept(), Calls{entry(lif, PRIMARY, 1)});
}

TEST_F(FhrpMacSecondaryAdd, MulticastReachesNoSecondary)
{
    const Lif &lif = primary_svi({101});
    EXPECT_EQ(add(lif, MULTICAST), 0);
    EXPECT_EQ(calls_of({"bcm_l2_station_add", "g_hash_table_foreach"}), Calls{});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryAdd, UnitIsAskedForAtEachPair)
{
    const Lif &lif = primary_svi({101});
    fail("rtifhal_get_bcm_unit", 3, 2);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"bcm_l2_station_add"}),
              (Calls{"bcm_l2_station_add(3, " + in_secondary(101) + ") = -3",
                     "bcm_l2_station_add(0, " + IN_PRIMARY + ") = 0 [id=1]"}));
}

} // namespace rtifhal_test::fhrp_mac_secondary_add
