/*
 * address.cpp: see address.h.
 */
#include "config/address.h"

#include "config/names.h"

#include <fmt/format.h>

#include <arpa/inet.h>

#include <algorithm>

namespace lab::config
{

namespace
{

int hex_value(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

/** Six pairs of hex digits with colons between them. */
std::optional<Mac> parse_six_bytes(std::string_view text)
{
    if (text.size() != 17) {
        return std::nullopt;
    }
    Mac mac = {};
    for (std::size_t i = 0; i < mac.size(); ++i) {
        const int high = hex_value(text[i * 3]);
        const int low = hex_value(text[i * 3 + 1]);
        if (high < 0 || low < 0 || (i + 1 < mac.size() && text[i * 3 + 2] != ':')) {
            return std::nullopt;
        }
        mac[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return mac;
}

} // namespace

bool IpAddress::is_unicast() const
{
    const auto all_are = [this](std::uint8_t value, std::size_t size) {
        return std::all_of(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size),
                           [value](std::uint8_t byte) { return byte == value; });
    };
    if (ipv6) {
        return !all_are(0, 16) && bytes[0] != 0xff;
    }
    const bool group = (bytes[0] & 0xf0) == 0xe0;
    return !all_are(0, 4) && !all_are(0xff, 4) && !group;
}

std::string IpAddress::text() const
{
    std::array<char, INET6_ADDRSTRLEN> buffer = {};
    inet_ntop(ipv6 ? AF_INET6 : AF_INET, bytes.data(), buffer.data(), buffer.size());
    return buffer.data();
}

std::string Prefix::text() const
{
    return fmt::format("{}/{}", address.text(), length);
}

std::optional<IpAddress> parse_ip(std::string_view text)
{
    // inet_pton stops at a zero byte, which a JSON string may hold.
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const std::string copy(text);
    IpAddress address;
    if (inet_pton(AF_INET, copy.c_str(), address.bytes.data()) == 1) {
        return address;
    }
    address.ipv6 = true;
    if (inet_pton(AF_INET6, copy.c_str(), address.bytes.data()) == 1) {
        return address;
    }
    return std::nullopt;
}

std::optional<Prefix> parse_prefix(std::string_view text, std::string &reason)
{
    const std::size_t slash = text.find('/');
    const auto address = parse_ip(text.substr(0, slash));
    if (slash == std::string_view::npos || !address) {
        reason = fmt::format("{} is no prefix like 10.0.0.1/31 or fc00::1/126", in_quotes(text));
        return std::nullopt;
    }
    const unsigned longest = address->ipv6 ? 128 : 32;
    const std::string_view digits = text.substr(slash + 1);
    const auto length = parse_number(digits);
    if (!length || *length > longest) {
        reason =
            fmt::format("the prefix length {} is not in 0..{}", number_or_quotes(digits), longest);
        return std::nullopt;
    }
    if (!address->is_unicast()) {
        reason = fmt::format("{} is not the address of one interface", address->text());
        return std::nullopt;
    }
    return Prefix{*address, static_cast<unsigned>(*length)};
}

std::optional<Mac> parse_mac(std::string_view text, std::string &reason)
{
    const auto mac = parse_six_bytes(text);
    if (!mac) {
        reason = fmt::format("{} is no MAC address like 00:11:22:33:44:55", in_quotes(text));
        return std::nullopt;
    }
    if ((mac->front() & 1) != 0) {
        reason =
            fmt::format("{} is a group address; an interface needs one of its own", mac_text(*mac));
        return std::nullopt;
    }
    if (*mac == Mac{}) {
        reason = "00:00:00:00:00:00 is the address of no interface";
        return std::nullopt;
    }
    return mac;
}

std::string mac_text(const Mac &mac)
{
    return fmt::format("{:02x}", fmt::join(mac, ":"));
}

} // namespace lab::config
