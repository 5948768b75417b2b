/*
 * restore_global_test.cpp: the restore of the global context: which numbers
 * are free after a restart, and which are held back.
 */
#include "support/restore_roads.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>

#include <algorithm>
#include <fmt/format.h>

namespace rtifhal_test::restore_global
{

namespace
{

using namespace restore_road;

class RestoreGlobals : public RestoreTest
{
};

class RestoreGlobalsOnTrident2 : public RestoreTest
{
protected:
    RestoreGlobalsOnTrident2() : RestoreTest({.chip = Kind::trident2}) {}
};

/** The messages of a first restore; `first`: the first of the three reserved numbers. */
Messages first_messages(int first)
{
    Messages messages = {
        trace(RESTORE_GLOBALS, " " + RESTORE_GLOBALS + "()restored global context\n"),
        tables_entered(0)};
    for (int number = first; number < first + 3; ++number) {
        messages.push_back(tables_entered(1));
        messages.push_back(
            trace("rtifhal_alloc_l3iif", fmt::format(" iif_index = 0x{:x}\n", number)));
    }
    return messages;
}

} // namespace

TEST_F(RestoreGlobals, FirstCallSetsTheTablesUpAndAsksOnlyForTheChip)
{
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_calls({called::trident2(0)});
    expect_messages(first_messages(0));
    EXPECT_EQ(l3lif_l3iif_table_inited, 1U);
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
    EXPECT_EQ(all_held_back(), "");
}

TEST_F(RestoreGlobalsOnTrident2, FirstCallSetsTheTablesUpAndAsksOnlyForTheChip)
{
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_calls({called::trident2(1)});
    expect_messages(first_messages(0));
    EXPECT_EQ(all_in_use(), "0-2 7680-8191");
}

TEST_F(RestoreGlobals, SdnAgentKeepsItsRange)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_messages(first_messages(1664));
    EXPECT_EQ(all_in_use(), "0-1666 3584-8191");
}

TEST_F(RestoreGlobalsOnTrident2, SdnAgentKeepsItsRange)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    config_holds_back(3331);
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_messages(first_messages(3328));
    EXPECT_EQ(all_in_use(), "0-3331 7680-8191");
    EXPECT_EQ(all_held_back(), "3331");
}

TEST_F(RestoreGlobals, InbandPathIsLeftAlone)
{
    globals_restored();
    EXPECT_EQ(sw.host.inband_inits, 0U);
}

TEST_F(RestoreGlobals, RoutedGroupCountsAsAllocatedWithoutAnId)
{
    globals_restored();
    EXPECT_EQ(l3_stg_allocated, 1U);
    EXPECT_EQ(l3_stg, 0);
}

TEST_F(RestoreGlobals, PortsHoldNoVlan)
{
    globals_restored();
    EXPECT_EQ(count_of_port_vlans(), 0);
    EXPECT_TRUE(std::ranges::all_of(rtifhal_port_vlan,
                                    [](const auto &entry) { return entry.bitmap_size == 512U; }));
}

TEST_F(RestoreGlobals, HeldBackNumbersComeFromTheConfigurationAndAreNotFree)
{
    globals_restored({3, 50, 100, 101, 3583});
    EXPECT_EQ(all_held_back(), "3 50 100-101 3583");
    EXPECT_EQ(all_in_use(), "0-3 50 100-101 3583-8191");
}

TEST_F(RestoreGlobals, FirstAndLastBitOfTheImageAreTaken)
{
    globals_restored({0, 8191});
    EXPECT_EQ(all_held_back(), "0 8191");
    EXPECT_EQ(all_in_use(), "0-2 3584-8191");
}

TEST_F(RestoreGlobals, NothingBeforeTheImageIsRead)
{
    std::fill_n(fwmpd_global_config, simswitch::services::GLOBAL_CONFIG_PRESERVE,
                static_cast<unsigned char>(0xFF));
    globals_restored();
    EXPECT_EQ(all_held_back(), "");
}

