/*
 * fates.cpp: see fates.h.
 */
#include "packet/fates_parts.h"

#include "config/names.h"

#include <fmt/format.h>

#include <iterator>

namespace lab::packet
{

namespace pipeline = simswitch::chip::pipeline;
using pipeline::Line;
using pipeline::Mark;
using pipeline::Reason;
using pipeline::Stage;

namespace
{

constexpr std::size_t INTERFACES_SHOWN = 4;

} // namespace

const Line *line_of(const End &end, Stage stage)
{
    const auto &lines = end.trace.lines();
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (line->stage == stage) {
            return &*line;
        }
    }
    return nullptr;
}

int number_at(const End &end, Stage stage)
{
    const Line *line = line_of(end, stage);
    return line == nullptr ? 0 : static_cast<int>(config::parse_number(line->id).value_or(0));
}

std::string where_in(const End &end)
{
    const std::string name = end.names.interface_or_nothing(end.result.ingress);
    return name.empty() ? end.names.port(end.port) : name;
}

int vlan_of(const End &end)
{
    return end.result.ingress_vlan != 0 ? end.result.ingress_vlan : end.wire_vlan;
}

std::string same_vrf(const End &end)
{
    const auto *ingress = end.names.chip().l3_ingresses.find(end.result.ingress);
    if (ingress == nullptr) {
        return where_in(end);
    }
    const auto names = end.names.interfaces_of_vrf(ingress->vrf);
    return fmt::format("{} (VRF {})",
                       names.empty() ? where_in(end) : first_of(names, INTERFACES_SHOWN),
                       end.names.vrf(ingress->vrf));
}

std::string prefix_in(const Line &line, const End &end)
{
    // "vrf 1 10.2.0.0/16"
    const std::string prefix = line.id.substr(line.id.rfind(' ') + 1);
    const bool is_host = prefix.ends_with(end.frame.is_ip6() ? "/128" : "/32");
    return is_host ? prefix.substr(0, prefix.rfind('/')) : prefix;
}

std::string prefix_of(const End &end)
{
    const Line *line = line_of(end, Stage::route);
    return line == nullptr || line->mark != Mark::hit ? "" : prefix_in(*line, end);
}

std::vector<std::string> fates_of(Reason reason, const End &end)
{
    for (const auto of_kind : {fates_of_sent, fates_at_cpu, fates_in, fates_out}) {
        if (auto found = of_kind(reason, end)) {
            return *found;
        }
    }
    return {};
}

std::string why_bridged(const End &end)
{
    const bool is_bridged =
        end.result.reason == Reason::bridged || end.result.reason == Reason::flooded;
    if (!is_bridged || end.result.ingress == 0 || end.frame.is_group() || !end.frame.is_ip()) {
        return "";
    }
    for (const Line &line : end.trace.lines()) {
        if (line.mark != Mark::miss) {
            continue;
        }
        if (line.stage == Stage::station) {
            return fmt::format("not routed: {} is no station's MAC in VLAN {}",
                               simswitch::chip::text(end.frame.destination), vlan_of(end));
        }
        if (line.stage == Stage::family) {
            return fmt::format("not routed: {}", end.names.put_into(line.text));
        }
    }
    return end.frame.fault != nullptr ? fmt::format("not routed: {}", end.frame.fault) : "";
}

} // namespace lab::packet
