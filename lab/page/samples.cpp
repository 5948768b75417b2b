/*
 * samples.cpp: see samples.h.
 */
#include "page/samples.h"

#include "l3lif/readback.h"
#include "packet/explain.h"
#include "packet/frame_words.h"
#include "packet/make_frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lab::page
{

namespace
{

constexpr unsigned POINT_TO_POINT = 31; ///< a network of two hosts
constexpr unsigned BYTE_BITS = 8;
constexpr std::size_t LAST_BYTE = 3;

/** An interface that sample packets come in on or go out by. */
struct SampleSide {
    const l3lif::Interface *interface;
    std::uint16_t vrf;
    config::Prefix address;
    config::IpAddress host; ///< one on its network, known where there is one
};

/** Another address of an IPv4 network than that of the switch. */
config::IpAddress other_host(const config::Prefix &own)
{
    config::IpAddress host = own.address;
    std::uint8_t &last = host.bytes.at(LAST_BYTE);
    if (own.length >= POINT_TO_POINT) {
        last ^= 1U;
        return host;
    }
    const unsigned bits = std::min(32U - own.length, BYTE_BITS);
    const auto net = static_cast<std::uint8_t>(last & ~((1U << bits) - 1U));
    const auto first = static_cast<std::uint8_t>(net + 1U);
    last = last == first ? static_cast<std::uint8_t>(net + 2U) : first;
    return host;
}

std::vector<SampleSide> sample_sides(const session::State &state)
{
    std::map<std::string_view, const config::RoutedInterface *> asked;
    for (const config::RoutedInterface &interface : state.config->interfaces) {
        asked[interface.name] = &interface;
    }
    std::vector<SampleSide> sides;
    for (const auto &interface : state.layer.interfaces()) {
        const auto found = asked.find(interface->lif->plan().name);
        if (found == asked.end() || interface->standing() != l3lif::Standing::up) {
            continue;
        }
        const auto &addresses = found->second->addresses;
        const auto ipv4 = std::ranges::find_if(
            addresses, [](const config::Prefix &prefix) { return !prefix.address.ipv6; });
        if (ipv4 == addresses.end() || ipv4->length > POINT_TO_POINT) {
            continue;
        }
        SampleSide side{interface.get(), found->second->vrf, *ipv4, other_host(*ipv4)};
        const auto &known = state.routing.neighbors();
        const auto neighbor = std::ranges::find_if(known, [&](const routing::Neighbor &one) {
            return one.interface == interface->lif->plan().name && !one.address.ipv6;
        });
        side.host = neighbor == known.end() ? side.host : neighbor->address;
        sides.push_back(side);
    }
    return sides;
}

/** Where packets of an interface come in: its name, or a port of an SVI and its tag. */
std::optional<packet::FrameWords> sample_way_in(const session::State &state,
                                                const session::Scene &scene, const SampleSide &side)
{
    const l3lif::LifPlan &plan = side.interface->lif->plan();
    if (plan.kind != config::Kind::svi) {
        return packet::FrameWords{{"--in", {plan.name}}};
    }
    const auto view = l3lif::read_back(state.hardware, *side.interface->lif);
    const simswitch::chip::Vlan *vlan = state.hardware.chip.vlans.find(plan.vlan);
    for (const int port : view.ports) {
        const std::string name = session::Scene::name(scene.ports, port);
        if (vlan == nullptr || name.empty()) {
            continue;
        }
        packet::FrameWords words = {{"--in", {name}}};
        if (!vlan->untagged.has(port)) {
            words["--vlan"] = {fmt::to_string(plan.vlan)};
        }
        return words;
    }
    return std::nullopt;
}

std::string_view mark_word(simswitch::chip::pipeline::Mark mark)
{
    static constexpr std::array<std::string_view, 3> WORDS = {"hit", "miss", ""};
    return WORDS.at(static_cast<std::size_t>(mark));
}

Sample traced(session::State &state, packet::FrameWords words, std::string what,
              const config::IpAddress &from, const config::IpAddress &to)
{
    words["--ip"] = {from.text(), to.text()};
    const auto told = packet::explain(state, packet::make_frame(words, state));
    Sample sample{std::move(what),
                  fmt::format("{}: {}", told.port_name, told.frame),
                  told.fate(),
                  told.summary(),
                  {}};
    for (const packet::ExplainedLine &line : told.lines) {
        sample.lines.push_back({std::string(mark_word(line.mark)),
                                std::string(simswitch::chip::pipeline::text(line.stage)),
                                line.shown_id.empty() ? line.id : line.shown_id, line.text,
                                line.author});
    }
    return sample;
}

/** A host of the same VRF behind another interface, one that is known first; null for none. */
const SampleSide *other_side(const session::State &state, const std::vector<SampleSide> &sides,
                             const SampleSide &from)
{
    const SampleSide *found = nullptr;
    for (const SampleSide &side : sides) {
        if (&side == &from || side.vrf != from.vrf) {
            continue;
        }
        const auto &known = state.routing.neighbors();
        if (std::ranges::find(known, side.host, &routing::Neighbor::address) != known.end()) {
            return &side;
        }
        found = found == nullptr ? &side : found;
    }
    return found;
}

} // namespace

void add_samples(session::State &state, Page &page)
{
    std::map<std::string_view, InterfaceLines *> lines;
    for (InterfaceLines &one : page.interfaces) {
        lines[one.name] = &one;
    }
    const auto sides = sample_sides(state);
    const session::Scene scene = state.scene();
    std::size_t sampled = 0;
    for (const SampleSide &side : sides) {
        const std::string &name = side.interface->lif->plan().name;
        InterfaceLines &one = *lines.at(name);
        const auto words = one.state == "up" ? sample_way_in(state, scene, side) : std::nullopt;
        if (!words || sampled == SAMPLED_INTERFACES) {
            continue;
        }
        ++sampled;
        auto &samples = one.samples;
        samples.push_back(
            traced(state, *words, "to its own address", side.host, side.address.address));
        if (const SampleSide *other = other_side(state, sides, side)) {
            samples.push_back(
                traced(state, *words,
                       fmt::format("to a host behind {}", other->interface->lif->plan().name),
                       side.host, other->host));
        }
    }
}

} // namespace lab::page
