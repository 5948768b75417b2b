/*
 * views.cpp: see views.h.
 */
#include "faults/views.h"

#include "chip/snapshot.h"
#include "l3lif/interface_numbers.h"
#include "l3lif/readback.h"
#include "rtifhal_trident.h"
#include "sdk/convert.h"
#include "services/tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace lab::faults
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

using Names = std::map<int, std::string>;

void add_name(Names &names, int iif, const std::string &name)
{
    if (iif != 0) {
        names[iif] += (names[iif].empty() ? "" : "+") + name;
    }
}

/** The names as the chip ties interfaces to numbers. */
Names names_of(const simswitch::Switch &hardware, const l3lif::Layer &layer)
{
    Names names;
    for (const auto &interface : layer.interfaces()) {
        add_name(names, l3lif::read_back(hardware, *interface->lif).iif,
                 interface->lif->plan().name);
    }
    return names;
}

/** The names as the library knows the numbers; a tie that is missing takes no name away. */
Names known_names(const l3lif::Layer &layer)
{
    Names names;
    for (const auto &interface : layer.interfaces()) {
        const l3lif_pd_ctxt *context = interface->lif->record()->l3lif_pd_ctxt;
        if (context != nullptr && context->l3_pd != nullptr) {
            const l3_pd &hardware = *context->l3_pd;
            add_name(names,
                     hardware.brcm_prog_complete != 0 ? hardware.prev_l3_if_index
                                                      : hardware.l3intf_id,
                     interface->lif->plan().name);
        }
    }
    return names;
}

void put_name(std::string &line, std::string_view words, const Names &names)
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
        while (iif <= chip::LAST_IIF && l3lif::is_set(table, iif)) {
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
        // Most of these bytes are 0, and this is asked for at each fault of a sweep.
        std::vector<unsigned> vlans;
        unsigned first = 0;
        for (const unsigned byte : rtifhal_port_vlan[port].vlan_bitmap) {
            for (unsigned bit = 0; byte != 0 && bit < 8; ++bit) {
                if ((byte & (0x80U >> bit)) != 0) {
                    vlans.push_back(first + bit);
                }
            }
            first += 8;
        }
        if (!vlans.empty()) {
            lines.push_back(fmt::format("port {} in VLANs {}", port, fmt::join(vlans, ",")));
        }
    }
}

/** Numbers that are taken and not held back. */
int count_in_use()
{
    int count = 0;
    std::size_t place = 0;
    for (const unsigned byte : l3lif_l3iif_table.bits) {
        count += std::popcount(byte & ~unsigned{l3lif_l3iif_table_preserve.bits[place++]});
    }
    return count;
}

/** Next hops and groups are numbered in the order of their coming; a route names them. */
void forget_next_hop_numbers(std::string &line, const Names &names)
{
    const auto cut = [&line](std::size_t begin) {
        std::size_t end = begin;
        while (end < line.size() && line[end] >= '0' && line[end] <= '9') {
            ++end;
        }
        line.erase(begin, end - begin);
    };
    constexpr std::string_view EGRESS = "egress ";
    constexpr std::string_view GROUP = "multipath group ";
    if (line.starts_with(EGRESS)) {
        cut(EGRESS.size());
        put_name(line, "interface ", names);
    } else if (line.starts_with(GROUP)) {
        line = fmt::format("{}of {}", GROUP, std::ranges::count(line, ' ') - 3);
    } else if (line.starts_with("route ")) {
        for (const std::string_view target : {": egress ", ": group "}) {
            if (const std::size_t found = line.find(target); found != std::string::npos) {
                cut(found + target.size());
            }
        }
    }
}

/** Which member of a trunk joined first is nobody's matter. */
void sort_members(std::string &line)
{
    constexpr std::string_view MEMBERS = " members ";
    const std::size_t begin = line.find(MEMBERS);
    if (!line.starts_with("trunk ") || begin == std::string::npos) {
        return;
    }
    std::istringstream words(line.substr(begin + MEMBERS.size()));
    std::vector<std::string> members{std::istream_iterator<std::string>(words), {}};
    std::ranges::sort(members);
    line = fmt::format("{}{}{}", line.substr(0, begin), MEMBERS, fmt::join(members, " "));
}

