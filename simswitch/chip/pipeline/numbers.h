/*
 * numbers.h: the numbers of the chip's tables that mean something to a frame,
 * beyond those that the tables' own headers name.
 *
 * What a number of the SDK does to a frame is the SDK's affair. Here is what
 * this pipeline takes it for; docs/pipeline.md has it in words.
 */
#pragma once

#include <cstdint>

namespace simswitch::chip::pipeline
{

// VLAN controls of a port.
inline constexpr int VLAN_CONTROL_TRANSLATES = 2;     ///< ingress translation is on
inline constexpr int VLAN_CONTROL_DROPS_ON_MISS = 4;  ///< tagged frames that miss it are dropped
inline constexpr int VLAN_CONTROL_TRANSLATE_KEY = 14; ///< type of the key that is looked up

// Discard modes of a port.
inline constexpr int DISCARD_ALL = 1;
inline constexpr int DISCARD_UNTAGGED = 2;
inline constexpr int DISCARD_TAGGED = 3;

inline constexpr int STP_LEARNING = 3; ///< addresses are learned, nothing passes

// Flags of a VLAN's controls.
inline constexpr std::uint32_t VLAN_IP4_OFF = 0x8;
inline constexpr std::uint32_t VLAN_IP6_OFF = 0x10;
inline constexpr std::uint32_t VLAN_MPLS_OFF = 0x200;
inline constexpr std::uint32_t VLAN_IGMP_SNOOP_OFF = 0x800;

// Flags of an L3 ingress object.
inline constexpr std::uint32_t INGRESS_IP4_OFF = 0x20;
inline constexpr std::uint32_t INGRESS_IP6_OFF = 0x80;

// An egress object of this L3 interface and port is a black hole.
inline constexpr int HOLE_INTERFACE = 0;
inline constexpr int HOLE_PORT = -1;

// Reverse-path modes of an L3 ingress object; 2 is strict.
inline constexpr int REVERSE_PATH_OFF = 0;
inline constexpr int REVERSE_PATH_LOOSE = 1;

// Classes of frames that a station takes.
inline constexpr std::uint32_t STATION_IP4 = 0x4;
inline constexpr std::uint32_t STATION_IP6 = 0x8;
inline constexpr std::uint32_t STATION_ARP = 0x10;

inline constexpr int SWITCH_CONTROL_ND_TO_CPU = 89; ///< neighbour discovery goes to the CPU

// What a generic port has beside its kind.
inline constexpr int GPORT_PORT_BITS = 0x7ff;
inline constexpr int GPORT_TRUNK_BITS = 0x3ffffff;

} // namespace simswitch::chip::pipeline
