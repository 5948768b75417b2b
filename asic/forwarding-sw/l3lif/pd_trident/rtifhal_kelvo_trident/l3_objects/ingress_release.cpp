/*
 * ingress_release.cpp: an interface is untied from its L3 ingress object, an
 * SVI's VLAN loses its mapped mark, an interface gets a new class label.
 *
 * ingress_create.cpp is the other direction. The delete has no member walk
 * although the creation has one: members of a port-channel keep port control
 * 67 until they are reused, and nothing may rely on it being cleared.
 */
#include "frame/controls.h"
#include "frame/if_types.h"
#include "frame/trace.h"
#include "l3_objects/ingress_ties.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>

namespace
{

/** There is no place to keep a class label. */
constexpr int NO_PLACE_FOR_LABEL = 0x41ED0011;

/** Takes the object off the interface's own port; a port-channel has none, which writes port -1. */
void untie_port(int unit, uint32_t ifindex, uint32_t working_ifindex)
{
    int port = -1;
    TRACE_OF(rtifhal_l3_ing_delete, "L3 Phy \n");
    if (fwmpd_ifindex_to_bcm_port(ifindex, &port) != 0) {
        REPORT_OF(rtifhal_l3_ing_delete, "bcm_l3_ing_create(%d) get port failed\n",
                  working_ifindex);
    }
    TRACE_OF(rtifhal_l3_ing_delete, "L3Ingress L3 Phy or L3 PC port = % iif = 0\n", port);
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_INGRESS_IF, 0);
}

} // namespace

int rtifhal_l3_ing_delete(struct l3lif *l3lif, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    uint8_t type = 0;
    TRACE("ifindex = %x destroy = %d\n", l3lif->ifindex, destroy);
    if (if_index_get_type(l3lif->ifindex, &type) != 0) {
        REPORT("bcm_l3_ing_create(%d) get type failed\n", l3lif->ifindex);
    }

    const struct l3lif *working = l3lif;
    if (const struct l3lif *const main = find_port_channel_main(l3lif); main != nullptr) {
        working = main;
        TRACE("main ifindex = %x\n", working->ifindex);
    }
    if (working->l3lif_pd_ctxt == nullptr) {
        REPORT("Failed to create l3lif pd context for intf 0x%x", working->ifindex);
        return 0;
    }
    const struct l3_pd *const l3_pd = working->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }
    const int iif = live_iif(*l3_pd);
    TRACE("iftype = %x iif = %x l3_if_index = %x\n", type, iif, l3_pd->l3intf_id);

    if (destroy != 0) {
        (void)rtifhal_bcm_l3_ingress_destroy(unit, iif);
    }
    if (type == IF_TYPE_SVI || if_index_is_tunnel_intf(l3lif->ifindex) != 0 ||
        if_index_is_sub_intf(l3lif->ifindex) != 0) {
        return 0;
    }
    untie_port(unit, l3lif->ifindex, working->ifindex);
    return 0;
}

int rtifhal_l3_ing_update_vlan_label(struct l3lif *l3lif)
{
    uint8_t type = 0;
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("Entered %s for 0x%x\n", __func__, l3lif->ifindex);
    if (if_index_get_type(l3lif->ifindex, &type) != 0) {
        REPORT(" (%d) get type failed\n", l3lif->ifindex);
        return -1;
    }
    if (type != IF_TYPE_SVI) {
        return 0;
    }

    const uint16_t vlan = l3lif->si_encap_vlan;
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT("fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n", vlan);
        return -1;
    }
    control->vc_class &= ~VLAN_CLASS_INGRESS_MAPPED;
    (void)fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control);
    (void)fwmpd_trident_vlan_bvcvt_store(vlan);
    return 0;
}

int rtifhal_upd_classid(uint16_t class_id, uint32_t ifindex)
{
    TRACE("if_index:0x%x, class_id:%d\n", ifindex, class_id);
    struct l3lif *const l3lif = l3lif_find_lif_from_ifindex(ifindex);
    if (l3lif == nullptr) {
        REPORT("failed to get l3lif from if_index %x\n", ifindex);
        return -1;
    }
    if (struct l3_pd *const l3_pd = find_l3_pd(l3lif); l3_pd != nullptr) {
        l3_pd->acl_qos_label_ingress = class_id;
        TRACE("Updated l3_pd->acl_qos_label_ingress = class_id\n");
        (void)rtifhal_trident_l3port_add_pss(l3lif);
        return rtifhal_l3_ing_create(l3lif, 0);
    }

    // Reported although the label may only have to wait for the record.
    REPORT("failed to get l3_pd from if_index %x\n", ifindex);
    if (l3lif->l3lif_pi_ctxt == nullptr) {
        return NO_PLACE_FOR_LABEL;
    }
    l3lif->l3lif_pi_ctxt->acl_qos_label_pending = class_id;
    return 0;
}
