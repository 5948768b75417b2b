/*
 * frame_values.h: the values behind the options of a frame: numbers, addresses,
 * MACs. make_frame.h puts a frame together from them.
 */
#pragma once

#include "config/address.h"
#include "packet/frame_words.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lab::packet
{

/** The words behind an option; null when it wasn't given. */
const std::vector<std::string> *find_option(const FrameWords &words, std::string_view name);

/**
 * A number behind an option.
 *
 * @param fallback  what it is when the option wasn't given
 * @throws session::UsageError for anything but a number from first to last
 */
std::uint32_t number_of(const FrameWords &words, std::string_view name, std::uint32_t first,
                        std::uint32_t last, std::uint32_t fallback);

/** Two addresses of one family behind an option. */
struct AddressPair {
    config::IpAddress from;
    config::IpAddress to;
};

/** The addresses behind --ip or --arp. @throws session::UsageError for two families, or none */
std::optional<AddressPair> addresses_of(const FrameWords &words, std::string_view name);

/** A MAC, of a group too. @throws session::UsageError for anything else */
config::Mac mac_of(std::string_view option, const std::string &word);

/** The bytes that hex digits say; colons, dots and blanks between bytes don't matter.
 * @throws session::UsageError for anything else, an odd number of digits, too many bytes */
std::vector<std::uint8_t> bytes_of_hex(const std::string &digits);

/** The MAC that packets to an IP group go to. */
config::Mac group_mac(const config::IpAddress &group);

/** Whether an address is a group's. */
bool is_group(const config::IpAddress &address);

} // namespace lab::packet
