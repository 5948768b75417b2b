/*
 * vxlan_verbs.cpp: the command on VXLAN virtual ports. What belongs to one
 * stands behind `vxlan add NAME` in pairs of a key and a value, in any order.
 */
#include "session/verbs.h"

#include "config/names.h"
#include "l3lif/port_requests.h"
#include "session/errors.h"
#include "session/nearest.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>

namespace lab::session
{

namespace
{

constexpr std::uint32_t LAST_WORD = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t LAST_VNI = (1U << 24) - 1;
constexpr std::uint32_t LAST_HALF_WORD = std::numeric_limits<std::uint16_t>::max();

/** A key that may stand behind `vxlan add NAME`. */
struct Key {
    std::string_view name;
    bool needed;
    std::uint32_t last; ///< the highest number; 0: the value is a name
};

// What of these makes sense is the chip's to say.
constexpr std::array KEYS = {
    Key{"vpn", true, LAST_WORD},       Key{"vni", true, LAST_VNI},     Key{"port", true, 0},
    Key{"vlan", true, LAST_HALF_WORD}, Key{"egress", false, 0},        Key{"mc", false, LAST_WORD},
    Key{"criteria", false, LAST_WORD}, Key{"flags", false, LAST_WORD},
};

using Values = std::map<std::string_view, std::string>;

/** A number, decimal or 0x hex. */
std::uint32_t parse_number(std::string_view what, const std::string &word, std::uint32_t last)
{
    std::uint32_t number = 0;
    bool is_number = false;
    if (word.starts_with("0x") && word.size() > 2) {
        const char *const end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data() + 2, end, number, 16);
        is_number = error == std::errc{} && stop == end;
    } else if (const auto decimal = config::parse_number(word)) {
        number = *decimal;
        is_number = true;
    }
    if (!is_number || number > last) {
        throw UsageError(fmt::format("{} is a number from 0 to {}, decimal or 0x hex, not '{}'",
                                     what, last, word));
    }
    return number;
}

/** The values by their keys. */
Values read_values(const Words &words)
{
    Values values;
    for (std::size_t i = 2; i < words.size(); i += 2) {
        const auto *key = std::find_if(KEYS.begin(), KEYS.end(),
                                       [&](const Key &known) { return known.name == words[i]; });
        if (key == KEYS.end()) {
            throw UsageError(unknown("key", words[i], vxlan_keys()) +
                             fmt::format(" (keys: {})", fmt::join(vxlan_keys(), ", ")));
        }
        if (i + 1 == words.size()) {
            throw UsageError(fmt::format("a value is missing behind '{}'", key->name));
        }
        if (!values.emplace(key->name, words[i + 1]).second) {
            throw UsageError(fmt::format("'{}' stands there twice", key->name));
        }
    }
    for (const Key &key : KEYS) {
        if (key.needed && !values.contains(key.name)) {
            throw UsageError(fmt::format("'{}' and its value are missing: vxlan add NAME vpn N vni "
                                         "N port PORT vlan N [egress NAME] [mc N] [criteria N] "
                                         "[flags N]",
                                         key.name));
        }
    }
    return values;
}

/** The number of a key; 0 when it isn't given. */
std::uint32_t number_of(const Values &values, std::string_view name)
{
    const auto found = values.find(name);
    if (found == values.end()) {
        return 0;
    }
    const auto *key = std::find_if(KEYS.begin(), KEYS.end(),
                                   [name](const Key &known) { return known.name == name; });
    return parse_number(name, found->second, key->last);
}

l3lif::VxlanPlan plan_of(const State &state, const Words &words)
{
    const Values values = read_values(words);
    l3lif::VxlanPlan plan;
    plan.ifindex = state.interface(words[1]).lif->plan().ifindex;
    plan.vpn = number_of(values, "vpn");
    plan.vni = number_of(values, "vni");
    plan.port = state.port(values.at("port")).chip_port;
    plan.vlan = static_cast<std::uint16_t>(number_of(values, "vlan"));
    plan.mc = number_of(values, "mc");
    plan.criteria = number_of(values, "criteria");
    plan.flags = number_of(values, "flags");
    const auto egress = values.find("egress");
    const std::string &way_out = egress == values.end() ? words[1] : egress->second;
    const int iif = state.interface(way_out).lif->iif();
    if (iif == 0) {
        throw Impossible(fmt::format("{} has no number in the chip, by which frames could leave: "
                                     "add it first",
                                     way_out));
    }
    plan.egress = static_cast<std::uint32_t>(iif);
    return plan;
}

Outcome add_port(State &state, const Words &words)
{
    const l3lif::VxlanPlan plan = plan_of(state, words);
    const std::string command = command_text("vxlan", words);
    int id = 0;
    l3lif::Request request = l3lif::add_vxlan_port(state.hardware, command, plan, id);
    Outcome outcome = state.finish(command, {{command, std::move(request)}});
    if (!outcome.refused) {
        outcome.summary += fmt::format(", VXLAN port {} of VPN {}", id, plan.vpn);
    }
    return outcome;
}

} // namespace

std::vector<std::string> vxlan_keys()
{
    std::vector<std::string> names;
    names.reserve(KEYS.size());
    for (const Key &key : KEYS) {
        names.emplace_back(key.name);
    }
    return names;
}

Outcome run_vxlan(State &state, const Words &words)
{
    if (adds(words)) {
        return add_port(state, words);
    }
    if (words.size() != 3) {
        throw UsageError("too many arguments: vxlan del VPN ID");
    }
    const std::uint32_t vpn = parse_number("the VPN", words[1], LAST_WORD);
    const std::uint32_t id = parse_number("the port's id", words[2], LAST_WORD);
    const std::string command = command_text("vxlan", words);
    return state.finish(command,
                        {{command, l3lif::remove_vxlan_port(state.hardware, command, vpn, id)}});
}

} // namespace lab::session
