/*
 * ifindex.cpp: from the platform's interface numbers to SDK ports and trunk
 * ids. An ifindex is only ever taken apart by the platform's if_index service.
 */
#include "frame/if_types.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"

#include <fwm/state.h>
#include <services/if_index.h>

int fwmpd_ifindex_to_bcm_port(uint32_t ifindex, int *port)
{
    uint8_t type = 0;
    uint8_t zero_based_port = 0;
    if (if_index_get_type(ifindex, &type) != 0 || type != IF_TYPE_ETHERNET) {
        return -1;
    }
    if (if_index_get_port(ifindex, &zero_based_port) != 0) {
        return -1;
    }
    *port = zero_based_port + 1;
    return 0;
}

int rtifhal_ifindex_to_asic_port(uint32_t ifindex)
{
    uint8_t zero_based_port = 0;
    (void)if_index_get_port(ifindex, &zero_based_port);
    return zero_based_port + 1;
}

int fwmpd_ifindex_to_bcm_tid(uint32_t ifindex, uint32_t *tid)
{
    if (if_index_is_eth_port_channel_intf(ifindex) == 0) {
        return -1;
    }
    const int rc = fwm_ifindex_2_tid(ifindex, tid);
    if (rc == 0) {
        TRACE("rc = %d ifindex = %x tid = %d \n", rc, ifindex, *tid);
        return 0;
    }

    uint16_t channel = 0;
    (void)if_index_port_channel_get_channel_num(ifindex, &channel);
    const uint16_t made_up = static_cast<uint16_t>(channel + 1);
    *tid = made_up;
    const fwm_pc_sdb_value_t value = {ifindex, made_up};
    (void)fwm_pc_sdb_store(&made_up, &value);
    REPORT("ERR: rc = %d ifindex = %x tid = %d \n", rc, ifindex, *tid);
    return 0;
}
