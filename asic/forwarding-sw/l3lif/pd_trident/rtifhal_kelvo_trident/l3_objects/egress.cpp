/*
 * egress.cpp: the egress step of every add and delete. No object is made for
 * an interface here: next hops belong to the default routes and to the
 * adjacency service.
 */
#include "l3_objects/egress.h"

#include "frame/controls.h"
#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>

uint32_t l3_egress_count;

int rtifhal_l3_egr_create(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        return -1;
    }
    bcm_l3_egress_t egress;
    bcm_l3_egress_t_init(&egress);
    const int unit = rtifhal_get_bcm_unit(0);

    const struct l3lif *const main = find_port_channel_main(l3lif);
    const struct l3lif *const working = main != nullptr ? main : l3lif;
    if (working->l3lif_pd_ctxt == nullptr || working->l3lif_pi_ctxt == nullptr) {
        REPORT("Failed to get l3lif pd context for intf 0x%x", working->ifindex);
        return -1;
    }
    const struct l3_pd *const l3_pd = working->l3lif_pd_ctxt->l3_pd;
    if (l3_pd == nullptr) {
        return -1;
    }

    const int rc = fwmpd_bcm_switch_control_set(unit, SWITCH_CONTROL_EGRESS, 1);
    if (rc < 0) {
        REPORT("itf set egr (%d) failed: %s\n", l3_pd->l3intf_id, rtifhal_errtext(rc));
        return rc;
    }
    ++l3_egress_count;
    return rc;
}

int rtifhal_l3_egr_delete(struct l3lif *l3lif)
{
    if (l3lif != nullptr && l3lif->l3lif_pd_ctxt == nullptr) {
        REPORT("Failed to delete l3lif pd context for intf 0x%x", l3lif->ifindex);
    }
    return 0;
}
