/*
 * fhrp_mac_secondary_delete_test.cpp: a virtual MAC goes from the SVI of a
 * private-VLAN primary: from the secondaries first, each by its own entry, and
 * a failure there reaches nobody.
 *
 * fhrp_mac_secondary_add_test.cpp has the way in.
 */
#include "support/fhrp_roads.h"

#include "rtifhal_kelvo_trident/station/fhrp_mac.h"
#include "services/ifindex.h"

#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_secondary_delete
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

class FhrpMacSecondaryDelete : public FhrpTest
{
protected:
    /** How a delete off the SVI begins, up to the walk. */
    static Calls begins(const Lif &lif, Role role)
    {
        return join({delete_begins(lif, if_index::TYPE_SVI), Calls{looked_up(true)},
                     role_asked(PRIMARY, role)});
    }

    /** A pair of the primary is visited and its station and entry go. */
    static Calls secondary_gone(int id, int code = 0)
    {
        return join(
            {Calls{called::unit(), looked_up(true)}, station_deleted(id, code), entry_removed()});
    }

    /** The primary's own station and entry go. */
    static Calls primary_gone(int id) { return join({station_deleted(id), entry_removed()}); }

    /** A MAC on a primary's SVI; its secondaries have the stations 1, 2, … */
    Lif &installed(const std::vector<std::uint32_t> &secondaries)
    {
        Lif &lif = primary_svi(secondaries);
        added(lif);
        return lif;
    }

    /** The SVI's VLAN takes that role before the delete, which then makes no walk. */
    void expect_secondary_stays(Role role)
    {
        const Lif &lif = installed({101});
        vlan_is(PRIMARY, role);
        EXPECT_EQ(del(lif), 0);
        expect_calls(join({begins(lif, role), primary_gone(2)}));
        expect_messages({});
        EXPECT_EQ(kept(), Calls{entry(lif, 101, 1)});
    }
};

Message visited(std::uint32_t primary)
{
    return trace(SECONDARY_DEL, fmt::format("svi_map PrimVLAN {}\n", static_cast<int>(primary)));
}

Message matched(std::uint32_t secondary)
{
    return trace(SECONDARY_DEL, fmt::format("SecVLAN {}\n", static_cast<int>(secondary)));
}

Message missing()
{
    return trace(SECONDARY_DEL, "FHRP MAC(02:11:5e:33:01:08) not found for Secondary VLANin hash "
                                "table\n");
}

Message refused(int id, int code)
{
    return report(SECONDARY_DEL, fmt::format("Sec VLAN l2_station del failed({}) for idx:{}\n",
                                             _shr_errmsg[-code], id));
}

} // namespace

TEST_F(FhrpMacSecondaryDelete, OneSecondaryGoesBeforeThePrimary)
{
    const Lif &lif = installed({101});
    EXPECT_EQ(del(lif), 0);
    expect_calls(
        join({begins(lif, Role::primary), Calls{WALK}, secondary_gone(1), primary_gone(2)}));
    expect_messages({visited(100), matched(101)});
    EXPECT_EQ(stations(), Calls{});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, EachSecondaryGoesInTheTablesOrder)
{
    const Lif &lif = installed({101, 102, 103});
    Messages said;
    for (const std::uint32_t secondary : secondaries_in_order()) {
        said = join({said, Messages{visited(100), matched(secondary)}});
    }
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK}, secondary_gone(1),
                       secondary_gone(2), secondary_gone(3), primary_gone(4)}));
    expect_messages(said);
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, AddAndDeleteLeaveNothingBehind)
{
    const Lif &lif = primary_svi({101, 102, 103});
    const std::size_t blocks = sw.heap.live_blocks();
    added(lif);
    EXPECT_EQ(sw.heap.live_blocks(), blocks + 4);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(sw.heap.live_blocks(), blocks);
    EXPECT_EQ(stations(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, OtherMacsOfTheSecondaryStay)
{
    const Lif &lif = installed({101});
    added(lif, OTHER);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 4, OTHER), entry(lif, 101, 3, OTHER)}));
}

TEST_F(FhrpMacSecondaryDelete, PairsOfOtherPrimariesAreVisitedAndPassedOver)
{
    announced({{200, 201}});
    const Lif &lif = installed({});
    saved(lif, VMAC, 201, 9);
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK, called::unit()}, primary_gone(1)}));
    expect_messages({visited(200)});
    EXPECT_EQ(kept(), Calls{entry(lif, 201, 9)});
}

TEST_F(FhrpMacSecondaryDelete, PrimariesAreComparedInAll32Bits)
{
    announced({{0x10000U + 100, 101}});
    const Lif &lif = installed({});
    saved(lif, VMAC, 101, 9);
    EXPECT_EQ(del(lif), 0);
    expect_messages({visited(0x10000U + 100)});
    EXPECT_EQ(kept(), Calls{entry(lif, 101, 9)});
}

