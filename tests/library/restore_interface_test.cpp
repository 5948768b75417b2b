/*
 * restore_interface_test.cpp: the restore of an interface: its number, its
 * VLAN, and what ports and interfaces without ports of their own take up.
 */
#include "support/restore_roads.h"

#include <fmt/format.h>

#include <cstring>

namespace rtifhal_test::restore_interface
{

namespace
{

using namespace restore_road;
namespace if_index = simswitch::if_index;

constexpr int IIF = 7;
constexpr int PORT = 5;
constexpr std::uint16_t VLAN = 100;

/** Every number free and none held back, the reserved ones too. */
void forget_all_numbers()
{
    std::memset(l3lif_l3iif_table.bits, 0, sizeof l3lif_l3iif_table.bits);
    std::memset(l3lif_l3iif_table_preserve.bits, 0, sizeof l3lif_l3iif_table_preserve.bits);
}

Message type_unreadable(const Lif &lif)
{
    return report(RESTORE, "bcm_l3_ing_create(" + lif.decimal() + ") get type failed\n");
}

class RestoreInterface : public RestoreTest
{
protected:
    RestoreInterface() { globals_restored(); }
};

class RestorePort : public RestoreInterface
{
};

class RestoreInterfaceOnTrident2 : public RestoreTest
{
protected:
    RestoreInterfaceOnTrident2() : RestoreTest({.chip = Kind::trident2}) { globals_restored(); }
};

} // namespace

TEST_F(RestorePort, TakesItsNumberAndTheRoutedVlanUp)
{
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
    expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, IIF)});
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_EQ(all_in_use(), "0-2 7 3584-8191");
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{ROUTED});
    EXPECT_EQ(count_of_port_vlans(), 1);
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{5}");
}

TEST_F(RestoreInterfaceOnTrident2, PortMakesTheSameCalls)
{
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_record(7679)), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
    expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, 7679)});
    EXPECT_EQ(all_in_use(), "0-2 7679-8191");
}

TEST_F(RestorePort, StoredInternalVlanIsPrintedAsItWas)
{
    const auto lif = port(PORT);
    lif->lif.int_vlan = 77;
    restore(lif->with_record(IIF));
    expect_messages({entered(*lif, 0, 77), port_found(ROUTED, PORT, IIF)});
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
}

TEST_F(RestorePort, SubinterfaceTakesItsEncapsulationVlanUp)
{
    const auto main = port(PORT);
    const auto sub = subinterface(*main, 10);
    sub->lif.int_vlan = 12;
    EXPECT_EQ(restore(sub->with_record(IIF)), 0);
    expect_calls(port_restored(*sub, VLAN, PORT));
    expect_messages({entered(*sub, VLAN, 12), port_found(VLAN, PORT, IIF)});
    EXPECT_EQ(sub->lif.int_vlan, 12);
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{VLAN});
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(VLAN).text(), "{5}");
    EXPECT_EQ(main->lif.int_vlan, 0);
}

TEST_F(RestorePort, SubinterfaceIsNotCountedAmongTheUsesOfItsVlan)
{
    const auto main = port(PORT);
    const auto sub = subinterface(*main, 10);
    restore(sub->with_record(IIF));
    EXPECT_EQ(rtifhal_subint_count_vlan(VLAN), 0);
    EXPECT_EQ(rtifhal_is_vlan_svi(VLAN), 0);
}

TEST_F(RestorePort, PortAndItsSubinterfacesShareThePortsEntry)
{
    const auto main = port(PORT);
    const auto sub = subinterface(*main, 10);
    const auto second = subinterface(*main, 11);
    second->lif.si_encap_vlan = 4095;
    restore(main->with_record(7));
    restore(sub->with_record(8));
    restore(second->with_record(9));
    EXPECT_EQ(vlans_of(PORT), (std::vector<unsigned>{VLAN, ROUTED, 4095}));
    EXPECT_EQ(all_in_use(), "0-2 7-9 3584-8191");
}

TEST_F(RestorePort, RestoredAgainChangesNothing)
{
    const auto lif = port(PORT);
    restore(lif->with_record(IIF));
    start();
    EXPECT_EQ(restore(*lif), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
    expect_messages({entered(*lif, 0, ROUTED), port_found(ROUTED, PORT, IIF)});
    EXPECT_EQ(all_in_use(), "0-2 7 3584-8191");
    EXPECT_EQ(count_of_port_vlans(), 1);
}

TEST_F(RestorePort, FastRestartChangesNothing)
{
    sw.system.fast_restart = true;
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
    EXPECT_TRUE(sw.directory.updates().empty());
}

TEST_F(RestorePort, UnknownPortIsNoFailureAndSaysNothing)
{
    const auto lif = port(PORT);
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_port", code);
        EXPECT_EQ(restore(lif->with_record(IIF)), 0);
        expect_calls({called::type(*lif, 26), called::type(*lif, 26),
                      fmt::format("if_index_get_port({}) = {}", lif->index(), code)});
        EXPECT_EQ(reports(), Messages{});
        EXPECT_EQ(messages().size(), 1U);
        EXPECT_TRUE(in_use(IIF));
        EXPECT_EQ(count_of_port_vlans(), 0);
    }
}

