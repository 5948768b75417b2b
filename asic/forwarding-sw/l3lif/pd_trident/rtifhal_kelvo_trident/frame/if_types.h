/*
 * if_types.h: the interface types that if_index_get_type gives, as far as the
 * library tells them apart.
 */
#pragma once

#include <stdint.h>

inline constexpr uint8_t IF_TYPE_MANAGEMENT = 5;
inline constexpr uint8_t IF_TYPE_SVI = 9;
inline constexpr uint8_t IF_TYPE_PORT_CHANNEL = 22;
inline constexpr uint8_t IF_TYPE_TUNNEL = 24;
inline constexpr uint8_t IF_TYPE_ETHERNET = 26;
