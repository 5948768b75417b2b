/*
 * sdk/pbmp.h: what the SDK offers for sets of ports.
 */
#ifndef SDK_PBMP_H
#define SDK_PBMP_H

#include <sdk/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Counts the bits that are set.
 *
 * @param word  any 32-bit word, as a rule one of a bcm_pbmp_t
 * @return the number of bits set, 0 to 32; it can't fail
 */
int _shr_popcount(uint32_t word);

/**
 * Tells whether a set of ports is empty.
 *
 * @param pbmp  the set, never null, left as it is
 * @return nonzero when no port is in the set, 0 otherwise; it can't fail
 */
int _shr_pbmp_bmnull(const bcm_pbmp_t *pbmp);

#ifdef __cplusplus
}
#endif

#endif
