/*
 * device_rows.h: the rows of the device itself: its name and MAC, its ports,
 * its VRFs, its tunnels. Beside it: interface_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

#include <set>
#include <string>

namespace lab::config
{

/** Reads DEVICE_METADATA: name and MAC of the device; without a MAC the fallback, with a note. */
void read_device(const Tables &tables, Description &description);

/**
 * Numbers the ports and reads PORT. A row with a bad MTU keeps its number, so
 * that the others keep theirs. Without a PORT table the ports are those that
 * the interface rows name, with a note.
 *
 * @param tables       the file
 * @param description  receives ports, skipped rows and notes
 */
void read_ports(const Tables &tables, Description &description);

/** Reads VRF: numbers from 2 in natural order of the names. */
void read_vrfs(const Tables &tables, Description &description);

/** Reads TUNNEL: IP-in-IP tunnels. */
void read_tunnels(const Tables &tables, Description &description);

} // namespace lab::config
