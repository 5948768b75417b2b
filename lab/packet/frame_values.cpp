/*
 * frame_values.cpp: see frame_values.h.
 */
#include "packet/frame_values.h"

#include "config/names.h"
#include "session/errors.h"

#include "chip/pipeline/frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

namespace lab::packet
{

using config::Mac;
using session::UsageError;

namespace
{

config::IpAddress ip_of(std::string_view option, const std::string &word)
{
    const auto address = config::parse_ip(word);
    if (!address) {
        throw UsageError(fmt::format("{} {} is no IP address", option, config::in_quotes(word)));
    }
    return *address;
}

int digit_of(char digit)
{
    constexpr int LETTERS = 10;
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const int lower = std::tolower(static_cast<unsigned char>(digit));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + LETTERS : -1;
}

} // namespace

const std::vector<std::string> *find_option(const FrameWords &words, std::string_view name)
{
    const auto found = words.find(name);
    return found == words.end() ? nullptr : &found->second;
}

std::uint32_t number_of(const FrameWords &words, std::string_view name, std::uint32_t first,
                        std::uint32_t last, std::uint32_t fallback)
{
    const auto *given = find_option(words, name);
    if (given == nullptr) {
        return fallback;
    }
    const auto number = config::parse_number(given->front());
    if (!number || *number < first || *number > last) {
        throw UsageError(fmt::format("{} is a number from {} to {}, not {}", name, first, last,
                                     config::in_quotes(given->front())));
    }
    return *number;
}

std::optional<AddressPair> addresses_of(const FrameWords &words, std::string_view name)
{
    const auto *given = find_option(words, name);
    if (given == nullptr) {
        return std::nullopt;
    }
    const AddressPair pair{ip_of(name, given->at(0)), ip_of(name, given->at(1))};
    if (pair.from.ipv6 != pair.to.ipv6) {
        throw UsageError(fmt::format("{}: one of {} and {} is an IPv4 address, the other an IPv6",
                                     name, given->at(0), given->at(1)));
    }
    if (name == "--arp" && pair.from.ipv6) {
        throw UsageError("--arp: ARP is for IPv4 addresses; IPv6 asks by neighbour discovery");
    }
    return pair;
}

Mac mac_of(std::string_view option, const std::string &word)
{
    Mac mac{};
    constexpr std::size_t PART = 3; // two digits and a colon
    const std::size_t length = mac.size() * PART - 1;
    bool good = word.size() == length;
    for (std::size_t i = 0; good && i < mac.size(); ++i) {
        const int high = digit_of(word[i * PART]);
        const int low = digit_of(word[i * PART + 1]);
        good = high >= 0 && low >= 0 && (i + 1 == mac.size() || word[i * PART + 2] == ':');
        mac.at(i) = static_cast<std::uint8_t>((high << 4) | low);
    }
    if (!good) {
        throw UsageError(fmt::format("{} {} is no MAC such as 02:00:00:00:00:01", option,
                                     config::in_quotes(word)));
    }
    return mac;
}

std::vector<std::uint8_t> bytes_of_hex(const std::string &digits)
{
    std::vector<std::uint8_t> bytes;
    int high = -1;
    for (const char digit : digits) {
        if (high < 0 && (digit == ':' || digit == '.' || digit == ' ')) {
            continue;
        }
        const int value = digit_of(digit);
        if (value < 0) {
            throw UsageError(fmt::format("--hex: {} is no hex digit",
                                         config::in_quotes(std::string_view(&digit, 1))));
        }
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<std::uint8_t>((high << 4) | value));
            high = -1;
        }
    }
    if (high >= 0) {
        throw UsageError("--hex: the last byte has one digit");
    }
    if (bytes.size() > simswitch::chip::pipeline::FRAME_MAX) {
        throw UsageError(fmt::format("--hex: {} bytes are more than a frame's {}", bytes.size(),
                                     simswitch::chip::pipeline::FRAME_MAX));
    }
    return bytes;
}

bool is_group(const config::IpAddress &address)
{
    constexpr std::uint8_t GROUPS4 = 0xe0;
    constexpr std::uint8_t GROUPS4_MASK = 0xf0;
    constexpr std::uint8_t GROUPS6 = 0xff;
    return address.ipv6 ? address.bytes[0] == GROUPS6
                        : (address.bytes[0] & GROUPS4_MASK) == GROUPS4;
}

Mac group_mac(const config::IpAddress &group)
{
    const auto &from = group.bytes;
    if (group.ipv6) {
        return {0x33, 0x33, from[12], from[13], from[14], from[15]};
    }
    constexpr std::uint8_t LOW_SEVEN = 0x7f;
    return {0x01, 0x00, 0x5e, static_cast<std::uint8_t>(from[1] & LOW_SEVEN), from[2], from[3]};
}

} // namespace lab::packet
