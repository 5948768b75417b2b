/*
 * explain.cpp: see explain.h.
 */
#include "packet/explain.h"

#include "packet/authors.h"
#include "packet/describe.h"
#include "packet/fates.h"
#include "packet/names.h"
#include "session/state.h"

#include "chip/pipeline/frame.h"
#include "chip/pipeline/pipeline.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace lab::packet
{

namespace chip = simswitch::chip;
namespace pipeline = simswitch::chip::pipeline;
using pipeline::Frame;
using pipeline::Line;
using pipeline::Mark;
using pipeline::Reason;
using pipeline::Result;
using pipeline::Stage;
using pipeline::Verdict;

namespace
{

bool is_way_out(Stage stage)
{
    return stage == Stage::egress || stage == Stage::l3_interface || stage == Stage::tunnel ||
           stage == Stage::trunk || stage == Stage::leave;
}

/** A trace's lines with names and authors. */
std::vector<ExplainedLine> explained(const pipeline::Trace &trace, const Names &names,
                                     const Explanation &about, const std::string &leaves_by)
{
    std::vector<ExplainedLine> lines;
    std::vector<std::string> way_in = {about.interface, about.port_name, leaves_by};
    std::vector<std::string> way_out = {leaves_by, about.interface, about.port_name};
    for (const SentPort &port : about.sent) {
        way_out.insert(way_out.begin() + 1, port.name);
    }
    for (const Line &line : trace.lines()) {
        ExplainedLine shown{line.mark,
                            line.stage,
                            line.table,
                            line.id,
                            shown_id(names, line),
                            describe(names, line),
                            line.nearest.empty() ? "" : describe_nearest(names, line.nearest),
                            {},
                            names.chip().authors.of(line.table, line.id)};
        shown.author = author_of(shown.authors, is_way_out(line.stage) ? way_out : way_in,
                                 line.mark == Mark::miss);
        lines.push_back(std::move(shown));
    }
    return lines;
}

std::string frame_text(const Frame &frame, const Names &names)
{
    const auto owner = [&names](const chip::Mac &mac) {
        const bool router = names.state().config && mac == names.state().config->device_mac;
        return chip::text(mac) + (router ? " (router)" : "");
    };
    if (frame.bytes.size() < pipeline::ETHERNET_HEADER) {
        return fmt::format("{} bytes", frame.bytes.size());
    }
    std::string tags = "untagged";
    if (frame.tags != 0) {
        tags = fmt::format("tagged {}", frame.outer & pipeline::VLAN_MASK);
    }
    if (frame.tags > 1) {
        tags += fmt::format(" and {}", frame.inner & pipeline::VLAN_MASK);
    }
    return fmt::format("{}, {} bytes, {} to {}", tags, frame.bytes.size(), owner(frame.source),
                       owner(frame.destination));
}

config::IpAddress destination_of(const Frame &frame)
{
    return {frame.is_ip6(), frame.to};
}

/** What more there is to say of a packet whose next hop is the CPU: whose address it is. */
std::string next_hop_detail(const Frame &frame, const Result &result, const Names &names)
{
    const auto &state = names.state();
    const auto *ingress = names.chip().l3_ingresses.find(result.ingress);
    if (ingress == nullptr) {
        return "";
    }
    const auto vrf = static_cast<std::uint16_t>(ingress->vrf);
    const config::IpAddress to = destination_of(frame);
    if (const auto own = state.routing.own(vrf, to)) {
        return fmt::format("{} is an address of {}", to.text(), own->interface);
    }
    const auto gateway = state.routing.gateway_of(vrf, to);
    if (!gateway) {
        return "";
    }
    const auto network = state.routing.network_of(vrf, *gateway);
    return fmt::format("{} isn't known{}: the CPU asks for it", gateway->text(),
                       network ? " on " + network->interface : "");
}

std::vector<SentPort> sent_ports(const Result &result, const Names &names)
{
    std::vector<SentPort> sent;
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (result.left_on(port)) {
            sent.push_back({port, names.port(port), result.tagged.has(port)});
        }
    }
    return sent;
}

/** The end of the frame, in words. */
void tell_end(Explanation &told, const End &end)
{
    const Result &result = end.result;
    told.verdict = result.verdict;
    told.reason = result.reason;
    told.reason_text = pipeline::text(result.reason);
    told.vlan = result.verdict == Verdict::sent ? result.vlan : std::uint16_t{0};
    told.copied_to_cpu = result.verdict == Verdict::sent && result.cpu;
    told.cpu_reason = result.cpu ? pipeline::text(result.cpu_reason) : "";
    told.changes = end.trace.changes();
    told.nearest =
        end.trace.nearest().empty() ? "" : describe_nearest(end.names, end.trace.nearest());
    told.fates = fates_of(result.reason, end);
    if (std::string why = why_bridged(end); !why.empty()) {
        told.detail = std::move(why);
    }
    if (const auto *object = end.names.chip().l3_interfaces.find(result.egress);
        result.reason == Reason::mtu && object != nullptr) {
        told.detail = fmt::format("{} bytes are more than the {} of {}", end.frame.l3_length,
                                  object->mtu, end.names.interface(result.egress));
    }
    if (result.reason == Reason::cpu_next_hop) {
        told.detail = next_hop_detail(end.frame, result, end.names);
    }
}

} // namespace

Explanation explain(session::State &state, const MadeFrame &frame)
{
    // A result is as large as the longest frame.
    const auto result = std::make_unique<Result>();
    pipeline::Trace trace;
    state.pipeline.trace(frame.port, frame.bytes, *result, trace);
    Frame parsed;
    pipeline::parse(frame.bytes, parsed);

    const Names names(state);
    Explanation told;
    told.port = frame.port;
    told.port_name = frame.port_name;
    told.note = frame.note;
    told.size = frame.bytes.size();
    told.frame = frame_text(parsed, names);
    told.interface = names.interface_or_nothing(result->ingress);
    if (const auto *ingress = names.chip().l3_ingresses.find(result->ingress)) {
        told.vrf = names.vrf(ingress->vrf);
    }
    if (result->verdict == Verdict::sent) {
        told.sent = sent_ports(*result, names);
    }
    told.lines = explained(trace, names, told, names.interface_or_nothing(result->egress));
    const int wire_vlan = parsed.tag_vlan() != 0 ? int{parsed.tag_vlan()}
                                                 : names.chip().ports.get(frame.port).untagged_vlan;
    tell_end(told, {names, parsed, *result, trace, frame.port, wire_vlan});
    return told;
}

} // namespace lab::packet
