/*
 * reader.h: reads a switch's configuration, a config_db.json of either form,
 * and says what it means for routed interfaces. A row that can't be taken is
 * skipped with its reason, and the rest goes on.
 *
 * Its work is spread over device_rows.h (device, ports, VRFs, tunnels),
 * port_channel_rows.h, vlan_rows.h (VLANs, their members, private-VLAN pairs),
 * interface_rows.h (the tables of routed interfaces), virtual_mac_rows.h and route_rows.h (static
 * routes, known hosts). docs/config.md has the rules for people.
 */
#pragma once

#include "config/description.h"
#include "config/json_tree.h"

#include <filesystem>
#include <string_view>

namespace lab::config
{

/** The MAC of a device whose configuration has none: locally administered. */
inline constexpr Mac MAC_FALLBACK = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};

/**
 * Reads a configuration.
 *
 * @param text  the file's text
 * @param file  the name that messages begin with
 * @throws UnusableFile when it can't be used at all
 */
Description read_config_text(std::string_view text, std::string_view file);

/** The same from a file, whose path messages begin with. */
Description read_config(const std::filesystem::path &path);

} // namespace lab::config
