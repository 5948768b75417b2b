/*
 * take_over.cpp: what an earlier process has left in the chip, taken over or
 * removed. Nobody has kept which egress object is whose: a route that is
 * planned tells it, as it leads to the object of its own host. See chip_writer.h.
 */
#include "routing/chip_writer.h"

#include <algorithm>
#include <set>

namespace lab::routing
{

namespace
{

namespace chip = simswitch::chip;

/** Whether a route is the default one of its VRF. */
bool is_default(const chip::RouteKey &key)
{
    return std::ranges::all_of(key.mask, [](std::uint8_t byte) { return byte == 0; });
}

} // namespace

void ChipWriter::adopt(const ChipPlan &plan)
{
    const chip::Chip &chip = hardware_.chip;
    tunnels_ = chip.tunnels.all();
    for (const auto &[key, there] : chip.routes.all()) {
        const auto wanted = plan.routes.find(key);
        if (wanted != plan.routes.end()) {
            adopt_way(plan, wanted->second, there);
        }
        if (wanted != plan.routes.end() || !is_default(key)) {
            routes_[key] = {there, there.multipath ? there.next_hop : 0};
        }
    }
    // What no route of its own leads to: any that is the same will do.
    const auto left = chip.egresses.all();
    for (const auto &[name, wanted] : plan.egresses) {
        for (auto it = left.begin(); it != left.end() && !egresses_.contains(name); ++it) {
            adopt_egress(plan, name, it->first);
        }
    }
}

/** Takes over the egress objects to which a route leads that is there and wanted. */
void ChipWriter::adopt_way(const ChipPlan &plan, const PlannedRoute &wanted,
                           const chip::Route &there)
{
    const chip::MultipathGroup *group =
        there.multipath ? hardware_.chip.multipath_groups.find(there.next_hop) : nullptr;
    const std::vector<int> ids =
        group != nullptr ? group->members : std::vector<int>{there.next_hop};
    for (std::size_t i = 0; i < std::min(ids.size(), wanted.egresses.size()); ++i) {
        adopt_egress(plan, wanted.egresses[i], ids[i]);
    }
}

/** Takes over an egress object that is as planned, and nobody's so far. */
void ChipWriter::adopt_egress(const ChipPlan &plan, const std::string &name, int id)
{
    const auto wanted = plan.egresses.find(name);
    const chip::Egress *there = hardware_.chip.egresses.find(id);
    const bool is_free = !egresses_.contains(name) && !names_.contains(id);
    if (is_free && there != nullptr && wanted != plan.egresses.end() &&
        *there == wanted->second.record) {
        egresses_[name] = {id, wanted->second.record, wanted->second.text};
        names_[id] = name;
    }
}

/** Removes the groups and egress objects to which nothing leads and that aren't of the plan. */
void ChipWriter::remove_ownerless()
{
    chip::Chip &chip = hardware_.chip;
    std::set<int> used;
    for (const auto &[key, route] : chip.routes.all()) {
        used.insert(route.next_hop);
    }
    for (const auto &[id, group] : chip.multipath_groups.all()) {
        if (used.contains(id)) {
            used.insert(group.members.begin(), group.members.end());
        } else {
            remove_group(id);
        }
    }
    for (const auto &[id, egress] : chip.egresses.all()) {
        if (!used.contains(id) && !names_.contains(id)) {
            chip.egresses.remove(id);
            has_written_ = true;
        }
    }
}

} // namespace lab::routing
