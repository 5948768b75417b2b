/*
 * virtual_mac_rows.cpp: see virtual_mac_rows.h.
 */
#include "config/virtual_mac_rows.h"

#include "config/address.h"
#include "config/names.h"
#include "config/row_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lab::config
{

namespace
{

constexpr std::uint32_t VRID_MIN = 1;
constexpr std::uint32_t VRID_MAX = 255;

/** The virtual MAC of a redundancy group: the protocol has a block for each family. */
Mac vrrp_mac(std::uint32_t vrid, bool ipv6)
{
    return {0x00,
            0x00,
            0x5e,
            0x00,
            static_cast<std::uint8_t>(ipv6 ? 2 : 1),
            static_cast<std::uint8_t>(vrid)};
}

/** The MAC of the anycast gateways, if there is a usable one. */
std::optional<Mac> read_gateway_mac(const Tables &tables, Description &description)
{
    std::optional<Mac> mac;
    for_each_row(tables, "SAG", description, [&](const std::string &key, const Row &row) {
        if (key != "GLOBAL") {
            refuse("only the row \"GLOBAL\" gives the MAC of the anycast gateways");
        }
        need_object(row);
        const std::string *text = scalar(row, "gateway_mac");
        if (text == nullptr) {
            refuse("gateway_mac is missing, the MAC of the anycast gateways was expected");
        }
        std::string reason;
        mac = parse_mac(*text, reason);
        if (!mac) {
            refuse("gateway_mac: {}", reason);
        }
    });
    return mac;
}

void add_anycast_gateways(const Tables &tables, Description &description)
{
    const auto mac = read_gateway_mac(tables, description);
    std::vector<std::string> without;
    for (const auto &interface : description.interfaces) {
        if (interface.anycast_gateway && mac) {
            VirtualMac gateway{interface.name, *mac, "SAG"};
            for (const Prefix &prefix : interface.addresses) {
                gateway.addresses.push_back(prefix.address);
            }
            description.virtual_macs.push_back(std::move(gateway));
        } else if (interface.anycast_gateway) {
            without.push_back(interface.name);
        }
    }
    if (!without.empty()) {
        description.notes.push_back(fmt::format(
            "{}: SAG \"GLOBAL\" gives no usable gateway_mac; no anycast MAC on {}{}",
            description.file, without.front(),
            without.size() == 1 ? "" : fmt::format(" and {} more", without.size() - 1)));
    }
}

/** An address of a redundancy group, with or without the length of its prefix. */
IpAddress virtual_address(const std::string &text)
{
    if (text.find('/') == std::string::npos) {
        return need_unicast("vip", text);
    }
    std::string reason;
    const auto prefix = parse_prefix(text, reason);
    if (!prefix) {
        refuse("vip: {}", reason);
    }
    return prefix->address;
}

/** What a group stands for, by family. */
struct Families {
    bool ipv4 = false;
    bool ipv6 = false;
    std::vector<IpAddress> addresses; ///< of both, each once
};

/** The addresses of a group and their families; of one without addresses what its table is for. */
Families families_of(const Row &row, bool ipv6_table)
{
    Families families;
    if (const Field *field = row.find("vip"); field != nullptr && !field->is_list) {
        scalar(row, "vip");
    }
    for (const auto &text : listed(row, "vip")) {
        const IpAddress address = virtual_address(text);
        const bool ipv6 = address.ipv6;
        if (!ipv6 && ipv6_table) {
            refuse("vip {} is IPv4, and the row is one of VRRP6", in_quotes(text));
        }
        families.ipv4 |= !ipv6;
        families.ipv6 |= ipv6;
        auto &known = families.addresses;
        if (std::find(known.begin(), known.end(), address) == known.end()) {
            known.push_back(address);
        }
    }
    if (!families.ipv4 && !families.ipv6) {
        families.ipv4 = !ipv6_table;
        families.ipv6 = ipv6_table;
    }
    return families;
}

/** A redundancy group on an interface. */
struct Group {
    std::string owner;
    std::uint32_t vrid = 0;
};

Group parse_group(const std::string &key, const Row &row, const Description &description)
{
    const std::size_t bar = key.find('|');
    if (bar == std::string::npos) {
        refuse("the key is no INTERFACE|VRID");
    }
    Group group{key.substr(0, bar), 0};
    const std::string digits = key.substr(bar + 1);
    group.vrid = parse_number(digits).value_or(0);
    if (group.vrid < VRID_MIN || group.vrid > VRID_MAX) {
        refuse("the VRID {} is not in {}..{}", number_or_quotes(digits), VRID_MIN, VRID_MAX);
    }
    need_object(row);
    if (const auto field = number(row, "vrid", VRID_MIN, VRID_MAX); field && *field != group.vrid) {
        refuse("the key says VRID {} and the field vrid says {}", group.vrid, *field);
    }
    const auto &interfaces = description.interfaces;
    if (std::none_of(interfaces.begin(), interfaces.end(),
                     [&group](const auto &known) { return known.name == group.owner; })) {
        refuse("no row that is taken makes {} a routed interface", in_quotes(group.owner));
    }
    return group;
}

/** Refuses a MAC that the interface has by another row. */
void need_new_mac(const std::string &owner, const Mac &mac, const Description &description)
{
    for (const VirtualMac &known : description.virtual_macs) {
        if (known.owner == owner && known.mac == mac) {
            refuse("{} has the virtual MAC {} already, by {}", owner, mac_text(mac), known.source);
        }
    }
}

void read_groups(const Tables &tables, std::string_view table, bool ipv6_table,
                 Description &description)
{
    for_each_row(tables, table, description, [&](const std::string &key, const Row &row) {
        const Group group = parse_group(key, row, description);
        const Families families = families_of(row, ipv6_table);
        std::vector<VirtualMac> macs;
        for (const bool ipv6 : {false, true}) {
            if (ipv6 ? families.ipv6 : families.ipv4) {
                VirtualMac mac{group.owner, vrrp_mac(group.vrid, ipv6),
                               fmt::format("{} {}", table, group.vrid)};
                std::copy_if(families.addresses.begin(), families.addresses.end(),
                             std::back_inserter(mac.addresses),
                             [ipv6](const IpAddress &address) { return address.ipv6 == ipv6; });
                need_new_mac(group.owner, mac.mac, description);
                macs.push_back(std::move(mac));
            }
        }
        for (VirtualMac &mac : macs) {
            description.virtual_macs.push_back(std::move(mac));
        }
    });
}

/** Brings the virtual MACs into the order of their interfaces. */
void sort_by_owner(Description &description)
{
    std::map<std::string, std::size_t, std::less<>> places;
    for (const auto &interface : description.interfaces) {
        places.emplace(interface.name, places.size());
    }
    std::stable_sort(description.virtual_macs.begin(), description.virtual_macs.end(),
                     [&places](const VirtualMac &left, const VirtualMac &right) {
                         return places.find(left.owner)->second < places.find(right.owner)->second;
                     });
}

} // namespace

void read_virtual_macs(const Tables &tables, Description &description)
{
    add_anycast_gateways(tables, description);
    read_groups(tables, "VRRP", false, description);
    read_groups(tables, "VRRP6", true, description);
    sort_by_owner(description);
}

} // namespace lab::config