TEST_F(RestorePort, TypeThatTheTranslatorCantReadIsNoFailureEither)
{
    const auto lif = port(PORT);
    fail("if_index_get_type", -1, 2);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 26), called::no_type(*lif)});
    expect_messages({entered(*lif, 0, 0)});
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestorePort, RefusedCacheIsNotLookedAt)
{
    const auto lif = port(PORT);
    fail("fwmpd_bcm_set_vlan_pbmp", -4);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, IIF)});
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{ROUTED});
}

TEST_F(RestorePort, PortBeyondTheTableIsCachedOnly)
{
    const auto last = port(104);
    const auto beyond = port(105);
    restore(last->with_record(7));
    restore(beyond->with_record(8));
    EXPECT_EQ(vlans_of(104), std::vector<unsigned>{ROUTED});
    EXPECT_EQ(count_of_port_vlans(), 1);
    EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{104,105}");
}

TEST_F(RestorePort, Port256IsHandedOnAndRefused)
{
    const auto lif = port(256);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    EXPECT_EQ(calls().back(), cached_port(ROUTED, 256, -4));
    EXPECT_EQ(messages().back(), port_found(ROUTED, 256, IIF));
    EXPECT_EQ(count_of_port_vlans(), 0);
}

TEST_F(RestorePort, VlanAbove4095IsHandedOnAndHasNoBit)
{
    const auto lif = port(PORT);
    for (const std::uint16_t vlan : {std::uint16_t{4096}, std::uint16_t{65535}}) {
        lif->lif.si_encap_vlan = vlan;
        EXPECT_EQ(restore(lif->with_record(IIF)), 0);
        EXPECT_EQ(calls().back(), cached_port(vlan, PORT, -4));
        EXPECT_EQ(messages().back(), port_found(vlan, PORT, IIF));
    }
    EXPECT_EQ(count_of_port_vlans(), 0);
}

TEST_F(RestorePort, PropertiesAreNotNeeded)
{
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_record(IIF).without_properties()), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
}

TEST_F(RestoreInterface, HeldBackNumberIsInUseAgainWhileTheConfigurationStillHoldsIt)
{
    globals_restored({50, 51});
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_record(50)), 0);
    expect_calls(port_restored(*lif, ROUTED, PORT));
    EXPECT_TRUE(in_use(50));
    EXPECT_EQ(all_held_back(), "51");
    EXPECT_TRUE(held_back_in_config(50));
    EXPECT_EQ(stored_held_back(), "nothing stored");
}

TEST_F(RestoreInterface, NumberLeavesTheStoredOnesWhenTheyAreNextStored)
{
    globals_restored({50, 51});
    const auto lif = port(PORT);
    restore(lif->with_record(50));
    take(60);
    EXPECT_EQ(rtifhal_free_l3iif(60, 1), 0);
    EXPECT_EQ(stored_held_back(), "51 60");
}

TEST_F(RestoreInterface, NumberIsNotHandedOutAgain)
{
    const auto lif = port(PORT);
    restore(lif->with_record(3));
    EXPECT_EQ(next_number(), 4);
}

TEST_F(RestoreInterface, NumberOfARestoredInterfaceIsNotEvenHandedOutWhenNothingElseIsFree)
{
    globals_restored({50, 51});
    const auto lif = port(PORT);
    restore(lif->with_record(50));
    take_all_free();
    EXPECT_EQ(next_number(), 51);
    EXPECT_EQ(next_number(), -1);
}

TEST_F(RestoreInterface, RestoredNumberCanBeGivenBack)
{
    const auto lif = port(PORT);
    restore(lif->with_record(IIF));
    EXPECT_EQ(rtifhal_free_l3iif(IIF, 0), 0);
    EXPECT_FALSE(in_use(IIF));
}

TEST_F(RestoreInterface, FirstAndLastNumberHaveABit)
{
    const auto lif = port(PORT);
    forget_all_numbers();
    restore(lif->with_record(0));
    const auto other = port(6);
    restore(other->with_record(8191));
    EXPECT_EQ(all_in_use(), "0 8191");
}

TEST_F(RestoreInterface, NumberAboveTheTableHasNoBit)
{
    // 9000 is where the held-back numbers may lie, behind those in use.
    for (const int number : {8192, 9000, 65535}) {
        const auto iif = static_cast<std::uint16_t>(number);
        const auto lif = port(PORT);
        start();
        EXPECT_EQ(restore(lif->with_record(iif)), 0);
        expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, iif)});
    }
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
    EXPECT_EQ(all_held_back(), "");
    EXPECT_EQ(l3lif_l3iif_table_preserve.size, 1024U);
    EXPECT_EQ(l3lif_l3iif_table_inited, 1U);
}

