/*
 * route_index.cpp: the longest prefix that matches an address.
 */
#include "chip/pipeline/route_index.h"

#include <bit>

namespace simswitch::chip::pipeline
{

namespace
{

constexpr int STRIDE = 4; // address bits a step

unsigned nibble(const Address &address, int step)
{
    const std::uint8_t byte = address[static_cast<std::size_t>(step / 2)];
    return step % 2 == 0 ? byte >> 4U : byte & 0xfU;
}

} // namespace

int prefix_length(const RouteKey &key)
{
    const std::size_t size = key.ip6 ? 16 : 4;
    int length = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const int ones = std::countl_one(key.mask[i]);
        const bool ended = length != static_cast<int>(i) * 8;
        if (std::popcount(key.mask[i]) != ones || (ended && ones != 0)) {
            return -1;
        }
        length += ones;
    }
    return length;
}

int common_bits(bool ip6, const Address &a, const Address &b)
{
    const std::size_t size = ip6 ? 16 : 4;
    for (std::size_t i = 0; i < size; ++i) {
        const auto differing = static_cast<std::uint8_t>(a[i] ^ b[i]);
        if (differing != 0) {
            return static_cast<int>(i) * 8 + std::countl_zero(differing);
        }
    }
    return static_cast<int>(size) * 8;
}

void RouteIndex::refresh(const Routes &routes)
{
    if (generation_ == routes.generation()) {
        return;
    }
    generation_ = routes.generation();
    routes_.clear();
    nodes_.assign(1, Node{});
    roots_.clear();
    routes_.reserve(routes.size());
    for (const auto &[key, route] : routes.all()) {
        if (const int length = prefix_length(key); length >= 0) {
            routes_.push_back({key, route, length});
            insert(static_cast<std::int32_t>(routes_.size()) - 1);
        }
    }
}

std::int32_t RouteIndex::new_node()
{
    nodes_.emplace_back();
    return static_cast<std::int32_t>(nodes_.size()) - 1;
}

void RouteIndex::insert(std::int32_t route)
{
    const FoundRoute &found = routes_[static_cast<std::size_t>(route)];
    auto [root, is_new] = roots_.try_emplace(root_key(found.key.vrf, found.key.ip6));
    if (is_new) {
        root->second.node = new_node();
    }
    if (found.length == 0) {
        root->second.default_route = route;
        return;
    }
    const int last_step = (found.length - 1) / STRIDE;
    std::int32_t node = root->second.node;
    for (int step = 0; step < last_step; ++step) {
        const unsigned value = nibble(found.key.net, step);
        std::int32_t child = nodes_[static_cast<std::size_t>(node)][value].child;
        if (child == 0) {
            child = new_node();
            nodes_[static_cast<std::size_t>(node)][value].child = child;
        }
        node = child;
    }
    const unsigned covered = 1U << ((last_step + 1) * STRIDE - found.length);
    const unsigned first = nibble(found.key.net, last_step) & ~(covered - 1);
    for (unsigned value = first; value < first + covered; ++value) {
        Slot &slot = nodes_[static_cast<std::size_t>(node)][value];
        if (slot.route < 0 || routes_[static_cast<std::size_t>(slot.route)].length < found.length) {
            slot.route = route;
        }
    }
}

const FoundRoute *RouteIndex::find(int vrf, bool ip6, const Address &address) const
{
    const auto root = roots_.find(root_key(vrf, ip6));
    if (root == roots_.end()) {
        return nullptr;
    }
    std::int32_t best = root->second.default_route;
    std::int32_t node = root->second.node;
    const int steps = (ip6 ? 128 : 32) / STRIDE;
    for (int step = 0; step < steps; ++step) {
        const Slot &slot = nodes_[static_cast<std::size_t>(node)][nibble(address, step)];
        best = slot.route >= 0 ? slot.route : best;
        if (slot.child == 0) {
            break;
        }
        node = slot.child;
    }
    return best >= 0 ? &routes_[static_cast<std::size_t>(best)] : nullptr;
}

} // namespace simswitch::chip::pipeline