TEST_F(FhrpMacSecondaryDelete, SecondaryAbove16BitsIsCutForTheKey)
{
    const Lif &lif = installed({0x10000U + 101});
    EXPECT_EQ(del(lif), 0);
    expect_messages({visited(100), matched(0x10000U + 101)});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, SecondaryWithoutAnEntryIsPassedOverWithAMessage)
{
    const Lif &lif = installed({101});
    rtifhal_fhrp_mac_remove(lif.lif.ifindex, VMAC.bytes, 101);
    start();
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK, called::unit(), looked_up(false)},
                       primary_gone(2)}));
    expect_messages({visited(100), missing()});
    EXPECT_EQ(stations(), Calls{in_chip(1, station("0x1c", VMAC, "101/4095"))});
}

TEST_F(FhrpMacSecondaryDelete, SameMacOfAnotherSviOnThatVlanIsNotTheSecondarys)
{
    const Lif &lif = installed({101});
    const Lif &other = known_svi(300);
    rtifhal_fhrp_mac_remove(lif.lif.ifindex, VMAC.bytes, 101);
    saved(other, VMAC, 101, 9);
    EXPECT_EQ(del(lif), 0);
    expect_messages({visited(100), missing()});
    EXPECT_EQ(kept(), Calls{entry(other, 101, 9)});
}

TEST_F(FhrpMacSecondaryDelete, RefusedSecondaryIsReportedAndItsEntryGoesAndTheRestToo)
{
    const Lif &lif = installed({101, 102});
    fail("bcm_l2_station_delete", -4);
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK}, secondary_gone(1, -4),
                       secondary_gone(2), primary_gone(3)}));
    expect_reports({refused(1, -4)});
    EXPECT_EQ(stations().size(), 1U);
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, PositiveResultOnASecondaryIsASuccess)
{
    const Lif &lif = installed({101});
    fail("bcm_l2_station_delete", 1);
    EXPECT_EQ(del(lif), 0);
    expect_reports({});
}

TEST_F(FhrpMacSecondaryDelete, RefusedPrimaryIsAFailureBehindItsSecondaries)
{
    const Lif &lif = installed({101});
    fail("bcm_l2_station_delete", -4, 2);
    EXPECT_EQ(del(lif), -1);
    expect_reports(
        {report(DEL, fmt::format("l2_station_delete failed({}) for idx:2\n", _shr_errmsg[4]))});
    EXPECT_EQ(stations(), Calls{in_chip(2, station("0x3c", VMAC, "100/4095"))});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacSecondaryDelete, PrimaryAsItsOwnSecondaryLosesItsEntryInTheWalkAndFailsBehindIt)
{
    const Lif &lif = installed({PRIMARY});
    EXPECT_EQ(del(lif), -1);
    expect_calls(join({begins(lif, Role::primary), Calls{WALK}, secondary_gone(1),
                       station_deleted(1, -7), Calls{looked_up(false)}}));
    expect_messages(
        {visited(PRIMARY), matched(PRIMARY),
         report(DEL, fmt::format("l2_station_delete failed({}) for idx:1\n", _shr_errmsg[7]))});
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(stations(), Calls{in_chip(2, station("0x3c", VMAC, "100/4095"))});
}

TEST_F(FhrpMacSecondaryDelete, WithoutAnEntryOfItsOwnThereIsNoWalk)
{
    const Lif &lif = installed({101});
    rtifhal_fhrp_mac_remove(lif.lif.ifindex, VMAC.bytes, 100);
    start();
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({delete_begins(lif, if_index::TYPE_SVI), Calls{looked_up(false)}}));
    EXPECT_EQ(kept(), Calls{entry(lif, 101, 1)});
}

TEST_F(FhrpMacSecondaryDelete, WithoutATableOfPairsThereIsNoWalk)
{
    const Lif &lif = installed({});
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({begins(lif, Role::primary), primary_gone(1)}));
    expect_messages({});
}

TEST_F(FhrpMacSecondaryDelete, VlanThatNobodyKnowsAnyMoreLeavesItsSecondaries)
{
    expect_secondary_stays(Role::unknown);
}

TEST_F(FhrpMacSecondaryDelete, VlanInNoPrivateVlanAnyMoreLeavesItsSecondaries)
{
    expect_secondary_stays(Role::plain);
}

TEST_F(FhrpMacSecondaryDelete, VlanThatBecameASecondaryLeavesItsSecondaries)
{
    expect_secondary_stays(Role::secondary);
}

TEST_F(FhrpMacSecondaryDelete, EntryThatIsGoneByItsRemovalIsNotFreed)
{
    const Lif &lif = installed({101});
    fail("avl_find", -1, 3);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(calls_of({"avl_find", "avl_delete", "free"}),
              join({Calls{looked_up(true), looked_up(true), looked_up(false)}, entry_removed()}));
    EXPECT_EQ(kept(), Calls{entry(lif, 101, 1)});
}

TEST_F(FhrpMacSecondaryDelete, UnitIsAskedForAtEachPair)
{
    const Lif &lif = installed({101});
    fail("rtifhal_get_bcm_unit", 3, 2);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(calls_of({"bcm_l2_station_delete"}),
              (Calls{"bcm_l2_station_delete(3, 1) = -3", "bcm_l2_station_delete(0, 2) = 0"}));
}

} // namespace rtifhal_test::fhrp_mac_secondary_delete
