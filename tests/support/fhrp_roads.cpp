/*
 * fhrp_roads.cpp: see fhrp_roads.h.
 */
#include "support/fhrp_roads.h"

#include "rtifhal_kelvo_trident/station/fhrp_mac.h"
#include "rtifhal_kelvo_trident/station/pvlan_svi.h"
#include "services/ifindex.h"
#include "services/tree.h"

#include <sdk/error.h>

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace rtifhal_test::fhrp_road
{

std::string Address::text() const
{
    return fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", bytes[0], bytes[1], bytes[2],
                       bytes[3], bytes[4], bytes[5]);
}

FhrpTest::FhrpTest(const simswitch::Options &options) : LibraryTest(options) {}

Lif &FhrpTest::known(std::unique_ptr<Lif> lif)
{
    sw.directory.add(lif->get());
    lifs_.push_back(std::move(lif));
    start();
    return *lifs_.back();
}

void FhrpTest::vlan_is(std::uint16_t vlan, Role role)
{
    using simswitch::fwm::PrivateVlan;
    auto &vlans = sw.host.vlans;
    if (vlans.has(vlan)) {
        vlans.remove(vlan);
    }
    switch (role) {
    case Role::unknown:
        break;
    case Role::plain:
        vlans.add(vlan, PrivateVlan::none);
        break;
    case Role::secondary:
        vlans.add(vlan, PrivateVlan::secondary);
        break;
    case Role::primary:
        vlans.add(vlan, PrivateVlan::primary);
        break;
    }
}

void FhrpTest::announced(const std::vector<Pair> &pairs)
{
    for (const Pair &pair : pairs) {
        rtifhal_kelvo_pvlan_svi_mapping_update(pair.primary, pair.secondary, 1);
    }
    start();
}

Lif &FhrpTest::primary_svi(const std::vector<std::uint32_t> &secondaries, std::uint16_t vlan)
{
    vlan_is(vlan, Role::primary);
    for (const std::uint32_t secondary : secondaries) {
        announced({{vlan, secondary}});
    }
    return known_svi(vlan);
}

void FhrpTest::saved(const Lif &lif, const Address &mac, std::uint16_t vlan, int station)
{
    if (rtifhal_fhrp_mac_save(lif.lif.ifindex, mac.bytes, vlan, station) != 0) {
        throw std::runtime_error("the entry to start from was not kept");
    }
    start();
}

void FhrpTest::added(const Lif &lif, const Address &mac)
{
    const std::size_t before = kept().size();
    if (add(lif, mac) != 0 || kept().size() == before) {
        throw std::runtime_error("the virtual MAC to start from was not added");
    }
    start();
}

void FhrpTest::lost(int station)
{
    if (!sw.chip.stations.remove(station).ok()) {
        throw std::runtime_error("the station to be lost is not there");
    }
}

int FhrpTest::add(const Lif &lif, const Address &mac)
{
    return rtifhal_trident_fhrp_mac_add(mac.bytes, lif.lif.ifindex);
}

int FhrpTest::del(const Lif &lif, const Address &mac)
{
    return rtifhal_trident_fhrp_mac_del(mac.bytes, lif.lif.ifindex);
}

std::vector<std::string> FhrpTest::stations() const
{
    std::vector<std::string> lines;
    for (const auto &[id, station] : sw.chip.stations.all()) {
        lines.push_back(
            in_chip(id, fmt::format("{{flags={:#x} mac={}/{} vlan={}/{} port={}/{}}}",
                                    station.flags, simswitch::chip::text(station.mac),
                                    simswitch::chip::text(station.mac_mask), station.vlan,
                                    station.vlan_mask, station.src_port, station.src_port_mask)));
    }
    return lines;
}

std::vector<std::string> kept()
{
    std::vector<std::string> lines;
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto &found = *static_cast<const fhrp_mac_entry_t *>(record);
        Address mac{};
        std::copy_n(found.mac, sizeof mac.bytes, mac.bytes);
        lines.push_back(fmt::format("{:#x} {} {} @{}", found.ifindex, found.vlan, mac.text(),
                                    found.station_id));
    }
    return lines;
}

std::string entry(const Lif &lif, unsigned vlan, int station, const Address &mac)
{
    return fmt::format("{} {} {} @{}", lif.index(), vlan, mac.text(), station);
}

