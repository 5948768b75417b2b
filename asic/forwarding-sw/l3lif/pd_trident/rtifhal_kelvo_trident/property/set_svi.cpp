/*
 * set_svi.cpp: the property setter of SVIs, which is told what changed: that
 * one thing is changed in the VLAN's control record, then both objects are
 * written again.
 *
 * The ingress object's tie to the VLAN has the last word on VRF and
 * reverse-path check; what is written here covers the time until then.
 */
#include "frame/properties.h"
#include "frame/trace.h"
#include "property/setter_steps.h"
#include "rtifhal_trident.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>

namespace
{

void switch_off(uint32_t &flags, uint32_t bit, bool off)
{
    flags = off ? flags | bit : flags & ~bit;
}

/** Changes one property in the VLAN's record; false for one that isn't known. */
bool apply(uint32_t property, uint32_t value, struct l3lif_pi_ctxt &properties,
           bcm_vlan_control_vlan_t &control)
{
    switch (property) {
    case RTIFHAL_PROP_IPV4:
        switch_off(control.vc_flags, VLAN_IP4_OFF, value == 0);
        return true;
    case RTIFHAL_PROP_IPV4_MC:
        switch_off(control.vc_flags, VLAN_IP4_MC_OFF, value == 0);
        return true;
    case RTIFHAL_PROP_VRF:
    case RTIFHAL_PROP_IPV6_VRF:
        control.vc_vrf = value;
        return true;
    case RTIFHAL_PROP_URPF:
        control.vc_urpf_mode = static_cast<uint32_t>(urpf_mode_of_property(value));
        return true;
    case RTIFHAL_PROP_INGRESS_FLAG:
        // The one flag that a nonzero value sets.
        switch_off(control.vc_flags, VLAN_INGRESS_FLAG, value != 0);
        return true;
    case RTIFHAL_PROP_IPV6:
        switch_off(control.vc_flags, VLAN_IP6_OFF, value == 0);
        return true;
    case RTIFHAL_PROP_WORD_7:
    case RTIFHAL_PROP_WORD_8:
        return true;
    case RTIFHAL_PROP_CLASS_HIGH:
        // The class is made from the property, not from the VLAN.
        properties.class_high_bit = value;
        return true;
    case RTIFHAL_PROP_MPLS:
        switch_off(control.vc_flags, VLAN_MPLS_OFF, value == 0);
        return true;
    default:
        return false;
    }
}

/** Reads the object, which should stand on the VLAN. */
void read_svi(int unit, uint16_t vlan, int id, bcm_l3_intf_t &object)
{
    (void)fwmpd_trident_batch_flush();
    (void)bcm_l3_intf_get(unit, &object);
    if (object.l3a_vid != vlan) {
        REPORT_OF(rtifhal_set_kelvo_l3_property_svi, "bcm_l3_intf_get(%d) failed: %d\n", id, vlan);
    }
}

/** Applies the property and writes the VLAN's record, with snooping off in the chip. */
int write_vlan(int unit, const struct l3lif *l3lif, int id, uint32_t property, uint32_t value)
{
    const uint16_t vlan = l3lif->int_vlan;
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control == nullptr) {
        REPORT_OF(rtifhal_set_kelvo_l3_property_svi,
                  "fwmpd_bcm_vlan_control_vlan_get(%d) returned NULLs\n", vlan);
        return -1;
    }
    TRACE_OF(rtifhal_set_kelvo_l3_property_svi, "Get Miss Sup Flags(%d) : %x type = %d\n", vlan,
             control->vc_flags, property);
    if (!apply(property, value, *l3lif->l3lif_pi_ctxt, *control)) {
        TRACE_OF(rtifhal_set_kelvo_l3_property_svi, " intf_id %d unknown %d\n", id, value);
    }
    TRACE_OF(rtifhal_set_kelvo_l3_property_svi, "Set MIss To Sup(%d) : %x\n", vlan,
             control->vc_flags);
    (void)fwmpd_bcm_vlan_control_vlan_set(unit, vlan, *control);
    TRACE_OF(rtifhal_set_kelvo_l3_property_svi, "Set Miss Sup Flags(%d) : %x\n", vlan,
             control->vc_flags);
    const int rc = write_snooping_disabled(unit, vlan, *control);
    if (rc != 0) {
        REPORT_OF(rtifhal_set_kelvo_l3_property_svi, "bcm_vlan_control_vlan_set(%d) failed: %s\n",
                  vlan, rtifhal_errtext(rc));
    }
    return 0;
}

} // namespace

int rtifhal_set_kelvo_l3_property_svi(struct l3lif *l3lif, uint32_t property, uint32_t value)
{
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    const uint16_t vlan = l3lif->int_vlan;
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (vlan == 0) {
        REPORT(" Got int-vlan as invalid for intf 0x%x", l3lif->ifindex);
        return -1;
    }
    bcm_l3_intf_t_init(&object);
    if (!has_state(__func__, l3lif)) {
        return 0;
    }
    const int id = start_object(__func__, l3lif, object);
    if (id == 0) {
        return 0;
    }
    read_svi(unit, vlan, id, object);
    if (write_vlan(unit, l3lif, id, property, value) != 0) {
        return -1;
    }
    rewrite_interface(__func__, unit, l3lif, object, id);
    return rewrite_ingress(__func__, l3lif, vlan);
}
