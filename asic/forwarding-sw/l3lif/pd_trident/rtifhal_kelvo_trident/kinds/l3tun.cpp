/*
 * l3tun.cpp: a tunnel interface: an L3 interface without a port, on VLAN 4094.
 *
 * The tunnel's initiator is programmed elsewhere and only cleared here. A
 * delete always destroys. lif_state isn't kept for tunnels.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "kinds/read_object.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <sdk/switch.h>
#include <sdk/tunnel.h>

namespace
{

/** The initiator call takes the unit as a literal. */
constexpr int TUNNEL_UNIT = 0;

/** Reads the object of an interface that exists already, to start from. */
int read_existing(const struct l3lif *l3lif, int unit, bcm_l3_intf_t &object, int &id)
{
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT_OF(rtifhal_l3tun_add, "unable to get itf(%d) pd_ctxt NULL\n", l3lif->ifindex);
        return -1;
    }
    if (l3lif->l3lif_pd_ctxt->l3_pd == nullptr) {
        return -1;
    }
    id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
    (void)fwmpd_trident_batch_flush();
    return read_object("rtifhal_l3tun_add", unit, static_cast<int>(l3lif->ifindex), id, object);
}

/** Reads the object that is to go. */
int read_leaving(const struct l3lif *l3lif, int unit, bcm_l3_intf_t &object)
{
    bcm_l3_intf_t_init(&object);
    const struct l3_pd *const l3_pd = l3lif->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }
    (void)fwmpd_trident_batch_flush();
    return read_object("rtifhal_l3tun_del", unit, static_cast<int>(l3lif->ifindex),
                       l3_pd->l3intf_id, object);
}

/** Unbinds the initiator; a refusal doesn't keep the interface. */
void clear_initiator(const struct l3lif *l3lif, bcm_l3_intf_t &object)
{
    if (object.l3a_tunnel_idx == 0) {
        return;
    }
    const int rc = bcm_tunnel_initiator_clear(TUNNEL_UNIT, &object);
    if (rc < 0) {
        REPORT_OF(rtifhal_l3tun_del, "tunnel_initiator_clear (%d) failed: %s\n", l3lif->ifindex,
                  rtifhal_errtext(rc));
    } else {
        TRACE_OF(rtifhal_l3tun_del, "tunnel_initiator_clear success\n");
    }
}

} // namespace

int rtifhal_trident_add_l3tun(struct l3lif *l3lif, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("L3LIF: 0x%x, %d\n", l3lif->ifindex, create);
    if (l3lif->l3lif_pi_ctxt != nullptr) {
        l3lif->l3lif_pi_ctxt->ipv4_en = 1;
    }
    int rc = rtifhal_l3tun_add(l3lif, create);
    if (rc != 0) {
        REPORT("L3LIF failed to add itf: 0x%x, %d\n", l3lif->ifindex, create);
        return rc;
    }
    rc = rtifhal_trident_add_ingress(l3lif, 0, create);
    if (rc != 0) {
        REPORT("L3LIF failed to add ing if: 0x%x, %d, %d\n", l3lif->ifindex, 0, create);
        return rc;
    }
    rc = rtifhal_trident_add_egress(l3lif, 0, create);
    if (rc != 0) {
        REPORT("L3LIF failed to add egr if: 0x%x, %d, %d\n", l3lif->ifindex, 0, create);
        return rc;
    }
    return 0;
}

int rtifhal_trident_del_l3tun(struct l3lif *l3lif, int destroy)
{
    if (l3lif == nullptr) {
        return 0;
    }
    TRACE("L3LIF: 0x%x, %d\n", l3lif->ifindex, destroy);
    if (rtifhal_trident_del_egress(l3lif, 0, 1) != 0) {
        REPORT("L3LIF failed to del egr: 0x%x, %d\n", l3lif->ifindex, 0);
    }
    if (rtifhal_trident_del_ingress(l3lif, 0, 1) != 0) {
        REPORT("L3LIF failed to del ing: 0x%x, %d\n", l3lif->ifindex, 0);
    }
    if (rtifhal_l3tun_del(l3lif, 1) != 0) {
        REPORT("L3LIF failed to del if: 0x%x, %d\n", l3lif->ifindex, 0);
    }
    return 0;
}

int rtifhal_l3tun_add(struct l3lif *l3lif, int create)
{
    TRACE(" Entry: create - %d\n", create);
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    int id = 0;
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (create != 0) {
        l3lif->int_vlan = RTIFHAL_VLAN_ROUTED;
    } else if (read_existing(l3lif, unit, object, id) != 0) {
        return -1;
    }

    const int rc = bcm_switch_control_set(unit, SWITCH_CONTROL_L3, 1);
    if (rc < 0) {
        REPORT("itf set (%d) failed: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    if (rtifhal_l3_intf_create(unit, l3lif, &object, create) != 0) {
        REPORT("itf create(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    return 0;
}

int rtifhal_l3tun_del(struct l3lif *l3lif, int destroy)
{
    TRACE(" Entry: destroy = %d\n", destroy);
    const int unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr || l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT(" Got l3lif as or l3lif_pd_ctxt null");
        return -1;
    }
    TRACE("ifindex = %x main %x destroy = %d\n", l3lif->ifindex,
          l3lif->main_l3lif != nullptr ? l3lif->main_l3lif->ifindex : 0, destroy);

    bcm_l3_intf_t object;
    if (read_leaving(l3lif, unit, object) != 0) {
        return -1;
    }
    if (destroy == 0) {
        TRACE("Not destroying l3_intf for ifindex %x\n", l3lif->ifindex);
        return 0;
    }
    const int id = object.l3a_intf_id;
    clear_initiator(l3lif, object);
    if (rtifhal_l3_intf_delete(l3lif, &object, destroy) != 0) {
        REPORT("itf delete(%d) failed\n", id);
        return -1;
    }
    return 0;
}
