/*
 * adjacency.cpp: after a fast restart another service, bcm_usd, makes the
 * adjacencies of an interface; it is told here when the interface is ready.
 *
 * Nothing is remembered and nothing retries: the layer above comes back.
 */
#include "defaults/adjacency.h"

#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <fwm/state.h>
#include <l3lif/l3lif_layer.h>
#include <services/l3vm.h>
#include <services/mts.h>
#include <services/system.h>
#include <syslog.h>

namespace
{

constexpr uint32_t USD_NODE = 0xFE000000;
constexpr uint32_t USD_SERVICE = 1009;
constexpr uint32_t USD_CREATE_ADJACENCY = 160781;

} // namespace

void rtifhal_trident_create_v4_adjacency(uint32_t ifindex)
{
    (void)rtifhal_trident_recover_adjacency(ifindex);
}

void rtifhal_trident_create_v6_adjacency(uint32_t) {}

int rtifhal_trident_recover_adjacency(uint32_t ifindex)
{
    if (sysmgr_is_fastboot_restart() == 0) {
        return 0;
    }
    l3lif_iif_info_t info = {};
    const int rc = l3lif_get_iif_for_ifindex_new(ifindex, &info);
    if (rc != 0) {
        REPORT("intf is not ready :0x%x rc:%s\n", ifindex, fwm_syserr2str(rc));
        return -1;
    }
    uint32_t iod = 0;
    (void)lcache_im_get_iod_frm_ifindex(ifindex, &iod);
    const adjacency_request request = {ifindex, info.l3iif, l3vm_if_get_context_id(iod)};
    return rtifhal_trident_bcm_usd_create_adj(&request);
}

int rtifhal_trident_bcm_usd_create_adj(const adjacency_request *request)
{
    mts_options_t options = {};
    options.word[0] = 1;
    if (request == nullptr) {
        REPORT("ERROR, passed a NULL parameter\n");
        return -1;
    }
    options.word[1] = 1;
    // The receiver's word for any kind of interface is SVI.
    TRACE("SENDING notif to bcm_usd for SVI 0x%x", request->ifindex);
    struct mts_message *message = nullptr;
    const int rc = mts_send(fwm_q_mts, USD_NODE, USD_SERVICE, USD_CREATE_ADJACENCY, request,
                            sizeof *request, &message, 0, &options);
    if (rc < 0) {
        syslog(LOG_EMERG, "Unable to notify bcm_usd to create adj, error %u",
               static_cast<unsigned>(rc));
        REPORT("Unable to notify bcm_usd to create adj, error %u", static_cast<unsigned>(rc));
        TRACE("Unable to notify bcm_usd to create adj, error %u", static_cast<unsigned>(rc));
        return rc;
    }
    // Fire and forget.
    mts_drop(fwm_q_mts, message);
    TRACE("BCM_USD notified to create adj, ret_val: %u\n", static_cast<unsigned>(rc));
    return rc;
}
