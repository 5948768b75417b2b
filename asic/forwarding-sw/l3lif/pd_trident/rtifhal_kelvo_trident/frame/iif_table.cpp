/*
 * iif_table.cpp: the numbers of routed interfaces in the chip.
 *
 * One number is an interface's L3 interface id, its ingress object's id and
 * its bit here. A number given up by a destroyed interface is held back while
 * free ones remain, so that what still names it in the chip doesn't soon name
 * another interface; the held-back numbers outlive a restart in the global
 * configuration.
 */
#include "frame/iif_table.h"

#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <string.h>

l3iif_bitmap_t l3lif_l3iif_table;
l3iif_bitmap_t l3lif_l3iif_table_preserve;
uint32_t l3lif_l3iif_table_inited;
uint32_t fwmpd_asic_sdn_agent_enabled;

namespace
{

constexpr uint32_t TABLE_BYTES = 1024;
constexpr int TABLE_NUMBERS = 8192;
constexpr size_t TABLE_WORDS = TABLE_BYTES / sizeof(uint64_t);

/** Where the held-back numbers stand in the global configuration. */
constexpr int GLOBAL_CONFIG_PRESERVE = 44;

/** First number of the range that the chip keeps for itself. */
constexpr int TRIDENT_TOP = 3584;
constexpr int TRIDENT_TOP_MIDDLE = 4096;
constexpr int TRIDENT2_TOP = 7680;

/** Length of the range that the SDN agent takes from 0 on. */
constexpr int TRIDENT_SDN_RANGE = 1664;
constexpr int TRIDENT2_SDN_RANGE = 3328;

/** Numbers that the first set-up takes and throws away. */
constexpr int DISCARDED_NUMBERS = 3;

/** Set up with the others, and used by nobody. */
struct {
    uint32_t size;
    uint8_t bits[512];
} l3iif_spare_table;

uint8_t mask_of(int number)
{
    return static_cast<uint8_t>(0x80 >> (number % 8));
}

bool is_set(const l3iif_bitmap_t &table, int number)
{
    return number >= 0 && number < TABLE_NUMBERS && (table.bits[number / 8] & mask_of(number)) != 0;
}

void set_bit(l3iif_bitmap_t &table, int number)
{
    table.bits[number / 8] |= mask_of(number);
}

void clear_bit(l3iif_bitmap_t &table, int number)
{
    table.bits[number / 8] &= static_cast<uint8_t>(~mask_of(number));
}

void set_range(l3iif_bitmap_t &table, int first, int end)
{
    for (int number = first; number < end; ++number) {
        set_bit(table, number);
    }
}

/** The lowest number whose bit is `wanted`, -1 if there is none; 64 numbers at a time. */
int find_lowest(const l3iif_bitmap_t &table, bool wanted)
{
    for (size_t index = 0; index < TABLE_WORDS; ++index) {
        uint64_t word;
        memcpy(&word, &table.bits[index * sizeof word], sizeof word);
        // The lowest number is the top bit of the first byte.
        word = __builtin_bswap64(wanted ? word : ~word);
        if (word != 0) {
            return static_cast<int>(index) * 64 + __builtin_clzll(word);
        }
    }
    return -1;
}

void store_preserved()
{
    memcpy(&fwmpd_global_config[GLOBAL_CONFIG_PRESERVE], l3lif_l3iif_table_preserve.bits,
           TABLE_BYTES);
    (void)rtifhal_trident_pss_globalc_store();
}

/** Marks what the chip keeps for itself; gives the length of the SDN agent's range. */
int reserve_device_range()
{
    if (bcm_pd_is_device_trident2() != 0) {
        set_range(l3lif_l3iif_table, TRIDENT2_TOP, TABLE_NUMBERS);
        return TRIDENT2_SDN_RANGE;
    }
    set_range(l3lif_l3iif_table, TRIDENT_TOP, TRIDENT_TOP_MIDDLE);
    set_range(l3lif_l3iif_table, TRIDENT_TOP_MIDDLE, TABLE_NUMBERS);
    return TRIDENT_SDN_RANGE;
}

void init_port_tables()
{
    l3iif_spare_table.size = sizeof l3iif_spare_table.bits;
    memset(l3iif_spare_table.bits, 0, sizeof l3iif_spare_table.bits);
    for (auto &entry : rtifhal_port_vlan) {
        entry.bitmap_size = PORT_VLAN_BITMAP_SIZE;
        memset(entry.vlan_bitmap, 0, sizeof entry.vlan_bitmap);
    }
}

} // namespace

