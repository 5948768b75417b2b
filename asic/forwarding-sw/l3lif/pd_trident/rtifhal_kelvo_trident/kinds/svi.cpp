/*
 * svi.cpp: an SVI, the routed interface of a VLAN.
 *
 * It has no port of its own: it lives in the VLAN's control record, which
 * switches routing on per family and names the ingress object. lif_state isn't
 * kept for SVIs. Most failures of the add are only reported: what decides is
 * the ingress object.
 *
 * A private VLAN's primary takes its secondaries along: station/pvlan_svi.h.
 */
#include "kinds/svi.h"

#include "frame/properties.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "station/pvlan_svi.h"
#include "vlan/accounting.h"
#include "vlan/vlan_controls.h"

#include <fwm/vlan.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <services/system.h>

namespace
{

/** The SVI's use of a VLAN isn't a port's. */
constexpr int NO_PORT = 0;

void set_bit(uint32_t &word, uint32_t bit, bool set)
{
    word = set ? word | bit : word & ~bit;
}

/** Sets VRF and MTU of the object and the families of the VLAN. */
void apply_properties(const struct l3lif *l3lif, bcm_vlan_control_vlan_t &control,
                      bcm_l3_intf_t &object)
{
    object.l3a_vrf = DEFAULT_VRF;
    object.l3a_mtu = DEFAULT_MTU;
    if (const struct l3lif_pi_ctxt *const pi = l3lif->l3lif_pi_ctxt; pi != nullptr) {
        set_bit(control.vc_flags, VLAN_IP4_OFF, pi->ipv4_en == 0);
        set_bit(control.vc_flags, VLAN_IP4_MC_OFF, pi->ipv4_mc_en == 0);
        set_bit(control.vc_flags, VLAN_IP6_OFF, pi->ipv6_en == 0);
        // Whichever VRF is set, whatever family is on: the ingress object's rule is another.
        object.l3a_vrf = pi->vrf != 0 ? pi->vrf : vrf_of_property(pi->ipv6_vrf);
        object.l3a_mtu = mtu_of_property(pi->mtu);
    }
    control.vc_flags |= VLAN_SVI_SEEN;
    control.vc_class |= VLAN_CLASS_SVI;
}

/** Takes the SVI's use of the VLAN on, or gives it up; a refusal is only reported. */
void use_vlan(const char *function, uint16_t vlan, int set)
{
    const int rc = rtifhal_subintf_block_set(vlan, USE_SVI, NO_PORT, set, nullptr);
    if (rc < 0) {
        REPORT_NAMED(function, "vlan_block_set() failed: %s\n", rtifhal_errtext(rc));
    }
}

/** Opens the VLAN for routing. */
int open_vlan(const struct l3lif *l3lif, int unit, bcm_l3_intf_t &object)
{
    const uint16_t vlan = l3lif->si_encap_vlan;
    object.l3a_vid = vlan;
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT_OF(rtifhal_trident_svi_add,
                  "fwmpd_bcm_vlan_control_vlan_get_from_cache(%d) returned NULL\n", vlan);
        return -1;
    }
    TRACE_OF(rtifhal_trident_svi_add, "Get To Sup Flags(%d) : %#x\n", vlan, control->vc_flags);
    apply_properties(l3lif, *control, object);
    const int rc = fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_svi_add, "bcm_vlan_control_vlan_set(%d) failed: %s\n", vlan,
                  rtifhal_errtext(rc));
    }
    TRACE_OF(rtifhal_trident_svi_add, "Set To Sup Flags(%d) : %#x\n", vlan, control->vc_flags);
    TRACE_OF(rtifhal_trident_svi_add, " Remove CPU to Brdcast flood block filter for vlan %d \n",
             vlan);
    use_vlan("rtifhal_trident_svi_add", vlan, 1);
    return 0;
}

/** Finds the object in the chip, which must stand on the SVI's VLAN. */
int read_leaving(const struct l3lif *l3lif, int unit, bcm_l3_intf_t &object)
{
    const uint16_t vlan = l3lif->si_encap_vlan;
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT_OF(rtifhal_trident_svi_del, "l3lif_pd_ctxt(%d) NULL\n", vlan);
        return -1;
    }
    const struct l3_pd *const l3_pd = l3lif->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }
    object.l3a_intf_id = l3_pd->l3intf_id;
    (void)fwmpd_trident_batch_flush();
    (void)bcm_l3_intf_get(unit, &object);
    if (object.l3a_vid != vlan) {
        REPORT_OF(rtifhal_trident_svi_del, "bcm_l3_intf_get() mismatch %d %d\n", vlan,
                  l3_pd->l3intf_id);
        return -1;
    }
    return 0;
}

