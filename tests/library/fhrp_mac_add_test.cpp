/*
 * fhrp_mac_add_test.cpp: a virtual MAC on each kind of interface: every call,
 * every message, what the station matches and under which VLAN it is kept.
 *
 * Beside it: fhrp_mac_add_failure_test.cpp, fhrp_mac_again_test.cpp and
 * fhrp_mac_secondary_add_test.cpp, which has the primaries of private VLANs.
 */
#include "support/fhrp_roads.h"

#include "services/ifindex.h"

#include <fwm/state.h>

#include <fmt/format.h>

namespace rtifhal_test::fhrp_mac_add
{

namespace
{

using namespace fhrp_road;
namespace if_index = simswitch::if_index;

const std::string ON_PORT = station("0x3c", VMAC, "4094/4095", "5/127");
const std::string IN_VLAN = station("0x3c", VMAC, "100/4095");
const std::string IN_ROUTED_VLAN = station("0x3c", VMAC, "4094/4095");
const std::string ANYWHERE = station("0x3c", VMAC, "0/0");

class FhrpMacAdd : public FhrpTest
{
protected:
    using FhrpTest::FhrpTest;

    /** A subinterface whose record has a VLAN of its own, which the station doesn't take. */
    Lif &known_sub(Lif &main)
    {
        Lif &sub = known(subinterface(main, 10));
        sub.lif.vlan = 77;
        return sub;
    }

    /** The one station and the one entry that are there. */
    void expect_installed(const std::string &record, const std::string &kept_as) const
    {
        EXPECT_EQ(stations(), Calls{in_chip(1, record)});
        EXPECT_EQ(kept(), Calls{kept_as});
    }
};

class FhrpMacAddOnTrident2 : public FhrpMacAdd
{
protected:
    FhrpMacAddOnTrident2() : FhrpMacAdd({.chip = Kind::trident2}) {}
};

/** The calls of a first add on a routed port. */
Calls port_road(const Lif &lif)
{
    return join({add_begins(lif, if_index::TYPE_PORT), Calls{sub_asked(lif)}, port_asked(lif),
                 station_added(ON_PORT, 1), entry_saved(true)});
}

} // namespace

TEST_F(FhrpMacAdd, OnAPortMakesEveryCall)
{
    const Lif &lif = known_port();
    EXPECT_EQ(add(lif), 0);
    expect_calls(port_road(lif));
    expect_messages({trace(ADD, "L3 physical interface port 5\n"), now_at(ADD, 1)});
    expect_installed(ON_PORT, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAddOnTrident2, OnAPortMakesTheSameCalls)
{
    const Lif &lif = known_port();
    EXPECT_EQ(add(lif), 0);
    expect_calls(port_road(lif));
}

TEST_F(FhrpMacAdd, KindOfStartAndSdnAgentChangeNothing)
{
    const Lif &lif = known_port();
    g_fwm_pss_restore_mode = 1;
    sw.system.fast_restart = true;
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(add(lif), 0);
    expect_calls(port_road(lif));
}

TEST_F(FhrpMacAdd, OnAPortIsKeptUnderTheRoutedVlanWhateverItsRecordSays)
{
    Lif &lif = known_port();
    lif.lif.vlan = 77;
    lif.lif.int_vlan = 78;
    EXPECT_EQ(add(lif), 0);
    expect_installed(ON_PORT, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAdd, OnAnSviMakesEveryCall)
{
    const Lif &lif = known_svi();
    vlan_is(PRIMARY, Role::plain);
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({add_begins(lif, if_index::TYPE_SVI), Calls{sub_asked(lif)},
              role_asked(PRIMARY, Role::plain), station_added(IN_VLAN, 1), entry_saved(true)}));
    expect_messages({trace(ADD, "SVI vlan 100\n"), now_at(ADD, 1)});
    expect_installed(IN_VLAN, entry(lif, PRIMARY, 1));
}

TEST_F(FhrpMacAddOnTrident2, OnAnSviMakesTheSameCalls)
{
    const Lif &lif = known_svi();
    vlan_is(PRIMARY, Role::plain);
    EXPECT_EQ(add(lif), 0);
    expect_calls(
        join({add_begins(lif, if_index::TYPE_SVI), Calls{sub_asked(lif)},
              role_asked(PRIMARY, Role::plain), station_added(IN_VLAN, 1), entry_saved(true)}));
}

TEST_F(FhrpMacAdd, OnAnSviTakesTheRecordsVlanAndNotThatOfTheIndex)
{
    Lif &lif = known_svi();
    lif.lif.vlan = 200;
    EXPECT_EQ(add(lif), 0);
    EXPECT_EQ(calls_of({"FWM_FWIM_FIND_VLAN"}), Calls{"FWM_FWIM_FIND_VLAN(1, 200) = null"});
    expect_installed(station("0x3c", VMAC, "200/4095"), entry(lif, 200, 1));
}

TEST_F(FhrpMacAdd, OnASubinterfaceOfAPortMakesEveryCall)
{
    const Lif &lif = known_sub(known_port());
    EXPECT_EQ(add(lif), 0);
    expect_calls(port_road(lif));
    expect_messages({trace(ADD, "Sub interface vlan 77\n"), trace(ADD, "Sub interface port 5\n"),
                     now_at(ADD, 1)});
    expect_installed(ON_PORT, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAdd, OnASubinterfaceOfAPortChannelMatchesTheRoutedVlanOnAnyPort)
{
    const Lif &lif = known_sub(known(port_channel(7)));
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT_CHANNEL), Calls{sub_asked(lif)},
                       station_added(IN_ROUTED_VLAN, 1), entry_saved(true)}));
    expect_messages({trace(ADD, "Sub interface vlan 77\n"), now_at(ADD, 1)});
    expect_installed(IN_ROUTED_VLAN, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAdd, OnASubinterfaceWhoseNumberCantBeReadIsThatOfItsPort)
{
    const Lif &lif = known_sub(known_port());
    fail("if_index_get_sub_intf", 1);
    EXPECT_EQ(add(lif), 0);
    expect_messages({trace(ADD, "L3 physical interface port 5\n"), now_at(ADD, 1)});
    expect_installed(ON_PORT, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAdd, OnAPortChannelMatchesTheMacAlone)
{
    const Lif &lif = known(port_channel(7));
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_PORT_CHANNEL), Calls{sub_asked(lif)},
                       station_added(ANYWHERE, 1), entry_saved(true)}));
    expect_messages({now_at(ADD, 1)});
    expect_installed(ANYWHERE, entry(lif, ROUTED, 1));
}

