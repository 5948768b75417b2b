/*
 * default_route_reader.cpp: see default_route_reader.h.
 */
#include "config/default_route_reader.h"

#include "config/address.h"
#include "config/default_route_values.h"
#include "config/description.h"
#include "config/json_tree.h"
#include "config/names.h"
#include "config/row_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lab::config
{

namespace
{

using NodeKind = JsonNode::Kind;

constexpr std::int64_t CHIP_VLAN_MAX = 4095;
constexpr std::size_t IMAGE_WORDS = std::size(def_route_path_t{}.egress);
constexpr std::uint32_t IP4 = 0;
constexpr std::uint32_t IP6 = 1;

const std::vector<std::string> ROUTE_KEYS = {"family", "vrf", "paths", "spare"};
const std::vector<std::string> PATH_KEYS = {"interface", "ifindex", "valid",        "mac",
                                            "port",      "vlan",    "module",       "trunk",
                                            "encap",     "flags",   "l3_interface", "raw"};

std::uint32_t read_valid(const JsonNode &node)
{
    if (node.kind == NodeKind::boolean) {
        return node.text == "true" ? 1 : 0;
    }
    if (node.kind != NodeKind::number) {
        refuse("valid is {}, true or false was expected", node.kind_name());
    }
    return word(node, "valid");
}

/** Where else a name may come from. */
std::string names_hint(const RouteNames &names)
{
    return names.config.empty()
               ? "; names of a configuration need --config CONFIG.json"
               : fmt::format(", and {} has no such routed interface that is taken", names.config);
}

std::uint32_t read_interface(const JsonNode &path, const RouteNames &names)
{
    const JsonNode *name = path.find("interface");
    const JsonNode *number = path.find("ifindex");
    if ((name == nullptr) == (number == nullptr)) {
        refuse("{}", name == nullptr ? "interface is missing, or ifindex in its place"
                                     : "interface and ifindex are both there; leave one");
    }
    if (number != nullptr) {
        return word(*number, "ifindex");
    }
    if (name->kind != NodeKind::text) {
        refuse("interface is {}, a name was expected; a number is an ifindex", name->kind_name());
    }
    const auto ifindex = ifindex_of(names, name->text);
    if (!ifindex) {
        refuse("interface {} is no name like Ethernet1/9, Ethernet1/9.10, port-channel7, Vlan100 "
               "or Tunnel1{}",
               in_quotes(name->text), names_hint(names));
    }
    return *ifindex;
}

/** A number, or a name of something that has one in the chip. */
template <class Find>
int read_named_number(const JsonNode &node, std::string_view key, std::string_view what, Find find)
{
    const std::string &text = scalar_text(node, key, "a number or name");
    if (node.kind == NodeKind::number || parse_integer(text)) {
        return signed_word(node, key);
    }
    const std::optional<int> number = find(text);
    if (!number) {
        refuse("{} {} is neither a number nor {}", key, in_quotes(text), what);
    }
    return *number;
}

int read_port(const JsonNode &node, const RouteNames &names)
{
    return read_named_number(
        node, "port",
        names.config.empty() ? "a port like Ethernet1/9; names of a configuration need --config "
                               "CONFIG.json"
                             : fmt::format("a port like Ethernet1/9 or of {}", names.config),
        [&names](const std::string &name) { return port_of(names, name); });
}

int read_trunk(const JsonNode &node, const RouteNames &names)
{
    return read_named_number(
        node, "trunk",
        names.config.empty() ? "a port-channel: their names need --config CONFIG.json"
                             : fmt::format("a port-channel of {}", names.config),
        [&names](const std::string &name) -> std::optional<int> {
            const auto known = names.trunks.find(name);
            return known == names.trunks.end() ? std::nullopt : std::optional(known->second);
        });
}

void read_mac(bcm_l3_egress_t &egress, const JsonNode &node)
{
    if (node.kind != NodeKind::text) {
        refuse("mac is {}, a text was expected", node.kind_name());
    }
    std::string reason;
    const auto mac = parse_mac(node.text, reason);
    if (!mac) {
        refuse("mac: {}", reason);
    }
    std::copy(mac->begin(), mac->end(), std::begin(egress.mac_addr));
}

/** The image's words, from the first; those that aren't there are 0. */
void read_raw(def_route_path_t &path, const JsonNode &node)
{
    const auto &words = need_list(node, "raw");
    if (words.size() > IMAGE_WORDS) {
        refuse("raw has {} words, an egress object has {}", words.size(), IMAGE_WORDS);
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        path.egress[i] = word(words[i].value, fmt::format("raw word {}", i));
    }
}

/** Where frames to the next hop leave. */
void read_exit(bcm_l3_egress_t &egress, const JsonNode &path, std::uint32_t ifindex, bool is_raw,
               const RouteNames &names)
{
    const JsonNode *port = path.find("port");
    const JsonNode *trunk = path.find("trunk");
    if (trunk != nullptr) {
        egress.trunk = read_trunk(*trunk, names);
    }
    if (port != nullptr) {
        egress.port = read_port(*port, names);
    } else if (!is_raw && trunk == nullptr) {
        const auto own = port_under(ifindex);
        if (!own) {
            refuse("port is missing, or trunk in its place: only an Ethernet port tells its own");
        }
        egress.port = *own;
    }
}

/** The fields that are plain numbers; those that aren't there stay. */
void read_numbers(bcm_l3_egress_t &egress, const JsonNode &path)
{
    if (const JsonNode *vlan = path.find("vlan")) {
        egress.vlan = static_cast<bcm_vlan_t>(number_in(*vlan, "vlan", 0, CHIP_VLAN_MAX));
    }
    if (const JsonNode *module = path.find("module")) {
        egress.module = signed_word(*module, "module");
    }
    if (const JsonNode *encapsulation = path.find("encap")) {
        egress.encap_id = word(*encapsulation, "encap");
    }
    if (const JsonNode *flags = path.find("flags")) {
        egress.flags = word(*flags, "flags");
    }
    if (const JsonNode *interface = path.find("l3_interface")) {
        egress.intf = signed_word(*interface, "l3_interface");
    }
}

def_route_path_t read_path(const JsonNode &node, const RouteNames &names)
{
    check_object(node, PATH_KEYS);
    def_route_path_t path = {};
    path.ifindex = read_interface(node, names);
    path.valid = node.find("valid") == nullptr ? 1 : read_valid(*node.find("valid"));
    const JsonNode *raw = node.find("raw");
    if (raw != nullptr) {
        read_raw(path, *raw);
    }
    bcm_l3_egress_t egress = egress_of(path);
    if (node.find("mac") != nullptr || raw == nullptr) {
        read_mac(egress, need(node, "mac"));
    }
    read_exit(egress, node, path.ifindex, raw != nullptr, names);
    read_numbers(egress, node);
    set_egress(path, egress);
    return path;
}

/** Reads paths into a route from a place on; returns the place behind them. */
std::size_t read_paths(def_route_rec_t &route, std::size_t place, const JsonNode &list,
                       std::string_view key, const RouteNames &names)
{
    const auto &items = need_list(list, key);
    if (items.size() > RTIFHAL_DEF_ROUTE_PATHS - place) {
        refuse("{} has {}, and a route has room for {} paths{}", key, items.size(),
               RTIFHAL_DEF_ROUTE_PATHS, place == 0 ? "" : " altogether");
    }
    for (const JsonMember &item : items) {
        try {
            route.path[place] = read_path(item.value, names);
        } catch (const BadRow &bad) {
            refuse("{} {}: {}", key == "paths" ? "path" : "spare path", &item - items.data() + 1,
                   bad.what());
        }
        ++place;
    }
    return place;
}

std::uint32_t read_family(const JsonNode &node)
{
    const std::string &text = scalar_text(node, "family", "\"ipv4\" or \"ipv6\"");
    if (text == "ipv4") {
        return IP4;
    }
    if (text == "ipv6") {
        return IP6;
    }
    if (node.kind == NodeKind::text && !parse_integer(text)) {
        refuse("family is {}, \"ipv4\" or \"ipv6\" was expected", in_quotes(text));
    }
    return word(node, "family");
}

std::uint32_t read_vrf(const JsonNode &node, const RouteNames &names)
{
    if (node.kind == NodeKind::text && !parse_integer(node.text)) {
        const auto known = names.vrfs.find(node.text);
        if (known == names.vrfs.end()) {
            refuse("vrf {} is neither a number nor {}", in_quotes(node.text),
                   names.config.empty() ? "known: names of VRFs need --config CONFIG.json"
                                        : fmt::format("a VRF of {}", names.config));
        }
        // cppcheck-suppress derefInvalidIteratorRedundantCheck  // a refusal throws
        return known->second;
    }
    return word(node, "vrf");
}

def_route_rec_t read_route(const JsonNode &node, const RouteNames &names)
{
    check_object(node, ROUTE_KEYS);
    def_route_rec_t route = {};
    route.family = read_family(need(node, "family"));
    const JsonNode *vrf = node.find("vrf");
    route.vrf = vrf == nullptr ? VRF_DEFAULT : read_vrf(*vrf, names);
    const std::size_t used = read_paths(route, 0, need(node, "paths"), "paths", names);
    route.paths = static_cast<std::uint32_t>(used);
    if (const JsonNode *spare = node.find("spare")) {
        read_paths(route, used, *spare, "spare", names);
    }
    return route;
}

/** Refuses keys that stand twice: one of the two was meant otherwise. */
void check_duplicates(const JsonTree &tree, std::string_view file)
{
    if (!tree.duplicates.empty()) {
        const auto &path = tree.duplicates.front();
        throw UnusableFile(fmt::format("{}: {} has the key {} twice; leave one", file,
                                       path.size() == 2   ? "a route"
                                       : path.size() == 4 ? "a path"
                                                          : "an object",
                                       in_quotes(path.back())));
    }
}

} // namespace

DefaultRoutes read_default_routes(std::string_view text, std::string_view file,
                                  const RouteNames &names)
{
    const auto unusable = [file](std::string_view reason) {
        return UnusableFile(fmt::format("{}: {}", file, reason));
    };
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) {
        throw unusable("the file is empty; a list of routes was expected");
    }
    const JsonTree tree = parse_json(text, file);
    if (tree.root.kind != NodeKind::list) {
        throw unusable(fmt::format("a list of routes was expected, not {}", tree.root.kind_name()));
    }
    const auto &items = tree.root.members;
    if (items.size() > DEFAULT_ROUTES_MAX) {
        throw unusable(
            fmt::format("{} routes; a file takes at most {}", items.size(), DEFAULT_ROUTES_MAX));
    }
    check_duplicates(tree, file);
    DefaultRoutes routes;
    routes.reserve(items.size());
    for (const JsonMember &item : items) {
        try {
            routes.push_back(read_route(item.value, names));
        } catch (const BadRow &bad) {
            throw unusable(fmt::format("route {}: {}", routes.size() + 1, bad.what()));
        }
    }
    return routes;
}

} // namespace lab::config
