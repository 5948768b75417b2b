/*
 * xlate.cpp: see xlate.h.
 */
#include "vlan/xlate.h"

#include "frame/trace.h"

#include <fwmpd/wrappers.h>

namespace
{

constexpr int PORT_VLAN_CONTROL_FIRST_KEY = 14;
constexpr int KEY_PORT_OUTER_VLAN = 8;
constexpr int ACTION_REPLACE = 2;
constexpr int VLAN_MASK = 0xffff;

/** The inner VLAN of the key differs on purpose: the wrappers accept this pair. */
constexpr int ADD_INNER_VLAN = 65535;
constexpr int DELETE_INNER_VLAN = 0;

} // namespace

int rtifhal_vlan_xlate_enable(int unit, int port)
{
    TRACE("port %d\n", port);
    const int rc = fwmpd_bcm_vlan_control_port_set(unit, port, PORT_VLAN_CONTROL_FIRST_KEY,
                                                   KEY_PORT_OUTER_VLAN);
    if (rc < 0) {
        REPORT("xlate enable (%d) failed: %s\n", port, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

int rtifhal_vlan_xlate(int unit, bcm_gport_t gport, int old_vid, int new_vid, int l3_iif)
{
    TRACE("gport %x, old_vid %d, new_vid %d, l3_iif %d\n", gport, old_vid, new_vid, l3_iif);
    bcm_vlan_action_set_t action;
    bcm_vlan_action_set_t_init(&action);
    action.new_outer_vlan = static_cast<bcm_vlan_t>(new_vid);
    action.ingress_if = l3_iif;
    if (old_vid != new_vid) {
        action.ot_outer = ACTION_REPLACE;
    }
    const int rc = fwmpd_bcm_vlan_translate_action_add(
        unit, gport, KEY_PORT_OUTER_VLAN, old_vid & VLAN_MASK, ADD_INNER_VLAN, &action);
    if (rc < 0) {
        REPORT("xlate enable (%d) %d %d %d  failed: %s\n", gport, old_vid, new_vid, l3_iif,
               rtifhal_errtext(rc));
        return -1;
    }
    TRACE("xlate enable ( gport %x) from-vlan %d to-vlan %d if %d\n", gport, old_vid, new_vid,
          l3_iif);
    return 0;
}

int rtifhal_vlan_del_xlate(int unit, bcm_gport_t gport, int old_vlan, int /*new_vlan*/,
                           int /*l3_iif*/)
{
    TRACE("old-vlan %d gport %x\n", old_vlan, gport);
    const int rc = fwmpd_bcm_vlan_translate_action_delete(unit, gport, KEY_PORT_OUTER_VLAN,
                                                          old_vlan & VLAN_MASK, DELETE_INNER_VLAN);
    if (rc < 0) {
        REPORT("bcm_vlan_translate_action_del(%d) failed: %s\n", old_vlan, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}
