/*
 * restart_report.cpp: see restart_report.h.
 */
#include "report/restart_report.h"

#include <fmt/format.h>

namespace lab::report
{

namespace
{

std::string name_of(const l3lif::Layer &layer, int iif)
{
    for (const auto &interface : layer.interfaces()) {
        if (interface->lif->iif() == iif) {
            return interface->lif->plan().name;
        }
    }
    return fmt::format("#{}", iif);
}

} // namespace

std::vector<DefaultRoute> default_routes(const RestartReport &report)
{
    const auto &chip = report.hardware->chip;
    std::vector<DefaultRoute> routes;
    for (const auto &[key, route] : chip.routes.all()) {
        DefaultRoute shown{key.ip6, key.vrf, {}};
        std::vector<int> ids = {route.next_hop};
        if (route.multipath) {
            const auto *group = chip.multipath_groups.find(route.next_hop);
            ids = group != nullptr ? group->members : std::vector<int>{};
        }
        for (const int id : ids) {
            if (const auto *egress = chip.egresses.find(id)) {
                shown.next_hops.push_back({name_of(*report.layer, egress->interface),
                                           simswitch::chip::text(egress->mac), egress->port,
                                           egress->vlan});
            }
        }
        routes.push_back(std::move(shown));
    }
    return routes;
}

std::string chip_name(const simswitch::Switch &hardware)
{
    return hardware.chip.kind() == simswitch::chip::Kind::trident2 ? "Trident2" : "Trident";
}

} // namespace lab::report