/** Closes the VLAN for routing. Its VRF and reverse-path mode stay. */
int close_vlan(int unit, bcm_l3_intf_t &object)
{
    const uint16_t vlan = object.l3a_vid;
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT_OF(rtifhal_trident_svi_del, "fwmpd_bcm_vlan_control_vlan_get(%d) returned NULL\n",
                  vlan);
        return -1;
    }
    TRACE_OF(rtifhal_trident_svi_del, "Get To Sup Flags(%d) : %x\n", vlan, control->vc_flags);
    control->vc_flags |= VLAN_SVI_SEEN | VLAN_ROUTING_OFF;
    if (fwmpd_asic_sdn_agent_enabled == 0) {
        control->vc_flags |= VLAN_MPLS_OFF;
    }
    control->vc_class &= ~VLAN_CLASS_SVI;
    control->vc_ingress_if = 0;
    object.l3a_vrf = DEFAULT_VRF;
    object.l3a_mtu = DEFAULT_MTU;
    (void)fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control);
    TRACE_OF(rtifhal_trident_svi_del, "Set To Sup Flags(%d) : %x\n", vlan, control->vc_flags);
    TRACE_OF(rtifhal_trident_svi_del, "Add CPU to Brdcast flood block filter for vlan %d\n", vlan);
    use_vlan("rtifhal_trident_svi_del", vlan, 0);
    return 0;
}

} // namespace

int rtifhal_trident_add_svi(struct l3lif *l3lif, int aux, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, create);
    int rc = rtifhal_trident_svi_add(l3lif, create);
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to add itf: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux,
               create);
        return rc;
    }
    rc = rtifhal_trident_add_ingress(l3lif, aux, create);
    if (rc == 0) {
        rc = rtifhal_trident_add_egress(l3lif, aux, create);
    }
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to add if: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux,
               create);
    }
    return rc;
}

int rtifhal_trident_del_svi(struct l3lif *l3lif, int aux, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, aux);
    if (rtifhal_is_lif_deleted(l3lif) != 0) {
        TRACE("Already deleted.");
        return destroy != 0 ? rtifhal_l3_destroy(l3lif) : 0;
    }
    int rc = rtifhal_trident_del_egress(l3lif, aux, destroy);
    if (rc == 0) {
        rc = rtifhal_trident_del_ingress(l3lif, aux, destroy);
    }
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to del: 0x%x, %d\n", __func__, l3lif->ifindex, aux);
        return rc;
    }
    rc = rtifhal_trident_svi_del(l3lif, destroy);
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to rm: 0x%x, %d\n", __func__, l3lif->ifindex, aux);
    }
    return rc;
}

int rtifhal_trident_svi_add(struct l3lif *l3lif, int create)
{
    if (l3lif == nullptr) {
        REPORT("Got l3lif as null\n");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    const uint16_t vlan = l3lif->si_encap_vlan;
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    TRACE("Begin %s for vlan %d\n", __func__, vlan);
    if (create == 0) {
        if (l3lif->l3lif_pd_ctxt == nullptr) {
            REPORT("l3lif_pd_ctxt(%d) NULL\n", vlan);
            return -1;
        }
        if (l3lif->l3lif_pd_ctxt->l3_pd == nullptr) {
            return -1;
        }
        object.l3a_intf_id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
    }

    // The VLAN's flags have to be in the chip before the interface exists.
    if (open_vlan(l3lif, unit, object) != 0) {
        return -1;
    }
    if (rtifhal_l3_intf_create(unit, l3lif, &object, create) != 0) {
        REPORT("itf create(%d) failed\n", vlan);
    }
    const int rc = rtifhal_l3_ing_create(l3lif, create);
    if (rc != 0) {
        REPORT("ing create(%d) failed\n", vlan);
    }
    rtifhal_handle_pvlan_svi(l3lif, 1);
    (void)fwmpd_trident_vlan_bvcvt_store(vlan);
    if (sysmgr_is_fastboot_restart() != 0) {
        (void)l3lif_update_sdb_for_intf(l3lif);
        rtifhal_trident_create_default_nh(l3lif->ifindex);
    }
    return rc;
}

int rtifhal_trident_svi_del(struct l3lif *l3lif, int destroy)
{
    (void)rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (read_leaving(l3lif, unit, object) != 0 || close_vlan(unit, object) != 0) {
        return -1;
    }
    const uint16_t vlan = object.l3a_vid;
    rtifhal_handle_pvlan_svi(l3lif, 0);
    const int rc = rtifhal_l3_intf_delete(l3lif, &object, destroy);
    (void)fwmpd_trident_vlan_bvcvt_store(vlan);
    return rc;
}

void rtifhal_handle_pvlan_svi(const struct l3lif *l3lif, uint32_t add)
{
    const uint16_t vlan = l3lif->vlan;
    TRACE("Vlan %d\n", vlan);
    struct fwm_fwim_vlan *const record = FWM_FWIM_FIND_VLAN(1, vlan);
    if (record == nullptr) {
        REPORT("failed to get pi_vlan for vlan %d\n", vlan);
        return;
    }
    struct fwm_fwim_pvlan *const pvlan = FWM_FWIM_VLAN_PVLAN(record);
    if (pvlan == nullptr || FWM_FWIM_PVLAN_IS_PRIMARY(pvlan) == 0) {
        TRACE("Vlan %d is not primary\n", vlan);
        return;
    }
    pvlan_svi_filter filter = {vlan, add};
    g_hash_table_foreach(pvlan_svi_map, rtifhal_pvlan_svi_visit_pair, &filter);
}
