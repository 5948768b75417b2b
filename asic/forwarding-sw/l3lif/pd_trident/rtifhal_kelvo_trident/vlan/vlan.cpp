/*
 * vlan.cpp: see vlan.h.
 *
 * A new VLAN joins the one spanning tree group of VLAN 4094 and gets flags
 * that keep it from learning and flooding; an existing one keeps its own. The
 * end of a VLAN isn't decided here: it falls out of its uses, flood_block.cpp.
 * Nothing is undone after a failure.
 */
#include "vlan/vlan.h"

#include "field/floodlist.h"
#include "frame/controls.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/port.h>
#include <sdk/stg.h>

namespace
{

/** The SDK's code for a VLAN that exists already. */
constexpr int SDK_EXISTS = -8;

/** Flags of a new routed VLAN, with the SDN agent and without it. */
constexpr uint32_t NEW_VLAN_FLAGS_SDN = 0x78;
constexpr uint32_t NEW_VLAN_FLAGS = 0x278;

/** Every VLAN has the CPU in it: a literal, not the port that takes the block masks. */
constexpr int VLAN_CPU_MEMBER = 0;

constexpr int STG_MASK = 0xffff;

constexpr int PORT_VLAN_CONTROL_XLATE = 2;
constexpr int PORT_VLAN_CONTROL_XLATE_MISS_DROP = 4;

/** Puts VLAN 4094 into a group of its own, once for all ports. */
int ensure_routed_vlan_group(int unit, uint16_t vlan, int port)
{
    if (l3_stg_allocated != 0) {
        return 0;
    }
    if (fwmpd_allocate_stg(vlan, &l3_stg) != 0) {
        REPORT_OF(rtifhal_vlan_create, "fwmpd_allocate_stg failed for vlan:%d port:%d\n", vlan,
                  port);
        return -1;
    }
    TRACE_OF(rtifhal_vlan_create, "fwmpd_allocate_stg allocated stg: %d vlan %d port %d\n", l3_stg,
             vlan, port);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_stg_vlan_add(unit, l3_stg, vlan);
    if (rc != 0) {
        TRACE_OF(rtifhal_vlan_create, "bcm_stg_vlan_add failed for vlan:%d stg:%d   :%d\n", vlan,
                 l3_stg, rc);
        return -1;
    }
    TRACE_OF(rtifhal_vlan_create, "bcm_stg_vlan_add Added stg: %d to vlan %d port %d\n", l3_stg,
             vlan, port);
    l3_stg_allocated = 1;
    return 0;
}

/** Gives a new VLAN its flags and its group. */
int set_up_new_vlan(int unit, uint16_t vlan)
{
    bcm_vlan_control_vlan_t *const control = fwmpd_bcm_vlan_control_vlan_get_from_cache(vlan);
    if (control != nullptr) {
        control->vc_flags |=
            fwmpd_asic_sdn_agent_enabled != 0 ? NEW_VLAN_FLAGS_SDN : NEW_VLAN_FLAGS;
        TRACE_OF(rtifhal_vlan_create, "set the flags 0x%x\n", control->vc_flags);
        (void)fwmpd_trident_batch_flush();
        if (bcm_vlan_control_vlan_set(unit, vlan, *control) != 0) {
            REPORT_OF(rtifhal_vlan_create, "bcm_vlan_control_vlan_set failed for VLAN: %d\n", vlan);
            return -1;
        }
    }
    (void)fwmpd_trident_batch_flush();
    if (bcm_stg_vlan_add(unit, l3_stg, vlan) != 0) {
        TRACE_OF(rtifhal_vlan_create, "bcm_stg_vlan_add failed for vlan:%d stg:%d\n", vlan, l3_stg);
        return -1;
    }
    return 0;
}

/** Makes the port a member, tagged but in VLAN 4094, and lets it forward. */
int add_port(int unit, uint16_t vlan, int port)
{
    bcm_pbmp_t pbmp = {};
    bcm_pbmp_t ubmp = {};
    pbmp_add(pbmp, VLAN_CPU_MEMBER);
    pbmp_add(pbmp, port);
    if (vlan == RTIFHAL_VLAN_ROUTED) {
        pbmp_add(ubmp, port);
    }
    int rc = fwmpd_bcm_vlan_port_add(unit, vlan, pbmp, ubmp);
    if (rc < 0) {
        REPORT_OF(rtifhal_vlan_create, "vlan_port(%d,%d) failed: %s\n", vlan, port,
                  rtifhal_errtext(rc));
        return -1;
    }
    rc = fwmpd_bcm_port_stp_set(unit, port, STP_FORWARDING);
    if (rc < 0) {
        REPORT_OF(rtifhal_vlan_create, "stp set(%d,%d) failed: %s\n", vlan, port,
                  rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** Notes the VLAN at the port; with its first VLAN a port turns routed. */
void count_port_in(uint16_t vlan, int port)
{
    if (!has_port_vlan_entry(port)) {
        return;
    }
    set_port_vlan(port, vlan);
    if (count_port_vlans(port) == 1) {
        rtifhal_port_l3_mode_set(port, 1);
    }
}

/** Lets the port forward in the group of a VLAN that existed, and counts the use. */
int count_vlan_use(int unit, uint16_t vlan, int port, bool existed)
{
    if (existed) {
        const int stg = fwmpd_get_vlan_stg(vlan) & STG_MASK;
        const int rc = fwmpd_bcm_stg_stp_set(unit, stg, port, STP_FORWARDING);
        if (rc < 0) {
            REPORT_OF(rtifhal_vlan_create, "vlan_port(%d,%d) failed: %s\n", vlan, port,
                      rtifhal_errtext(rc));
            return -1;
        }
    }
    (void)rtifhal_subintf_block_set(vlan, USE_ROUTED, port, 1, nullptr);
    return 0;
}

} // namespace

int rtifhal_vlan_create(int unit, uint16_t vlan, int port)
{
    TRACE("vlan %d port %d\n", vlan, port);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_vlan_create(unit, vlan);
    const bool existed = rc == SDK_EXISTS;
    if (rc != 0 && !existed) {
        REPORT("vlan_create(%d) failed: %s\n", vlan, rtifhal_errtext(rc));
        return -1;
    }

    const bool l3_vlan = vlan != RTIFHAL_VLAN_ROUTED;
    if (!l3_vlan) {
        if (ensure_routed_vlan_group(unit, vlan, port) != 0) {
            return -1;
        }
    } else if (!existed && set_up_new_vlan(unit, vlan) != 0) {
        return -1;
    }
    if (add_port(unit, vlan, port) != 0) {
        return -1;
    }
    count_port_in(vlan, port);
    if (l3_vlan && count_vlan_use(unit, vlan, port, existed) != 0) {
        return -1;
    }
    if (refresh_vlan_controls(__func__, unit, vlan) != 0) {
        return -1;
    }
    TRACE("Created %d vlan \n", vlan);
    return 0;
}

int rtifhal_vlan_delete(int unit, int port, uint16_t vlan)
{
    TRACE("vlan %d port %d\n", vlan, port);
    bcm_pbmp_t pbmp = {};
    pbmp_add(pbmp, port);
    int rc = fwmpd_bcm_vlan_port_remove(unit, vlan, pbmp);
    if (rc < 0) {
        REPORT("vlan_port(%d, %d) failed: %s\n", vlan, port, rtifhal_errtext(rc));
        return -1;
    }

    if (has_port_vlan_entry(port)) {
        clear_port_vlan(port, vlan);
        if (count_port_vlans(port) == 0) {
            TRACE("Reset STP state for port %d\n", port);
            rc = fwmpd_bcm_port_stp_set(unit, port, STP_DISABLED);
            if (rc < 0) {
                REPORT("stp set(%d,%d) failed: %s\n", vlan, port, rtifhal_errtext(rc));
                return -1;
            }
            rtifhal_port_l3_mode_set(port, 0);
        }
    }
    if (vlan == RTIFHAL_VLAN_ROUTED) {
        return 0;
    }
    (void)rtifhal_subintf_block_set(vlan, USE_ROUTED, port, 0, nullptr);
    return 0;
}

void rtifhal_port_l3_mode_set(int port, int value)
{
    const int unit = rtifhal_get_bcm_unit(0);
    // Opened in both directions: a port that leaves routing may still carry VXLAN.
    (void)rtifhal_set_vxlan_enable(unit, port, 1);
    (void)fwmpd_trident_batch_flush();
    rtifhal_set_vlan_xlate(unit, port, value);
    if (value != 0) {
        // The L2 side puts the port back on the flood lists itself.
        (void)rtifhal_update_llm_acl_floodlist(port, 0);
    }
}

int rtifhal_set_vxlan_enable(int unit, int port, int value)
{
    TRACE("port = %d value = %d\n", port, value);
    if (bcm_pd_is_device_trident2() == 0) {
        return 0;
    }
    return fwmpd_bcm_port_control_set(unit, port, PORT_CONTROL_VXLAN, 1);
}

void rtifhal_set_vlan_xlate(int unit, int port, int value)
{
    TRACE("port = %d value = %d\n", port, value);
    (void)bcm_vlan_control_port_set(unit, port, PORT_VLAN_CONTROL_XLATE, value);
    (void)bcm_vlan_control_port_set(unit, port, PORT_VLAN_CONTROL_XLATE_MISS_DROP, value);
}
