/*
 * sdk/types.h: the basic types of the switch chip's SDK.
 *
 * SDK status, unit, port, trunk id and control numbers are plain int. A call
 * has failed when its status is negative; error.h has the texts.
 */
#ifndef SDK_TYPES_H
#define SDK_TYPES_H

#include <stdint.h>

/** Stops the compilation with the text unless the condition holds, in C and in C++. */
#ifdef __cplusplus
#define SDK_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define SDK_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/** A MAC address, first byte first. */
typedef uint8_t bcm_mac_t[6];

/** A VLAN id, 0 to 4095. */
typedef uint16_t bcm_vlan_t;

/** A generic port: a module port or a trunk in one word, its kind in bits 26 and up. */
typedef int bcm_gport_t;

/** A set of ports: port p is bit p modulo 32 of word p / 32, for p in 0..255. */
typedef struct bcm_pbmp {
    uint32_t pbits[8]; /**< the words */
} bcm_pbmp_t;
SDK_STATIC_ASSERT(sizeof(bcm_pbmp_t) == 32, "bcm_pbmp_t is eight 32-bit words");

#endif
