/*
 * table.cpp: see table.h.
 */
#include "report/table.h"

#include "config/names.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <ostream>

namespace lab::report
{

namespace
{

/** "1 row", "2 rows". */
std::string counted(std::size_t number, std::string_view what)
{
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

/** The table's columns; numbers stand at the right. */
struct Column {
    std::string_view title;
    bool right;
};

constexpr std::array COLUMNS = {
    Column{"INTERFACE", false}, Column{"KIND", false}, Column{"IIF", true},
    Column{"VLAN", true},       Column{"VRF", true},   Column{"MTU", true},
    Column{"FAMILIES", false},  Column{"PORTS", true}, Column{"RESULT", false},
    Column{"CALLS", true},
};
constexpr std::size_t RESULT_COLUMN = 8;

using Line = std::array<std::string, COLUMNS.size()>;
using Widths = std::array<std::size_t, COLUMNS.size()>;

/** A name of the file, harmless for a terminal. */
std::string plain(std::string_view name)
{
    const std::string quotes = config::in_quotes(name);
    return quotes.substr(1, quotes.size() - 2);
}

std::string number_or_dash(bool there, int number)
{
    return there ? fmt::to_string(number) : "-";
}

template <class List> std::string joined_or_dash(const List &list, std::string_view separator)
{
    return list.empty() ? "-" : fmt::format("{}", fmt::join(list, separator));
}

Line make_line(const InterfaceResult &result)
{
    const auto &plan = result.interface->lif->plan();
    const auto &view = result.view;
    return {plain(plan.name),
            std::string(config::kind_name(plan.kind)),
            number_or_dash(view.iif != 0, view.iif),
            number_or_dash(view.has_interface, view.vlan),
            number_or_dash(view.has_interface, view.vrf),
            number_or_dash(view.has_interface, view.mtu),
            joined_or_dash(view.families(), " "),
            joined_or_dash(view.ports, ","),
            result.up ? "up" : "failed",
            fmt::to_string(result.interface->up.calls.size())};
}

/** One line of the table, without blanks at its end; a colour doesn't count for the width. */
void print_line(const Line &line, const Widths &widths, std::string_view colour, std::ostream &out)
{
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const std::string padding(widths[i] - line[i].size(), ' ');
        const bool coloured = i == RESULT_COLUMN && !colour.empty();
        text += i == 0 ? "" : "  ";
        text += COLUMNS[i].right ? padding : "";
        text += coloured ? fmt::format("{}{}\x1b[0m", colour, line[i]) : line[i];
        text += COLUMNS[i].right ? "" : padding;
    }
    fmt::print(out, "{}\n", text);
}

/** What the library says may hold line ends. */
std::string one_line(const std::string &text)
{
    std::string line = text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    const std::size_t first = line.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : line.substr(first, line.find_last_not_of(' ') - first + 1);
}

/** The calls and messages of a request, as far as they are wanted. */
void print_request(const l3lif::Request &request, const View &view, std::ostream &out)
{
    if (view.calls) {
        for (const auto &call : request.calls) {
            fmt::print(out, "    {}\n", call);
        }
    }
    if (view.trace) {
        for (const auto &message : request.messages) {
            fmt::print(out, "    {} {}: {}\n", message.level, message.function,
                       one_line(message.text));
        }
    }
}

void print_heading(const UpResult &result, const View &view, std::ostream &out)
{
    const auto &config = *result.config;
    const auto &mac = result.layer->router_mac();
    fmt::print(out, "{}: {}{}, router MAC {} ", config.file,
               config.hostname.empty() ? "" : plain(config.hostname) + ", ", result.chip,
               config::mac_text(config.device_mac));
    if (result.has_router_mac()) {
        fmt::print(out, "at station {} ({})\n", mac.code, counted(mac.calls.size(), "call"));
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
    Line titles;
    Widths widths = {};
    for (std::size_t i = 0; i < titles.size(); ++i) {
        titles[i] = COLUMNS[i].title;
        widths[i] = titles[i].size();
    }
    std::vector<Line> lines;
    for (const auto &interface : result.interfaces) {
        lines.push_back(make_line(interface));
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], lines.back()[i].size());
        }
    }
    fmt::print(out, "\n");
    print_line(titles, widths, "", out);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view colour = result.interfaces[i].up ? "\x1b[32m" : "\x1b[31m";
        print_line(lines[i], widths, view.colour ? colour : "", out);
        print_request(result.interfaces[i].interface->up, view, out);
    }
}

void print_totals(const UpResult &result, std::ostream &out)
{
    const std::size_t up = result.up_count();
    fmt::print(out, "\n{}: {} up, {} failed; {}; {} not taken\n",
               counted(result.interfaces.size(), "interface"), up, result.interfaces.size() - up,
               counted(result.calls(), "platform call"), counted(result.skipped.size(), "row"));
}

void print_failures(const UpResult &result, std::ostream &out)
{
    if (result.up_count() == result.interfaces.size()) {
        return;
    }
    fmt::print(out, "\nFailed:\n");
    for (const auto &interface : result.interfaces) {
        if (!interface.up) {
            fmt::print(out, "  {}: code {}: {}\n", plain(interface.interface->lif->plan().name),
                       interface.interface->up.code, interface.error);
        }
    }
}

void print_skipped(const UpResult &result, std::ostream &out)
{
    if (!result.skipped.empty()) {
        fmt::print(out, "\nRows not taken:\n");
        for (const auto &row : result.skipped) {
            fmt::print(out, "  {}\n", result.config->message(row));
        }
    }
    if (!result.notes.empty()) {
        fmt::print(out, "\nNotes:\n");
        for (const auto &note : result.notes) {
            fmt::print(out, "  {}\n", note);
        }
    }
}

void print_teardown(const UpResult &result, const View &view, std::ostream &out)
{
    if (!result.teardown) {
        return;
    }
    const Teardown &teardown = *result.teardown;
    fmt::print(out, "\nTaken down again: {} and the router MAC\n",
               counted(result.interfaces.size(), "interface"));
    for (auto it = result.interfaces.rbegin(); it != result.interfaces.rend(); ++it) {
        const l3lif::Interface &interface = *it->interface;
        const std::string error = interface.down.last_error();
        if (!error.empty()) {
            fmt::print(out, "  {}: {}\n", plain(interface.lif->plan().name), error);
        } else if (view.calls || view.trace) {
            fmt::print(out, "  {}\n", plain(interface.lif->plan().name));
        }
        print_request(interface.down, view, out);
    }
    if (result.layer->router_mac_removal().code != 0) {
        fmt::print(out, "  router MAC: {}\n", result.layer->router_mac_removal().last_error());
    }
    print_request(result.layer->router_mac_removal(), view, out);
    if (teardown.left.empty()) {
        fmt::print(out, "  nothing left behind\n");
    } else {
        fmt::print(out, "  left behind:\n");
        for (const auto &line : teardown.left) {
            fmt::print(out, "    {}\n", line);
        }
    }
    fmt::print(out, "  stays by design: {}\n", teardown.by_design);
}

} // namespace

void print_table(const UpResult &result, const View &view, std::ostream &out)
{
    print_heading(result, view, out);
    print_interfaces(result, view, out);
    print_totals(result, out);
    print_failures(result, out);
    print_skipped(result, out);
    print_teardown(result, view, out);
}

} // namespace lab::report