TEST_F(FhrpMacAdd, OnATunnelOrLoopbackMatchesTheMacAlone)
{
    const Lif &first = known(tunnel(3));
    const Lif &second = known(std::make_unique<Lif>(if_index::loopback(2)));
    EXPECT_EQ(add(first), 0);
    EXPECT_EQ(add(second), 0);
    EXPECT_EQ(stations(), (Calls{in_chip(1, ANYWHERE), in_chip(2, ANYWHERE)}));
    EXPECT_EQ(kept(), (Calls{entry(first, ROUTED, 1), entry(second, ROUTED, 2)}));
}

TEST_F(FhrpMacAdd, OnAManagementInterfaceInstallsAndKeepsNothing)
{
    const Lif &lif = known(std::make_unique<Lif>(if_index::management(0)));
    EXPECT_EQ(add(lif), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_MANAGEMENT), Calls{sub_asked(lif)}}));
    expect_messages({trace(ADD, "Skipping l2_station programming for mgmt interface\n")});
    EXPECT_EQ(fhrp_mac_hash, nullptr);
}

TEST_F(FhrpMacAdd, MulticastOnAManagementInterfacePassesThePrefixCheckAndIsSkippedLater)
{
    const Lif &lif = known(std::make_unique<Lif>(if_index::management(0)));
    EXPECT_EQ(add(lif, MULTICAST), 0);
    expect_calls(join({add_begins(lif, if_index::TYPE_MANAGEMENT), Calls{sub_asked(lif)}}));
    expect_messages({trace(ADD, "Skipping l2_station programming for mgmt interface\n")});
}

