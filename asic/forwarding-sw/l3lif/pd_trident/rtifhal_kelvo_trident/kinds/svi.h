/*
 * svi.h: what an SVI's coming and going means for the secondaries of its VLAN.
 */
#pragma once

#include "rtifhal_types.h"

/**
 * Mirrors an SVI onto the secondaries of its VLAN, where that is a
 * private-VLAN primary.
 *
 * @param l3lif  the SVI
 * @param add    1: it came up; 0: it went
 */
void rtifhal_handle_pvlan_svi(const struct l3lif *l3lif, uint32_t add);
