/*
 * report.h: what went through the ports on network interfaces, for people and
 * for machines. wire.h counts.
 */
#pragma once

#include "wire/wire.h"

#include <nlohmann/json.hpp>

#include <iosfwd>

namespace lab::wire
{

/** Prints a line for each port, then the fates of the frames and what the CPU did. */
void print_text(const Wire &wire, std::ostream &out);

/** The same as an object. */
nlohmann::ordered_json json_of(const Wire &wire);

} // namespace lab::wire