bool is_iif_preserved(int iif)
{
    return is_set(l3lif_l3iif_table_preserve, iif);
}

void take_preserved_iif(int iif)
{
    clear_bit(l3lif_l3iif_table_preserve, iif);
    store_preserved();
}

void restore_preserved_iifs()
{
    l3lif_l3iif_table_preserve.size = TABLE_BYTES;
    memcpy(l3lif_l3iif_table_preserve.bits, &fwmpd_global_config[GLOBAL_CONFIG_PRESERVE],
           TABLE_BYTES);
    for (uint32_t i = 0; i < TABLE_BYTES; ++i) {
        l3lif_l3iif_table.bits[i] |= l3lif_l3iif_table_preserve.bits[i];
    }
}

void restore_iif(int iif)
{
    if (iif >= 0 && iif < TABLE_NUMBERS) {
        set_bit(l3lif_l3iif_table, iif);
        clear_bit(l3lif_l3iif_table_preserve, iif);
    }
}

void l3iif_table_init(void)
{
    TRACE(" %s called with :%d \n", __func__, l3lif_l3iif_table_inited);
    if (g_fwm_pss_restore_mode != 0) {
        // The chip still has the group of VLAN 4094: no second one.
        l3_stg_allocated = 1;
    } else {
        (void)fwmpd_inband_init();
    }
    if (l3lif_l3iif_table_inited != 0) {
        return;
    }

    l3lif_l3iif_table.size = TABLE_BYTES;
    memset(l3lif_l3iif_table.bits, 0, TABLE_BYTES);
    const int sdn_range = reserve_device_range();
    if (fwmpd_asic_sdn_agent_enabled == 1) {
        set_range(l3lif_l3iif_table, 0, sdn_range);
    }
    l3lif_l3iif_table_preserve.size = TABLE_BYTES;
    memset(l3lif_l3iif_table_preserve.bits, 0, TABLE_BYTES);

    // Before the allocator, which comes back here.
    l3lif_l3iif_table_inited = 1;
    for (int i = 0; i < DISCARDED_NUMBERS; ++i) {
        uint32_t discarded;
        (void)rtifhal_alloc_l3iif(&discarded);
    }
    init_port_tables();
}

int rtifhal_alloc_l3iif(uint32_t *iif)
{
    l3iif_table_init();

    int number = find_lowest(l3lif_l3iif_table, false);
    if (number >= 0) {
        set_bit(l3lif_l3iif_table, number);
    } else {
        number = find_lowest(l3lif_l3iif_table_preserve, true);
        if (number < 0) {
            REPORT("Failed to create l3iif");
            return -1;
        }
        take_preserved_iif(number);
        set_bit(l3lif_l3iif_table, number);
    }

    *iif = static_cast<uint32_t>(number);
    TRACE(" iif_index = 0x%x\n", *iif);
    return 0;
}

int rtifhal_free_l3iif(int iif, int preserve)
{
    l3iif_table_init();
    if (iif >= 0 && iif < IIF_FIRST_RETURNABLE) {
        return 0;
    }
    if (!is_set(l3lif_l3iif_table, iif)) {
        REPORT(" Invalid l3iif_index = %x\n", iif);
        return -1;
    }
    TRACE(" iif_index = %x preserve = %d\n", iif, preserve);
    if (preserve != 0) {
        set_bit(l3lif_l3iif_table_preserve, iif);
        store_preserved();
    } else {
        clear_bit(l3lif_l3iif_table, iif);
    }
    return 0;
}
