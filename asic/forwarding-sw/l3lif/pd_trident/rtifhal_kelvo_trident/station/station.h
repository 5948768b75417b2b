/*
 * station.h: the station of an address to which the switch answers as a
 * router, as router MACs and virtual MACs start from it.
 */
#pragma once

#include <sdk/l2.h>
#include <stdint.h>

/** Traffic classes that a router MAC terminates, and a virtual MAC on a secondary VLAN. */
inline constexpr uint32_t STATION_FLAGS = 0x1C;
/** Traffic classes that a virtual MAC terminates on its own interface. */
inline constexpr uint32_t FHRP_STATION_FLAGS = 0x3C;

/**
 * A station of one MAC, in any VLAN and on any port.
 *
 * @param flags  traffic classes that it terminates
 * @param mac    six bytes
 */
bcm_l2_station_t station_of_mac(uint32_t flags, const uint8_t *mac);

/** Narrows a station to one VLAN. */
void match_vlan(bcm_l2_station_t &station, uint16_t vlan);

/** Narrows a station to one port. */
void match_port(bcm_l2_station_t &station, int port);
