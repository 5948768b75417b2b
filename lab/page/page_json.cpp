/*
 * page_json.cpp: see page_json.h. Lists that come by the thousand are arrays
 * without names: calls, messages, nodes.
 */
#include "page/page_json.h"

#include "config/shown.h"

#include <nlohmann/json.hpp>

#include <string_view>
#include <utility>

namespace lab::page
{

namespace
{

using PageJson = nlohmann::ordered_json;

std::string_view layer_letter(simswitch::Layer layer)
{
    switch (layer) {
    case simswitch::Layer::sdk:
        return "c";
    case simswitch::Layer::wrapper:
        return "w";
    case simswitch::Layer::store:
        return "p";
    case simswitch::Layer::service:
        break;
    }
    return "s";
}

PageJson texts(const std::vector<std::string> &list)
{
    PageJson array = PageJson::array();
    for (const std::string &text : list) {
        array.push_back(config::harmless(text));
    }
    return array;
}

/** [layer, function, arguments, result, outputs, reason, queues], without empty ones at the end. */
PageJson call_line(const CallLine &call)
{
    PageJson array = {layer_letter(call.layer),
                      call.function,
                      config::harmless(call.arguments),
                      config::harmless(call.result),
                      config::harmless(call.outputs),
                      config::harmless(call.reason),
                      call.queues ? 1 : 0};
    const auto is_empty = [](const PageJson &value) { return value == "" || value == 0; };
    while (array.size() > 2 && is_empty(array.back())) {
        array.erase(array.size() - 1);
    }
    return array;
}

PageJson request_lines(const std::vector<RequestLines> &requests)
{
    PageJson array = PageJson::array();
    for (const RequestLines &request : requests) {
        PageJson object = {{"asked", config::harmless(request.asked)}, {"calls", request.calls}};
        if (request.kept) {
            object["items"] = request.items;
        }
        if (request.waiting != 0) {
            object["waiting"] = request.waiting;
        }
        if (!request.refused.empty()) {
            object["refused"] = config::harmless(request.refused);
        }
        array.push_back(std::move(object));
    }
    return array;
}

PageJson chip_object(const ChipObject &object)
{
    PageJson fields = PageJson::array();
    for (const auto &[name, value] : object.fields) {
        fields.push_back({name, config::harmless(value)});
    }
    PageJson json = {{"table", object.table},
                     {"id", config::harmless(object.id)},
                     {"title", config::harmless(object.title)},
                     {"fields", std::move(fields)}};
    if (object.missing) {
        json["missing"] = true;
    }
    if (!object.authors.empty()) {
        json["authors"] = texts(object.authors);
        json["more_authors"] = object.more_authors;
    }
    return json;
}

PageJson graph_json(const Graph &graph)
{
    PageJson nodes = PageJson::array();
    for (const Graph::Node &node : graph.nodes) {
        nodes.push_back({node.object, node.column, node.row});
    }
    PageJson ties = PageJson::array();
    for (const Tie &tie : graph.ties) {
        ties.push_back({tie.from, tie.to, tie.what});
    }
    return {{"nodes", std::move(nodes)}, {"ties", std::move(ties)}};
}

PageJson samples_json(const std::vector<Sample> &samples)
{
    PageJson array = PageJson::array();
    for (const Sample &sample : samples) {
        PageJson lines = PageJson::array();
        for (const SampleLine &line : sample.lines) {
            lines.push_back({line.mark, line.stage, config::harmless(line.id),
                             config::harmless(line.text), config::harmless(line.author)});
        }
        array.push_back({{"what", config::harmless(sample.what)},
                         {"frame", config::harmless(sample.frame)},
                         {"fate", sample.fate},
                         {"summary", config::harmless(sample.summary)},
                         {"lines", std::move(lines)}});
    }
    return array;
}

PageJson interface_json(const InterfaceLines &lines)
{
    PageJson object = {{"name", config::harmless(lines.name)},
                       {"kind", lines.kind},
                       {"state", lines.state},
                       {"ifindex", lines.ifindex},
                       {"iif", lines.iif == 0 ? PageJson() : PageJson(lines.iif)}};
    if (!lines.error.empty()) {
        object["error"] = config::harmless_lines(lines.error);
    }
    if (lines.code) {
        object["code"] = *lines.code;
        object["calls"] = lines.calls;
        object["requests"] = request_lines(lines.requests);
        object["others"] = request_lines(lines.others);
    }
    if (lines.has_interface) {
        object["vlan"] = lines.vlan;
        object["vrf"] = lines.vrf;
        object["vrf_name"] = config::harmless(lines.vrf_name);
        object["mtu"] = lines.mtu;
    }
    object["families"] = lines.families;
    object["ports"] = texts(lines.ports);
    object["addresses"] = texts(lines.addresses);
    object["graph"] = graph_json(lines.graph);
    if (!lines.samples.empty()) {
        object["samples"] = samples_json(lines.samples);
    }
    return object;
}

PageJson extras(const std::vector<ExtraLine> &lines)
{
    PageJson array = PageJson::array();
    for (const ExtraLine &line : lines) {
        array.push_back({{"what", config::harmless(line.what)},
                         {"owner", config::harmless(line.owner)},
                         {"where", config::harmless(line.where)},
                         {"error", config::harmless_lines(line.error)}});
    }
    return array;
}

PageJson tables_json(const std::vector<TableFill> &tables)
{
    PageJson array = PageJson::array();
    for (const TableFill &table : tables) {
        array.push_back({{"name", table.name},
                         {"label", table.label},
                         {"used", table.used},
                         {"size", table.size}});
    }
    return array;
}

PageJson skipped_json(const std::vector<SkippedLine> &skipped)
{
    PageJson array = PageJson::array();
    for (const SkippedLine &row : skipped) {
        array.push_back({{"table", config::harmless(row.table)},
                         {"row", config::harmless(row.row)},
                         {"reason", config::harmless(row.reason)}});
    }
    return array;
}

void add_books(PageJson &object, const Page &page)
{
    object["functions"] = texts(page.functions);
    PageJson calls = PageJson::array();
    for (const CallLine &call : page.call_lines) {
        calls.push_back(call_line(call));
    }
    object["call_lines"] = std::move(calls);
    PageJson messages = PageJson::array();
    for (const MessageLine &message : page.messages) {
        messages.push_back({message.is_error ? 1 : 0, config::harmless(message.function),
                            config::harmless(message.text)});
    }
    object["messages"] = std::move(messages);
    PageJson objects = PageJson::array();
    for (const ChipObject &known : page.objects) {
        objects.push_back(chip_object(known));
    }
    object["objects"] = std::move(objects);
}

/** The same where nothing ends a script element or opens a comment in it. */
std::string safe_in_script(const std::string &json)
{
    std::string safe;
    safe.reserve(json.size());
    for (const char letter : json) {
        if (letter == '<') {
            safe += "\\u003c";
        } else {
            safe += letter;
        }
    }
    return safe;
}

} // namespace

std::string json_of(const Page &page)
{
    PageJson interfaces = PageJson::array();
    for (const InterfaceLines &lines : page.interfaces) {
        interfaces.push_back(interface_json(lines));
    }
    PageJson object = {
        {"source", config::harmless(page.source)},
        {"from_state", page.from_state},
        {"host", config::harmless(page.host)},
        {"chip", page.chip},
        {"mac", page.mac},
        {"station", page.station ? PageJson(*page.station) : PageJson()},
        {"calls", page.calls},
        {"vlans", page.vlans},
        {"routes", page.routes},
        {"failed_requests", page.failed_requests},
        {"call_limit", page.call_limit},
        {"without_calls", page.without_calls},
        {"version", RTIF_VERSION},
        {"interfaces", std::move(interfaces)},
        {"switch_requests", request_lines(page.switch_requests)},
        {"virtual_macs", extras(page.virtual_macs)},
        {"pairs", extras(page.pairs)},
        {"tables", tables_json(page.tables)},
        {"skipped", skipped_json(page.skipped)},
        {"notes", texts(page.notes)},
    };
    add_books(object, page);
    return safe_in_script(object.dump(-1, ' ', true, PageJson::error_handler_t::replace));
}

} // namespace lab::page
