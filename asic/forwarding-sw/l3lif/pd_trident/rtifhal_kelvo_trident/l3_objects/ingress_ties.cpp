/*
 * ingress_ties.cpp: see ingress_ties.h.
 */
#include "l3_objects/ingress_ties.h"

#include "frame/controls.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/gport.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/wrappers.h>
#include <sdk/trunk.h>

int tie_svi(int unit, const struct l3lif *svi, int iif, const bcm_l3_ingress_t &l3_iif)
{
    const uint16_t vlan = svi->si_encap_vlan;
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT_OF(rtifhal_l3_ing_create,
                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n", vlan);
        return -1;
    }
    control->vc_ingress_if = static_cast<uint32_t>(iif);
    control->vc_vrf = static_cast<uint32_t>(l3_iif.vrf);
    control->vc_class |= VLAN_CLASS_INGRESS_MAPPED;
    control->vc_urpf_mode = static_cast<uint32_t>(l3_iif.urpf_mode);
    TRACE_OF(rtifhal_l3_ing_create, "Mapping vid %d to iif %d\n", vlan, iif);

    const int rc = fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control);
    if (rc < 0) {
        REPORT_OF(rtifhal_l3_ing_create, "fwmpd_bcm_vlan_control_vlan_set(%d) failed: %s\n", vlan,
                  rtifhal_errtext(rc));
        return rc;
    }
    (void)fwmpd_trident_vlan_bvcvt_store(vlan);
    // Routed multicast is the ingress object's affair, not snooping's.
    const int snooping_rc = write_snooping_disabled(unit, vlan, *control);
    if (snooping_rc != 0) {
        REPORT_OF(rtifhal_l3_ing_create,
                  "fwmpd_bcm_vlan_control_vlan_set(%d) BCM_VLAN_IGMP_SNOOP_DISABLE failed: %s\n",
                  vlan, rtifhal_errtext(snooping_rc));
    }
    return 0;
}

void tie_port_channel(int unit, uint32_t ifindex, int iif)
{
    int count = 0;
    uint32_t tid = 0;
    if (fwmpd_ifindex_to_bcm_tid(ifindex, &tid) != 0) {
        REPORT_OF(rtifhal_l3_ing_create, "ifindex_to_bcm_tid(%x) failed\n", ifindex);
    }
    TRACE_OF(rtifhal_l3_ing_create, "tid = %d\n", tid);

    // The chip knows the members; the layer above's tree may be ahead of it.
    bcm_trunk_info_t info;
    bcm_trunk_member_t members[TRUNK_MEMBERS] = {};
    bcm_trunk_info_t_init(&info);
    (void)fwmpd_trident_batch_flush();
    if (bcm_trunk_get(unit, static_cast<int>(tid), &info, TRUNK_MEMBERS, members, &count) != 0) {
        REPORT_OF(rtifhal_l3_ing_create, "bcm_trunk_get(%d) failed\n", tid);
    }
    TRACE_OF(rtifhal_l3_ing_create, "total member ports = %d\n", count);

    for (int i = 0; i < count && i < TRUNK_MEMBERS; ++i) {
        const int port = port_of_gport(members[i].gport);
        TRACE_OF(rtifhal_l3_ing_create, "member port[%d] = gport %d, port %d\n", i,
                 members[i].gport, port);
        if (fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_INGRESS_IF, iif) != 0) {
            REPORT_OF(rtifhal_l3_ing_create, "bcm_port_control_set(%d) failed\n", port);
        }
    }
}

void tie_port(int unit, uint32_t ifindex, uint32_t working_ifindex, int iif, int *port)
{
    if (fwmpd_ifindex_to_bcm_port(ifindex, port) != 0) {
        REPORT_OF(rtifhal_l3_ing_create, "bcm_l3_ing_create(%d) get port failed\n",
                  working_ifindex);
    }
    TRACE_OF(rtifhal_l3_ing_create, "L3Ingress L3 Phy or L3 PC port = %d iif = %x\n", *port, iif);
    const int rc = fwmpd_bcm_port_control_set(unit, *port, PORT_CONTROL_INGRESS_IF, iif);
    if (rc < 0) {
        REPORT_OF(rtifhal_l3_ing_create, "bcm_port_control_set(%x) failed: %s\n", ifindex,
                  rtifhal_errtext(rc));
    } else {
        TRACE_OF(rtifhal_l3_ing_create, "bcm_l3_ing_create(%x) control: %d, %d\n", ifindex, *port,
                 iif);
    }
}