TEST_F(RestoreGlobals, ConfigurationIsNeitherChangedNorStored)
{
    config_holds_back(50);
    simswitch::services::GlobalConfig before = {};
    std::copy_n(fwmpd_global_config, before.size(), before.begin());
    globals_restored();
    EXPECT_TRUE(std::equal(before.begin(), before.end(), fwmpd_global_config));
    EXPECT_EQ(stored_held_back(), "nothing stored");
}

TEST_F(RestoreGlobals, OldHeldBackNumbersAreReplacedAndStayInUse)
{
    l3iif_table_init();
    take(60);
    l3lif_l3iif_table_preserve.bits[60 / 8] = 0x80U >> (60 % 8);
    l3lif_l3iif_table_preserve.size = 7;
    globals_restored({50});
    EXPECT_EQ(l3lif_l3iif_table_preserve.size, 1024U);
    EXPECT_EQ(all_held_back(), "50");
    EXPECT_EQ(all_in_use(), "0-2 50 60 3584-8191");
}

TEST_F(RestoreGlobals, SecondCallSetsNothingUpAgain)
{
    globals_restored({50});
    take(7);
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_calls({});
    expect_messages({trace(RESTORE_GLOBALS, " " + RESTORE_GLOBALS + "()restored global context\n"),
                     tables_entered(1)});
    EXPECT_EQ(all_held_back(), "50");
    EXPECT_EQ(all_in_use(), "0-2 7 50 3584-8191");
}

TEST_F(RestoreGlobals, SecondCallHoldsANumberBackThatAnInterfaceHasTakenUpSince)
{
    globals_restored({50});
    const auto lif = port(5);
    ASSERT_EQ(restore(lif->with_record(50)), 0);
    ASSERT_FALSE(held_back(50));
    globals_restored();
    EXPECT_TRUE(held_back(50));
    EXPECT_TRUE(in_use(50));
    EXPECT_EQ(vlans_of(5), std::vector<unsigned>{ROUTED});
}

TEST_F(RestoreGlobals, NextNumberIsTheLowestThatNobodyHas)
{
    globals_restored({3, 5});
    EXPECT_EQ(next_number(), 4);
    EXPECT_EQ(next_number(), 6);
    EXPECT_TRUE(held_back(3));
    EXPECT_EQ(stored_held_back(), "nothing stored");
}

TEST_F(RestoreGlobalsOnTrident2, NextNumberIsAboveTheSdnAgents)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    globals_restored({3331});
    EXPECT_EQ(next_number(), 3332);
}

TEST_F(RestoreGlobals, HeldBackNumberIsHandedOutWhenNothingElseIsFree)
{
    globals_restored({100, 50});
    take_all_free();
    EXPECT_EQ(next_number(), 50);
    EXPECT_EQ(stored_held_back(), "100");
    EXPECT_EQ(next_number(), 100);
    EXPECT_EQ(stored_held_back(), "");
    EXPECT_EQ(next_number(), -1);
}

TEST_F(RestoreGlobals, AllocationInRestoreModeLeavesTheInbandPathAlone)
{
    globals_restored();
    EXPECT_EQ(next_number(), 3);
    expect_calls({});
}

TEST_F(RestoreGlobals, OutsideRestoreModeTheSetUpIsTheOrdinaryOne)
{
    g_fwm_pss_restore_mode = 0;
    config_holds_back(50);
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_calls({called::inband_init(), called::trident2(0), called::inband_init(),
                  called::inband_init(), called::inband_init()});
    EXPECT_EQ(l3_stg_allocated, 0U);
    EXPECT_TRUE(held_back(50));
    EXPECT_TRUE(in_use(50));
}

TEST_F(RestoreGlobals, FastRestartChangesNothing)
{
    sw.system.fast_restart = true;
    EXPECT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    expect_calls({called::trident2(0)});
    expect_messages(first_messages(0));
}

} // namespace rtifhal_test::restore_global
