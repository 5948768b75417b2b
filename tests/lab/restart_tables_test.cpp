/*
 * restart_tables_test.cpp: what a restore rebuilds: the same configuration,
 * once brought up and once restored, table by table. What differs is what
 * docs/restart.md lists, no more and no less.
 */
#include "restart_run.h"

#include "rtifhal_kelvo_trident/station/pvlan_svi.h"
#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_trident.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace
{

namespace chip = simswitch::chip;
using lab_test::bytes_of;
using lab_test::example;
using lab_test::Kind;
using lab_test::Process;
using lab_test::source_path;

/** Bytes as hex, of which only equality counts. */
std::string hex(const void *bytes, std::size_t size)
{
    const auto *first = static_cast<const unsigned char *>(bytes);
    return fmt::format("{:02x}", fmt::join(first, first + size, ""));
}

std::string virtual_macs()
{
    std::string text;
    for (const void *record : simswitch::services::tree_records(fhrp_mac_hash)) {
        const auto &entry = *static_cast<const fhrp_mac_entry_t *>(record);
        text += fmt::format("{:#x} {} {}\n", entry.ifindex, entry.vlan,
                            hex(entry.mac, sizeof entry.mac));
    }
    return text;
}

void collect_pair(gpointer /*key*/, gpointer value, gpointer text)
{
    const auto &pair = *static_cast<const pvlan_svi_pair *>(value);
    static_cast<std::set<std::string> *>(text)->insert(
        fmt::format("{},{}", pair.primary, pair.secondary));
}

std::string pairs()
{
    std::set<std::string> found;
    if (pvlan_svi_map != nullptr) {
        g_hash_table_foreach(pvlan_svi_map, collect_pair, &found);
    }
    return fmt::format("{}", fmt::join(found, " "));
}

/** Each table of the library and of the platform layer, by the name that the document has for it.
 */
std::map<std::string, std::string> tables(simswitch::Switch &hardware)
{
    std::map<std::string, std::string> all;
    all["interface numbers"] = hex(l3lif_l3iif_table.bits, sizeof l3lif_l3iif_table.bits);
    all["numbers held back"] =
        hex(l3lif_l3iif_table_preserve.bits, sizeof l3lif_l3iif_table_preserve.bits);
    all["tables set up"] = fmt::to_string(l3lif_l3iif_table_inited);
    all["VLANs of ports"] = hex(rtifhal_port_vlan, sizeof rtifhal_port_vlan);
    for (int vlan = 0; vlan < VLAN_COUNT; ++vlan) {
        const auto &uses = rtifhal_vlan_type_count[vlan];
        all["routed uses of VLANs"] +=
            fmt::format("{} {} ", uses.subint_count, hex(&uses.l3pbmp, sizeof uses.l3pbmp));
        all["SVI marks of VLANs"] += fmt::format("{} ", uses.svi);
        all["L2 marks of VLANs"] += fmt::format("{} ", uses.l2_vlan);
        const auto *controls = hardware.wrappers.kept_vlan_controls(vlan);
        all["cached VLAN controls"] +=
            controls != nullptr ? hex(controls, sizeof *controls) : std::string("-");
        all["cached ports of VLANs"] += hardware.wrappers.cached_vlan_ports(vlan).text();
        const auto &blocks = hardware.wrappers.vlan_blocks(vlan);
        all["cached block masks"] += hex(&blocks, sizeof blocks);
    }
    for (int iif = 0; iif <= chip::LAST_IIF; ++iif) {
        const auto *ingress = hardware.wrappers.l3_ingress(iif);
        all["cached ingress objects"] +=
            ingress != nullptr ? hex(ingress, sizeof *ingress) : std::string("-");
    }
    all["routed group"] = fmt::to_string(l3_stg);
    all["routed group in force"] = fmt::to_string(l3_stg_allocated);
    all["virtual MACs"] = virtual_macs();
    all["private-VLAN pairs"] = pairs();
    all["default routes"] = fmt::to_string(num_def_routes);
    for (unsigned number = 0; number < 100; ++number) {
        const auto trunk = hardware.host.trunk_id(0x20000000U | (number << 12U));
        all["trunk map"] += trunk ? fmt::format("{} ", *trunk) : "- ";
    }
    for (const auto &[vlan, role] : hardware.host.vlans.all()) {
        all["VLAN records"] += fmt::format("{} {} ", vlan, static_cast<int>(role));
    }
    return all;
}

/** The first column of the document's table of what a restore doesn't rebuild. */
std::set<std::string> rows_of_the_document()
{
    const std::string page = bytes_of(source_path("docs/restart.md"));
    std::set<std::string> rows;
    std::size_t at = page.find("\n| not rebuilt |");
    EXPECT_NE(at, std::string::npos);
    at = page.find('\n', page.find('\n', at + 1) + 1) + 1; // behind the heading and its rule
    while (page.compare(at, 2, "| ") == 0) {
        rows.insert(page.substr(at + 2, page.find(" |", at) - at - 2));
        at = page.find('\n', at) + 1;
    }
    return rows;
}

} // namespace

TEST(RestoredTables, DifferInWhatTheDocumentListsAndInNothingElse)
{
    std::set<std::string> differ;
    std::set<std::string> all;
    for (const Kind kind : {Kind::trident, Kind::trident2}) {
        for (const char *name : {"kinds", "campus"}) {
            const lab_test::Folder folder;
            const auto config = example(name);
            std::map<std::string, std::string> cold;
            {
                Process first(kind, folder.path / "state");
                lab::l3lif::bring_all_up(config, first.layer);
                cold = tables(first.hardware);
            }
            Process second(kind, folder.path / "state");
            lab::l3lif::restart(second.hardware, second.layer, lab::l3lif::RestartMode::restore,
                                &config);
            for (const auto &[table, restored] : tables(second.hardware)) {
                all.insert(table);
                if (restored != cold.at(table)) {
                    differ.insert(table);
                }
            }
        }
    }
    EXPECT_EQ(differ, rows_of_the_document());
    // The document's table of what survives names all of them.
    const std::string page = bytes_of(source_path("docs/restart.md"));
    for (const std::string &table : all) {
        EXPECT_NE(page.find(table), std::string::npos) << table;
    }
}
