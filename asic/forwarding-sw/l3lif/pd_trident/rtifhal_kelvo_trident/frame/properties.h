/*
 * properties.h: properties of an interface as the chip takes them: 0 counts as
 * the default.
 */
#pragma once

#include <stdint.h>

inline constexpr int DEFAULT_VRF = 1;
inline constexpr int DEFAULT_MTU = 1500;

/** A VRF property as the chip's VRF. */
inline int vrf_of_property(uint16_t vrf)
{
    return vrf != 0 ? vrf : DEFAULT_VRF;
}

/** An MTU property as the chip's MTU in bytes. */
inline int mtu_of_property(uint16_t mtu)
{
    return mtu != 0 ? mtu : DEFAULT_MTU;
}
