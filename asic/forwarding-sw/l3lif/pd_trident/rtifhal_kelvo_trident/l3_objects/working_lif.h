/*
 * working_lif.h: the interface whose record an operation works on.
 */
#pragma once

#include "rtifhal_types.h"

#include <services/if_index.h>

/**
 * The port-channel under a subinterface, whose objects the subinterface
 * shares; null where the interface works on its own record.
 */
inline struct l3lif *find_port_channel_main(const struct l3lif *l3lif)
{
    struct l3lif *const main = l3lif->main_l3lif;
    return main != nullptr && if_index_is_eth_port_channel_intf(main->ifindex) != 0 ? main
                                                                                    : nullptr;
}

/** The hardware state of an interface; null where it has no context or no record. */
inline struct l3_pd *find_l3_pd(const struct l3lif *l3lif)
{
    return l3lif->l3lif_pd_ctxt != nullptr ? l3lif->l3lif_pd_ctxt->l3_pd : nullptr;
}

/** The live number of an interface: the parked one once its object is gone. */
inline uint16_t live_iif(const struct l3_pd &l3_pd)
{
    return l3_pd.brcm_prog_complete != 0 ? l3_pd.prev_l3_if_index : l3_pd.l3intf_id;
}
