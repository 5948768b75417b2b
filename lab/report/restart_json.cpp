/*
 * restart_json.cpp: see restart_json.h. docs/restart.md tells the object's shape.
 */
#include "report/restart_json.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <utility>

namespace lab::report
{

namespace
{

using Json = nlohmann::ordered_json;

Json ports_object(const std::vector<l3lif::PortInVlan> &ports)
{
    Json list = Json::array();
    for (const auto &port : ports) {
        list.push_back({{"port", port.port}, {"vlan", port.vlan}});
    }
    return list;
}

Json restored_object(const l3lif::RestoredInterface &restored)
{
    const auto &plan = restored.interface->lif->plan();
    Json messages = Json::array();
    for (const auto &message : restored.request.messages) {
        if (message.level == simswitch::fwm::LEVEL_ERROR) {
            messages.push_back(message.text);
        }
    }
    return {{"name", plan.name},
            {"kind", config::kind_name(plan.kind)},
            {"ifindex", plan.ifindex},
            {"stored_ifindex", restored.ifindex},
            {"iif", restored.iif != 0 ? Json(restored.iif) : Json(nullptr)},
            {"iif_taken", restored.iif_taken},
            {"was_held_back", restored.was_preserved},
            {"port_vlans", ports_object(restored.ports)},
            {"cached_ports", ports_object(restored.cached)},
            {"svi", restored.is_vlan_svi},
            {"in_config", restored.in_config},
            {"added_in_restore_mode", restored.was_replayed},
            {"errors", std::move(messages)}};
}

Json completion_object(const l3lif::Completion &completion)
{
    Json requests = Json::array();
    for (const auto &late : completion.requests) {
        Json object = {{"request", late.asked}, {"result", late.failed ? "failed" : "done"}};
        if (late.failed) {
            object["error"] = late.request.last_error();
        }
        requests.push_back(std::move(object));
    }
    return {{"chip_writes", completion.chip_writes}, {"requests", std::move(requests)}};
}

Json up_interfaces(const UpResult &up)
{
    Json interfaces = Json::array();
    for (const auto &result : up.interfaces) {
        const auto &plan = result.interface->lif->plan();
        Json object = {{"name", plan.name},
                       {"kind", config::kind_name(plan.kind)},
                       {"ifindex", plan.ifindex},
                       {"iif", result.view.iif != 0 ? Json(result.view.iif) : Json(nullptr)},
                       {"result", result.up ? "up" : "failed"}};
        if (!result.error.empty()) {
            object["error"] = result.error;
        }
        interfaces.push_back(std::move(object));
    }
    return interfaces;
}

Json routes_object(const RestartReport &report)
{
    Json routes = Json::array();
    for (const auto &route : default_routes(report)) {
        Json hops = Json::array();
        for (const auto &hop : route.next_hops) {
            hops.push_back({{"interface", hop.interface},
                            {"mac", hop.mac},
                            {"port", hop.port},
                            {"vlan", hop.vlan}});
        }
        routes.push_back({{"family", route.ipv6 ? "ipv6" : "ipv4"},
                          {"vrf", route.vrf},
                          {"next_hops", std::move(hops)}});
    }
    return routes;
}

} // namespace

void print_restart_json(const RestartReport &report, std::ostream &out)
{
    const auto &restart = *report.restart;
    Json object = {{"state", report.state},
                   {"mode", l3lif::mode_name(restart.mode)},
                   {"chip", chip_name(*report.hardware)},
                   {"chip_writes", restart.chip_writes}};
    if (report.up) {
        object["interfaces"] = up_interfaces(*report.up);
        object["default_routes"] = routes_object(report);
        Json adjacencies = Json::array();
        for (const auto &asked : restart.adjacencies) {
            adjacencies.push_back(
                {{"ifindex", asked.ifindex}, {"iif", asked.iif}, {"context", asked.context}});
        }
        object["adjacencies"] = std::move(adjacencies);
    } else {
        Json interfaces = Json::array();
        for (const auto &restored : restart.interfaces) {
            interfaces.push_back(restored_object(restored));
        }
        object["interfaces"] = std::move(interfaces);
        object["held_back"] = restart.preserved;
        object["l2_vlans"] = restart.l2_vlans;
    }
    if (report.completion) {
        object["then"] = completion_object(*report.completion);
    }
    // A path may be no UTF-8.
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::report
