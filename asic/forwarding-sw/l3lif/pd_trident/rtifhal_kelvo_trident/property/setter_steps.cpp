/*
 * setter_steps.cpp: see setter_steps.h.
 */
#include "property/setter_steps.h"

#include "frame/trace.h"
#include "l3_objects/working_lif.h"
#include "rtifhal_trident.h"

bool has_state(const char *operation, const struct l3lif *l3lif)
{
    if (l3lif->l3lif_pi_ctxt == nullptr || find_l3_pd(l3lif) == nullptr) {
        REPORT_NAMED(operation, " Got l3lif pd as null");
        return false;
    }
    return true;
}

int start_object(const char *operation, const struct l3lif *l3lif, bcm_l3_intf_t &object)
{
    bcm_l3_intf_t_init(&object);
    const int id = l3lif->l3lif_pd_ctxt->l3_pd->l3intf_id;
    if (id == 0) {
        REPORT_NAMED(operation, " Got l3lif intf as null");
    }
    object.l3a_intf_id = id;
    return id;
}

void rewrite_interface(const char *operation, int unit, struct l3lif *l3lif, bcm_l3_intf_t &object,
                       int id)
{
    if (rtifhal_l3_intf_create(unit, l3lif, &object, 0) != 0) {
        REPORT_NAMED(operation, "int create(%d) failed\n", id);
    }
}

int rewrite_ingress(const char *operation, struct l3lif *l3lif, int printed)
{
    const int rc = rtifhal_l3_ing_create(l3lif, 0);
    if (rc != 0) {
        REPORT_NAMED(operation, "ing create(%d) failed\n", printed);
    }
    return rc;
}
