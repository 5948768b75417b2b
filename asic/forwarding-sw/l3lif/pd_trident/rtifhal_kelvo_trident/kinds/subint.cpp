/*
 * subint.cpp: the add of a subinterface: a routed interface on a tagged VLAN
 * of a port or of a port-channel.
 *
 * The VLAN is only a key: in the chip all subinterfaces run in VLAN 4094 and
 * are told apart by the ingress interface that the translation names. On a
 * port-channel the work is done on each member, but for the L3 interface and
 * the translation, which is keyed on the trunk and so covers all members.
 *
 * subint_delete.cpp is the way back, l3pc.cpp replays subinterfaces on members
 * that come later.
 */
#include "frame/controls.h"
#include "frame/properties.h"
#include "frame/trace.h"
#include "kinds/subint_ports.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"
#include "vlan/vlan.h"
#include "vlan/xlate.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <l3lif/l3lif_layer.h>
#include <services/system.h>

namespace
{

/** Finds the port, or the trunk with its members as the chip has them. */
int find_ports(struct l3lif *l3lif, subint_ports &ports)
{
    ports.on_port_channel = if_index_is_eth_port_channel_intf(l3lif->ifindex) != 0;
    if (!ports.on_port_channel) {
        if (fwmpd_ifindex_to_bcm_port(l3lif->ifindex, &ports.port) != 0) {
            REPORT_OF(rtifhal_trident_subint_add, " unable to get bcm port(%#x)\n", l3lif->ifindex);
            return -1;
        }
        return 0;
    }
    if (fwmpd_ifindex_to_bcm_tid(l3lif->ifindex, &ports.tid) != 0) {
        REPORT_OF(rtifhal_trident_subint_add, " unable to get tid(%#x)\n", l3lif->ifindex);
        return -1;
    }
    if (const int rc = read_members(ports); rc < 0) {
        REPORT_OF(rtifhal_trident_subint_add, "unable to get member-ports(%#x) %s\n",
                  l3lif->ifindex, rtifhal_errtext(rc));
        return -1;
    }
    l3lif->tid = ports.tid;
    return 0;
}

/** What the L3 interface starts from; VLAN and number by whether it is new. */
int prepare_object(struct l3lif *l3lif, int create, bcm_l3_intf_t &intf)
{
    bcm_l3_intf_t_init(&intf);
    if (create != 0) {
        l3lif->int_vlan = l3lif->si_encap_vlan;
        return 0;
    }
    if (l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT_OF(rtifhal_trident_subint_add, " Null l3lif_pd_ctxt(%#x)\n", l3lif->ifindex);
        return -1;
    }
    if (l3lif->l3lif_pd_ctxt->l3_pd == nullptr) {
        return -1;
    }
    intf.l3a_intf_id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
    return 0;
}

void fill_properties(const struct l3lif_pi_ctxt *properties, bcm_l3_intf_t &intf)
{
    intf.l3a_vrf = vrf_of_property(properties != nullptr ? properties->vrf : 0);
    intf.l3a_mtu = mtu_of_property(properties != nullptr ? properties->mtu : 0);
}

/** Each member in turn; a member that is no port goes through with port -1. */
int add_on_members(struct l3lif *l3lif, const subint_ports &ports, const bcm_l3_intf_t &intf,
                   int create)
{
    const bcm_gport_t trunk = trunk_gport(static_cast<int>(ports.tid));
    for (int i = 0; i < walked_members(ports); ++i) {
        const bcm_gport_t gport = ports.members[i].gport;
        const int port = port_of_gport(gport);
        const int intf_created = i == 0 ? 0 : 1;
        if (rtifhal_trident_subint_add_int(l3lif, port, trunk, intf, intf_created, create) < 0) {
            REPORT_OF(rtifhal_trident_subint_add,
                      "subint_add_int (%d, %x) gport %d port %d failed: \n", l3lif->ifindex,
                      intf.l3a_intf_id, gport, port);
            return -1;
        }
    }
    return 0;
}

int add_on_ports(struct l3lif *l3lif, const subint_ports &ports, const bcm_l3_intf_t &intf,
                 int create)
{
    if (ports.on_port_channel) {
        return add_on_members(l3lif, ports, intf, create);
    }
    if (rtifhal_trident_subint_add_int(l3lif, ports.port, 0, intf, 0, create) < 0) {
        REPORT_OF(rtifhal_trident_subint_add, "subint_add_int (%d, %x) port %d failed: \n",
                  l3lif->ifindex, intf.l3a_intf_id, ports.port);
        return -1;
    }
    return 0;
}

/** Opens a port for subinterfaces, whatever the main interface's own families are. */
void open_port(int unit, int port)
{
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4, 1);
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP4_MC, 1);
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP6, 1);
    (void)fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_IP6_MC, 0);
    (void)fwmpd_bcm_port_untagged_vlan_set(unit, port, RTIFHAL_VLAN_ROUTED);
}

