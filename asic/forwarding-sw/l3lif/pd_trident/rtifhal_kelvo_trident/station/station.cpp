/*
 * station.cpp: see station.h.
 */
#include "station/station.h"

#include <string.h>

namespace
{

constexpr uint16_t WHOLE_VLAN = 0xFFF;
constexpr int WHOLE_PORT = 127;

} // namespace

bcm_l2_station_t station_of_mac(uint32_t flags, const uint8_t *mac)
{
    bcm_l2_station_t station;
    bcm_l2_station_t_init(&station);
    station.flags = flags;
    memcpy(station.dst_mac, mac, sizeof station.dst_mac);
    memset(station.dst_mac_mask, 0xFF, sizeof station.dst_mac_mask);
    return station;
}

void match_vlan(bcm_l2_station_t &station, uint16_t vlan)
{
    station.vlan = vlan;
    station.vlan_mask = WHOLE_VLAN;
}

void match_port(bcm_l2_station_t &station, int port)
{
    station.src_port = port;
    station.src_port_mask = WHOLE_PORT;
}
