/*
 * trace.cpp: a frame's way through the pipeline, written down.
 */
#include "chip/pipeline/trace.h"

#include <fmt/format.h>

namespace simswitch::chip::pipeline
{

namespace
{

std::string tag_text(int tags, std::uint16_t tag)
{
    constexpr unsigned VLAN_BITS = 12;
    return tags == 0 ? "none"
                     : fmt::format("VLAN {} priority {}", tag & VLAN_MASK, tag >> (VLAN_BITS + 1));
}

std::vector<Change> differences(const Frame &in, const Frame &out)
{
    std::vector<Change> changes;
    const auto compare = [&changes](const char *field, std::string before, std::string after) {
        if (before != after) {
            changes.push_back({field, std::move(before), std::move(after)});
        }
    };
    compare("destination MAC", text(in.destination), text(out.destination));
    compare("source MAC", text(in.source), text(out.source));
    compare("tag", tag_text(in.tags, in.outer), tag_text(out.tags, out.outer));
    if (in.tags == 2 || out.tags == 2) {
        compare("inner tag", tag_text(in.tags - 1, in.inner), tag_text(out.tags - 1, out.inner));
    }
    if (in.is_ip() && in.fault == nullptr) {
        compare(in.is_ip6() ? "hop limit" : "TTL", std::to_string(in.ttl), std::to_string(out.ttl));
    }
    if (in.payload == Payload::ip4 && in.fault == nullptr) {
        constexpr std::size_t CHECKSUM = 10;
        compare("checksum", fmt::format("{:#06x}", read16(in.bytes, in.l3 + CHECKSUM)),
                fmt::format("{:#06x}", read16(out.bytes, out.l3 + CHECKSUM)));
    }
    return changes;
}

/** What a tunnel put before the packet. */
void add_outer(const Frame &out, std::vector<Change> &changes)
{
    changes.push_back({"outer source", "none", address_text(false, out.from)});
    changes.push_back({"outer destination", "none", address_text(false, out.to)});
    changes.push_back({"outer protocol", "none", std::to_string(out.protocol)});
}

/** What the way out to a port changed. */
std::vector<Change> changes_on(int port, const Frame &in, const Result &result)
{
    std::vector<std::uint8_t> bytes(result.size_on(port));
    result.write(port, bytes);
    Frame out;
    parse(bytes, out);
    if (result.outer == 0) {
        return differences(in, out);
    }
    // The packet in the tunnel is compared with the one that came in.
    std::vector<std::uint8_t> inner = bytes;
    const auto packet = inner.begin() + static_cast<std::ptrdiff_t>(out.l3);
    inner.erase(packet, packet + static_cast<std::ptrdiff_t>(result.outer));
    write16(inner, out.l3 - 2, in.type);
    Frame carried;
    parse(inner, carried);
    std::vector<Change> changes = differences(in, carried);
    add_outer(out, changes);
    return changes;
}

int first_port(const Result &result)
{
    int port = 0;
    while (port <= LAST_PORT && !result.left_on(port)) {
        ++port;
    }
    return port;
}

std::string sent_text(const Result &result)
{
    std::string ports;
    const auto add = [&ports](const PortSet &set, const std::string &form) {
        if (!set.empty()) {
            const std::string braced = set.text();
            ports +=
                fmt::format("{}port{} {} {}", ports.empty() ? "" : ", ",
                            set.count() == 1 ? "" : "s", braced.substr(1, braced.size() - 2), form);
        }
    };
    add(result.untagged, "untagged");
    add(result.tagged, fmt::format("tagged {}", result.vlan));
    std::string out = fmt::format("SENT {}: {}", ports, text(result.reason));
    if (result.cpu) {
        out += fmt::format("; a copy TO CPU: {}", text(result.cpu_reason));
    }
    return out;
}

} // namespace

const char *text(Stage stage)
{
    constexpr std::array<const char *, 20> NAMES = {
        "frame",    "port",      "VLAN translation", "VLAN",         "spanning tree", "interface",
        "learning", "station",   "family",           "reverse path", "trap",          "field",
        "route",    "multipath", "egress",           "L3 interface", "tunnel",        "trunk",
        "leave",    "bridge"};
    return NAMES.at(static_cast<std::size_t>(stage));
}

void Trace::end(const Frame &frame, const Result &result)
{
    switch (result.verdict) {
    case Verdict::sent:
        verdict_ = sent_text(result);
        changes_ = changes_on(first_port(result), frame, result);
        break;
    case Verdict::to_cpu:
        verdict_ = fmt::format("TO CPU: {}", pipeline::text(result.reason));
        break;
    case Verdict::dropped:
        verdict_ = fmt::format("DROPPED: {}", pipeline::text(result.reason));
        for (const Line &line : lines_) {
            nearest_ = line.nearest.empty() ? nearest_ : line.nearest;
        }
        break;
    }
}

std::vector<std::string> Trace::text() const
{
    constexpr std::array<const char *, 3> MARKS = {"HIT", "MISS", "-"};
    std::vector<std::string> out;
    for (const Line &line : lines_) {
        std::string object = line.table;
        if (!line.id.empty()) {
            object += (object.empty() ? "" : " ") + line.id;
        }
        out.push_back(fmt::format(
            "{:<4} {:<16} {}{}{}{}{}", MARKS.at(static_cast<std::size_t>(line.mark)),
            pipeline::text(line.stage), object, object.empty() || line.text.empty() ? "" : ": ",
            line.text, line.nearest.empty() ? "" : "; nearest: ", line.nearest));
    }
    out.push_back(verdict_);
    for (const Change &change : changes_) {
        out.push_back(fmt::format("  {}: {} -> {}", change.field, change.before, change.after));
    }
    if (!nearest_.empty()) {
        out.push_back(fmt::format("  nearest: {}", nearest_));
    }
    return out;
}

} // namespace simswitch::chip::pipeline
