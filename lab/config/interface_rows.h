/*
 * interface_rows.h: the tables of routed interfaces. A row "name" makes an
 * interface routed and holds its properties, a row "name|prefix" gives it an
 * address; they come in any order, and old files have rows of the second kind
 * only. Beside it: device_rows.h.
 */
#pragma once

#include "config/description.h"
#include "config/tables.h"

#include <string_view>
#include <vector>

namespace lab::config
{

/** The tables that read_interfaces looks into. */
std::vector<std::string_view> interface_tables();

/**
 * Reads the tables of routed interfaces; ports, VLANs and VRFs are known by then.
 * Tables of interfaces that the hardware has no routed interface for are
 * listed as skipped, with the reason.
 *
 * @param tables       the file
 * @param description  receives interfaces and skipped rows
 */
void read_interfaces(const Tables &tables, Description &description);

} // namespace lab::config
