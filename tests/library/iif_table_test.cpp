/*
 * iif_table_test.cpp: the numbers of routed interfaces: what is reserved, which
 * number comes next, what is held back and stored.
 *
 * iif_exhaustion_test.cpp has what comes when all numbers of a chip are taken.
 */
#include "support/library_test.h"

#include "rtifhal_kelvo_trident/vlan/accounting.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>

#include <algorithm>
#include <cstring>

namespace rtifhal_test::iif_table
{

namespace
{

constexpr std::size_t IMAGE = 44;
constexpr std::size_t IMAGE_SIZE = 1024;
constexpr std::uint32_t UNTOUCHED = 0xABCDEF01;

const std::string INBAND = "fwmpd_inband_init() = 0";
const std::string STORE = "fwmpd_pss_globalc_store(store, config, 1) = 0";

bool is_set(const l3iif_bitmap_t &table, unsigned number)
{
    return (table.bits[number / 8] & 0x80U >> (number % 8)) != 0;
}

void set(l3iif_bitmap_t &table, unsigned number)
{
    table.bits[number / 8] =
        static_cast<std::uint8_t>(table.bits[number / 8] | 0x80U >> (number % 8));
}

void clear(l3iif_bitmap_t &table, unsigned number)
{
    table.bits[number / 8] =
        static_cast<std::uint8_t>(table.bits[number / 8] & ~(0x80U >> (number % 8)));
}

/** The numbers of a table as ranges: "0-2 3584-8191". */
std::string ranges(const l3iif_bitmap_t &table)
{
    std::string text;
    for (unsigned first = 0; first < 8192; ++first) {
        if (!is_set(table, first)) {
            continue;
        }
        unsigned last = first;
        while (last + 1 < 8192 && is_set(table, last + 1)) {
            ++last;
        }
        text += (text.empty() ? "" : " ") + std::to_string(first);
        text += last > first ? "-" + std::to_string(last) : "";
        first = last;
    }
    return text;
}

std::string taken()
{
    return ranges(l3lif_l3iif_table);
}
std::string held_back()
{
    return ranges(l3lif_l3iif_table_preserve);
}

/** The held-back numbers in a global configuration. */
std::string held_back_in(const unsigned char *config)
{
    l3iif_bitmap_t image = {};
    std::memcpy(image.bits, config + IMAGE, IMAGE_SIZE);
    return ranges(image);
}

std::string held_back_in_config()
{
    return held_back_in(fwmpd_global_config);
}

/** The next number, or -1. */
int allocate()
{
    std::uint32_t iif = UNTOUCHED;
    if (rtifhal_alloc_l3iif(&iif) != 0) {
        EXPECT_EQ(iif, UNTOUCHED);
        return -1;
    }
    return static_cast<int>(iif);
}

Message entered(int inited)
{
    return trace("l3iif_table_init",
                 " l3iif_table_init called with :" + std::to_string(inited) + " \n");
}

Message allocated(const std::string &hex)
{
    return trace("rtifhal_alloc_l3iif", " iif_index = 0x" + hex + "\n");
}

Message freed(const std::string &hex, int preserve)
{
    return trace("rtifhal_free_l3iif",
                 " iif_index = " + hex + " preserve = " + std::to_string(preserve) + "\n");
}

Message invalid(const std::string &hex)
{
    return report("rtifhal_free_l3iif", " Invalid l3iif_index = " + hex + "\n");
}

class IifTable : public LibraryTest
{
protected:
    /** The held-back numbers that a restart would find. */
    std::string held_back_in_store()
    {
        const auto config = sw.store.global_config();
        return config ? held_back_in(config->data()) : "nothing stored";
    }

    /** Sets the tables up, and looks only at what comes after. */
    void set_up()
    {
        l3iif_table_init();
        start();
    }