/** The translation: on the port itself, or once for all on the trunk. */
int add_translation(const struct l3lif *l3lif, int unit, int port, bcm_gport_t gport,
                    int intf_created, int iif)
{
    const int vlan = l3lif->si_encap_vlan;
    if (gport == 0) {
        return rtifhal_vlan_xlate(unit, module_port(unit, port), vlan, RTIFHAL_VLAN_ROUTED, iif);
    }
    return intf_created == 0 ? rtifhal_vlan_xlate(unit, gport, vlan, RTIFHAL_VLAN_ROUTED, iif) : 0;
}

} // namespace

int rtifhal_trident_add_subint(struct l3lif *l3lif, int aux, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("\n%s: L3LIF: 0x%x, %d, %d\n", __func__, l3lif->ifindex, aux, create);
    int rc = rtifhal_trident_subint_add(l3lif, create);
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
        return rc;
    }
    l3lif->lif_state = RTIFHAL_LIF_PROGRAMMED;
    return 0;
}

int rtifhal_trident_subint_add(struct l3lif *l3lif, int create)
{
    subint_ports ports = unknown_ports(rtifhal_get_bcm_unit(0));
    if (l3lif == nullptr) {
        REPORT(" Got l3lif as null\n");
        return -1;
    }
    TRACE("ifindex = %x create = %d\n", l3lif->ifindex, create);
    if (find_ports(l3lif, ports) != 0) {
        return -1;
    }
    TRACE(" bcm_port: %d tid = %d\n", ports.port, ports.tid);

    bcm_l3_intf_t intf;
    if (prepare_object(l3lif, create, intf) != 0) {
        return -1;
    }
    const int rc = fwmpd_bcm_switch_control_set(ports.unit, SWITCH_CONTROL_L3, 1);
    if (rc < 0) {
        REPORT("itf set (%d) failed: %s\n", intf.l3a_intf_id, rtifhal_errtext(rc));
        return -1;
    }
    fill_properties(l3lif->l3lif_pi_ctxt, intf);
    if (add_on_ports(l3lif, ports, intf, create) != 0) {
        return -1;
    }
    TRACE("Created encap-vlan = %d ifindex = %x intf-id = %x port = %d\n", l3lif->si_encap_vlan,
          l3lif->ifindex, intf.l3a_intf_id, ports.port);
    if (sysmgr_is_fastboot_restart() != 0) {
        (void)l3lif_update_sdb_for_intf(l3lif);
        rtifhal_trident_create_default_nh(l3lif->ifindex);
    }
    return 0;
}

int rtifhal_trident_subint_add_int(struct l3lif *l3lif, int port, bcm_gport_t gport,
                                   bcm_l3_intf_t intf, int intf_created, int create)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE(" Entry: - \n");
    const int unit = rtifhal_get_bcm_unit(0);
    TRACE("bcm_port = %d intf-id = %d intf_created = %d\n", port, intf.l3a_intf_id, intf_created);
    open_port(unit, port);

    // `intf` is this call's own copy: its number doesn't reach the next member.
    if (intf_created == 0 && rtifhal_l3_intf_create(unit, l3lif, &intf, create) != 0) {
        REPORT("itf create(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    if (rtifhal_vlan_create(unit, l3lif->si_encap_vlan, port) != 0) {
        REPORT("itf vlan enable(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    if (rtifhal_vlan_xlate_enable(unit, port) != 0) {
        REPORT("itf xlate enable(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    if (add_translation(l3lif, unit, port, gport, intf_created, intf.l3a_intf_id) != 0) {
        REPORT(" itf xlate enable(%d) failed\n", l3lif->ifindex);
        return -1;
    }
    return 0;
}
