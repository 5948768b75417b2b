/*
 * gport.h: generic ports: a module port or a trunk in one word, as VLAN
 * translations key on them and trunks name their members.
 */
#pragma once

#include <sdk/types.h>

inline constexpr int GPORT_KIND_SHIFT = 26;
inline constexpr int GPORT_KIND_MODULE_PORT = 2;
inline constexpr int GPORT_MODULE_PORT = 0x8000000;
inline constexpr int GPORT_TRUNK = 0xc000000;
inline constexpr int GPORT_MODULE_SHIFT = 11;
inline constexpr int GPORT_MODULE_MASK = 0x7fff;
inline constexpr int GPORT_PORT_MASK = 0x7ff;
inline constexpr int GPORT_TRUNK_MASK = 0x3ffffff;

/** Members that a trunk is read with. */
inline constexpr int TRUNK_MEMBERS = 32;

/** A port as a module port; the unit stands where a module id would. */
inline bcm_gport_t module_port(int unit, int port)
{
    return GPORT_MODULE_PORT | ((unit & GPORT_MODULE_MASK) << GPORT_MODULE_SHIFT) |
           (port & GPORT_PORT_MASK);
}

/** A trunk as a generic port. */
inline bcm_gport_t trunk_gport(int tid)
{
    return GPORT_TRUNK | (tid & GPORT_TRUNK_MASK);
}

/** The SDK port of a module port, -1 for any other kind. */
inline int port_of_gport(bcm_gport_t gport)
{
    return gport >> GPORT_KIND_SHIFT == GPORT_KIND_MODULE_PORT ? gport & GPORT_PORT_MASK : -1;
}
