/*
 * views.cpp: see views.h.
 */
#include "sweep/engine/views.h"

#include "chip/snapshot.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"
#include "rtifhal_kelvo_trident/vlan/accounting.h"
#include "rtifhal_trident.h"
#include "sdk/convert.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

namespace sweep
{

namespace
{

namespace chip = simswitch::chip;

/** Words of a snapshot behind which a number of an interface stands. */
constexpr std::array<std::string_view, 4> BEFORE_NUMBER = {"L3 interface ", "L3 ingress ", " iif ",
                                                           " 67="};
/** Words before which a line of a VLAN or port is cut. */
constexpr std::array<std::string_view, 8> PARTS = {" members ", " untagged ",    " controls ",
                                                   " blocks ",  " umc ",         " uuc ",
                                                   " discard ", " vlan-controls"};

std::map<int, std::string> names_of(const simswitch::Switch &hardware,
                                    const lab::l3lif::Layer &layer)
{
    std::map<int, std::string> names;
    for (const auto &interface : layer.interfaces()) {
        const int iif = lab::l3lif::read_back(hardware, *interface->lif).iif;
        if (iif != 0) {
            std::string &name = names[iif];
            name += (name.empty() ? "" : "+") + interface->lif->plan().name;
        }
    }
    return names;
}

void put_name(std::string &line, std::string_view words, const std::map<int, std::string> &names)
{
    const std::size_t found = line.find(words);
    if (found == std::string::npos) {
        return;
    }
    const std::size_t begin = found + words.size();
    std::size_t end = begin;
    while (end < line.size() && line[end] >= '0' && line[end] <= '9') {
        ++end;
    }
    if (end == begin) {
        return;
    }
    int iif = 0;
    std::from_chars(line.data() + begin, line.data() + end, iif);
    if (iif == 0) {
        return;
    }
    const auto name = names.find(iif);
    line.replace(begin, end - begin, name == names.end() ? "nobody's" : name->second);
}

/** A line for each part: "VLAN 100 members {0,5}", "VLAN 100 stg 2". */
void add_parts(Lines &lines, const std::string &line)
{
    const std::size_t colon = line.find(':');
    const std::string object = line.substr(0, colon);
    std::string rest = line.substr(colon + 1);
    while (!rest.empty()) {
        std::size_t end = rest.size();
        for (const std::string_view part : PARTS) {
            end = std::min(end, rest.find(part, 1));
        }
        lines.push_back(object + rest.substr(0, end));
        rest.erase(0, end);
    }
}

std::string numbers_of(const l3iif_bitmap_t &table)
{
    std::vector<std::string> ranges;
    for (int iif = 0; iif <= chip::LAST_IIF; ++iif) {
        const int first = iif;
        while (iif <= chip::LAST_IIF && lab::l3lif::is_set(table, iif)) {
            ++iif;
        }
        if (iif > first) {
            ranges.push_back(fmt::format("{}-{}", first, iif - 1));
        }
    }
    return fmt::format("{}", fmt::join(ranges, " "));
}

void add_ports(Lines &lines)
{
    for (int port = 0; port <= chip::LAST_FRONT_PORT; ++port) {
        std::vector<int> vlans;
        for (int vlan = 0; vlan <= chip::LAST_VLAN; ++vlan) {
            const auto v = static_cast<unsigned>(vlan);
            if ((rtifhal_port_vlan[port].vlan_bitmap[v / 8] & (0x80U >> (v % 8))) != 0) {
                vlans.push_back(vlan);
            }
        }
        if (!vlans.empty()) {
            lines.push_back(fmt::format("port {} in VLANs {}", port, fmt::join(vlans, ",")));
        }
    }
}

} // namespace

Lines chip_view(const simswitch::Switch &hardware, const lab::l3lif::Layer &layer)
{
    const auto names = names_of(hardware, layer);
    Lines lines;
    for (std::string line : chip::snapshot(hardware.chip)) {
        for (const std::string_view words : BEFORE_NUMBER) {
            put_name(line, words, names);
        }
        if (line.starts_with("station ")) {
            line.erase(std::size("station") - 1, line.find(':') - (std::size("station") - 1));
        }
        const bool is_vlan = line.starts_with("VLAN ") && !line.starts_with("VLAN t");
        if (is_vlan || line.starts_with("port ") || line.starts_with("trunk ")) {
            add_parts(lines, line);
        } else {
            lines.push_back(line);
        }
    }
    std::ranges::sort(lines);
    return lines;
}

Lines library_tables(simswitch::Switch &hardware)
{
    Lines lines;
    lines.push_back("numbers taken " + numbers_of(l3lif_l3iif_table));
    lines.push_back("numbers held back " + numbers_of(l3lif_l3iif_table_preserve));
    lines.push_back(fmt::format("group {}, allocated {}", l3_stg, l3_stg_allocated));
    add_ports(lines);
    for (int vlan = 0; vlan <= chip::LAST_VLAN; ++vlan) {
        const auto &uses = rtifhal_vlan_type_count[vlan];
        if (uses.subint_count != 0 || uses.svi != 0 || uses.l2_vlan != 0) {
            lines.push_back(fmt::format("VLAN {} used by {} ports, {} SVI, {} L2", vlan,
                                        uses.subint_count, uses.svi, uses.l2_vlan));
        }
        if (const auto *controls = hardware.wrappers.kept_vlan_controls(vlan)) {
            lines.push_back(fmt::format("VLAN {} cached vrf {} iif {} flags {:#x} class {} urpf {}",
                                        vlan, controls->vc_vrf, controls->vc_ingress_if,
                                        controls->vc_flags, controls->vc_class,
                                        controls->vc_urpf_mode));
        }
        std::vector<int> ports;
        const chip::PortSet &cached = hardware.wrappers.cached_vlan_ports(vlan);
        for (int port = 0; port <= chip::LAST_PORT; ++port) {
            if (cached.has(port)) {
                ports.push_back(port);
            }
        }
        if (!ports.empty()) {
            lines.push_back(fmt::format("VLAN {} cached ports {}", vlan, fmt::join(ports, ",")));
        }
    }
    lines.push_back(
        fmt::format("virtual MACs {}", simswitch::services::tree_records(fhrp_mac_hash).size()));
    std::ranges::sort(lines);
    return lines;
}

Lines differences(const Lines &before, const Lines &after)
{
    Lines gone;
    Lines added;
    std::ranges::set_difference(before, after, std::back_inserter(gone));
    std::ranges::set_difference(after, before, std::back_inserter(added));
    Lines all;
    for (const std::string &line : gone) {
        all.push_back("- " + line);
    }
    for (const std::string &line : added) {
        all.push_back("+ " + line);
    }
    return all;
}

} // namespace sweep
