/*
 * table.cpp: see table.h.
 */
#include "report/table.h"

#include "config/address.h"
#include "config/shown.h"
#include "report/teardown_text.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace lab::report
{

namespace
{

constexpr std::string_view GREEN = "\x1b[32m";
constexpr std::string_view RED = "\x1b[31m";

std::string joined_or_dash(const std::vector<std::string_view> &list)
{
    return list.empty() ? "-" : fmt::format("{}", fmt::join(list, " "));
}

std::string_view up_or_failed(bool up)
{
    return up ? "up" : "failed";
}

std::string_view colour_of(bool up, const View &view)
{
    if (!view.colour) {
        return "";
    }
    return up ? GREEN : RED;
}

void print_heading(const UpResult &result, const View &view, std::ostream &out)
{
    const auto &config = *result.config;
    const auto &mac = result.layer->router_mac();
    fmt::print(out, "{}: {}{}, router MAC {} ", config::harmless(config.file),
               config.hostname.empty() ? "" : plain(config.hostname) + ", ", result.chip,
               config::mac_text(config.device_mac));
    if (result.has_router_mac()) {
        fmt::print(out, "at station {} ({})\n", mac.code, counted(mac.call_count, "call"));
    } else {
        fmt::print(out, "refused: {}\n", mac.last_error());
    }
    print_request(mac, view, out);
}

void print_interfaces(const UpResult &result, const View &view, std::ostream &out)
{
    if (result.interfaces.empty()) {
        fmt::print(out, "\nno routed interface\n");
        return;
    }
    TextTable table({{"INTERFACE"},
                     {"KIND"},
                     {"IIF", true},
                     {"VLAN", true},
                     {"VRF", true},
                     {"MTU", true},
                     {"FAMILIES"},
                     {"PORTS", true},
                     {"RESULT"},
                     {"CALLS", true}},
                    8);
    for (const auto &interface : result.interfaces) {
        const auto &plan = interface.interface->lif->plan();
        const auto &chip = interface.view;
        table.add({plain(plan.name), std::string(config::kind_name(plan.kind)),
                   number_or_dash(chip.iif != 0, chip.iif),
                   number_or_dash(chip.has_interface, chip.vlan),
                   number_or_dash(chip.has_interface, chip.vrf),
                   number_or_dash(chip.has_interface, chip.mtu), joined_or_dash(chip.families()),
                   port_list(chip.ports), std::string(up_or_failed(interface.up)),
                   fmt::to_string(interface.interface->up.call_count)});
    }
    fmt::print(out, "\n{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        const InterfaceResult &interface = result.interfaces[i];
        fmt::print(out, "{}\n", table.line(i, colour_of(interface.up, view)));
        print_request(interface.interface->up, view, out);
    }
}

/** What a station matches on; 0 stands for any. */
std::string number_or_any(int number)
{
    return number != 0 ? fmt::to_string(number) : "any";
}

/** The lines of a virtual MAC: its own station, then those mirrored into secondaries. */
void add_lines(const VirtualMacResult &result, TextTable &table)
{
    const auto &plan = result.mac->plan;
    const std::string mac = config::mac_text(plan.mac);
    const std::string up(up_or_failed(result.error.empty()));
    const std::string calls = fmt::to_string(result.mac->up.call_count);
    const auto &stations = result.view.stations;
    if (stations.empty() || stations.front().mirrored) {
        table.add({mac, plain(plan.owner), plan.source, "-", "-", "-", up, calls});
    }
    for (const auto &station : stations) {
        table.add({mac, plain(plan.owner), station.mirrored ? "mirrored" : plan.source,
                   number_or_any(station.vlan), number_or_any(station.port),
                   fmt::to_string(station.station), station.mirrored ? "up" : up,
                   station.mirrored ? "" : calls});
    }
}

void print_virtual_macs(const UpResult &result, const View &view, std::ostream &out)
{
    if (result.virtual_macs.empty()) {
        return;
    }
    TextTable table({{"VIRTUAL MAC"},
                     {"INTERFACE"},
                     {"SOURCE"},
                     {"VLAN", true},
                     {"PORT", true},
                     {"STATION", true},
                     {"RESULT"},
                     {"CALLS", true}},
                    6);
    std::vector<std::size_t> ends;
    for (const auto &mac : result.virtual_macs) {
        add_lines(mac, table);
        ends.push_back(table.size());
    }
    fmt::print(out, "\n{}\n", table.titles());
    std::size_t line = 0;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        const VirtualMacResult &mac = result.virtual_macs[i];
        const std::size_t first = line;
        for (; line < ends[i]; ++line) {
            const bool up = mac.error.empty() || line != first;
            fmt::print(out, "{}\n", table.line(line, colour_of(up, view)));
        }
        print_request(mac.mac->up, view, out);
    }
}

void print_pairs(const UpResult &result, const View &view, std::ostream &out)
{
    if (result.pairs.empty()) {
        return;
    }
    TextTable table({{"PRIMARY", true},
                     {"SECONDARY", true},
                     {"IIF", true},
                     {"FAMILIES"},
                     {"VIRTUAL MACS", true},
                     {"RESULT"},
                     {"CALLS", true}},
                    5);
    for (const auto &pair : result.pairs) {
        table.add(
            {fmt::to_string(pair.pair->plan.primary), fmt::to_string(pair.pair->plan.secondary),
             number_or_dash(pair.view.iif != 0, pair.view.iif), joined_or_dash(pair.view.families),
             fmt::to_string(pair.view.macs), std::string(up_or_failed(pair.error.empty())),
             fmt::to_string(pair.pair->up.call_count)});
    }
    fmt::print(out, "\n{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        const PairResult &pair = result.pairs[i];
        fmt::print(out, "{}\n", table.line(i, colour_of(pair.error.empty(), view)));
        print_request(pair.pair->up, view, out);
    }
}

/** "VLANs: 240; virtual MACs: 50 up, 0 failed; …": as far as there are any. */
void print_other_totals(const UpResult &result, std::ostream &out)
{
    std::vector<std::string> parts;
    const auto add = [&parts](std::size_t all, std::size_t failed, std::string_view what) {
        if (all != 0) {
            parts.push_back(
                fmt::format("{}: {} up, {} failed", counted(all, what), all - failed, failed));
        }
    };
    add(result.layer->l2().vlans().size(), result.failed_vlans().size(), "VLAN");
    add(result.virtual_macs.size(), result.failed_macs(), "virtual MAC");
    add(result.pairs.size(), result.failed_pairs(), "private-VLAN pair");
    if (!parts.empty()) {
        fmt::print(out, "{}\n", fmt::join(parts, "; "));
    }
}

void print_totals(const UpResult &result, std::ostream &out)
{
    const std::size_t up = result.up_count();
    fmt::print(out, "\n{}: {} up, {} failed; {}; {} not taken\n",
               counted(result.interfaces.size(), "interface"), up, result.interfaces.size() - up,
               counted(result.calls(), "platform call"), counted(result.skipped.size(), "row"));
    print_other_totals(result, out);
}

void print_failures(const UpResult &result, std::ostream &out)
{
    std::vector<std::string> lines;
    for (const auto *vlan : result.failed_vlans()) {
        lines.push_back(fmt::format("{}: code {}: {}", plain(vlan->plan.name), vlan->up.code,
                                    vlan->up.last_error()));
    }
    for (const auto &interface : result.interfaces) {
        if (!interface.up) {
            lines.push_back(fmt::format("{}: code {}: {}",
                                        plain(interface.interface->lif->plan().name),
                                        interface.interface->up.code, interface.error));
        }
    }
    for (const auto &mac : result.virtual_macs) {
        if (!mac.error.empty()) {
            const auto &plan = mac.mac->plan;
            lines.push_back(fmt::format("virtual MAC {} of {}: code {}: {}",
                                        config::mac_text(plan.mac), plain(plan.owner),
                                        mac.mac->up.code, mac.error));
        }
    }
    for (const auto &pair : result.pairs) {
        if (!pair.error.empty()) {
            lines.push_back(fmt::format("pair {}, {}: {}", pair.pair->plan.primary,
                                        pair.pair->plan.secondary, pair.error));
        }
    }
    if (!lines.empty()) {
        fmt::print(out, "\nFailed:\n  {}\n", fmt::join(lines, "\n  "));
    }
}

void print_skipped(const UpResult &result, std::ostream &out)
{
    if (!result.skipped.empty()) {
        fmt::print(out, "\nRows not taken:\n");
        for (const auto &row : result.skipped) {
            fmt::print(out, "  {}\n", config::harmless(result.config->message(row)));
        }
    }
    if (!result.notes.empty()) {
        fmt::print(out, "\nNotes:\n");
        for (const auto &note : result.notes) {
            fmt::print(out, "  {}\n", config::harmless(note));
        }
    }
}

} // namespace

void print_table(const UpResult &result, const View &view, std::ostream &out)
{
    print_heading(result, view, out);
    print_interfaces(result, view, out);
    print_virtual_macs(result, view, out);
    print_pairs(result, view, out);
    print_totals(result, out);
    print_failures(result, out);
    print_skipped(result, out);
    print_teardown(result, view, out);
}

} // namespace lab::report
