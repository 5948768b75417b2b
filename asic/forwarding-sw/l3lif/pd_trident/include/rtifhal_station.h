/*
 * rtifhal_station.h: router MACs: the addresses to which the switch answers as a
 * router.
 *
 * Part of rtifhal_trident.h.
 */
#ifndef RTIFHAL_STATION_H
#define RTIFHAL_STATION_H

#include "rtifhal_export.h"
#include "rtifhal_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Installs a router MAC and switches L3 routing on the CPU port on. For the
 * layer above, which keeps the station id.
 *
 * @param mac  six bytes, network order; null counts as a failed installation
 *             without any call
 * @return the station id; 0xFFFF when there is no station: the chip refused
 *         it, or this is restore mode, in which nothing is called
 */
RTIFHAL_EXPORT int rtifhal_trident_rmac_add(const uint8_t *mac);

/**
 * Removes a router MAC and switches L3 routing on the CPU port off, however
 * many router MACs remain.
 *
 * @param station_id  what rtifhal_trident_rmac_add gave
 * @return 0; -1 when the chip refused
 */
RTIFHAL_EXPORT int rtifhal_trident_rmac_del(int station_id);

#ifdef __cplusplus
}
#endif

#endif
