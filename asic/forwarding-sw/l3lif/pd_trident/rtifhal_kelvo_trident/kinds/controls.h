/*
 * controls.h: switch and port controls by number, as the kinds of interface
 * use them.
 */
#pragma once

inline constexpr int SWITCH_CONTROL_L3 = 232;

inline constexpr int PORT_CONTROL_IP4 = 8;
inline constexpr int PORT_CONTROL_IP6 = 9;
inline constexpr int PORT_CONTROL_IP4_MC = 10;
inline constexpr int PORT_CONTROL_IP6_MC = 11;
inline constexpr int PORT_CONTROL_MPLS = 14;
