/*
 * l3pc_delete.cpp: a member of a routed port-channel goes down.
 *
 * Up to the port's controls the first failure stops; from then on the rest is
 * done all the same, but for the trunk's id and the walk over the
 * subinterfaces. The trunk stays, also without members. l3pc.cpp is the add.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "kinds/read_object.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/gport.h"
#include "vlan/vlan.h"
#include "vlan/xlate.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <sdk/trunk.h>

namespace
{

/** A member's delete, as the steps hand it on. */
struct member_delete {
    struct l3lif *member;
    struct l3lif *main;
    int unit;
    int port;
    int id; /**< number of the port-channel's L3 interface */
    bcm_l3_intf_t intf;
};

/** Reads the port-channel's object. */
int read_main_object(member_delete &del)
{
    bcm_l3_intf_t_init(&del.intf);
    if (del.main->l3lif_pd_ctxt == nullptr) {
        REPORT_OF(rtifhal_trident_l3pc_del, "l3lif_pd_ctxt is NULL\n");
        return -1;
    }
    if (del.main->l3lif_pd_ctxt->l3_pd == nullptr) {
        return -1;
    }
    del.id = del.main->l3lif_pd_ctxt->l3_pd->l3intf_id;
    (void)fwmpd_trident_batch_flush();
    return read_object("rtifhal_trident_l3pc_del", del.unit, del.id, del.id, del.intf);
}

/** Sets all five controls to 1, whatever the port-channel's properties were. */
int reset_controls(const member_delete &del)
{
    constexpr int IP4_CONTROLS[] = {PORT_CONTROL_IP4, PORT_CONTROL_IP4_MC};
    constexpr int IP6_CONTROLS[] = {PORT_CONTROL_IP6, PORT_CONTROL_IP6_MC};
    for (const int control : IP4_CONTROLS) {
        const int rc = fwmpd_bcm_port_control_set(del.unit, del.port, control, 1);
        if (rc < 0) {
            REPORT_OF(rtifhal_trident_l3pc_del, "itf set [IP4] (%d) failed: %s\n", del.id,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    for (const int control : IP6_CONTROLS) {
        const int rc = fwmpd_bcm_port_control_set(del.unit, del.port, control, 1);
        if (rc < 0) {
            REPORT_OF(rtifhal_trident_l3pc_del, "itf set [IP6] (%d) failed: %s\n", del.id,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    const int rc = fwmpd_bcm_port_control_set(del.unit, del.port, PORT_CONTROL_MPLS, 1);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "itf set [MPLS] (%d) failed: %s\n", del.id,
                  rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** The L3 interface goes with the last member. */
void delete_object(member_delete &del, int destroy)
{
    if (destroy == 0) {
        TRACE_OF(rtifhal_trident_l3pc_del,
                 "Not calling l3_intf_delete for ifindex %x as not destroy\n", del.member->ifindex);
        return;
    }
    const int rc = rtifhal_l3_intf_delete(del.main, &del.intf, destroy);
    if (rc < 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "bcm_l3_intf_delete(%d) failed: %s\n", del.id,
                  rtifhal_errtext(rc));
    }
}

/** The port leaves trunk and VLAN and discards nothing; `discard_rc` is the last code. */
int leave_trunk(const member_delete &del, int &discard_rc)
{
    uint32_t tid = 0;
    if (const int rc = fwmpd_ifindex_to_bcm_tid(del.main->ifindex, &tid); rc != 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "unable to get tid itf(%d)\n", del.member->ifindex);
        return rc;
    }
    bcm_trunk_member_t member;
    bcm_trunk_member_t_init(&member);
    member.gport = module_port(del.unit, del.port);
    const int member_rc = fwmpd_bcm_trunk_member_delete(del.unit, static_cast<int>(tid), member);
    if (member_rc < 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "itf del (%d) failed: %s\n", del.member->ifindex,
                  rtifhal_errtext(member_rc));
    }
    if (rtifhal_vlan_delete(del.unit, del.port, del.main->int_vlan) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "itf vlan enable(%d) failed: %s\n", del.member->ifindex,
                  rtifhal_errtext(member_rc));
    }
    discard_rc = fwmpd_bcm_port_discard_set(del.unit, del.port, 0);
    if (discard_rc < 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "port_discard(%d) failed: %s\n", del.member->ifindex,
                  rtifhal_errtext(discard_rc));
    }
    return 0;
}

/** One subinterface off the member. */
int remove_subinterface(const member_delete &del, const struct l3lif *si, int discard_rc)
{
    const struct l3_pd *const l3_pd = find_l3_pd(si);
    const int iif = l3_pd != nullptr ? l3_pd->l3intf_id : 0;
    TRACE_OF(rtifhal_trident_l3pc_del, "SI vlan %d intf-id = %d\n", si->si_encap_vlan, iif);
    if (rtifhal_vlan_del_xlate(del.unit, module_port(del.unit, del.port), si->si_encap_vlan, 0,
                               iif) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "itf xlate disable(%d) failed\n", del.member->ifindex);
        return -1;
    }
    if (rtifhal_vlan_delete(del.unit, del.port, si->si_encap_vlan) != 0) {
        REPORT_OF(rtifhal_trident_l3pc_del, "vlan disable(%d) failed: %s\n", del.member->ifindex,
                  rtifhal_errtext(discard_rc));
        return -1;
    }
    return 0;
}

int remove_subinterfaces(const member_delete &del, int discard_rc)
{
    if (rtifhal_if_has_si(del.main->ifindex) == 0) {
        return 0;
    }
    TRACE_OF(rtifhal_trident_l3pc_del, "Disable subintercae setting on %x\n", del.member->ifindex);
    avl_tree_t *const tree = del.main->subint_tree;
    if (tree == nullptr || tree->count == 0) {
        return 0;
    }
    for (avl_node_t *node = avl_get_first(tree); node != nullptr; node = avl_get_next(tree, node)) {
        if (remove_subinterface(del, static_cast<const struct l3lif *>(node->payload),
                                discard_rc) != 0) {
            return -1;
        }
    }
    return 0;
}

} // namespace

