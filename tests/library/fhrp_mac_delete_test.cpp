/*
 * fhrp_mac_delete_test.cpp: a virtual MAC goes from an interface: every call
 * and message, and each step that can fail. The look-ups stand in the other
 * order than in the add, and the prefix is looked at before the tree.
 *
 * fhrp_mac_secondary_delete_test.cpp has the secondaries.
 */
#include "support/fhrp_roads.h"

#include "services/ifindex.h"

#include <fwm/state.h>
#include <sdk/error.h>

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_delete
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

class FhrpMacDelete : public FhrpTest
{
protected:
    using FhrpTest::FhrpTest;

    static Message not_found(const Address &mac = VMAC)
    {
        return trace(DEL, fmt::format("FHRP MAC({}) not found in hash table\n", mac.text()));
    }
};

class FhrpMacDeleteOnTrident2 : public FhrpMacDelete
{
protected:
    FhrpMacDeleteOnTrident2() : FhrpMacDelete({.chip = Kind::trident2}) {}
};

/** The calls of a delete off a kind that has no private VLANs. */
Calls plain_road(const Lif &lif, int type, int id = 1, int code = 0)
{
    return join({delete_begins(lif, type), Calls{looked_up(true)}, station_deleted(id, code),
                 entry_removed()});
}

} // namespace

TEST_F(FhrpMacDelete, OffAPortMakesEveryCall)
{
    const Lif &lif = known_port();
    added(lif);
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT));
    expect_messages({});
    EXPECT_EQ(stations(), Calls{});
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(sw.heap.live_blocks(), 0U);
}

TEST_F(FhrpMacDeleteOnTrident2, OffAPortMakesTheSameCalls)
{
    const Lif &lif = known_port();
    added(lif);
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT));
}

TEST_F(FhrpMacDelete, KindOfStartAndSdnAgentChangeNothing)
{
    const Lif &lif = known_port();
    added(lif);
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT));
}

TEST_F(FhrpMacDelete, OffAnSviAsksForThePrivateVlan)
{
    const Lif &lif = known_svi();
    added(lif);
    vlan_is(PRIMARY, Role::plain);
    start();
    EXPECT_EQ(del(lif), 0);
    expect_calls(join({delete_begins(lif, if_index::TYPE_SVI), Calls{looked_up(true)},
                       role_asked(PRIMARY, Role::plain), station_deleted(1), entry_removed()}));
    expect_messages({});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacDelete, OffASubinterfaceDoesntAskWhetherItIsOne)
{
    const Lif &lif = known(subinterface(known_port(), 10));
    added(lif);
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT));
}

TEST_F(FhrpMacDelete, OffAPortChannelMakesTheSameCalls)
{
    const Lif &lif = known(port_channel(7));
    added(lif);
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT_CHANNEL));
}

TEST_F(FhrpMacDelete, OffATunnelMakesTheSameCalls)
{
    const Lif &lif = known(tunnel(3));
    added(lif);
    EXPECT_EQ(del(lif), 0);
    expect_calls(plain_road(lif, if_index::TYPE_TUNNEL));
}

TEST_F(FhrpMacDelete, TreeStaysWhenItsLastEntryGoes)
{
    const Lif &lif = known_port();
    added(lif);
    const avl_tree_t *tree = fhrp_mac_hash;
    del(lif);
    EXPECT_EQ(fhrp_mac_hash, tree);
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"avl_create"}), Calls{});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacDelete, OneMacOnTwoPortsGoesFromOne)
{
    const Lif &first = known_port(5);
    const Lif &second = known_port(6);
    added(first);
    added(second);
    EXPECT_EQ(del(first), 0);
    EXPECT_EQ(kept(), Calls{entry(second, ROUTED, 2)});
    EXPECT_EQ(stations(), Calls{in_chip(2, station("0x3c", VMAC, "4094/4095", "6/127"))});
}

TEST_F(FhrpMacDelete, OneOfTwoMacsOfAPortGoes)
{
    const Lif &lif = known_port();
    added(lif);
    added(lif, OTHER);
    EXPECT_EQ(del(lif, OTHER), 0);
    expect_calls(plain_road(lif, if_index::TYPE_PORT, 2));
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacDelete, KeyIsTheVlanThatTheSvisRecordHasNow)
{
    Lif &lif = known_svi();
    added(lif);
    lif.lif.vlan = 200;
    EXPECT_EQ(del(lif), 0);
    expect_messages({not_found()});
    EXPECT_EQ(kept(), Calls{entry(lif, 100, 1)});
}

TEST_F(FhrpMacDelete, MacThatWasNeverAddedIsNoFailure)
{
    const Lif &lif = known_port();
    added(lif);
    EXPECT_EQ(del(lif, OTHER), 0);
    expect_calls(join({delete_begins(lif, if_index::TYPE_PORT), Calls{looked_up(false)}}));
    expect_messages({not_found(OTHER)});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
}

TEST_F(FhrpMacDelete, WithoutATreeTheMacIsNotFoundEither)
{
    const Lif &lif = known_svi();
    EXPECT_EQ(del(lif), 0);
    expect_calls(delete_begins(lif, if_index::TYPE_SVI));
    expect_messages({not_found()});
}

TEST_F(FhrpMacDelete, SecondDeleteFindsNothing)
{
    const Lif &lif = known_port();
    added(lif);
    del(lif);
    start();
    EXPECT_EQ(del(lif), 0);
    expect_messages({not_found()});
    EXPECT_EQ(calls_of({"bcm_l2_station_delete"}), Calls{});
}

