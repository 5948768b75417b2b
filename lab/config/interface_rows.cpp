/*
 * interface_rows.cpp: see interface_rows.h.
 */
#include "config/interface_rows.h"

#include "config/names.h"
#include "config/port_channel_rows.h"
#include "config/row_checks.h"

#include <algorithm>
#include <array>
#include <fmt/ranges.h>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace lab::config
{

namespace
{

// The highest subinterface that an interface index has room for.
constexpr unsigned PORT_SUBINTERFACE_LAST = 65535;
constexpr unsigned PORT_CHANNEL_SUBINTERFACE_LAST = 4095;

/** A table of routed interfaces, and what its rows make. */
struct InterfaceTable {
    std::string_view name;
    Kind kind;
};

constexpr std::array INTERFACE_TABLES = {
    InterfaceTable{"INTERFACE", Kind::port},
    InterfaceTable{"PORTCHANNEL_INTERFACE", Kind::port_channel},
    InterfaceTable{"VLAN_INTERFACE", Kind::svi},
    InterfaceTable{"VLAN_SUB_INTERFACE", Kind::subinterface},
};

/** A table whose rows make no routed interface of the hardware, and why. */
struct OtherTable {
    std::string_view name;
    std::string_view reason;
};

constexpr std::array OTHER_TABLES = {
    OtherTable{"LOOPBACK_INTERFACE", "a loopback is no routed interface of the hardware"},
    OtherTable{"MGMT_INTERFACE", "the management port is no routed interface of the hardware"},
    OtherTable{"VXLAN_TUNNEL", "a VXLAN tunnel is no routed interface; IP-in-IP tunnels are"},
    OtherTable{"NVGRE_TUNNEL", "an NVGRE tunnel is no routed interface; IP-in-IP tunnels are"},
};

/** An address row. */
struct AddressRow {
    std::string key; ///< "name|prefix"
    std::string prefix;
    const Row *row = nullptr;
};

/** All rows of one interface. */
struct InterfaceRows {
    const Row *own = nullptr; ///< the row "name"; null in old files
    std::vector<AddressRow> addresses;
};

using RowsByName = std::map<std::string, InterfaceRows, NaturalLess>;

RowsByName group_rows(const Tables &tables, std::string_view table, Description &description)
{
    RowsByName groups;
    for_each_row(tables, table, description, [&](const std::string &key, const Row &row) {
        const std::size_t bar = key.find('|');
        if (bar == std::string::npos) {
            groups[key].own = &row;
            return;
        }
        const std::string prefix = key.substr(bar + 1);
        if (prefix.find('|') != std::string::npos) {
            refuse("the key is no NAME or NAME|PREFIX");
        }
        groups[key.substr(0, bar)].addresses.push_back({key, prefix, &row});
    });
    return groups;
}

/** The VLAN of a subinterface: in the long form of the name, else in the row. */
std::uint16_t subinterface_vlan(const SubinterfaceName &name, const Row &own)
{
    const std::string *field = scalar(own, "vlan");
    if (!name.long_form) {
        if (field == nullptr) {
            refuse("vlan is missing, and the short form of the name doesn't carry it");
        }
        return need_free_vlan(*field);
    }
    const std::uint16_t vlan = need_free_vlan(name.digits);
    if (field != nullptr && need_vlan(*field) != vlan) {
        refuse("the name says VLAN {} and the field vlan says {}", vlan, *field);
    }
    return vlan;
}

/** Reads name and VLAN of a subinterface. */
void read_subinterface(RoutedInterface &interface, const Row &own, const Description &description)
{
    const auto name = parse_subinterface_name(interface.name);
    if (!name) {
        refuse("{} is no subinterface name like Ethernet4.100 or Po0001.100",
               in_quotes(interface.name));
    }
    interface.main = name->parent;
    interface.vlan = subinterface_vlan(*name, own);
    const bool on_port = is_port_name(interface.main);
    const unsigned last = on_port ? PORT_SUBINTERFACE_LAST : PORT_CHANNEL_SUBINTERFACE_LAST;
    interface.number = parse_number(name->digits).value_or(0);
    if (interface.number == 0 || interface.number > last) {
        refuse("the number {} behind the dot is not in 1..{}", name->digits, last);
    }
    if (!on_port) {
        need_port_channel(interface.main, description);
        return;
    }
    need_port(interface.main, description);
    if (const std::string channel = routed_port_channel_of(interface.main, description);
        !channel.empty()) {
        refuse("its port {} is a member of {}", interface.main, channel);
    }
}

/** Reads the name of an interface, which must be of the table's kind. */
void read_name(RoutedInterface &interface, const Row &own, const Description &description)
{
    const std::string &name = interface.name;
    switch (interface.kind) {
    case Kind::port:
        if (!is_port_name(name)) {
            refuse("{} is no port name like Ethernet4 or Ethernet-BP0", in_quotes(name));
        }
        need_port(name, description);
        return;
    case Kind::port_channel:
        if (!is_port_channel_name(name)) {
            refuse("{} is no port-channel name like PortChannel0001", in_quotes(name));
        }
        need_port_channel(name, description);
        return;
    case Kind::svi:
        interface.vlan = need_known_vlan(name, description).id;
        return;
    case Kind::subinterface:
    case Kind::tunnel:
        break;
    }
    read_subinterface(interface, own, description);
}

/** Reads the properties in an interface's own row. */
void read_properties(RoutedInterface &interface, const Row &own, const Description &description)
{
    if (const std::string *vrf = scalar(own, "vrf_name"); vrf != nullptr && *vrf != "default") {
        const auto known = description.vrfs.find(*vrf);
        if (known == description.vrfs.end()) {
            refuse("vrf_name {} names no row of VRF", in_quotes(*vrf));
        }
        // cppcheck-suppress derefInvalidIteratorRedundantCheck  // refuse() doesn't return
        interface.vrf = known->second;
    }
    if (const std::string *text = scalar(own, "mac_addr")) {
        std::string reason;
        interface.mac = parse_mac(*text, reason);
        if (!interface.mac) {
            refuse("mac_addr: {}", reason);
        }
    }
    if (interface.kind == Kind::svi) {
        interface.anycast_gateway = is_true(own, "static_anycast_gateway");
    }
    if (interface.kind == Kind::subinterface || interface.kind == Kind::svi) {
        interface.mtu =
            static_cast<std::uint16_t>(number(own, "mtu", MTU_MIN, MTU_MAX).value_or(0));
    }
    interface.link_local_only = enabled(own, "ipv6_use_link_local_only");
    interface.mpls = enabled(own, "mpls");
}

/** Reads the address rows; true when at least one of them was good. */
bool read_addresses(RoutedInterface &interface, const std::vector<AddressRow> &rows,
                    Description &description)
{
    // There may be as many as a file has rows.
    std::set<std::tuple<bool, std::array<std::uint8_t, 16>, unsigned>> known;
    bool any = false;
    for (const AddressRow &address : rows) {
        std::string reason;
        const auto prefix = parse_prefix(address.prefix, reason);
        if (!address.row->not_a_row.empty()) {
            reason =
                fmt::format("an object of fields was expected, not {}", address.row->not_a_row);
        }
        if (!prefix || !reason.empty()) {
            description.skipped.push_back({interface.table, address.key, reason});
            continue;
        }
        any = true;
        const auto &[ipv6, bytes] = prefix->address;
        if (known.emplace(ipv6, bytes, prefix->length).second) {
            interface.addresses.push_back(*prefix);
        }
    }
    return any;
}

/** Lists all rows of an interface as skipped: its addresses must not come up without its VRF. */
void skip_all(const std::string &table, const std::string &name, const InterfaceRows &rows,
              const std::string &reason, Description &description)
{
    if (rows.own != nullptr) {
        description.skipped.push_back({table, name, reason});
    }
    for (const AddressRow &address : rows.addresses) {
        description.skipped.push_back(
            {table, address.key,
             rows.own == nullptr
                 ? reason
                 : fmt::format("its interface {} isn't taken: {}", in_quotes(name), reason)});
    }
}

/** What the subinterfaces read so far have, so that no two of them share it. */
class SubinterfaceKeys
{
public:
    /** Notes a subinterface; refuses one whose number or VLAN another of the same main has. */
    void take(const RoutedInterface &interface)
    {
        const auto number = numbers_.find({interface.main, interface.number});
        if (number != numbers_.end()) {
            refuse("it is {} in another spelling", number->second);
        }
        const auto [vlan, is_new] =
            vlans_.try_emplace({interface.main, interface.vlan}, interface.name);
        if (!is_new) {
            refuse("VLAN {} on {} is that of {}", interface.vlan, interface.main, vlan->second);
        }
        numbers_[{interface.main, interface.number}] = interface.name;
    }

private:
    using Names = std::map<std::pair<std::string, unsigned>, std::string>; ///< by main and number

    Names numbers_;
    Names vlans_;
};

void read_table(const Tables &tables, const InterfaceTable &table, Description &description)
{
    SubinterfaceKeys keys;
    static const Row empty;
    for (const auto &[name, rows] : group_rows(tables, table.name, description)) {
        RoutedInterface interface;
        interface.kind = table.kind;
        interface.table = table.name;
        interface.name = name;
        const Row &own = rows.own != nullptr ? *rows.own : empty;
        try {
            need_object(own);
            read_name(interface, own, description);
            read_properties(interface, own, description);
            if (interface.kind == Kind::subinterface) {
                keys.take(interface);
            }
        } catch (const BadRow &bad) {
            skip_all(interface.table, name, rows, bad.what(), description);
            continue;
        }
        const bool has_address = read_addresses(interface, rows.addresses, description);
        if (rows.own != nullptr || has_address) {
            description.interfaces.push_back(std::move(interface));
        }
    }
}

/**
 * A port-channel has its trunk only with its members up: where no row makes it
 * routed, it comes up for its subinterfaces, without addresses. So does one
 * port in a file of nothing but subinterfaces: their VLANs need the spanning
 * tree group that comes with the VLAN of routed ports.
 */
void add_main_interfaces(Description &description)
{
    std::set<std::string, NaturalLess> needed;
    for (const auto &interface : description.interfaces) {
        if (interface.kind == Kind::subinterface && is_port_channel_name(interface.main)) {
            needed.insert(interface.main);
        }
    }
    bool has_routed_port = !needed.empty();
    for (const auto &interface : description.interfaces) {
        needed.erase(interface.name);
        has_routed_port |= interface.kind == Kind::port || interface.kind == Kind::port_channel;
    }
    const bool has_subinterface =
        !description.interfaces.empty() && description.interfaces.back().kind == Kind::subinterface;
    if (!has_routed_port && has_subinterface) {
        needed.insert(description.interfaces.back().main);
    }
    if (needed.empty()) {
        return;
    }
    description.notes.push_back(
        fmt::format("{}: no row makes {} routed; up without addresses, for the subinterfaces",
                    description.file, fmt::join(needed, ", ")));
    for (const auto &name : needed) {
        RoutedInterface interface;
        interface.kind = is_port_name(name) ? Kind::port : Kind::port_channel;
        interface.table = is_port_name(name) ? "PORT" : "PORTCHANNEL";
        interface.name = name;
        description.interfaces.push_back(std::move(interface));
    }
    std::stable_sort(description.interfaces.begin(), description.interfaces.end(),
                     [](const RoutedInterface &left, const RoutedInterface &right) {
                         return left.kind != right.kind
                                    ? left.kind < right.kind
                                    : natural_compare(left.name, right.name) < 0;
                     });
}

/** Lists the interfaces of a table that makes no routed ones, each name once. */
void skip_table(const Tables &tables, const OtherTable &table, Description &description)
{
    std::string last;
    for (const auto &[key, row] : tables.table(table.name)) {
        std::string name = key.substr(0, key.find('|'));
        if (name != last) {
            description.skipped.push_back(
                {std::string(table.name), name, std::string(table.reason)});
            last = std::move(name);
        }
    }
}

} // namespace

std::vector<std::string_view> interface_tables()
{
    std::vector<std::string_view> names;
    names.reserve(INTERFACE_TABLES.size() + OTHER_TABLES.size());
    for (const auto &table : INTERFACE_TABLES) {
        names.push_back(table.name);
    }
    for (const auto &table : OTHER_TABLES) {
        names.push_back(table.name);
    }
    return names;
}

void read_interfaces(const Tables &tables, Description &description)
{
    for (const auto &table : INTERFACE_TABLES) {
        read_table(tables, table, description);
    }
    add_main_interfaces(description);
    for (const auto &table : OTHER_TABLES) {
        skip_table(tables, table, description);
    }
}

} // namespace lab::config
