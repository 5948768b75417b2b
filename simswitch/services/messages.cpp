/*
 * messages.cpp: see messages.h.
 */
#include "services/messages.h"

#include "journal/call.h"
#include "switch.h"

#include <cstring>
#include <fmt/format.h>
#include <utility>

using simswitch::Call;
using simswitch::Layer;
using simswitch::Switch;

struct mts_queue {
    const char *owner;
};

namespace
{

mts_queue forwarding_manager_queue{"forwarding manager"};

constexpr std::uint32_t USD_NODE = 0xFE000000;
constexpr std::uint32_t USD_SERVICE = 1009;
constexpr std::uint32_t USD_CREATE_ADJACENCY = 160781;

} // namespace

extern "C" {

mts_queue *fwm_q_mts = &forwarding_manager_queue;

int mts_send(struct mts_queue *queue, uint32_t node, uint32_t service, uint32_t opcode,
             const void *payload, uint32_t length, struct mts_message **message, int mode,
             const mts_options_t *options)
{
    // Numbers of the protocol, but for the node, read as decimals.
    Call call(Layer::service, __func__, node, static_cast<int>(service), static_cast<int>(opcode),
              payload, static_cast<int>(length), mode, options);
    return call.run([&] {
        return Switch::current().messages.send(
            queue, {node, service, opcode, payload, length, mode, options}, *message);
    });
}

void mts_drop(struct mts_queue *queue, struct mts_message *message)
{
    Call call(Layer::service, __func__, message);
    call.run_void([&] {
        if (queue == fwm_q_mts) {
            Switch::current().messages.drop(message);
        }
    });
}

} // extern "C"

namespace simswitch::services
{

namespace
{

/** Why the receiver can't take a message; empty when it can. */
std::string fault_of(const MessageEnvelope &message)
{
    mts_options_t expected = {};
    expected.word[0] = 1;
    expected.word[1] = 1;
    if (message.opcode != USD_CREATE_ADJACENCY) {
        return fmt::format("bcm_usd knows no opcode {}", message.opcode);
    }
    if (message.payload == nullptr || message.length != sizeof(AdjacencyRequest)) {
        return fmt::format("bcm_usd expects a payload of {} bytes and got {}",
                           sizeof(AdjacencyRequest), message.payload ? message.length : 0);
    }
    if (message.mode != 0) {
        return fmt::format("bcm_usd expects mode 0 and got {}", message.mode);
    }
    if (message.options == nullptr ||
        std::memcmp(message.options, &expected, sizeof expected) != 0) {
        return "bcm_usd expects the first two words of the options to be 1 and the rest 0";
    }
    return {};
}

} // namespace

Outcome Messages::send(const mts_queue *queue, const MessageEnvelope &message, mts_message *&handle)
{
    if (queue != fwm_q_mts || message.node != USD_NODE || message.service != USD_SERVICE) {
        return {ERROR_NO_RECEIVER, fmt::format("nobody receives service {} of node {:#x}",
                                               message.service, message.node)};
    }
    if (std::string fault = fault_of(message); !fault.empty()) {
        return {ERROR_MALFORMED, std::move(fault)};
    }
    AdjacencyRequest request;
    std::memcpy(&request, message.payload, sizeof request);
    requests_.push_back(request);

    auto sent = std::make_unique<mts_message>();
    sent->number = requests_.size();
    handle = sent.get();
    open_.emplace(handle, std::move(sent));
    return {};
}

void Messages::drop(mts_message *handle)
{
    open_.erase(handle);
}

} // namespace simswitch::services
