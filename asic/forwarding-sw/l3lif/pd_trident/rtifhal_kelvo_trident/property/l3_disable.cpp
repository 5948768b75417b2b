/*
 * l3_disable.cpp: IPv6 for the whole switch, and stopping one interface from
 * routing while it stays in place.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/field.h>
#include <sdk/l3.h>
#include <sdk/switch.h>

namespace
{

/** The platform's own group, which this library only switches. */
constexpr int ND_FIELD_GROUP = 13;

/** What the trace prints before the flags that follow. */
constexpr uint32_t INGRESS_TRACED_FLAGS = 2;
/** Every family off; the same on both chips. */
constexpr uint32_t INGRESS_DISABLED_FLAGS = 0x5E2;

/** Takes MPLS off the VLAN, where the agent doesn't look after it. */
void stop_mpls(struct l3lif *l3lif)
{
    if (fwmpd_asic_sdn_agent_enabled != 0 || l3lif->l3lif_pi_ctxt->mpls_en != 1) {
        return;
    }
    const int rc = rtifhal_set_kelvo_l3_property_svi(l3lif, RTIFHAL_PROP_MPLS, 0);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3_disable, "vlan control set failure for %x err: %s\n",
                  l3lif->ifindex, rtifhal_errtext(rc));
    }
}

/** Reads the object from the chip, not from the cache, and writes it with every family off. */
int write_disabled(struct l3lif *l3lif, int unit, int iif, bcm_l3_ingress_t &l3_iif)
{
    int rc = bcm_l3_ingress_get(unit, iif, &l3_iif);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3_disable, "bcm_l3_ing_create(%d) get failed: %s\n",
                  l3lif->ifindex, rtifhal_errtext(rc));
        return rc;
    }
    l3_iif.flags = INGRESS_TRACED_FLAGS;
    TRACE_OF(rtifhal_trident_l3_disable, "ipmc_intf_id = %x class %x flags = %x\n",
             l3_iif.ipmc_intf_id, l3_iif.intf_class, l3_iif.flags);
    l3_iif.flags = INGRESS_DISABLED_FLAGS;
    if (l3lif->l3lif_pi_ctxt == nullptr) {
        REPORT_OF(rtifhal_trident_l3_disable, "l3lif_pi_ctxt is NULL for 0x%x\n", l3lif->ifindex);
        return 0;
    }
    // This rewrites the object of an SVI from its properties: it comes before the disabling one.
    stop_mpls(l3lif);
    rc = rtifhal_bcm_l3_ingress_create(unit, &l3_iif, &iif);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3_disable, "bcm_l3_ing_create(%x) failed: %s\n", l3lif->ifindex,
                  rtifhal_errtext(rc));
        return rc;
    }
    return 0;
}

} // namespace

int rtifhal_set_kelvo_l3_ipv6_config(int value)
{
    const int unit = rtifhal_get_bcm_unit(0);
    const int enable = value == 1 ? 1 : 0;
    int state = 0;
    int rc = bcm_switch_control_set(unit, SWITCH_CONTROL_ND_TO_CPU, enable);
    if (rc != 0) {
        REPORT(" switch_control_set(%d, bcmSwitchNdPktToCpu) failed - %s \n", unit,
               rtifhal_errtext(rc));
        return -1;
    }
    rc = bcm_field_group_enable_get(unit, ND_FIELD_GROUP, &state);
    if (rc != 0) {
        REPORT(" bcm_field_group_enable_get %d failed - %s \n", enable, rtifhal_errtext(rc));
        return -1;
    }
    if (enable == 1 && state != 0) {
        return 0;
    }
    rc = bcm_field_group_enable_set(unit, ND_FIELD_GROUP, enable);
    if (rc != 0) {
        REPORT(" bcm_field_group_enable_set %d failed - %s \n", enable, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

int rtifhal_trident_l3_disable(uint32_t ifindex)
{
    struct l3lif *const l3lif = l3lif_find_lif_from_ifindex(ifindex);
    if (l3lif == nullptr) {
        return 0;
    }
    bcm_l3_ingress_t l3_iif;
    bcm_l3_ingress_t_init(&l3_iif);
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT("l3lif_pd_ctxt is NULL for 0x%x\n", ifindex);
        return 0;
    }
    const struct l3_pd *const l3_pd = l3lif->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return 0;
    }
    int iif = 0;
    TRACE("l3_if_index = 0x%x ipmc_intf_id = 0x%x iif = 0x%x\n", l3_pd->l3intf_id,
          l3_iif.ipmc_intf_id, iif);
    iif = l3_pd->l3intf_id;
    return iif != 0 ? write_disabled(l3lif, unit, iif, l3_iif) : 0;
}
