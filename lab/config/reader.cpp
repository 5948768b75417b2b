/*
 * reader.cpp: see reader.h.
 */
#include "config/reader.h"

#include "config/device_rows.h"
#include "config/interface_rows.h"
#include "config/port_channel_rows.h"
#include "config/route_rows.h"
#include "config/tables.h"
#include "config/virtual_mac_rows.h"
#include "config/vlan_rows.h"

namespace lab::config
{

Description read_config_text(std::string_view text, std::string_view file)
{
    std::vector<std::string_view> read = interface_tables();
    read.insert(read.end(), {"DEVICE_METADATA", "PORT", "PORTCHANNEL", "PORTCHANNEL_MEMBER", "VLAN",
                             "VLAN_MEMBER", "VRF", "TUNNEL", "PVLAN", "SAG", "VRRP", "VRRP6",
                             "STATIC_ROUTE", "NEIGH", "FDB"});
    Tables tables = make_tables(parse_json(text, file), file, read);

    Description description;
    description.file = file;
    description.notes = std::move(tables.notes);
    read_device(tables, description);
    read_ports(tables, description);
    read_vrfs(tables, description);
    read_port_channels(tables, description);
    read_vlans(tables, description);
    read_interfaces(tables, description);
    read_pvlan_pairs(tables, description);
    read_virtual_macs(tables, description);
    read_tunnels(tables, description);
    read_routes(tables, description);
    description.sort_skipped();
    return description;
}

Description read_config(const std::filesystem::path &path)
{
    return read_config_text(read_file(path), path.string());
}

} // namespace lab::config
