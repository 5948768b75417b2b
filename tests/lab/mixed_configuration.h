/*
 * mixed_configuration.h: a switch's configuration of any number of interfaces
 * of every kind, as large as the chip takes: routed ports, port-channels,
 * subinterfaces of both, VLAN interfaces, tunnels, with addresses, VRFs, virtual
 * MACs and private-VLAN pairs. The same numbers give the same text.
 */
#pragma once

#include "chip/limits.h"

#include <cstddef>
#include <string>

namespace lab_test
{

inline constexpr std::size_t MIXED_MIN = 100;           ///< fewer interfaces aren't mixed
inline constexpr std::size_t MIXED_MAX_TRIDENT = 3600;  ///< the chip has 4096 L3 interfaces
inline constexpr std::size_t MIXED_MAX_TRIDENT2 = 7600; ///< and here 8192

/**
 * Makes the configuration.
 *
 * @param interfaces  how many routed interfaces, MIXED_MIN to the maximum of the chip's kind
 * @return the text of a file as `rtif up` reads it, in which no row is left out
 */
std::string mixed_configuration(std::size_t interfaces, simswitch::chip::Kind chip);

} // namespace lab_test
