/*
 * flood_block.cpp: the uses of a VLAN and its block masks, in step.
 *
 * A VLAN that only carries routed subinterfaces must not flood to its routed
 * ports or to the CPU. The masks are changed in the wrappers' own record, also
 * where the write then fails. A VLAN goes with its last routed use or SVI; the
 * L2 side ends its VLANs itself.
 *
 * accounting.h has the tables, vlan.cpp the chief caller.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "vlan/accounting.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/platform.h>
#include <fwmpd/wrappers.h>
#include <sdk/pbmp.h>

namespace
{

/** One request, as the steps hand it on. */
struct use_change {
    int unit;
    uint16_t vlan;
    int type;
    int port;
    bcm_vlan_block_t *block;
    rtifhal_vlan_type_count_entry_t *lvtc;
};

/** A VLAN id that doesn't exist has no uses; what is noted here is forgotten. */
rtifhal_vlan_type_count_entry_t no_vlan_uses;

void block_port(bcm_vlan_block_t &block, int port)
{
    pbmp_add(block.unknown_multicast, port);
    pbmp_add(block.unknown_unicast, port);
    pbmp_add(block.broadcast, port);
}

void unblock_port(bcm_vlan_block_t &block, int port)
{
    pbmp_remove(block.unknown_multicast, port);
    pbmp_remove(block.unknown_unicast, port);
    pbmp_remove(block.broadcast, port);
}

/** The chip has block masks for routed uses and SVIs only. */
bool writes_masks(int type)
{
    return type == USE_ROUTED || type == USE_SVI;
}

int write_masks(const use_change &change)
{
    if (fwmpd_bcm_vlan_block_set(change.unit, change.vlan, change.block) != 0) {
        REPORT_OF(rtifhal_subintf_block_set, "bcm_vlan_block_set failed for vid %d\n", change.vlan);
        return -1;
    }
    return 0;
}

int count_l3_ports(const rtifhal_vlan_type_count_entry_t &lvtc)
{
    int count = 0;
    for (const uint32_t word : lvtc.l3pbmp.pbits) {
        count += _shr_popcount(word);
    }
    return count;
}

void count_routed_use(const use_change &change)
{
    rtifhal_vlan_type_count_entry_t &lvtc = *change.lvtc;
    if (!pbmp_has(lvtc.l3pbmp, change.port)) {
        pbmp_add(lvtc.l3pbmp, change.port);
        // A port without a bit could never be taken off the count again.
        lvtc.subint_count += pbmp_has(lvtc.l3pbmp, change.port) ? 1 : 0;
    }
    const int pbmp_count = count_l3_ports(lvtc);
    TRACE_OF(rtifhal_subintf_block_set,
             "rtifhal_subintf_block_set SET lvtc->subint_count:%d pbmp_count:%d \n",
             lvtc.subint_count, pbmp_count);
}

int take_use_on(const use_change &change)
{
    rtifhal_vlan_type_count_entry_t &lvtc = *change.lvtc;
    bcm_vlan_block_t &block = *change.block;

    pbmp_add(block.unknown_multicast, fwmpd_asic_cpu_port);
    if (lvtc.subint_count == 0 && lvtc.svi == 0 && lvtc.l2_vlan == 0) {
        bcm_vlan_block_t_init(&block);
        block_port(block, fwmpd_asic_cpu_port);
        TRACE_OF(rtifhal_subintf_block_set, "UMCB Adding CPU to blk masks for vlan:%d\n",
                 change.vlan);
    }
    if (change.type == USE_ROUTED) {
        // The CPU stays blocked, whatever the message says.
        TRACE_OF(rtifhal_subintf_block_set, "UMCB Remove CPU from UMC and add %d to Blk lists\n",
                 change.port);
        block_port(block, change.port);
    }
    if (writes_masks(change.type)) {
        TRACE_OF(rtifhal_subintf_block_set, "UMCB Calling bcm_vlan_block_set for %d\n",
                 change.vlan);
        if (write_masks(change) != 0) {
            return -1;
        }
    }

    if (change.type == USE_SVI) {
        lvtc.svi = 1;
    } else if (change.type == USE_L2) {
        lvtc.l2_vlan = 1;
    } else if (change.type == USE_ROUTED) {
        count_routed_use(change);
    }
    return 0;
}