void add_vlan(Lines &lines, simswitch::Switch &hardware, int vlan)
{
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
    const chip::PortSet &cached = hardware.wrappers.cached_vlan_ports(vlan);
    if (cached.empty()) {
        return;
    }
    std::vector<int> ports;
    for (int port = 0; port <= chip::LAST_PORT; ++port) {
        if (cached.has(port)) {
            ports.push_back(port);
        }
    }
    lines.push_back(fmt::format("VLAN {} cached ports {}", vlan, fmt::join(ports, ",")));
}

void add_virtual_macs(Lines &lines)
{
    lines.push_back(
        fmt::format("virtual MACs {}", simswitch::services::tree_records(fhrp_mac_hash).size()));
}

/** The tables of the VLANs that anything knows of. */
void add_used_vlans(Lines &lines, simswitch::Switch &hardware)
{
    for (int vlan = 0; vlan <= chip::LAST_VLAN; ++vlan) {
        const auto &uses = rtifhal_vlan_type_count[vlan];
        if (uses.subint_count != 0 || uses.svi != 0 || uses.l2_vlan != 0 ||
            hardware.chip.vlans.find(vlan) != nullptr) {
            add_vlan(lines, hardware, vlan);
        }
    }
}

std::string_view standing_word(l3lif::Standing standing)
{
    switch (standing) {
    case l3lif::Standing::down:
        return "down";
    case l3lif::Standing::kept:
        return "kept";
    case l3lif::Standing::up:
        break;
    }
    return "up";
}

void add_stored(Lines &lines, simswitch::Switch &hardware, const Names &names)
{
    for (const auto &stored : hardware.store.stored_interfaces()) {
        const int iif = stored.hardware ? stored.hardware->l3intf_id : 0;
        std::string line =
            fmt::format("record {:#x}: iif {} VLAN {} VRF {} MTU {}", stored.ifindex, iif,
                        stored.int_vlan, stored.properties ? stored.properties->vrf : 0,
                        stored.properties ? stored.properties->mtu : 0);
        put_name(line, " iif ", names);
        lines.push_back(std::move(line));
    }
}

Lines named_chip(const simswitch::Switch &hardware, const Names &names)
{
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

} // namespace

Lines chip_view(const simswitch::Switch &hardware, const l3lif::Layer &layer)
{
    return named_chip(hardware, names_of(hardware, layer));
}

Lines library_tables(simswitch::Switch &hardware)
{
    Lines lines;
    lines.push_back("numbers taken " + numbers_of(l3lif_l3iif_table));
    lines.push_back("numbers held back " + numbers_of(l3lif_l3iif_table_preserve));
    add_ports(lines);
    for (int vlan = 0; vlan <= chip::LAST_VLAN; ++vlan) {
        add_vlan(lines, hardware, vlan);
    }
    add_virtual_macs(lines);
    std::ranges::sort(lines);
    return lines;
}

Lines whole_view(simswitch::Switch &hardware, const l3lif::Layer &layer)
{
    const Names names = known_names(layer);
    Lines lines = named_chip(hardware, names);
    for (std::string &line : lines) {
        sort_members(line);
        forget_next_hop_numbers(line, names);
    }
    lines.push_back(fmt::format("numbers: {} in use", count_in_use()));
    Lines tables;
    add_ports(tables);
    add_used_vlans(tables, hardware);
    add_virtual_macs(tables);
    for (std::string &line : tables) {
        put_name(line, " iif ", names);
        lines.push_back(std::move(line));
    }
    add_stored(lines, hardware, names);
    for (const auto &[vlan, role] : hardware.host.vlans.all()) {
        lines.push_back(fmt::format("forwarding manager's VLAN {}", vlan));
    }
    for (const auto &interface : layer.interfaces()) {
        lines.push_back(fmt::format("interface {} {}", interface->lif->plan().name,
                                    standing_word(interface->standing())));
    }
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

} // namespace lab::faults
