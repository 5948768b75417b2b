/*
 * l3pc.cpp: a routed port-channel comes up member by member.
 *
 * The record handed in is the member's, its main_l3lif the port-channel's. The
 * L3 interface is made with the first member; each member joins the trunk and
 * VLAN 4094, and gets the subinterfaces that the port-channel has already.
 * Nothing stops an add, which always ends in state 3.
 *
 * l3pc_trunk.cpp has the trunk, l3pc_delete.cpp the way back; subinterfaces
 * that come later walk the trunk's members themselves, subint.cpp.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/gport.h"
#include "vlan/vlan.h"
#include "vlan/xlate.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <services/system.h>

namespace
{

/** A member's add, as the steps hand it on. */
struct member_add {
    struct l3lif *member;
    struct l3lif *main;
    int unit;
    int port;
    int create;
    bcm_l3_intf_t intf;
};

/** Finds port and trunk, and lets the port join. */
int join_trunk(member_add &add)
{
    uint32_t tid = 0;
    int rc = fwmpd_ifindex_to_bcm_port(add.member->ifindex, &add.port);
    if (rc != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, "unable to get bcm itf(%d)\n", add.member->ifindex);
        return rc;
    }
    rc = fwmpd_ifindex_to_bcm_tid(add.main->ifindex, &tid);
    if (rc != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, "unable to get tid itf(%x) pc(%x)\n",
                  add.member->ifindex, add.main->ifindex);
        return rc;
    }
    add.main->tid = tid;
    TRACE_OF(rtifhal_trident_l3pc_add, "ifindex = %x port = %d main ifindex = %x tid = %d \n",
             add.member->ifindex, add.port, add.main->ifindex, tid);
    rc = rtifhal_alloc_l3pc_add(add.unit, static_cast<int>(tid), add.port, add.create);
    if (rc != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, "unable to get tid itf(%d)\n", add.member->ifindex);
    }
    return rc;
}

/** Reads the object of a port-channel that is up already. */
int read_existing(member_add &add)
{
    if (add.main->l3lif_pd_ctxt == nullptr) {
        REPORT_OF(rtifhal_trident_l3pc_add, "unable to get itf(%d) NULL: %s\n", add.member->ifindex,
                  rtifhal_errtext(0));
        return -1;
    }
    const struct l3_pd *const l3_pd = add.main->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        REPORT_OF(rtifhal_trident_l3pc_add, "unable to get pd(%d) NULL: %s\n", add.member->ifindex,
                  rtifhal_errtext(0));
        return -1;
    }
    const int id = l3_pd->l3intf_id;
    bcm_l3_intf_t_init(&add.intf);
    add.intf.l3a_intf_id = id;
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l3_intf_get(add.unit, &add.intf);
    if (add.intf.l3a_intf_id != id) {
        REPORT_OF(rtifhal_trident_l3pc_add, "itf get (%d) mismatch: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** The port's controls: those of the properties, or open where subinterfaces are. */
void set_controls(const member_add &add)
{
    const int unit = add.unit;
    const int port = add.port;
    if (rtifhal_if_has_si(add.main->ifindex) != 0) {
        (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4, 1);
        (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4_MC, 1);
        return;
    }
    const struct l3lif_pi_ctxt none = {};
    const struct l3lif_pi_ctxt &properties =
        add.main->l3lif_pi_ctxt != nullptr ? *add.main->l3lif_pi_ctxt : none;
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4,
                                     control_value_of(properties.ipv4_en));
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4_MC,
                                     control_value_of(properties.ipv4_mc_en));
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP6,
                                     control_value_of(properties.ipv6_en));
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP6_MC, 0);
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_MPLS,
                                     control_value_of(properties.mpls_en));
}

/** One subinterface on the new member, its translation keyed on the member itself. */
int replay_subinterface(const member_add &add, const struct l3lif *si)
{
    const struct l3_pd *const l3_pd = find_l3_pd(si);
    const int iif = l3_pd != nullptr ? l3_pd->l3intf_id : 0;
    TRACE_OF(rtifhal_trident_l3pc_add, "SI lif %p ifindex %x vlan %d intf_id = %d\n",
             static_cast<const void *>(si), si->ifindex, si->si_encap_vlan, iif);
    if (rtifhal_vlan_create(add.unit, si->si_encap_vlan, add.port) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, "vlan enable for vlan %d port %d failed\n",
                  si->si_encap_vlan, add.port);
        return -1;
    }
    if (rtifhal_vlan_xlate_enable(add.unit, add.port) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, "xlate enable(ifindex %d) failed\n",
                  add.member->ifindex);
        return -1;
    }
    if (rtifhal_vlan_xlate(add.unit, module_port(add.unit, add.port), si->si_encap_vlan,
                           RTIFHAL_VLAN_ROUTED, iif) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_add, " itf xlate enable(%d) failed\n", add.member->ifindex);
        return -1;
    }
    return 0;
}

