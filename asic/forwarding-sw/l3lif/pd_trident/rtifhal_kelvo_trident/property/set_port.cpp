/*
 * set_port.cpp: property setters of routed ports and port-channels.
 *
 * They aren't told what changed: objects and port controls are written from
 * all of the properties. A port is shared with its subinterfaces, so a family
 * that any of them uses stays on.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "property/setter_steps.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <sdk/error.h>
#include <services/avl.h>

namespace
{

/** What a port routes, on behalf of a main interface and its subinterfaces. */
struct port_families {
    int ipv4;
    int ipv4_mc;
    int ipv6;
    int mpls;
};

void add_families(port_families &families, const struct l3lif_pi_ctxt *properties)
{
    if (properties != nullptr) {
        families.ipv4 |= control_value_of(properties->ipv4_en);
        families.ipv4_mc |= control_value_of(properties->ipv4_mc_en);
        families.ipv6 |= control_value_of(properties->ipv6_en);
        families.mpls |= control_value_of(properties->mpls_en);
    }
}

port_families families_of(const struct l3lif *l3lif)
{
    port_families families = {};
    add_families(families, l3lif->l3lif_pi_ctxt);
    avl_tree_t *const tree = l3lif->subint_tree;
    if (tree != nullptr) {
        for (avl_node_t *node = avl_get_first(tree); node != nullptr;
             node = avl_get_next(tree, node)) {
            add_families(families, static_cast<const struct l3lif *>(node->payload)->l3lif_pi_ctxt);
        }
    }
    return families;
}

void write_controls(int unit, int port, const port_families &families)
{
    const struct {
        int control;
        int value;
    } controls[] = {
        {PORT_CONTROL_IP4, families.ipv4},  {PORT_CONTROL_IP4_MC, families.ipv4_mc},
        {PORT_CONTROL_IP6, families.ipv6},  {PORT_CONTROL_IP6_MC, 0},
        {PORT_CONTROL_MPLS, families.mpls},
    };
    for (const auto &[control, value] : controls) {
        (void)fwmpd_bcm_port_control_set(unit, port, control, value);
    }
}

/** Writes the controls of each member, up to the first without a port. */
int write_members(int unit, const struct l3lif *l3lif, const port_families &families)
{
    avl_tree_t *const members = l3lif->pc_member_tree;
    if (members == nullptr || members->count == 0) {
        return 0;
    }
    avl_node_t *next = nullptr;
    for (avl_node_t *node = avl_get_first(members); node != nullptr; node = next) {
        next = avl_get_next(members, node);
        int port = -1;
        const int rc =
            fwmpd_ifindex_to_bcm_port(*static_cast<const uint32_t *>(node->payload), &port);
        if (rc != 0) {
            REPORT_OF(rtifhal_set_kelvo_l3_property_l3pc,
                      "unable to get itf(%d) in l3_property_l3pc set\n", l3lif->ifindex);
            return rc;
        }
        TRACE_OF(rtifhal_set_kelvo_l3_property_l3pc, " L3PC member - %d\n", port);
        write_controls(unit, port, families);
    }
    return 0;
}

int find_port(const struct l3lif *l3lif, int *port)
{
    const int rc = fwmpd_ifindex_to_bcm_port(l3lif->ifindex, port);
    if (rc != 0) {
        REPORT_OF(rtifhal_set_kelvo_l3_property_l3int, "unable to get itf(%d)\n", l3lif->ifindex);
    }
    return rc;
}

} // namespace

int rtifhal_set_kelvo_l3_property_l3int(struct l3lif *l3lif)
{
    TRACE(" Entry: - \n");
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (!has_state(__func__, l3lif)) {
        return 0;
    }
    int port = -1;
    int rc = find_port(l3lif, &port);
    if (rc != 0) {
        return rc;
    }
    const int id = start_object(__func__, l3lif, object);
    if (id == 0) {
        return 0;
    }
    (void)fwmpd_trident_batch_flush();
    (void)fwmpd_trident_batch_flush();
    (void)bcm_l3_intf_get(unit, &object);
    rewrite_interface(__func__, unit, l3lif, object, id);
    rc = find_port(l3lif, &port);
    if (rc != 0) {
        return rc;
    }
    write_controls(unit, port, families_of(l3lif));
    (void)rewrite_ingress(__func__, l3lif, id);
    return 0;
}

int rtifhal_set_kelvo_l3_property_l3pc(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (!has_state(__func__, l3lif)) {
        return 0;
    }
    const int id = start_object(__func__, l3lif, object);
    if (id == 0) {
        return 0;
    }
    // No flush: the object is read as the chip has it now.
    (void)bcm_l3_intf_get(unit, &object);
    rewrite_interface(__func__, unit, l3lif, object, id);
    (void)rewrite_ingress(__func__, l3lif, id);
    return write_members(unit, l3lif, families_of(l3lif));
}

int rtifhal_ingress_add_l3int(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT("bcm_l3_intf_find_vlan(%d) NULL: %s\n", 0, _shr_errmsg[0]);
        return -1;
    }
    if (l3lif->l3lif_pd_ctxt->l3_pd == nullptr) {
        return -1;
    }
    const int id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
    bcm_l3_intf_t_init(&object);
    object.l3a_intf_id = id;
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l3_intf_get(unit, &object);
    if (object.l3a_intf_id != id) {
        REPORT("itf get (%d) mismatch: %s\n", id, rtifhal_errtext(rc));
        return -1;
    }
    return rc;
}