std::vector<Pair> pairs_in_order()
{
    std::vector<Pair> pairs;
    if (pvlan_svi_map != nullptr) {
        GHashTableIter walk;
        gpointer value = nullptr;
        g_hash_table_iter_init(&walk, pvlan_svi_map);
        while (g_hash_table_iter_next(&walk, nullptr, &value) != 0) {
            const auto &pair = *static_cast<const pvlan_svi_pair *>(value);
            pairs.push_back({pair.primary, pair.secondary});
        }
    }
    return pairs;
}

std::vector<std::uint32_t> secondaries_in_order(std::uint32_t primary)
{
    std::vector<std::uint32_t> secondaries;
    for (const Pair &pair : pairs_in_order()) {
        if (pair.primary == primary) {
            secondaries.push_back(pair.secondary);
        }
    }
    return secondaries;
}

std::string in_chip(int id, const std::string &record)
{
    return fmt::format("{} {}", id, record);
}

std::string station(const std::string &flags, const Address &mac, const std::string &vlan,
                    const std::string &port)
{
    return fmt::format("{{flags={} mac={}/ff:ff:ff:ff:ff:ff vlan={} port={}}}", flags, mac.text(),
                       vlan, port);
}

Calls add_begins(const Lif &lif, int type)
{
    return {called::unit(), fmt::format("l3lif_find_lif_from_ifindex({}) = record", lif.index()),
            called::type(lif, type), "bcm_l2_station_t_init()"};
}

Calls delete_begins(const Lif &lif, int type)
{
    return {called::unit(), called::type(lif, type),
            fmt::format("l3lif_find_lif_from_ifindex({}) = record", lif.index())};
}

std::string looked_up(bool found)
{
    return fmt::format("avl_find(tree, record) = {}", found ? "record" : "null");
}

std::string sub_asked(const Lif &lif)
{
    using simswitch::if_index::Kind;
    const auto parts = simswitch::if_index::parts(lif.lif.ifindex).value();
    const bool may_have = parts.kind == Kind::port || parts.kind == Kind::port_channel;
    return fmt::format("if_index_get_sub_intf({}) = {}", lif.index(),
                       may_have ? fmt::format("0 [number={}]", parts.sub) : "1");
}

Calls port_asked(const Lif &lif, int sdk_port)
{
    constexpr int type_port = 26;
    return {called::type(lif, type_port), called::port_of(lif, sdk_port)};
}

Calls role_asked(unsigned vlan, Role role)
{
    const std::string find = fmt::format("FWM_FWIM_FIND_VLAN(1, {}) = ", vlan);
    const std::string pvlan = "FWM_FWIM_VLAN_PVLAN(record) = ";
    const std::string primary = "FWM_FWIM_PVLAN_IS_PRIMARY(record) = ";
    switch (role) {
    case Role::unknown:
        return {find + "null"};
    case Role::plain:
        return {find + "record", pvlan + "null"};
    case Role::secondary:
        return {find + "record", pvlan + "record", primary + "0"};
    case Role::primary:
        break;
    }
    return {find + "record", pvlan + "record", primary + "1"};
}

Calls station_added(const std::string &record, int id)
{
    return {called::flush(), fmt::format("bcm_l2_station_add(0, {}) = 0 [id={}]", record, id)};
}

Calls station_refused(const std::string &record, int code)
{
    return {called::flush(), fmt::format("bcm_l2_station_add(0, {}) = {}", record, code)};
}

Calls station_deleted(int id, int code)
{
    return {called::flush(), fmt::format("bcm_l2_station_delete(0, {}) = {}", id, code)};
}

Calls entry_saved(bool first)
{
    const std::string taken = fmt::format("malloc({}) = record", sizeof(fhrp_mac_entry_t));
    const std::string inserted = "avl_insert(tree, record) = 0";
    return first ? Calls{taken, "avl_create(compare, 0) = record", inserted}
                 : Calls{taken, inserted};
}

Calls entry_removed()
{
    return {looked_up(true), "avl_delete(tree, record) = record", "free(record)"};
}

Message now_at(const std::string &function, int id, const Address &mac)
{
    return trace(function, fmt::format("fhrp mac ({}) @ idx:{}\n", mac.text(), id));
}

Message failed(const std::string &function, int code, const Address &mac)
{
    return report(function,
                  fmt::format("fhrp mac ({}) failed: {}\n", mac.text(), _shr_errmsg[-code]));
}

} // namespace rtifhal_test::fhrp_road
