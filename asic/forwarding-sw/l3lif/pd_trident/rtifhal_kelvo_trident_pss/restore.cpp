/*
 * restore.cpp: the software side of routed interfaces, taken up again after a
 * restart from what the persistent store held.
 *
 * The chip still forwards and is left as it is: tables and caches alone are
 * written here.
 */
#define RTIFHAL_TRACE_UNIT RTIFHAL_UNIT_PSS

#include "frame/if_types.h"
#include "frame/iif_table.h"
#include "frame/properties.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"

#include <fwmpd/wrappers.h>
#include <services/avl.h>
#include <services/if_index.h>

namespace
{

void restore_port(const struct l3lif *l3lif, uint16_t vlan, int iif)
{
    int port = -1;
    if (fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &port) != 0) {
        return;
    }
    TRACE_OF(rtifhal_trident_l3port_restore, " vid %d bcm %d index %d\n", vlan, port, iif);
    if (has_port_vlan_entry(port)) {
        set_port_vlan(port, vlan);
    }
    (void)fwmpd_bcm_set_vlan_pbmp(vlan, port);
}

void restore_port_channel(const struct l3lif *l3lif, uint16_t vlan)
{
    avl_tree_t *const members = l3lif->pc_member_tree;
    if (members == nullptr) {
        REPORT_OF(rtifhal_trident_l3port_restore, "Error - PC tree empty %x\n", l3lif->ifindex);
        return;
    }
    for (avl_node_t *node = avl_get_first(members); node != nullptr;
         node = avl_get_next(members, node)) {
        const int port =
            rtifhal_ifindex_to_asic_port(*static_cast<const uint32_t *>(node->payload));
        TRACE_OF(rtifhal_trident_l3port_restore, " port %d ", port);
        (void)fwmpd_bcm_set_vlan_pbmp(vlan, port);
    }
}

void restore_svi(const struct l3lif *l3lif, uint16_t vlan, const struct l3_pd *l3_pd)
{
    bcm_vlan_control_vlan_t *const control =
        fwmpd_bcm_vlan_control_vlan_get_from_cache(l3lif->si_encap_vlan);
    if (control == nullptr) {
        return;
    }
    int urpf_mode = 0;
    int vrf = DEFAULT_VRF;
    if (const struct l3lif_pi_ctxt *const properties = l3lif->l3lif_pi_ctxt;
        properties != nullptr) {
        urpf_mode = urpf_mode_of_property(properties->urpf_mode);
        vrf = vrf_of_lookup(*properties);
    }
    control->vc_urpf_mode = static_cast<uint32_t>(urpf_mode);
    control->vc_vrf = static_cast<uint32_t>(vrf);
    if (l3_pd != nullptr) {
        control->vc_ingress_if = l3_pd->l3intf_id;
    }
    rtifhal_set_svi(vlan);
}

} // namespace

int rtifhal_trident_pss_restore_global_context(void)
{
    TRACE(" %s()restored global context\n", __func__);
    l3iif_table_init();
    restore_preserved_iifs();
    return 0;
}

int rtifhal_trident_l3port_restore(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        return 0;
    }
    TRACE("intf (0x%x) si:%d int-vlan:%d \n", l3lif->ifindex, l3lif->si_encap_vlan,
          l3lif->int_vlan);
    uint8_t type = 0;
    if (if_index_get_type(l3lif->ifindex, &type) != 0) {
        REPORT("bcm_l3_ing_create(%d) get type failed\n", l3lif->ifindex);
    }
    uint16_t vlan = l3lif->si_encap_vlan;
    if (vlan == 0) {
        vlan = RTIFHAL_VLAN_ROUTED;
        l3lif->int_vlan = vlan;
    }
    const struct l3_pd *const l3_pd = find_l3_pd(l3lif);
    const int iif = l3_pd != nullptr ? l3_pd->l3intf_id : 0;
    if (l3_pd != nullptr) {
        restore_iif(iif);
    }

    switch (type) {
    case IF_TYPE_ETHERNET:
        restore_port(l3lif, vlan, iif);
        break;
    case IF_TYPE_PORT_CHANNEL:
        restore_port_channel(l3lif, vlan);
        break;
    case IF_TYPE_SVI:
        restore_svi(l3lif, vlan, l3_pd);
        break;
    default:
        break;
    }
    return 0;
}
