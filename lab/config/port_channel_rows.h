/*
 * port_channel_rows.h: the port-channels and their members: rows of
 * PORTCHANNEL and PORTCHANNEL_MEMBER, and the list `members` that old files
 * have in a row of PORTCHANNEL. Beside it: device_rows.h, interface_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

#include <string>
#include <vector>

namespace lab::config
{

/**
 * Reads port-channels and members; the ports are known by then. A port-channel
 * that other rows use is taken without a row of its own, with a note.
 *
 * @param tables       the file
 * @param description  receives port-channels, skipped rows and notes
 */
void read_port_channels(const Tables &tables, Description &description);

/** The ports that a row of PORTCHANNEL lists in `members`, as they are written; mostly none. */
std::vector<std::string> listed_members(const Row &row);

/** Refuses a port-channel that was refused itself, or that has no members. */
void need_port_channel(const std::string &name, const Description &description);

/** The port-channel that a port is a member of; or empty. */
std::string port_channel_of(const std::string &port, const Description &description);

/** The port-channel that a port is a member of, if it is routed or has subinterfaces; or empty. */
std::string routed_port_channel_of(const std::string &port, const Description &description);

} // namespace lab::config
