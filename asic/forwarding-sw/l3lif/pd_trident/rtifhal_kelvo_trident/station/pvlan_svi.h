/*
 * pvlan_svi.h: the private-VLAN pairs that the layer above has announced, and
 * the mirroring of a primary's routing onto a secondary.
 */
#pragma once

#include "rtifhal_types.h"

#include <glib.h>

/** A pair, at once key and value of its entry in pvlan_svi_map. */
struct pvlan_svi_pair {
    uint32_t primary;   /**< primary VLAN */
    uint32_t secondary; /**< secondary VLAN */
};

/** What a walk over the pairs looks for, and what it shall do. */
struct pvlan_svi_filter {
    uint32_t primary; /**< primary VLAN */
    uint32_t add;     /**< 1: its SVI came up; 0: it went */
};

/** The pairs; null until the first. They live as long as the process. */
extern GHashTable *pvlan_svi_map;

/**
 * Mirrors a primary's ingress interface onto a secondary, or takes it back.
 *
 * @param primary    primary VLAN
 * @param secondary  secondary VLAN
 * @param add        nonzero: mirror; 0: take back
 * @return 0; -1 when a VLAN has no record or the record was refused
 */
int rtifhal_pvlan_svi_update_secondary(uint32_t primary, uint32_t secondary, uint32_t add);

/**
 * Visits one pair on behalf of an SVI, for g_hash_table_foreach.
 *
 * @param key     the pair
 * @param entry   the pair
 * @param filter  a pvlan_svi_filter; pairs of other primaries are passed over
 */
void rtifhal_pvlan_svi_visit_pair(gpointer key, gpointer entry, gpointer filter);
