/*
 * l3port.cpp: a physical port as a routed port.
 *
 * It has no VLAN of its own: it sits untagged in VLAN 4094. The add stops at
 * the first failing step, the delete reports and goes on; nothing is undone.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "kinds/read_object.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/vlan.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/switch.h>
#include <services/system.h>

namespace
{

struct control_value {
    int control;
    int value;
};

constexpr int IP4_CONTROLS[] = {PORT_CONTROL_IP4, PORT_CONTROL_IP4_MC};

/** IPv6 controls on the way out: unicast on, multicast off. */
constexpr control_value IP6_AT_REST[] = {{PORT_CONTROL_IP6, 1}, {PORT_CONTROL_IP6_MC, 0}};

/** Opens the port for IPv4 and MPLS; `id` is the number that the messages print. */
int open_port(const struct l3lif *l3lif, int unit, int port, int id)
{
    int rc = bcm_switch_control_set(unit, SWITCH_CONTROL_L3, 1);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3port_add, "itf set (%d) failed: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    for (const int control : IP4_CONTROLS) {
        rc = fwmpd_bcm_port_control_set(unit, port, control, 1);
        if (rc < 0) {
            REPORT_OF(rtifhal_trident_l3port_add, "itf set [IP4] (%d) failed: %s\n", id,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    const uint32_t mpls = l3lif->l3lif_pi_ctxt != nullptr ? l3lif->l3lif_pi_ctxt->mpls_en : 0;
    rc = fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_MPLS, static_cast<int>(mpls));
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3port_add, "itf set [MPLS] (%d) failed: %s\n", id,
                  rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** Puts the port untagged into its internal VLAN. */
int join_vlan(const struct l3lif *l3lif, int unit, int port, int id)
{
    if (rtifhal_vlan_create(unit, l3lif->int_vlan, port) != 0) {
        REPORT_OF(rtifhal_trident_l3port_add, "itf vlan enable(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    const int rc = fwmpd_bcm_port_untagged_vlan_set(unit, port, RTIFHAL_VLAN_ROUTED);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3port_add, "itf set (%d) failed: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** The number of the interface's object, checked against the chip while the object lives. */
int find_object(const struct l3lif *l3lif, int unit, bcm_l3_intf_t &object, int &id)
{
    bcm_l3_intf_t_init(&object);
    const struct l3_pd *const l3_pd = find_l3_pd(l3lif);
    if (l3_pd == nullptr) {
        return -1;
    }
    (void)fwmpd_trident_batch_flush();
    TRACE_OF(rtifhal_trident_l3port_del, "brcm_prog_complete = %d, l3intf_id = %d\n",
             l3_pd->brcm_prog_complete, l3_pd->l3intf_id);
    if (l3_pd->brcm_prog_complete != 0) {
        TRACE_OF(rtifhal_trident_l3port_del, "Using prev_l3_if_index %d\n",
                 l3_pd->prev_l3_if_index);
        object.l3a_intf_id = l3_pd->prev_l3_if_index;
        id = -1;
        return 0;
    }

    id = l3_pd->l3intf_id;
    return read_object("rtifhal_trident_l3port_del", unit, static_cast<int>(l3lif->ifindex), id,
                       object);
}

/**
 * Sets the families' controls on the way out. The values stand as they are,
 * whatever the add wrote: a port that leaves routing has them so at rest.
 */
int reset_families(int unit, int port, int id, int *last_rc)
{
    int rc = 0;
    for (const int control : IP4_CONTROLS) {
        rc = fwmpd_bcm_port_control_set(unit, port, control, 1);
        if (rc < 0) {
            REPORT_OF(rtifhal_trident_l3port_del, "itf set [IP4] (%d) failed: %s\n", id,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    for (const auto &[control, value] : IP6_AT_REST) {
        rc = fwmpd_bcm_port_control_set(unit, port, control, value);
        if (rc < 0) {
            REPORT_OF(rtifhal_trident_l3port_del, "itf set [IP6] (%d) failed: %s\n", id,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    rc = fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_MPLS, 1);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3port_del, "Intf set [MPLS] (%d) failed: %s\n", id,
                  rtifhal_errtext(rc));
        return -1;
    }
    *last_rc = rc;
    return 0;
}

} // namespace

int rtifhal_trident_add_l3port(struct l3lif *l3lif, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, create);
    if (g_fwm_pss_restore_mode != 0) {
        // The chip still holds the interface; the restore rebuilds the tables.
        l3lif->lif_state = RTIFHAL_LIF_PROGRAMMED;
        return 0;
    }
    if (if_index_is_eth_port_channel_intf(l3lif->ifindex) != 0) {
        return 0;
    }

    int rc = rtifhal_trident_l3port_add(l3lif, create);
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to add itf: 0x%x, %d\n", __func__, l3lif->ifindex, create);
        return rc;
    }
    rc = rtifhal_trident_add_ingress(l3lif, 0, create);
    if (rc == 0) {
        rc = rtifhal_trident_add_egress(l3lif, 0, create);
    }
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to add if: 0x%x, %d, %d\n", __func__, l3lif->ifindex, 0, create);
        return rc;
    }
    l3lif->lif_state = RTIFHAL_LIF_PROGRAMMED;
    return 0;
}

int rtifhal_trident_del_l3port(struct l3lif *l3lif, int destroy)
{
    if (l3lif == nullptr) {
        return 0;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, destroy);
    if (rtifhal_trident_del_egress(l3lif, 0, destroy) != 0) {
        REPORT("\n%s: L3LIF failed to del: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
    }
    if (rtifhal_trident_del_ingress(l3lif, 0, destroy) != 0) {
        REPORT("\n%s: L3LIF failed to del: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
    }
    if (rtifhal_trident_l3port_del(l3lif, destroy) != 0) {
        REPORT("\n%s: L3LIF failed to rm: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
    }
    l3lif->lif_state = RTIFHAL_LIF_DELETED;
    return 0;
}

int rtifhal_trident_l3port_add(struct l3lif *l3lif, int create)
{
    TRACE(" Entry: create - %d\n", create);
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    int port = -1;
    if (fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &port) != 0) {
        REPORT("unable to get intf(%d)\n", l3lif->ifindex);
        return -1;
    }
    TRACE("bcm_port: %d\n", port);

    int id = 0;
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (create == 0) {
        if (l3lif->l3lif_pd_ctxt == nullptr) {
            REPORT("unable to get itf(%d) pd_ctxt NULL\n", l3lif->ifindex);
            return -1;
        }
        if (l3lif->l3lif_pd_ctxt->l3_pd == nullptr) {
            return -1;
        }
        id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
        object.l3a_intf_id = id;
    }

    l3lif->int_vlan = RTIFHAL_VLAN_ROUTED;
    if (open_port(l3lif, unit, port, id) != 0) {
        return -1;
    }
    if (rtifhal_l3_intf_create(unit, l3lif, &object, create) != 0) {
        REPORT("itf create(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    if (join_vlan(l3lif, unit, port, id) != 0) {
        return -1;
    }
    if (sysmgr_is_fastboot_restart() != 0) {
        (void)l3lif_update_sdb_for_intf(l3lif);
        rtifhal_trident_create_default_nh(l3lif->ifindex);
    }
    return 0;
}

int rtifhal_trident_l3port_del(struct l3lif *l3lif, int destroy)
{
    TRACE(" Entry: destroy - %d\n", destroy);
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr || l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT(" Got l3lif as or l3lif_pd_ctxt null");
        return -1;
    }
    TRACE("ifindex = %x main %x destroy = %d\n", l3lif->ifindex,
          l3lif->main_l3lif != nullptr ? l3lif->main_l3lif->ifindex : 0, destroy);
    int port = -1;
    if (fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &port) != 0) {
        REPORT("unable to get itf(%d)\n", l3lif->ifindex);
        return -1;
    }

    int id = -1;
    bcm_l3_intf_t object;
    if (find_object(l3lif, unit, object, id) != 0) {
        return -1;
    }
    int controls_rc = 0;
    if (reset_families(unit, port, id, &controls_rc) != 0) {
        return -1;
    }
    if (rtifhal_l3_intf_delete(l3lif, &object, destroy) != 0) {
        REPORT("itf delete(%d) failed\n", id);
        return -1;
    }

    // The interface object is gone: from here on failures are only reported.
    if (rtifhal_vlan_delete(unit, port, l3lif->int_vlan) != 0) {
        REPORT("itf vlan enable(%d) failed: %s\n", l3lif->ifindex, rtifhal_errtext(controls_rc));
    }
    if (const int rc = fwmpd_bcm_port_discard_set(unit, port, 0); rc < 0) {
        REPORT("port_discard(%d) failed: %s\n", l3lif->ifindex, rtifhal_errtext(rc));
    }
    return 0;
}
