/*
 * networks.h: prefixes as networks and as the destinations of routes. address.h
 * has the prefixes and addresses themselves.
 */
#pragma once

#include "config/address.h"

#include <optional>
#include <string>
#include <string_view>

namespace lab::config
{

/** The length of a prefix that has one address: 32, for IPv6 128. */
unsigned host_length(const IpAddress &address);

/** The prefix of one address. */
Prefix host_prefix(const IpAddress &address);

/** A prefix with the bits behind its length 0. */
Prefix masked(const Prefix &prefix);

/** Whether a prefix has an address; one of the other family never does. */
bool contains(const Prefix &prefix, const IpAddress &address);

/** Whether it is an IPv6 address that counts on its link alone, fe80::/10. */
bool is_link_local(const IpAddress &address);

/**
 * Reads the destination of a route, "10.2.0.0/16" or "::/0"; an address alone
 * is a host. Bits behind the length are dropped.
 *
 * @param text    the prefix
 * @param reason  receives what is wrong, as a sentence's part, when nothing is returned
 */
std::optional<Prefix> parse_destination(std::string_view text, std::string &reason);

} // namespace lab::config
