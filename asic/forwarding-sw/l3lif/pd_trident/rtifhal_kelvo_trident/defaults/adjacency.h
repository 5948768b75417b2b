/*
 * adjacency.h: the message with which bcm_usd is asked for adjacencies.
 */
#pragma once

#include <stdint.h>

/** The message's payload, in the byte order of the host. */
struct adjacency_request {
    uint32_t ifindex; /**< the interface */
    uint32_t l3iif;   /**< its number in the chip */
    uint32_t context; /**< its VRF context */
};
static_assert(sizeof(adjacency_request) == 12, "the receiver takes 12 bytes");

/**
 * Sends the message and reads no reply.
 *
 * @param request  the payload; -1, reported, for null
 * @return what the send gave, negative on failure
 */
int rtifhal_trident_bcm_usd_create_adj(const adjacency_request *request);
