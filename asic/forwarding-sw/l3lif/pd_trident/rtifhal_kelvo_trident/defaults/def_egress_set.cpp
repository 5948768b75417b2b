/*
 * def_egress_set.cpp: what the chip holds for a default route: kept aside
 * while the route is rebuilt, then destroyed, the group before its members.
 */
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <sdk/l3.h>
#include <syslog.h>

def_egress_set_t curr_egress;

namespace
{

constexpr int UNIT = 0;

} // namespace

void save_curr_egress(def_egress_set_t *destination, const def_egress_set_t *source)
{
    if (destination == nullptr || source == nullptr) {
        const int line = __LINE__; // both texts are the same
        syslog(LOG_EMERG, "%s %d Error, passed NULL parameter", __func__, line);
        REPORT("%s %d Error, passed NULL parameter", __func__, line);
        return;
    }
    *destination = *source;
}

void clear_old_egress(const def_egress_set_t *set)
{
    if (set == nullptr) {
        const int line = __LINE__; // both texts are the same
        syslog(LOG_EMERG, "%s %d Error, passed NULL parameter", __func__, line);
        REPORT("%s %d Error, passed NULL parameter", __func__, line);
        return;
    }
    if (set->in_use == 0) {
        return;
    }
    if (set->ecmp_id != 0) {
        bcm_l3_egress_ecmp_t ecmp;
        bcm_l3_egress_ecmp_t_init(&ecmp);
        ecmp.ecmp_intf = static_cast<int>(set->ecmp_id);
        if (bcm_l3_egress_ecmp_destroy(UNIT, &ecmp) != 0) {
            syslog(LOG_EMERG, "%s %d Error while destroyin ecmp_id %d", __func__, __LINE__,
                   static_cast<int>(set->ecmp_id));
            REPORT("Error while destroying ecmp_id %d", set->ecmp_id);
        }
    }
    for (int i = 0; i < set->egress_count && i < RTIFHAL_DEF_ROUTE_PATHS; ++i) {
        const int id = static_cast<int>(set->egress_ids[i]);
        const int rc = bcm_l3_egress_destroy(UNIT, id);
        if (rc != 0) {
            REPORT("Error: %d, Failed to delete adj %d\n", rc, id);
            syslog(LOG_EMERG, "Error: %d, Failed to delete adj %d\n", rc, id);
        }
    }
}
