/*
 * restore_roads.cpp: see restore_roads.h.
 */
#include "support/restore_roads.h"

#include "rtifhal_trident.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <stdexcept>

namespace rtifhal_test::restore_road
{

namespace
{

constexpr unsigned NUMBERS = 8192;
constexpr unsigned VLANS = 4096;
constexpr int PORTS = 105;
constexpr int TYPE_PORT = 26;

bool is_set(const std::uint8_t *bits, unsigned number)
{
    return (bits[number / 8] & (0x80U >> (number % 8))) != 0;
}

} // namespace

RestoreTest::RestoreTest(const simswitch::Options &options)
    : LibraryTest(options), writes_before_(sw.chip.writes),
      chip_before_(simswitch::chip::snapshot(sw.chip))
{
    g_fwm_pss_restore_mode = 1;
}

void RestoreTest::TearDown()
{
    EXPECT_EQ(sw.chip.writes, writes_before_);
    EXPECT_EQ(simswitch::chip::snapshot(sw.chip), chip_before_);
    EXPECT_EQ(sw.wrappers.pending_text(), std::vector<std::string>{});
    EXPECT_TRUE(sw.wrappers.own_flushes().empty());
}

void RestoreTest::globals_restored(std::initializer_list<unsigned> held_back)
{
    for (const unsigned iif : held_back) {
        config_holds_back(iif);
    }
    ASSERT_EQ(rtifhal_trident_pss_restore_global_context(), 0);
    start();
}

std::string RestoreTest::stored_held_back()
{
    const auto config = sw.store.global_config();
    if (!config) {
        return "nothing stored";
    }
    l3iif_bitmap_t image = {};
    std::memcpy(image.bits, config->data() + simswitch::services::GLOBAL_CONFIG_PRESERVE,
                sizeof image.bits);
    return ranges(image);
}

void config_holds_back(unsigned iif)
{
    unsigned char &byte =
        fwmpd_global_config[simswitch::services::GLOBAL_CONFIG_PRESERVE + iif / 8];
    byte = static_cast<unsigned char>(byte | (0x80U >> (iif % 8)));
}

std::string ranges(const l3iif_bitmap_t &table)
{
    std::string text;
    for (unsigned first = 0; first < NUMBERS; ++first) {
        if (!is_set(table.bits, first)) {
            continue;
        }
        unsigned last = first;
        while (last + 1 < NUMBERS && is_set(table.bits, last + 1)) {
            ++last;
        }
        text += fmt::format("{}{}", text.empty() ? "" : " ", first);
        text += last > first ? fmt::format("-{}", last) : "";
        first = last;
    }
    return text;
}

std::string all_in_use()
{
    return ranges(l3lif_l3iif_table);
}

std::string all_held_back()
{
    return ranges(l3lif_l3iif_table_preserve);
}

std::vector<unsigned> vlans_of(int port)
{
    std::vector<unsigned> vlans;
    for (unsigned vlan = 0; vlan < VLANS; ++vlan) {
        if (is_set(rtifhal_port_vlan[port].vlan_bitmap, vlan)) {
            vlans.push_back(vlan);
        }
    }
    return vlans;
}

int count_of_port_vlans()
{
    std::size_t count = 0;
    for (int port = 0; port < PORTS; ++port) {
        count += vlans_of(port).size();
    }
    return static_cast<int>(count);
}

int next_number()
{
    std::uint32_t iif = 0;
    return rtifhal_alloc_l3iif(&iif) == 0 ? static_cast<int>(iif) : -1;
}

void take_all_free()
{
    std::memset(l3lif_l3iif_table.bits, 0xFF, sizeof l3lif_l3iif_table.bits);
}

Message entered(const Lif &lif, int si_encap_vlan, int int_vlan)
{
    return trace(RESTORE, fmt::format("intf ({}) si:{} int-vlan:{} \n", lif.index(), si_encap_vlan,
                                      int_vlan));
}

Message port_found(int vlan, int port, int iif)
{
    return trace(RESTORE, fmt::format(" vid {} bcm {} index {}\n", vlan, port, iif));
}

std::string cached_port(int vlan, int port, int code)
{
    return fmt::format("fwmpd_bcm_set_vlan_pbmp({}, {}) = {}", vlan, port, code);
}

Calls port_restored(const Lif &lif, int vlan, int port)
{
    return {called::type(lif, TYPE_PORT), called::type(lif, TYPE_PORT), called::port_of(lif, port),
            cached_port(vlan, port)};
}

Message tables_entered(int inited)
{
    return trace("l3iif_table_init", fmt::format(" l3iif_table_init called with :{} \n", inited));
}

StoredLif::StoredLif(const simswitch::services::StoredInterface &stored)
    : lif(std::make_unique<Lif>(stored.ifindex))
{
    std::ranges::copy(stored.mac, lif->lif.mac);
    lif->lif.int_vlan = stored.int_vlan;
    lif->lif.vlan = stored.vlan;
    lif->lif.si_encap_vlan = stored.si_encap_vlan;
    lif->lif.tid = stored.tid;
    if (stored.properties) {
        lif->properties = *stored.properties;
    } else {
        lif->without_properties();
    }
    if (stored.hardware) {
        lif->with_record(0);
        *lif->record() = *stored.hardware;
    }
    for (const std::uint32_t ifindex : stored.members.value_or(std::vector<std::uint32_t>{})) {
        members.push_back(std::make_unique<Lif>(ifindex));
        tree.insert(members.back()->get());
    }
    lif->lif.pc_member_tree = stored.members ? tree.get() : nullptr;
}

std::unique_ptr<StoredLif> from_store(simswitch::Switch &sw, std::uint32_t ifindex)
{
    const auto stored = sw.store.stored_interface(ifindex);
    if (!stored) {
        throw std::runtime_error(fmt::format("interface {:#x} is not in the store", ifindex));
    }
    return std::make_unique<StoredLif>(*stored);
}

void restart(simswitch::Switch &sw)
{
    sw.wrappers.drop_pending();
    sw.wrappers.rebuild_caches();
    sw.directory.clear();
    reset_library();
    const auto config = sw.store.global_config().value_or(simswitch::services::GlobalConfig{});
    std::ranges::copy(config, fwmpd_global_config);
    g_fwm_pss_restore_mode = 1;
}

} // namespace rtifhal_test::restore_road
