/*
 * sdk/l2.h: the SDK's L2 stations, the entries that lift frames out of
 * bridging into routing.
 */
#ifndef SDK_L2_H
#define SDK_L2_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A station: a frame matches when each field, under its mask, is the frame's. */
typedef struct bcm_l2_station {
    uint32_t flags;         /**< the traffic classes that the station terminates */
    bcm_mac_t dst_mac;      /**< destination MAC */
    bcm_mac_t dst_mac_mask; /**< all ones: every bit of the MAC counts */
    bcm_vlan_t vlan;        /**< VLAN id, 0 to 4095 */
    bcm_vlan_t vlan_mask;   /**< 0: any VLAN; 0xFFF: exactly `vlan` */
    int src_port;           /**< port on which the frame came in */
    int src_port_mask;      /**< 0: any port */
} bcm_l2_station_t;

/**
 * Gives a station record the SDK's defaults: all fields 0.
 *
 * @param station  the record, never null
 */
void bcm_l2_station_t_init(bcm_l2_station_t *station);

/**
 * Adds a station to the chip, at once.
 *
 * @param unit        SDK unit
 * @param station_id  receives the id that the SDK gives; left alone on failure
 * @param station     the station, left as it is
 * @return 0; -4 for an argument out of range; -6 when the table is full
 */
int bcm_l2_station_add(int unit, int *station_id, bcm_l2_station_t *station);

/**
 * Removes a station from the chip, at once.
 *
 * @param unit        SDK unit
 * @param station_id  an id that bcm_l2_station_add gave
 * @return 0; -7 when there is no such station
 */
int bcm_l2_station_delete(int unit, int station_id);

/**
 * Reads a station from the chip.
 *
 * @param unit        SDK unit
 * @param station_id  an id that bcm_l2_station_add gave
 * @param station     receives the station; left alone on failure
 * @return 0; -7 when the chip holds no such station
 */
int bcm_l2_station_get(int unit, int station_id, bcm_l2_station_t *station);

#ifdef __cplusplus
}
#endif

#endif