int rtifhal_trident_del_l3pc(struct l3lif *l3lif, int destroy)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d\n", __func__, l3lif->ifindex, destroy);
    if (l3lif->lif_state != RTIFHAL_LIF_PROGRAMMED) {
        return 0;
    }
    int rc = rtifhal_trident_del_egress(l3lif, 0, destroy);
    if (rc == 0) {
        rc = rtifhal_trident_del_ingress(l3lif, 0, destroy);
    }
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to del: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
        return rc;
    }
    rc = rtifhal_trident_l3pc_del(l3lif, destroy);
    if (rc != 0) {
        REPORT("\n%s: L3LIF failed to rm: 0x%x, %d\n", __func__, l3lif->ifindex, 0);
        return rc;
    }
    if (l3lif->main_l3lif != nullptr) {
        l3lif->main_l3lif->lif_state = RTIFHAL_LIF_DELETED;
    }
    l3lif->lif_state = RTIFHAL_LIF_DELETED;
    return 0;
}

int rtifhal_trident_l3pc_del(struct l3lif *l3lif, int destroy)
{
    TRACE(" Entry: - \n");
    if (l3lif == nullptr || l3lif->main_l3lif == nullptr) {
        REPORT(" Got l3lif or l3lif->main_l3lif as null");
        return -1;
    }
    TRACE("ifindex = %x destroy = %d\n", l3lif->ifindex, destroy);
    member_delete del = {};
    del.member = l3lif;
    del.main = l3lif->main_l3lif;
    del.port = -1;
    if (const int rc = fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &del.port); rc != 0) {
        REPORT("unable to get itf(%d)\n", l3lif->ifindex);
        return rc;
    }
    del.unit = rtifhal_get_bcm_unit(0);
    if (read_main_object(del) != 0 || reset_controls(del) != 0) {
        return -1;
    }
    delete_object(del, destroy);
    int discard_rc = 0;
    if (const int rc = leave_trunk(del, discard_rc); rc != 0) {
        return rc;
    }
    return remove_subinterfaces(del, discard_rc);
}
