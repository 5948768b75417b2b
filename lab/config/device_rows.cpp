/*
 * device_rows.cpp: see device_rows.h.
 */
#include "config/device_rows.h"

#include "config/names.h"
#include "config/port_channel_rows.h"
#include "config/reader.h"
#include "config/row_checks.h"
#include "config/shown.h"

#include <algorithm>

namespace lab::config
{

namespace
{

constexpr std::size_t TUNNEL_NAME_MAX = 63;

// VRF numbers are 16 bits wide.
constexpr std::uint32_t VRF_LAST = 65535;

using NameSet = std::set<std::string, NaturalLess>;

/** The port that a row of an interface table names, its own or a subinterface's; empty for none. */
std::string port_of_row(std::string_view key)
{
    const std::string_view name = key.substr(0, key.find('|'));
    if (is_port_name(name)) {
        return std::string(name);
    }
    const auto subinterface = parse_subinterface_name(name);
    return subinterface && is_port_name(subinterface->parent) ? subinterface->parent : "";
}

/** The ports that interface rows name, for a file that has no PORT table. */
NameSet ports_of_interface_rows(const Tables &tables)
{
    NameSet names;
    for (const char *table : {"INTERFACE", "VLAN_SUB_INTERFACE"}) {
        for (const auto &[key, row] : tables.table(table)) {
            if (std::string port = port_of_row(key); !port.empty()) {
                names.insert(std::move(port));
            }
        }
    }
    for (const char *table : {"PORTCHANNEL_MEMBER", "VLAN_MEMBER"}) {
        for (const auto &[key, row] : tables.table(table)) {
            if (std::string port = key.substr(key.find('|') + 1); is_port_name(port)) {
                names.insert(std::move(port));
            }
        }
    }
    for (const auto &[key, row] : tables.table("PORTCHANNEL")) {
        for (std::string &port : listed_members(row)) {
            if (is_port_name(port)) {
                names.insert(std::move(port));
            }
        }
    }
    return names;
}

/** Gives the ports their numbers in the chip as far as those go. */
void number_ports(const NameSet &names, Description &description)
{
    unsigned place = 0;
    for (const auto &name : names) {
        ++place;
        Port &port = description.ports[name];
        if (place <= CHIP_PORTS) {
            port.chip_port = place;
        } else {
            port.refused = fmt::format("the chip has {} ports and this is number {} in natural "
                                       "order of the names",
                                       CHIP_PORTS, place);
        }
    }
}

/** Reads a PORT row whose port has its number, if the chip has one for it. */
void read_port(const std::string &name, const Row &row, Description &description)
{
    if (!is_port_name(name)) {
        refuse("{} is no port name like Ethernet4 or Ethernet-BP0", in_quotes(name));
    }
    Port &port = description.ports[name];
    if (!port.refused.empty()) {
        throw BadRow(port.refused);
    }
    try {
        need_object(row);
        port.mtu = static_cast<std::uint16_t>(number(row, "mtu", MTU_MIN, MTU_MAX).value_or(0));
    } catch (const BadRow &bad) {
        port.refused = bad.what();
        throw;
    }
}

/** The tunnel of a TUNNEL row. */
Tunnel make_tunnel(const std::string &name, const Row &row)
{
    if (name.empty() || name.size() > TUNNEL_NAME_MAX || !can_be_shown(name) ||
        name.find('|') != std::string::npos) {
        refuse("{} is no name of a tunnel", in_quotes(name));
    }
    need_object(row);
    const std::string *type = scalar(row, "tunnel_type");
    if (type == nullptr || *type != "IPINIP") {
        refuse("tunnel_type is {}, \"IPINIP\" was expected",
               type == nullptr ? "missing" : in_quotes(*type));
    }
    Tunnel tunnel{"TUNNEL", name, {}, {}};
    const std::string *destination = scalar(row, "dst_ip");
    if (destination == nullptr) {
        refuse("dst_ip is missing, the tunnel's own address was expected");
    }
    tunnel.destination = need_unicast("dst_ip", *destination);
    if (const std::string *source = scalar(row, "src_ip")) {
        tunnel.source = need_unicast("src_ip", *source);
        if (tunnel.source->ipv6 != tunnel.destination.ipv6) {
            refuse("src_ip and dst_ip are of different families");
        }
    }
    return tunnel;
}

} // namespace

void read_device(const Tables &tables, Description &description)
{
    bool has_mac = false;
    for_each_row(tables, "DEVICE_METADATA", description,
                 [&](const std::string &key, const Row &row) {
                     if (key != "localhost") {
                         return;
                     }
                     need_object(row);
                     if (const std::string *name = scalar(row, "hostname")) {
                         description.hostname = *name;
                     }
                     const std::string *text = scalar(row, "mac");
                     if (text == nullptr) {
                         return;
                     }
                     std::string reason;
                     const auto mac = parse_mac(*text, reason);
                     if (!mac) {
                         refuse("mac: {}", reason);
                     }
                     description.device_mac = *mac;
                     has_mac = true;
                 });
    if (!has_mac) {
        description.device_mac = MAC_FALLBACK;
        description.notes.push_back(fmt::format(
            "{}: DEVICE_METADATA \"localhost\" gives no usable mac; the router MAC is {}",
            description.file, mac_text(MAC_FALLBACK)));
    }
}

void read_ports(const Tables &tables, Description &description)
{
    const Table &rows = tables.table("PORT");
    if (rows.empty()) {
        const NameSet names = ports_of_interface_rows(tables);
        number_ports(names, description);
        if (!names.empty()) {
            description.notes.push_back(fmt::format(
                "{}: there is no PORT table; its {} that interface rows name", description.file,
                names.size() == 1 ? "port is the one"
                                  : fmt::format("ports are the {}", names.size())));
        }
        return;
    }
    NameSet names;
    for (const auto &[key, row] : rows) {
        if (is_port_name(key)) {
            names.insert(key);
        }
    }
    number_ports(names, description);
    for_each_row(tables, "PORT", description,
                 [&](const std::string &key, const Row &row) { read_port(key, row, description); });
}

void read_vrfs(const Tables &tables, Description &description)
{
    std::uint32_t next = VRF_DEFAULT;
    for_each_row(tables, "VRF", description, [&](const std::string &key, const Row &row) {
        if (key == "default") {
            return;
        }
        if (!is_vrf_name(key)) {
            refuse("{} is no VRF name: \"Vrf\" and 1 to 12 letters, digits, \"_\" or \"-\" were "
                   "expected",
                   in_quotes(key));
        }
        need_object(row);
        if (next == VRF_LAST) {
            refuse("there is no VRF number left, the last is {}", VRF_LAST);
        }
        description.vrfs[key] = static_cast<std::uint16_t>(++next);
    });
}

void read_tunnels(const Tables &tables, Description &description)
{
    for_each_row(tables, "TUNNEL", description, [&](const std::string &key, const Row &row) {
        description.tunnels.push_back(make_tunnel(key, row));
    });
}

} // namespace lab::config
