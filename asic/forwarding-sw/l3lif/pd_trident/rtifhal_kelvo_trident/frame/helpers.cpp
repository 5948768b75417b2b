/*
 * helpers.cpp: small exported helpers that belong to no other subject.
 */
#include "rtifhal_trident.h"

int rtifhal_bcm_stk_my_modid_get(int unit, int *modid)
{
    *modid = unit;
    return 0;
}

int rtifhal_get_qosmap_id(void)
{
    return 0;
}

int rtifhal_is_lif_deleted(const struct l3lif *l3lif)
{
    return l3lif != nullptr && l3lif->l3lif_pd_ctxt != nullptr &&
           l3lif->l3lif_pd_ctxt->l3_pd != nullptr &&
           l3lif->l3lif_pd_ctxt->l3_pd->brcm_prog_complete != 0;
}

int rtifhal_trident_del_subint_deleted(const struct l3lif *l3lif)
{
    return rtifhal_is_lif_deleted(l3lif);
}
