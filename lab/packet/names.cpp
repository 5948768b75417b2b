/*
 * names.cpp: see names.h.
 */
#include "packet/names.h"

#include "packet/objects.h"
#include "report/text.h"

#include "chip/trunks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>

namespace lab::packet
{

namespace chip = simswitch::chip;

namespace
{

constexpr std::size_t PORTS_SHOWN = 4;

bool is_word(char letter)
{
    return std::isalnum(static_cast<unsigned char>(letter)) != 0;
}

/** A word and the number behind it, at a place of a text. */
struct Numbered {
    int number = 0;
    std::size_t length = 0; ///< of both
};

/** "port 5" at a place, for the word "port"; nothing else: no "port control 5", no "port 0x5". */
std::optional<Numbered> numbered_at(std::string_view text, std::size_t at, std::string_view word)
{
    if (!text.substr(at).starts_with(word) || (at > 0 && is_word(text[at - 1]))) {
        return std::nullopt;
    }
    const std::string_view behind = text.substr(at + word.size());
    if (!behind.starts_with(' ')) {
        return std::nullopt;
    }
    int number = 0;
    const char *first = behind.data() + 1;
    const char *last = behind.data() + behind.size();
    const auto [end, error] = std::from_chars(first, last, number);
    if (error != std::errc{} || end == first || (end != last && is_word(*end))) {
        return std::nullopt;
    }
    return Numbered{number, word.size() + static_cast<std::size_t>(end - behind.data())};
}

/** "{1,5-8}" at a place, as a set; nothing for anything else. */
std::optional<chip::PortSet> ports_at(std::string_view text, std::size_t at, std::size_t &length)
{
    const std::size_t close = text.find('}', at);
    if (text[at] != '{' || close == std::string_view::npos) {
        return std::nullopt;
    }
    chip::PortSet ports;
    int first = -1;
    int number = -1;
    for (std::size_t i = at + 1; i <= close; ++i) {
        const char letter = text[i];
        if (std::isdigit(static_cast<unsigned char>(letter)) != 0) {
            number = std::max(number, 0) * 10 + (letter - '0');
        } else if (letter == '-') {
            first = number;
            number = -1;
        } else if (letter != ',' && letter != '}') {
            return std::nullopt;
        } else if (number >= 0) {
            ports |= chip::PortSet::range(first < 0 ? number : first, number);
            first = number = -1;
        }
    }
    length = close - at + 1;
    return ports;
}

std::vector<int> numbers_of(const chip::PortSet &ports)
{
    std::vector<int> numbers;
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (ports.has(port)) {
            numbers.push_back(port);
        }
    }
    return numbers;
}

} // namespace

std::string first_of(const std::vector<std::string> &words, std::size_t most)
{
    if (words.size() == 1) {
        return words.front();
    }
    if (words.size() <= most + 1 && !words.empty()) {
        return fmt::format("{} and {}", fmt::join(words.begin(), words.end() - 1, ", "),
                           words.back());
    }
    const auto shown = static_cast<std::ptrdiff_t>(std::min(most, words.size()));
    return words.empty() ? ""
                         : fmt::format("{} and {} more",
                                       fmt::join(words.begin(), words.begin() + shown, ", "),
                                       words.size() - most);
}

std::string Names::port(int port) const
{
    std::string known = session::Scene::name(scene_.ports, port);
    if (!known.empty()) {
        return known;
    }
    return port == chip::CPU_PORT ? "the CPU" : fmt::format("port {}", port);
}

std::string Names::port_and_number(int port) const
{
    const std::string known = session::Scene::name(scene_.ports, port);
    return known.empty() ? this->port(port) : fmt::format("{} (port {})", known, port);
}

std::string Names::ports(const chip::PortSet &ports) const
{
    // Ports that the configuration doesn't have are counted, not listed.
    std::vector<std::string> names;
    std::size_t others = 0;
    for (const int number : numbers_of(ports)) {
        const std::string known = session::Scene::name(scene_.ports, number);
        if (!known.empty() || number == chip::CPU_PORT) {
            names.push_back(port(number));
        } else {
            ++others;
        }
    }
    if (names.empty() && others == 0) {
        return "no port";
    }
    if (others == 0) {
        return first_of(names, PORTS_SHOWN);
    }
    const std::size_t shown = std::min(names.size(), PORTS_SHOWN);
    others += names.size() - shown;
    names.resize(shown);
    return names.empty() ? report::counted(others, "port")
                         : fmt::format("{} and {} more {}", fmt::join(names, ", "), others,
                                       others == 1 ? "port" : "ports");
}

std::string Names::interface(int iif) const
{
    const std::string known = interface_or_nothing(iif);
    return known.empty() ? fmt::format("interface {}", iif) : known;
}

std::string Names::trunk(int trunk) const
{
    const std::string known = session::Scene::name(scene_.trunks, trunk);
    return known.empty() ? fmt::format("trunk {}", trunk) : known;
}

std::string Names::vrf(int vrf) const
{
    if (vrf == config::VRF_DEFAULT) {
        return "default";
    }
    if (state_.config) {
        for (const auto &[name, number] : state_.config->vrfs) {
            if (number == vrf) {
                return name;
            }
        }
    }
    return fmt::to_string(vrf);
}

std::string Names::vlan(int vlan)
{
    return fmt::format("VLAN {}", vlan);
}

std::vector<std::string> Names::interfaces_of_vrf(int vrf) const
{
    std::vector<std::string> names;
    for (const auto &[iif, ingress] : chip().l3_ingresses.all()) {
        if (ingress.vrf == vrf && scene_.iifs.contains(iif)) {
            names.push_back(interface(iif));
        }
    }
    return names;
}

std::string Names::put_into(std::string_view text) const
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = 0;
        if (const auto found = numbered_at(text, at, "port")) {
            out += port_and_number(found->number);
            at += found->length;
        } else if (const auto trunk_found = numbered_at(text, at, "trunk")) {
            out += trunk(trunk_found->number);
            at += trunk_found->length;
        } else if (const auto iif = numbered_at(text, at, "interface")) {
            const std::string known = interface_or_nothing(iif->number);
            out += known.empty() ? text.substr(at, iif->length)
                                 : fmt::format("interface {} ({})", iif->number, known);
            at += iif->length;
        } else if (const auto egress = numbered_at(text, at, "egress")) {
            const std::string known = next_hop_text(*this, egress->number);
            out += fmt::format("egress {}{}", egress->number,
                               known.empty() ? "" : fmt::format(", {}", known));
            at += egress->length;
        } else if (const auto set = ports_at(text, at, length)) {
            out += ports(*set);
            at += length;
        } else {
            out += text[at++];
        }
    }
    return out;
}

} // namespace lab::packet
