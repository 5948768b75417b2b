/*
 * store.cpp: what outlives the process: the held-back interface numbers in the
 * global configuration, and one record for each routed interface.
 *
 * A failed store leaves the interface programmed but unrecorded; nobody stops
 * for it.
 */
#define RTIFHAL_TRACE_UNIT RTIFHAL_UNIT_PSS

#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <fwm/state.h>
#include <fwmpd/platform.h>
#include <fwmpd/pss.h>

namespace
{

/** The whole global configuration; the interface records' mode. */
constexpr int STORE_WHOLE = 1;

} // namespace

int rtifhal_trident_pss_globalc_store(void)
{
    return fwmpd_pss_globalc_store(g_fwm_pss_context, fwmpd_global_config, STORE_WHOLE);
}

int rtifhal_trident_l3port_add_pss(struct l3lif *l3lif)
{
    if (l3lif == nullptr) {
        return -1;
    }
    TRACE("calling rtifhal_pss_l3port_store, lif (0x%x)\n", l3lif->ifindex);
    const int rc = rtifhal_pss_l3port_store(g_fwm_pss_context, STORE_WHOLE, l3lif);
    if (rc != 0) {
        REPORT("Failed to store to pss for ifidx (0x%x)\n", l3lif->ifindex);
    }
    return rc;
}

int rtifhal_trident_l3port_del_pss(uint32_t ifindex)
{
    const int rc = rtifhal_pss_l3port_delete(g_fwm_pss_context, STORE_WHOLE, ifindex);
    if (rc != 0) {
        REPORT("failed to delete pss for ifidx (0x%x)\n", ifindex);
    }
    return rc;
}