TEST_F(RestoreInterface, ParkedNumberIsNotLookedAt)
{
    const auto lif = port(PORT);
    forget_all_numbers();
    restore(lif->with_parked(50));
    EXPECT_EQ(all_in_use(), "0");
    expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, 0)});
}

TEST_F(RestoreInterface, WithoutARecordThereIsNoNumberAndTheVlanIsTakenUp)
{
    forget_all_numbers();
    hold_back(0);
    for (const bool bare : {false, true}) {
        const auto lif = port(PORT);
        start();
        EXPECT_EQ(restore(bare ? lif->with_bare_context() : *lif), 0);
        expect_calls(port_restored(*lif, ROUTED, PORT));
        expect_messages({entered(*lif, 0, 0), port_found(ROUTED, PORT, 0)});
        EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    }
    EXPECT_EQ(all_in_use(), "0");
    EXPECT_EQ(all_held_back(), "0");
    EXPECT_EQ(vlans_of(PORT), std::vector<unsigned>{ROUTED});
}

TEST_F(RestoreInterface, WithoutARecordNoBitIsSet)
{
    forget_all_numbers();
    const auto lif = port(PORT);
    EXPECT_EQ(restore(lif->with_bare_context()), 0);
    EXPECT_EQ(all_in_use(), "");
}

TEST_F(RestoreInterface, NullInterfaceMakesNoCall)
{
    EXPECT_EQ(rtifhal_trident_l3port_restore(nullptr), 0);
    expect_calls({});
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
}

TEST_F(RestoreInterface, TunnelTakesOnlyItsNumberAndTheRoutedVlan)
{
    const auto lif = tunnel(3);
    EXPECT_EQ(restore(lif->with_record(IIF)), 0);
    expect_calls({called::type(*lif, 24)});
    expect_messages({entered(*lif, 0, 0)});
    EXPECT_EQ(lif->lif.int_vlan, ROUTED);
    EXPECT_TRUE(in_use(IIF));
    EXPECT_EQ(count_of_port_vlans(), 0);
}

TEST_F(RestoreInterface, OtherKindsTakeOnlyTheirNumberAndTheRoutedVlan)
{
    Lif management(if_index::management(0));
    EXPECT_EQ(restore(management.with_record(IIF)), 0);
    expect_calls({called::type(management, 5)});
    expect_messages({entered(management, 0, 0)});
    EXPECT_EQ(management.lif.int_vlan, ROUTED);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestoreInterface, UnreadableIfindexIsReportedAndStillTakesItsNumber)
{
    globals_restored({50});
    Lif lif(0xF0000001);
    EXPECT_EQ(restore(lif.with_record(50)), 0);
    ASSERT_EQ(calls().size(), 1U);
    EXPECT_EQ(sw.journal.count("if_index_get_type"), 1U);
    expect_messages({entered(lif, 0, 0), type_unreadable(lif)});
    EXPECT_EQ(lif.decimal(), "-268435455");
    EXPECT_EQ(lif.lif.int_vlan, ROUTED);
    EXPECT_TRUE(in_use(50));
    EXPECT_FALSE(held_back(50));
}

TEST_F(RestoreInterface, RefusedTypeOfAPortLeavesItsVlanAlone)
{
    const auto lif = port(PORT);
    for (const int code : {-1, 1}) {
        start();
        fail("if_index_get_type", code);
        EXPECT_EQ(restore(lif->with_record(IIF)), 0);
        expect_calls({called::no_type(*lif, code)});
        expect_reports({type_unreadable(*lif)});
        EXPECT_EQ(count_of_port_vlans(), 0);
        EXPECT_EQ(sw.wrappers.cached_vlan_ports(ROUTED).text(), "{}");
    }
}

TEST_F(RestoreInterface, RefusedTypeOfASubinterfaceKeepsItsInternalVlan)
{
    const auto main = port(PORT);
    const auto sub = subinterface(*main, 10);
    fail("if_index_get_type", -1);
    EXPECT_EQ(restore(sub->with_record(IIF)), 0);
    expect_messages({entered(*sub, VLAN, 0), type_unreadable(*sub)});
    EXPECT_EQ(sub->lif.int_vlan, 0);
    EXPECT_TRUE(in_use(IIF));
}

TEST_F(RestoreInterface, StateIsLeftToTheAdd)
{
    const auto lif = port(PORT);
    restore(lif->with_record(IIF));
    EXPECT_EQ(lif->lif.lif_state, 0U);
    EXPECT_EQ(lif->record()->l3intf_id, IIF);
}

} // namespace rtifhal_test::restore_interface
