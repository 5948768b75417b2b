/*
 * load_time_state.cpp: see load_time_state.h.
 */
#include "support/load_time_state.h"

#include "rtifhal_kelvo_trident/defaults/default_nh.h"
#include "rtifhal_kelvo_trident/field/floodlist.h"
#include "rtifhal_kelvo_trident/field/ifp_drop.h"
#include "rtifhal_kelvo_trident/l3_objects/egress.h"
#include "rtifhal_kelvo_trident/station/pvlan_svi.h"
#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "services/tree.h"

#include <cstdlib>
#include <cstring>

namespace rtifhal_test
{

namespace
{

void empty_virtual_macs()
{
    for (void *entry : simswitch::services::tree_records(fhrp_mac_hash)) {
        std::free(entry);
    }
    simswitch::services::destroy_tree(fhrp_mac_hash);
    fhrp_mac_hash = nullptr;
}

void empty_pairs()
{
    if (pvlan_svi_map == nullptr) {
        return;
    }
    g_hash_table_foreach(
        pvlan_svi_map, [](gpointer, gpointer pair, gpointer) { std::free(pair); }, nullptr);
    g_hash_table_destroy(pvlan_svi_map);
    pvlan_svi_map = nullptr;
}

} // namespace

void reset_library()
{
    l3lif_l3iif_table = {};
    l3lif_l3iif_table_preserve = {};
    l3lif_l3iif_table_inited = 0;
    fwmpd_asic_sdn_agent_enabled = 0;
    std::memset(rtifhal_port_vlan, 0, sizeof rtifhal_port_vlan);
    std::memset(rtifhal_vlan_type_count, 0, sizeof rtifhal_vlan_type_count);
    l3_stg = 0;
    l3_stg_allocated = 0;
    l3_egress_count = 0;
    empty_virtual_macs();
    empty_pairs();
    std::free(def_routes);
    std::free(egresses);
    def_routes = nullptr;
    egresses = nullptr;
    num_def_routes = 0;
    curr_egress = {};
    def_routes_loaded = 0;
    tcam_sup_default_size = 128;
    tcam_sup_size_stale = 1;
    ifp_drop_installed = 0;
    ifp_drop_entry = 0;
}

} // namespace rtifhal_test
