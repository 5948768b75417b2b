/*
 * report.cpp: see report.h.
 */
#include "wire/report.h"

#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab::wire
{

namespace
{

using Json = nlohmann::ordered_json;

void print_ports(const Wire &wire, std::ostream &out)
{
    report::TextTable table({{"PORT"},
                             {"INTERFACE"},
                             {"IN", true},
                             {"OUT", true},
                             {"NOT SENT", true},
                             {"TOO LONG", true},
                             {"MISSED", true},
                             {"STATE"}},
                            0);
    for (const PortCounters &port : wire.ports()) {
        table.add({port.binding.port, port.binding.interface, std::to_string(port.in.frames),
                   std::to_string(port.out.frames), std::to_string(port.not_sent),
                   std::to_string(port.merged), std::to_string(port.missed + port.read_errors),
                   port.ended.empty() ? "" : "ended: " + port.ended});
    }
    out << table.titles() << '\n';
    for (std::size_t i = 0; i < table.size(); ++i) {
        out << table.line(i, "") << '\n';
    }
}

/** What the switch's CPU did, a line each. */
void print_cpu(const std::vector<std::pair<std::string_view, std::uint64_t>> &done,
               std::ostream &out)
{
    if (done.empty()) {
        return;
    }
    report::TextTable table({{"CPU", true}, {""}}, 0);
    for (const auto &[what, times] : done) {
        table.add({std::to_string(times), std::string(what)});
    }
    out << '\n' << table.titles() << '\n';
    for (std::size_t i = 0; i < table.size(); ++i) {
        out << table.line(i, "") << '\n';
    }
}

Json object_of(const PortCounters &port)
{
    return {{"port", port.binding.port},
            {"interface", port.binding.interface},
            {"in", {{"frames", port.in.frames}, {"bytes", port.in.bytes}}},
            {"out", {{"frames", port.out.frames}, {"bytes", port.out.bytes}}},
            {"not_sent", port.not_sent},
            {"too_long", port.merged},
            {"missed", port.missed},
            {"read_errors", port.read_errors},
            {"ended", port.ended.empty() ? Json() : Json(port.ended)}};
}

} // namespace

void print_text(const Wire &wire, std::ostream &out)
{
    print_ports(wire, out);
    if (wire.unbound() != 0) {
        fmt::print(out, "{} left on ports that are on no interface\n",
                   report::counted(wire.unbound(), "frame"));
    }
    if (wire.tally().frames() != 0) {
        out << '\n';
        print(wire.tally(), out);
    }
    print_cpu(wire.cpu().all(), out);
}

Json json_of(const Wire &wire)
{
    Json ports = Json::array();
    for (const PortCounters &port : wire.ports()) {
        ports.push_back(object_of(port));
    }
    Json cpu = Json::object();
    for (const auto &[what, times] : wire.cpu().all()) {
        cpu[std::string(what)] = times;
    }
    return {{"ports", std::move(ports)},
            {"unbound", wire.unbound()},
            {"fates", packet::json_of(wire.tally())},
            {"cpu", std::move(cpu)}};
}

} // namespace lab::wire
