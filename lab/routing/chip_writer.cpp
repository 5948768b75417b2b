/*
 * chip_writer.cpp: see chip_writer.h.
 */
#include "routing/chip_writer.h"

#include "chip/authors.h"
#include "chip/multipath_groups.h"

#include <fmt/format.h>

#include <utility>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

} // namespace

void ChipWriter::write(const ChipPlan &plan, std::vector<std::string> &problems)
{
    has_written_ = false;
    if (takes_over_) {
        adopt(plan);
    }
    for (const auto &[interface, wanted] : plan.tunnels) {
        put_tunnel(interface, wanted, problems);
    }
    for (const auto &[name, wanted] : plan.egresses) {
        put_egress(name, wanted, problems);
    }
    // Old routes make room for new ones.
    remove_routes(plan);
    for (const auto &[key, wanted] : plan.routes) {
        put_route(key, wanted, problems);
    }
    remove_egresses(plan);
    remove_tunnels(plan);
    if (std::exchange(takes_over_, false)) {
        remove_ownerless();
    }
    if (has_written_) {
        hardware_.save();
    }
}

int ChipWriter::id_of(std::string_view name) const
{
    const auto written = egresses_.find(name);
    return written == egresses_.end() ? 0 : written->second.id;
}

std::string_view ChipWriter::text_of(int egress) const
{
    const auto name = names_.find(egress);
    if (name == names_.end()) {
        return {};
    }
    const auto written = egresses_.find(name->second);
    return written == egresses_.end() ? std::string_view() : written->second.text;
}

void ChipWriter::put_egress(const std::string &name, const PlannedEgress &wanted,
                            std::vector<std::string> &problems)
{
    chip::Egresses &table = hardware_.chip.egresses;
    const auto known = egresses_.find(name);
    // Who cuts the power takes our objects along.
    const bool is_there = known != egresses_.end() && table.find(known->second.id) != nullptr;
    if (is_there && *table.find(known->second.id) == wanted.record) {
        known->second.text = wanted.text;
        return;
    }
    const chip::Authors::Scope author(hardware_.chip.authors, name);
    WrittenEgress written{is_there ? known->second.id : 0, wanted.record, wanted.text};
    const simswitch::Outcome outcome =
        is_there ? table.set(written.id, wanted.record) : table.create(wanted.record, written.id);
    has_written_ = true;
    if (!outcome.ok()) {
        problems.push_back(fmt::format("{}: {}", name, outcome.reason));
        if (known != egresses_.end()) {
            names_.erase(known->second.id);
            egresses_.erase(known);
        }
        return;
    }
    names_[written.id] = name;
    egresses_[name] = std::move(written);
}

void ChipWriter::put_tunnel(int interface, const PlannedTunnel &wanted,
                            std::vector<std::string> &problems)
{
    chip::Tunnels &table = hardware_.chip.tunnels;
    const chip::Tunnel *there = table.find(interface);
    const chip::L3Interface *bound = hardware_.chip.l3_interfaces.find(interface);
    // Who programs the interface again takes its initiator off.
    const bool is_bound = bound != nullptr && bound->tunnel == wanted.record.index;
    tunnels_[interface] = wanted.record;
    if (there != nullptr && *there == wanted.record && is_bound) {
        return;
    }
    const chip::Authors::Scope author(hardware_.chip.authors, wanted.author);
    const simswitch::Outcome outcome = there != nullptr ? table.set(interface, wanted.record)
                                                        : table.create(interface, wanted.record);
    has_written_ = true;
    if (!outcome.ok()) {
        problems.push_back(fmt::format("{}: {}", wanted.author, outcome.reason));
        tunnels_.erase(interface);
    }
}

void ChipWriter::remove_tunnels(const ChipPlan &plan)
{
    for (auto it = tunnels_.begin(); it != tunnels_.end();) {
        const auto &[interface, record] = *it;
        if (plan.tunnels.contains(interface)) {
            ++it;
            continue;
        }
        // Mostly it went with its interface.
        const chip::Tunnel *there = hardware_.chip.tunnels.find(interface);
        if (there != nullptr && *there == record) {
            hardware_.chip.tunnels.remove(interface);
            has_written_ = true;
        }
        it = tunnels_.erase(it);
    }
}

