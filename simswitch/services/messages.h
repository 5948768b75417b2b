/*
 * messages.h: the message transport, and the one receiver that there is: a
 * stand-in of the service bcm_usd, which is asked to make adjacencies after a
 * fast restart.
 *
 * The receiver takes a message only when every word of it is what it expects;
 * a sender that is off by one byte is refused with the reason in the journal.
 */
#pragma once

#include "chip/outcome.h"

#include <services/mts.h>

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

struct mts_message {
    std::uint64_t number = 0; ///< which message it is, from 1
};

namespace simswitch::services
{

/** What bcm_usd was asked. */
struct AdjacencyRequest {
    std::uint32_t ifindex = 0; ///< the interface
    std::uint32_t iif = 0;     ///< its number in the chip
    std::uint32_t context = 0; ///< its VRF context

    bool operator==(const AdjacencyRequest &) const = default;
};

/** A message as it was handed to the transport. */
struct MessageEnvelope {
    std::uint32_t node = 0;
    std::uint32_t service = 0;
    std::uint32_t opcode = 0;
    const void *payload = nullptr;
    std::uint32_t length = 0;
    int mode = 0;
    const mts_options_t *options = nullptr;
};

/** The transport with bcm_usd at its far end. */
class Messages
{
public:
    static constexpr int ERROR_NO_RECEIVER = -2; ///< nobody listens at this node and service
    static constexpr int ERROR_MALFORMED = -22;  ///< the receiver can't read the message

    /** Delivers a message; `handle` receives it on success. */
    Outcome send(const mts_queue *queue, const MessageEnvelope &message, mts_message *&handle);
    /** Releases a message; unknown handles are no failure. */
    void drop(mts_message *handle);

    /** What bcm_usd was asked, in order. */
    const std::vector<AdjacencyRequest> &requests() const { return requests_; }
    /** Messages that were sent and not released. */
    std::size_t unreleased() const { return open_.size(); }

private:
    std::vector<AdjacencyRequest> requests_;
    std::map<mts_message *, std::unique_ptr<mts_message>> open_;
};

} // namespace simswitch::services
