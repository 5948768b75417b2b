/*
 * ingress_ties.h: how an L3 ingress object is tied to the traffic: by a VLAN's
 * controls, or by port control 67.
 *
 * These are steps of rtifhal_l3_ing_create, whose name their messages bear.
 */
#pragma once

#include "rtifhal_types.h"

#include <sdk/l3.h>

/**
 * Ties an SVI's object to its VLAN.
 *
 * @param unit    SDK unit
 * @param svi     the SVI; its si_encap_vlan is the VLAN
 * @param iif     number of the object
 * @param l3_iif  the object, for its VRF and reverse-path mode
 * @return 0; -1 when the cache doesn't have the VLAN; the SDK's code when the
 *         VLAN's record was refused
 */
int tie_svi(int unit, const struct l3lif *svi, int iif, const bcm_l3_ingress_t &l3_iif);

/** Ties a port-channel's object to each member that the chip has. */
void tie_port_channel(int unit, uint32_t ifindex, int iif);

/**
 * Ties a port's object to the port.
 *
 * @param unit             SDK unit
 * @param ifindex          the interface that was handed in
 * @param working_ifindex  the interface whose object it is
 * @param iif              number of the object
 * @param port             receives the SDK port where there is one
 */
void tie_port(int unit, uint32_t ifindex, uint32_t working_ifindex, int iif, int *port);