std::vector<int> ChipWriter::ids_of(const PlannedRoute &wanted) const
{
    std::vector<int> ids;
    for (const std::string &name : wanted.egresses) {
        if (const auto written = egresses_.find(name); written != egresses_.end()) {
            ids.push_back(written->second.id);
        }
    }
    return ids;
}

/** Gives a route a group of these members, its own of before where it has one. */
bool ChipWriter::take_group(const std::vector<int> &members, const PlannedRoute &wanted,
                            WrittenRoute &route, std::vector<std::string> &problems)
{
    chip::MultipathGroups &table = hardware_.chip.multipath_groups;
    const chip::MultipathGroup record{members};
    const chip::MultipathGroup *there = route.group != 0 ? table.find(route.group) : nullptr;
    if (there == nullptr || *there != record) {
        const simswitch::Outcome outcome =
            there != nullptr ? table.set(route.group, record) : table.create(record, route.group);
        has_written_ = true;
        if (!outcome.ok()) {
            problems.push_back(
                fmt::format("{}: {}; its flows take the first way", wanted.author, outcome.reason));
            return false;
        }
    }
    route.record = {0, route.group, true};
    return true;
}

void ChipWriter::put_route(const chip::RouteKey &key, const PlannedRoute &wanted,
                           std::vector<std::string> &problems)
{
    const std::vector<int> ids = ids_of(wanted);
    if (ids.empty()) {
        return; // its egress object's refusal is told already
    }
    const chip::Authors::Scope author(hardware_.chip.authors, wanted.author);
    const auto known = routes_.find(key);
    const int group_before = known != routes_.end() ? known->second.group : 0;
    WrittenRoute route{{0, ids.front(), false}, group_before};
    if (ids.size() == 1 || !take_group(ids, wanted, route, problems)) {
        route.record = {0, ids.front(), false};
        route.group = 0;
    }
    const chip::Route *there = hardware_.chip.routes.find(key);
    if (there == nullptr || *there != route.record) {
        const simswitch::Outcome outcome = hardware_.chip.routes.set(key, route.record);
        has_written_ = true;
        if (!outcome.ok()) {
            problems.push_back(fmt::format("{}: {}", wanted.author, outcome.reason));
            remove_group(route.group);
            routes_.erase(key);
            return;
        }
    }
    if (group_before != route.group) {
        remove_group(group_before);
    }
    routes_[key] = route;
}

void ChipWriter::remove_group(int group)
{
    if (group != 0 && hardware_.chip.multipath_groups.find(group) != nullptr) {
        hardware_.chip.multipath_groups.remove(group);
        has_written_ = true;
    }
}

/** Removes the routes that aren't planned any more, or of which all next hops were refused. */
void ChipWriter::remove_routes(const ChipPlan &plan)
{
    for (auto it = routes_.begin(); it != routes_.end();) {
        const auto &[key, route] = *it;
        const auto wanted = plan.routes.find(key);
        if (wanted != plan.routes.end() && !ids_of(wanted->second).empty()) {
            ++it;
            continue;
        }
        const chip::Route *there = hardware_.chip.routes.find(key);
        // What somebody else has put in its place stays.
        if (there != nullptr && *there == route.record) {
            hardware_.chip.routes.remove(key);
            has_written_ = true;
        }
        remove_group(route.group);
        it = routes_.erase(it);
    }
}

void ChipWriter::remove_egresses(const ChipPlan &plan)
{
    for (auto it = egresses_.begin(); it != egresses_.end();) {
        if (plan.egresses.contains(it->first)) {
            ++it;
            continue;
        }
        if (hardware_.chip.egresses.find(it->second.id) != nullptr) {
            hardware_.chip.egresses.remove(it->second.id);
            has_written_ = true;
        }
        names_.erase(it->second.id);
        it = egresses_.erase(it);
    }
}

} // namespace lab::routing