    /** Sets the tables up and takes all numbers. */
    void fill()
    {
        l3iif_table_init();
        std::memset(l3lif_l3iif_table.bits, 0xFF, sizeof l3lif_l3iif_table.bits);
        start();
    }
};

class IifTableOnTrident2 : public Trident2Test
{
};

} // namespace

TEST_F(IifTable, FirstAllocationSetsTheTablesUpWithFourEntryTraces)
{
    EXPECT_EQ(allocate(), 3);
    expect_messages({entered(0), entered(1), allocated("0"), entered(1), allocated("1"), entered(1),
                     allocated("2"), allocated("3")});
    expect_calls({INBAND, "bcm_pd_is_device_trident2() = 0", INBAND, INBAND, INBAND});
    EXPECT_EQ(l3lif_l3iif_table_inited, 1U);
}

TEST_F(IifTable, EntryIsTracedBeforeTheInbandSetUp)
{
    l3iif_table_init();
    ASSERT_GE(sw.journal.records().size(), 2U);
    EXPECT_EQ(sw.journal.records().front().function, "fwm_ds_trace_add");
}

TEST_F(IifTable, LaterAllocationOnlyTracesItsEntryAndItsNumber)
{
    set_up();
    EXPECT_EQ(allocate(), 3);
    expect_messages({entered(1), allocated("3")});
    expect_calls({INBAND});
}

TEST_F(IifTable, TridentKeeps0To2AndTheTop)
{
    l3iif_table_init();
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "");
    EXPECT_EQ(l3lif_l3iif_table.size, 1024U);
    EXPECT_EQ(l3lif_l3iif_table_preserve.size, 1024U);
}

TEST_F(IifTable, TridentWithSdnAgentKeepsALowRangeAndThreeAboveIt)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(allocate(), 1667);
    EXPECT_EQ(taken(), "0-1667 3584-8191");
}

TEST_F(IifTableOnTrident2, Keeps0To2AndASmallerTop)
{
    EXPECT_EQ(allocate(), 3);
    EXPECT_EQ(taken(), "0-3 7680-8191");
    EXPECT_EQ(calls_of({"bcm_pd_is_device_trident2"}),
              (std::vector<std::string>{"bcm_pd_is_device_trident2() = 1"}));
}

TEST_F(IifTableOnTrident2, WithSdnAgentKeepsALargerLowRange)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(allocate(), 3331);
    EXPECT_EQ(taken(), "0-3331 7680-8191");
}

TEST_F(IifTable, SdnAgentIsOnAt1Only)
{
    fwmpd_asic_sdn_agent_enabled = 2;
    EXPECT_EQ(allocate(), 3);
}

TEST_F(IifTable, SdnAgentCountsAtTheFirstUseOnly)
{
    set_up();
    fwmpd_asic_sdn_agent_enabled = 1;
    EXPECT_EQ(allocate(), 3);
}

TEST_F(IifTable, FirstUseClearsWhatTheTablesHeld)
{
    std::memset(&l3lif_l3iif_table, 0xFF, sizeof l3lif_l3iif_table);
    std::memset(&l3lif_l3iif_table_preserve, 0xFF, sizeof l3lif_l3iif_table_preserve);
    std::memset(rtifhal_port_vlan, 0xFF, sizeof rtifhal_port_vlan);
    l3iif_table_init();
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "");
    for (const auto &entry : rtifhal_port_vlan) {
        EXPECT_EQ(entry.bitmap_size, 512U);
        EXPECT_TRUE(std::all_of(std::begin(entry.vlan_bitmap), std::end(entry.vlan_bitmap),
                                [](std::uint8_t byte) { return byte == 0; }));
    }
}

TEST_F(IifTable, LaterUseLeavesTheTablesAlone)
{
    set_up();
    set(l3lif_l3iif_table, 77);
    set(l3lif_l3iif_table_preserve, 77);
    rtifhal_port_vlan[5].vlan_bitmap[511] = 0x02;
    l3iif_table_init();
    EXPECT_EQ(taken(), "0-2 77 3584-8191");
    EXPECT_EQ(held_back(), "77");
    EXPECT_EQ(rtifhal_port_vlan[5].vlan_bitmap[511], 0x02);
    expect_messages({entered(1)});
    expect_calls({INBAND});
}

TEST_F(IifTable, RestoreModeMarksTheRoutedStgInsteadOfTheInbandSetUp)
{
    g_fwm_pss_restore_mode = 1;
    EXPECT_EQ(allocate(), 3);
    EXPECT_EQ(l3_stg_allocated, 1U);
    EXPECT_EQ(l3_stg, 0);
    expect_calls({"bcm_pd_is_device_trident2() = 0"});
}

