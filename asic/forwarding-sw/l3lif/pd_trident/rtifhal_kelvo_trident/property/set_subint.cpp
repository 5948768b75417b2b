/*
 * set_subint.cpp: property setters of subinterfaces and tunnels, which have no
 * port of their own to switch: both objects are written again.
 */
#include "frame/trace.h"
#include "property/setter_steps.h"
#include "rtifhal_trident.h"

#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>

namespace
{

/** One sequence; a tunnel flushes twice. */
int rewrite_objects(const char *operation, struct l3lif *l3lif, int flushes)
{
    if (l3lif == nullptr) {
        REPORT_NAMED(operation, " Got l3lif as null");
        return -1;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    bcm_l3_intf_t object;
    bcm_l3_intf_t_init(&object);
    if (!has_state(operation, l3lif)) {
        return 0;
    }
    const int id = start_object(operation, l3lif, object);
    if (id == 0) {
        return 0;
    }
    for (int flush = 0; flush < flushes; ++flush) {
        (void)fwmpd_trident_batch_flush();
    }
    (void)bcm_l3_intf_get(unit, &object);
    rewrite_interface(operation, unit, l3lif, object, id);
    (void)rewrite_ingress(operation, l3lif, id);
    return 0;
}

} // namespace

int rtifhal_set_kelvo_l3_property_subint(struct l3lif *l3lif)
{
    return rewrite_objects(__func__, l3lif, 1);
}

int rtifhal_set_kelvo_l3_property_l3tun(struct l3lif *l3lif)
{
    TRACE(" Entry: - \n");
    return rewrite_objects(__func__, l3lif, 2);
}
