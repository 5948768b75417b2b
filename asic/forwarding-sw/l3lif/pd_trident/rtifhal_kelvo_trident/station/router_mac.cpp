/*
 * router_mac.cpp: the addresses to which the switch answers as a router, each
 * one L2 station of the chip, and L3 routing on the CPU port beside them.
 *
 * The layer above keeps the list of router MACs. The CPU port's controls carry
 * no count: each add switches both on, each delete both off.
 */
#include "frame/controls.h"
#include "frame/trace.h"
#include "rtifhal_trident.h"
#include "station/station.h"

#include <fwm/state.h>
#include <fwmpd/l3_cache.h>
#include <fwmpd/wrappers.h>
#include <sdk/l2.h>
#include <sdk/port.h>

namespace
{

/** No station exists. */
constexpr int NO_STATION = 0xFFFF;

constexpr int CPU_PORT = 0;

} // namespace

int rtifhal_trident_rmac_add(const uint8_t *mac)
{
    if (g_fwm_pss_restore_mode != 0 || mac == nullptr) {
        return NO_STATION;
    }
    const int unit = rtifhal_get_bcm_unit(0);
    int station_id = NO_STATION;
    bcm_l2_station_t station = station_of_mac(STATION_FLAGS, mac);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_add(unit, &station_id, &station);
    if (rc < 0) {
        REPORT("rmac (%02x:%02x:%02x:%02x:%02x:%02x) failed: %s\n", mac[0], mac[1], mac[2], mac[3],
               mac[4], mac[5], rtifhal_errtext(rc));
    } else {
        TRACE("rmac (%02x:%02x:%02x:%02x:%02x:%02x) @ idx:%d\n", mac[0], mac[1], mac[2], mac[3],
              mac[4], mac[5], station_id);
    }
    if (bcm_port_control_set(unit, CPU_PORT, PORT_CONTROL_IP4, 1) < 0) {
        TRACE("Failed to enable IPv4 L3 routing on CPU port\n");
    }
    if (bcm_port_control_set(unit, CPU_PORT, PORT_CONTROL_IP6, 1) < 0) {
        TRACE("Failed to enable IPv6 L3 routing on CPU port\n");
    }
    return station_id;
}

int rtifhal_trident_rmac_del(int station_id)
{
    int result = 0;
    const int unit = rtifhal_get_bcm_unit(0);
    (void)fwmpd_trident_batch_flush();
    const int rc = bcm_l2_station_delete(unit, station_id);
    if (rc < 0) {
        REPORT("l2_station_delete failed(%s) for idx:%d\n", rtifhal_errtext(rc), station_id);
        result = -1;
    }
    if (bcm_port_control_set(unit, CPU_PORT, PORT_CONTROL_IP4, 0) < 0) {
        TRACE("Failed to disable IPv4 L3 routing on CPU port\n");
    }
    if (bcm_port_control_set(unit, CPU_PORT, PORT_CONTROL_IP6, 0) < 0) {
        TRACE("Failed to disable IPv6 L3 routing on CPU port\n");
    }
    return result;
}
