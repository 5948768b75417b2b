/*
 * fhrp_mac_again_test.cpp: the add of a virtual MAC that is kept already: with
 * its station in the chip nothing happens; without it there is a second
 * station, and the tree keeps the first one's id.
 *
 * fhrp_mac_add_test.cpp has the first add.
 */
#include "support/fhrp_roads.h"

#include "services/ifindex.h"

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_again
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

const std::string ON_PORT = station("0x3c", VMAC, "4094/4095", "5/127");
const std::string INSERT_REFUSED = "avl_insert(tree, record) = -8";
const Message LOST = trace(ADD, "MAC not present in HW program it\n");
const Message NOT_SAVED = trace(ADD, "Failed to save addr info in hash table\n");

class FhrpMacAgain : public FhrpTest
{
protected:
    static Message present(const Lif &lif, const Address &mac = VMAC)
    {
        return trace(ADD, fmt::format("({}) already present in hash table on intf {}\n", mac.text(),
                                      lif.index()));
    }

    /** Station 1 is the port's and in the chip, but the chip won't say so the next time. */
    Lif &known_port_with_hidden_station()
    {
        Lif &lif = known_port();
        added(lif);
        fail("bcm_l2_station_get", -7);
        return lif;
    }
};

/** The key is found and its station read. */
Calls present_asked(int id, const std::string &result)
{
    return {looked_up(true), fmt::format("bcm_l2_station_get(0, {}) = {}", id, result)};
}

} // namespace

TEST_F(FhrpMacAgain, StationInTheChipEndsTheAddThere)
{
    const Lif &lif = known_port();
    added(lif);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join(
        {add_begins(lif, if_index::TYPE_PORT), present_asked(1, "0 [station=" + ON_PORT + "]")}));
    expect_messages({present(lif)});
    EXPECT_EQ(stations(), Calls{in_chip(1, ON_PORT)});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacAgain, AnSviWithItsStationDoesntAskForThePrivateVlan)
{
    const Lif &lif = known_svi();
    added(lif);
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_SVI),
                       present_asked(1, "0 [station=" + station("0x3c", VMAC, "100/4095") + "]")}));
}

TEST_F(FhrpMacAgain, PositiveResultOfTheStationGetEndsTheAddToo)
{
    const Lif &lif = known_port();
    added(lif);
    fail("bcm_l2_station_get", 1);
    EXPECT_EQ(add(lif), 0);
    expect_messages({present(lif)});
    EXPECT_EQ(stations().size(), 1U);
}

TEST_F(FhrpMacAgain, MissingStationIsAddedAgainAndTheTreeRefusesTheKey)
{
    const Lif &lif = known_port_with_hidden_station();
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT), present_asked(1, "-7"),
                       Calls{sub_asked(lif)}, port_asked(lif), station_added(ON_PORT, 2),
                       Calls{"malloc(16) = record", INSERT_REFUSED}}));
    expect_messages({present(lif), LOST, trace(ADD, "L3 physical interface port 5\n"),
                     now_at(ADD, 2), NOT_SAVED});
}

TEST_F(FhrpMacAgain, RefusedKeyLeavesTheOldIdAndTheNewRecordUnfreed)
{
    const Lif &lif = known_port_with_hidden_station();
    EXPECT_EQ(sw.heap.live_blocks(), 1U);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
    EXPECT_EQ(sw.heap.live_blocks(), 2U);
}

TEST_F(FhrpMacAgain, DeleteBehindItTakesTheOldStationAndLeavesTheNew)
{
    const Lif &lif = known_port_with_hidden_station();
    add(lif);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(stations(), Calls{in_chip(2, ON_PORT)});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacAgain, StationThatTheChipLostIsBackAfterTheAdd)
{
    const Lif &lif = known_port();
    added(lif);
    lost(1);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(stations().size(), 1U);
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacAgain, LostStationOfAnSviIsAddedUnderItsVlan)
{
    const Lif &lif = known_svi();
    added(lif);
    lost(1);
    EXPECT_EQ(add(lif), 0);
    expect_messages({present(lif), LOST, trace(ADD, "SVI vlan 100\n"), now_at(ADD, 1), NOT_SAVED});
    EXPECT_EQ(stations(), Calls{in_chip(1, station("0x3c", VMAC, "100/4095"))});
}

TEST_F(FhrpMacAgain, LostStationThatTheChipRefusesKeepsTheEntry)
{
    const Lif &lif = known_port();
    added(lif);
    lost(1);
    fail("bcm_l2_station_add", -6);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"malloc", "avl_insert"}), Calls{});
    expect_reports({failed(ADD, -6)});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacAgain, LostStationOfAPortThatCantBeFoundIsAFailure)
{
    const Lif &lif = known_port();
    added(lif);
    lost(1);
    fail("if_index_get_port", 1);
    EXPECT_EQ(add(lif), -1);
    expect_messages({present(lif), LOST,
                     report(ADD, "failed to get port from if_index for L3 physical interface\n")});
}

TEST_F(FhrpMacAgain, KeptMulticastIsPresentBeforeItsPrefixIsLookedAt)
{
    const Lif &lif = known_port();
    added(lif);
    saved(lif, MULTICAST, ROUTED, 1);
    EXPECT_EQ(add(lif, MULTICAST), 0);
    expect_calls(join(
        {add_begins(lif, if_index::TYPE_PORT), present_asked(1, "0 [station=" + ON_PORT + "]")}));
    expect_messages({present(lif, MULTICAST)});
}

TEST_F(FhrpMacAgain, KeptMulticastWithoutAStationEndsAtItsPrefix)
{
    const Lif &lif = known_port();
    saved(lif, MULTICAST, ROUTED, 9);
    EXPECT_EQ(add(lif, MULTICAST), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT), present_asked(9, "-7")}));
    expect_messages({present(lif, MULTICAST), LOST,
                     trace(ADD, "Not installing (33:33:12:34:56:08) on intf 0x10400000\n")});
}

TEST_F(FhrpMacAgain, EntryKeptForAManagementInterfaceIsPresentThereToo)
{
    const Lif &lif = known(std::make_unique<Lif>(if_index::management(0)));
    saved(lif, VMAC, ROUTED, 9);
    EXPECT_EQ(add(lif), 0);
    expect_messages(
        {present(lif), LOST, trace(ADD, "Skipping l2_station programming for mgmt interface\n")});
}

TEST_F(FhrpMacAgain, SameMacOnTheSviOfAnotherVlanIsNotPresent)
{
    Lif &lif = known_svi();
    added(lif);
    lif.lif.vlan = 200;
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"avl_find", "bcm_l2_station_get"}), Calls{looked_up(false)});
    EXPECT_EQ(kept(), (Calls{entry(lif, 100, 1), entry(lif, 200, 2)}));
}

} // namespace rtifhal_test::fhrp_mac_again
