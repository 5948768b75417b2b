/*
 * teardown_text.cpp: see teardown_text.h.
 */
#include "report/teardown_text.h"

#include "config/address.h"
#include "report/text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <ostream>
#include <string>
#include <vector>

namespace lab::report
{

namespace
{

/** How one thing went down: its error, and its calls and messages. */
void print_down(const std::string &name, const l3lif::Request &request, const View &view,
                std::ostream &out)
{
    const std::string error = request.last_error();
    if (!error.empty()) {
        fmt::print(out, "  {}: {}\n", name, error);
    } else if (request.code != 0) {
        fmt::print(out, "  {}: code {}\n", name, request.code);
    } else if (view.calls || view.trace) {
        fmt::print(out, "  {}\n", name);
    }
    print_request(request, view, out);
}

/** "2 virtual MACs, 1 private-VLAN pair, 4 interfaces, 3 VLANs": as far as there are any. */
std::string taken_down(const UpResult &result)
{
    std::vector<std::string> parts;
    if (!result.virtual_macs.empty()) {
        parts.push_back(counted(result.virtual_macs.size(), "virtual MAC"));
    }
    if (!result.pairs.empty()) {
        parts.push_back(counted(result.pairs.size(), "private-VLAN pair"));
    }
    parts.push_back(counted(result.interfaces.size(), "interface"));
    if (const std::size_t vlans = result.layer->l2().vlans().size(); vlans != 0) {
        parts.push_back(counted(vlans, "VLAN"));
    }
    return fmt::format("{}", fmt::join(parts, ", "));
}

/** The requests of a teardown, in their order. */
void print_downs(const UpResult &result, const View &view, std::ostream &out)
{
    for (auto it = result.virtual_macs.rbegin(); it != result.virtual_macs.rend(); ++it) {
        const auto &plan = it->mac->plan;
        print_down(fmt::format("{} of {}", config::mac_text(plan.mac), plain(plan.owner)),
                   it->mac->down, view, out);
    }
    for (auto it = result.pairs.rbegin(); it != result.pairs.rend(); ++it) {
        const auto &plan = it->pair->plan;
        print_down(fmt::format("pair {}, {}", plan.primary, plan.secondary), it->pair->down, view,
                   out);
    }
    for (auto it = result.interfaces.rbegin(); it != result.interfaces.rend(); ++it) {
        print_down(plain(it->interface->lif->plan().name), it->interface->down, view, out);
    }
    const auto &vlans = result.layer->l2().vlans();
    for (auto it = vlans.rbegin(); it != vlans.rend(); ++it) {
        print_down(fmt::format("VLAN {}", (*it)->plan.vlan), (*it)->down, view, out);
    }
}

} // namespace

void print_teardown(const UpResult &result, const View &view, std::ostream &out)
{
    if (!result.teardown) {
        return;
    }
    const Teardown &teardown = *result.teardown;
    fmt::print(out, "\nTaken down again: {} and the router MAC\n", taken_down(result));
    print_downs(result, view, out);
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

} // namespace lab::report