TEST_F(IifTable, RestoreModeMarksTheRoutedStgAtEveryCall)
{
    set_up();
    EXPECT_EQ(l3_stg_allocated, 0U);
    g_fwm_pss_restore_mode = 5;
    rtifhal_free_l3iif(1, 0);
    EXPECT_EQ(l3_stg_allocated, 1U);
    expect_calls({});
}

TEST_F(IifTable, RefusedInbandSetUpIsNotLookedAt)
{
    fail("fwmpd_inband_init", -1);
    EXPECT_EQ(allocate(), 3);
    expect_reports({});
}

TEST_F(IifTable, AllocationGivesTheLowestFreeNumber)
{
    set_up();
    for (int number = 3; number < 70; ++number) {
        EXPECT_EQ(allocate(), number);
    }
    EXPECT_EQ(rtifhal_free_l3iif(40, 0), 0);
    EXPECT_EQ(rtifhal_free_l3iif(31, 0), 0);
    EXPECT_EQ(allocate(), 31);
    EXPECT_EQ(allocate(), 40);
    EXPECT_EQ(allocate(), 70);
}

TEST_F(IifTable, AllocationLooksThroughAllWords)
{
    fill();
    for (const unsigned number : {0U, 31U, 32U, 4095U, 8160U, 8191U}) {
        clear(l3lif_l3iif_table, number);
        EXPECT_EQ(allocate(), static_cast<int>(number));
        EXPECT_EQ(taken(), "0-8191");
    }
}

TEST_F(IifTable, HeldBackNumberIsNotGivenWhileAnotherIsFree)
{
    set_up();
    EXPECT_EQ(allocate(), 3);
    rtifhal_free_l3iif(3, 1);
    EXPECT_EQ(allocate(), 4);
    EXPECT_EQ(held_back(), "3");
}

TEST_F(IifTable, LowestHeldBackNumberComesWhenNothingElseIsLeft)
{
    fill();
    set(l3lif_l3iif_table_preserve, 100);
    set(l3lif_l3iif_table_preserve, 50);
    EXPECT_EQ(allocate(), 50);
    EXPECT_EQ(taken(), "0-8191");
    EXPECT_EQ(held_back(), "100");
    EXPECT_EQ(held_back_in_config(), "100");
    expect_calls({INBAND, STORE});
    expect_messages({entered(1), allocated("32")});
    EXPECT_EQ(held_back_in_store(), "100");
    EXPECT_EQ(allocate(), 100);
    EXPECT_EQ(held_back_in_store(), "");
    EXPECT_EQ(allocate(), -1);
}

TEST_F(IifTable, RefusedStoreOfAReusedNumberIsNotLookedAt)
{
    fill();
    set(l3lif_l3iif_table_preserve, 8191);
    fail("fwmpd_pss_globalc_store", -1);
    EXPECT_EQ(allocate(), 8191);
    expect_messages({entered(1), allocated("1fff")});
}

TEST_F(IifTable, ExhaustionIsReportedAndStoresNothing)
{
    fill();
    EXPECT_EQ(allocate(), -1);
    expect_messages({entered(1), report("rtifhal_alloc_l3iif", "Failed to create l3iif")});
    expect_calls({INBAND});
}

TEST_F(IifTable, PlainFreeGivesTheNumberBackAndStoresNothing)
{
    set_up();
    EXPECT_EQ(allocate(), 3);
    start();
    EXPECT_EQ(rtifhal_free_l3iif(3, 0), 0);
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "");
    expect_calls({INBAND});
    expect_messages({entered(1), freed("3", 0)});
}

TEST_F(IifTable, PreserveFreeHoldsTheNumberBackAndStoresTheConfiguration)
{
    set_up();
    set(l3lif_l3iif_table, 300);
    std::memset(fwmpd_global_config, 0xA5, IMAGE);
    fwmpd_global_config[IMAGE + IMAGE_SIZE - 1] = 0xFF;
    EXPECT_EQ(rtifhal_free_l3iif(300, 1), 0);
    EXPECT_EQ(taken(), "0-2 300 3584-8191");
    EXPECT_EQ(held_back(), "300");
    EXPECT_EQ(held_back_in_config(), "300");
    EXPECT_EQ(held_back_in_store(), "300");
    EXPECT_TRUE(std::all_of(fwmpd_global_config, fwmpd_global_config + IMAGE,
                            [](unsigned char byte) { return byte == 0xA5; }));
    expect_calls({INBAND, STORE});
    expect_messages({entered(1), freed("12c", 1)});
}

