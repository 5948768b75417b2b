/*
 * networks.cpp: see networks.h.
 */
#include "config/networks.h"

#include "config/names.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>

namespace lab::config
{

namespace
{

constexpr unsigned BITS_IP4 = 32;
constexpr unsigned BITS_IP6 = 128;
constexpr unsigned BITS_BYTE = 8;

bool is_group(const IpAddress &address)
{
    return address.ipv6 ? address.bytes[0] == 0xff : (address.bytes[0] & 0xf0) == 0xe0;
}

} // namespace

unsigned host_length(const IpAddress &address)
{
    return address.ipv6 ? BITS_IP6 : BITS_IP4;
}

Prefix host_prefix(const IpAddress &address)
{
    return {address, host_length(address)};
}

Prefix masked(const Prefix &prefix)
{
    Prefix result = prefix;
    unsigned left = prefix.length;
    for (std::uint8_t &byte : result.address.bytes) {
        const unsigned bits = left < BITS_BYTE ? left : BITS_BYTE;
        byte = static_cast<std::uint8_t>(byte & ~(0xffU >> bits));
        left -= bits;
    }
    return result;
}

bool contains(const Prefix &prefix, const IpAddress &address)
{
    return prefix.address.ipv6 == address.ipv6 &&
           masked(prefix).address == masked({address, prefix.length}).address;
}

bool is_link_local(const IpAddress &address)
{
    return address.ipv6 && address.bytes[0] == 0xfe && (address.bytes[1] & 0xc0) == 0x80;
}

std::optional<Prefix> parse_destination(std::string_view text, std::string &reason)
{
    const std::size_t slash = text.find('/');
    const auto address = parse_ip(text.substr(0, slash));
    if (!address) {
        reason = fmt::format("{} is no prefix like 10.2.0.0/16 or fc00::/64", in_quotes(text));
        return std::nullopt;
    }
    Prefix prefix = host_prefix(*address);
    if (slash != std::string_view::npos) {
        const std::string_view digits = text.substr(slash + 1);
        const auto length = parse_number(digits);
        if (!length || *length > prefix.length) {
            reason = fmt::format("the prefix length {} is not in 0..{}", number_or_quotes(digits),
                                 prefix.length);
            return std::nullopt;
        }
        prefix.length = *length;
    }
    if (is_group(*address) && prefix.length != 0) {
        reason = fmt::format("{} is a group's: no route leads there", in_quotes(text));
        return std::nullopt;
    }
    return masked(prefix);
}

} // namespace lab::config