TEST_F(FhrpMacAdd, MulticastIsInstalledOnNoOtherKind)
{
    Lif &first = known_port();
    for (const Lif *lif :
         {&first, &known_svi(), &known(port_channel(7)), &known(tunnel(3)), &known_sub(first)}) {
        start();
        EXPECT_EQ(add(*lif, MULTICAST), 0);
        EXPECT_EQ(calls().back(), "bcm_l2_station_t_init()");
        EXPECT_EQ(calls().size(), 4U);
        expect_messages(
            {trace(ADD, "Not installing (33:33:12:34:56:08) on intf " + lif->index() + "\n")});
    }
    EXPECT_EQ(kept(), Calls{});
}

TEST_F(FhrpMacAdd, OnlyBothPrefixBytesMakeItMulticast)
{
    const Lif &lif = known_port();
    const Address first = {{0x33, 0x34, 0, 0, 0, 1}};
    const Address second = {{0x32, 0x33, 0, 0, 0, 1}};
    EXPECT_EQ(add(lif, first), 0);
    EXPECT_EQ(add(lif, second), 0);
    EXPECT_EQ(kept(), (Calls{entry(lif, ROUTED, 2, second), entry(lif, ROUTED, 1, first)}));
}

TEST_F(FhrpMacAdd, SecondEntryIsLookedUpFirstAndTheTreeIsMadeOnce)
{
    const Lif &lif = known_port();
    added(lif);
    const avl_tree_t *tree = fhrp_mac_hash;
    EXPECT_EQ(add(lif, OTHER), 0);
    expect_calls(
        join({add_begins(lif, if_index::TYPE_PORT), Calls{looked_up(false)}, Calls{sub_asked(lif)},
              port_asked(lif), station_added(station("0x3c", OTHER, "4094/4095", "5/127"), 2),
              entry_saved(false)}));
    EXPECT_EQ(fhrp_mac_hash, tree);
    EXPECT_EQ(kept(), (Calls{entry(lif, ROUTED, 1), entry(lif, ROUTED, 2, OTHER)}));
}

TEST_F(FhrpMacAdd, OneMacOnTwoPortsIsTwoEntriesOfTheRoutedVlanAndTwoStations)
{
    const Lif &first = known_port(5);
    const Lif &second = known_port(6);
    EXPECT_EQ(add(first), 0);
    EXPECT_EQ(add(second), 0);
    EXPECT_EQ(kept(), (Calls{entry(first, ROUTED, 1), entry(second, ROUTED, 2)}));
    EXPECT_EQ(stations(), (Calls{in_chip(1, ON_PORT),
                                 in_chip(2, station("0x3c", VMAC, "4094/4095", "6/127"))}));
}

TEST_F(FhrpMacAdd, OneMacOnTwoSvisIsTwoEntriesOfTheirVlans)
{
    const Lif &first = known_svi(100);
    const Lif &second = known_svi(200);
    EXPECT_EQ(add(first), 0);
    EXPECT_EQ(add(second), 0);
    EXPECT_EQ(kept(), (Calls{entry(first, 100, 1), entry(second, 200, 2)}));
}

TEST_F(FhrpMacAdd, UnitOfTheStationIsThePlatforms)
{
    const Lif &lif = known_port();
    fail("rtifhal_get_bcm_unit", 3);
    add(lif);
    ASSERT_EQ(calls_of({"bcm_l2_station_add"}).size(), 1U);
    EXPECT_TRUE(calls_of({"bcm_l2_station_add"})[0].starts_with("bcm_l2_station_add(3, {"));
}

TEST_F(FhrpMacAdd, ReadsNothingOfAnInterfaceWithoutPropertiesAndContext)
{
    Lif &lif = known_port();
    lif.without_properties();
    EXPECT_EQ(add(lif), 0);
    expect_installed(ON_PORT, entry(lif, ROUTED, 1));
}

} // namespace rtifhal_test::fhrp_mac_add
