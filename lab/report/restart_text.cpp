/*
 * restart_text.cpp: see restart_text.h.
 */
#include "report/restart_text.h"

#include "config/shown.h"
#include "report/table.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <ostream>

namespace lab::report
{

namespace
{

constexpr std::size_t NO_COLOUR = 99;

/** "1,9-12 in 4094": the ports of a VLAN; "-" for none. */
std::string ports_text(const std::vector<l3lif::PortInVlan> &ports)
{
    if (ports.empty()) {
        return "-";
    }
    std::vector<int> numbers;
    numbers.reserve(ports.size());
    for (const auto &port : ports) {
        numbers.push_back(port.port);
    }
    return fmt::format("{} in {}", port_list(numbers), ports.front().vlan);
}

std::string number_text(const l3lif::RestoredInterface &restored)
{
    if (restored.iif == 0) {
        return "none";
    }
    if (!restored.iif_taken) {
        return "not taken";
    }
    return restored.was_preserved ? "taken, was held back" : "taken";
}

/** What the restore has said at the error level, as it stands. */
void print_reports(const l3lif::RestoredInterface &restored, std::ostream &out)
{
    for (const auto &message : restored.request.messages) {
        if (message.level == simswitch::fwm::LEVEL_ERROR) {
            std::string text = message.text;
            std::erase(text, '\n');
            fmt::print(out, "    102 {}: {}\n", message.function, text);
        }
    }
}

void print_restored(const RestartReport &report, const View &view, std::ostream &out)
{
    const auto &interfaces = report.restart->interfaces;
    if (interfaces.empty()) {
        fmt::print(out, "\nno stored interface\n");
        return;
    }
    TextTable table({{"INTERFACE"},
                     {"KIND"},
                     {"STORED AS"},
                     {"IIF", true},
                     {"NUMBER"},
                     {"PORT VLANS"},
                     {"CACHED PORTS"},
                     {"SVI"},
                     {"ADD"}},
                    NO_COLOUR);
    for (const auto &restored : interfaces) {
        const auto &plan = restored.interface->lif->plan();
        const char *add = restored.replay.ok() ? "done" : "failed";
        table.add({plain(plan.name), std::string(config::kind_name(plan.kind)),
                   fmt::format("{:#x}", restored.ifindex),
                   number_or_dash(restored.iif != 0, restored.iif), number_text(restored),
                   ports_text(restored.ports), ports_text(restored.cached),
                   restored.is_vlan_svi ? fmt::format("of VLAN {}", plan.vlan) : "-",
                   restored.was_replayed ? add : "-"});
    }
    fmt::print(out, "\n{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        fmt::print(out, "{}\n", table.line(i, ""));
        print_reports(interfaces[i], out);
        print_request(interfaces[i].request, view, out);
    }
}

/** "3,5-9 (6)"; "none". */
std::string numbers_text(const std::vector<int> &numbers)
{
    return numbers.empty() ? "none" : port_list(numbers);
}

void print_restore(const RestartReport &report, const View &view, std::ostream &out)
{
    const auto &restart = *report.restart;
    const auto taken = std::count_if(restart.interfaces.begin(), restart.interfaces.end(),
                                     [](const auto &restored) { return restored.iif_taken; });
    fmt::print(out, "{}: {}, restore: {} of {}, {}\n", config::harmless(report.state),
               chip_name(*report.hardware), taken,
               counted(restart.interfaces.size(), "stored interface"),
               counted(restart.chip_writes, "chip write"));
    print_request(restart.globals, view, out);
    print_restored(report, view, out);
    fmt::print(out, "\nnumbers held back: {}\n", numbers_text(restart.preserved));
    if (!restart.l2_vlans.empty()) {
        const std::vector<int> vlans(restart.l2_vlans.begin(), restart.l2_vlans.end());
        fmt::print(out, "VLANs of the L2 side, marked again: {}\n", port_list(vlans));
    }
}

void print_completion(const RestartReport &report, const View &view, std::ostream &out)
{
    if (!report.completion) {
        return;
    }
    fmt::print(out, "\nThen: {}, {}\n", counted(report.completion->requests.size(), "request"),
               counted(report.completion->chip_writes, "chip write"));
    for (const auto &late : report.completion->requests) {
        fmt::print(out, "  {}{}\n", plain(late.asked),
                   late.failed
                       ? fmt::format(": code {}: {}", late.request.code, late.request.last_error())
                       : "");
        print_request(late.request, view, out);
    }
}

void print_steps(const RestartReport &report, std::ostream &out)
{
    TextTable table({{"INTERFACE"},
                     {"KIND"},
                     {"IIF", true},
                     {"DEFAULT ROUTES", true},
                     {"NEXT HOPS", true},
                     {"ADJACENCIES"},
                     {"RESULT"}},
                    NO_COLOUR);
    for (std::size_t i = 0; i < report.restart->steps.size(); ++i) {
        const auto &step = report.restart->steps[i];
        const auto &result = report.up->interfaces[i];
        const auto &plan = step.interface->lif->plan();
        table.add({plain(plan.name), std::string(config::kind_name(plan.kind)),
                   number_or_dash(result.view.iif != 0, result.view.iif),
                   fmt::to_string(step.routes), fmt::to_string(step.next_hops),
                   step.asked ? "asked for" : "-", result.up ? "up" : "failed"});
    }
    fmt::print(out, "\n{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        fmt::print(out, "{}\n", table.line(i, ""));
    }
}

void print_routes(const RestartReport &report, std::ostream &out)
{
    const auto routes = default_routes(report);
    fmt::print(out, "\n{}\n", counted(routes.size(), "default route"));
    for (const auto &route : routes) {
        fmt::print(out, "  {} VRF {}\n", route.ipv6 ? "ipv6" : "ipv4", route.vrf);
        for (const auto &hop : route.next_hops) {
            fmt::print(out, "    {} {} port {}{}\n", plain(hop.interface), hop.mac, hop.port,
                       hop.vlan != 0 ? fmt::format(" VLAN {}", hop.vlan) : "");
        }
    }
}

void print_fast(const RestartReport &report, std::ostream &out)
{
    fmt::print(out, "{}: {}, fast restart: the chip began empty; {} of {} up, {}\n",
               config::harmless(report.state), chip_name(*report.hardware), report.up->up_count(),
               counted(report.up->interfaces.size(), "interface"),
               counted(report.restart->chip_writes, "chip write"));
    print_steps(report, out);
    print_routes(report, out);
    fmt::print(out, "\nadjacencies asked for: {}\n", report.restart->adjacencies.size());
    for (const auto &result : report.up->interfaces) {
        if (!result.up) {
            fmt::print(out, "failed: {}: {}\n", plain(result.interface->lif->plan().name),
                       result.error);
        }
    }
}

} // namespace

void print_restart(const RestartReport &report, const View &view, std::ostream &out)
{
    switch (report.restart->mode) {
    case l3lif::RestartMode::restore:
        print_restore(report, view, out);
        print_completion(report, view, out);
        break;
    case l3lif::RestartMode::fast:
        print_fast(report, out);
        break;
    case l3lif::RestartMode::cold:
        fmt::print(out, "{}: {}, cold start: chip and store began empty; {}\n\n",
                   config::harmless(report.state), chip_name(*report.hardware),
                   counted(report.restart->chip_writes, "chip write"));
        print_table(*report.up, view, out);
        break;
    }
}

} // namespace lab::report
