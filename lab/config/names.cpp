/*
 * names.cpp: see names.h.
 */
#include "config/names.h"

#include "config/shown.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace lab::config
{

namespace
{

// What is longer is no name of anything, and nobody wants to read all of it.
constexpr std::size_t QUOTED_MAX = 160;

// The operating system's limit of an interface's name.
constexpr std::size_t NAME_LENGTH_MAX = 15;

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_letter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool all_digits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), is_digit);
}

/** Takes a word off the front of a name, if it stands there. */
bool take_word(std::string_view &name, std::string_view word)
{
    if (!name.starts_with(word)) {
        return false;
    }
    name.remove_prefix(word.size());
    return true;
}

/** The first bytes of a text, no character cut in two. */
std::string_view beginning(std::string_view text, std::size_t bytes)
{
    if (text.size() <= bytes) {
        return text;
    }
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xc0U) == 0x80) {
        --bytes;
    }
    return text.substr(0, bytes);
}

} // namespace

std::string in_quotes(std::string_view text)
{
    const std::string_view shown = beginning(text, QUOTED_MAX);
    return fmt::format("\"{}{}\"", quotable(shown), shown.size() < text.size() ? "…" : "");
}

std::string quotable(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            escaped += '\\';
        }
        escaped += c;
    }
    return harmless(escaped);
}

std::string number_or_quotes(std::string_view text)
{
    return all_digits(text) ? std::string(text) : in_quotes(text);
}

std::optional<std::uint32_t> parse_number(std::string_view text)
{
    std::uint32_t number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (!all_digits(text) || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

bool is_port_name(std::string_view name)
{
    const bool short_enough = name.size() <= NAME_LENGTH_MAX;
    if (!take_word(name, "Ethernet")) {
        return false;
    }
    if (take_word(name, "-")) {
        const auto *letters_end = std::find_if_not(name.begin(), name.end(), is_letter);
        if (letters_end == name.begin()) {
            return false;
        }
        name.remove_prefix(static_cast<std::size_t>(letters_end - name.begin()));
    }
    return short_enough && all_digits(name);
}

bool is_vrf_name(std::string_view name)
{
    const bool short_enough = name.size() <= NAME_LENGTH_MAX;
    return take_word(name, "Vrf") && short_enough && !name.empty() &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return is_letter(c) || is_digit(c) || c == '_' || c == '-'; });
}

bool is_port_channel_name(std::string_view name)
{
    return take_word(name, "PortChannel") && name.size() <= 4 && all_digits(name);
}

std::optional<std::string_view> vlan_name_digits(std::string_view name)
{
    if (!take_word(name, "Vlan") || !all_digits(name)) {
        return std::nullopt;
    }
    return name;
}

std::optional<SubinterfaceName> parse_subinterface_name(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || !all_digits(name.substr(dot + 1))) {
        return std::nullopt;
    }
    const std::string_view main = name.substr(0, dot);
    const std::string_view digits = name.substr(dot + 1);
    if (is_port_name(main) || is_port_channel_name(main)) {
        return SubinterfaceName{std::string(main), digits, true};
    }
    std::string_view number = main;
    if (take_word(number, "Eth") && is_port_name(fmt::format("Ethernet{}", number))) {
        return SubinterfaceName{fmt::format("Ethernet{}", number), digits, false};
    }
    number = main;
    if (take_word(number, "Po") && is_port_channel_name(fmt::format("PortChannel{}", number))) {
        return SubinterfaceName{fmt::format("PortChannel{}", number), digits, false};
    }
    return std::nullopt;
}

} // namespace lab::config
