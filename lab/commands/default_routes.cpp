/*
 * default_routes.cpp: see default_routes.h. config/default_route_*.h have the
 * forms of the file.
 */
#include "commands/default_routes.h"

#include "config/address.h"
#include "config/default_route_file.h"
#include "config/default_route_names.h"
#include "config/default_route_reader.h"
#include "config/default_route_writer.h"
#include "config/json_tree.h"
#include "config/reader.h"
#include "config/shown.h"
#include "l3lif/plans.h"
#include "report/text.h"
#include "report/text_table.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <system_error>
#include <utility>
#include <vector>

namespace lab::commands
{

namespace
{

namespace fs = std::filesystem;

/** The names of a configuration; those that aren't taken are no names. */
config::RouteNames names_of(const std::string &file)
{
    config::RouteNames names;
    if (file.empty()) {
        return names;
    }
    const config::Description description = config::read_config(file);
    names.config = file;
    for (const auto &plan : l3lif::plans_of(description)) {
        names.interfaces.emplace(plan.name, plan.ifindex);
        names.names.emplace(plan.ifindex, plan.name);
    }
    for (const auto &[name, port] : description.ports) {
        if (port.refused.empty()) {
            names.ports.emplace(name, static_cast<int>(port.chip_port));
        }
    }
    for (const auto &[name, channel] : description.port_channels) {
        if (channel.refused.empty()) {
            names.trunks.emplace(name, static_cast<int>(channel.trunk));
        }
    }
    names.vrfs.insert(description.vrfs.begin(), description.vrfs.end());
    names.vrfs.emplace("default", config::VRF_DEFAULT);
    return names;
}

std::string summary(const config::DefaultRoutes &routes)
{
    return fmt::format("{}, {}", report::counted(routes.size(), "route"),
                       report::counted(config::count_paths(routes), "path"));
}

std::string family_text(std::uint32_t family)
{
    return family == 0 ? "ipv4" : family == 1 ? "ipv6" : fmt::format("ipv6 ({})", family);
}

std::string state_text(const def_route_path_t &path)
{
    return path.valid == 0   ? "not valid"
           : path.valid == 1 ? "valid"
                             : fmt::format("valid ({})", path.valid);
}

/** What few next hops have. */
std::string more_text(const bcm_l3_egress_t &egress)
{
    std::vector<std::string> parts;
    const auto add = [&parts](std::string_view name, bool there, const std::string &value) {
        if (there) {
            parts.push_back(fmt::format("{} {}", name, value));
        }
    };
    add("module", egress.module != 0, config::number_text(egress.module));
    add("trunk", egress.trunk != 0, config::number_text(egress.trunk));
    add("encap", egress.encap_id != 0, fmt::to_string(egress.encap_id));
    add("flags", egress.flags != 0, fmt::format("{:#x}", egress.flags));
    add("l3_interface", egress.intf != 0, config::number_text(egress.intf));
    constexpr std::size_t FIRST_UNKNOWN =
        std::size(def_route_path_t{}.egress) - std::size(bcm_l3_egress_t{}.reserved);
    for (std::size_t i = 0; i < std::size(egress.reserved); ++i) {
        add(fmt::format("word {}", i + FIRST_UNKNOWN), egress.reserved[i] != 0,
            fmt::format("{:#x}", egress.reserved[i]));
    }
    return parts.empty() ? "-" : fmt::format("{}", fmt::join(parts, ", "));
}

/** The cells of a path. */
std::vector<std::string> path_cells(const def_route_path_t &path, const config::RouteNames &names)
{
    const bcm_l3_egress_t egress = config::egress_of(path);
    config::Mac mac;
    std::copy(std::begin(egress.mac_addr), std::end(egress.mac_addr), mac.begin());
    const std::string name = config::interface_name(names, path.ifindex);
    return {name.empty() ? fmt::format("{:#x}", path.ifindex) : report::plain(name),
            state_text(path),
            config::mac_text(mac),
            config::number_text(egress.port),
            report::number_or_dash(egress.vlan != 0, egress.vlan),
            more_text(egress)};
}

void add_route(report::TextTable &table, std::size_t number, const def_route_rec_t &route,
               const config::RouteNames &names)
{
    const std::size_t paths = route.paths + config::spare_paths(route);
    for (std::size_t i = 0; i < paths; ++i) {
        std::vector<std::string> cells = {
            fmt::to_string(number), family_text(route.family), fmt::to_string(route.vrf),
            fmt::format("{}{}", i < route.paths ? "" : "spare ", i + 1)};
        for (auto &cell : path_cells(route.path[i], names)) {
            cells.push_back(std::move(cell));
        }
        table.add(std::move(cells));
    }
    if (paths == 0) {
        table.add({fmt::to_string(number), family_text(route.family), fmt::to_string(route.vrf),
                   "none", "-", "-", "-", "-", "-", "-"});
    }
}

void print_table(const std::string &file, const config::DefaultRoutes &routes,
                 const config::RouteNames &names, std::ostream &out)
{
    fmt::print(out, "{}: {}\n", config::harmless(file), summary(routes));
    if (routes.empty()) {
        return;
    }
    report::TextTable table({{"ROUTE", true},
                             {"FAMILY"},
                             {"VRF", true},
                             {"PATH", true},
                             {"INTERFACE"},
                             {"STATE"},
                             {"MAC"},
                             {"PORT", true},
                             {"VLAN", true},
                             {"MORE"}},
                            0);
    for (std::size_t i = 0; i < routes.size(); ++i) {
        add_route(table, i + 1, routes[i], names);
    }
    fmt::print(out, "\n{}\n", table.titles());
    for (std::size_t i = 0; i < table.size(); ++i) {
        fmt::print(out, "{}\n", table.line(i, ""));
    }
}

void show(const DefaultRoutesOptions &options, const config::RouteNames &names, std::ostream &out)
{
    const auto routes = config::parse_default_routes(config::read_file(options.read), options.read);
    if (options.json) {
        config::print_default_routes(routes, names, out);
    } else {
        print_table(options.read, routes, names, out);
    }
}

void write(const DefaultRoutesOptions &options, const config::RouteNames &names, std::ostream &out)
{
    const auto routes =
        config::read_default_routes(config::read_file(options.routes), options.routes, names);
    for (const std::string &source : {options.routes, options.config}) {
        std::error_code error;
        if (!source.empty() && fs::equivalent(source, options.out, error)) {
            throw config::UnusableFile(
                fmt::format("{}: is what was read; name another file for the routes", options.out));
        }
    }
    const std::string bytes = config::default_route_bytes(routes);
    config::put_in_place(options.out, bytes, options.force);
    fmt::print(out, "{}: {}, {}\n", config::harmless(options.out), summary(routes),
               report::counted(bytes.size(), "byte"));
}

} // namespace

int default_routes(const DefaultRoutesOptions &options, std::ostream &out)
{
    const config::RouteNames names = names_of(options.config);
    if (options.read.empty()) {
        write(options, names, out);
    } else {
        show(options, names, out);
    }
    return 0;
}

} // namespace lab::commands
