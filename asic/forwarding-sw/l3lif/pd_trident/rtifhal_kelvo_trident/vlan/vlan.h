/*
 * vlan.h: adding a port to a VLAN and taking it out, and what is switched on a
 * port that gets its first VLAN or loses its last one.
 *
 * accounting.h has the tables, flood_block.cpp the end of a VLAN.
 */
#pragma once

#include <sdk/types.h>

/**
 * Adds a port to a VLAN, which is created where it doesn't exist. For the
 * ports, port-channels and subinterfaces.
 *
 * @param unit  SDK unit
 * @param vlan  VLAN id; in VLAN 4094 the port is untagged, in all others tagged
 * @param port  SDK port
 * @return 0; -1 at the first step that fails, nothing undone
 */
int rtifhal_vlan_create(int unit, uint16_t vlan, int port);

/**
 * Takes a port out of a VLAN, which goes with its last user unless it is VLAN
 * 4094. The port comes first here.
 *
 * @param unit  SDK unit
 * @param port  SDK port
 * @param vlan  VLAN id
 * @return 0; -1 at the first step that fails
 */
int rtifhal_vlan_delete(int unit, int port, uint16_t vlan);

/** Switches a port's routed mode: value nonzero with its first VLAN, 0 with its last. */
void rtifhal_port_l3_mode_set(int port, int value);

/**
 * Opens a port for VXLAN, on a Trident2 only; the value is only printed.
 *
 * @return the wrapper's result; 0 on a Trident
 */
int rtifhal_set_vxlan_enable(int unit, int port, int value);

/** Switches a port's ingress VLAN translation, and the drop of what it doesn't match. */
void rtifhal_set_vlan_xlate(int unit, int port, int value);
