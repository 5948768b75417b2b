/*
 * default_route_writer.cpp: see default_route_writer.h.
 */
#include "config/default_route_writer.h"

#include "config/address.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <ostream>
#include <string_view>
#include <vector>

namespace lab::config
{

namespace
{

using Json = nlohmann::json;

constexpr int NUMBER_SHOWN_MAX = 65535;
constexpr bcm_vlan_t CHIP_VLAN_MAX = 4095;

/** The members of a path's object, as they are written. */
class Members
{
public:
    void add(std::string_view key, std::string_view value)
    {
        texts_.push_back(fmt::format("\"{}\": {}", key, value));
    }
    /** Adds a number unless it is the 0 that is understood without it. */
    void add_unless_zero(std::string_view key, int number)
    {
        if (number != 0) {
            add_number(key, number);
        }
    }
    void add_number(std::string_view key, int number)
    {
        const std::string text = number_text(number);
        add(key, text.starts_with("0x") ? quoted(text) : text);
    }
    static std::string quoted(const std::string &text)
    {
        return Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
    }
    std::string object() const { return fmt::format("{{{}}}", fmt::join(texts_, ", ")); }

private:
    std::vector<std::string> texts_;
};

std::string hex(std::uint32_t word)
{
    return fmt::format("\"{:#x}\"", word);
}

Mac mac_of(const bcm_l3_egress_t &egress)
{
    Mac mac;
    std::copy(std::begin(egress.mac_addr), std::end(egress.mac_addr), mac.begin());
    return mac;
}

/** Whether a next hop can have it: what has no name of its own stands in the raw words. */
bool can_be_said(const Mac &mac)
{
    std::string reason;
    return parse_mac(mac_text(mac), reason).has_value();
}

/** The image's words up to the last one that isn't 0. */
std::string raw_words(const def_route_path_t &path)
{
    std::vector<std::string> words;
    std::transform(std::begin(path.egress), std::end(path.egress), std::back_inserter(words), hex);
    while (!words.empty() && words.back() == hex(0)) {
        words.pop_back();
    }
    return fmt::format("[{}]", fmt::join(words, ", "));
}

bool needs_raw(const bcm_l3_egress_t &egress)
{
    return !can_be_said(mac_of(egress)) || egress.vlan > CHIP_VLAN_MAX ||
           std::any_of(std::begin(egress.reserved), std::end(egress.reserved),
                       [](std::uint32_t word) { return word != 0; });
}

std::string path_object(const def_route_path_t &path, const RouteNames &names)
{
    const bcm_l3_egress_t egress = egress_of(path);
    Members members;
    const std::string name = interface_name(names, path.ifindex);
    members.add(name.empty() ? "ifindex" : "interface",
                name.empty() ? hex(path.ifindex) : Members::quoted(name));
    if (path.valid != 1) {
        members.add("valid", path.valid == 0 ? "false" : fmt::to_string(path.valid));
    }
    if (const Mac mac = mac_of(egress); can_be_said(mac)) {
        members.add("mac", Members::quoted(mac_text(mac)));
    }
    members.add_number("port", egress.port);
    if (egress.vlan <= CHIP_VLAN_MAX) {
        members.add_unless_zero("vlan", egress.vlan);
    }
    members.add_unless_zero("module", egress.module);
    members.add_unless_zero("trunk", egress.trunk);
    if (egress.encap_id != 0) {
        members.add("encap", fmt::to_string(egress.encap_id));
    }
    if (egress.flags != 0) {
        members.add("flags", hex(egress.flags));
    }
    members.add_unless_zero("l3_interface", egress.intf);
    if (needs_raw(egress)) {
        members.add("raw", raw_words(path));
    }
    return members.object();
}

/** Paths as a list, one a line. */
std::string path_list(const def_route_path_t *paths, std::size_t count, const RouteNames &names)
{
    std::vector<std::string> objects;
    for (std::size_t i = 0; i < count; ++i) {
        objects.push_back("\n    " + path_object(paths[i], names));
    }
    return fmt::format("[{}]", fmt::join(objects, ","));
}

std::string family_text(std::uint32_t family)
{
    switch (family) {
    case 0:
        return "\"ipv4\"";
    case 1:
        return "\"ipv6\"";
    default:
        return fmt::to_string(family);
    }
}

std::string route_object(const def_route_rec_t &route, const RouteNames &names)
{
    std::string text =
        fmt::format("\n  {{\"family\": {}, \"vrf\": {}, \"paths\": {}", family_text(route.family),
                    route.vrf, path_list(route.path, route.paths, names));
    if (const std::size_t spare = spare_paths(route); spare != 0) {
        text +=
            fmt::format(",\n   \"spare\": {}", path_list(route.path + route.paths, spare, names));
    }
    return text + "}";
}

bool is_empty(const def_route_path_t &path)
{
    return path.valid == 0 && path.ifindex == 0 &&
           std::all_of(std::begin(path.egress), std::end(path.egress),
                       [](std::uint32_t word) { return word == 0; });
}

} // namespace

std::size_t spare_paths(const def_route_rec_t &route)
{
    std::size_t end = std::size(route.path);
    while (end > route.paths && is_empty(route.path[end - 1])) {
        --end;
    }
    return end - route.paths;
}

std::string number_text(int number)
{
    return number > NUMBER_SHOWN_MAX ? fmt::format("{:#x}", number) : fmt::to_string(number);
}

void print_default_routes(const DefaultRoutes &routes, const RouteNames &names, std::ostream &out)
{
    out << '[';
    for (const auto &route : routes) {
        fmt::print(out, "{}{}", &route == routes.data() ? "" : ",", route_object(route, names));
    }
    out << (routes.empty() ? "]\n" : "\n]\n");
}

} // namespace lab::config
