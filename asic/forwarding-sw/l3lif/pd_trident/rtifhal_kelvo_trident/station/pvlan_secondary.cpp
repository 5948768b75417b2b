/*
 * pvlan_secondary.cpp: the routing of a private VLAN's secondary, in its
 * VLAN's control record, which follows the primary's.
 *
 * pvlan_svi.cpp has the pairs. A record is changed in place in the wrappers'
 * cache before it is written.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "station/pvlan_svi.h"
#include "vlan/accounting.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>

namespace
{

/**
 * Settles a secondary's routing by what else the VLAN carries: subinterfaces
 * need it on; without them and without an SVI it goes off.
 */
void rtifhal_subintf_routing_en_dis(int unit, uint16_t vlan)
{
    TRACE("------------------------------------vlan %d\n", vlan);
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT("fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n", vlan);
        return;
    }
    const rtifhal_vlan_type_count_entry_t *const lvtc = find_vlan_uses(vlan);
    const int32_t subint_count = lvtc != nullptr ? lvtc->subint_count : 0;
    const int32_t svi = lvtc != nullptr ? lvtc->svi : 0;
    TRACE("SI = %d, svi = %d, l2_vlan = %d\n", subint_count, svi,
          lvtc != nullptr ? lvtc->l2_vlan : 0);

    control->vc_flags |= VLAN_SECONDARY_SETTLED;
    const bool any_off = (control->vc_flags & VLAN_ROUTING_OFF) != 0;
    bool changed = false;
    if (subint_count != 0 && any_off) {
        control->vc_flags &= ~VLAN_ROUTING_OFF;
        TRACE("Enabling v4/v6 routing on vlan %d\n", vlan);
        changed = true;
    } else if (subint_count == 0 && svi == 0 && !any_off) {
        control->vc_flags |= VLAN_ROUTING_OFF;
        TRACE("Disabling v4/v6 routing on vlan %d\n", vlan);
        changed = true;
    }
    if (changed && fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control) != 0) {
        REPORT("bcm_vlan_control_vlan_set failed for VLAN: %d\n", vlan);
        return;
    }
    (void)fwmpd_trident_batch_flush();
}

/** A VLAN's cached record; null, and reported, when there is none. */
bcm_vlan_control_vlan_t *find_controls(uint32_t vlan)
{
    bcm_vlan_control_vlan_t *const control =
        fwmpd_bcm_vlan_control_vlan_get_from_cache(static_cast<uint16_t>(vlan));
    if (control == nullptr) {
        REPORT_OF(rtifhal_pvlan_svi_update_secondary,
                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n", vlan);
    }
    return control;
}

} // namespace

int rtifhal_pvlan_svi_update_secondary(uint32_t primary, uint32_t secondary, uint32_t add)
{
    const bcm_vlan_control_vlan_t *const from = find_controls(primary);
    if (from == nullptr) {
        return -1;
    }
    bcm_vlan_control_vlan_t *const control = find_controls(secondary);
    if (control == nullptr) {
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    const auto vlan = static_cast<uint16_t>(secondary);
    if (add != 0) {
        // The secondary keeps its own VRF.
        control->vc_flags &= ~VLAN_ROUTING_OFF;
        control->vc_ingress_if = from->vc_ingress_if;
    } else {
        rtifhal_subintf_routing_en_dis(unit, vlan);
        control->vc_ingress_if = 0;
    }

    // The flags may have been written just above; this write takes the ingress interface.
    if (fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control) != 0) {
        REPORT("bcm_vlan_control_vlan_set(%d) failed\n", secondary);
        return -1;
    }
    const int rc = write_snooping_disabled(fwmpd_trident_unit, vlan, *control);
    if (rc != 0) {
        REPORT("bcm_vlan_control_vlan_set(%d) failed: %s\n", secondary, rtifhal_errtext(rc));
    }
    return 0;
}
