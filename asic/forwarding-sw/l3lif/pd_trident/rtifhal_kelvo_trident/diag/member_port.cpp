/*
 * member_port.cpp: a port put into VLAN 4094, or taken out, without a routed
 * interface and without the accounting of uses.
 *
 * Nothing is undone after a failure. The group of VLAN 4094 is brought up by
 * the same rule as in vlan/vlan.cpp: whichever comes first allocates it.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"
#include "vlan/vlan_controls.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/stg.h>

namespace
{

constexpr int DEFAULT_VLAN = 1;
constexpr int STG_MASK = 0xffff;

constexpr int VLAN = RTIFHAL_VLAN_ROUTED;

/** Puts VLAN 4094, which exists, into a group of its own, once for all ports. */
int ensure_group(int unit, int port)
{
    if (l3_stg_allocated != 0) {
        return 0;
    }
    if (fwmpd_allocate_stg(VLAN, &l3_stg) != 0) {
        REPORT_OF(rtifhal_init_member_port, "fwmpd_allocate_stg failed for vlan:%d port:%d\n", VLAN,
                  port);
        return -1;
    }
    TRACE_OF(rtifhal_init_member_port, "fwmpd_allocate_stg allocated stg: %d vlan %d port %d\n",
             l3_stg, VLAN, port);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_stg_vlan_add(unit, l3_stg, VLAN);
    if (rc != 0) {
        TRACE_OF(rtifhal_init_member_port,
                 "bcm_stg_vlan_add failed for vlan:%d stg:%d failure reason :%d\n", VLAN, l3_stg,
                 rc);
        return -1;
    }
    TRACE_OF(rtifhal_init_member_port, "bcm_stg_vlan_add Added stg: %d to vlan %d port %d\n",
             l3_stg, VLAN, port);
    l3_stg_allocated = 1;
    return 0;
}

/** Makes the port an untagged member beside the CPU, or takes it out alone. */
int move_port(int unit, int port, bool leave)
{
    bcm_pbmp_t pbmp = {};
    bcm_pbmp_t ubmp = {};
    pbmp_add(pbmp, port);
    int rc = 0;
    if (leave) {
        rc = fwmpd_bcm_vlan_port_remove(unit, VLAN, pbmp);
    } else {
        // The port that takes the block masks, where the VLAN create has bit 0.
        pbmp_add(pbmp, static_cast<int>(fwmpd_asic_cpu_port));
        pbmp_add(ubmp, port);
        rc = fwmpd_bcm_vlan_port_add(unit, VLAN, pbmp, ubmp);
    }
    if (rc < 0) {
        REPORT_OF(rtifhal_init_member_port, "vlan_port(%d,%d) failed: %s\n", VLAN, port,
                  rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

/** Lets the port forward; one that leaves is disabled, and blocked in VLAN 1. */
int set_state(int unit, int port, bool leave)
{
    int rc = 0;
    if (leave) {
        rc = fwmpd_bcm_port_stp_set(unit, port, STP_DISABLED);
        if (rc < 0) {
            REPORT_OF(rtifhal_init_member_port, "port stp set(%d,%d) failed: %s\n", VLAN, port,
                      rtifhal_errtext(rc));
            return -1;
        }
        const int stg = fwmpd_get_vlan_stg(DEFAULT_VLAN) & STG_MASK;
        rc = fwmpd_bcm_stg_stp_set(unit, stg, port, STP_BLOCKING);
    } else {
        rc = fwmpd_bcm_port_stp_set(unit, port, STP_FORWARDING);
    }
    if (rc < 0) {
        REPORT_OF(rtifhal_init_member_port, "stp set(%d,%d) failed: %s\n", VLAN, port,
                  rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

} // namespace

int rtifhal_init_member_port(uint32_t ifindex, int clear)
{
    const int unit = rtifhal_get_bcm_unit(0);
    const bool leave = clear != 0;
    fwmpd_inband_init();
    int port = -1;
    (void)fwmpd_ifindex_to_bcm_port(ifindex, &port);
    TRACE(" ifindex = %x port %d vlan %d clear %d\n", ifindex, port, VLAN, clear);
    (void)fwmpd_trident_batch_flush();

    if (ensure_group(unit, port) != 0 || move_port(unit, port, leave) != 0 ||
        set_state(unit, port, leave) != 0) {
        return -1;
    }
    if (!leave) {
        const int rc = fwmpd_bcm_port_untagged_vlan_set(unit, port, VLAN);
        if (rc < 0) {
            REPORT("pvid set(%d,%d) failed: %s\n", VLAN, port, rtifhal_errtext(rc));
            return -1;
        }
    }
    return refresh_vlan_controls(__func__, unit, VLAN);
}