void uncount_use(const use_change &change)
{
    rtifhal_vlan_type_count_entry_t &lvtc = *change.lvtc;
    if (change.type == USE_SVI) {
        lvtc.svi = 0;
    } else if (change.type == USE_L2) {
        lvtc.l2_vlan = 0;
    } else if (change.type == USE_ROUTED) {
        if (pbmp_has(lvtc.l3pbmp, change.port)) {
            TRACE_OF(rtifhal_subintf_block_set,
                     "rtifhal_subintf_block_set RESET BCM_PBMP_MEMBER lvtc->subint_count:%d\n",
                     lvtc.subint_count);
            --lvtc.subint_count;
            pbmp_remove(lvtc.l3pbmp, change.port);
        }
        TRACE_OF(rtifhal_subintf_block_set,
                 "rtifhal_subintf_block_set RESET lvtc->subint_count:%d\n", lvtc.subint_count);
    }
}

bool has_users(const rtifhal_vlan_type_count_entry_t &lvtc)
{
    return lvtc.subint_count != 0 || _shr_pbmp_bmnull(&lvtc.l3pbmp) == 0 || lvtc.svi != 0 ||
           lvtc.l2_vlan != 0;
}

int end_vlan(const use_change &change)
{
    TRACE_OF(rtifhal_subintf_block_set, " UMCB Calling bcm_vlan_destroy %d\n", change.vlan);
    const int rc = fwmpd_bcm_vlan_destroy(change.unit, change.vlan);
    if (rc != 0) {
        REPORT_OF(rtifhal_subintf_block_set, " bcm_vlan_destroy failing for vid %d: %s\n",
                  change.vlan, rtifhal_errtext(rc));
        return -1;
    }
    return 0;
}

int give_use_up(const use_change &change, uint32_t *no_users)
{
    const rtifhal_vlan_type_count_entry_t &lvtc = *change.lvtc;
    uncount_use(change);
    if (lvtc.subint_count == 0 && lvtc.svi == 0) {
        pbmp_add(change.block->unknown_multicast, fwmpd_asic_cpu_port);
        TRACE_OF(rtifhal_subintf_block_set, "UMCB Add CPU to vblk %d\n", change.vlan);
    }
    if (change.type == USE_ROUTED) {
        TRACE_OF(rtifhal_subintf_block_set, " UMCB Remove Port %d in all blk mask for:%d\n",
                 change.port, change.vlan);
        unblock_port(*change.block, change.port);
    }
    if (writes_masks(change.type)) {
        TRACE_OF(rtifhal_subintf_block_set, "UMCB Calling bcm_vlan_block_set %d\n", change.vlan);
        if (write_masks(change) != 0) {
            return -1;
        }
    }
    const int pbmp_count = count_l3_ports(lvtc);
    TRACE_OF(rtifhal_subintf_block_set, "\n pbmp_count %d", pbmp_count);

    if (has_users(lvtc)) {
        return 0;
    }
    if (no_users != nullptr) {
        *no_users = 1;
    }
    return writes_masks(change.type) ? end_vlan(change) : 0;
}

} // namespace

int rtifhal_subintf_block_set(uint16_t vlan, int type, int port, int set, uint32_t *no_users)
{
    const int unit = rtifhal_get_bcm_unit(0);
    (void)fwmpd_trident_batch_flush();
    TRACE("\n\n UMCB Vlan = %d type = %d port = %d set = %d\n", vlan, type, port, set);

    use_change change = {
        unit, vlan, type, port, fwmpd_trident_get_bvbt(vlan), find_vlan_uses(vlan)};
    if (change.lvtc == nullptr) {
        no_vlan_uses = {};
        change.lvtc = &no_vlan_uses;
    }
    return set != 0 ? take_use_on(change) : give_use_up(change, no_users);
}
