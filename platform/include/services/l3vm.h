/*
 * services/l3vm.h: which VRF context an interface is in.
 */
#ifndef SERVICES_L3VM_H
#define SERVICES_L3VM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells the interface manager's own number (IOD) of an interface.
 *
 * @param ifindex  the interface
 * @param iod      receives the number; left alone on failure
 * @return 0; nonzero for an unknown interface; the library doesn't look at it
 */
int lcache_im_get_iod_frm_ifindex(uint32_t ifindex, uint32_t *iod);

/**
 * Tells the VRF context of an interface.
 *
 * @param iod  the interface manager's number
 * @return the context's id
 */
uint32_t l3vm_if_get_context_id(uint32_t iod);

#ifdef __cplusplus
}
#endif

#endif
