/*
 * properties.h: properties of an interface as the chip takes them: 0 counts as
 * the default.
 */
#pragma once

#include "rtifhal_types.h"

#include <stdint.h>

inline constexpr int DEFAULT_VRF = 1;
inline constexpr int DEFAULT_MTU = 1500;

/** A VRF property as the chip's VRF. */
inline int vrf_of_property(uint16_t vrf)
{
    return vrf != 0 ? vrf : DEFAULT_VRF;
}

/** VRF of the lookup: IPv4's while IPv4 is on, else IPv6's, else none. */
inline int vrf_of_lookup(const struct l3lif_pi_ctxt &properties)
{
    if (properties.ipv4_en != 0) {
        return vrf_of_property(properties.vrf);
    }
    return properties.ipv6_en != 0 ? vrf_of_property(properties.ipv6_vrf) : 0;
}

/** A reverse-path property as the chip's mode: 2 strict, 1 loose, 0 off. */
inline int urpf_mode_of_property(uint32_t property)
{
    switch (property) {
    case 3:
        return 2;
    case 2:
        return 1;
    default:
        return 0;
    }
}

/** An MTU property as the chip's MTU in bytes. */
inline int mtu_of_property(uint16_t mtu)
{
    return mtu != 0 ? mtu : DEFAULT_MTU;
}