TEST_F(FhrpMacDelete, MulticastIsTurnedAwayBeforeTheTreeIsAsked)
{
    const Lif &lif = known_port();
    saved(lif, MULTICAST, ROUTED, 9);
    EXPECT_EQ(del(lif, MULTICAST), 0);
    expect_calls(delete_begins(lif, if_index::TYPE_PORT));
    expect_messages({trace(DEL, "L2 IPv6 Multicast addresses are not installed on non-management "
                                "interfaces\n")});
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 9, MULTICAST)});
}

TEST_F(FhrpMacDelete, OnlyBothPrefixBytesMakeItMulticast)
{
    const Lif &lif = known_port();
    const Address first = {{0x33, 0x34, 0, 0, 0, 1}};
    const Address second = {{0x32, 0x33, 0, 0, 0, 1}};
    added(lif, first);
    added(lif, second);
    EXPECT_EQ(del(lif, first), 0);
    EXPECT_EQ(del(lif, second), 0);
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacDelete, MulticastOnAManagementInterfaceEndsAtNotFound)
{
    const Lif &lif = known(std::make_unique<Lif>(if_index::management(0)));
    added(known_port());
    EXPECT_EQ(del(lif, MULTICAST), 0);
    expect_calls(join({delete_begins(lif, if_index::TYPE_MANAGEMENT), Calls{looked_up(false)}}));
    expect_messages({not_found(MULTICAST)});
}

TEST_F(FhrpMacDelete, EntryKeptForAManagementInterfaceGoes)
{
    const Lif &lif = known(std::make_unique<Lif>(if_index::management(0)));
    added(known_port());
    saved(lif, MULTICAST, ROUTED, 1);
    EXPECT_EQ(del(lif, MULTICAST), 0);
    expect_calls(plain_road(lif, if_index::TYPE_MANAGEMENT));
    EXPECT_EQ(kept().size(), 1U);
}

TEST_F(FhrpMacDelete, UnknownTypeIsReportedBeforeTheInterfaceIsLookedUp)
{
    const Lif lif(if_index::port(4));
    fail("if_index_get_type", 1);
    EXPECT_EQ(del(lif), -1);
    expect_calls({called::unit(), called::no_type(lif, 1)});
    expect_messages({report(DEL, "failed to get if type from if_index\n")});
}

TEST_F(FhrpMacDelete, UnreadableIndexIsAnUnknownType)
{
    EXPECT_EQ(rtifhal_trident_fhrp_mac_del(VMAC.bytes, 0), -1);
    expect_calls({called::unit(), "if_index_get_type(0x0) = 1"});
    expect_messages({report(DEL, "failed to get if type from if_index\n")});
}

TEST_F(FhrpMacDelete, UnknownInterfaceIsReportedBehindItsType)
{
    const Lif lif(if_index::port(4));
    EXPECT_EQ(del(lif), -1);
    expect_calls({called::unit(), called::type(lif, if_index::TYPE_PORT),
                  "l3lif_find_lif_from_ifindex(0x10400000) = null"});
    expect_messages({report(DEL, "failed to get l3lif from if_index\n")});
}

TEST_F(FhrpMacDelete, InterfaceThatTheLayerAboveForgotKeepsItsEntry)
{
    const Lif &lif = known_port();
    added(lif);
    sw.directory.remove(lif.lif.ifindex);
    EXPECT_EQ(del(lif), -1);
    EXPECT_EQ(kept(), Calls{entry(lif, ROUTED, 1)});
    EXPECT_EQ(stations().size(), 1U);
}

TEST_F(FhrpMacDelete, RefusedStationIsAFailureAndTheEntryGoesAllTheSame)
{
    const Lif &lif = known_port();
    added(lif);
    fail("bcm_l2_station_delete", -4);
    EXPECT_EQ(del(lif), -1);
    expect_calls(plain_road(lif, if_index::TYPE_PORT, 1, -4));
    expect_messages(
        {report(DEL, fmt::format("l2_station_delete failed({}) for idx:1\n", _shr_errmsg[4]))});
    EXPECT_EQ(kept(), Calls{});
    EXPECT_EQ(stations().size(), 1U);
}

TEST_F(FhrpMacDelete, StationThatTheChipLostIsAFailureAndTheEntryGoes)
{
    const Lif &lif = known_port();
    added(lif);
    lost(1);
    EXPECT_EQ(del(lif), -1);
    expect_reports(
        {report(DEL, fmt::format("l2_station_delete failed({}) for idx:1\n", _shr_errmsg[7]))});
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacDelete, PositiveResultOfTheStationDeleteIsASuccess)
{
    const Lif &lif = known_port();
    added(lif);
    fail("bcm_l2_station_delete", 1);
    EXPECT_EQ(del(lif), 0);
    expect_messages({});
}

TEST_F(FhrpMacDelete, RefusedFlushStopsNothing)
{
    const Lif &lif = known_port();
    added(lif);
    fail("fwmpd_trident_batch_flush", -1);
    EXPECT_EQ(del(lif), 0);
    EXPECT_EQ(stations(), Calls{});
}

TEST_F(FhrpMacDelete, UnitOfTheStationIsThePlatforms)
{
    const Lif &lif = known_port();
    added(lif);
    fail("rtifhal_get_bcm_unit", 3);
    EXPECT_EQ(del(lif), -1);
    EXPECT_EQ(calls_of({"bcm_l2_station_delete"}), Calls{"bcm_l2_station_delete(3, 1) = -3"});
}

TEST_F(FhrpMacDelete, NullMacIsRefusedWithoutACall)
{
    const Lif &lif = known_port();
    EXPECT_EQ(rtifhal_trident_fhrp_mac_del(nullptr, lif.lif.ifindex), -1);
    expect_calls({});
    expect_messages({});
}

} // namespace rtifhal_test::fhrp_mac_delete