/** The subinterfaces that are there already; a walk that was made ends `rc` at 0. */
int replay_subinterfaces(const member_add &add, int &rc)
{
    if (rtifhal_if_has_si(add.main->ifindex) == 0) {
        return 0;
    }
    TRACE_OF(rtifhal_trident_l3pc_add, "Enable subinterface setting on %x\n", add.member->ifindex);
    rc = fwmpd_bcm_port_untagged_vlan_set(add.unit, add.port, RTIFHAL_VLAN_ROUTED);
    avl_tree_t *const tree = add.main->subint_tree;
    if (tree == nullptr || tree->count == 0) {
        return 0;
    }
    for (avl_node_t *node = avl_get_first(tree); node != nullptr; node = avl_get_next(tree, node)) {
        if (replay_subinterface(add, static_cast<const struct l3lif *>(node->payload)) != 0) {
            return -1;
        }
        rc = 0;
    }
    return 0;
}

} // namespace

int rtifhal_trident_add_l3pc(struct l3lif *l3lif, int create)
{
    if (l3lif == nullptr) {
        return 0;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, create);
    if (rtifhal_trident_l3pc_add(l3lif, create) != 0) {
        REPORT("\n%s: L3LIF failed to add itf: 0x%x, %d\n", __func__, l3lif->ifindex, create);
    }
    if (rtifhal_trident_add_ingress(l3lif, 0, create) != 0) {
        REPORT("\n%s: L3LIF failed to add if: 0x%x, %d, %d\n", __func__, l3lif->ifindex, 0, create);
    }
    if (rtifhal_trident_add_egress(l3lif, 0, create) != 0) {
        REPORT("\n%s: L3LIF failed to add if: 0x%x, %d, %d\n", __func__, l3lif->ifindex, 0, create);
    }
    if (l3lif->main_l3lif != nullptr) {
        l3lif->main_l3lif->lif_state = RTIFHAL_LIF_PROGRAMMED;
    }
    l3lif->lif_state = RTIFHAL_LIF_PROGRAMMED;
    return 0;
}

int rtifhal_trident_l3pc_add(struct l3lif *l3lif, int create)
{
    TRACE(" Entry: - \n");
    member_add add = {};
    add.unit = rtifhal_get_bcm_unit(0);
    if (l3lif == nullptr || l3lif->main_l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    add.member = l3lif;
    add.main = l3lif->main_l3lif;
    add.port = -1;
    add.create = create;
    if (const int joined = join_trunk(add); joined != 0) {
        return joined;
    }

    bcm_l3_intf_t_init(&add.intf);
    if (create != 0) {
        add.main->int_vlan = RTIFHAL_VLAN_ROUTED;
    } else if (read_existing(add) != 0) {
        return -1;
    }
    (void)fwmpd_bcm_switch_control_set(add.unit, SWITCH_CONTROL_TRUNK_L3, 1);
    (void)fwmpd_bcm_switch_control_set(add.unit, SWITCH_CONTROL_L3, 1);
    set_controls(add);

    int rc = fwmpd_bcm_port_untagged_vlan_set(add.unit, add.port, RTIFHAL_VLAN_ROUTED);
    if (create != 0) {
        rc = rtifhal_l3_intf_create(add.unit, l3lif, &add.intf, create);
        if (rc != 0) {
            REPORT("itf create(%d) failed\n", l3lif->ifindex);
        }
    } else {
        TRACE("Skipping l3_intf_create for %x\n", l3lif->ifindex);
    }
    if (rtifhal_vlan_create(add.unit, add.main->int_vlan, add.port) != 0) {
        REPORT("itf vlan enable(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    if (replay_subinterfaces(add, rc) != 0) {
        return -1;
    }
    if (sysmgr_is_fastboot_restart() != 0) {
        (void)l3lif_update_sdb_for_intf(l3lif);
        rtifhal_trident_create_default_nh(l3lif->ifindex);
    }
    return rc;
}

int rtifhal_trident_add_l3pc_member(struct l3lif *l3lif, uint32_t member, int flag)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, 0x%x, %d\n", __func__, l3lif->ifindex, member, flag);
    return 0;
}

int rtifhal_trident_del_l3pc_member(struct l3lif *l3lif, uint32_t member)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, 0x%x\n", __func__, l3lif->ifindex, member);
    return 0;
}
