/*
 * json.cpp: see json.h. docs/config.md tells the object's shape.
 */
#include "report/json.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>
#include <utility>

namespace lab::report
{

namespace
{

using Json = nlohmann::ordered_json;

/** A number that the chip gave; null where it has no such object. */
Json number_or_null(bool there, int number)
{
    return there ? Json(number) : Json(nullptr);
}

void add_error(Json &object, const std::string &error)
{
    if (!error.empty()) {
        object["error"] = error;
    }
}

/** Adds the calls and messages of a request, as far as they are wanted. */
void add_request(Json &object, const l3lif::Request &request, const View &view)
{
    if (view.calls) {
        object["call_list"] = request.calls;
    }
    if (view.trace) {
        Json messages = Json::array();
        for (const auto &message : request.messages) {
            messages.push_back(
                {{"level", message.level}, {"function", message.function}, {"text", message.text}});
        }
        object["trace"] = std::move(messages);
    }
}

Json interface_object(const InterfaceResult &result, const View &view)
{
    const auto &plan = result.interface->lif->plan();
    const auto &chip = result.view;
    Json object = {{"name", plan.name},
                   {"kind", config::kind_name(plan.kind)},
                   {"ifindex", plan.ifindex},
                   {"iif", number_or_null(chip.iif != 0, chip.iif)},
                   {"vlan", number_or_null(chip.has_interface, chip.vlan)},
                   {"vrf", number_or_null(chip.has_interface, chip.vrf)},
                   {"mtu", number_or_null(chip.has_interface, chip.mtu)},
                   {"families", chip.families()},
                   {"ports", chip.ports},
                   {"result", result.up ? "up" : "failed"},
                   {"code", result.interface->up.code},
                   {"calls", result.interface->up.call_count}};
    add_error(object, result.error);
    add_request(object, result.interface->up, view);
    return object;
}

/** A virtual MAC: its own station, and those in the secondaries of a primary. */
Json virtual_mac_object(const VirtualMacResult &result, const View &view)
{
    const auto &plan = result.mac->plan;
    Json own = nullptr;
    Json vlan = nullptr;
    Json port = nullptr;
    Json mirrored = Json::array();
    for (const auto &station : result.view.stations) {
        if (station.mirrored) {
            mirrored.push_back({{"vlan", station.vlan}, {"station", station.station}});
        } else {
            own = station.station;
            vlan = number_or_null(station.vlan != 0, station.vlan);
            port = number_or_null(station.port != 0, station.port);
        }
    }
    Json object = {{"mac", config::mac_text(plan.mac)},
                   {"interface", plan.owner},
                   {"source", plan.source},
                   {"vlan", std::move(vlan)},
                   {"port", std::move(port)},
                   {"station", std::move(own)},
                   {"mirrored", std::move(mirrored)},
                   {"result", result.error.empty() ? "up" : "failed"},
                   {"code", result.mac->up.code},
                   {"calls", result.mac->up.call_count}};
    add_error(object, result.error);
    add_request(object, result.mac->up, view);
    return object;
}

Json pair_object(const PairResult &result, const View &view)
{
    Json object = {{"primary", result.pair->plan.primary},
                   {"secondary", result.pair->plan.secondary},
                   {"iif", number_or_null(result.view.iif != 0, result.view.iif)},
                   {"families", result.view.families},
                   {"virtual_macs", result.view.macs},
                   {"result", result.error.empty() ? "up" : "failed"},
                   {"calls", result.pair->up.call_count}};
    add_error(object, result.error);
    add_request(object, result.pair->up, view);
    return object;
}

Json vlan_object(const l3lif::L2Vlan &vlan)
{
    Json object = {{"name", vlan.plan.name},
                   {"vlan", vlan.plan.vlan},
                   {"result", vlan.up.ok() ? "up" : "failed"}};
    add_error(object, vlan.up.last_error());
    return object;
}

Json router_mac_object(const UpResult &result, const View &view)
{
    const auto &request = result.layer->router_mac();
    Json object = {{"mac", config::mac_text(result.config->device_mac)},
                   {"station", number_or_null(result.has_router_mac(), request.code)},
                   {"calls", request.call_count}};
    add_request(object, request, view);
    return object;
}

} // namespace

void print_json(const UpResult &result, const View &view, std::ostream &out)
{
    Json interfaces = Json::array();
    for (const auto &interface : result.interfaces) {
        interfaces.push_back(interface_object(interface, view));
    }
    Json virtual_macs = Json::array();
    for (const auto &mac : result.virtual_macs) {
        virtual_macs.push_back(virtual_mac_object(mac, view));
    }
    Json pairs = Json::array();
    for (const auto &pair : result.pairs) {
        pairs.push_back(pair_object(pair, view));
    }
    Json vlans = Json::array();
    for (const auto &vlan : result.layer->l2().vlans()) {
        vlans.push_back(vlan_object(*vlan));
    }
    Json skipped = Json::array();
    for (const auto &row : result.skipped) {
        skipped.push_back({{"table", row.table}, {"row", row.row}, {"reason", row.reason}});
    }
    const std::size_t up = result.up_count();
    Json object = {{"file", result.config->file},
                   {"chip", result.chip},
                   {"router_mac", router_mac_object(result, view)},
                   {"vlans", std::move(vlans)},
                   {"interfaces", std::move(interfaces)},
                   {"virtual_macs", std::move(virtual_macs)},
                   {"private_vlan_pairs", std::move(pairs)},
                   {"skipped", std::move(skipped)},
                   {"notes", result.notes},
                   {"totals",
                    {{"interfaces", result.interfaces.size()},
                     {"up", up},
                     {"failed", result.interfaces.size() - up},
                     {"vlans", result.layer->l2().vlans().size()},
                     {"virtual_macs", result.virtual_macs.size()},
                     {"private_vlan_pairs", result.pairs.size()},
                     {"skipped", result.skipped.size()},
                     {"calls", result.calls()}}}};
    if (result.teardown) {
        object["teardown"] = {{"clean", result.teardown->clean}, {"left", result.teardown->left}};
    }
    // A path may be no UTF-8.
    out << object.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::report