TEST_F(IifTable, AnyNonzeroPreserveFlagHoldsBack)
{
    set_up();
    set(l3lif_l3iif_table, 300);
    EXPECT_EQ(rtifhal_free_l3iif(300, -2), 0);
    EXPECT_EQ(held_back(), "300");
    expect_messages({entered(1), freed("12c", -2)});
}

TEST_F(IifTable, PreserveFreeOfAHeldBackNumberStoresAgainAndChangesNoBit)
{
    set_up();
    set(l3lif_l3iif_table, 300);
    rtifhal_free_l3iif(300, 1);
    start();
    EXPECT_EQ(rtifhal_free_l3iif(300, 1), 0);
    EXPECT_EQ(taken(), "0-2 300 3584-8191");
    EXPECT_EQ(held_back(), "300");
    EXPECT_EQ(held_back_in_config(), "300");
    expect_calls({INBAND, STORE});
}

TEST_F(IifTable, PlainFreeOfAHeldBackNumberLeavesItHeldBack)
{
    set_up();
    set(l3lif_l3iif_table, 300);
    rtifhal_free_l3iif(300, 1);
    start();
    EXPECT_EQ(rtifhal_free_l3iif(300, 0), 0);
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "300");
    expect_calls({INBAND});
}

TEST_F(IifTable, RefusedStoreOfAHeldBackNumberIsNotLookedAt)
{
    set_up();
    set(l3lif_l3iif_table, 300);
    fail("fwmpd_pss_globalc_store", -1);
    EXPECT_EQ(rtifhal_free_l3iif(300, 1), 0);
    EXPECT_EQ(held_back(), "300");
    expect_messages({entered(1), freed("12c", 1)});
}

TEST_F(IifTable, Numbers0To2AreNeverGivenBack)
{
    set_up();
    for (const int number : {0, 1, 2}) {
        for (const int preserve : {0, 1}) {
            start();
            EXPECT_EQ(rtifhal_free_l3iif(number, preserve), 0);
            expect_messages({entered(1)});
            expect_calls({INBAND});
        }
    }
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "");
}

TEST_F(IifTable, Numbers0To2AreNeverGivenBackWithSdnAgentToo)
{
    fwmpd_asic_sdn_agent_enabled = 1;
    set_up();
    EXPECT_EQ(rtifhal_free_l3iif(2, 0), 0);
    EXPECT_EQ(rtifhal_free_l3iif(0, 1), 0);
    EXPECT_EQ(taken(), "0-1666 3584-8191");
    EXPECT_EQ(rtifhal_free_l3iif(1666, 0), 0);
    EXPECT_EQ(taken(), "0-1665 3584-8191");
}

TEST_F(IifTable, FreeNumberIsRefusedWhateverThePreserveFlag)
{
    set_up();
    for (const int preserve : {0, 1}) {
        start();
        EXPECT_EQ(rtifhal_free_l3iif(0x1f3, preserve), -1);
        expect_messages({entered(1), invalid("1f3")});
        expect_calls({INBAND});
    }
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(held_back(), "");
}

TEST_F(IifTable, NumberOutsideTheTableIsRefusedAsFree)
{
    fill();
    const std::vector<std::pair<int, std::string>> outside = {
        {-1, "ffffffff"}, {8192, "2000"}, {INT32_MAX, "7fffffff"}, {INT32_MIN, "80000000"}};
    for (const auto &[number, hex] : outside) {
        for (const int preserve : {0, 1}) {
            start();
            EXPECT_EQ(rtifhal_free_l3iif(number, preserve), -1);
            expect_messages({entered(1), invalid(hex)});
        }
    }
    EXPECT_EQ(rtifhal_free_l3iif(8191, 0), 0);
    EXPECT_EQ(taken(), "0-8190");
}

TEST_F(IifTable, FreeAsTheFirstCallSetsTheTablesUp)
{
    EXPECT_EQ(rtifhal_free_l3iif(7, 0), -1);
    EXPECT_EQ(taken(), "0-2 3584-8191");
    EXPECT_EQ(calls_of({"fwmpd_inband_init"}).size(), 4U);
    expect_reports({invalid("7")});
}

} // namespace rtifhal_test::iif_table
