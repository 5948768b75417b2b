/*
 * json.cpp: see json.h. docs/config.md tells the object's shape.
 */
#include "report/json.h"

#include <nlohmann/json.hpp>

#include <ostream>

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
                   {"calls", result.interface->up.calls.size()}};
    if (!result.up) {
        object["error"] = result.error;
    }
    add_request(object, result.interface->up, view);
    return object;
}

Json router_mac_object(const UpResult &result, const View &view)
{
    const auto &request = result.layer->router_mac();
    Json object = {{"mac", config::mac_text(result.config->device_mac)},
                   {"station", number_or_null(result.has_router_mac(), request.code)},
                   {"calls", request.calls.size()}};
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
    Json skipped = Json::array();
    for (const auto &row : result.skipped) {
        skipped.push_back({{"table", row.table}, {"row", row.row}, {"reason", row.reason}});
    }
    const std::size_t up = result.up_count();
    Json object = {{"file", result.config->file},
                   {"chip", result.chip},
                   {"router_mac", router_mac_object(result, view)},
                   {"interfaces", std::move(interfaces)},
                   {"skipped", std::move(skipped)},
                   {"notes", result.notes},
                   {"totals",
                    {{"interfaces", result.interfaces.size()},
                     {"up", up},
                     {"failed", result.interfaces.size() - up},
                     {"skipped", result.skipped.size()},
                     {"calls", result.calls()}}}};
    if (result.teardown) {
        object["teardown"] = {{"clean", result.teardown->clean}, {"left", result.teardown->left}};
    }
    // A path may be no UTF-8.
    out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace lab::report
