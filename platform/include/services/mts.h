/*
 * services/mts.h: the message transport between the system's services.
 */
#ifndef SERVICES_MTS_H
#define SERVICES_MTS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** How a message is sent: 17 words, all 0 but for those that a sender sets. */
typedef struct mts_options {
    uint32_t word[17]; /**< the words */
} mts_options_t;

/** A queue of messages, the transport's own. */
struct mts_queue;

/** A message that was sent, the transport's own. */
struct mts_message;

/** The forwarding manager's message queue. */
extern struct mts_queue *fwm_q_mts;

/**
 * Sends a message.
 *
 * @param queue    the sender's queue
 * @param node     destination node
 * @param service  destination service
 * @param opcode   what the message asks for
 * @param payload  its bytes, copied
 * @param length   number of bytes
 * @param message  receives the handle of the message; left alone on failure
 * @param mode     0
 * @param options  how it is sent
 * @return 0 or above; negative on failure
 */
int mts_send(struct mts_queue *queue, uint32_t node, uint32_t service, uint32_t opcode,
             const void *payload, uint32_t length, struct mts_message **message, int mode,
             const mts_options_t *options);

/**
 * Releases a message that was sent; no reply is read.
 *
 * @param queue    the sender's queue
 * @param message  what mts_send gave
 */
void mts_drop(struct mts_queue *queue, struct mts_message *message);

#ifdef __cplusplus
}
#endif

#endif
