/*
 * controls.h: switch and port controls by number.
 */
#pragma once

/** Neighbour discovery to the CPU. */
inline constexpr int SWITCH_CONTROL_ND_TO_CPU = 89;
inline constexpr int SWITCH_CONTROL_EGRESS = 230;
inline constexpr int SWITCH_CONTROL_L3 = 232;
inline constexpr int SWITCH_CONTROL_TRUNK_L3 = 364;

inline constexpr int PORT_CONTROL_IP4 = 8;
inline constexpr int PORT_CONTROL_IP6 = 9;
inline constexpr int PORT_CONTROL_IP4_MC = 10;
inline constexpr int PORT_CONTROL_IP6_MC = 11;
inline constexpr int PORT_CONTROL_MPLS = 14;
/** The port's L3 ingress interface. */
inline constexpr int PORT_CONTROL_INGRESS_IF = 67;
/** On a Trident2 only. */
inline constexpr int PORT_CONTROL_VXLAN = 187;

/** A property word as a control's value: only 1 is on. */
inline constexpr int control_value_of(unsigned word)
{
    return word == 1 ? 1 : 0;
}
