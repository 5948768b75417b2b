/*
 * address.h: the addresses of a configuration, read strictly: IP addresses,
 * prefixes, MAC addresses. Beside it: names.h reads the names, networks.h works
 * with prefixes.
 */
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lab::config
{

/** An IP address. */
struct IpAddress {
    bool ipv6 = false;
    std::array<std::uint8_t, 16> bytes = {}; ///< network order; an IPv4 address is the first four

    bool operator==(const IpAddress &) const = default;

    /** Whether an interface may have it: neither 0 nor a group nor 255.255.255.255. */
    bool is_unicast() const;
    /** In lower case, shortest form. */
    std::string text() const;
};

/** An interface's address and the length of its network's prefix. */
struct Prefix {
    IpAddress address;
    unsigned length = 0; ///< 0 to 32, for IPv6 0 to 128

    bool operator==(const Prefix &) const = default;

    /** "10.0.0.1/31", the address as it stands. */
    std::string text() const;
};

/** A MAC address, first byte first. */
using Mac = std::array<std::uint8_t, 6>;

/** Reads "10.0.0.1" or "fc00::1", in either case; nothing for any other text. */
std::optional<IpAddress> parse_ip(std::string_view text);

/**
 * Reads an interface's prefix, "10.0.0.1/31" or "FC00::1/126".
 *
 * @param text    the prefix
 * @param reason  receives what is wrong, as a sentence's part, when nothing is returned
 */
std::optional<Prefix> parse_prefix(std::string_view text, std::string &reason);

/**
 * Reads the MAC address of an interface or device, "00:11:22:aa:BB:cc".
 *
 * @param text    the address
 * @param reason  receives what is wrong when nothing is returned
 */
std::optional<Mac> parse_mac(std::string_view text, std::string &reason);

/** "00:11:22:aa:bb:cc". */
std::string mac_text(const Mac &mac);

} // namespace lab::config
