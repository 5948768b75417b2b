/*
 * routes.cpp: the table of routes.
 */
#include "chip/routes.h"

#include "chip/refusal.h"

#include <arpa/inet.h>
#include <bit>
#include <fmt/format.h>

namespace simswitch::chip
{

namespace
{

void put_word(std::array<std::uint8_t, 16> &bytes, std::uint32_t word)
{
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(i) = static_cast<std::uint8_t>(word >> (24 - 8 * i));
    }
}

/** The number of mask bits when they are all at the front, else -1. */
int prefix_length(const RouteKey &key)
{
    const std::size_t size = key.ip6 ? 16 : 4;
    int length = 0;
    bool ended = false;
    for (std::size_t i = 0; i < size; ++i) {
        const int ones = std::countl_one(key.mask.at(i));
        if ((ended && key.mask.at(i) != 0) || std::popcount(key.mask.at(i)) != ones) {
            return -1;
        }
        ended = ended || ones != 8;
        length += ones;
    }
    return length;
}

std::string address_text(bool ip6, const std::array<std::uint8_t, 16> &bytes)
{
    std::array<char, INET6_ADDRSTRLEN> buffer{};
    inet_ntop(ip6 ? AF_INET6 : AF_INET, bytes.data(), buffer.data(),
              static_cast<socklen_t>(buffer.size()));
    return buffer.data();
}

} // namespace

RouteKey ip4_key(int vrf, std::uint32_t net, std::uint32_t mask)
{
    RouteKey key;
    key.vrf = vrf;
    put_word(key.net, net & mask);
    put_word(key.mask, mask);
    return key;
}

RouteKey ip6_key(int vrf, std::span<const std::uint8_t, 16> net,
                 std::span<const std::uint8_t, 16> mask)
{
    RouteKey key;
    key.vrf = vrf;
    key.ip6 = true;
    for (std::size_t i = 0; i < key.net.size(); ++i) {
        key.net.at(i) = net[i] & mask[i];
        key.mask.at(i) = mask[i];
    }
    return key;
}

std::string text(const RouteKey &key)
{
    const int length = prefix_length(key);
    return fmt::format("vrf {} {}/{}", key.vrf, address_text(key.ip6, key.net),
                       length >= 0 ? std::to_string(length) : address_text(key.ip6, key.mask));
}

std::string text(const Route &route)
{
    return fmt::format("{} {} flags {:#x}", route.multipath ? "group" : "egress", route.next_hop,
                       route.flags);
}

Outcome Routes::create(const RouteKey &key, const Route &route)
{
    if (Outcome refused = check(route); !refused.ok()) {
        return refused;
    }
    if (table_.contains(key)) {
        return {ERROR_EXISTS, fmt::format("route {} exists already", text(key))};
    }
    if (table_.size() >= limit_) {
        return table_full("route", limit_);
    }
    changes_.note(key);
    table_.emplace(key, route);
    return {};
}

Outcome Routes::remove(const RouteKey &key)
{
    changes_.note_end(key);
    if (table_.erase(key) == 0) {
        return {ERROR_NOT_FOUND, fmt::format("route {} does not exist", text(key))};
    }
    return {};
}

Outcome Routes::set(const RouteKey &key, const Route &route)
{
    auto it = table_.find(key);
    if (it == table_.end()) {
        return create(key, route);
    }
    if (Outcome refused = check(route); !refused.ok()) {
        return refused;
    }
    changes_.note(key);
    it->second = route;
    return {};
}

const Route *Routes::find(const RouteKey &key) const
{
    auto it = table_.find(key);
    return it == table_.end() ? nullptr : &it->second;
}

Outcome Routes::check(const Route &route) const
{
    if (route.multipath && groups_.find(route.next_hop) == nullptr) {
        return unknown("multipath group", route.next_hop);
    }
    if (!route.multipath && egresses_.find(route.next_hop) == nullptr) {
        return unknown("egress object", route.next_hop);
    }
    return {};
}

void Routes::clear()
{
    for (const auto &[key, record] : table_) {
        changes_.note_end(key);
    }
    table_.clear();
}

Outcome Routes::restore(const RouteKey &id, const Route &record)
{
    if (table_.size() >= limit_) {
        return table_full("route", limit_);
    }
    changes_.note(id);
    table_.insert_or_assign(id, record);
    return {};
}

} // namespace simswitch::chip
