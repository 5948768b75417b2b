/*
 * subint_delete.cpp: the delete of a subinterface, on its port or on each
 * member of its port-channel, and the port's controls after the last one.
 *
 * The walk over the members goes on whatever fails. subint.cpp is the add.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "kinds/subint_ports.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/vlan.h"
#include "vlan/xlate.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <sdk/port.h>

namespace
{

/** Finds the port, or the trunk with what members can be read. */
int find_ports(const char *operation, const struct l3lif *l3lif, subint_ports &ports)
{
    ports.on_port_channel = if_index_is_eth_port_channel_intf(l3lif->ifindex) != 0;
    if (!ports.on_port_channel) {
        const int rc = fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &ports.port);
        if (rc != 0) {
            REPORT_NAMED(operation, "unable to get itf(%d)\n", l3lif->ifindex);
        }
        return rc;
    }
    if (fwmpd_ifindex_to_bcm_tid(l3lif->ifindex, &ports.tid) != 0) {
        REPORT_NAMED(operation, " unable to get tid(%#x)\n", l3lif->ifindex);
        return -1;
    }
    (void)read_members(ports);
    return 0;
}

/** Reads the L3 interface; only a changed number stops, a failed read doesn't. */
int read_object(const char *operation, int unit, int id, bcm_l3_intf_t &intf, int &rc)
{
    // A plain progress line, at the error level on purpose.
    REPORT_NAMED(operation, "Searching l3-intf on intf-id %x\n", id);
    bcm_l3_intf_t_init(&intf);
    intf.l3a_intf_id = id;
    (void)fwmpd_trident_batch_flush();
    rc = bcm_l3_intf_get(unit, &intf);
    if (intf.l3a_intf_id != id) {
        REPORT_NAMED(operation, "itf get (%d) mismatch: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** Each port in turn; gives the last one's result, `rc` where there is none. */
int delete_on_ports(struct l3lif *l3lif, const subint_ports &ports, const bcm_l3_intf_t &intf,
                    int destroy, int rc)
{
    if (!ports.on_port_channel) {
        (void)rtifhal_subint_restore_port_l3(l3lif->ifindex, ports.port);
        return rtifhal_trident_subint_del_int(l3lif, ports.port, 0, intf, 1, destroy);
    }
    const bcm_gport_t trunk = trunk_gport(static_cast<int>(ports.tid));
    for (int i = 0; i < walked_members(ports); ++i) {
        const int port = port_of_gport(ports.members[i].gport);
        (void)rtifhal_subint_restore_port_l3(l3lif->ifindex, port);
        rc = rtifhal_trident_subint_del_int(l3lif, port, trunk, intf, i == 0 ? 1 : 0, destroy);
    }
    return rc;
}

/** The delete under either of its names, which its messages bear. */
int delete_subint(const char *operation, struct l3lif *l3lif, int destroy)
{
    subint_ports ports = unknown_ports(rtifhal_get_bcm_unit(0));
    if (l3lif == nullptr || l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT_NAMED(operation, " Got l3lif or l3lif_pd_ctxt is null");
        return -1;
    }
    TRACE_NAMED(operation, "ifindex = %x\n", l3lif->ifindex);
    if (const int rc = find_ports(operation, l3lif, ports); rc != 0) {
        return rc;
    }
    TRACE_NAMED(operation, " bcm_port: %d tid = %d\n", ports.port, ports.tid);

    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t intf;
    bcm_l3_intf_t_init(&intf);
    const struct l3_pd *const l3_pd = l3lif->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }
    int rc = 0;
    if (read_object(operation, unit, l3_pd->l3intf_id, intf, rc) != 0) {
        return -1;
    }
    rc = delete_on_ports(l3lif, ports, intf, destroy, rc);
    // Progress again.
    REPORT_NAMED(operation, " ifindex %x Done\n", l3lif->ifindex);
    return rc;
}

} // namespace

int rtifhal_trident_del_subint(struct l3lif *l3lif, int aux, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, destroy);
    if (rtifhal_trident_del_subint_deleted(l3lif) != 0) {
        TRACE("Already deleted\n");
        return destroy != 0 ? rtifhal_l3_destroy(l3lif) : 0;
    }
    int rc = rtifhal_trident_del_egress(l3lif, aux, destroy);
    if (rc == 0) {
        rc = rtifhal_trident_del_ingress(l3lif, aux, destroy);
    }
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to del: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
        return rc;
    }
    rc = rtifhal_trident_subint_del(l3lif, destroy);
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to rm: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
        return rc;
    }
    l3lif->lif_state = RTIFHAL_LIF_DELETED;
    return 0;
}

int rtifhal_trident_subint_del(struct l3lif *l3lif, int destroy)
{
    return delete_subint(__func__, l3lif, destroy);
}

int rtifhal_subint_del(struct l3lif *l3lif, int destroy)
{
    return delete_subint(__func__, l3lif, destroy);
}

int rtifhal_trident_subint_del_int(struct l3lif *l3lif, int port, bcm_gport_t gport,
                                   bcm_l3_intf_t intf, int do_intf_del, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    int delete_rc = 0;
    const int unit = rtifhal_get_bcm_unit(0);
    // A later member has neither translation nor L3 interface of its own.
    if (gport == 0 || do_intf_del != 0) {
        const bcm_gport_t key = gport != 0 ? gport : module_port(unit, port);
        if (rtifhal_vlan_del_xlate(unit, key, l3lif->si_encap_vlan, 0, intf.l3a_intf_id) != 0) {
            REPORT("itf xlate enable(%d) failed\n", l3lif->ifindex);
            return -1;
        }
        if (do_intf_del != 0) {
            delete_rc = rtifhal_l3_intf_delete(l3lif, &intf, destroy);
        }
    }
    if (rtifhal_vlan_delete(unit, port, l3lif->si_encap_vlan) == 0) {
        return 0;
    }
    REPORT("itf vlan enable(%d) failed: %s\n", l3lif->ifindex, rtifhal_errtext(delete_rc));
    return -1;
}

int rtifhal_subint_restore_port_l3(uint32_t ifindex, int port)
{
    const struct l3lif *const main =
        l3lif_find_lif_from_ifindex(if_index_get_mainintf_from_subintf(ifindex));
    // The one in delete still counts: 1 is the last.
    if (main == nullptr || main->subint_tree == nullptr || main->subint_tree->count != 1) {
        return 0;
    }
    const struct l3lif_pi_ctxt none = {};
    const struct l3lif_pi_ctxt &properties =
        main->l3lif_pi_ctxt != nullptr ? *main->l3lif_pi_ctxt : none;
    const int unit = rtifhal_get_bcm_unit(0);
    (void)bcm_port_control_set(unit, port, PORT_CONTROL_IP4, control_value_of(properties.ipv4_en));
    (void)bcm_port_control_set(unit, port, PORT_CONTROL_IP4_MC,
                               control_value_of(properties.ipv4_mc_en));
    return bcm_port_control_set(unit, port, PORT_CONTROL_IP6, control_value_of(properties.ipv6_en));
}
