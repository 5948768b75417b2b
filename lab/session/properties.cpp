/*
 * properties.cpp: see properties.h.
 */
#include "session/properties.h"

#include "config/description.h"
#include "config/names.h"
#include "session/errors.h"
#include "session/nearest.h"

#include "rtifhal_property.h"

#include <fmt/format.h>
#include <iterator>

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>
#include <utility>

namespace lab::session
{

namespace
{

constexpr std::uint32_t LAST_U16 = std::numeric_limits<std::uint16_t>::max();
constexpr std::uint32_t LAST_U32 = std::numeric_limits<std::uint32_t>::max();

// What the layer above keeps for each mode of the reverse-path check.
constexpr std::array<std::pair<std::string_view, std::uint32_t>, 3> REVERSE_PATH = {
    {{"strict", 3}, {"loose", 2}, {"off", 0}}};

template <auto Field> void store(l3lif_pi_ctxt &properties, std::uint32_t value)
{
    using Type = std::remove_reference_t<decltype(properties.*Field)>;
    properties.*Field = static_cast<Type>(value);
}

using enum ValueKind;

constexpr std::array PROPERTIES = {
    Property{"ipv4", "on|off", on_off, 0, 1, RTIFHAL_PROP_IPV4, true,
             store<&l3lif_pi_ctxt::ipv4_en>},
    Property{"ipv4-multicast", "on|off", on_off, 0, 1, RTIFHAL_PROP_IPV4_MC, true,
             store<&l3lif_pi_ctxt::ipv4_mc_en>},
    Property{"ipv6", "on|off", on_off, 0, 1, RTIFHAL_PROP_IPV6, true,
             store<&l3lif_pi_ctxt::ipv6_en>},
    Property{"vrf", "N", number, 0, LAST_U16, RTIFHAL_PROP_VRF, true, store<&l3lif_pi_ctxt::vrf>},
    Property{"ipv6-vrf", "N", number, 0, LAST_U16, RTIFHAL_PROP_IPV6_VRF, true,
             store<&l3lif_pi_ctxt::ipv6_vrf>},
    Property{"urpf", "strict|loose|off", reverse_path, 0, 3, RTIFHAL_PROP_URPF, true,
             store<&l3lif_pi_ctxt::urpf_mode>},
    Property{"mtu", "N", number, config::MTU_MIN, config::MTU_MAX, 0, false,
             store<&l3lif_pi_ctxt::mtu>},
    Property{"mpls", "on|off", on_off, 0, 1, RTIFHAL_PROP_MPLS, false,
             store<&l3lif_pi_ctxt::mpls_en>},
    Property{"class", "on|off", on_off, 0, 1, RTIFHAL_PROP_CLASS_HIGH, true,
             store<&l3lif_pi_ctxt::class_high_bit>},
    Property{"acl-label", "N", number, 0, LAST_U16, 0, false, nullptr},
    Property{"ingress-flag", "on|off", on_off, 0, 1, RTIFHAL_PROP_INGRESS_FLAG, true,
             store<&l3lif_pi_ctxt::ingress_flag_word>},
    Property{"word-7", "N", number, 0, LAST_U32, RTIFHAL_PROP_WORD_7, true,
             store<&l3lif_pi_ctxt::l3_prop_word_7>},
    Property{"word-8", "N", number, 0, LAST_U32, RTIFHAL_PROP_WORD_8, true,
             store<&l3lif_pi_ctxt::l3_prop_word_8>},
};

[[noreturn]] void refuse(const Property &property, std::string_view word)
{
    if (property.kind == number) {
        throw UsageError(fmt::format("{} is a number from {} to {}, not '{}'", property.name,
                                     property.first, property.last, word));
    }
    const bool two = property.kind == on_off;
    const auto meant =
        two ? nearest(word, {"on", "off"}) : nearest(word, {"strict", "loose", "off"});
    throw UsageError(fmt::format("{} is {}, not '{}'{}", property.name,
                                 two ? "on or off" : "strict, loose or off", word,
                                 meant ? fmt::format(": did you mean '{}'?", *meant) : ""));
}

} // namespace

std::span<const Property> properties()
{
    return PROPERTIES;
}

std::vector<std::string> property_names()
{
    std::vector<std::string> names;
    names.reserve(std::size(PROPERTIES));
    for (const Property &property : PROPERTIES) {
        names.emplace_back(property.name);
    }
    return names;
}

const Property &property(std::string_view name)
{
    const auto *found = std::find_if(PROPERTIES.begin(), PROPERTIES.end(),
                                     [name](const Property &known) { return known.name == name; });
    if (found == PROPERTIES.end()) {
        throw UsageError(unknown("property", name, property_names()));
    }
    return *found;
}

std::uint32_t parse_value(const Property &property, std::string_view word)
{
    if (property.kind == on_off) {
        if (word == "on" || word == "off") {
            return word == "on" ? 1 : 0;
        }
        refuse(property, word);
    }
    if (property.kind == reverse_path) {
        for (const auto &[name, value] : REVERSE_PATH) {
            if (name == word) {
                return value;
            }
        }
        refuse(property, word);
    }
    const auto value = config::parse_number(word);
    if (!value || *value < property.first || *value > property.last) {
        refuse(property, word);
    }
    return *value;
}

std::string value_text(const Property &property, std::uint32_t value)
{
    if (property.kind == on_off && value <= 1) {
        return value == 1 ? "on" : "off";
    }
    for (const auto &[name, known] : REVERSE_PATH) {
        if (property.kind == reverse_path && known == value) {
            return std::string(name);
        }
    }
    return fmt::to_string(value);
}

} // namespace lab::session
